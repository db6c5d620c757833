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
    gone_ = gone_ || std::any_of(toHost_.events.begin(), toHost_.events.end(),
                                 [](const Event& event) { return event.what == What::unplug; });
    return std::max({toModule_.notBefore, toHost_.notBefore, busyUntil_, deafUntil_});
}

void FaultyLine::receive(std::span<const std::uint8_t> bytes, Micros now) {
    const int burst = bursts_++;
    Micros at = now;
    for (const std::uint8_t byte : bytes) {
        at = nextCharacter(now);
        put(Where::echo, burst, byte, at);
        put(Where::toModule, burst, byte, at);
    }
    put(Where::echo, burst, std::nullopt, at);
    put(Where::toModule, burst, std::nullopt, at);
}

ByteArray FaultyLine::takeOutput(Micros now) {
    runModule(now);
    ByteArray arrived;
    while (!gone_ && !toHost_.events.empty() && toHost_.events.front().at <= now) {
        gone_ = toHost_.events.front().what == What::unplug;
        if (!gone_)
            arrived.push_back(toHost_.events.front().byte);
        toHost_.events.pop_front();
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
    bool lost = !isHeard;
    bool doubled = false;
    Event sent{at, What::byte, byte.value_or(0), 0, burst};
    for (const Spoil& spoil : spoils_) {
        const bool isHere = spoil.where == where && (spoil.burst == burst || spoil.burst == kEveryBurst) &&
                            progress.offset >= spoil.offset && progress.offset - spoil.offset < spoil.length;
        if (!isHere)
            continue;
        const auto value = static_cast<std::uint8_t>(spoil.value);
        switch (spoil.kind) {
            case Kind::lose:
                lost = true;
                break;
            case Kind::flip:
                sent.byte ^= value;
                break;
            case Kind::set:
                sent.byte = value;
                break;
            case Kind::doubled:
                doubled = true;
                break;
            case Kind::repeat:
                for (const std::uint8_t again : progress.sent)
                    push(where, {at, What::byte, again, 0, burst});
                break;
            case Kind::late:
                if (isHeard)
                    sent.at += Micros{spoil.value} * 1000;
                break;
            case Kind::noise:
                push(where, {at, What::byte, value, 0, burst});
                break;
            case Kind::reset:
                push(Where::toModule, {at, What::reset, 0, spoil.value, burst});
                lost = true;
                if (where == Where::answer)
                    silencedBurst_ = burst;
                break;
            case Kind::unplug:
                push(where, {at, What::unplug, 0, 0, burst});
                lost = true;
                break;
        }
    }
    for (int copies = lost ? 0 : doubled ? 2 : 1; copies > 0; --copies)
        push(where, sent);
    if (isHeard)
        progress.sent.push_back(sent.byte);
    ++progress.offset;
}

void FaultyLine::push(Where where, const Event& event) {
    Track& track = trackOf(where);
    Event sent = event;
    sent.at = std::max(event.at, track.notBefore);
    track.notBefore = sent.at;
    track.events.push_back(sent);
    if (where != Where::toModule && sent.what == What::byte)
        arrivals_.push_back({sent.at, sent.byte});
}

void FaultyLine::runModule(Micros now) {
    while (!gone_ && !toModule_.events.empty() && toModule_.events.front().at <= now) {
        const Event event = toModule_.events.front();
        toModule_.events.pop_front();
        switch (event.what) {
            case What::byte:
                if (event.at >= deafUntil_) {
                    module_.receive(std::span(&event.byte, 1), event.at);
                    answer(event.burst, event.at);
                }
                break;
            case What::reset:
                restart(event.at, event.value);
                break;
            case What::unplug:
                gone_ = true;
                break;
        }
    }
}

void FaultyLine::answer(int burst, Micros heardAt) {
    const ByteArray bytes = module_.takeOutput(heardAt);
    if (bytes.empty())
        return;
    Micros at = heardAt;
    for (const std::uint8_t byte : bytes) {
        at = nextCharacter(heardAt);
        if (silencedBurst_ != burst)
            put(Where::answer, burst, byte, at);
    }
    if (silencedBurst_ != burst)
        put(Where::answer, burst, std::nullopt, at);
}

void FaultyLine::restart(Micros at, int deafMs) {
    module_.state().powerOn();
    deafUntil_ = at + Micros{deafMs} * 1000;
}

}  // namespace opane::test::campaign
