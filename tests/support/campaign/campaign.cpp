#include "support/campaign/campaign.h"

#include <algorithm>
#include <random>
#include <sstream>
#include <utility>

namespace opane::test::campaign {
namespace {

constexpr std::array kKindNames{"lose", "flip", "set", "doubled", "repeat", "late", "noise", "reset", "unplug"};

/// Numbers that are the same on every machine.
class Dice {
public:
    Dice(std::uint64_t seed, std::uint64_t number) : next_(seed << 32 ^ number) {}

    /// 0 to below end.
    int below(int end) { return static_cast<int>(next_() % static_cast<std::uint64_t>(end)); }
    int between(int first, int last) { return first + below(last - first + 1); }
    bool oneIn(int times) { return below(times) == 0; }
    std::uint8_t byte() { return static_cast<std::uint8_t>(next_()); }

    template <class Values>
    auto of(const Values& values) {
        return values[static_cast<std::size_t>(below(static_cast<int>(values.size())))];
    }

private:
    std::mt19937_64 next_;
};

ByteArray bytesOf(std::size_t count, std::uint8_t first) {
    ByteArray bytes(count);
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<std::uint8_t>(first + i * 37);
    return bytes;
}

/// An exchange that a module answers well, and how many bytes it answers.
const std::vector<std::pair<Request, int>> kSamples{
    {{0, 0, 0, 8, {}}, 18},                    // version "OPane V2.0"
    {{8, 2, 5, 3, bytesOf(8, 0xA5)}, 7},       // a block, whose data look like handshakes and marks
    {{0, 255, 0, 5, {}}, 7},                   // the frame
    {{1, 0, 0, 12, {16}}, 23},                 // 16 bytes of the User EEPROM
    {{2, 9, 0, 3, {1, 2}}, 7},                 // refused: Aux1 is not 0
    {{0, 0, 0, 2, {}}, 7},                     // no such command: type 0
    {{120, 7, 0, 1, bytesOf(120, 0x11)}, 7},   // a whole line
    {{1, 0x80, 3, 32, {128}}, 135},            // 128 bytes of the System EEPROM
    {{128, 0, 1, 33, bytesOf(128, 0xAA)}, 7},  // and their writing
};

/// What is tried at every byte of each way.
constexpr Spoil kAtEveryByte[]{{Kind::lose, 0},    {Kind::lose, 0, kRest}, {Kind::flip, 0x01},  {Kind::flip, 0x80},
                               {Kind::flip, 0xFF}, {Kind::set, 0x00},      {Kind::doubled, 0},  {Kind::late, 600},
                               {Kind::late, 1600}, {Kind::noise, 0x00},    {Kind::noise, 0xAA}, {Kind::repeat, 0},
                               {Kind::reset, 70},  {Kind::reset, 1500},    {Kind::unplug, 0}};

/// What goes wrong in every answer, as a module that refuses or says nothing.
constexpr Spoil kInEveryAnswer[]{
    {Kind::set, 1, 1, Where::answer, 3, kEveryBurst},        {Kind::set, 255, 1, Where::answer, 4, kEveryBurst},
    {Kind::set, 0, 1, Where::answer, 5, kEveryBurst},        {Kind::flip, 1, 1, Where::answer, 5, kEveryBurst},
    {Kind::lose, 0, kRest, Where::answer, 6, kEveryBurst},   {Kind::lose, 0, kRest, Where::answer, 0, kEveryBurst},
    {Kind::lose, 0, kRest, Where::toModule, 0, kEveryBurst}, {Kind::doubled, 0, kRest, Where::answer, 0, kEveryBurst},
    {Kind::lose, 0, kRest, Where::echo, 0, kEveryBurst},     {Kind::doubled, 0, kRest, Where::echo, 0, kEveryBurst},
    {Kind::flip, 0x7F, 1, Where::echo, 1, kEveryBurst}};

Request drawnRequest(Dice& dice) {
    if (!dice.oneIn(3))
        return dice.of(kSamples).first;
    Request request;
    request.length = dice.oneIn(4) ? dice.byte() : static_cast<std::uint8_t>(dice.below(12));
    request.aux1 = dice.oneIn(2) ? 0 : dice.byte();
    request.aux2 = dice.oneIn(2) ? 0 : dice.byte();
    request.type = dice.oneIn(4) ? dice.byte() : static_cast<std::uint8_t>(dice.between(1, 33));
    for (int i = 0; i < request.length; ++i)
        request.data.push_back(dice.byte());
    return request;
}

Spoil drawnSpoil(Dice& dice, int requestBytes, std::int32_t timeoutMs) {
    Spoil spoil;
    spoil.where = dice.of(std::array{Where::toModule, Where::echo, Where::answer, Where::answer});
    spoil.kind = static_cast<Kind>(dice.below(static_cast<int>(kKindNames.size())));
    spoil.burst = dice.oneIn(5) ? kEveryBurst : dice.oneIn(2) ? 0 : dice.below(8);
    const int bytes = spoil.where == Where::answer ? 24 : requestBytes + 1;
    spoil.offset = dice.oneIn(2) ? dice.below(8) : dice.below(bytes);
    if (spoil.kind == Kind::flip)
        spoil.value = 1 << dice.below(8);
    else if (spoil.kind == Kind::set || spoil.kind == Kind::noise)
        spoil.value = dice.byte();
    else if (spoil.kind == Kind::late)
        spoil.value = dice.between(1, std::max(1, dice.oneIn(2) ? timeoutMs / 2 : 3 * timeoutMs));
    else if (spoil.kind == Kind::reset)
        spoil.value = dice.between(60, 2000);
    const bool oneByteOnly = spoil.kind == Kind::reset || spoil.kind == Kind::unplug || spoil.kind == Kind::repeat;
    if (!oneByteOnly && dice.oneIn(4))
        spoil.length = dice.oneIn(2) && spoil.kind != Kind::late ? kRest : dice.between(2, 5);
    return spoil;
}

Case drawn(std::uint64_t seed, std::size_t number) {
    constexpr std::array kRates{1200, 2400, 4800, 9600, 19200, 38400, 57600};
    constexpr std::array<std::int32_t, 6> kTimeouts{1000, 1000, 300, 100, 40, 0};
    Dice dice(seed, number);
    Case tried;
    tried.request = drawnRequest(dice);
    LinkBefore& before = tried.before;
    before.onBus = dice.oneIn(2);
    before.node = dice.below(4);
    tried.baudRate = dice.oneIn(2) ? 9600 : dice.of(kRates);
    tried.paced = dice.oneIn(2);
    before.timeoutMs = dice.of(kTimeouts);
    // Some clocks wrap in the middle of it.
    before.at = dice.oneIn(4) ? (Micros{1} << 32) * 1000 - dice.between(0, 20'000'000)
                              : Micros{1'000'000} + dice.below(1'000'000);
    for (int left = dice.between(1, 4); left > 0; --left)
        tried.spoils.push_back(drawnSpoil(dice, tried.request.length + 7, before.timeoutMs));
    return tried;
}

/// @return whether the module answered
bool connect(WatchedLink& host, int node, std::int32_t baudRate) {
    host.link().Baudrate(baudRate);
    host.link().Timeout(clsOPane::kHandshakeTimeoutMs);
    return host.link().SendSynchronizeCharacter(static_cast<std::int16_t>(node));
}

/// Everything works again, and the line has been quiet for one time-out: an exchange works at once with a module that
/// is there and at the host's rate.
std::string recoveryComplaint(FaultyLine& line, WatchedLink& host, int node, simulator::PseudoTerminal* terminal) {
    line.spoil({});
    host.time.micros = std::max(host.time.micros, line.settle()) + Micros{clsOPane::kUsualTimeoutMs} * 1000;
    const bool isGone = line.gone();
    if (isGone)
        line.replug();
    if (isGone && terminal != nullptr)
        terminal->reopen();
    const auto& [rate, version] = std::pair(line.module().baudRate, line.module().version);
    if ((isGone || host.link().Baudrate() != rate) && !connect(host, node, rate))
        return "the module does not answer at its own rate";
    host.link().Timeout(clsOPane::kUsualTimeoutMs);
    const Seen& seen = host.exchange({0, 0, 0, 8, {}}, {});
    const ByteArray expected(version.c_str(), version.c_str() + version.size() + 1);
    if (!seen.result || seen.info != expected || seen.writes.size() != 1 || seen.log.size() != 2)
        return "the next good exchange did not work at once; error " + std::to_string(seen.raised);
    return {};
}

}  // namespace

const std::vector<Case>& enumeratedCases() {
    static std::vector<Case> cases;
    if (!cases.empty())
        return cases;
    for (const auto& [request, answerBytes] : kSamples) {
        for (const bool onBus : {false, true}) {
            const auto add = [&asked = request, onBus](const Spoil& spoil) {
                cases.push_back({asked, {.onBus = onBus}, 9600, cases.size() % 2 == 1, {spoil}});
            };
            for (const Spoil& spoil : kInEveryAnswer)
                add(spoil);
            const int sent = request.length + 7;
            const std::array lengths{sent, onBus ? sent : 0, answerBytes};
            for (const Where where : {Where::toModule, Where::echo, Where::answer}) {
                for (int offset = 0; offset <= lengths.at(static_cast<std::size_t>(where)); ++offset) {
                    for (const Spoil& fault : kAtEveryByte)
                        add({fault.kind, fault.value, fault.length, where, offset});
                }
            }
        }
    }
    return cases;
}

Case caseOf(std::uint64_t seed, std::size_t number) {
    return number < enumeratedCases().size() ? enumeratedCases()[number] : drawn(seed, number);
}

Judgement run(const Case& tried, simulator::PseudoTerminal* terminal) {
    LinkBefore before = tried.before;
    FaultyLine line({.node = before.node, .baudRate = tried.baudRate, .quartz = 3 /* has every rate */}, before.onBus,
                    tried.paced);
    WatchedLink host(line, before, terminal);
    if (!connect(host, before.node, tried.baudRate))
        return {"no module answered before anything went wrong"};
    host.link().Timeout(before.timeoutMs);
    line.spoil(tried.spoils);
    before.at = host.time.micros;
    const Seen& seen = host.exchange(tried.request, ByteArray{0xC3, 0xC3, 0xC3});
    Judgement outcome = judge(tried.request, before, line.arrivals(), seen);
    if (outcome.complaint.empty())
        outcome.complaint = outcome.raised && !line.gone() ? "an error was raised though the device is there"
                                                           : recoveryComplaint(line, host, before.node, terminal);
    return outcome;
}

std::string description(const Case& tried) {
    constexpr std::array kWheres{"to the module", "of the echo", "of the answer"};
    const auto& [length, aux1, aux2, type, data] = tried.request;
    std::ostringstream text;
    text << "type " << int{type} << ", Leng " << int{length} << ", Aux1 " << int{aux1} << ", Aux2 " << int{aux2}
         << (tried.before.onBus ? ", RS485" : ", RS232") << ", node " << tried.before.node << ", " << tried.baudRate
         << " baud" << (tried.paced ? ", paced" : "") << ", Timeout " << tried.before.timeoutMs << "; spoilt:";
    for (const Spoil& spoil : tried.spoils)
        text << " [" << kKindNames.at(static_cast<std::size_t>(spoil.kind)) << ' ' << spoil.value << " at byte "
             << spoil.offset << ", bytes: " << (spoil.length == kRest ? "all" : std::to_string(spoil.length)) << ' '
             << kWheres.at(static_cast<std::size_t>(spoil.where)) << ", burst "
             << (spoil.burst == kEveryBurst ? "every" : std::to_string(spoil.burst)) << ']';
    return text.str();
}

void Tally::add(const Judgement& outcome) {
    ++cases;
    ++(outcome.raised ? raised : outcome.result ? good : failed);
    resynchronised += outcome.resynchronised ? 1 : 0;
    borderline += outcome.borderline ? 1 : 0;
    sends += outcome.sends;
}

}  // namespace opane::test::campaign
