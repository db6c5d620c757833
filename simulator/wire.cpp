#include "simulator/wire.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <numeric>
#include <utility>

namespace opane::simulator {
namespace {

constexpr std::size_t kLengOffset = 1;
constexpr std::size_t kHeaderSize = 6;
constexpr std::size_t kFrameSizeWithoutData = kHeaderSize + 1;

unsigned sumAfterMark(std::span<const std::uint8_t> bytes) {
    return std::accumulate(bytes.begin() + 1, bytes.end(), 0U);
}

}  // namespace

std::vector<std::uint8_t> wireBytes(const Frame& frame) {
    assert(frame.data.size() <= 255);
    std::vector<std::uint8_t> bytes;
    bytes.reserve(frame.data.size() + kFrameSizeWithoutData);
    for (const std::uint8_t field :
         {kMark, static_cast<std::uint8_t>(frame.data.size()), frame.node, frame.aux1, frame.aux2, frame.type})
        bytes.push_back(field);
    std::copy(frame.data.begin(), frame.data.end(), std::back_inserter(bytes));
    bytes.push_back(static_cast<std::uint8_t>(0U - sumAfterMark(bytes)));
    return bytes;
}

Frame frameOf(std::span<const std::uint8_t> bytes) {
    assert(bytes.size() >= kFrameSizeWithoutData);
    return {bytes[2], bytes[3], bytes[4], bytes[5], {bytes.begin() + kHeaderSize, bytes.end() - 1}};
}

bool balances(std::span<const std::uint8_t> bytes) {
    return sumAfterMark(bytes) % 256 == 0;
}

std::optional<Heard> WireReader::hear(std::uint8_t byte, Micros heardAt, int baudRate) {
    if (heardAt - lastHeardAt_ > quietGap(baudRate))
        frame_.clear();
    lastHeardAt_ = heardAt;

    if (frame_.empty() && byte >= kFirstHandshake && byte < kFirstHandshake + kNodes)
        return Heard{Heard::Kind::handshake, byte - kFirstHandshake};
    if (frame_.empty() && byte != kMark)
        return std::nullopt;

    frame_.push_back(byte);
    if (frame_.size() < kFrameSizeWithoutData || frame_.size() < frame_[kLengOffset] + kFrameSizeWithoutData)
        return std::nullopt;
    const int node = frame_[2];
    return Heard{Heard::Kind::frame, node, std::exchange(frame_, {})};
}

Micros quietGap(int baudRate) {
    return std::max(kQuietGap, Micros{kQuietGapCharacters} * kBitsPerCharacter * 1'000'000 / baudRate);
}

}  // namespace opane::simulator
