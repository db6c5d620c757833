#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <numeric>
#include <optional>
#include <stdexcept>
#include <thread>

#include "simulator/served_module.h"
#include "support/temporary_folder.h"

namespace opane::simulator {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;
using test::TemporaryFolder;

constexpr int kPatienceMs = 5000;  // what comes, comes at once; only a failure waits this long

// A host's end of the line.
class Host {
public:
    explicit Host(const std::string& path) : device_(::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK)) {
        EXPECT_GE(number(), 0) << path;
    }

    int number() const { return device_.get(); }

    void baudRate(speed_t speed) const {
        termios settings{};
        ASSERT_EQ(::tcgetattr(number(), &settings), 0);
        ::cfsetspeed(&settings, speed);
        ASSERT_EQ(::tcsetattr(number(), TCSANOW, &settings), 0);
    }

    // What comes back, waited for; fewer bytes when the device has gone.
    Bytes told(const Bytes& request, std::size_t count) const {
        EXPECT_EQ(::write(number(), request.data(), request.size()), static_cast<ssize_t>(request.size()));
        Bytes bytes;
        pollfd source{number(), POLLIN, 0};
        std::uint8_t byte = 0;
        while (bytes.size() < count && ::poll(&source, 1, kPatienceMs) == 1 && ::read(number(), &byte, 1) == 1)
            bytes.push_back(byte);
        return bytes;
    }

private:
    FileDescriptor device_;
};

TEST(Server, PassesEveryByteFollowsTheSpeedAndComesBackAfterAnUnplug) {
    const TemporaryFolder folder;
    ServedModule module({.bus = Bus::rs485, .pace = true}, folder / "module");
    {
        const Host host(folder / "module");
        const Bytes toRate19200{0xAA, 0, 3, 254, 0, 14, 0xF1};
        EXPECT_EQ(host.told(toRate19200, 14), (Bytes{0xAA, 0, 3, 254, 0, 14, 0xF1, 0xAA, 0, 3, 0, 0, 14, 0xEF}));
        host.baudRate(B19200);
        Frame request{3, 0, 0, 13, Bytes(128)};
        std::iota(request.data.begin(), request.data.begin() + 64, std::uint8_t{0});
        std::iota(request.data.begin() + 64, request.data.end(), std::uint8_t{192});
        Bytes expected = wireBytes(request);
        for (const std::uint8_t byte : wireBytes({3, 0, 0, 13}))
            expected.push_back(byte);
        EXPECT_EQ(host.told(wireBytes(request), expected.size()), expected);
        module.withModule([](SimulatedModule& served) { served.fault({.fault = Fault::unplug, .after = 1}); });
        EXPECT_EQ(host.told({0xAA, 0, 3, 0, 0, 7, 0xF6}, 14),
                  (Bytes{0xAA, 0, 3, 0, 0, 7, 0xF6, 0xAA, 0, 3, 0, 0, 7, 0xF6}));
        host.baudRate(B9600);
        EXPECT_EQ(host.told({0xA8}, 2), (Bytes{0xA8, 0x18}));
        EXPECT_LT(host.told({0xAA, 0, 3, 0, 0, 6, 0xF7}, 8).size(), 8U);
        EXPECT_EQ(::tcflush(host.number(), TCIOFLUSH), -1) << "the device has gone";
        EXPECT_FALSE(fs::is_symlink(folder / "module"));
    }
    module.withModule([](SimulatedModule& served) { served.replug(); });
    for (int i = 0; i < 1'000'000 && !fs::exists(folder / "module"); ++i)  // until the link leads to a device again
        std::this_thread::yield();
    EXPECT_EQ(Host(folder / "module").told({0xA8}, 2), (Bytes{0xA8, 0x18}));
}

TEST(Device, IsCleanAgainWhenItsLastHostHasGoneAndOnlyThen) {
    PseudoTerminal terminal;
    for (const bool another : {true, false}) {
        auto other = another ? std::make_optional<Host>(terminal.path()) : std::nullopt;
        {
            const Host host(terminal.path());  // as one that was killed
            ASSERT_EQ(::ioctl(host.number(), TIOCEXCL), 0);
            terminal.write(Bytes{1, 2, 3});
            pollfd source{host.number(), POLLIN, 0};
            ASSERT_EQ(::poll(&source, 1, kPatienceMs), 1);
        }
        terminal.noteLeavings();
        if (!another)
            other.emplace(terminal.path());
        int unread = -1;
        int exclusive = -1;
        EXPECT_EQ(::ioctl(other->number(), FIONREAD, &unread), 0);
        EXPECT_EQ(::ioctl(other->number(), TIOCGEXCL, &exclusive), 0);
        EXPECT_EQ(unread, another ? 3 : 0);
        EXPECT_EQ(exclusive, another ? 1 : 0);
    }
}

TEST(Link, ReplacesOnlyOneThatDanglesOrLeadsToATerminalAndGoesAtTheEnd) {
    const TemporaryFolder folder;
    const std::string link = folder / "module";
    const PseudoTerminal somebodyElses;
    for (const std::string& target : {std::string("/dev/pts/12345"), std::string("nowhere"), somebodyElses.path()}) {
        fs::create_symlink(target, link);
        const PseudoTerminal terminal(link);
        EXPECT_EQ(fs::read_symlink(link), terminal.path());
    }
    EXPECT_TRUE(fs::is_empty(folder.path()));
    folder.write("file", "kept");
    fs::create_symlink("file", folder / "to_a_file");
    for (const char* const place : {"file", "to_a_file", "missing/module"})
        EXPECT_THROW(PseudoTerminal{folder / place}, std::runtime_error) << place;
    EXPECT_EQ(test::contentOf(folder / "to_a_file"), "kept");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 2);
}

TEST(Link, OfOneThatLivesIsLeftAlone) {
    const TemporaryFolder folder;
    auto first = std::make_optional<PseudoTerminal>(folder / "module");
    EXPECT_THROW(PseudoTerminal{folder / "./module"}, std::runtime_error);
    EXPECT_EQ(fs::read_symlink(folder / "module"), first->path());
    first->close();  // as unplugged
    EXPECT_THROW(PseudoTerminal{folder / "module"}, std::runtime_error);
    first->reopen();
    EXPECT_EQ(fs::read_symlink(folder / "module"), first->path());
    first.reset();
    EXPECT_NO_THROW(PseudoTerminal{folder / "module"});
}

}  // namespace
}  // namespace opane::simulator
