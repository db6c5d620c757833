#pragma once

#include <cstdint>

namespace opane::simulator {

/// Microseconds on any clock that never goes back.
using Micros = std::int64_t;

inline constexpr int kBitsPerCharacter = 10;  ///< start bit, 8 data bits, stop bit

/// When the bytes on a half duplex line arrive. Paced, each takes its ten bits and waits for those before it; a host
/// that speaks while an answer is on its way is heard after it. Not paced, a byte is there at once, but an answer never
/// overtakes an earlier one.
class Line {
public:
    explicit Line(bool paced) : paced_(paced) {}

    /// A byte that the host has written: when the module, and on a bus the host's own ear, has it.
    Micros hostByte(Micros now, int baudRate);

    /// A byte that the module sends, not before the given moment: when the host has it.
    Micros moduleByte(Micros notBefore, int baudRate);

    /// When a paced line has carried all of them; 0 of one that is not.
    Micros freeAt() const { return paced_ ? (freeAtNs_ + kNanosPerMicro - 1) / kNanosPerMicro : 0; }

private:
    static constexpr std::int64_t kNanosPerMicro = 1'000;

    Micros after(Micros start, int baudRate);

    bool paced_;
    std::int64_t freeAtNs_ = 0;  // nanoseconds: a character is no whole number of microseconds
};

}  // namespace opane::simulator
