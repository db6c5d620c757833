#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "support/opane_program.h"

// EEPROM images: all or nothing, and a clear report.

namespace opane::test {
namespace {

TEST_F(OpaneCommands, ALongWriteIsSplit) {
    const std::string written = image(300);
    std::string digits;
    for (const char byte : written) {
        char text[3];
        std::snprintf(text, sizeof text, "%02x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
        digits += text;
    }
    EXPECT_EQ(opane({"eeprom", "write", "--address", "100", digits}).status, 0);
    EXPECT_EQ(content(state().systemEeprom), std::string(100, '\xFF') + written + std::string(1024 - 400, '\xFF'));
    EXPECT_EQ(requests(), 6U) << "three blocks, each written and read back";
}

TEST_F(OpaneCommands, AnImageIsSavedVerifiedAndRestored) {
    for (const Words& option : {Words{}, Words{"--user"}}) {
        const auto eeprom = [&](const char* command, Words words) {
            words.insert(words.begin(), {"eeprom", command});
            words.insert(words.end(), option.begin(), option.end());
            return opane(words);
        };
        set([](ModuleState& served) {
            const std::string bytes = image(1024);
            std::copy(bytes.begin(), bytes.end(), served.systemEeprom.begin());
            std::copy_n(bytes.begin(), 512, served.userEeprom.begin());
        });
        const std::string file = folder.write("image.bin", "an older file");
        EXPECT_EQ(eeprom("save", {file}).status, 0);
        EXPECT_EQ(contentOf(file), image(option.empty() ? 1024 : 512));
        EXPECT_EQ(eeprom("verify", {file}).status, 0);

        set([](ModuleState& served) {
            for (const std::size_t address : {130U, 131U, 511U})
                served.systemEeprom[address] = served.userEeprom[address] = 0xEE;
        });
        ProgramEnd end = eeprom("verify", {file});
        EXPECT_EQ(end.status, 1);
        EXPECT_NE(end.output.find("difference at 0x082 to 0x083, 0x1FF (3 of "), std::string::npos) << end.output;
        end = eeprom("restore", {file, "--dry-run", "--json"});
        EXPECT_EQ(end.status, 0);
        EXPECT_NE(end.output.find("\"differing\":[{\"address\":130,\"length\":2},{\"address\":511,\"length\":1}],"
                                  "\"written\":0,\"wouldWrite\":[{\"address\":128,\"length\":128},"
                                  "{\"address\":384,\"length\":128}]}"),
                  std::string::npos)
            << end.output;
        EXPECT_EQ(eeprom("verify", {file}).status, 1) << "a dry run writes nothing";
        end = eeprom("restore", {file});
        EXPECT_EQ(end.status, 0);
        EXPECT_NE(end.output.find("256 bytes written"), std::string::npos) << "two blocks";
        EXPECT_EQ(eeprom("verify", {file}).output, "no difference\n");
    }
}

TEST_F(OpaneCommands, AnInterruptedRestoreSaysWhatIsWritten) {
    const std::string file = folder.write("image.bin", std::string(1024, '\x11'));
    fault({Fault::unplug, 1, 8 + 2});  // all blocks read, the first one written and read back
    const ProgramEnd end = opane({"eeprom", "restore", file, "--json"});
    EXPECT_EQ(end.status, 3);
    EXPECT_EQ(end.output.find('\n'), end.output.size() - 1) << "one object: " << end.output;
    EXPECT_NE(end.output.find("\"notWritten\":[{\"address\":256,\"length\":768}]"), std::string::npos) << end.output;
    EXPECT_NE(end.errors.find("opane: written and read back: 0x000 to 0x07F\nopane: perhaps written: 0x080 to 0x0FF\n"
                              "opane: not written: 0x100 to 0x3FF\nopane: error 57"),
              std::string::npos)
        << end.errors;
    EXPECT_EQ(content(state().systemEeprom), std::string(128, '\x11') + std::string(1024 - 128, '\xFF'));
}

TEST_F(OpaneCommands, ARestoreThatIsAskedToEndSaysWhatIsWritten) {
    const std::string file = folder.write("image.bin", std::string(1024, '\x11'));
    fault({.fault = Fault::delay, .after = 8 + 2, .parameter = 60'000});  // the second block is heard and not confirmed
    RunningProgram program(opaneOn(module.devicePath(), {"eeprom", "restore", file, "--json"}));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (requests() < 8 + 2 + 1 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    program.signal(SIGTERM);
    const std::string line = program.line();
    EXPECT_EQ(
        line.find(
            "{\"command\":\"eeprom restore\",\"exit\":1,\"error\":\"0x080 to 0x0FF of the system EEPROM: interrupted "
            "(SIGTERM); written and read back: 0x000 to 0x07F; perhaps written: 0x080 to 0x0FF; not "
            "written: 0x100 to 0x3FF\""),
        0U)
        << line;
    EXPECT_THROW(program.line(), std::runtime_error) << "one object";
    EXPECT_EQ(program.end(), 1);
}

TEST_F(OpaneCommands, ARefusedBlockEndsARestore) {
    const std::string file = folder.write("image.bin", std::string(1024, '\x11'));
    fault({Fault::aux, 5, 8 + 2 + 1});  // the second block is written but cannot be read back
    ProgramEnd end = opane({"eeprom", "restore", file});
    EXPECT_EQ(end.status, 1);
    EXPECT_NE(end.errors.find("could not be read back"), std::string::npos) << end.errors;
    EXPECT_NE(end.output.find("\n128 bytes written and read back\n"), std::string::npos) << end.output;

    fault({Fault::aux, 5, 7});  // the last block cannot be read at first
    end = opane({"eeprom", "restore", file});
    EXPECT_EQ(end.status, 1);
    EXPECT_NE(end.errors.find("0x380 to 0x3FF of the system EEPROM could not be read"), std::string::npos);
    EXPECT_NE(end.errors.find("nothing was written"), std::string::npos);
    EXPECT_EQ(state().systemEeprom[256], 0xFF);
}

TEST_F(OpaneCommands, ASaveThatFailsKeepsTheOldFile) {
    const std::string file = folder.write("image.bin", "the old file");
    fault({Fault::aux, 5, 3});
    EXPECT_EQ(opane({"eeprom", "save", file}).status, 1);
    fault({Fault::unplug, 1, 5});
    EXPECT_EQ(opane({"eeprom", "save", file}).status, 3);
    EXPECT_EQ(contentOf(file), "the old file");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1) << "no half file";
}

/// A module that answers everything with a single info byte.
class TerseModule {
public:
    std::string devicePath() const { return terminal_.path(); }

private:
    void serve(const std::stop_token& stop) {
        simulator::WireReader reader;
        while (!stop.stop_requested()) {
            for (const std::uint8_t byte : terminal_.read()) {
                const auto heard = reader.hear(byte, 0, 9600);
                if (heard && heard->kind == simulator::Heard::Kind::handshake)
                    terminal_.write(std::vector<std::uint8_t>{0x18});  // of node 3
                else if (heard)
                    terminal_.write(simulator::wireBytes({3, 0, 0, heard->bytes[5], {0x41}}));
            }
            std::this_thread::yield();
        }
    }

    simulator::PseudoTerminal terminal_;
    std::jthread thread_{[this](const std::stop_token& stop) { serve(stop); }};
};

TEST_F(OpaneCommands, AnswersThatAreTooShortAreFailures) {
    const TerseModule terse;
    const std::string file = folder.write("image.bin", "the old file");
    EXPECT_EQ(runProgram(opaneOn(terse.devicePath(), {"eeprom", "save", file})).status, 1);
    EXPECT_EQ(contentOf(file), "the old file");
    const ProgramEnd dump = runProgram(opaneOn(terse.devicePath(), {"eeprom", "dump", "--length", "2", "--json"}));
    EXPECT_EQ(dump.status, 1);
    EXPECT_EQ(dump.output,
              "{\"command\":\"eeprom dump\",\"exit\":1,\"error\":\"0x000 to 0x001 of the system EEPROM could not be "
              "read: the module "
              "refused, did not answer or sent another number of "
              "bytes\",\"status\":1,\"eeprom\":\"system\",\"address\":0,\"bytes\":[null,null]}\n");
    const ProgramEnd write = runProgram(opaneOn(terse.devicePath(), {"eeprom", "write", "--address", "5", "42"}));
    EXPECT_EQ(write.status, 1);
    EXPECT_NE(write.errors.find("0x005 of the system EEPROM: it reads back as something else"), std::string::npos);
    const ProgramEnd readings = runProgram(opaneOn(terse.devicePath(), {"readings"}));
    EXPECT_EQ(readings.status, 1);
    EXPECT_NE(readings.output.find("Vlcd                     --"), std::string::npos);
}

}  // namespace
}  // namespace opane::test
