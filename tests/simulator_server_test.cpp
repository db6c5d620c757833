#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

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

    bool isExclusive() const {
        int exclusive = -1;
        EXPECT_EQ(::ioctl(number(), TIOCGEXCL, &exclusive), 0);
        return exclusive != 0;
    }

private:
    FileDescriptor device_;
};

TEST(Server, passes_every_byte_value_both_ways_and_what_another_thread_sets) {
    ServedModule module;
    const Host host(module.devicePath());
    for (const std::uint8_t from : Bytes{0, 128}) {
        Frame request{3, from, 0, 13, {}};
        for (int i = 0; i < 128; ++i)
            request.data.push_back(static_cast<std::uint8_t>(from + i));
        EXPECT_EQ(host.told(wireBytes(request), 7), wireBytes({3, 0, 0, 13}));
        EXPECT_EQ(host.told(wireBytes({3, from, 0, 12, {128}}), 135), wireBytes({3, 0, 0, 12, request.data}));
    }
    module.withModule([](SimulatedModule& served) { served.pressKey(9); });
    EXPECT_EQ(host.told(wireBytes({3, 1, 0, 18}), 9), wireBytes({3, 0, 0, 18, {0xF2, 0x07}}));
}

TEST(Server, hears_at_the_speed_that_a_change_and_a_reset_have_set) {
    ServedModule module({.bus = Bus::rs485, .pace = true});
    const Host host(module.devicePath());
    const Bytes toRate19200{0xAA, 0, 3, 254, 0, 14, 0xF1};
    const Bytes reset{0xAA, 0, 3, 0, 0, 7, 0xF6};
    EXPECT_EQ(host.told(toRate19200, 14), (Bytes{0xAA, 0, 3, 254, 0, 14, 0xF1, 0xAA, 0, 3, 0, 0, 14, 0xEF}));
    host.baudRate(B19200);
    EXPECT_EQ(host.told({0xA8}, 2), (Bytes{0xA8, 0x18}));
    EXPECT_EQ(host.told(reset, 14), (Bytes{0xAA, 0, 3, 0, 0, 7, 0xF6, 0xAA, 0, 3, 0, 0, 7, 0xF6}));
    host.baudRate(B9600);
    EXPECT_EQ(host.told({0xA8}, 2), (Bytes{0xA8, 0x18}));
}

TEST(Server, unplugged_and_plugged_in_again) {
    const TemporaryFolder folder;
    ServedModule module({}, folder / "module");
    module.withModule([](SimulatedModule& served) { served.fault({.fault = Fault::unplug}); });
    {
        const Host host(folder / "module");
        EXPECT_TRUE(host.told({0xAA, 0, 3, 0, 0, 6, 0xF7}, 1).empty());
        EXPECT_EQ(::tcflush(host.number(), TCIOFLUSH), -1) << "the device has gone";
        EXPECT_FALSE(fs::is_symlink(folder / "module"));
    }
    module.withModule([](SimulatedModule& served) { served.replug(); });
    for (int i = 0; i < 1'000'000 && !fs::exists(folder / "module"); ++i)  // until the link leads to a device again
        std::this_thread::yield();
    EXPECT_EQ(Host(folder / "module").told({0xA8}, 1), (Bytes{0x18}));
}

TEST(Device, is_clean_again_when_its_last_host_has_gone_and_only_then) {
    PseudoTerminal terminal;
    for (const bool another : {true, false}) {
        const auto stays = another ? std::make_optional<Host>(terminal.path()) : std::nullopt;
        {
            const Host host(terminal.path());  // as one that was killed
            ASSERT_EQ(::ioctl(host.number(), TIOCEXCL), 0);
            terminal.write(Bytes{1, 2, 3});
            pollfd source{host.number(), POLLIN, 0};
            ASSERT_EQ(::poll(&source, 1, kPatienceMs), 1);
        }
        terminal.noteLeavings();
        int unread = -1;
        const std::optional<Host> next = another ? std::nullopt : std::make_optional<Host>(terminal.path());
        EXPECT_EQ(::ioctl((another ? stays : next)->number(), FIONREAD, &unread), 0);
        EXPECT_EQ(unread, another ? 3 : 0);
        EXPECT_EQ((another ? stays : next)->isExclusive(), another);
    }
}

TEST(Link, replaces_one_that_dangles_or_leads_to_a_terminal_and_goes_at_the_end) {
    const TemporaryFolder folder;
    const fs::path link = folder / "module";
    const FileDescriptor somebody(::posix_openpt(O_RDWR | O_NOCTTY));  // else's terminal
    ASSERT_EQ(::unlockpt(somebody.get()), 0);
    for (const char* target : {"/dev/pts/12345", "nowhere", static_cast<const char*>(::ptsname(somebody.get()))}) {
        fs::create_symlink(target, link);
        const PseudoTerminal terminal(link);
        EXPECT_EQ(fs::read_symlink(link), terminal.path());
    }
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(Link, of_one_that_lives_is_left_alone) {
    const TemporaryFolder folder;
    auto first = std::make_optional<PseudoTerminal>(folder / "module");
    for (const std::string name : {"module", "./module"})
        EXPECT_THROW(PseudoTerminal{folder / name}, std::runtime_error) << name;
    EXPECT_EQ(fs::read_symlink(folder / "module"), first->path());
    first->close();  // as unplugged
    EXPECT_THROW(PseudoTerminal{folder / "module"}, std::runtime_error);
    first->reopen();
    EXPECT_EQ(fs::read_symlink(folder / "module"), first->path());
    first.reset();
    EXPECT_NO_THROW(PseudoTerminal{folder / "module"});
}

TEST(Link, goes_to_one_of_those_that_start_at_once) {
    const TemporaryFolder folder;
    for (int round = 0; round < 50; ++round) {
        fs::create_symlink("nowhere", folder / "module");
        std::optional<PseudoTerminal> terminals[2];
        {
            std::jthread starting[2];
            for (std::size_t i = 0; i < 2; ++i)
                starting[i] = std::jthread([&, i] {
                    try {
                        terminals[i].emplace(folder / "module");
                    } catch (const std::runtime_error&) {
                    }
                });
        }
        ASSERT_NE(terminals[0].has_value(), terminals[1].has_value());
    }
}

TEST(Link, replaces_nothing_else) {
    const TemporaryFolder folder;
    const std::string file = folder.write("file", "kept");
    fs::create_symlink("file", folder / "to_a_file");
    for (const char* link : {"file", "to_a_file", "missing/module"})
        EXPECT_THROW(PseudoTerminal{folder / link}, std::runtime_error) << link;
    EXPECT_EQ(test::contentOf(folder / "to_a_file"), "kept");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 2);
}

}  // namespace
}  // namespace opane::simulator
