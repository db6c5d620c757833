#include "support/campaign/faulty_line.h"

#include <algorithm>
#include <utility>

#include "simulator/pacing.h"

namespace opane::test::campaign {

FaultyLine::FaultyLine(const simulator::ModuleOptions& options, bool echoes, bool paces)
    : echoes_(echoes),
      characterTime_(paces ? simulator::kBitsPerCharacter * 1'000'000 / options.baudRate : 0),
      module_(options) {}

void FaultyLine::spoil(std::vector<Spoil> spoils) {
    spoils_ = std::move(spoils);
    bursts_ = 0;
    silencedBurst_ = -1;
    progress_ = {};
}

void FaultyLine::replug() {
    gone_ = false;
    toModule_.events.clear();
    toHost_.events.clear();
}

Micros FaultyLine::settle() {
    runModule(std::numeric_limits<Micros>::max());
    gone_ = gone_ || std::any_of(toHost_.events.begin(), toHost_.events.end(),
                                 [](const Event& event) { return event.what == What::unplug; });
    return std::max({toModule_.notBefore, toHost_.notBefore, busyUntil_, deafUntil_});
}

void FaultyLine::receive(std::span<const std::uint8_t> bytes, Micros now) {
    const int burst = bursts_++;
    for (const std::uint8_t byte : bytes) {
        busyUntil_ = std::max(busyUntil_, now) + characterTime_;
        put(Where::echo, burst, byte);
        put(Where::toModule, burst, byte);
    }
    put(Where::echo, burst, std::nullopt);
    put(Where::toModule, burst, std::nullopt);
}

ByteArray FaultyLine::takeOutput(Micros now) {
    runModule(now);
    ByteArray arrived;
    for (auto& events = toHost_.events; !gone_ && !events.empty() && events.front().at <= now; events.pop_front()) {
        gone_ = events.front().what == What::unplug;
        if (!gone_)
            arrived.push_back(static_cast<std::uint8_t>(events.front().value));
    }
    return arrived;
}

std::optional<Micros> FaultyLine::nextOutputAt() const {
    constexpr Micros kNever = std::numeric_limits<Micros>::max();
    const auto first = [](const Track& track) { return track.events.empty() ? kNever : track.events.front().at; };
    const Micros next = gone_ ? 0 : std::min(first(toModule_), first(toHost_));  // 0: there is something to say at once
    return next == kNever ? std::nullopt : std::optional(next);
}

/// One byte on its way, or the place behind the last one.
void FaultyLine::put(Where where, int burst, std::optional<std::uint8_t> byte) {
    const Micros at = busyUntil_;
    Progress& progress = progress_.at(static_cast<std::size_t>(where));
    if (progress.burst != burst)
        progress = {burst};
    const bool isHeard = byte && (where != Where::echo || echoes_);
    int copies = isHeard ? 1 : 0;
    Event sent{at, burst, byte.value_or(0)};
    for (const auto& [kind, value, length, spoilt, offset, spoiltBurst] : spoils_) {
        if (spoilt != where || (spoiltBurst != burst && spoiltBurst != kEveryBurst) || progress.offset < offset ||
            progress.offset - offset >= length)
            continue;
        if (kind == Kind::lose || kind == Kind::reset || kind == Kind::unplug)
            copies = 0;
        if (kind == Kind::flip)
            sent.value ^= value;
        if (kind == Kind::set)
            sent.value = value;
        if (kind == Kind::doubled)
            copies = std::min(2, 2 * copies);
        if (kind == Kind::repeat) {
            for (const std::uint8_t again : progress.sent)
                push(where, {at, burst, again});
        }
        if (kind == Kind::late)
            sent.at += Micros{value} * 1000;
        if (kind == Kind::noise)
            push(where, {at, burst, value});
        if (kind == Kind::reset)
            push(Where::toModule, {at, burst, value, What::reset});
        if (kind == Kind::reset && where == Where::answer)
            silencedBurst_ = burst;
        if (kind == Kind::unplug)
            push(where, {at, burst, 0, What::unplug});
    }
    for (; copies > 0; --copies)
        push(where, sent);
    if (isHeard)
        progress.sent.push_back(static_cast<std::uint8_t>(sent.value));
    ++progress.offset;
}

void FaultyLine::push(Where where, Event event) {
    Track& track = where == Where::toModule ? toModule_ : toHost_;
    event.at = track.notBefore = std::max(event.at, track.notBefore);
    track.events.push_back(event);
    if (where != Where::toModule && event.what == What::byte)
        arrivals_.push_back({event.at, static_cast<std::uint8_t>(event.value)});
}

void FaultyLine::runModule(Micros now) {
    while (!gone_ && !toModule_.events.empty() && toModule_.events.front().at <= now) {
        const Event event = toModule_.events.front();
        toModule_.events.pop_front();
        gone_ = event.what == What::unplug;
        if (event.what == What::reset) {
            module_.state().powerOn();
            deafUntil_ = event.at + Micros{event.value} * 1000;
        }
        if (event.what != What::byte || event.at < deafUntil_)
            continue;
        const auto byte = static_cast<std::uint8_t>(event.value);
        module_.receive(std::span(&byte, 1), event.at);
        const ByteArray answer = module_.takeOutput(event.at);
        for (const std::uint8_t said : answer) {
            busyUntil_ = std::max(busyUntil_, event.at) + characterTime_;
            if (silencedBurst_ != event.burst)
                put(Where::answer, event.burst, said);
        }
        if (!answer.empty() && silencedBurst_ != event.burst)
            put(Where::answer, event.burst, std::nullopt);
    }
}

}  // namespace opane::test::campaign
