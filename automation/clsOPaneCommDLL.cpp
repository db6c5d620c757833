#include "automation/clsOPaneCommDLL.h"

#include "link/clsOPane.h"
#include "link/connection.h"
#include "log/clsLog.h"

namespace opane {

clsOPaneCommDLL::clsOPaneCommDLL() : arrActualImage(std::make_shared<ScreenImage>()) {
    holder_.adopt(clsOPane::create());
    holder_.adopt(std::make_shared<clsLog>());
    Globals& globals = holder_.globals();
    globals.gintCommPort = 1;
    globals.gintNodeNumber = 3;
    const auto link = threadLink();
    link->Initialize();
    link->CommunicationType("RS232");
}

void clsOPaneCommDLL::Synchronize(std::int16_t intComPort, std::int32_t lngBaudrate, std::int16_t intNode,
                                  std::int16_t& intReturnStatus) {
    const auto link = threadLink();
    intReturnStatus = makeConnection(*link, {intComPort, lngBaudrate, intNode, "RS232"}) ? 0 : 1;
}

void clsOPaneCommDLL::Version(std::string& strVersion) {
    strVersion = "OpaneCommDLL V" OPANE_VERSION;
}

}  // namespace opane
