#include <algorithm>

#include "support/opane_program.h"

// EEPROM images: all or nothing, and a clear report.

namespace opane::test {
namespace {

class OpaneEeprom : public OpaneCommands {
protected:
    const std::string file = folder.write("image.bin", std::string(1024, '\x11'));
};

TEST_F(OpaneEeprom, ALongWriteIsSplit) {
    std::string digits;
    while (digits.size() < 600)
        digits += "0123456789AB";
    EXPECT_EQ(opane({"eeprom", "write", "--address", "100", digits}).status, 0);
    EXPECT_EQ(requests(), 6U) << "three blocks, each written and read back";
    EXPECT_EQ(run("eeprom read --address 99 --length 302").output, "FF" + digits + "FF\n");
}

TEST_F(OpaneEeprom, AnImageIsSavedVerifiedAndRestored) {
    for (const std::string option : {"", " --user"}) {
        const auto eeprom = [&](const std::string& command) { return run("eeprom " + command + option + " " + file); };
        set([](ModuleState& served) {
            std::ranges::copy(image(1024), served.systemEeprom.begin());
            std::ranges::copy(image(512), served.userEeprom.begin());
        });
        EXPECT_EQ(eeprom("save").status, 0);
        EXPECT_EQ(contentOf(file), image(option.empty() ? 1024 : 512));
        EXPECT_EQ(eeprom("verify").status, 0);

        set([](ModuleState& served) {
            for (const std::size_t address : {130U, 131U, 511U})
                served.systemEeprom[address] = served.userEeprom[address] = 0xEE;
        });
        ProgramEnd end = eeprom("verify");
        EXPECT_EQ(end.status, 1);
        EXPECT_PRED2(holds, end.output, "difference at 0x082 to 0x083, 0x1FF (3 of ");
        end = eeprom("restore --dry-run --json");
        EXPECT_EQ(end.status, 0);
        EXPECT_PRED2(holds, end.output,
                     "\"differing\":[{\"address\":130,\"length\":2},{\"address\":511,\"length\":1}],\"written\":0,"
                     "\"wouldWrite\":[{\"address\":128,\"length\":128},{\"address\":384,\"length\":128}]}");
        EXPECT_EQ(eeprom("verify").status, 1) << "a dry run writes nothing";
        end = eeprom("restore");
        EXPECT_EQ(end.status, 0);
        EXPECT_PRED2(holds, end.output, "256 bytes written") << "two blocks";
        EXPECT_EQ(eeprom("verify").output, "no difference\n");
    }
}

TEST_F(OpaneEeprom, ARestoreThatIsCutShortSaysWhatIsWritten) {
    fault({Fault::unplug, 1, 8 + 2});  // all blocks read, the first one written and read back
    const ProgramEnd end = opane({"eeprom", "restore", file, "--json"});
    EXPECT_EQ(end.status, 3);
    EXPECT_EQ(end.output.find('\n'), end.output.size() - 1) << "one object: " << end.output;
    EXPECT_PRED2(holds, end.output, "\"notWritten\":[{\"address\":256,\"length\":768}]");
    EXPECT_PRED2(holds, end.errors,
                 "opane: written and read back: 0x000 to 0x07F\nopane: perhaps written: 0x080 to 0x0FF\n"
                 "opane: not written: 0x100 to 0x3FF\nopane: error 57");
    EXPECT_EQ(content(state().systemEeprom), std::string(128, '\x11') + std::string(1024 - 128, '\xFF'));
}

TEST_F(OpaneEeprom, ARestoreThatIsAskedToEndSaysWhatIsWritten) {
    fault({.fault = Fault::delay, .after = 8 + 2, .parameter = 60'000});  // the second block is heard and not confirmed
    RunningProgram program(opaneOn(module.devicePath(), {"eeprom", "restore", file, "--json"}));
    waitForRequests(8 + 2 + 1);
    program.signal(SIGTERM);
    EXPECT_PRED2(
        holds, program.line(),
        "{\"command\":\"eeprom restore\",\"exit\":1,\"error\":\"0x080 to 0x0FF of the system EEPROM: interrupted "
        "(SIGTERM); written and read back: 0x000 to 0x07F; perhaps written: 0x080 to 0x0FF; not "
        "written: 0x100 to 0x3FF\"");
    EXPECT_THROW(program.line(), std::runtime_error) << "one object";
    EXPECT_EQ(program.end(), 1);
}

TEST_F(OpaneEeprom, ARefusedBlockEndsARestore) {
    fault({Fault::aux, 5, 8 + 2 + 1});  // the second block is written but cannot be read back
    ProgramEnd end = opane({"eeprom", "restore", file});
    EXPECT_EQ(end.status, 1);
    EXPECT_PRED2(holds, end.errors, "could not be read back");
    EXPECT_PRED2(holds, end.output, "\n128 bytes written and read back\n");

    fault({Fault::aux, 5, 7});  // the last block cannot be read at first
    end = opane({"eeprom", "restore", file});
    EXPECT_EQ(end.status, 1);
    EXPECT_PRED2(holds, end.errors, "0x380 to 0x3FF of the system EEPROM could not be read");
    EXPECT_PRED2(holds, end.errors, "nothing was written");
    EXPECT_EQ(state().systemEeprom[256], 0xFF);
}

TEST_F(OpaneEeprom, ASaveThatFailsKeepsTheOldFile) {
    fault({Fault::aux, 5, 3});
    EXPECT_EQ(opane({"eeprom", "save", file}).status, 1);
    fault({Fault::unplug, 1, 5});
    EXPECT_EQ(opane({"eeprom", "save", file}).status, 3);
    EXPECT_EQ(contentOf(file), std::string(1024, '\x11'));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1) << "no half file";
}

TEST_F(OpaneEeprom, AnswersThatAreTooShortAreFailures) {
    // A module that answers everything with a single info byte.
    simulator::PseudoTerminal terminal;
    const std::jthread terse([&terminal](const std::stop_token& stop) {
        for (simulator::WireReader reader; !stop.stop_requested(); std::this_thread::yield()) {
            for (const std::uint8_t byte : terminal.read()) {
                const auto heard = reader.hear(byte, 0, 9600);
                if (heard && heard->kind == simulator::Heard::Kind::handshake)
                    terminal.write(std::vector<std::uint8_t>{0x18});  // of node 3
                else if (heard)
                    terminal.write(simulator::wireBytes({3, 0, 0, heard->bytes[5], {0x41}}));
            }
        }
    });
    const auto fails = [&terminal](const std::string& line) {
        const ProgramEnd end = runProgram(opaneOn(terminal.path(), wordsOf(line)));
        EXPECT_EQ(end.status, 1) << line;
        return end;
    };
    fails("eeprom save " + file);
    EXPECT_EQ(contentOf(file), std::string(1024, '\x11'));
    EXPECT_EQ(fails("eeprom dump --length 2 --json").output,
              "{\"command\":\"eeprom dump\",\"exit\":1,\"error\":\"0x000 to 0x001 of the system EEPROM could not be "
              "read: the module refused, did not answer or sent another number of bytes\",\"status\":1,"
              "\"eeprom\":\"system\",\"address\":0,\"bytes\":[null,null]}\n");
    EXPECT_PRED2(holds, fails("eeprom write --address 5 42").errors,
                 "0x005 of the system EEPROM: it reads back as something else");
    EXPECT_PRED2(holds, fails("readings").output, "Vlcd                     --");
}

}  // namespace
}  // namespace opane::test
