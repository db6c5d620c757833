#pragma once

#include <memory>
#include <vector>

#include "support/campaign/faulty_line.h"
#include "support/memory_serial_control.h"

namespace opane::test::campaign {

/// What a host has done on its port, as seen from outside.
struct HostWrite {
    Micros at;
    ByteArray bytes;
    std::size_t readBefore;    ///< bytes that it has read one by one since its write before
    std::size_t goneByBefore;  ///< bytes of the line that it has read or thrown away in all
};

struct Watched {
    std::vector<HostWrite> writes;
    std::size_t readSinceWrite = 0;
    std::size_t goneBy = 0;
};

/// Carries a faulty line's bytes to and from a host's serial control.
class Carrier {
public:
    virtual ~Carrier() = default;

    /// The control that the host is to use, on this line. The line and the time outlive it.
    virtual std::unique_ptr<SerialControl> control(FaultyLine& line, VirtualTime& time) = 0;
    /// The device's name for the host's port map; empty where there is none.
    virtual std::string device() const { return {}; }
    /// Makes the device anew after it has vanished.
    virtual void replug() {}
};

std::unique_ptr<Carrier> memoryCarrier();

/// The system's own serial control on a pseudo-terminal, in virtual time: what the host writes is taken from the
/// terminal's other end, and what is due is there before the host looks.
std::unique_ptr<Carrier> terminalCarrier();

/// Notes what the host does on a control.
std::unique_ptr<SerialControl> watchedControl(std::unique_ptr<SerialControl> control, VirtualTime& time,
                                              Watched& watched);

}  // namespace opane::test::campaign
