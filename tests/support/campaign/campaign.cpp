#include "support/campaign/campaign.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <sstream>

#include "link/clsOPane.h"
#include "platform/services.h"
#include "shared/mdlConstantes.h"
#include "shared/runtime_error.h"
#include "support/bench.h"
#include "support/campaign/bounds.h"

namespace opane::test::campaign {
namespace {

constexpr std::array kKindNames{"lose", "flip", "set", "doubled", "repeat", "late", "noise", "reset", "unplug"};

/// Numbers that are the same on every machine.
class Dice {
public:
    Dice(std::uint64_t seed, std::uint64_t number) : state_(seed * 0x9E37'79B9'7F4A'7C15ULL ^ (number + 1)) {
        next();
        state_ ^= number * 0xD1B5'4A32'D192'ED03ULL;
    }

    std::uint64_t next() {  // splitmix64
        std::uint64_t mixed = state_ += 0x9E37'79B9'7F4A'7C15ULL;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58'476D'1CE4'E5B9ULL;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D0'49BB'1331'11EBULL;
        return mixed ^ (mixed >> 31);
    }
    /// 0 to below end.
    int below(int end) { return static_cast<int>(next() % static_cast<std::uint64_t>(end)); }
    int between(int first, int last) { return first + below(last - first + 1); }
    bool oneIn(int times) { return below(times) == 0; }
    std::uint8_t byte() { return static_cast<std::uint8_t>(next()); }

    template <class Values>
    auto of(const Values& values) {
        return *std::next(std::begin(values), below(static_cast<int>(std::size(values))));
    }

private:
    std::uint64_t state_;
};

ByteArray bytesOf(std::size_t count, std::uint8_t first) {
    ByteArray bytes(count);
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<std::uint8_t>(first + i * 37);
    return bytes;
}

/// Exchanges that a module answers well, and how many bytes it answers.
const struct {
    Request request;
    int answerBytes;
} kSamples[]{
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

/// What is tried at every byte of one way.
constexpr struct {
    Kind kind;
    int value;
    int length;
} kAtEveryByte[]{{Kind::lose, 0, 1},    {Kind::lose, 0, kRest}, {Kind::flip, 0x01, 1},  {Kind::flip, 0x80, 1},
                 {Kind::flip, 0xFF, 1}, {Kind::set, 0x00, 1},   {Kind::doubled, 0, 1},  {Kind::late, 600, 1},
                 {Kind::late, 1600, 1}, {Kind::noise, 0x00, 1}, {Kind::noise, 0xAA, 1}, {Kind::repeat, 0, 1},
                 {Kind::reset, 70, 1},  {Kind::reset, 1500, 1}, {Kind::unplug, 0, 1}};

/// What goes wrong in every answer, as a module that refuses or says nothing.
constexpr Spoil kInEveryAnswer[]{
    {Where::answer, Kind::set, kEveryBurst, 3, 1, 1},        {Where::answer, Kind::set, kEveryBurst, 4, 255, 1},
    {Where::answer, Kind::set, kEveryBurst, 5, 0, 1},        {Where::answer, Kind::flip, kEveryBurst, 5, 1, 1},
    {Where::answer, Kind::lose, kEveryBurst, 6, 0, kRest},   {Where::answer, Kind::lose, kEveryBurst, 0, 0, kRest},
    {Where::toModule, Kind::lose, kEveryBurst, 0, 0, kRest}, {Where::answer, Kind::doubled, kEveryBurst, 0, 0, kRest},
    {Where::echo, Kind::lose, kEveryBurst, 0, 0, kRest},     {Where::echo, Kind::doubled, kEveryBurst, 0, 0, kRest},
    {Where::echo, Kind::flip, kEveryBurst, 1, 0x7F, 1}};

const std::vector<Case>& enumerated() {
    static std::vector<Case> cases;
    if (!cases.empty())
        return cases;
    for (const auto& sample : kSamples) {
        for (const bool onBus : {false, true}) {
            const auto add = [&](const Spoil& spoil) {
                cases.push_back(
                    {.request = sample.request, .onBus = onBus, .paced = cases.size() % 2 == 1, .spoils = {spoil}});
            };
            for (const Spoil& spoil : kInEveryAnswer)
                add(spoil);
            const int sent = sample.request.length + 7;
            const std::array<std::pair<Where, int>, 3> ways{
                {{Where::toModule, sent}, {Where::echo, onBus ? sent : 0}, {Where::answer, sample.answerBytes}}};
            for (const auto& [where, bytes] : ways) {
                for (int offset = 0; offset <= bytes; ++offset) {
                    for (const auto& fault : kAtEveryByte)
                        add({where, fault.kind, 0, offset, fault.value, fault.length});
                }
            }
        }
    }
    return cases;
}

Request drawnRequest(Dice& dice) {
    if (!dice.oneIn(3))
        return dice.of(kSamples).request;
    Request request;
    request.length = dice.oneIn(4) ? dice.byte() : static_cast<std::uint8_t>(dice.below(12));
    request.aux1 = dice.oneIn(2) ? 0 : dice.byte();
    request.aux2 = dice.oneIn(2) ? 0 : dice.byte();
    request.type = dice.oneIn(4) ? dice.byte() : static_cast<std::uint8_t>(dice.between(1, 33));
    for (int i = 0; i < request.length; ++i)
        request.data.push_back(dice.byte());
    return request;
}

Spoil drawnSpoil(Dice& dice, const Case& tried) {
    constexpr std::array kWheres{Where::toModule, Where::echo, Where::answer, Where::answer};
    Spoil spoil;
    spoil.where = dice.of(kWheres);
    spoil.kind = static_cast<Kind>(dice.below(static_cast<int>(kKindNames.size())));
    spoil.burst = dice.oneIn(5) ? kEveryBurst : dice.oneIn(2) ? 0 : dice.below(8);
    const int bytes = spoil.where == Where::answer ? 24 : tried.request.length + 8;
    spoil.offset = dice.oneIn(2) ? dice.below(8) : dice.below(bytes);
    const auto is = [&](auto... kinds) { return ((spoil.kind == kinds) || ...); };
    if (is(Kind::flip))
        spoil.value = 1 << dice.below(8);
    if (is(Kind::set, Kind::noise))
        spoil.value = dice.byte();
    if (is(Kind::late))
        spoil.value = dice.between(1, std::max(1, dice.oneIn(2) ? tried.timeoutMs / 2 : 3 * tried.timeoutMs));
    if (is(Kind::reset))
        spoil.value = dice.between(60, 2000);
    if (!is(Kind::reset, Kind::unplug, Kind::repeat) && dice.oneIn(4))
        spoil.length = dice.oneIn(2) && !is(Kind::late) ? kRest : dice.between(2, 5);
    return spoil;
}

Case drawn(std::uint64_t seed, std::size_t number) {
    constexpr std::array kRates{1200, 2400, 4800, 9600, 19200, 38400, 57600};
    constexpr std::array<std::int32_t, 6> kTimeouts{1000, 1000, 300, 100, 40, 0};
    Dice dice(seed, number);
    Case tried;
    tried.request = drawnRequest(dice);
    tried.onBus = dice.oneIn(2);
    tried.node = dice.below(4);
    tried.baudRate = dice.oneIn(2) ? 9600 : dice.of(kRates);
    tried.paced = dice.oneIn(2);
    tried.timeoutMs = dice.of(kTimeouts);
    // Some clocks wrap in the middle of it.
    tried.startAt = dice.oneIn(4) ? (Micros{1} << 32) * 1000 - dice.between(0, 20'000'000)
                                  : Micros{1'000'000} + dice.below(1'000'000);
    for (int left = dice.between(1, 4); left > 0; --left)
        tried.spoils.push_back(drawnSpoil(dice, tried));
    return tried;
}

/// A host's link on a faulty line, as its owner would have it.
class Host : public Bench {
public:
    Host(const Case& tried, Carrier& carrier)
        : Bench({.node = tried.node, .baudRate = tried.baudRate, .quartz = 3}),  // crystal 3 offers every rate
          faulty(module, tried.onBus, tried.paced ? tried.baudRate : 0),
          tried_(tried) {
        time.micros = tried.startAt;
        services->calendar = [] { return std::tm{}; };
        services->portMap = [&carrier](std::int16_t) { return carrier.device(); };
        services->makeSerialControl = [this, &carrier] {
            return watchedControl(carrier.control(faulty, time), time, watched_);
        };
        holder_.adopt(clsOPane::create());
        holder_.adopt(std::make_shared<clsLog>());
        threadLog()->LogLevel(3);
        threadLog()->writer(std::make_unique<RecordingWriter>(log_));
        holder_.globals().gintCommPort = 1;
        link().Initialize();
        link().CommunicationType(tried.onBus ? "RS485" : "RS232");
    }

    clsOPane& link() { return *holder_.link(); }

    /// @return whether the module answered
    bool connect(std::int32_t baudRate) {
        link().Baudrate(baudRate);
        link().Timeout(clsOPane::kHandshakeTimeoutMs);
        const bool answered = link().SendSynchronizeCharacter(static_cast<std::int16_t>(tried_.node));
        link().Timeout(tried_.timeoutMs);
        return answered;
    }

    Seen exchange(const Request& request, const ByteArray& info) {
        watched_.writes.clear();
        watched_.readSinceWrite = 0;
        log_.clear();
        Seen seen{.infoBefore = info, .info = info};
        seen.raised = raisedNumber([&] {
            seen.result = link().SendDataAndReceiveResponse(request.length, request.aux1, request.aux2, request.type,
                                                            request.data, seen.info);
        });
        seen.timeoutMs = link().Timeout();
        seen.synchronized = link().IsSynchronized();
        seen.endedAt = time.micros;
        seen.log = log_;
        seen.writes = watched_.writes;
        seen.readSinceWrite = watched_.readSinceWrite;
        seen.goneBy = watched_.goneBy;
        return seen;
    }

    FaultyLine faulty;

private:
    const Case& tried_;
    Watched watched_;
    std::vector<std::string> log_;
    GlobalsHolder holder_;
};

/// After a quiet time-out, with a module that is there and at the host's rate, an exchange works at once.
/// @return what was wrong; empty: nothing
std::string recoveryComplaint(Host& host, Carrier& carrier) {
    // Everything works again, and the line has been quiet for one time-out.
    host.faulty.spoil({});
    host.time.micros = std::max(host.time.micros, host.faulty.settle()) + Micros{clsOPane::kUsualTimeoutMs} * 1000;
    const int rate = host.module.state().baudRate;
    if (host.faulty.gone()) {
        host.faulty.replug();
        carrier.replug();
        if (!host.connect(rate))
            return "a module that came back does not answer";
    } else if (host.link().Baudrate() != rate && !host.connect(rate)) {
        return "the module does not answer at its own rate";
    }
    host.link().Timeout(clsOPane::kUsualTimeoutMs);
    const std::string version = host.module.state().version;
    ByteArray expected(version.begin(), version.end());
    expected.push_back(0);
    const Seen seen = host.exchange({0, 0, 0, 8, {}}, {});
    if (seen.raised != 0)
        return "the next good exchange raised error " + std::to_string(seen.raised);
    if (!seen.result || seen.info != expected || seen.writes.size() != 1 || seen.log.size() != 2)
        return "the next good exchange did not work at once";
    return {};
}

}  // namespace

std::size_t enumeratedCases() {
    return enumerated().size();
}

Case caseOf(std::uint64_t seed, std::size_t number) {
    return number < enumerated().size() ? enumerated()[number] : drawn(seed, number);
}

Outcome run(const Case& tried, Carrier& carrier) {
    Host host(tried, carrier);
    if (!host.connect(tried.baudRate))
        return {{Verdict::wrong, "no module answered before anything went wrong"}};
    host.faulty.spoil(tried.spoils);
    const LinkBefore before{tried.onBus, tried.node, tried.timeoutMs, host.time.micros, true};
    const Seen seen = host.exchange(tried.request, ByteArray{0xC3, 0xC3, 0xC3});
    Outcome outcome{judge(tried.request, before, host.faulty.arrivals(), seen), seen.result, seen.raised != 0};
    const std::int64_t longest = longestExchange(tried.timeoutMs, tried.onBus);
    const double tookMs = host.time.since(before.at);
    if (outcome.complaint.empty() && tookMs > static_cast<double>(longest))
        outcome.complaint = "it took " + std::to_string(tookMs) + " ms; at most " + std::to_string(longest);
    if (outcome.complaint.empty() && outcome.raised && !host.faulty.gone())
        outcome.complaint = "an error was raised though the device is there";
    if (outcome.complaint.empty())
        outcome.complaint = recoveryComplaint(host, carrier);
    return outcome;
}

std::string kindName(Kind kind) {
    return kKindNames.at(static_cast<std::size_t>(kind));
}

std::string description(const Case& tried) {
    constexpr std::array kWheres{"to the module", "of the echo", "of the answer"};
    std::ostringstream text;
    text << "type " << int{tried.request.type} << ", Leng " << int{tried.request.length} << ", Aux1 "
         << int{tried.request.aux1} << ", Aux2 " << int{tried.request.aux2} << (tried.onBus ? ", RS485" : ", RS232")
         << ", node " << tried.node << ", " << tried.baudRate << " baud" << (tried.paced ? ", paced" : "")
         << ", Timeout " << tried.timeoutMs << "; spoilt:";
    for (const Spoil& spoil : tried.spoils) {
        text << " [" << kindName(spoil.kind) << ' ' << spoil.value << " at byte " << spoil.offset;
        if (spoil.length == kRest)
            text << " and all that follow";
        else if (spoil.length != 1)
            text << " and on, bytes: " << spoil.length;
        text << ' ' << kWheres.at(static_cast<std::size_t>(spoil.where)) << ", "
             << (spoil.burst == kEveryBurst ? "every burst]" : "burst " + std::to_string(spoil.burst) + "]");
    }
    return text.str();
}

void Tally::add(const Case& tried, const Outcome& outcome) {
    ++cases;
    exchanges += 2;
    good += outcome.result ? 1 : 0;
    raised += outcome.raised ? 1 : 0;
    failed += !outcome.result && !outcome.raised ? 1 : 0;
    resynchronised += outcome.resynchronised ? 1 : 0;
    borderline += outcome.verdict == Verdict::borderline ? 1 : 0;
    sends += outcome.sends;
    for (std::size_t kind = 0; kind < byKind.size(); ++kind)
        byKind[kind] += std::ranges::count(tried.spoils, static_cast<Kind>(kind), &Spoil::kind) > 0 ? 1U : 0U;
}

}  // namespace opane::test::campaign
