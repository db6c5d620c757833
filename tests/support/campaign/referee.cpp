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

/// The way of one exchange as the rules have it, on the bytes of the line.
class Exchange {
public:
    Exchange(const Request& request, const LinkBefore& before, const std::vector<FaultyLine::Arrival>& line,
             const Seen& seen)
        : request_(request),
          before_(before),
          line_(line),
          seen_(seen),
          timeoutMs_(before.timeoutMs),
          synchronized_(before.synchronized) {
        earliest_ = latest_ = before.at;
        frame_.reserve(request.length + std::size_t{7});
        for (const int field :
             {0xAA, int{request.length}, before.node, int{request.aux1}, int{request.aux2}, int{request.type}})
            frame_.push_back(static_cast<std::uint8_t>(field));
        for (std::size_t i = 0; i < request.length; ++i)
            frame_.push_back(request.data[i]);
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
        require(nextWrite_ == seen_.writes.size(),
                "it wrote " + std::to_string(seen_.writes.size()) + " times; expected " + std::to_string(nextWrite_));
        requireRead(seen_.readSinceWrite);
        requireTime(seen_.endedAt, "it ended");
        require(seen_.result == good_,
                good_ ? "a good answer came, but the result is false" : "no good answer came, but the result is true");
        require(seen_.log == log_, "the log is wrong" + firstDifference());
        require(seen_.info == info_.value_or(seen_.infoBefore),
                "the info is " + text(seen_.info) + "; expected " + text(info_.value_or(seen_.infoBefore)));
        require(seen_.timeoutMs == timeoutMs_, "Timeout is " + std::to_string(seen_.timeoutMs));
        require(seen_.synchronized == synchronized_, "the synchronised flag is wrong");
    }

    /// After a raised error: the way up to there.
    void requireBeginning() const {
        require(seen_.log.size() <= log_.size() && std::equal(seen_.log.begin(), seen_.log.end(), log_.begin()),
                "the log up to the error is wrong" + firstDifference());
    }

    bool resynchronised() const { return resynchronised_; }
    std::size_t sends() const { return sends_; }

private:
    void attempt() {
        bool ok = true;
        log(line("SEND", frame_[0], frame_[1], frame_[2], frame_[3], frame_[4], frame_[5], frame_.back()));
        ++sends_;
        write(frame_);
        if (before_.onBus)
            dropEcho();

        bool whole = true;
        for (std::size_t i = 0; i < 6; ++i)
            whole &= read(answer_[i]);
        if (!whole) {
            trouble("Timeout, no Mark received");
            resynchronise();
            return;
        }
        const int leng = answer_[1];
        const int type = answer_[5];
        if (answer_[3] != 0 || answer_[4] != 0) {
            trouble("Error return, AUX1 or AUX2 <> 0");
            countError();
            ok = false;
        }
        info_ = ByteArray(leng == 0 ? 1 : static_cast<std::size_t>(leng), 0);
        for (int i = 0; i < leng; ++i) {
            if (read((*info_)[static_cast<std::size_t>(i)]))
                continue;
            trouble("Timeout during INFO transmission");
            countError();
            ok = false;
            break;
        }
        if (type == 0) {
            trouble("Error, command erreur received");
            resynchronise();
            return;
        }
        if (type != request_.type) {
            trouble("Error, Type of command received not expected");
            countError();
            ok = false;
        }
        if (!ok)
            return;
        if (!read(answer_[6])) {
            trouble("Timeout, Checksum not received");
            countError();
            return;
        }
        log(received());
        over_ = good_ = true;
    }

    void dropEcho() {
        std::array<std::uint8_t, 6> echo{};
        bool whole = true;
        for (std::uint8_t& byte : echo)
            whole &= read(byte);
        for (int left = whole ? echo[1] + 1 : 0; left > 0; --left) {
            std::uint8_t dropped = 0;
            read(dropped);
        }
    }

    void resynchronise() {
        log("Try to resynchronize system");
        resynchronised_ = true;
        timeoutMs_ = kHandshakeMs;
        synchronized_ = false;
        int failed = 0;
        while (failed < kMostHandshakes && !handshake())
            ++failed;
        timeoutMs_ = kTimeoutAfterwardsMs;
        if (failed == kMostHandshakes) {
            log("Resynchronize system FAILED");
            over_ = true;
            return;
        }
        synchronized_ = true;
        log("Resynchronize system OK after " + std::to_string(failed) + " times, Retry to send");
        countError();
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
        require(nextWrite_ < seen_.writes.size(),
                "it wrote " + std::to_string(nextWrite_) + " times and then not " + text(bytes) + "as expected");
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
        require(read == read_, "it read " + std::to_string(read) + " bytes after write " + std::to_string(nextWrite_) +
                                   "; expected " + std::to_string(read_));
    }

    void requireTime(Micros at, const std::string& what) const {
        require(at >= earliest_ && at <= latest_ + kBeforeAWrite,
                what + " at " + std::to_string(at - before_.at) + " us; expected " +
                    std::to_string(earliest_ - before_.at) + " to " + std::to_string(latest_ - before_.at));
    }

    static std::string line(const char* direction, int mark, int leng, int node, int aux1, int aux2, int type,
                            int cksm) {
        std::string result = direction;
        result += " :";
        const std::array<const char*, 7> names{"Mark", "Leng", "Node", "Aux1", "Aux2", "Type", "Cksm"};
        const std::array values{mark, leng, node, aux1, aux2, type, cksm};
        for (std::size_t i = 0; i < names.size(); ++i) {
            char field[16];
            std::snprintf(field, sizeof field, " %s:%X", names[i], static_cast<unsigned>(values[i]));
            result += field;
        }
        return result;
    }
    std::string received() const {
        return line("RCV", answer_[0], answer_[1], answer_[2], answer_[3], answer_[4], answer_[5], answer_[6]);
    }

    void trouble(const char* what) {
        log(what);
        log(received());
    }
    void countError() {
        ++errors_;
        log("Retry = " + std::to_string(errors_));
    }
    void log(const std::string& message) { log_.push_back(message); }

    std::string firstDifference() const {
        for (std::size_t i = 0; i < std::max(log_.size(), seen_.log.size()); ++i) {
            const std::string expected = i < log_.size() ? log_[i] : "nothing";
            const std::string was = i < seen_.log.size() ? seen_.log[i] : "nothing";
            if (was != expected)
                return ", line " + std::to_string(i + 1) + ": \"" + was + "\"; expected \"" + expected + "\"";
        }
        return "";
    }

    const Request& request_;
    const LinkBefore& before_;
    const std::vector<FaultyLine::Arrival>& line_;
    const Seen& seen_;
    ByteArray frame_;
    std::int32_t timeoutMs_;
    bool synchronized_;
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
    bool resynchronised_ = false;
    std::size_t sends_ = 0;
    std::vector<std::string> log_;
};

}  // namespace

Judgement judge(const Request& request, const LinkBefore& before, const std::vector<FaultyLine::Arrival>& line,
                const Seen& seen) {
    constexpr int kDeviceVanished = 57;
    Exchange exchange(request, before, line, seen);
    const auto judged = [&](Verdict verdict, const std::string& complaint = {}) {
        return Judgement{verdict, complaint, exchange.resynchronised(), exchange.sends()};
    };
    try {
        exchange.play();
        if (seen.raised != 0)
            return judged(Verdict::wrong, "error " + std::to_string(seen.raised) + " was raised for nothing");
        return judged(Verdict::right);
    } catch (const Borderline&) {
        return judged(Verdict::borderline);
    } catch (const Wrong& wrong) {
        if (seen.raised == 0)
            return judged(Verdict::wrong, wrong.complaint);
    }
    // The way ends where the error was raised.
    if (seen.raised != kDeviceVanished)
        return judged(Verdict::wrong, "error " + std::to_string(seen.raised) + " was raised");
    try {
        exchange.requireBeginning();
    } catch (const Wrong& wrong) {
        return judged(Verdict::wrong, wrong.complaint);
    }
    return judged(Verdict::right);
}

}  // namespace opane::test::campaign
