#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "shared/frame_byte.h"

namespace opane {

/// One handshake, as it went.
struct Handshake {
    std::int16_t nodeNumber;
    std::uint8_t sent;
    std::uint8_t expected;
    bool onBus;                          ///< an echo of what was sent comes first
    std::optional<std::uint8_t> echo;    ///< on a bus; nothing: silence
    std::optional<std::uint8_t> answer;  ///< nothing: silence, or not waited for, as without an echo
    bool synchronized;
};

/// Watches a link: what it sends, what comes back, and what it makes of it. Called on the link's thread in the middle
/// of its work: an observer must not throw, use the link or run events. Every operation does nothing unless overridden.
class LinkObserver {
public:
    LinkObserver() = default;
    virtual ~LinkObserver() = default;
    LinkObserver(const LinkObserver&) = delete;
    LinkObserver& operator=(const LinkObserver&) = delete;

    /// Bytes that were given to the port: a frame, or one synchronisation character.
    virtual void bytesSent(std::span<const std::uint8_t> /*bytes*/) {}
    /// A byte that a wait was for.
    virtual void byteReceived(std::uint8_t /*byte*/) {}
    /// Bytes that nobody waited for, emptied out of the receive buffer.
    virtual void bytesDropped(std::span<const std::uint8_t> /*bytes*/) {}
    /// A wait for a byte has ended without one.
    virtual void byteMissed() {}

    /// A handshake is over. One that was cancelled before its character was sent is not told.
    virtual void handshakeMade(const Handshake& /*handshake*/) {}
    /// A request has been given to the port, for the first time or again.
    virtual void frameSent(const ByteArray& /*frame*/) {}
    /// An answer has been taken. @param info  its info bytes; one 0 when it has none
    virtual void answerTaken(const ByteArray& /*info*/) {}

    /// What the log is told, whether it writes it or not.
    virtual void noted(std::string_view /*procedure*/, std::string_view /*text*/) {}
};

}  // namespace opane
