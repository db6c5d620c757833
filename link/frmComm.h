#pragma once

#include <memory>

#include "platform/serial_control.h"

namespace opane {

/// The invisible host form of the serial control.
class frmComm {
public:
    frmComm();

    SerialControl& MSComm() { return *control_; }

private:
    std::unique_ptr<SerialControl> control_;
};

}  // namespace opane
