#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <future>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "simulator/module_server.h"
#include "simulator/pseudo_terminal.h"

namespace opane::simulator {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

const Bytes kStatusRequest{0xAA, 0, 3, 0, 0, 9, 0xF4};
const Bytes kStatusAnswer{0xAA, 1, 3, 0, 0, 9, 0x38, 0xBB};

constexpr int kPatienceMs = 5000;  // what comes, comes at once; only a failure waits this long

// A host's end of the line.
class Host {
public:
    explicit Host(const std::string& path) : device_(::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK)) {
        EXPECT_GE(device_.number(), 0) << path;
    }

    void baudRate(speed_t speed) {
        termios settings{};
        ASSERT_EQ(::tcgetattr(device_.number(), &settings), 0);
        ::cfsetspeed(&settings, speed);
        ASSERT_EQ(::tcsetattr(device_.number(), TCSANOW, &settings), 0);
    }

    void write(const Bytes& bytes) {
        ASSERT_EQ(::write(device_.number(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    // Waits for that many bytes; gives fewer when the device has gone.
    Bytes read(std::size_t count) {
        Bytes bytes;
        while (bytes.size() < count) {
            pollfd source{device_.number(), POLLIN, 0};
            if (::poll(&source, 1, kPatienceMs) != 1)
                break;
            std::uint8_t byte = 0;
            if (::read(device_.number(), &byte, 1) != 1)
                break;
            bytes.push_back(byte);
        }
        return bytes;
    }

    int number() const { return device_.number(); }

private:
    Descriptor device_;
};

class Server : public testing::Test {
protected:
    explicit Server(ModuleOptions options = {}) : module_(options), terminal_(link_) { start(); }
    ~Server() override {
        stop();
        fs::remove(link_);
    }

    void start() {
        serving_ = std::jthread([this] { server_.run(); });
    }
    void stop() {
        server_.stop();
        if (serving_.joinable())
            serving_.join();
    }

    const fs::path link_ = fs::temp_directory_path() / ("opane-server-" + std::to_string(::getpid()));
    SimulatedModule module_;
    PseudoTerminal terminal_;
    ModuleServer server_{module_, terminal_};
    std::jthread serving_;
};

class PacedBus : public Server {
protected:
    PacedBus() : Server({.bus = Bus::rs485, .baudRate = 38400, .pace = true}) {}
};

TEST_F(Server, answers_through_the_link) {
    Host host(link_.string());
    host.write({0xA8});
    EXPECT_EQ(host.read(1), (Bytes{0x18}));
    host.write(kStatusRequest);
    EXPECT_EQ(host.read(8), kStatusAnswer);
    EXPECT_EQ(server_.withModule([](SimulatedModule& module) { return module.frames().size(); }), 1U);
}

TEST_F(Server, passes_every_byte_value_both_ways) {
    for (int half = 0; half < 2; ++half) {
        Frame request{3, static_cast<std::uint8_t>(half * 128), 0, 13, {}};
        for (int i = 0; i < 128; ++i)
            request.data.push_back(static_cast<std::uint8_t>(half * 128 + i));
        Host host(link_.string());
        host.write(wireBytes(request));
        EXPECT_EQ(host.read(7), wireBytes({3, 0, 0, 13, {}}));
        host.write(wireBytes({3, request.aux1, 0, 12, {128}}));
        EXPECT_EQ(host.read(135), wireBytes({3, 0, 0, 12, request.data}));
    }
}

TEST_F(Server, a_change_from_another_thread_is_seen_by_the_host) {
    server_.withModule([](SimulatedModule& module) { module.state().upsideDown = true; });
    Host host(link_.string());
    host.write(kStatusRequest);
    EXPECT_EQ(host.read(8), (Bytes{0xAA, 1, 3, 0, 0, 9, 0x39, 0xBA}));
}

TEST_F(Server, knows_the_speed_that_the_host_has_set) {
    Host host(link_.string());
    host.write({0xAA, 0, 3, 254, 0, 14, 0xF1});  // 19200
    EXPECT_EQ(host.read(7), (Bytes{0xAA, 0, 3, 0, 0, 14, 0xEF}));
    host.baudRate(B19200);
    host.write({0xA8});
    EXPECT_EQ(host.read(1), (Bytes{0x18}));
}

TEST_F(Server, unplugged_and_plugged_in_again) {
    server_.withModule([](SimulatedModule& module) { module.fault({.fault = Fault::unplug}); });
    {
        Host host(link_.string());
        host.write(kStatusRequest);
        EXPECT_TRUE(host.read(1).empty());
        EXPECT_EQ(::tcflush(host.number(), TCIOFLUSH), -1) << "the device has gone";
    }
    stop();
    std::promise<void> pluggedIn;
    server_.whenHeard([&] { pluggedIn.set_value(); });
    start();
    server_.withModule([](SimulatedModule& module) { module.replug(); });
    EXPECT_EQ(pluggedIn.get_future().wait_for(std::chrono::milliseconds(kPatienceMs)), std::future_status::ready);
    stop();
    server_.whenHeard(nullptr);
    start();
    Host host(link_.string());
    host.write({0xA8});
    EXPECT_EQ(host.read(1), (Bytes{0x18}));
    EXPECT_EQ(fs::read_symlink(link_), server_.devicePath());
}

TEST_F(Server, can_be_stopped_before_it_runs_and_run_again) {
    stop();
    server_.stop();
    server_.run();
    start();
    Host host(link_.string());
    host.write({0xA8});
    EXPECT_EQ(host.read(1), (Bytes{0x18}));
}

TEST_F(PacedBus, echoes_and_answers) {
    Host host(link_.string());
    host.baudRate(B38400);
    host.write({0xA8});
    EXPECT_EQ(host.read(2), (Bytes{0xA8, 0x18}));
    host.write(kStatusRequest);
    EXPECT_EQ(host.read(7), kStatusRequest);
    EXPECT_EQ(host.read(8), kStatusAnswer);
}

// Whether the device is in exclusive use, and how many bytes wait in it for a host.
std::pair<int, int> leftBehind(const PseudoTerminal& terminal) {
    const Host host(terminal.path());
    int exclusive = -1;
    int unread = -1;
    EXPECT_EQ(::ioctl(host.number(), TIOCGEXCL, &exclusive), 0);
    EXPECT_EQ(::ioctl(host.number(), FIONREAD, &unread), 0);
    return {exclusive, unread};
}

TEST(Device, is_clean_again_when_its_last_host_has_gone) {
    PseudoTerminal terminal;
    {
        const Host host(terminal.path());
        ASSERT_EQ(::ioctl(host.number(), TIOCEXCL), 0);
        terminal.write(kStatusAnswer);
    }
    terminal.noteLeavings();
    EXPECT_EQ(leftBehind(terminal), (std::pair{0, 0}));
}

TEST(Device, stays_as_it_is_while_a_host_is_there) {
    PseudoTerminal terminal;
    Host host(terminal.path());
    {
        const Host second(terminal.path());
        ASSERT_EQ(::ioctl(host.number(), TIOCEXCL), 0);
        terminal.write(kStatusAnswer);
    }
    terminal.noteLeavings();
    int exclusive = -1;
    EXPECT_EQ(::ioctl(host.number(), TIOCGEXCL, &exclusive), 0);
    EXPECT_EQ(exclusive, 1);
    EXPECT_EQ(host.read(8), kStatusAnswer);
}

class Link : public testing::Test {
protected:
    Link() { fs::create_directory(folder_); }
    ~Link() override { fs::remove_all(folder_); }

    fs::path folder_ = fs::temp_directory_path() / ("opane-link-" + std::to_string(::getpid()));
    fs::path link_ = folder_ / "module";
};

TEST_F(Link, leads_to_the_device_and_goes_at_the_end) {
    {
        const PseudoTerminal terminal(link_);
        EXPECT_EQ(fs::read_symlink(link_), terminal.path());
    }
    EXPECT_TRUE(fs::is_empty(folder_));
}

TEST_F(Link, replaces_one_that_dangles_or_leads_to_a_terminal) {
    for (const char* target : {"/dev/pts/12345", "nowhere"}) {
        fs::create_symlink(target, link_);
        const PseudoTerminal terminal(link_);
        EXPECT_EQ(fs::read_symlink(link_), terminal.path());
    }
}

TEST_F(Link, replaces_nothing_else) {
    std::ofstream(link_) << "kept";
    EXPECT_THROW(PseudoTerminal{link_}, std::runtime_error);
    EXPECT_TRUE(fs::is_regular_file(link_));
    fs::create_symlink("module", folder_ / "to_a_file");
    EXPECT_THROW(PseudoTerminal{folder_ / "to_a_file"}, std::runtime_error);
    EXPECT_EQ(fs::read_symlink(folder_ / "to_a_file"), "module");
    EXPECT_THROW(PseudoTerminal{folder_ / "missing" / "module"}, std::runtime_error);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 2);
}

TEST_F(Link, of_another_simulator_is_left_alone_at_the_end) {
    auto first = std::make_optional<PseudoTerminal>(link_);
    const PseudoTerminal second(link_);
    first.reset();
    EXPECT_EQ(fs::read_symlink(link_), second.path());
}

}  // namespace
}  // namespace opane::simulator
