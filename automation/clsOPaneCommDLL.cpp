#include "automation/clsOPaneCommDLL.h"

#include "link/clsOPane.h"
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
    link->Baudrate(lngBaudrate);
    if (link->CommPort() != intComPort)
        link->CommPort(intComPort);
    link->Timeout(clsOPane::kHandshakeTimeoutMs);
    link->CommunicationType("RS232");
    const bool synchronized = link->SendSynchronizeCharacter(intNode);
    link->Timeout(clsOPane::kUsualTimeoutMs);
    intReturnStatus = synchronized ? 0 : 1;
}

void clsOPaneCommDLL::Version(std::string& strVersion) {
    strVersion = "OpaneCommDLL V" OPANE_VERSION;
}

}  // namespace opane
