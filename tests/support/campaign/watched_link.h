#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "simulator/pseudo_terminal.h"
#include "support/bench.h"

namespace opane::test::campaign {

struct Request {
    std::uint8_t length = 0;
    std::uint8_t aux1 = 0;
    std::uint8_t aux2 = 0;
    std::uint8_t type = 0;
    ByteArray data{};
};

/// What is known of a link before an exchange.
struct LinkBefore {
    bool onBus = false;
    int node = 3;
    std::int32_t timeoutMs = 1000;
    Micros at = 1'000'000;
    bool synchronized = true;
};

struct HostWrite {
    Micros at;
    ByteArray bytes;
    std::size_t readBefore;    ///< bytes that the host has read one by one since its write before
    std::size_t goneByBefore;  ///< bytes of the line that it has read or thrown away in all
};

/// What a host has done in an exchange, as seen from outside.
struct Seen {
    std::vector<HostWrite> writes{};
    std::size_t readSinceWrite = 0;  ///< as in HostWrite, at the end
    std::size_t goneBy = 0;
    bool result = false;
    int raised = 0;  ///< number of the RuntimeError; 0: none
    ByteArray infoBefore{};
    ByteArray info{};
    std::int32_t timeoutMs = 0;
    bool synchronized = false;
    Micros endedAt = 0;
    std::vector<std::string> log{};  ///< messages of the lines
};

/// A host's link as its owner would have it, in virtual time; what it does is noted.
class WatchedLink {
public:
    /// @param peer      the other end of the line; outlives this
    /// @param terminal  carries the bytes to and from the system's own serial control; null: a line in memory does
    WatchedLink(Peer& peer, const LinkBefore& start, simulator::PseudoTerminal* terminal = nullptr);

    clsOPane& link() { return *holder_.link(); }
    const Seen& exchange(const Request& request, ByteArray info);

    VirtualTime time;

private:
    Seen seen_;
    MemoryLine line_;
    ServicesScope services_;
    GlobalsHolder holder_;
};

}  // namespace opane::test::campaign
