#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "shared/frame_byte.h"
#include "simulator/simulated_module.h"

namespace opane::test {

using simulator::Micros;

/// What is at the other end of an in-memory line.
class Peer {
public:
    virtual ~Peer() = default;

    virtual void baudRate(int /*rate*/) {}
    virtual void receive(std::span<const std::uint8_t> bytes, Micros now) = 0;
    virtual ByteArray takeOutput(Micros now) = 0;
    virtual std::optional<Micros> nextOutputAt() const = 0;
    virtual bool gone() const { return false; }
};

/// The simulated module as the other end.
class ModulePeer final : public Peer {
public:
    explicit ModulePeer(simulator::SimulatedModule& module) : module_(module) {}

    void baudRate(int rate) override { module_.hostBaudRate(rate); }
    void receive(std::span<const std::uint8_t> bytes, Micros now) override { module_.receive(bytes, now); }
    ByteArray takeOutput(Micros now) override { return module_.takeOutput(now); }
    std::optional<Micros> nextOutputAt() const override { return module_.nextOutputAt(); }
    bool gone() const override { return module_.unplugged(); }

private:
    simulator::SimulatedModule& module_;
};

/// An other end that no module would be: keeps what it hears and answers each write with the next of its answers.
class ScriptedPeer final : public Peer {
public:
    void receive(std::span<const std::uint8_t> bytes, Micros now) override {
        heard.emplace_back(bytes.begin(), bytes.end());
        if (answers.empty())
            return;
        if (!answers.front().empty())
            dueAt_ = now + answerAfter;
        onItsWay_.insert(onItsWay_.end(), answers.front().begin(), answers.front().end());
        answers.pop_front();
    }
    ByteArray takeOutput(Micros now) override {
        if (!nextOutputAt() || *nextOutputAt() > now)
            return {};
        return std::exchange(onItsWay_, {});
    }
    std::optional<Micros> nextOutputAt() const override {
        return onItsWay_.empty() ? std::nullopt : std::optional(dueAt_);
    }

    std::vector<ByteArray> heard;  ///< one element a write
    std::deque<ByteArray> answers;
    Micros answerAfter = 0;

private:
    ByteArray onItsWay_;
    Micros dueAt_ = 0;
};

}  // namespace opane::test
