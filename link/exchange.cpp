#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "link/clsOPane.h"
#include "platform/services.h"

namespace opane {
namespace {

constexpr std::int16_t kMostRetries = 4;  // a count above it ends the exchange
constexpr int kMostHandshakes = 125;      // of one resynchronisation
constexpr std::int16_t kLogLevel = 3;
constexpr std::int32_t kAnswerMs = 300;  // for a module to begin its answer, where a cancelled call still waits for it
constexpr std::int32_t kBaudRateOfANewPort = 9600;
constexpr std::string_view kLogName = "clsOpane,SendDataAndReceiveResponse";

}  // namespace

/// The state of one call of SendDataAndReceiveResponse.
struct clsOPane::Exchange {
    const ByteArray request;  // sent unchanged at every attempt
    const FrameFields sent;
    ByteArray& receivedInfo;
    FrameFields answer{};      // a field that an attempt does not receive keeps its earlier value
    std::int16_t retries = 0;  // errors counted so far; one attempt can count several
    bool seesToEnd = false;    // its answer is waited for also after a cancellation
    bool done = false;         // the answer is complete, or the resynchronisation failed
    bool ok = false;           // the current attempt has had no error
};

bool clsOPane::SendDataAndReceiveResponse(std::uint8_t bytLength, std::uint8_t bytAux1, std::uint8_t bytAux2,
                                          std::uint8_t bytType, const ByteArray& arrbytData,
                                          ByteArray& arrbytReceivedInfo) {
    const Running running(*this);
    const bool seesToEnd = std::exchange(seesToEnd_, false);
    // A host event may run another exchange on this link in the middle of one.
    struct Kept {
        std::optional<Wait>& wait;
        std::optional<Wait> outer = std::exchange(wait, std::nullopt);
        ~Kept() { wait = outer; }
    };
    const Kept kept{lastWait_};
    FrameFields fields;
    fields.Leng = bytLength;
    fields.Node = frameByte(nodeNumber_, "node number");
    fields.Aux1 = bytAux1;
    fields.Aux2 = bytAux2;
    fields.Type = bytType;
    ByteArray request = buildFrame(fields, arrbytData);
    fields = fieldsOf(request);
    Exchange exchange{std::move(request), fields, arrbytReceivedInfo};
    exchange.seesToEnd = seesToEnd;

    do {
        attempt(exchange);
    } while (!exchange.done && exchange.retries <= kMostRetries);

    if (exchange.retries > kMostRetries)
        logExchange("Retry = " + std::to_string(exchange.retries) +
                    ". Exit SendDataAndReceiveResponse without success");
    return exchange.ok;
}

void clsOPane::attempt(Exchange& exchange) {
    logExchange(frameText("SEND", exchange.sent));
    ClearInputBuffer();  // the late bytes of an earlier answer must not be taken for this one
    send(exchange);
    SelectByteInput();
    exchange.ok = true;

    if (communicationType_ == "RS485")
        dropEcho();
    FrameFields& answer = exchange.answer;
    if (!receiveHeader(answer)) {
        recover(exchange, "Timeout, no Mark received");
        return;
    }
    // An answer with an error code still has its info bytes read and its type compared.
    if (answer.Aux1 != 0 || answer.Aux2 != 0)
        countError(exchange, "Error return, AUX1 or AUX2 <> 0");
    if (!receiveInfo(exchange))
        countError(exchange, "Timeout during INFO transmission");
    if (answer.Type == 0) {
        recover(exchange, "Error, command erreur received");
        return;
    }
    if (answer.Type != exchange.sent.Type)
        countError(exchange, "Error, Type of command received not expected");
    if (!exchange.ok)
        return;

    if (!ReceiveByte(answer.Cksm)) {  // its value is not compared
        countError(exchange, "Timeout, Checksum not received");
        return;
    }
    logExchange(frameText("RCV", answer));
    if (observer_ != nullptr)
        observer_->answerTaken(exchange.receivedInfo);
    exchange.done = true;
}

void clsOPane::send(const Exchange& exchange) {
    lastWait_.reset();
    if (!giveToPort(exchange.request))
        return;
    if (exchange.seesToEnd) {
        const auto wireBytes = static_cast<std::int64_t>(exchange.request.size() + kHeaderBytes + 1);
        constexpr std::int64_t kBitTimes = 10;  // of a byte: start, 8 data bits, stop
        const std::int64_t wireMs = wireBytes * kBitTimes * 1000 / (baudrate_ > 0 ? baudrate_ : kBaudRateOfANewPort);
        lastWait_ = Wait{services().tickCounter->now(), static_cast<std::int32_t>(wireMs) + kAnswerMs};
    }
    if (observer_ != nullptr)
        observer_->frameSent(exchange.request);
}

/// On an RS485 bus the host's own frame comes back ahead of the answer. A missing echo is no error.
void clsOPane::dropEcho() {
    std::array<std::uint8_t, kHeaderBytes> header{};
    bool whole = true;
    for (std::uint8_t& field : header)
        whole = ReceiveByte(field) && whole;
    if (!whole)
        return;
    std::uint8_t dropped = 0;
    for (int left = header[1]; left > 0; --left)
        ReceiveByte(dropped);
    ReceiveByte(dropped);
}

/// All six reads are made, also when an earlier one has timed out.
bool clsOPane::receiveHeader(FrameFields& answer) {
    bool whole = true;
    for (std::uint8_t* const field :
         {&answer.Mark, &answer.Leng, &answer.Node, &answer.Aux1, &answer.Aux2, &answer.Type})
        whole = ReceiveByte(*field) && whole;
    return whole;
}

/// Stops at the first byte that does not come.
bool clsOPane::receiveInfo(Exchange& exchange) {
    exchange.receivedInfo.assign(std::max<std::size_t>(exchange.answer.Leng, 1), 0);
    for (std::size_t i = 0; i < exchange.answer.Leng; ++i) {
        std::uint8_t byte = 0;
        if (!ReceiveByte(byte))
            return false;
        if (i < exchange.receivedInfo.size())  // a host event may have used the caller's array meanwhile
            exchange.receivedInfo[i] = byte;
    }
    return true;
}

void clsOPane::countError(Exchange& exchange, std::string_view errorText) {
    logExchange(errorText);
    logExchange(frameText("RCV", exchange.answer));
    countRetry(exchange);
    exchange.ok = false;
}

void clsOPane::countRetry(Exchange& exchange) {
    ++exchange.retries;
    logExchange("Retry = " + std::to_string(exchange.retries));
}

void clsOPane::recover(Exchange& exchange, std::string_view errorText) {
    logExchange(errorText);
    logExchange(frameText("RCV", exchange.answer));
    logExchange("Try to resynchronize system");
    lastWait_.reset();  // what was sent has been waited for
    resynchronise(exchange);
    exchange.ok = false;
}

void clsOPane::resynchronise(Exchange& exchange) {
    Timeout(kHandshakeTimeoutMs);
    int failed = 0;
    while (failed < kMostHandshakes && !SendSynchronizeCharacter(nodeNumber_))
        ++failed;
    Timeout(kUsualTimeoutMs);

    if (failed == kMostHandshakes) {
        logExchange("Resynchronize system FAILED");
        exchange.done = true;
        return;
    }
    logExchange("Resynchronize system OK after " + std::to_string(failed) + " times, Retry to send");
    countRetry(exchange);
}

void clsOPane::logExchange(std::string_view text) {
    logEvent(kLogName, text, kLogLevel);
}

}  // namespace opane
