#include "link/connection.h"

#include "link/clsOPane.h"

namespace opane {
namespace {

constexpr std::int32_t kSilenceMs = 100;
constexpr std::int32_t kLongestNoiseMs = 2000;

bool handshake(clsOPane& link, const ConnectionChoice& choice) {
    link.Timeout(clsOPane::kHandshakeTimeoutMs);
    link.CommunicationType(choice.busType);
    const bool synchronized = link.SendSynchronizeCharacter(choice.nodeNumber);
    link.Timeout(clsOPane::kUsualTimeoutMs);
    return synchronized;
}

}  // namespace

bool makeConnection(clsOPane& link, const ConnectionChoice& choice) {
    const clsOPane::Running running(link);
    link.Baudrate(choice.baudRate);
    if (link.CommPort() != choice.commPort)
        link.CommPort(choice.commPort);
    return handshake(link, choice);
}

bool makeConnectionAgain(clsOPane& link, const ConnectionChoice& choice) {
    const clsOPane::Running running(link);
    link.waitForSilence(kSilenceMs, kLongestNoiseMs);
    return handshake(link, choice);
}

}  // namespace opane
