#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "simulator/pseudo_terminal.h"

namespace opane::bench {

/// Answers every request of a fixed length with the same bytes, at once, on a pseudo-terminal: the same cheap other end
/// for any two hosts that are to be compared.
class CannedDevice {
public:
    CannedDevice(std::size_t requestBytes, std::vector<std::uint8_t> answer);
    ~CannedDevice();
    CannedDevice(const CannedDevice&) = delete;
    CannedDevice& operator=(const CannedDevice&) = delete;

    const std::string& path() const { return terminal_.path(); }

    /// What a single byte, a handshake, is answered with.
    static constexpr std::uint8_t kHandshakeAnswer = 0x18;

private:
    void serve();

    std::size_t requestBytes_;
    std::vector<std::uint8_t> answer_;
    simulator::PseudoTerminal terminal_;
    FileDescriptor stop_;
    std::thread thread_;
};

}  // namespace opane::bench
