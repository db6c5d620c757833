// What a module, or anything else at the other end of the line, says to one exchange: any bytes at any time. A referee
// that knows only the wire says what must come of them.
//
// Input: flags (bit 0: RS485; bits 1 and 2: the time-out), type, Leng; then for each write of the host how many bytes
// come back (0..255), when the first of them comes, in hundredths of the time-out of 1 s, and the bytes.

#include <deque>

#include "fuzz_input.h"
#include "require.h"
#include "support/campaign/referee.h"

namespace opane::fuzz {
namespace {

using namespace opane::test;
using namespace opane::test::campaign;

class AnyPeer final : public Peer {
public:
    explicit AnyPeer(Input& input) : input_(input) {}

    void receive(std::span<const std::uint8_t>, Micros now) override {
        const std::size_t count = input_.byte();
        const Micros at = std::max(now + Micros{input_.byte()} * 10'000, arrivals.empty() ? 0 : arrivals.back().at);
        for (const std::uint8_t byte : input_.bytes(count))
            arrivals.push_back({at, byte});
    }
    ByteArray takeOutput(Micros now) override {
        ByteArray arrived;
        for (; next_ < arrivals.size() && arrivals[next_].at <= now; ++next_)
            arrived.push_back(arrivals[next_].byte);
        return arrived;
    }
    std::optional<Micros> nextOutputAt() const override {
        return next_ < arrivals.size() ? std::optional(arrivals[next_].at) : std::nullopt;
    }

    std::vector<Arrival> arrivals;

private:
    Input& input_;
    std::size_t next_ = 0;
};

void tryExchange(Input input) {
    const std::uint8_t flags = input.byte();
    Request request;
    request.type = input.byte();
    request.length = input.byte();
    request.data = ByteArray(request.length, 0x33);
    constexpr std::array<std::int32_t, 4> kTimeouts{1000, 100, 0, 2500};
    const bool onBus = (flags & 1) != 0;

    AnyPeer peer(input);
    WatchedLink host(peer, {onBus, 3, kTimeouts.at((flags >> 1) & 3U)});
    const LinkBefore before{onBus, 3, host.link().Timeout(), host.time.micros, false};
    const Judgement judgement = judge(request, before, peer.arrivals, host.exchange(request, {1, 2, 3}));
    require(judgement.complaint.empty(), judgement.complaint);
}

}  // namespace
}  // namespace opane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    opane::fuzz::tryExchange(opane::fuzz::Input(data, size));
    return 0;
}
