#include <gtest/gtest.h>

#include "support/program.h"

// The programs as their users meet them, on a real pseudo-terminal.

namespace opane::test {
namespace {

using Words = std::vector<std::string>;

ProgramEnd opane(Words words) {
    words.insert(words.begin(), OPANE_PROGRAM);
    return runProgram(words);
}

/// A module served by the simulator's program under a name of its own.
class Programs : public testing::Test {
protected:
    Words simulator(const Words& options = {}) {
        Words words{OPANE_SIM_PROGRAM, "--link", device};
        words.insert(words.end(), options.begin(), options.end());
        return words;
    }

    TemporaryFolder folder;
    std::string device = folder / "module";
};

TEST_F(Programs, ATextIsShownAndSaysNothing) {
    RunningProgram module(simulator({"--snapshot", folder / "screen.png"}));
    EXPECT_EQ(module.line().find("/dev/pts/"), 0U);
    const ProgramEnd end = opane({"--device", device, "text", "Température 21,5 °C", "--line", "2"});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.output + end.errors, "");
    EXPECT_EQ(module.end(), 0);
    EXPECT_EQ(contentOf(folder / "screen.png").substr(1, 3), "PNG");
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(device))) << "the link goes with it";
}

TEST_F(Programs, EveryCommandIsAnsweredAndTraced) {
    RunningProgram module(simulator());
    module.line();
    for (const Words& command : std::vector<Words>{{"line", "AA", "--line", "7"},
                                                   {"block", "3C4299A5 81A5423C", "--line", "7", "--column", "14"},
                                                   {"square", "FF", "--line", "6", "--column", "13"},
                                                   {"frame", "on"},
                                                   {"clear", "0x55"}}) {
        Words words{"--trace", "--json", "--device", device};
        words.insert(words.end(), command.begin(), command.end());
        const ProgramEnd end = opane(words);
        EXPECT_EQ(end.status, 0) << command[0];
        EXPECT_EQ(end.output, "{\"command\":\"" + command[0] + "\",\"exit\":0,\"error\":null,\"status\":0}\n");
        const auto send = end.errors.find("SEND : Mark:AA");
        EXPECT_LT(end.errors.find("handshake with node 3: sent A8, received 18"), end.errors.find("Cmd Type : "));
        EXPECT_LT(end.errors.find("Cmd Type : "), send);
        EXPECT_LT(send, end.errors.find("RCV : Mark:AA Leng:0 Node:3 Aux1:0 Aux2:0"));
    }
}

TEST_F(Programs, LostOutputIsAnErrorAndALostTraceIsNot) {
    RunningProgram module(simulator());
    module.line();
    const std::string command = commandLine({OPANE_PROGRAM, "--trace", "--json", "--device", device, "clear"});
    EXPECT_EQ(runProgram({"sh", "-c", command + " 2>&-"}).status, 0);
    EXPECT_EQ(runProgram({"sh", "-c", command + " >&-"}).status, 3) << "its output is lost";
    EXPECT_EQ(runProgram({"sh", "-c", command + " >/dev/full"}).status, 3);
    const std::string endless = command + " --repeat 1000000000 2>&1 >" + (folder / "out");
    runProgram({"sh", "-c", "(" + endless + "; echo $? >" + (folder / "status") + ") | head -n 1"});
    EXPECT_EQ(contentOf(folder / "status"), "1\n") << "a trace that nobody reads any more ends it";
    EXPECT_NE(contentOf(folder / "out").find("nobody reads the trace"), std::string::npos);
}

TEST_F(Programs, RepeatEndsAtTheFirstFailure) {
    RunningProgram module(simulator({"--fault", "aux@2xall"}));
    module.line();
    const ProgramEnd end = opane({"--device", device, "--repeat", "1000000000", "clear"});
    EXPECT_EQ(end.status, 1);
    EXPECT_NE(end.errors.find("ended at run 3 of 1000000000"), std::string::npos) << end.errors;
}

TEST_F(Programs, AFailureIsAnObjectToo) {
    const ProgramEnd late = opane({"--json", "--timeout", "0.1", "--wait", "100", "--device", device, "clear"});
    EXPECT_EQ(late.output.find("{\"command\":\"clear\",\"exit\":1,\"error\":\"its time of 0.1 s (--timeout) was over"),
              0U);
    const ProgramEnd end = opane({"--json", "--device", device, "clear"});
    EXPECT_EQ(end.status, 3);
    EXPECT_EQ(end.output.find(
                  "{\"command\":\"clear\",\"exit\":3,\"error\":\"error 8018: COM port 1 is not open: device " + device),
              0U)
        << end.output;
}

TEST_F(Programs, RepeatRunsACommandOnOneLink) {
    RunningProgram module(simulator());
    module.line();
    const ProgramEnd end = opane({"--trace", "--repeat", "3", "--device", device, "clear"});
    EXPECT_EQ(end.status, 0);
    std::size_t sends = 0;
    for (auto at = end.errors.find("SEND"); at != std::string::npos; at = end.errors.find("SEND", at + 1))
        ++sends;
    EXPECT_EQ(sends, 3U);
}

TEST_F(Programs, ABusIsSpokenToWithItsEcho) {
    RunningProgram module(simulator({"--bus", "RS485", "--node", "1", "--baud", "19200"}));
    module.line();
    EXPECT_EQ(opane({"--device", device, "--bus", "RS485", "--node", "1", "--baud", "19200", "clear"}).status, 0);
    EXPECT_EQ(opane({"--device", device, "--bus", "RS232", "--node", "1", "--baud", "19200", "clear"}).status, 1);
}

TEST_F(Programs, TheLogKeepsWhatItsLevelAsksFor) {
    RunningProgram module(simulator());
    module.line();
    EXPECT_EQ(opane({"--device", device, "--log-level", "2", "--log-folder", folder.path(), "--tester", "BANC1",
                     "--trace", "clear"})
                  .status,
              0);
    std::string log;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        if (entry.path().extension() == ".LOG" && entry.path().filename().string().starts_with("BANC1_"))
            log = contentOf(entry.path());
    }
    EXPECT_NE(log.find("Cmd Type : 6"), std::string::npos);
    EXPECT_EQ(log.find("SEND"), std::string::npos) << "level 3 is for the trace alone";
}

TEST_F(Programs, ARefusingAndAMissingModuleGiveStatus1) {
    RunningProgram module(simulator({"--fault", "aux:1xall"}));
    module.line();
    const ProgramEnd refused = opane({"--device", device, "clear"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.errors.find("refused \"clear\""), std::string::npos);
    const ProgramEnd missing = opane({"--device", device, "--node", "2", "clear"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.errors.find("no module of node 2 answered on " + device), std::string::npos);
}

TEST_F(Programs, APortIsForOneHostOnly) {
    RunningProgram module(simulator());
    module.line();
    // A host that repeats its command until it is ended holds the port; its first line says that it has it.
    const std::string command =
        commandLine({OPANE_PROGRAM, "--trace", "--repeat", "1000000", "--device", device, "clear"});
    RunningProgram host({"sh", "-c", "exec " + command + " 2>&1"});
    EXPECT_NE(host.line().find("received 18"), std::string::npos);
    const ProgramEnd second = opane({"--device", device, "clear"});
    EXPECT_EQ(second.status, 3);
    EXPECT_NE(second.errors.find("error 8018"), std::string::npos);
    EXPECT_NE(second.errors.find("in use"), std::string::npos);
    host.signal(SIGKILL);
    host.end();
    const ProgramEnd third = opane({"--device", device, "--wait", "10", "clear"});  // until the killed one is gone
    EXPECT_EQ(third.status, 0) << third.errors;
}

struct BadInput {
    const char* name;
    Words words;
    int status;
    const char* message;
};

class OpaneBadInput : public Programs, public testing::WithParamInterface<BadInput> {};

TEST_P(OpaneBadInput, IsRefusedWithAMessageAndNothingIsSent) {
    const std::string latin1 = contentOf(OPANE_DEFAULT_GENERATOR);
    folder.write("text.gen", "this is no generator");
    folder.write("empty.gen", "");
    folder.write("short.gen", latin1.substr(0, 2000));
    std::string wide = latin1;
    wide.replace(0, 2, "\x09", 2);
    folder.write("tag.gen", wide);
    RunningProgram module(simulator({"--screen"}));
    const std::string path = module.line();

    Words words{"--device", device};
    for (const std::string& word : GetParam().words)
        words.push_back(word.ends_with(".gen") ? folder / word : word);
    const ProgramEnd end = opane(words);
    EXPECT_EQ(end.status, GetParam().status);
    EXPECT_NE(end.errors.find(GetParam().message), std::string::npos) << end.errors;
    EXPECT_EQ(end.output, "");
}

INSTANTIATE_TEST_SUITE_P(
    Inputs, OpaneBadInput,
    testing::Values(
        BadInput{"missing_generator", {"text", "A", "--line", "0", "--generator", "none.gen"}, 2, "does not exist"},
        BadInput{"folder_as_generator", {"text", "A", "--line", "0", "--generator", "/tmp"}, 2, "is a folder"},
        BadInput{"text_as_generator",
                 {"text", "A", "--line", "0", "--generator", "text.gen"},
                 2,
                 "is no character generator"},
        BadInput{"empty_generator", {"text", "A", "--line", "0", "--generator", "empty.gen"}, 2, "holds no character"},
        BadInput{"unknown_tag", {"text", "A", "--line", "0", "--generator", "tag.gen"}, 2, "type tag 9 at byte 0"},
        BadInput{"code_that_a_short_file_lacks", {"text", "z", "--line", "0", "--generator", "short.gen"}, 2, "\"z\""},
        BadInput{"too_long", {"text", "ABCDEFGHIJKLMNOPQRSTU", "--line", "0"}, 2, "21 characters"},
        BadInput{"absent_character", {"text", "A日", "--line", "0"}, 2, "character 2 of the text, \"日\""},
        BadInput{"no_utf8", {"text", "A\xFF", "--line", "0"}, 2, "no valid UTF-8"},
        BadInput{"empty_text", {"text", "", "--line", "0"}, 2, "the text is empty"},
        BadInput{"line_8", {"text", "A", "--line", "8"}, 2, "--line: Value 8 not in range 0 to 7"},
        BadInput{"negative_column", {"text", "A", "--line", "0", "--column", "-1"}, 2, "--column: Value -1"},
        BadInput{"left_of_the_screen", {"text", "A", "--line", "0", "--pre-gap", "-1"}, 2, "pixel column -1"},
        BadInput{"pattern_256", {"clear", "256"}, 2, "\"256\"; expected a byte"},
        BadInput{"pattern_word", {"frame", "full"}, 2, "\"full\"; expected a byte"},
        BadInput{"odd_digits", {"block", "123", "--line", "0"}, 2, "3 hexadecimal digits"},
        BadInput{"too_few_bytes", {"line", "1122", "--line", "0"}, 2, "expected 120"},
        BadInput{"no_hexadecimal", {"square", "XY", "--line", "0"}, 2, "\"X\""},
        BadInput{"baud_12345", {"--baud", "12345", "clear"}, 2, "--baud: 12345"},
        BadInput{"log_folder",
                 {"--log-folder", "/dev/null/log", "--log-level", "2", "clear"},
                 2,
                 "\"/dev/null\" cannot be made"},
        BadInput{"unknown_command", {"show"}, 2, "show"}, BadInput{"no_command", {}, 2, "no command"},
        BadInput{"missing_device", {"--device", "/nowhere/tty", "clear"}, 3, "/nowhere/tty does not exist"},
        BadInput{"no_serial_device", {"--device", "/dev/null", "clear"}, 3, "is no serial device"},
        BadInput{"empty_device", {"--device", "", "clear"}, 2, "--device: is empty"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(EveryProgram, NamesAMistypedOptionAndNotItsValueAndTellsItsVersion) {
    for (const std::string program : {OPANE_SIM_PROGRAM, OPANE_GENERATOR_PROGRAM}) {
        const std::string name = std::filesystem::path(program).filename().string();
        const ProgramEnd mistyped = runProgram({program, "--verson", "3"});
        EXPECT_EQ(mistyped.status, 2);
        EXPECT_EQ(mistyped.errors.find(name + ": unknown option --verson; is --version meant?\n"), 0U)
            << mistyped.errors;
        const ProgramEnd version = runProgram({program, "--version"});
        EXPECT_EQ(version.status, 0);
        EXPECT_EQ(version.output, name + " 1.0.0\n");
        for (const std::string asked : {" --help", " --version"})
            EXPECT_EQ(runProgram({"sh", "-c", program + asked + " >/dev/full"}).status, 3) << name << asked;
    }
}

TEST(Demo, DrawsTheModulesScreen) {
    const TemporaryFolder folder;
    const ProgramEnd end = opane({"demo", "--output", folder / "screen.png"});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(std::count(end.output.begin(), end.output.end(), '\n'), 32 + 1);
    // Pixel rows 16 and 17 of "Hello, world" from pixel column 20: the tips of H, of both l and of h's neighbour d.
    EXPECT_NE(end.output.find("█▄▄█   ▄▄     █     █    ▄▄"), std::string::npos);
    EXPECT_EQ(contentOf(folder / "screen.png").substr(1, 3), "PNG");
    EXPECT_EQ(opane({"demo", "--output", folder / "none/screen.png"}).status, 2);
    folder.write("screen.png", "somebody's own");
    EXPECT_EQ(runProgram({"sh", "-c", "cd " + folder.path() + " && " OPANE_PROGRAM " demo"}).status, 0);
    EXPECT_EQ(contentOf(folder / "screen.png"), "somebody's own");
}

TEST_F(Programs, TheExampleOfTheReadmeShowsItsText) {
    EXPECT_NE(contentOf(OPANE_SOURCE "/README.md").find(contentOf(OPANE_SOURCE "/examples/hello_text.cpp")),
              std::string::npos)
        << "the README shows another program";
    RunningProgram module(simulator());
    module.line();
    EXPECT_EQ(runProgram({"env", "OPANE_COM1=" + device, HELLO_TEXT_PROGRAM, OPANE_DEFAULT_GENERATOR}).status, 0);
    EXPECT_EQ(runProgram({"env", "OPANE_COM1=/nowhere", HELLO_TEXT_PROGRAM, OPANE_DEFAULT_GENERATOR}).status, 3);
}

}  // namespace
}  // namespace opane::test
