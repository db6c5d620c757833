#include "log/clsLog.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <map>
#include <sstream>

#include "platform/services.h"
#include "support/raised_number.h"
#include "support/temporary_folder.h"

namespace opane::test {
namespace {

std::string blanks(std::size_t width) {
    return std::string(width, ' ');
}

class Log : public testing::Test {
protected:
    Log() {
        std::istringstream("01/05/02 09:05:07") >> std::get_time(&now, "%D %T");
        services->calendar = [this] { return now; };
        log.LogFolder(folder.path());
    }

    void event(std::string procedure, std::string message, std::int16_t level) {
        log.LogEvent(procedure, message, level);
    }

    TemporaryFolder folder;
    std::tm now{};
    ServicesScope services;
    clsLog log;
};

TEST_F(Log, WritesNothingByDefaultButKnowsItsFile) {
    std::string procedure = "p";
    std::string message = "m";
    log.LogEvent(procedure, message, 2);
    EXPECT_EQ(procedure + message, "pm");
    EXPECT_EQ(log.LogFileName(), folder / "_01-05-02.LOG");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
    log.LogLevel(2);
    log.LogEvent(procedure, message, 2);
    EXPECT_EQ(procedure + message, std::string("p") + blanks(19) + "m" + blanks(69)) << "the caller's own";
}

TEST_F(Log, LaysOutEachLevel) {
    log.LogLevel(3);
    log.TesteurName("BANC1");
    const std::string longText(75, 'x');
    event("clsOPane,Clear", "Cmd Type : 6", 2);
    event("clsOpane,SendDataAndReceiveResponse", "Retry = 1", 3);
    event("one", longText, 1);
    event("", "", 0);
    event("é", "Température", -1);
    event("four", "not written", 4);
    const std::string start = "01/05/02 09:05:07 Level";
    std::string expected = start + "2   Cmd Type : 6" + blanks(58) + "clsOPane,Clear" + blanks(6) + "\r\n";
    expected += start + "3     Retry = 1" + blanks(61) + "clsOpane,SendDataAndReceiveResponse\r\n";
    expected += start + "1 " + longText + "one" + blanks(17) + "\r\n" + start + "0 " + blanks(90) + "\r\n";
    expected += start + "-1 Température" + blanks(59) + "é" + blanks(19) + "\r\n";
    EXPECT_EQ(contentOf(folder / "BANC1_01-05-02.LOG"), expected);
}

TEST_F(Log, EveryLineHasItsOwnTimeAndEveryDayItsOwnFile) {
    log.LogLevel(2);
    for (const auto& [day, second] : {std::pair{5, 7}, {5, 8}, {5, 8}, {6, 8}, {5, 7}}) {
        now.tm_mday = day;
        now.tm_sec = second;
        event("p", "m", 2);
    }
    const auto line = [](const std::string& time) {
        return time + " Level2   m" + blanks(69) + "p" + blanks(19) + "\r\n";
    };
    EXPECT_EQ(contentOf(folder / "_01-05-02.LOG"), line("01/05/02 09:05:07") + line("01/05/02 09:05:08") +
                                                       line("01/05/02 09:05:08") + line("01/05/02 09:05:07"));
    EXPECT_EQ(contentOf(folder / "_01-06-02.LOG"), line("01/06/02 09:05:08"));
}

TEST_F(Log, AFolderThatIsMissingIsAnErrorAndIsNotMade) {
    log.LogLevel(2);
    log.LogFolder(folder / "none");
    const std::string raised = raisedText([this] { event("p", "m", 2); });
    EXPECT_TRUE(raised.starts_with("76 log file \"" + (folder / "none/"))) << raised;
    EXPECT_FALSE(std::filesystem::exists(folder / "none"));
    std::filesystem::create_directory(folder / "_01-05-02.LOG");
    log.LogFolder(folder.path());
    EXPECT_EQ(raisedNumber([this] { event("p", "m", 2); }), 75);
    log.LogFolder("");
    EXPECT_EQ(log.LogFolder(), "");
}

TEST(LogSettings, OfANewLogMayComeFromOutside) {
    EXPECT_TRUE(clsLog().LogFolder().ends_with("/log/") && clsLog().LogFolder().front() == '/') << clsLog().LogFolder();
    for (const auto& [given, taken] : std::map<std::string, std::string>{{"a", "a/"}, {"a/", "a/"}}) {
        setenv("OPANE_LOG_FOLDER", given.c_str(), 1);
        EXPECT_EQ(clsLog().LogFolder(), taken);
    }
    for (const auto& [given, taken] :
         std::map<std::string, std::int16_t>{{"2", 2}, {"0", 0}, {"3", 3}, {"12", 0}, {"4", 0}, {"high", 0}, {"", 0}}) {
        setenv("OPANE_LOG_LEVEL", given.c_str(), 1);
        EXPECT_EQ(clsLog().LogLevel(), taken) << given;
    }
    for (const auto& [given, taken] : std::map<std::string, std::string>{
             {"BANC 2: été", "BANC 2: été"}, {"../BANC2", ""}, {"BANC\\2", ""}, {"BANC\n2", ""}, {"BANC\x7F", ""}}) {
        setenv("OPANE_LOG_TESTER", given.c_str(), 1);
        EXPECT_EQ(clsLog().TesteurName(), taken);
    }
    for (const char* const name : {"OPANE_LOG_FOLDER", "OPANE_LOG_LEVEL", "OPANE_LOG_TESTER"})
        unsetenv(name);
}

}  // namespace
}  // namespace opane::test
