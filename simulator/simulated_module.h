#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "simulator/faults.h"
#include "simulator/module_state.h"
#include "simulator/pacing.h"
#include "simulator/wire.h"

namespace opane::simulator {

struct ModuleOptions {
    int node = 3;  ///< 0..3
    Bus bus = Bus::rs232;
    int baudRate = kPowerOnBaudRate;  ///< one that the quartz offers
    int quartz = 2;                   ///< crystal, 1..3
    bool pace = false;                ///< bytes take their time on the line
    bool drift = false;               ///< readings wander from the first byte heard on, see simulator/readings.h
    bool keepFrames = true;           ///< frames() has them all; else they are only counted, for a long life
    std::string version = ModuleState{}.version;
};

/// The most bytes that are on their way to the host. A host that takes none for so long loses those that follow.
inline constexpr std::size_t kMostOnItsWay = 65'536;

/// A display module at the other end of a serial line, in memory and without a clock of its own: whoever holds it says
/// what time it is. One thread at a time.
///
/// A request is carried out as soon as receive() has its last byte, even when, paced, that byte is still on its way;
/// only the answer keeps to the line's time.
class SimulatedModule {
public:
    /// The host's port starts at the module's own speed.
    /// @throws std::invalid_argument when an option is out of its range
    explicit SimulatedModule(const ModuleOptions& options = {});

    /// The speed the host's port is set to. While it differs from the module's, both hear noise: never the byte that
    /// was sent, and the same in every run.
    void hostBaudRate(int baudRate) { hostBaudRate_ = baudRate; }

    /// Bytes that the host has written, at that moment. A paced line takes them one after the other, see lineFreeAt().
    void receive(std::span<const std::uint8_t> bytes, Micros now);

    /// Bytes on their way to the host that have arrived by now; removes them.
    std::vector<std::uint8_t> takeOutput(Micros now);

    /// When a paced line will have carried all that either side has said so far; in the past when it has, or is none.
    Micros lineFreeAt() const { return line_.freeAt(); }

    /// When the next byte will have arrived at the host; nothing when none is on its way.
    std::optional<Micros> nextOutputAt() const;

    /// After Fault::unplug: hears and says nothing until replug(). Its owner closes the device.
    bool unplugged() const { return unplugged_; }

    /// On the line again, in the state it was in; heard again too when Fault::lostRate had made it deaf.
    ///
    /// After that fault it keeps its old speed, and hears nothing from a host at the speed that it was told, even when
    /// that is the old one: until a change of speed succeeds, or until this.
    void replug();

    /// A key of the infrared remote control, which the module receives. Every press turns the toggle flag of the code;
    /// the first one has it clear.
    /// @param key  1..9
    /// @throws std::invalid_argument when there is no such key
    void pressKey(int key);

    /// Everything a test may look at or set.
    ModuleState& state() { return state_; }
    const ModuleState& state() const { return state_; }

    /// Frames with a right checksum heard, for any node, in order, each from mark to checksum; none of a module that
    /// does not keep them.
    const std::vector<std::vector<std::uint8_t>>& frames() const { return frames_; }

    /// How many of them were heard, kept or not.
    std::size_t framesHeard() const { return framesHeard_; }

    /// Synchronisation characters of any node heard.
    std::size_t handshakes() const { return handshakes_; }

    /// Asks for a fault.
    /// @throws std::invalid_argument when the parameter is out of the fault's range
    void fault(const FaultOrder& order) { faults_.add(order); }

private:
    struct OnItsWay {
        std::uint8_t byte = 0;
        Micros arrivesAt = 0;
        std::optional<int>
            sentAt;  // the module's rate; nothing for an echo, which the host always hears as it was sent
    };

    void answerHandshake(const Heard& handshake, Micros heardAt);
    void answerFrame(const Heard& heard, Micros heardAt);
    void send(std::span<const std::uint8_t> bytes, Micros notBefore, int baudRate);
    void putOnItsWay(const OnItsWay& sent);
    std::uint8_t noise(std::uint8_t instead);

    ModuleState state_;
    int hostBaudRate_;
    Line line_;
    WireReader reader_;
    Faults faults_;
    bool unplugged_ = false;
    std::optional<int> lostBaudRate_;  // what a host at it says goes unheard
    bool keyToggle_ = false;           // of the next key
    bool drifts_;
    std::optional<Micros> firstHeardAt_;
    bool keepsFrames_;
    std::vector<std::vector<std::uint8_t>> frames_;
    std::size_t framesHeard_ = 0;
    std::size_t handshakes_ = 0;
    std::deque<OnItsWay> onItsWay_;  // by arrival
    std::minstd_rand noise_;         // default seed
};

}  // namespace opane::simulator
