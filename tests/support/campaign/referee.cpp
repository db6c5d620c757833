#include "support/campaign/referee.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace opane::test::campaign {
namespace {

constexpr int kMostHandshakes = 125;
constexpr std::int32_t kHandshakeMs = 100;
constexpr std::int32_t kTimeoutAfterwardsMs = 1000;
constexpr int kErrorsThatEndIt = 5;

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
    for (const std::uint8_t byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X ", static_cast<unsigned>(byte));
        result += digits;
    }
    return result;
}

/// A frame as the log has it.
std::string logged(const char* direction, const std::array<std::uint8_t, 7>& header) {
    std::string result = std::string(direction) + " :";
    for (std::size_t i = 0; i < header.size(); ++i) {
        constexpr std::array kNames{"Mark", "Leng", "Node", "Aux1", "Aux2", "Type", "Cksm"};
        char field[16];
        std::snprintf(field, sizeof field, " %s:%X", kNames.at(i), static_cast<unsigned>(header[i]));
        result += field;
    }
    return result;
}

/// The way of one exchange as the rules have it, on the bytes of the line.
class Exchange {
public:
    Exchange(const Request& request, const LinkBefore& before, const std::vector<FaultyLine::Arrival>& line,
             const Seen& seen)
        : request_(request), before_(before), line_(line), seen_(seen) {
        earliest_ = latest_ = before.at;
        frame_.reserve(request.length + std::size_t{7});  // grown, it looks like an overrun to the compiler
        frame_ = {0xAA,         request.length, static_cast<std::uint8_t>(before.node),
                  request.aux1, request.aux2,   request.type};
        frame_.insert(frame_.end(), request.data.begin(), request.data.begin() + request.length);
        int sum = 0;
        for (std::size_t i = 1; i < frame_.size(); ++i)
            sum += frame_[i];
        frame_.push_back(static_cast<std::uint8_t>((256 - sum % 256) % 256));
    }

    void play() {
        while (!over_ && errors_ < kErrorsThatEndIt)
            attempt();
        if (errors_ >= kErrorsThatEndIt)
            log("Retry = " + std::to_string(errors_) + ". Exit SendDataAndReceiveResponse without success");
        requireSame(seen_.writes.size(), nextWrite_, "its writes");
        requireSame(seen_.readSinceWrite, read_, "bytes read after the last write");
        requireTime(seen_.endedAt, "it ended");
        requireSame(seen_.result, good_, "the result");
        require(seen_.log == log_, "the log is wrong" + firstDifference());
        const ByteArray& info = info_.value_or(seen_.infoBefore);
        require(seen_.info == info, "the info is " + text(seen_.info) + "; expected " + text(info));
        requireSame(seen_.timeoutMs, timeoutMs_, "Timeout");
        requireSame(seen_.synchronized, synchronized_, "the synchronised flag");
    }

    /// After a raised error: the way up to there.
    void requireBeginning() const {
        require(seen_.log.size() <= log_.size() && std::equal(seen_.log.begin(), seen_.log.end(), log_.begin()),
                "the log up to the error is wrong" + firstDifference());
    }

    Judgement judgement;

private:
    void attempt() {
        log(logged("SEND", {frame_[0], frame_[1], frame_[2], frame_[3], frame_[4], frame_[5], frame_.back()}));
        ++judgement.sends;
        write(frame_);
        if (before_.onBus)
            dropEcho();

        bool whole = true;
        for (std::size_t i = 0; i < 6; ++i)
            whole &= read(answer_[i]);
        if (!whole)
            return resynchronise("Timeout, no Mark received");
        const int errorsBefore = errors_;
        const int leng = answer_[1];
        const int type = answer_[5];
        if (answer_[3] != 0 || answer_[4] != 0)
            countError("Error return, AUX1 or AUX2 <> 0");
        info_ = ByteArray(leng == 0 ? 1 : static_cast<std::size_t>(leng), 0);
        for (int i = 0; i < leng; ++i) {
            if (!read((*info_)[static_cast<std::size_t>(i)])) {
                countError("Timeout during INFO transmission");
                break;
            }
        }
        if (type == 0)
            return resynchronise("Error, command erreur received");
        if (type != request_.type)
            countError("Error, Type of command received not expected");
        if (errors_ > errorsBefore)
            return;
        if (!read(answer_[6]))
            return countError("Timeout, Checksum not received");
        log(logged("RCV", answer_));
        over_ = good_ = true;
    }

    void dropEcho() {
        std::array<std::uint8_t, 6> echo{};
        bool whole = true;
        for (std::uint8_t& byte : echo)
            whole &= read(byte);
        std::uint8_t dropped = 0;
        for (int left = whole ? echo[1] + 1 : 0; left > 0; --left)
            read(dropped);
    }

    void resynchronise(const char* why) {
        log(why);
        log(logged("RCV", answer_));
        log("Try to resynchronize system");
        judgement.resynchronised = true;
        timeoutMs_ = kHandshakeMs;
        int failed = 0;
        while (failed < kMostHandshakes && !handshake())
            ++failed;
        timeoutMs_ = kTimeoutAfterwardsMs;
        synchronized_ = failed < kMostHandshakes;
        over_ = !synchronized_;
        if (over_)
            return log("Resynchronize system FAILED");
        log("Resynchronize system OK after " + std::to_string(failed) + " times, Retry to send");
        log("Retry = " + std::to_string(++errors_));
    }

    bool handshake() {
        write({static_cast<std::uint8_t>(0xA5 + before_.node)});
        std::uint8_t byte = 0;
        if (before_.onBus && !read(byte))
            return false;
        return read(byte) && byte == 0x15 + before_.node;
    }

    /// What was waiting is thrown away, then these bytes are written.
    void write(const ByteArray& bytes) {
        require(nextWrite_ < seen_.writes.size(), "it did not write " + text(bytes));
        const HostWrite& written = seen_.writes[nextWrite_++];
        const std::string number = std::to_string(nextWrite_);
        require(written.bytes == bytes, "it wrote " + text(written.bytes) + "; expected " + text(bytes));
        requireTime(written.at, "write " + number + " was");
        if (nextWrite_ > 1)
            requireSame(written.readBefore, read_, "bytes read before write " + number);
        // Everything that had come by then is gone, and nothing that came later.
        require(written.goneByBefore >= next_ || nextWrite_ == 1, "it read bytes that were not there");
        next_ = written.goneByBefore;
        require(next_ == 0 || line_[next_ - 1].at <= written.at, "it read bytes before they came");
        require(next_ == line_.size() || line_[next_].at > written.at - kBeforeAWrite,
                "it did not empty the receive buffer before write " + number);
        read_ = 0;
        earliest_ = latest_ = written.at;
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

    template <class Value>
    static void requireSame(Value was, Value expected, const std::string& what) {
        require(was == expected, what + ": " + std::to_string(was) + "; expected " + std::to_string(expected));
    }

    void requireTime(Micros at, const std::string& what) const {
        require(at >= earliest_ && at <= latest_ + kBeforeAWrite,
                what + " at " + std::to_string(at - before_.at) + " us; expected " +
                    std::to_string(earliest_ - before_.at) + " to " + std::to_string(latest_ - before_.at));
    }

    void countError(const char* what) {
        log(what);
        log(logged("RCV", answer_));
        log("Retry = " + std::to_string(++errors_));
    }
    void log(const std::string& message) { log_.push_back(message); }

    std::string firstDifference() const {
        const auto lineOf = [](const auto& lines, std::size_t i) { return i < lines.size() ? lines[i] : "nothing"; };
        std::size_t i = 0;
        while (i < log_.size() && i < seen_.log.size() && log_[i] == seen_.log[i])
            ++i;
        return ", line " + std::to_string(i + 1) + ": \"" + lineOf(seen_.log, i) + "\"; expected \"" + lineOf(log_, i) +
               "\"";
    }

    const Request& request_;
    const LinkBefore& before_;
    const std::vector<FaultyLine::Arrival>& line_;
    const Seen& seen_;
    ByteArray frame_;
    std::int32_t timeoutMs_ = before_.timeoutMs;
    bool synchronized_ = before_.synchronized;
    Micros earliest_ = 0;  // when the next step begins, at the soonest and at the latest
    Micros latest_ = 0;
    std::size_t next_ = 0;       // of the line's bytes
    std::size_t read_ = 0;       // since the last write
    std::size_t nextWrite_ = 0;  // of the host's
    std::array<std::uint8_t, 7> answer_{};
    std::optional<ByteArray> info_;
    int errors_ = 0;
    bool over_ = false;
    bool good_ = false;
    std::vector<std::string> log_;
};

}  // namespace

Judgement judge(const Request& request, const LinkBefore& before, const std::vector<FaultyLine::Arrival>& line,
                const Seen& seen) {
    constexpr int kDeviceVanished = 57;
    Exchange exchange(request, before, line, seen);
    Judgement& judgement = exchange.judgement;
    try {
        bool isWhole = true;
        try {
            exchange.play();
        } catch (const Wrong&) {
            if (seen.raised != kDeviceVanished)
                throw;
            exchange.requireBeginning();
            isWhole = false;  // the way ends where the error was raised
        }
        require(!isWhole || seen.raised == 0, "nothing was wrong");
    } catch (const Borderline&) {
        judgement.verdict = Verdict::borderline;
    } catch (const Wrong& wrong) {
        judgement.verdict = Verdict::wrong;
        judgement.complaint =
            (seen.raised == 0 ? "" : "error " + std::to_string(seen.raised) + " was raised; ") + wrong.complaint;
    }
    return judgement;
}

}  // namespace opane::test::campaign
