#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "shared/frame_byte.h"

namespace opane {

// The frame is described in docs/wire.md.

inline constexpr std::uint8_t kFrameMark = 0xAA;
inline constexpr std::size_t kHeaderBytes = 6;

/// The fields of a frame without its data, in wire order.
struct FrameFields {
    std::uint8_t Mark = 0;
    std::uint8_t Leng = 0;
    std::uint8_t Node = 0;
    std::uint8_t Aux1 = 0;
    std::uint8_t Aux2 = 0;
    std::uint8_t Type = 0;
    std::uint8_t Cksm = 0;
};

/// Builds a request frame of fields.Leng + 7 bytes. Mark and Cksm are set by this function, whatever fields hold.
/// @param data  its first fields.Leng elements are sent
/// @throws RuntimeError 9 (subscript out of range) when data has fewer
ByteArray buildFrame(const FrameFields& fields, const ByteArray& data);

/// The fields of a whole frame.
FrameFields fieldsOf(const ByteArray& frame);

/// The fields as a log line shows them: direction, then each field in upper-case hexadecimal without leading zeros.
/// @param direction  "SEND" or "RCV"
std::string frameText(const char* direction, const FrameFields& fields);

}  // namespace opane
