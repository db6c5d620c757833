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

#include <functional>
#include <numeric>
#include <thread>

#include "platform/cancellation.h"
#include "platform/posix/file_descriptor.h"
#include "platform/serial_device.h"
#include "platform/services.h"
#include "shared/frame_byte.h"
#include "simulator/pseudo_terminal.h"
#include "support/program.h"
#include "support/raised_number.h"
#include "support/without_rights.h"

namespace opane::test {
namespace {

TEST(Settings, AreTakenOrRefused) {
    const auto control = makeSystemSerialControl();
    for (const char* const refused : {"12345,N,8,1", "0,N,8,1", "-9600,N,8,1", "99999999999,N,8,1", "9600,E,8,1",
                                      "9600,N,0,0", "9600,N,8,2", "9600", "", " 9600,N,8,1", "9600,N,8,1,1"}) {
        EXPECT_EQ(raisedNumber([&] { control->Settings(refused); }), 380) << refused;
        EXPECT_EQ(control->Settings(), "9600,N,8,1");
    }
    for (const char* const taken : {"1200,N,8,1", "57600,n,8,1", "115200,N,8,1", "9600,N,8,1"}) {
        control->Settings(taken);
        EXPECT_EQ(control->Settings(), taken);
    }
}

TEST(Ports, AreTheSystemsOwnUnlessTheEnvironmentNamesThem) {
    setenv("OPANE_COM77", "/nowhere/line", 1);
    const bool hasOthersRights = getauxval(AT_SECURE) != 0;
    EXPECT_EQ(systemDevicePath(77), hasOthersRights ? "/dev/ttyS76" : "/nowhere/line");
    unsetenv("OPANE_COM77");
    EXPECT_EQ(systemDevicePath(77), "/dev/ttyS76");
    puts(hasOthersRights ? "with the rights of others" : "");
}

TEST(Ports, OfAProgramWithTheRightsOfOthersAreTheSystemsOwn) {
    const TemporaryFolder folder;
    const std::string copy = folder / "set-group-id";
    std::filesystem::copy_file("/proc/self/exe", copy);
    struct statvfs disk {};
    statvfs(copy.c_str(), &disk);
    const bool isRaised = WithoutRights::matters() && chown(copy.c_str(), 0, WithoutRights::kNobody) == 0 &&
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
        control->CommPort(4);
    }

    /// @return the number of the error that opening raises; 0: it is open
    int open() const { return opened(*control); }
    int openAnother() const {
        const auto another = makeSystemSerialControl();
        another->CommPort(4);
        return opened(*another);
    }
    static int opened(SerialControl& port) {
        return raisedNumber([&] { port.PortOpen(true); });
    }

    /// Why it is not open, behind the number of that error.
    std::string reason() const {
        return raisedText([this] { control->Input(); });
    }

    /// A descriptor of the device beside the control's.
    FileDescriptor watch() const { return openFile(device.c_str(), O_RDWR | O_NOCTTY); }
    static bool isExclusive(const FileDescriptor& terminal) {
        int exclusive = 0;
        ioctl(terminal.get(), TIOCGEXCL, &exclusive);
        return exclusive != 0;
    }

    simulator::PseudoTerminal terminal;
    std::string device = terminal.path();
    ServicesScope services;
    std::unique_ptr<SerialControl> control = makeSystemSerialControl();
};

ByteArray counted(std::size_t count) {
    ByteArray bytes(count);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    return bytes;
}

TEST_F(OnATerminal, CarriesEveryByteUnchangedBothWays) {
    const FileDescriptor watching = watch();
    termios mode{};  // as a login would leave a line: echoing, with characters that are translated or end a program
    tcgetattr(watching.get(), &mode);
    mode.c_iflag |= BRKINT | ICRNL | IXON | IXOFF | ISTRIP | INPCK;
    mode.c_oflag |= OPOST | ONLCR;
    mode.c_lflag |= ICANON | ECHO | ISIG | IEXTEN;
    mode.c_cflag = (mode.c_cflag | PARENB | CSTOPB | HUPCL) & ~static_cast<tcflag_t>(CLOCAL | CREAD);
    ASSERT_EQ(tcsetattr(watching.get(), TCSANOW, &mode), 0);
    control->Settings("19200,N,8,1");
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(terminal.hostBaudRate(), 19200);
    control->Settings("38400,N,8,1");
    EXPECT_EQ(terminal.hostBaudRate(), 38400);
    tcgetattr(watching.get(), &mode);
    EXPECT_EQ(mode.c_cflag & (CSIZE | PARENB | CSTOPB | CRTSCTS | HUPCL | CLOCAL | CREAD), CS8 | CLOCAL | CREAD);
    EXPECT_EQ(mode.c_iflag & (IXON | IXOFF | IXANY | INPCK | ISTRIP), 0U);
    control->Output(counted(256));
    EXPECT_EQ(terminal.read(), counted(256));

    const ByteArray sent = counted(10'000);
    terminal.write(sent);
    ASSERT_TRUE(control->WaitForInput(1000));
    const auto taken = [this] {
        const auto got = control->Input();
        return ByteArray(got.begin(), got.end());
    };
    control->InputLen(1);
    EXPECT_EQ(taken(), ByteArray{0});
    EXPECT_EQ(taken(), ByteArray{1});
    control->InputLen(0);
    EXPECT_EQ(taken(), ByteArray(sent.begin() + 2, sent.end()));
    EXPECT_EQ(taken(), ByteArray{});
    EXPECT_FALSE(control->WaitForInput(1));
}

TEST_F(OnATerminal, IsExclusiveUntilItIsClosed) {
    const FileDescriptor watching = watch();
    const FileDescriptor input(dup(STDIN_FILENO));
    close(STDIN_FILENO);
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1) << "never the number of a closed standard stream";
    dup2(input.get(), STDIN_FILENO);
    EXPECT_EQ(open(), 8005);
    EXPECT_EQ(raisedNumber([&] { control->CommPort(5); }), 8000);
    EXPECT_EQ(openAnother(), 8005);
    EXPECT_TRUE(isExclusive(watching));
    control->PortOpen(false);
    EXPECT_FALSE(isExclusive(watching));
    EXPECT_EQ(openAnother(), 0);
}

/// A child that has done its part and lives on, stopped.
pid_t stoppedChild(const std::function<void()>& part, pid_t (*makeChild)() = &fork) {
    const pid_t child = makeChild();
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

TEST_F(OnATerminal, AForkedChildNeitherHoldsThePortNorTakesItFromItsParent) {
    const FileDescriptor watching = watch();
    ASSERT_EQ(open(), 0);
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
        EXPECT_EQ(openAnother(), 8005);
        EXPECT_TRUE(isExclusive(watching));
    }
    const pid_t child = stoppedChild([] {}, &_Fork);
    control->PortOpen(false);
    EXPECT_EQ(open(), 0);
    end(child);
}

TEST_F(OnATerminal, AKilledHostsChildDoesNotKeepThePort) {
    const pid_t host = stoppedChild([this] {
        setpgid(0, 0);
        close_range(STDERR_FILENO + 1, ~0U, 0);  // as in a program of its own
        control->PortOpen(true);
        stoppedChild([] {});
    });
    chmod(device.c_str(), 0666);
    {
        const WithoutRights asNobody;  // who may not look into the host
        EXPECT_EQ(open(), 8005);
        EXPECT_PRED_FORMAT2(testing::IsSubstring, "(process " + std::to_string(host) + ")", reason());
    }
    end(host);
    terminal.noteLeavings();
    EXPECT_EQ(open(), 0);
    kill(-host, SIGKILL);
}

TEST_F(OnATerminal, AnotherProgramsExclusiveUseCountsAsLongAsItLives) {
    const FileDescriptor watching = watch();
    const pid_t server = stoppedChild([] {});  // which has both ends, as the terminal's server
    const pid_t other = stoppedChild([this] {
        close_range(STDERR_FILENO + 1, ~0U, 0);
        ioctl(::open(device.c_str(), O_RDWR | O_NOCTTY), TIOCEXCL);
    });
    EXPECT_EQ(open(), 8005);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "(process " + std::to_string(other) + ")", reason());
    end(other);
    // The flag has stayed; the system itself keeps all out with it but root.
    EXPECT_EQ(open(), WithoutRights::matters() ? 0 : 8005);
    control->PortOpen(false);
    EXPECT_TRUE(isExclusive(watching)) << "who has not set it does not clear it";
    end(server);
}

TEST_F(OnATerminal, TellsWhoMayOpenIt) {
    [[maybe_unused]] const int given = chown(device.c_str(), static_cast<uid_t>(-1), 65534);  // where root may
    const std::string group = runProgram({"stat", "-c", "%G", device}).output;
    const std::string join = "usermod -aG " + group.substr(0, group.find('\n')) + " USER";
    for (const auto& [mode, said] : {std::pair<mode_t, std::string>{0060, join}, {0040, "its mode is 0040"}}) {
        chmod(device.c_str(), mode);
        const WithoutRights asNobody;
        EXPECT_EQ(open(), 70);
        EXPECT_PRED_FORMAT2(testing::IsSubstring, WithoutRights::matters() ? said : "chmod u+rw", reason());
    }
}

TEST_F(OnATerminal, TellsWhyItDidNotOpen) {
    const TemporaryFolder folder;
    const std::string file = folder.write("file", "content");
    for (const auto& [path, said] : {std::pair{folder / "none", folder / "none does not exist"},
                                     {file, file + " is no serial device"},
                                     {"", "no device belongs to it"}}) {
        device = path;
        EXPECT_EQ(open(), 8002);
        EXPECT_PRED_FORMAT2(testing::IsSubstring, said, reason());
    }
    EXPECT_EQ(contentOf(file), "content");
    control->CommPort(0);
    EXPECT_EQ(open(), 8002);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "COM port 0 is not open: ports count from 1", reason());
    control->CommPort(4);
    device = terminal.path();
    EXPECT_EQ(open(), 0);
    control->PortOpen(false);
    EXPECT_EQ(reason(), "8018 COM port 4 is not open") << "earlier reasons are gone";
}

TEST_F(OnATerminal, AVanishedDeviceRaisesAnErrorAndClosesThePort) {
    const auto openFiles = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
    const auto before = openFiles();
    const std::function<void()> uses[]{[this] { control->Input(); }, [this] { control->Output(ByteArray{1}); },
                                       [this] { control->Settings("38400,N,8,1"); }};
    for (int replug = 0; replug < 60; ++replug) {
        EXPECT_EQ(open(), 0);
        terminal.close();
        EXPECT_TRUE(control->WaitForInput(1000)) << "there is something to say";
        EXPECT_EQ(raisedNumber(uses[replug % 3]), 57);
        EXPECT_FALSE(control->WaitForInput(1000)) << "a closed port has nothing to wait for";
        EXPECT_PRED_FORMAT2(testing::IsSubstring, "8018 COM port 4 is not open: device " + device + " vanished",
                            reason());
        terminal.reopen();
        device = terminal.path();
    }
    EXPECT_EQ(openFiles(), before);
    EXPECT_EQ(control->Settings(), "9600,N,8,1");
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
        atReading();
        return ticks += 100;  // the system may take its time to make room of what has been read
    }
    void pause() override {}

    std::function<void()> atReading;
    std::uint32_t ticks = 0;
};

TEST_F(OnATerminal, ASlowDeviceIsGivenEverythingInOrderAndOneThatTakesNothingRaisesAnError) {
    const ByteArray sent = counted(100'000);
    ByteArray heard;
    LeapingTicks ticks;
    int readings = 0;
    ticks.atReading = [&] {
        if (++readings % 3 != 0 || heard.size() == sent.size())
            return;
        const ByteArray bytes = terminal.read();
        heard.insert(heard.end(), bytes.begin(), bytes.end());
    };
    services->tickCounter = &ticks;
    ASSERT_EQ(open(), 0);
    control->Output(sent);  // stalled many times, never for a second
    for (int i = 0; i < 1000 && heard.size() < sent.size(); ++i)
        ticks.now();
    EXPECT_EQ(heard, sent);
    int raised = 0;
    std::uint32_t began = 0;
    for (int i = 0; i < 1000 && raised == 0; ++i) {
        began = ticks.ticks;
        raised = raisedNumber([&] { control->Output(ByteArray(1000, 0x55)); });
    }
    EXPECT_EQ(raised, 57);
    EXPECT_NEAR(ticks.ticks - began, 1500, 490);  // a second, and what it has still taken
    EXPECT_FALSE(control->PortOpen());
}

}  // namespace
}  // namespace opane::test
