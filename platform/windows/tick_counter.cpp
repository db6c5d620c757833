#include "platform/tick_counter.h"

#include "platform/windows/system_headers.h"

namespace opane {
namespace {

class SystemTickCounter final : public TickCounter {
public:
    std::uint32_t now() override { return GetTickCount(); }
    void pause() override { Sleep(1); }
};

}  // namespace

TickCounter& systemTickCounter() {
    static SystemTickCounter counter;
    return counter;
}

}  // namespace opane
