#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "simulator/pacing.h"

namespace opane::simulator {

/// A frame without what follows from the rest: mark, length and checksum.
struct Frame {
    std::uint8_t node = 0;
    std::uint8_t aux1 = 0;
    std::uint8_t aux2 = 0;
    std::uint8_t type = 0;
    std::vector<std::uint8_t> data = {};  ///< 0..255 bytes
};

inline constexpr std::uint8_t kMark = 0xAA;
inline constexpr std::uint8_t kFirstHandshake = 0xA5;        ///< node 0; nodes 1 to 3 follow
inline constexpr std::uint8_t kFirstHandshakeAnswer = 0x15;  ///< node 0; nodes 1 to 3 follow
inline constexpr int kNodes = 4;                             ///< node numbers 0..3

/// The frame as it goes over the wire, from the mark to the checksum.
std::vector<std::uint8_t> wireBytes(const Frame& frame);

/// Reads a whole frame, mark to checksum.
Frame frameOf(std::span<const std::uint8_t> bytes);

/// Whether the checksum is right: the sum of all bytes after the mark is 0 modulo 256.
bool balances(std::span<const std::uint8_t> bytes);

/// What the module makes of the bytes it hears.
struct Heard {
    enum class Kind { handshake, frame };
    Kind kind = Kind::frame;
    int node = 0;
    std::vector<std::uint8_t> bytes = {};  ///< of a frame, mark to checksum, which may be wrong
};

/// Finds handshakes and frames among the bytes heard. Between frames, other bytes are passed over. A frame that stays
/// incomplete over a quiet gap is dropped, so that a cut frame or noise cannot deafen the module.
class WireReader {
public:
    /// @param heardAt   when the byte had fully arrived
    /// @param baudRate  of the line, for the length of the quiet gap
    std::optional<Heard> hear(std::uint8_t byte, Micros heardAt, int baudRate);
    void forget() { frame_.clear(); }

private:
    std::vector<std::uint8_t> frame_;  // what has come of a frame so far
    Micros lastHeardAt_ = 0;
};

/// The longest pause within a frame: kQuietGap, or kQuietGapCharacters at slow rates. It stays below the 100 ms after
/// which a host repeats a handshake, so that the next one is heard again.
Micros quietGap(int baudRate);
inline constexpr Micros kQuietGap = 50'000;
inline constexpr int kQuietGapCharacters = 8;

}  // namespace opane::simulator
