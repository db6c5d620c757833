#pragma once

#include <sys/types.h>
#include <time.h>

#include <cstdint>
#include <string>
#include <vector>

namespace opane::bench {

/// Modules in a process of their own, each on a pseudo-terminal, so that what they cost is not counted as
/// the host's. Made before the host's threads begin.
class ModuleFarm {
public:
    /// @param paced  bytes take their time
    ModuleFarm(int modules, int baudRate, bool paced);
    ~ModuleFarm();
    ModuleFarm(const ModuleFarm&) = delete;
    ModuleFarm& operator=(const ModuleFarm&) = delete;

    const std::vector<std::string>& devices() const { return devices_; }

    /// The clock of the processor time that the modules use.
    clockid_t processorClock() const;

private:
    pid_t process_;
    std::vector<std::string> devices_;
};

}  // namespace opane::bench
