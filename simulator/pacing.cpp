#include "simulator/pacing.h"

#include <algorithm>

namespace opane::simulator {
namespace {

constexpr std::int64_t kNanosPerSecond = 1'000'000'000;

}  // namespace

Micros Line::hostByte(Micros now, int baudRate) {
    return paced_ ? after(now, baudRate) : now;
}

Micros Line::moduleByte(Micros notBefore, int baudRate) {
    if (paced_)
        return after(notBefore, baudRate);
    freeAtNs_ = std::max(freeAtNs_, notBefore * kNanosPerMicro);
    return freeAtNs_ / kNanosPerMicro;
}

Micros Line::after(Micros start, int baudRate) {
    freeAtNs_ = std::max(freeAtNs_, start * kNanosPerMicro) + kBitsPerCharacter * kNanosPerSecond / baudRate;
    return freeAt();
}

}  // namespace opane::simulator
