#pragma once

#include <string>
#include <vector>

#include "support/campaign/watched_control.h"

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
    Micros at = 0;
    bool synchronized = true;
};

/// What an exchange has done.
struct Seen {
    bool result = false;
    int raised = 0;  ///< number of the RuntimeError; 0: none
    ByteArray infoBefore{};
    ByteArray info{};
    std::int32_t timeoutMs = 0;
    bool synchronized = false;
    Micros endedAt = 0;
    std::vector<std::string> log{};  ///< messages of the lines
    std::vector<HostWrite> writes{};
    std::size_t readSinceWrite = 0;  ///< as in HostWrite, at the end
    std::size_t goneBy = 0;
};

enum class Verdict {
    right,
    borderline,  ///< a byte came so near to its deadline that both outcomes are right; not judged
    wrong,
};

struct Judgement {
    Verdict verdict = Verdict::right;
    std::string complaint{};  ///< empty: all was right
    bool resynchronised = false;
    std::size_t sends = 0;
};

/// Judges an exchange by the bytes that were on the line and by docs/wire.md alone: works out what had to be sent,
/// logged, returned and how long it had to take, and compares. Shares no code with the library.
Judgement judge(const Request& request, const LinkBefore& before, const std::vector<FaultyLine::Arrival>& line,
                const Seen& seen);

}  // namespace opane::test::campaign
