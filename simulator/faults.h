#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/pacing.h"
#include "simulator/wire.h"

namespace opane::simulator {

/// What can go wrong with a module. A request is a whole frame for the module's node.
enum class Fault {
    ignore,           ///< requests are neither carried out nor answered
    ignoreHandshake,  ///< handshakes are not answered
    silent,           ///< nothing is carried out or answered any more; has no count
    wrongType,        ///< the answer's type is one more than the request's
    typeZero,         ///< not carried out, answered with type 0 and no info
    aux,              ///< not carried out; the good answer, but for Aux1 = parameter (1..255, default 1)
    cutInfo,          ///< the answer ends after parameter info bytes (default 0), though it announces all of them
    noChecksum,       ///< the answer lacks its last byte
    wrongChecksum,    ///< the answer's last byte is off by one
    garbage,          ///< parameter bytes of kGarbage (default 3) come before the answer
    lostRate,         ///< a change of speed is answered but not made: see SimulatedModule::replug
    delay,            ///< the answer starts parameter milliseconds late (default 200)
    unplug,           ///< the device vanishes at the request; has no count
};

inline constexpr std::size_t kForEver = std::numeric_limits<std::size_t>::max();
inline constexpr std::uint8_t kGarbage = 0x5A;

/// A fault that is asked for. Orders run side by side: several may spoil one answer.
struct FaultOrder {
    Fault fault = Fault::ignore;
    /// Requests (of ignoreHandshake: handshakes, of lostRate: changes of speed) it applies to, or kForEver.
    std::size_t count = 1;
    std::size_t after = 0;                        ///< requests that pass first, counted from the order on
    std::size_t afterHandshakes = 0;              ///< handshakes of the module's node that pass first
    std::optional<int> parameter = std::nullopt;  ///< what it counts: see Fault; nothing: the default
};

/// Reads NAME[:PARAMETER][@AFTER][xCOUNT], such as "ignore:2", "silent@h1", "delay:300@2xall" (docs/simulator.md).
/// @throws std::invalid_argument with a text that names the order and what was expected
FaultOrder faultOrder(std::string_view text);

/// The grammar and a line for every fault, for people.
std::string faultHelp();

/// What the orders make of one answer.
struct AnswerFaults {
    bool ignored = false;
    bool unplugged = false;
    bool typeZero = false;
    bool wrongType = false;
    bool noChecksum = false;
    bool lostRate = false;
    bool wrongChecksum = false;
    std::optional<std::uint8_t> aux = std::nullopt;
    std::optional<std::size_t> infoBytes = std::nullopt;
    std::size_t garbageBytes = 0;
    Micros delay = 0;

    bool refuses() const { return typeZero || aux.has_value(); }
};

/// The orders given to a module.
class Faults {
public:
    /// @throws std::invalid_argument when the parameter is out of the fault's range
    void add(const FaultOrder& order);
    AnswerFaults atRequest(bool setsSpeed);
    bool ignoresHandshake();  ///< asked once for each handshake of the module's node

private:
    struct Pending {
        FaultOrder order;
        std::size_t requests = 0;    // heard since the order
        std::size_t handshakes = 0;  // of the module's node, heard since the order

        bool applies();
    };
    std::vector<Pending> pending_;
};

/// The answer's bytes as they leave a faulty module.
std::vector<std::uint8_t> spoiled(Frame answer, const AnswerFaults& faults);

}  // namespace opane::simulator
