#include "link/frmComm.h"

namespace opane {

frmComm::frmComm() : control_(makeSerialControl()) {}

}  // namespace opane
