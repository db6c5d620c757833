#include "platform/serial_control.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/auxv.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <numeric>
#include <thread>

#include "automation/clsOPaneCommDLL.h"
#include "link/clsOPane.h"
#include "platform/cancellation.h"
#include "platform/posix/file_descriptor.h"
#include "platform/serial_device.h"
#include "platform/services.h"
#include "simulator/served_module.h"
#include "support/program.h"
#include "support/raised_number.h"
#include "support/temporary_folder.h"
#include "support/without_rights.h"

namespace opane::test {
namespace {

using simulator::PseudoTerminal;

struct SettingsCase {
    const char* name;
    const char* settings;
    int raised;
};

class Settings : public testing::TestWithParam<SettingsCase> {};

TEST_P(Settings, AreTakenOrRefused) {
    const auto control = makeSystemSerialControl();
    EXPECT_EQ(raisedNumber([&] { control->Settings(GetParam().settings); }), GetParam().raised);
    EXPECT_EQ(control->Settings(), GetParam().raised == 0 ? GetParam().settings : "9600,N,8,1");
}

INSTANTIATE_TEST_SUITE_P(
    Texts, Settings,
    testing::Values(SettingsCase{"slowest", "1200,N,8,1", 0}, SettingsCase{"fastest", "57600,n,8,1", 0},
                    SettingsCase{"beyond_the_module", "115200,N,8,1", 0},
                    SettingsCase{"no_standard_rate", "12345,N,8,1", 380}, SettingsCase{"rate_0", "0,N,8,1", 380},
                    SettingsCase{"negative_rate", "-9600,N,8,1", 380},
                    SettingsCase{"rate_beyond_32_bits", "99999999999,N,8,1", 380},
                    SettingsCase{"parity", "9600,E,8,1", 380}, SettingsCase{"no_data_bits", "9600,N,0,0", 380},
                    SettingsCase{"two_stop_bits", "9600,N,8,2", 380}, SettingsCase{"rate_alone", "9600", 380},
                    SettingsCase{"empty", "", 380}, SettingsCase{"blanks", " 9600,N,8,1", 380},
                    SettingsCase{"more", "9600,N,8,1,1", 380}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Ports, AreTheSystemsOwnUnlessTheEnvironmentNamesThem) {
    setenv("OPANE_COM77", "/nowhere/line", 1);
    const bool hasOthersRights = getauxval(AT_SECURE) != 0;
    EXPECT_EQ(systemDevicePath(77), hasOthersRights ? "/dev/ttyS76" : "/nowhere/line");
    unsetenv("OPANE_COM77");
    EXPECT_EQ(systemDevicePath(77), "/dev/ttyS76");
    std::cout << (hasOthersRights ? "with the rights of others\n" : "");
}

TEST(Ports, OfAProgramWithTheRightsOfOthersAreTheSystemsOwn) {
    const TemporaryFolder folder;
    const std::string copy = folder / "set-group-id";
    std::filesystem::copy_file("/proc/self/exe", copy);
    struct statvfs disk {};
    statvfs(copy.c_str(), &disk);
    const bool isRaised = WithoutRights::matters() && chown(copy.c_str(), 0, 65534) == 0 &&
                          (disk.f_flag & ST_NOSUID) == 0 && prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 0;
    chmod(copy.c_str(), 02755);
    const ProgramEnd end = runProgram({copy, "--gtest_filter=Ports.AreTheSystemsOwnUnlessTheEnvironmentNamesThem"});
    EXPECT_EQ(end.status, 0) << end.output;
    EXPECT_EQ(end.output.find("with the rights of others") != std::string::npos, isRaised);
}

/// A control on a pseudo-terminal whose other end the test holds.
class OnATerminal : public testing::Test {
protected:
    OnATerminal() {
        services->portMap = [this](std::int16_t port) { return port == 4 ? device : std::string(); };
        control = makeSystemSerialControl();
        control->CommPort(4);
    }

    std::string reason() {
        try {
            control->Input();
        } catch (const RuntimeError& error) {
            EXPECT_EQ(error.number(), ErrorNumber::portNotOpen);
            return error.what();
        }
        return "no error";
    }

    PseudoTerminal terminal;
    std::string device = terminal.path();
    ServicesScope services;
    std::unique_ptr<SerialControl> control;
};

/// As a login would leave a line: echoing, with characters that are translated or end a program.
/// @return a descriptor of the device that stays open
FileDescriptor makeCooked(const std::string& device) {
    FileDescriptor descriptor = openFile(device.c_str(), O_RDWR | O_NOCTTY);
    termios mode{};
    tcgetattr(descriptor.get(), &mode);
    mode.c_iflag |= BRKINT | ICRNL | IXON | IXOFF | ISTRIP | INPCK;
    mode.c_oflag |= OPOST | ONLCR;
    mode.c_lflag |= ICANON | ECHO | ISIG | IEXTEN;
    mode.c_cflag |= PARENB | CSTOPB | HUPCL;
    mode.c_cflag &= ~static_cast<tcflag_t>(CLOCAL | CREAD);
    EXPECT_EQ(tcsetattr(descriptor.get(), TCSANOW, &mode), 0);
    return descriptor;
}

bool isExclusive(const FileDescriptor& terminal) {
    int exclusive = 0;
    ioctl(terminal.get(), TIOCGEXCL, &exclusive);
    return exclusive != 0;
}

TEST_F(OnATerminal, CarriesEveryByteUnchangedBothWays) {
    const FileDescriptor watching = makeCooked(device);
    ByteArray all(256);
    std::iota(all.begin(), all.end(), std::uint8_t{0});
    control->Settings("19200,N,8,1");
    control->PortOpen(true);
    EXPECT_EQ(terminal.hostBaudRate(), 19200);
    termios mode{};
    tcgetattr(watching.get(), &mode);
    EXPECT_EQ(mode.c_cflag & (CSIZE | PARENB | CSTOPB | CRTSCTS | HUPCL | CLOCAL | CREAD), CS8 | CLOCAL | CREAD);
    EXPECT_EQ(mode.c_iflag & (IXON | IXOFF | IXANY | INPCK | ISTRIP), 0U);
    control->Output(all);
    EXPECT_EQ(terminal.read(), all);

    terminal.write(all);
    ASSERT_TRUE(control->WaitForInput(1000));
    control->InputLen(1);
    for (int i = 0; i < 3; ++i) {
        const auto got = control->Input();
        ASSERT_EQ(got.size(), 1U);
        EXPECT_EQ(got.front(), i);
    }
    control->InputLen(0);
    const auto rest = control->Input();
    EXPECT_EQ(ByteArray(rest.begin(), rest.end()), ByteArray(all.begin() + 3, all.end()));
    EXPECT_TRUE(control->Input().empty());
    EXPECT_FALSE(control->WaitForInput(1));
}

TEST_F(OnATerminal, TakesANewRateWhileItIsOpen) {
    control->PortOpen(true);
    control->Settings("38400,N,8,1");
    EXPECT_EQ(terminal.hostBaudRate(), 38400);
    terminal.close();
    EXPECT_EQ(raisedNumber([&] { control->Settings("9600,N,8,1"); }), 57);
    EXPECT_EQ(control->Settings(), "38400,N,8,1");
    EXPECT_FALSE(control->WaitForInput(1000)) << "a closed port has nothing to wait for";
}

TEST_F(OnATerminal, OneReadTakesAllThatTheSystemHolds) {
    ByteArray sent(10'000);
    std::iota(sent.begin(), sent.end(), std::uint8_t{0});
    control->PortOpen(true);
    terminal.write(sent);
    ASSERT_TRUE(control->WaitForInput(1000));
    const auto got = control->Input();
    EXPECT_EQ(ByteArray(got.begin(), got.end()), sent);
}

TEST_F(OnATerminal, AFloodDoesNotHoldARead) {
    control->PortOpen(true);
    const std::jthread flood([this](const std::stop_token& stop) {
        const ByteArray bytes(4096, 0x55);
        while (!stop.stop_requested())
            terminal.write(bytes);
    });
    for (int i = 0; i < 20; ++i)
        EXPECT_LE(control->Input().size(), 65536U + 1024U);
}

TEST_F(OnATerminal, IsExclusiveUntilItIsClosed) {
    control->PortOpen(true);
    EXPECT_EQ(raisedNumber([&] { control->PortOpen(true); }), 8005);
    EXPECT_EQ(raisedNumber([&] { control->CommPort(5); }), 8000);
    const auto second = makeSystemSerialControl();
    second->CommPort(4);
    EXPECT_EQ(raisedNumber([&] { second->PortOpen(true); }), 8005);
    EXPECT_FALSE(second->PortOpen());
    control->PortOpen(false);
    second->PortOpen(true);
    EXPECT_TRUE(second->PortOpen());
}

/// A child that has done its part and lives on, stopped.
pid_t stoppedChild(const std::function<void()>& part) {
    const pid_t child = fork();
    if (child == 0) {
        signal(SIGHUP, SIG_IGN);  // which a stopped child gets when its parent is gone
        part();
        raise(SIGSTOP);
        pause();
    }
    waitpid(child, nullptr, WUNTRACED);
    return child;
}

void end(pid_t child) {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

TEST_F(OnATerminal, AChildThatSharesThePortDoesNotHoldTheLock) {
    control->PortOpen(true);
    const pid_t child = _Fork();  // without the system's handlers
    if (child == 0) {
        pause();
        _exit(0);
    }
    control->PortOpen(false);
    EXPECT_EQ(raisedNumber([&] { control->PortOpen(true); }), 0);
    end(child);
}

TEST_F(OnATerminal, AForkedChildsEndTakesNothingFromItsParent) {
    const FileDescriptor watching = openFile(device.c_str(), O_RDWR | O_NOCTTY);
    control->PortOpen(true);
    for (const auto makeChild : {&fork, &_Fork}) {  // with and without the system's handlers
        const pid_t child = makeChild();
        if (child == 0) {
            const int raised = raisedNumber([this] { control->Output(ByteArray{1}); });
            control.reset();
            _exit(raised);
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(WEXITSTATUS(status), makeChild == &fork ? 57 : 0);
        const auto second = makeSystemSerialControl();
        second->CommPort(4);
        EXPECT_EQ(raisedNumber([&] { second->PortOpen(true); }), 8005);
        EXPECT_TRUE(isExclusive(watching));
    }
}

/// As in a program of its own: nothing that the test has open is open there.
void closeInherited() {
    close_range(STDERR_FILENO + 1, ~0U, 0);
}

TEST_F(OnATerminal, AKilledHostsChildDoesNotKeepThePort) {
    const pid_t host = stoppedChild([this] {
        setpgid(0, 0);
        closeInherited();
        control->PortOpen(true);
        stoppedChild([] {});
    });
    chmod(device.c_str(), 0666);
    {
        const WithoutRights asNobody;  // who may not look into the host
        EXPECT_EQ(raisedNumber([this] { control->PortOpen(true); }), 8005);
        EXPECT_NE(reason().find("(process " + std::to_string(host) + ")"), std::string::npos) << reason();
    }
    end(host);
    terminal.noteLeavings();
    EXPECT_EQ(raisedNumber([this] { control->PortOpen(true); }), 0) << reason();
    kill(-host, SIGKILL);
}

TEST_F(OnATerminal, AnotherProgramsExclusiveUseCountsAsLongAsItLives) {
    const FileDescriptor watching = openFile(device.c_str(), O_RDWR | O_NOCTTY);
    const pid_t server = stoppedChild([] {});  // which has both ends, as the terminal's server
    const pid_t other = stoppedChild([this] {
        closeInherited();
        ioctl(open(device.c_str(), O_RDWR | O_NOCTTY), TIOCEXCL);
    });
    EXPECT_EQ(raisedNumber([this] { control->PortOpen(true); }), 8005);
    EXPECT_NE(reason().find("(process " + std::to_string(other) + ")"), std::string::npos) << reason();
    end(other);
    // The flag has stayed; the system itself keeps all out with it but root.
    EXPECT_EQ(raisedNumber([this] { control->PortOpen(true); }), WithoutRights::matters() ? 0 : 8005) << reason();
    control->PortOpen(false);
    EXPECT_TRUE(isExclusive(watching)) << "who has not set it does not clear it";
    end(server);
}

TEST_F(OnATerminal, TellsWhoMayOpenIt) {
    [[maybe_unused]] const int given = chown(device.c_str(), static_cast<uid_t>(-1), 65534);  // where root may
    const std::string group = runProgram({"stat", "-c", "%G", device}).output;
    for (const auto& [mode, said] : std::map<mode_t, std::string>{
             {0060, "usermod -aG " + group.substr(0, group.find('\n')) + " USER"}, {0040, "its mode is 0040"}}) {
        chmod(device.c_str(), mode);
        const WithoutRights asNobody;
        EXPECT_EQ(raisedNumber([this] { control->PortOpen(true); }), 70);
        EXPECT_NE(reason().find(WithoutRights::matters() ? said : "chmod u+rw"), std::string::npos) << reason();
    }
}

TEST_F(OnATerminal, NeverTakesTheNumberOfAClosedStandardStream) {
    const int kept = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    control->PortOpen(true);
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1);
    dup2(kept, STDIN_FILENO);
    close(kept);
}

TEST_F(OnATerminal, TellsWhyItDidNotOpen) {
    const TemporaryFolder folder;
    EXPECT_NE(reason().find("COM port 4 is not open"), std::string::npos);
    device = folder / "none";
    EXPECT_EQ(raisedNumber([&] { control->PortOpen(true); }), 8002);
    EXPECT_NE(reason().find(device + " does not exist"), std::string::npos);
    device = folder.write("file", "content");
    EXPECT_EQ(raisedNumber([&] { control->PortOpen(true); }), 8002);
    EXPECT_NE(reason().find("is no serial device"), std::string::npos);
    EXPECT_EQ(contentOf(device), "content");
    device.clear();
    EXPECT_EQ(raisedNumber([&] { control->PortOpen(true); }), 8002);
    control->CommPort(0);
    EXPECT_EQ(raisedNumber([&] { control->PortOpen(true); }), 8002);
    EXPECT_NE(reason().find("COM port 0 is not open: ports count from 1"), std::string::npos);
    control->CommPort(4);
    device = terminal.path();
    control->PortOpen(true);
    control->PortOpen(false);
    EXPECT_EQ(reason(), "COM port 4 is not open") << "earlier reasons are gone";
}

TEST_F(OnATerminal, AVanishedDeviceRaisesAnErrorAndClosesThePort) {
    const auto openFiles = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
    const auto before = openFiles();
    for (int replug = 0; replug < 200; ++replug) {
        const bool reading = replug % 2 == 0;
        control->PortOpen(true);
        terminal.close();
        EXPECT_TRUE(control->WaitForInput(1000)) << "there is something to say";
        EXPECT_EQ(raisedNumber([&] { reading ? void(control->Input()) : control->Output(ByteArray{1}); }), 57);
        EXPECT_FALSE(control->PortOpen());
        EXPECT_NE(reason().find("vanished"), std::string::npos);
        terminal.reopen();
        device = terminal.path();
    }
    EXPECT_EQ(openFiles(), before) << "nothing is left of a device that has vanished";
    control->PortOpen(true);
    EXPECT_TRUE(control->Input().empty());
}

TEST_F(OnATerminal, AWaitIsEndedByACancellationFromAnotherThread) {
    Cancellation cancellation;
    const auto opened = openSerialDevice(device, 9600);
    const auto start = std::chrono::steady_clock::now();
    std::jthread other([&cancellation] { cancellation.cancel(); });  // before the wait or in it
    EXPECT_FALSE(opened->waitForInput(60'000, &cancellation));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

/// A counter that leaps at every reading, so that no test waits for a second.
class LeapingTicks final : public TickCounter {
public:
    std::uint32_t now() override {
        if (atReading)
            atReading();
        return ticks += leap;
    }
    void pause() override {}

    std::function<void()> atReading{};
    std::uint32_t leap = 300;
    std::uint32_t ticks = 0;
};

TEST_F(OnATerminal, ADeviceThatTakesNothingRaisesAnErrorInsteadOfHolding) {
    LeapingTicks ticks;
    services->tickCounter = &ticks;
    control->PortOpen(true);
    const ByteArray chunk(1000, 0x55);
    int raised = 0;
    std::uint32_t began = 0;
    for (int i = 0; i < 1000 && raised == 0; ++i) {
        began = ticks.ticks;
        raised = raisedNumber([&] { control->Output(chunk); });
    }
    EXPECT_EQ(raised, 57);
    EXPECT_GT(ticks.ticks - began, 1000U);
    EXPECT_LE(ticks.ticks - began, 1000U + 3 * 300U);
    EXPECT_FALSE(control->PortOpen());
}

TEST_F(OnATerminal, ASlowDeviceIsGivenEverythingInOrder) {
    ByteArray sent(100'000);
    std::iota(sent.begin(), sent.end(), std::uint8_t{0});
    ByteArray heard;
    LeapingTicks ticks;
    ticks.leap = 100;  // the system may take its time to make room of what has been read
    int readings = 0;
    ticks.atReading = [&] {
        if (++readings % 3 != 0)
            return;
        const ByteArray bytes = terminal.read();
        heard.insert(heard.end(), bytes.begin(), bytes.end());
    };
    services->tickCounter = &ticks;
    control->PortOpen(true);
    control->Output(sent);  // stalled many times, never for a second
    for (int i = 0; i < 1000 && heard.size() < sent.size(); ++i)
        ticks.now();
    EXPECT_EQ(heard, sent);
}

TEST(OnAServedModule, ADeviceThatComesBackIsFoundByTheNextSynchronize) {
    using simulator::SimulatedModule;
    const TemporaryFolder folder;
    simulator::ServedModule module({}, folder / "module");
    ServicesScope services;
    services->portMap = [&](std::int16_t) { return folder / "module"; };
    clsOPaneCommDLL object;
    const auto synchronize = [&object] {
        std::int16_t status = -1;
        object.Synchronize(1, 9600, 3, status);
        return status;
    };
    ASSERT_EQ(synchronize(), 0);
    EXPECT_TRUE(threadLink()->OPaneCmd_Clear(0xFF));
    module.withModule([](SimulatedModule& served) { served.fault({.fault = simulator::Fault::unplug}); });
    EXPECT_EQ(raisedNumber([] { threadLink()->OPaneCmd_Clear(0); }), 57);
    EXPECT_FALSE(threadLink()->IsOpen());
    EXPECT_EQ(raisedNumber(synchronize), 8018);
    module.withModule([](SimulatedModule& served) { served.replug(); });
    std::int16_t status = -1;
    for (int i = 0; i < 1'000'000 && status != 0; ++i) {  // until the device is there again
        std::this_thread::yield();
        raisedNumber([&] { status = synchronize(); });
    }
    EXPECT_EQ(status, 0);
    EXPECT_EQ(module.withModule([](SimulatedModule& served) { return served.state().screen[0][0]; }), 0xFF);
}

}  // namespace
}  // namespace opane::test
