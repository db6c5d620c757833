#include "support/opane_program.h"

// The programs as their users meet them: what they say and how they end, whatever the command.

namespace opane::test {
namespace {

TEST_F(OpaneCommands, EveryStepIsTraced) {
    const ProgramEnd end = run("--trace --json clear");
    EXPECT_EQ(end.output, "{\"command\":\"clear\",\"exit\":0,\"error\":null,\"status\":0}\n");
    std::size_t before = 0;
    for (const char* step : {"handshake with node 3: sent A8, received 18", "Cmd Type : ", "SEND : Mark:AA",
                             "RCV : Mark:AA Leng:0 Node:3 Aux1:0 Aux2:0"}) {
        const std::size_t at = end.errors.find(step, before);
        EXPECT_NE(at, std::string::npos) << step << " in\n" << end.errors;
        before = at;
    }
}

TEST_F(OpaneCommands, LostOutputIsAnErrorAndALostTraceIsNot) {
    const std::string command = commandLine(opaneOn(module.devicePath(), {"--trace", "--json", "clear"}));
    EXPECT_EQ(runProgram({"sh", "-c", command + " 2>&-"}).status, 0);
    for (const char* lost : {" >&-", " >/dev/full"})
        EXPECT_EQ(runProgram({"sh", "-c", command + lost}).status, 3);
    const std::string endless = command + " --repeat 1000000000 2>&1 >" + (folder / "out");
    runProgram({"sh", "-c", "(" + endless + "; echo $? >" + (folder / "status") + ") | head -n 1"});
    EXPECT_EQ(contentOf(folder / "status"), "1\n");
    EXPECT_PRED2(holds, contentOf(folder / "out"), "nobody reads the trace");
}

TEST_F(OpaneCommands, RepeatRunsOnOneLinkAndEndsAtTheFirstFailure) {
    fault({Fault::aux, simulator::kForEver, 2});
    const ProgramEnd end = run("--repeat 1000000000 clear");
    EXPECT_EQ(end.status, 1);
    EXPECT_PRED2(holds, end.errors, "refused \"clear\"");
    EXPECT_PRED2(holds, end.errors, "ended at run 3 of 1000000000");
    EXPECT_EQ(requests(), 2U + 5U);
}

TEST_F(OpaneCommands, AFailureIsAnObjectToo) {
    const std::string missing = folder / "module";
    const ProgramEnd late = runProgram(opaneOn(missing, wordsOf("--json --timeout 0.1 --wait 100 clear")));
    EXPECT_PRED2(holds, late.output,
                 "{\"command\":\"clear\",\"exit\":1,\"error\":\"its time of 0.1 s (--timeout) was over");
    const ProgramEnd end = runProgram(opaneOn(missing, wordsOf("--json clear")));
    EXPECT_EQ(end.status, 3);
    EXPECT_PRED2(holds, end.output,
                 "{\"command\":\"clear\",\"exit\":3,\"error\":\"error 8018: COM port 1 is not open: device " + missing);
}

TEST_F(OpaneCommands, ABusIsSpokenToWithItsEcho) {
    simulator::ServedModule onBus({.node = 1, .bus = simulator::Bus::rs485, .baudRate = 19200});
    const auto clear = [&onBus](const char* bus) {
        return runProgram(opaneOn(onBus.devicePath(), {"--node", "1", "--baud", "19200", "--bus", bus, "clear"}));
    };
    EXPECT_EQ(clear("RS485").status, 0);
    const ProgramEnd end = clear("RS232");
    EXPECT_EQ(end.status, 1);
    EXPECT_PRED2(holds, end.errors, "no module of node 1 answered on " + onBus.devicePath());
}

TEST_F(OpaneCommands, TheLogKeepsWhatItsLevelAsksFor) {
    EXPECT_EQ(
        opane({"--log-level", "2", "--log-folder", folder.path(), "--tester", "BANC1", "--trace", "clear"}).status, 0);
    const std::filesystem::directory_iterator entry(folder.path());
    ASSERT_NE(entry, std::filesystem::directory_iterator());
    EXPECT_TRUE(entry->path().filename().string().starts_with("BANC1_"));
    EXPECT_PRED2(holds, contentOf(entry->path()), "Cmd Type : 6");
    EXPECT_FALSE(holds(contentOf(entry->path()), "SEND")) << "level 3 is for the trace alone";
}

TEST_F(OpaneCommands, APortIsForOneHostOnly) {
    // A host that repeats its command until it is ended holds the port; its first line says that it has it.
    const Words words = opaneOn(module.devicePath(), wordsOf("--trace --repeat 1000000 clear"));
    RunningProgram host({"sh", "-c", "exec " + commandLine(words) + " 2>&1"});
    EXPECT_PRED2(holds, host.line(), "received 18");
    const ProgramEnd second = run("clear");
    EXPECT_EQ(second.status, 3);
    EXPECT_PRED2(holds, second.errors, "in use");
    host.signal(SIGKILL);
    host.end();
    const ProgramEnd third = run("--wait 10 clear");  // until the killed one is gone
    EXPECT_EQ(third.status, 0) << third.errors;
}

TEST_F(OpaneCommands, TheDemoDrawsTheModulesScreen) {
    const std::string demo = "cd " + folder.path() + " && " OPANE_PROGRAM " demo";
    folder.write("screen.png", "somebody's own");
    // Pixel rows 16 and 17 of "Hello, world" from pixel column 20: the tips of H, of both l and of h's neighbour d.
    EXPECT_PRED2(holds, runProgram({"sh", "-c", demo}).output, "█▄▄█   ▄▄     █     █    ▄▄");
    EXPECT_EQ(contentOf(folder / "screen.png"), "somebody's own");
    EXPECT_EQ(runProgram({"sh", "-c", demo + " --output screen.png"}).status, 0);
    EXPECT_EQ(contentOf(folder / "screen.png").substr(1, 3), "PNG");
}

TEST(EveryProgram, NamesAMistypedOptionAndNotItsValueAndTellsItsVersion) {
    for (const std::string program : {OPANE_SIM_PROGRAM, OPANE_GENERATOR_PROGRAM}) {
        const std::string name = std::filesystem::path(program).filename().string();
        const ProgramEnd mistyped = runProgram({program, "--verson", "3"});
        EXPECT_EQ(mistyped.status, 2);
        EXPECT_PRED2(holds, mistyped.errors, name + ": unknown option --verson; is --version meant?\n");
        EXPECT_EQ(runProgram({program, "--version"}).output, name + " 1.0.0\n");
        for (const std::string asked : {" --help", " --version"})
            EXPECT_EQ(runProgram({"sh", "-c", program + asked + " >/dev/full"}).status, 3) << name << asked;
    }
}

TEST(Readme, ItsExampleShowsItsTextOnASimulatedModule) {
    EXPECT_PRED2(holds, contentOf(OPANE_SOURCE "/README.md"), contentOf(OPANE_SOURCE "/examples/hello_text.cpp"));
    const TemporaryFolder folder;
    const std::string device = folder / "module";
    RunningProgram module({OPANE_SIM_PROGRAM, "--link", device, "--snapshot", folder / "screen.png"});
    EXPECT_EQ(module.line().find("/dev/pts/"), 0U);
    EXPECT_EQ(runProgram({"env", "OPANE_COM1=" + device, HELLO_TEXT_PROGRAM, OPANE_DEFAULT_GENERATOR}).status, 0);
    EXPECT_EQ(runProgram({"env", "OPANE_COM1=/nowhere", HELLO_TEXT_PROGRAM, OPANE_DEFAULT_GENERATOR}).status, 3);
    const ProgramEnd end = runProgram(opaneOn(device, {"text", "Température 21,5 °C", "--line", "2"}));
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.output + end.errors, "");
    EXPECT_EQ(module.end(), 0);
    EXPECT_EQ(contentOf(folder / "screen.png").substr(1, 3), "PNG");
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(device))) << "the link goes with it";
}

}  // namespace
}  // namespace opane::test
