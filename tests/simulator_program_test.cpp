#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <termios.h>

#include "simulator/eeprom_file.h"
#include "simulator/module_state.h"
#include "simulator/pseudo_terminal.h"
#include "support/program.h"
#include "support/row_name.h"

// What opane-sim takes from its command line, from its standard input and from its files.

namespace opane::simulator {
namespace {

using test::contentOf;
using test::holds;
using test::RunningProgram;
using test::TemporaryFolder;

const std::string kProgram = OPANE_SIM_PROGRAM;

struct WrongCase {
    const char* name;
    const char* options;
    const char* message;
};

class WrongUse : public testing::TestWithParam<WrongCase> {};

TEST_P(WrongUse, EndsWithAMessageAndMakesNothing) {
    const TemporaryFolder folder;
    folder.write("short", std::string(1023, 'x'));
    // Accepted by mistake, it would end by the q.
    const auto end = test::runProgram(
        {"sh", "-c", "cd " + folder.path() + "; echo q | " + kProgram + " --link link " + GetParam().options});
    EXPECT_EQ(end.status, 2);
    EXPECT_EQ(end.output, "");
    EXPECT_PRED2(holds, end.errors, GetParam().message);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Options, WrongUse,
    testing::Values(WrongCase{"reading", "--reading light=1", "reading \"light=1\": no such reading"},
                    WrongCase{"key", "--key 010", "--key: \"010\" is no number from 1 to 9"},
                    WrongCase{"fault", "--fault mute", "fault \"mute\": no such fault"},
                    WrongCase{"eeprom_of_another_size", "--user-eeprom new --system-eeprom short",
                              "cannot be kept in short: it holds 1023 bytes; expected exactly 1024"},
                    WrongCase{"one_file_for_two", "--user-eeprom new --system-eeprom ./new", "both name the file"}),
    test::rowName);

/// Tells a module what a host would, and waits for its answer.
std::string told(const std::string& device, const std::string& request, std::size_t count) {
    const FileDescriptor host(::open(device.c_str(), O_RDWR | O_NOCTTY));
    EXPECT_EQ(::write(host.get(), request.data(), request.size()), static_cast<ssize_t>(request.size()));
    constexpr int kPatienceMs = 5000;  // only a failure waits this long
    pollfd source{host.get(), POLLIN, 0};
    std::string answer;
    char byte = 0;
    while (answer.size() < count && ::poll(&source, 1, kPatienceMs) == 1 && ::read(host.get(), &byte, 1) == 1)
        answer += byte;
    answer.resize(count);
    return answer;
}

TEST(Input, PressesKeysFromAFileAndItsEndEndsNothing) {
    const TemporaryFolder folder;
    RunningProgram program({"sh", "-c", "exec " + kProgram + " --key 9 <" + folder.write("keys", "x1\n2")});
    const std::string device = program.line();
    std::string key;
    for (int i = 0; i < 10'000 && key != "\xC3\x07"; ++i)  // until it has read them: third press, no toggle flag
        key = told(device, {'\xAA', 0, 3, 1, 0, 18, '\xEA'}, 9).substr(6, 2);
    EXPECT_EQ(key, "\xC3\x07");
    EXPECT_EQ(program.end(), 0);
}

TEST(Link, IsRefusedWhileAnotherRunHasItAndTakenOverFromAKilledOne) {
    const TemporaryFolder folder;
    const std::string link = folder / "module";
    const std::string program = kProgram + " --link " + link;
    RunningProgram first({"sh", "-c", "exec " + program + " </dev/null"});
    const std::string device = first.line();
    const auto second = test::runProgram({"sh", "-c", "echo q | " + program});  // accepted by mistake, it ends
    EXPECT_EQ(second.status, 2);
    EXPECT_PRED2(holds, second.errors, link + ": another simulated module has it, of process ");
    EXPECT_EQ(std::filesystem::read_symlink(link), device);
    first.signal(SIGKILL);
    first.end();
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(test::runProgram({"sh", "-c", "echo q | " + program}).status, 0);
}

/// The terminal's line mode, after it has been set when there is something to set.
tcflag_t lineMode(const std::string& terminal, tcflag_t added = 0) {
    const FileDescriptor slave(::open(terminal.c_str(), O_RDWR | O_NOCTTY));
    termios mode{};
    EXPECT_EQ(::tcgetattr(slave.get(), &mode), 0);
    mode.c_lflag |= added;
    EXPECT_EQ(::tcsetattr(slave.get(), TCSANOW, &mode), 0);
    return mode.c_lflag & (ICANON | ECHO | ISIG);
}

TEST(Input, OfATerminalIsTakenAsItIsTypedAndTheTerminalPutBack) {
    PseudoTerminal terminal;
    constexpr tcflag_t kUsual = ICANON | ECHO | ISIG;
    lineMode(terminal.path(), kUsual);
    for (const std::string typed : {"5q", "5"}) {
        RunningProgram program({"sh", "-c", "exec " + kProgram + " <" + terminal.path() + " 2>&1"});
        program.line();
        EXPECT_EQ(lineMode(terminal.path()), tcflag_t{ISIG}) << "Ctrl-C stays";
        terminal.write(std::vector<std::uint8_t>(typed.begin(), typed.end()));
        EXPECT_EQ(program.line(), "key 5 pressed");
        if (typed == "5q") {
            EXPECT_THROW(program.line(), std::runtime_error) << "it has ended by itself";
        }
        EXPECT_EQ(program.end(), 0);
        EXPECT_EQ(lineMode(terminal.path()), kUsual);
    }
}

TEST(Eeproms, AreKeptInTheirFilesFromRunToRun) {
    const TemporaryFolder folder;
    const std::string user = folder / "user.bin";
    const std::string system = folder.write("system.bin", std::string(1023, 'x') + 'y');
    const std::vector<std::string> words{kProgram, "--user-eeprom", user, "--system-eeprom", system};
    std::string expected(512, '\xFF');
    {
        RunningProgram program(words);
        const std::string device = program.line();
        EXPECT_EQ(contentOf(user), expected) << "made as erased";
        // 1 + 3 + 255 + 1 + 13 + 97 = 370; 512 - 370 = 142
        told(device, {'\xAA', 1, 3, '\xFF', 1, 13, 'a', '\x8E'}, 7);
        expected.back() = 'a';
        for (int i = 0; i < 1'000'000 && contentOf(user) != expected; ++i) {  // soon, without its end
        }
        EXPECT_EQ(contentOf(user), expected);
        told(device, {'\xAA', 1, 3, 0, 0, 13, 'b', '\x8D'}, 7);  // 1 + 3 + 13 + 98 = 115
        expected.front() = 'b';
        EXPECT_EQ(program.end(), 0);
        EXPECT_EQ(contentOf(user), expected) << "and at its end";
    }
    RunningProgram program(words);
    // From 511 on: 1 + 3 + 255 + 1 + 12 + 1 = 273; from 1023 on: 1 + 3 + 255 + 3 + 32 + 1 = 295
    const std::string device = program.line();
    EXPECT_EQ(told(device, {'\xAA', 1, 3, '\xFF', 1, 12, 1, '\xEF'}, 8).substr(6, 1), "a");
    EXPECT_EQ(told(device, {'\xAA', 1, 3, '\xFF', 3, 32, 1, '\xD9'}, 8).substr(6, 1), "y");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 2);
}

TEST(EepromFile, ThatCannotBeWrittenKeepsWhatItHeld) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "sub");
    EepromFile file("the User EEPROM", folder / "sub/user.bin", kUserEepromSize);
    std::vector<std::uint8_t> contents = file.contents();
    file.keep(contents);
    std::filesystem::rename(folder / "sub", folder / "moved");
    contents[0] = 1;
    EXPECT_THROW(file.keep(contents), std::runtime_error);
    EXPECT_EQ(contentOf(folder / "moved/user.bin"), std::string(512, '\xFF'));
    std::filesystem::rename(folder / "moved", folder / "sub");
    file.keep(contents);
    EXPECT_EQ(contentOf(folder / "sub/user.bin"), '\x01' + std::string(511, '\xFF'));
}

}  // namespace
}  // namespace opane::simulator
