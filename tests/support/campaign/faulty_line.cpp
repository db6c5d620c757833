#include "support/campaign/faulty_line.h"

#include <algorithm>
#include <utility>

#include "simulator/pacing.h"

namespace opane::test::campaign {

FaultyLine::FaultyLine(simulator::SimulatedModule& module, bool echoes, int pacedBaudRate)
    : module_(module),
      echoes_(echoes),
      characterTime_(pacedBaudRate == 0 ? 0 : simulator::kBitsPerCharacter * 1'000'000 / pacedBaudRate) {}

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
    while (!gone_ && !toModule_.events.empty())
        runModule(toModule_.events.front().at);
    for (const Event& event : toHost_.events)
        gone_ = gone_ || event.what == Kind::unplug;
    return std::max({toModule_.notBefore, toHost_.notBefore, busyUntil_, deafUntil_});
}

void FaultyLine::receive(std::span<const std::uint8_t> bytes, Micros now) {
    const int burst = bursts_++;
    Micros at = now;
    for (std::size_t i = 0; i <= bytes.size(); ++i) {
        const bool isByte = i < bytes.size();
        at = isByte ? nextCharacter(now) : at;
        for (const Where where : {Where::echo, Where::toModule})
            put(where, burst, isByte ? std::optional(bytes[i]) : std::nullopt, at);
    }
}

ByteArray FaultyLine::takeOutput(Micros now) {
    runModule(now);
    ByteArray arrived;
    for (auto& events = toHost_.events; !gone_ && !events.empty() && events.front().at <= now; events.pop_front()) {
        gone_ = events.front().what == Kind::unplug;
        if (!gone_)
            arrived.push_back(events.front().byte);
    }
    return arrived;
}

std::optional<Micros> FaultyLine::nextOutputAt() const {
    if (gone_)
        return 0;  // there is something to say at once
    std::optional<Micros> next;
    for (const Track* const track : {&toModule_, &toHost_}) {
        if (!track->events.empty())
            next = std::min(next.value_or(track->events.front().at), track->events.front().at);
    }
    return next;
}

/// The line is half duplex: one character after the other.
Micros FaultyLine::nextCharacter(Micros from) {
    busyUntil_ = std::max(busyUntil_, from) + characterTime_;
    return busyUntil_;
}

/// One byte on its way, or the place behind the last one.
void FaultyLine::put(Where where, int burst, std::optional<std::uint8_t> byte, Micros at) {
    Progress& progress = progress_.at(static_cast<std::size_t>(where));
    if (progress.burst != burst)
        progress = {burst};
    const bool isHeard = byte && (where != Where::echo || echoes_);
    int copies = isHeard ? 1 : 0;
    Event sent{at, {}, byte.value_or(0), 0, burst};
    for (const Spoil& spoil : spoils_) {
        const auto value = static_cast<std::uint8_t>(spoil.value);
        const auto is = [&](Kind kind) { return spoil.kind == kind; };
        if (spoil.where != where || (spoil.burst != burst && spoil.burst != kEveryBurst) ||
            progress.offset < spoil.offset || progress.offset - spoil.offset >= spoil.length)
            continue;
        if (is(Kind::flip))
            sent.byte ^= value;
        if (is(Kind::set))
            sent.byte = value;
        if (is(Kind::late) && isHeard)
            sent.at += Micros{spoil.value} * 1000;
        if (is(Kind::noise))
            push(where, {at, {}, value, 0, burst});
        for (std::size_t i = 0; is(Kind::repeat) && i < progress.sent.size(); ++i)
            push(where, {at, {}, progress.sent[i], 0, burst});
        if (is(Kind::reset) && where == Where::answer)
            silencedBurst_ = burst;
        if (is(Kind::reset) || is(Kind::unplug))
            push(is(Kind::reset) ? Where::toModule : where, {at, spoil.kind, 0, spoil.value, burst});
        if (is(Kind::doubled))
            copies = std::min(2, 2 * copies);
        if (is(Kind::lose) || is(Kind::reset) || is(Kind::unplug))
            copies = 0;
    }
    for (; copies > 0; --copies)
        push(where, sent);
    if (isHeard)
        progress.sent.push_back(sent.byte);
    ++progress.offset;
}

void FaultyLine::push(Where where, Event event) {
    Track& track = where == Where::toModule ? toModule_ : toHost_;
    event.at = track.notBefore = std::max(event.at, track.notBefore);
    track.events.push_back(event);
    if (where != Where::toModule && !event.what)
        arrivals_.push_back({event.at, event.byte});
}

void FaultyLine::runModule(Micros now) {
    while (!gone_ && !toModule_.events.empty() && toModule_.events.front().at <= now) {
        const Event event = toModule_.events.front();
        toModule_.events.pop_front();
        gone_ = event.what == Kind::unplug;
        if (event.what == Kind::reset) {
            module_.state().powerOn();
            deafUntil_ = event.at + Micros{event.value} * 1000;
        }
        if (event.what || event.at < deafUntil_)
            continue;
        module_.receive(std::span(&event.byte, 1), event.at);
        const ByteArray answer = module_.takeOutput(event.at);
        Micros at = event.at;
        for (std::size_t i = 0; !answer.empty() && i <= answer.size(); ++i) {
            const bool isByte = i < answer.size();
            at = isByte ? nextCharacter(event.at) : at;
            if (silencedBurst_ != event.burst)
                put(Where::answer, event.burst, isByte ? std::optional(answer[i]) : std::nullopt, at);
        }
    }
}

}  // namespace opane::test::campaign
