#include "simulator/module_state.h"

namespace opane::simulator {

std::uint8_t ModuleState::statusByte() const {
    unsigned status = 0;
    unsigned bit = 1;
    for (const bool flag : {upsideDown, invertedDisplay, frameDrawn(), lcdOn, automaticBacklight, automaticVlcd}) {
        status |= flag ? bit : 0;
        bit <<= 1;
    }
    return static_cast<std::uint8_t>(status);
}

}  // namespace opane::simulator
