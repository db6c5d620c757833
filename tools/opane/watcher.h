#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

#include "link/link_observer.h"
#include "session.h"

namespace opane::tool {

/// Watches the link of a connection: shows it line by line with --trace, and remembers what a failure is explained by.
class Watcher final : public LinkObserver {
public:
    explicit Watcher(Session& session) : session_(session), start_(std::chrono::steady_clock::now()) {}

    void handshakeMade(const Handshake& handshake) override;
    void frameSent(const ByteArray& frame) override;
    void answerTaken(const ByteArray& info) override;
    void bytesDropped(std::span<const std::uint8_t> bytes) override;
    void noted(std::string_view procedure, std::string_view text) override;

    /// What the handshakes have heard and what to do about it; for the end of a sentence.
    std::string heardText() const;

    /// What follows counts from here.
    void beginRun();
    /// What became of the frames so far: how many the module has confirmed, and how many it may have carried out.
    std::string framesText() const;
    bool hasSent() const { return framesSent_ > 0; }
    bool hasConfirmed() const { return confirmed_ > 0; }
    bool isConfirmed() const { return confirmed_ > 0 && pending_.empty(); }  ///< the last one
    int framesSent() const { return framesSent_; }                           ///< one that is sent again counts again

private:
    void show(const std::string& text);

    Session& session_;
    std::chrono::steady_clock::time_point start_;
    int handshakes_ = 0;
    std::optional<Handshake> heard_;  // the last one that was not silent
    bool isCancelShown_ = false;
    int framesSent_ = 0;
    int confirmed_ = 0;
    int unconfirmed_ = 0;
    ByteArray pending_;  // sent, not answered yet
};

}  // namespace opane::tool
