#include "watcher.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

#include "platform/console.h"

namespace opane::tool {
namespace {

constexpr std::uint8_t kFirstAnswer = 0x15;  // of node 0; the others follow
constexpr std::uint8_t kLastAnswer = 0x18;

std::string byteText(std::uint8_t byte) {
    return hexText(byte, 2).substr(2);
}

std::string byteText(const std::optional<std::uint8_t>& byte) {
    return byte ? byteText(*byte) : "nothing";
}

std::string bytesText(std::span<const std::uint8_t> bytes) {
    constexpr std::size_t kMostShown = 32;
    std::string text;
    for (const std::uint8_t byte : bytes.first(std::min(bytes.size(), kMostShown)))
        text += (text.empty() ? "" : " ") + byteText(byte);
    return bytes.size() > kMostShown ? text + " ..." : text;
}

std::string countText(int count, const std::string& what) {
    return (count == 0 ? "no" : std::to_string(count)) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace

void Watcher::handshakeMade(const Handshake& handshake) {
    ++handshakes_;
    if (handshake.echo || handshake.answer)
        heard_ = handshake;
    show("handshake with node " + std::to_string(handshake.nodeNumber) + ": sent " + byteText(handshake.sent) +
         (handshake.onBus ? ", echo " + byteText(handshake.echo) : "") + ", received " + byteText(handshake.answer));
}

void Watcher::frameSent(const ByteArray& frame) {
    ++framesSent_;
    if (frame != pending_ && !pending_.empty())
        ++unconfirmed_;
    pending_ = frame;
}

void Watcher::answerTaken(const ByteArray& /*info*/) {
    ++confirmed_;
    pending_.clear();
}

void Watcher::bytesDropped(std::span<const std::uint8_t> bytes) {
    show("dropped " + bytesText(bytes) + ", which nobody waited for");
}

void Watcher::noted(std::string_view procedure, std::string_view text) {
    if (session_.isCancelled() && !isCancelShown_) {
        isCancelShown_ = true;
        show("cancelled: nothing is sent any more, and every step fails as with a silent module");
    }
    if (session_.arguments().trace)
        show(std::string(procedure.substr(procedure.find(',') + 1)) + ": " + printableText(std::string(text)));
}

void Watcher::show(const std::string& text) {
    if (!session_.arguments().trace)
        return;
    const std::chrono::duration<double> since = std::chrono::steady_clock::now() - start_;
    char time[32];
    std::snprintf(time, sizeof time, "%8.3f  ", since.count());
    std::cerr << time + text + '\n';
    if (!std::cerr && isBrokenPipe(StandardStream::error))
        session_.traceIsClosed();
}

void Watcher::beginRun() {
    framesSent_ = confirmed_ = unconfirmed_ = 0;
    pending_.clear();
}

std::string Watcher::heardText() const {
    if (!heard_)
        return "nothing was heard in " + countText(handshakes_, "handshake") +
               "; check its power, its cable, its node number, its baud rate and the bus type";
    const Handshake& last = *heard_;
    if (last.onBus && !last.answer)
        return last.echo == last.sent
                   ? "the echo came back and no answer; check its power, its node number and its baud rate"
               : last.echo == last.expected ? "its answer came where an echo was expected; try --bus RS232"
                                            : "only " + byteText(last.echo) + " was heard; check the baud rate";
    if (!last.onBus && last.answer == last.sent)
        return "what was sent came back; try --bus RS485, or look for a bridge between the lines of the cable";
    if (last.answer >= kFirstAnswer && last.answer <= kLastAnswer)
        return "the answer of node " + std::to_string(*last.answer - kFirstAnswer) + " was heard; try --node " +
               std::to_string(*last.answer - kFirstAnswer);
    return byteText(last.answer) + " was heard where " + byteText(last.expected) +
           " was expected; check the baud rate, and that nothing else sends on this line";
}

std::string Watcher::framesText() const {
    const int open = unconfirmed_ + (pending_.empty() ? 0 : 1);
    if (!hasSent())
        return "nothing was sent";
    return "the module has confirmed " + countText(confirmed_, "frame") +
           (open > 0 ? ", was sent " + std::to_string(open) + " more that it has not confirmed" : "") +
           ", and was sent nothing else";
}

}  // namespace opane::tool
