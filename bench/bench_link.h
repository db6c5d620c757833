#pragma once

#include <stdexcept>
#include <string>

#include "automation/clsOPaneCommDLL.h"
#include "link/clsOPane.h"
#include "platform/services.h"

namespace opane::bench {

/// The public object on a device, synchronised.
class BenchLink {
public:
    BenchLink(const std::string& device, std::int32_t baudRate) {
        services_->portMap = [device](std::int16_t) { return device; };
        object_ = std::make_unique<clsOPaneCommDLL>();
        std::int16_t status = 1;
        object_->Synchronize(1, baudRate, 3, status);
        if (status != 0)
            throw std::runtime_error("no module answered on " + device);
    }

    clsOPaneCommDLL& object() { return *object_; }
    clsOPane& link() { return *threadLink(); }
    ServicesScope& services() { return services_; }

private:
    ServicesScope services_;
    std::unique_ptr<clsOPaneCommDLL> object_;
};

}  // namespace opane::bench
