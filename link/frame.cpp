#include "link/frame.h"

#include <cstdio>
#include <numeric>
#include <span>

#include "shared/runtime_error.h"

namespace opane {
namespace {

/// Two's complement of the low byte of the sum. The mark is not summed.
std::uint8_t checksum(std::span<const std::uint8_t> afterMark) {
    return static_cast<std::uint8_t>(0U - std::accumulate(afterMark.begin(), afterMark.end(), 0U));
}

}  // namespace

ByteArray buildFrame(const FrameFields& fields, const ByteArray& data) {
    if (data.size() < fields.Leng)
        throw RuntimeError(ErrorNumber::subscript, "the data array has " + std::to_string(data.size()) +
                                                       " elements; the frame needs " + std::to_string(fields.Leng));
    ByteArray frame;
    frame.reserve(fields.Leng + kHeaderBytes + 1);
    for (const std::uint8_t byte : {kFrameMark, fields.Leng, fields.Node, fields.Aux1, fields.Aux2, fields.Type})
        frame.push_back(byte);
    frame.insert(frame.end(), data.begin(), data.begin() + fields.Leng);
    frame.push_back(checksum(std::span(frame).subspan(1)));
    return frame;
}

FrameFields fieldsOf(const ByteArray& frame) {
    return {frame[0], frame[1], frame[2], frame[3], frame[4], frame[5], frame.back()};
}

std::string frameText(const char* direction, const FrameFields& fields) {
    char text[80];
    std::snprintf(text, sizeof text, "%s : Mark:%X Leng:%X Node:%X Aux1:%X Aux2:%X Type:%X Cksm:%X", direction,
                  fields.Mark, fields.Leng, fields.Node, fields.Aux1, fields.Aux2, fields.Type, fields.Cksm);
    return text;
}

}  // namespace opane
