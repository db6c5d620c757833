#include "link/frmComm.h"

#include "platform/services.h"

namespace opane {

frmComm::frmComm() : control_(services().makeSerialControl()) {}

}  // namespace opane
