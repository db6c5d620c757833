#include "simulator/simulated_module.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include "simulator/answers.h"

namespace opane::simulator {
namespace {

ModuleState stateFrom(const ModuleOptions& options) {
    const auto refuse = [](const std::string& what, int value, const std::string& expected) {
        throw std::invalid_argument(what + " is " + std::to_string(value) + "; " + expected);
    };
    if (options.node < 0 || options.node >= kNodes)
        refuse("the node", options.node, "a module's is 0 to 3");
    if (options.quartz < 1 || options.quartz > 3)
        refuse("the quartz", options.quartz, "there are 1, 2 and 3");
    if (!offersBaudRate(options.quartz, options.baudRate))
        refuse("the baud rate", options.baudRate, "quartz " + std::to_string(options.quartz) + " does not offer it");

    ModuleState state;
    state.node = options.node;
    state.bus = options.bus;
    state.quartz = options.quartz;
    state.baudRate = options.baudRate;
    state.version = options.version;
    return state;
}

}  // namespace

SimulatedModule::SimulatedModule(const ModuleOptions& options)
    : state_(stateFrom(options)),
      hostBaudRate_(options.baudRate),
      line_(options.pace),
      drifts_(options.drift),
      keepsFrames_(options.keepFrames) {}

void SimulatedModule::receive(std::span<const std::uint8_t> bytes, Micros now) {
    for (const std::uint8_t byte : bytes) {
        if (unplugged_)
            return;
        const Micros heardAt = line_.hostByte(now, state_.baudRate);
        if (state_.bus == Bus::rs485)
            putOnItsWay({byte, heardAt, std::nullopt});
        if (hostBaudRate_ == lostBaudRate_)
            continue;
        const std::uint8_t heardByte = hostBaudRate_ == state_.baudRate ? byte : noise(byte);
        if (!firstHeardAt_)
            firstHeardAt_ = heardAt;
        const auto heard = reader_.hear(heardByte, heardAt, state_.baudRate);
        if (!heard)
            continue;
        if (heard->kind == Heard::Kind::handshake)
            answerHandshake(*heard, heardAt);
        else
            answerFrame(*heard, heardAt);
    }
}

std::vector<std::uint8_t> SimulatedModule::takeOutput(Micros now) {
    const auto stillOnItsWay =
        std::ranges::find_if(onItsWay_, [&](const OnItsWay& sent) { return sent.arrivesAt > now; });
    std::vector<std::uint8_t> arrived;
    arrived.reserve(static_cast<std::size_t>(stillOnItsWay - onItsWay_.begin()));
    for (auto sent = onItsWay_.begin(); sent != stillOnItsWay; ++sent)
        arrived.push_back(sent->sentAt.value_or(hostBaudRate_) == hostBaudRate_ ? sent->byte : noise(sent->byte));
    onItsWay_.erase(onItsWay_.begin(), stillOnItsWay);
    return arrived;
}

std::optional<Micros> SimulatedModule::nextOutputAt() const {
    if (onItsWay_.empty())
        return std::nullopt;
    return onItsWay_.front().arrivesAt;
}

void SimulatedModule::replug() {
    unplugged_ = false;
    lostBaudRate_.reset();
}

void SimulatedModule::pressKey(int key) {
    constexpr std::uint16_t kToggle = 0x800;
    constexpr std::array<std::uint16_t, 9> kCodes{0x7F3, 0x7C3, 0x7D4, 0x7D6, 0x7DF, 0x7EF, 0x7DE, 0x7EE, 0x7F2};
    if (key < 1 || key > static_cast<int>(kCodes.size()))
        throw std::invalid_argument("the key is " + std::to_string(key) + "; there are 1 to 9");
    const std::uint16_t code = kCodes.at(static_cast<std::size_t>(key - 1));
    state_.lastKey = static_cast<std::uint16_t>(code | (keyToggle_ ? kToggle : 0));
    keyToggle_ = !keyToggle_;
}

void SimulatedModule::answerHandshake(const Heard& handshake, Micros heardAt) {
    ++handshakes_;
    if (handshake.node != state_.node || faults_.ignoresHandshake())
        return;
    const std::uint8_t answer[] = {static_cast<std::uint8_t>(kFirstHandshakeAnswer + handshake.node)};
    send(answer, heardAt, state_.baudRate);
}

void SimulatedModule::answerFrame(const Heard& heard, Micros heardAt) {
    const bool understood = balances(heard.bytes);
    framesHeard_ += understood ? 1 : 0;
    if (understood && keepsFrames_)
        frames_.push_back(heard.bytes);
    if (heard.node != state_.node)
        return;

    if (drifts_)
        state_.driftingFor = heardAt - *firstHeardAt_;
    ModuleState after = state_;
    const Frame request = frameOf(heard.bytes);
    const Frame answer = understood ? carryOut(after, request) : commandError(state_);
    const bool speedSet = setsSpeed(request, answer);
    const AnswerFaults faults = faults_.atRequest(speedSet);
    if (faults.unplugged) {
        unplugged_ = true;
        onItsWay_.clear();
    }
    if (faults.unplugged || faults.ignored)
        return;

    const int baudRate = state_.baudRate;  // the request may change it: its answer still goes out at the old one
    if (speedSet && !faults.refuses()) {
        lostBaudRate_ = faults.lostRate ? std::optional(after.baudRate) : std::nullopt;
        after.baudRate = faults.lostRate ? baudRate : after.baudRate;
    }
    if (!faults.refuses())
        state_ = std::move(after);
    send(spoiled(answer, faults), heardAt + faults.delay, baudRate);
}

void SimulatedModule::send(std::span<const std::uint8_t> bytes, Micros notBefore, int baudRate) {
    for (const std::uint8_t byte : bytes)
        putOnItsWay({byte, line_.moduleByte(notBefore, baudRate), baudRate});
}

// The echo of a host that does not wait for a late answer comes before it.
void SimulatedModule::putOnItsWay(const OnItsWay& sent) {
    if (onItsWay_.size() >= kMostOnItsWay)
        return;
    const auto later = std::ranges::upper_bound(onItsWay_, sent.arrivesAt, {}, &OnItsWay::arrivesAt);
    onItsWay_.insert(later, sent);
}

std::uint8_t SimulatedModule::noise(std::uint8_t instead) {
    const auto difference = 1 + noise_() % 255;
    return static_cast<std::uint8_t>(instead ^ difference);
}

}  // namespace opane::simulator
