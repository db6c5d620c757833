#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <numeric>
#include <stdexcept>
#include <thread>

#include "simulator/served_module.h"
#include "support/temporary_folder.h"

namespace opane::simulator {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

constexpr int kPatienceMs = 5000;  // what comes, comes at once; only a failure waits this long

FileDescriptor host(const std::string& path) {
    FileDescriptor device(::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK));
    EXPECT_GE(device.get(), 0) << path;
    return device;
}

Bytes told(const FileDescriptor& device, const Bytes& request, std::size_t count) {
    EXPECT_EQ(::write(device.get(), request.data(), request.size()), static_cast<ssize_t>(request.size()));
    Bytes bytes;
    pollfd source{device.get(), POLLIN, 0};
    std::uint8_t byte = 0;
    while (bytes.size() < count && ::poll(&source, 1, kPatienceMs) == 1 && ::read(device.get(), &byte, 1) == 1)
        bytes.push_back(byte);
    return bytes;
}

TEST(Server, PassesEveryByteAndComesBackAfterAnUnplug) {
    const test::TemporaryFolder folder;
    ServedModule module({.bus = Bus::rs485, .pace = true}, folder / "module");
    {
        const FileDescriptor device = host(folder / "module");
        Frame request{3, 0, 0, 13, Bytes(128)};
        std::iota(request.data.begin(), request.data.end(), std::uint8_t{192});  // and 0 to 63
        Bytes expected = wireBytes(request);
        expected.insert(expected.end(), {0xAA, 0, 3, 0, 0, 13, 0xF0});
        EXPECT_EQ(told(device, wireBytes(request), expected.size()), expected);
        module.withModule([](SimulatedModule& served) { served.fault({.fault = Fault::unplug}); });
        EXPECT_LT(told(device, {0xAA, 0, 3, 0, 0, 6, 0xF7}, 14).size(), 14U);
        EXPECT_FALSE(fs::is_symlink(folder / "module"));
    }
    module.withModule([](SimulatedModule& served) { served.replug(); });
    for (int i = 0; i < 1'000'000 && !fs::exists(folder / "module"); ++i)  // until the link leads to a device again
        std::this_thread::yield();
    EXPECT_EQ(told(host(folder / "module"), {0xA8}, 2), (Bytes{0xA8, 0x18}));
}

TEST(Device, IsCleanAgainWhenItsLastHostHasGoneAndOnlyThen) {
    PseudoTerminal terminal;
    for (const bool another : {true, false}) {
        FileDescriptor other = another ? host(terminal.path()) : FileDescriptor();
        {
            const FileDescriptor killed = host(terminal.path());
            ASSERT_EQ(::ioctl(killed.get(), TIOCEXCL), 0);
            terminal.write(Bytes{1, 2, 3});
            pollfd source{killed.get(), POLLIN, 0};
            ASSERT_EQ(::poll(&source, 1, kPatienceMs), 1);
        }
        terminal.noteLeavings();
        if (!another)
            other = host(terminal.path());
        int unread = -1;
        int exclusive = -1;
        EXPECT_EQ(::ioctl(other.get(), FIONREAD, &unread) + ::ioctl(other.get(), TIOCGEXCL, &exclusive), 0);
        EXPECT_EQ(std::pair(unread, exclusive), another ? std::pair(3, 1) : std::pair(0, 0));
    }
}

TEST(Link, ReplacesOnlyOneThatDanglesOrLeadsToATerminalAndGoesAtTheEnd) {
    const test::TemporaryFolder folder;
    const std::string link = folder / "module";
    const PseudoTerminal somebodyElses;
    for (const std::string& target : {std::string("/dev/pts/12345"), std::string("nowhere"), somebodyElses.path()}) {
        fs::create_symlink(target, link);
        PseudoTerminal terminal(link);
        EXPECT_EQ(fs::read_symlink(link), terminal.path());
        EXPECT_THROW(PseudoTerminal{folder / "./module"}, std::runtime_error);
        terminal.close();  // as unplugged
        EXPECT_THROW(PseudoTerminal{link}, std::runtime_error);
        terminal.reopen();
    }
    EXPECT_TRUE(fs::is_empty(folder.path()));
    folder.write("file", "kept");
    fs::create_symlink("file", folder / "to_a_file");
    for (const char* const place : {"file", "to_a_file", "missing/module"})
        EXPECT_THROW(PseudoTerminal{folder / place}, std::runtime_error) << place;
    EXPECT_EQ(test::contentOf(folder / "to_a_file"), "kept");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 2);
}

}  // namespace
}  // namespace opane::simulator
