#include "support/campaign/referee.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <numeric>
#include <span>

namespace opane::test::campaign {
namespace {

constexpr int kMostHandshakes = 125;
constexpr std::int32_t kHandshakeMs = 100;
constexpr std::int32_t kTimeoutAfterwardsMs = 1000;
constexpr int kErrorsThatEndIt = 5;
constexpr int kDeviceVanished = 57;

// How exactly a time is known. Reading the virtual counter takes time too.
constexpr Micros kOneRead = 60;
constexpr Micros kBeforeAWrite = 200;
constexpr Micros kLateTick = 2'000;  // ticks are whole milliseconds, and so are the waits for them

struct Borderline {};

struct Wrong {
    std::string complaint;
};

void require(bool condition, const std::string& complaint) {
    if (!condition)
        throw Wrong{complaint};
}

std::string text(const ByteArray& bytes) {
    std::string result;
    for (const std::uint8_t byte : bytes)
        result += std::to_string(byte) + ' ';
    return result;
}

std::string frameLine(const char* direction, std::span<const std::uint8_t> frame) {
    char line[80];
    std::snprintf(line, sizeof line, "%s : Mark:%X Leng:%X Node:%X Aux1:%X Aux2:%X Type:%X Cksm:%X", direction,
                  frame[0], frame[1], frame[2], frame[3], frame[4], frame[5], frame.back());
    return line;
}

/// The way of one exchange as the rules have it, on the bytes of the line.
class Exchange {
public:
    Exchange(const Request& request, const LinkBefore& before, const std::vector<Arrival>& line, const Seen& seen)
        : request_(request), before_(before), line_(line), seen_(seen) {
        frame_.reserve(request.length + std::size_t{7});
        frame_ = {0xAA,         request.length, static_cast<std::uint8_t>(before.node),
                  request.aux1, request.aux2,   request.type};
        frame_.insert(frame_.end(), request.data.begin(), request.data.begin() + request.length);
        frame_.push_back(static_cast<std::uint8_t>(-std::accumulate(frame_.begin() + 1, frame_.end(), 0)));
    }

    Judgement judge() {
        const std::string error = "error " + std::to_string(seen_.raised) + " was raised";
        judged_.result = seen_.result;
        judged_.raised = seen_.raised != 0;
        try {
            while (!over_ && errors_ < kErrorsThatEndIt)
                attempt();
            if (errors_ >= kErrorsThatEndIt)
                log_.push_back("Retry = " + std::to_string(errors_) +
                               ". Exit SendDataAndReceiveResponse without success");
            require(nextWrite_ == seen_.writes.size(), "it wrote " + std::to_string(seen_.writes.size()) +
                                                           " times; expected " + std::to_string(nextWrite_));
            requireRead(seen_.readSinceWrite);
            requireTime(seen_.endedAt, "it ended");
            require(seen_.result == good_, std::string("the result is ") + (good_ ? "false" : "true"));
            require(seen_.log == log_, "the log is wrong" + firstDifference());
            require(seen_.info == info_, "the info is " + text(seen_.info) + "; expected " + text(info_));
            require(seen_.timeoutMs == timeoutMs_, "Timeout is " + std::to_string(seen_.timeoutMs));
            require(seen_.synchronized == synchronized_, "the synchronised flag is wrong");
            if (seen_.raised != 0)
                judged_.complaint = error + " for nothing";
        } catch (const Borderline&) {
            judged_.borderline = true;
        } catch (const Wrong& wrong) {
            // The way ends where an error was raised.
            if (seen_.raised == 0)
                judged_.complaint = wrong.complaint;
            else if (seen_.raised != kDeviceVanished)
                judged_.complaint = error;
            else if (std::mismatch(seen_.log.begin(), seen_.log.end(), log_.begin(), log_.end()).first !=
                     seen_.log.end())
                judged_.complaint = "the log up to the error is wrong" + firstDifference();
        }
        if (judged_.complaint.empty() &&
            seen_.endedAt - before_.at > longestExchange(before_.timeoutMs, before_.onBus) * 1000)
            judged_.complaint = "it took too long";
        return judged_;
    }

private:
    void attempt() {
        log_.push_back(frameLine("SEND", frame_));
        ++judged_.sends;
        write(frame_);
        std::array<std::uint8_t, 7> echo{};
        for (int left = before_.onBus && readHeader(echo) ? echo[1] + 1 : 0; left > 0; --left)
            read(echo[6]);
        if (!readHeader(answer_))
            return resynchronise("Timeout, no Mark received");

        const int errorsBefore = errors_;
        if (answer_[3] != 0 || answer_[4] != 0)
            countError("Error return, AUX1 or AUX2 <> 0");
        const std::size_t leng = answer_[1];
        info_ = ByteArray(std::max<std::size_t>(leng, 1), 0);
        std::size_t came = 0;
        while (came < leng && read(info_[came]))
            ++came;
        if (came < leng)
            countError("Timeout during INFO transmission");
        if (answer_[5] == 0)
            return resynchronise("Error, command erreur received");
        if (answer_[5] != request_.type)
            countError("Error, Type of command received not expected");
        if (errors_ != errorsBefore)
            return;
        if (!read(answer_[6]))
            return countError("Timeout, Checksum not received");
        log_.push_back(frameLine("RCV", answer_));
        over_ = good_ = true;
    }

    void resynchronise(const char* why) {
        log_.insert(log_.end(), {why, frameLine("RCV", answer_), "Try to resynchronize system"});
        judged_.resynchronised = true;
        timeoutMs_ = kHandshakeMs;
        int failed = 0;
        while (failed < kMostHandshakes && !handshake())
            ++failed;
        timeoutMs_ = kTimeoutAfterwardsMs;
        synchronized_ = failed < kMostHandshakes;
        over_ = !synchronized_;
        if (over_)
            return log_.push_back("Resynchronize system FAILED");
        log_.push_back("Resynchronize system OK after " + std::to_string(failed) + " times, Retry to send");
        countRetry();
    }

    bool handshake() {
        write({static_cast<std::uint8_t>(0xA5 + before_.node)});
        std::uint8_t byte = 0;
        return (!before_.onBus || read(byte)) && read(byte) && byte == 0x15 + before_.node;
    }

    void countError(const char* what) {
        log_.insert(log_.end(), {what, frameLine("RCV", answer_)});
        countRetry();
    }
    void countRetry() { log_.push_back("Retry = " + std::to_string(++errors_)); }

    /// What was waiting is thrown away, then these bytes are written.
    void write(const ByteArray& bytes) {
        require(nextWrite_ < seen_.writes.size(), "it did not write " + text(bytes));
        const HostWrite& written = seen_.writes[nextWrite_++];
        require(written.bytes == bytes, "it wrote " + text(written.bytes) + "; expected " + text(bytes));
        requireTime(written.at, "write " + std::to_string(nextWrite_) + " was");
        if (nextWrite_ > 1)
            requireRead(written.readBefore);
        // Everything that had come by then is gone, and nothing that came later.
        require(written.goneByBefore >= next_ || nextWrite_ == 1, "it read bytes that were not there");
        next_ = written.goneByBefore;
        require(next_ == 0 || line_[next_ - 1].at <= written.at, "it read bytes before they came");
        require(next_ == line_.size() || line_[next_].at > written.at - kBeforeAWrite,
                "it did not empty the receive buffer before write " + std::to_string(nextWrite_));
        read_ = 0;
        earliest_ = latest_ = written.at;
    }

    /// All six are waited for, also when an earlier one did not come.
    bool readHeader(std::array<std::uint8_t, 7>& fields) {
        bool whole = true;
        for (std::size_t i = 0; i < 6; ++i)
            whole &= read(fields[i]);
        return whole;
    }

    bool read(std::uint8_t& byte) {
        const Micros wait = std::max<Micros>(0, timeoutMs_) * 1000;
        const Micros late = timeoutMs_ <= 0 ? kOneRead : kLateTick;
        // What the host took after its next write cannot have been read before it.
        const std::size_t goneBy =
            nextWrite_ < seen_.writes.size() ? seen_.writes[nextWrite_].goneByBefore : seen_.goneBy;
        const bool comes = next_ < std::min(line_.size(), goneBy);
        if (comes && line_[next_].at <= earliest_ + wait) {
            byte = line_[next_].byte;
            earliest_ = std::max(earliest_, line_[next_].at);
            latest_ = std::max(latest_, line_[next_].at) + kOneRead;
            ++next_;
            ++read_;
            return true;
        }
        if (comes && line_[next_].at <= latest_ + wait + late)
            throw Borderline{};
        earliest_ += wait;
        latest_ += wait + late;
        return false;
    }

    void requireRead(std::size_t read) const {
        require(read == read_, "it read " + std::to_string(read) + " bytes; expected " + std::to_string(read_));
    }

    void requireTime(Micros at, const std::string& what) const {
        require(at >= earliest_ && at <= latest_ + kBeforeAWrite,
                what + " at " + std::to_string(at - before_.at) + " us; expected " +
                    std::to_string(earliest_ - before_.at) + " to " + std::to_string(latest_ - before_.at));
    }

    std::string firstDifference() const {
        const auto [was, expected] = std::mismatch(seen_.log.begin(), seen_.log.end(), log_.begin(), log_.end());
        return ": \"" + (was == seen_.log.end() ? "nothing" : *was) + "\"; expected \"" +
               (expected == log_.end() ? "nothing" : *expected) + "\"";
    }

    const Request& request_;
    const LinkBefore& before_;
    const std::vector<Arrival>& line_;
    const Seen& seen_;
    ByteArray frame_;
    Judgement judged_;
    std::int32_t timeoutMs_ = before_.timeoutMs;
    bool synchronized_ = before_.synchronized;
    Micros earliest_ = before_.at;  // when the next step begins, at the soonest and at the latest
    Micros latest_ = before_.at;
    std::size_t next_ = 0;       // of the line's bytes
    std::size_t read_ = 0;       // since the last write
    std::size_t nextWrite_ = 0;  // of the host's
    std::array<std::uint8_t, 7> answer_{};
    ByteArray info_ = seen_.infoBefore;
    int errors_ = 0;
    bool over_ = false;
    bool good_ = false;
    std::vector<std::string> log_;
};

}  // namespace

Judgement judge(const Request& request, const LinkBefore& before, const std::vector<Arrival>& line, const Seen& seen) {
    return Exchange(request, before, line, seen).judge();
}

}  // namespace opane::test::campaign
