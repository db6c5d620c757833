#include "link/clsOPane.h"

namespace opane {
namespace {

struct SynchronisationCodes {
    std::uint8_t sent;
    std::uint8_t expected;
};

/// docs/wire.md, "Handshake".
SynchronisationCodes codesOf(std::int16_t intNodeNumber) {
    if (intNodeNumber < 0 || intNodeNumber > 3)
        return {0x00, 0x00};
    return {static_cast<std::uint8_t>(0xA5 + intNodeNumber), static_cast<std::uint8_t>(0x15 + intNodeNumber)};
}

}  // namespace

bool clsOPane::SendSynchronizeCharacter(std::int16_t intNodeNumber) {
    const Running running(*this);
    const SynchronisationCodes codes = codesOf(intNodeNumber);
    ClearInputBuffer();
    SendByte(codes.sent);
    SelectByteInput();

    const bool onBus = communicationType_ == "RS485";
    if (!onBus && communicationType_ != "RS232")
        return false;

    std::uint8_t echo = 0;
    std::uint8_t answer = 0;
    synchronized_ = (!onBus || ReceiveByte(echo)) && ReceiveByte(answer) && answer == codes.expected;
    if (synchronized_)
        nodeNumber_ = intNodeNumber;
    return synchronized_;
}

}  // namespace opane
