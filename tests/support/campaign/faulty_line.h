#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include "simulator/simulated_module.h"
#include "support/campaign/referee.h"
#include "support/peer.h"

namespace opane::test::campaign {

/// Which of the bytes on the wire.
enum class Where {
    toModule,  ///< as the module hears the host
    echo,      ///< as the host hears itself on a bus; without a bus only noise and loss of power come from here
    answer,    ///< as the host hears the module
};

enum class Kind {
    lose,
    flip,     ///< value: the bits that are turned over
    set,      ///< value: the byte that comes instead
    doubled,  ///< the byte comes twice
    repeat,   ///< everything of the burst so far comes once more before this byte
    late,     ///< value: milliseconds that this byte and all behind it are late
    noise,    ///< value: a byte that comes before this one
    reset,    ///< the module starts again in place of this byte; value: milliseconds that it is deaf
    unplug,   ///< the device vanishes in place of this byte
};

inline constexpr int kEveryBurst = -1;
inline constexpr int kRest = std::numeric_limits<int>::max();

/// One thing that goes wrong. A burst is one write of the host, frame or handshake, and what is answered to it; bursts
/// count from 0, as do the bytes of each way in a burst. The place behind the last byte is one too.
struct Spoil {
    Kind kind = Kind::lose;
    int value = 0;
    int length = 1;  ///< bytes from offset on
    Where where = Where::answer;
    int offset = 0;
    int burst = 0;
};

/// A serial line with a simulated module at its end, on which things go wrong. Keeps the order of bytes, whatever is
/// late, and gives each its ten bits of time when it paces them.
class FaultyLine final : public Peer {
public:
    FaultyLine(const simulator::ModuleOptions& options, bool echoes, bool paces);

    /// From now on; bursts count from 0 again.
    void spoil(std::vector<Spoil> spoils);

    /// The device is there again.
    void replug();

    /// Lets all that is on its way happen. @return when the last byte has arrived and the module hears again
    Micros settle();

    void baudRate(int rate) override { module_.hostBaudRate(rate); }
    void receive(std::span<const std::uint8_t> bytes, Micros now) override;
    ByteArray takeOutput(Micros now) override;
    std::optional<Micros> nextOutputAt() const override;
    bool gone() const override { return gone_; }

    const simulator::ModuleState& module() const { return module_.state(); }
    const std::vector<Arrival>& arrivals() const { return arrivals_; }  ///< as the referee wants them

private:
    enum class What { byte, reset, unplug };
    struct Event {
        Micros at;
        int burst;
        int value;  // the byte; milliseconds of a reset
        What what = What::byte;
    };
    /// One way over the wire.
    struct Track {
        std::deque<Event> events{};
        Micros notBefore = 0;  // the order is kept
    };
    /// How far a burst has come.
    struct Progress {
        int burst = -1;
        int offset = 0;
        ByteArray sent{};
    };

    void put(Where where, int burst, std::optional<std::uint8_t> byte);
    void push(Where where, Event event);
    void runModule(Micros now);

    bool echoes_;
    Micros characterTime_;
    simulator::SimulatedModule module_;
    std::vector<Spoil> spoils_;
    int bursts_ = 0;
    int silencedBurst_ = -1;  // the module has started again while it answered this one
    Micros busyUntil_ = 0;    // half duplex: one character after the other
    Micros deafUntil_ = 0;
    bool gone_ = false;
    Track toModule_;
    Track toHost_;
    std::array<Progress, 3> progress_;
    std::vector<Arrival> arrivals_;
};

}  // namespace opane::test::campaign
