#pragma once

#include <cstdint>
#include <span>

#include "bench_link.h"

namespace opane::bench {

/// Something that a host waits for, and what goes over the wire meanwhile.
struct Job {
    const char* name;
    int exchanges;
    int bytes;  ///< of request and answer
    bool (*run)(BenchLink& bench);

    double wireSeconds(std::int32_t baudRate) const;
};

/// A text of 20 characters, a bitmap of the whole screen, a read of 1024 bytes.
std::span<const Job> jobs();

}  // namespace opane::bench
