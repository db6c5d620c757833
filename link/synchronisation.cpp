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
    const bool onBus = communicationType_ == "RS485";
    const bool isBusKnown = onBus || communicationType_ == "RS232";
    if (isCancelled()) {
        synchronized_ = synchronized_ && !isBusKnown;
        return false;
    }
    ClearInputBuffer();
    const bool isSent = SendByte(codes.sent);
    SelectByteInput();

    if (!isBusKnown)
        return false;

    const auto receive = [this]() -> std::optional<std::uint8_t> {
        std::uint8_t byte = 0;
        return ReceiveByte(byte) ? std::optional(byte) : std::nullopt;
    };
    Handshake made{intNodeNumber, codes.sent, codes.expected, onBus, {}, {}, false};
    if (onBus)
        made.echo = receive();
    if (!onBus || made.echo)
        made.answer = receive();
    made.synchronized = made.answer == codes.expected;
    synchronized_ = made.synchronized;
    if (synchronized_)
        nodeNumber_ = intNodeNumber;
    if (isSent && observer_ != nullptr)
        observer_->handshakeMade(made);
    return made.synchronized;
}

}  // namespace opane
