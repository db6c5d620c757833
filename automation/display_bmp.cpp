#include "automation/clsOPaneCommDLL.h"
#include "link/clsOPane.h"

namespace opane {

void clsOPaneCommDLL::DisplayBMP(const std::string& strFileNameWithPath, std::int16_t& intReturnStatus) {
    const auto link = threadLink();
    const auto image = arrActualImage;
    intReturnStatus = link->OPaneCmd_AfficheBMP(strFileNameWithPath, *image) ? 0 : 1;
}

}  // namespace opane
