#include "log/clsLog.h"

#include <gtest/gtest.h>

#include <map>

#include "platform/services.h"
#include "support/raised_number.h"
#include "support/temporary_folder.h"

namespace opane::test {
namespace {

std::tm moment(int year, int month, int day) {
    std::tm result{};
    result.tm_year = year - 1900;
    result.tm_mon = month - 1;
    result.tm_mday = day;
    result.tm_hour = 9;
    result.tm_min = 5;
    result.tm_sec = 7;
    return result;
}

class Log : public testing::Test {
protected:
    Log() {
        services->calendar = [this] { return now; };
        log.LogFolder(folder.path());
    }

    void event(const std::string& procedure, const std::string& message, std::int16_t level) {
        std::string strProcName = procedure;
        std::string strdata = message;
        log.LogEvent(strProcName, strdata, level);
    }

    TemporaryFolder folder;
    std::tm now = moment(2002, 1, 5);
    ServicesScope services;
    clsLog log;
};

TEST_F(Log, WritesNothingByDefaultButKnowsItsFile) {
    event("p", "m", 2);
    event("p", "m", 3);
    EXPECT_EQ(log.LogFileName(), folder / "_01-05-02.LOG");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
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
    const std::string start = "01/05/02 09:05:07 ";
    const auto padded = [](const std::string& text, std::size_t width) { return text + std::string(width, ' '); };
    EXPECT_EQ(contentOf(folder / "BANC1_01-05-02.LOG"),
              start + "Level2   " + padded("Cmd Type : 6", 58) + padded("clsOPane,Clear", 6) + "\r\n" + start +
                  "Level3     " + padded("Retry = 1", 61) + "clsOpane,SendDataAndReceiveResponse\r\n" + start +
                  "Level1 " + longText + padded("one", 17) + "\r\n" + start + "Level0 " + std::string(90, ' ') +
                  "\r\n" + start + "Level-1 " + padded("Température", 59) + padded("é", 19) + "\r\n");
}

TEST_F(Log, PadsTheCallersOwnTextsWhenItWrites) {
    std::string procedure = "p";
    std::string message = "m";
    log.LogLevel(1);
    log.LogEvent(procedure, message, 2);
    EXPECT_EQ(procedure, "p");
    log.LogEvent(procedure, message, 1);
    EXPECT_EQ(procedure, "p" + std::string(19, ' '));
    EXPECT_EQ(message, "m" + std::string(69, ' '));
}

TEST_F(Log, ANewDayBeginsANewFileAndAnOldOneGrows) {
    log.LogLevel(2);
    event("p", "first", 2);
    now = moment(2002, 1, 6);
    event("p", "second", 2);
    now = moment(2002, 1, 5);
    event("p", "third", 2);
    EXPECT_EQ(contentOf(folder / "_01-06-02.LOG").find("first"), std::string::npos);
    const std::string first = contentOf(folder / "_01-05-02.LOG");
    EXPECT_LT(first.find("first"), first.find("third"));
    EXPECT_EQ(std::count(first.begin(), first.end(), '\n'), 2);
}

TEST_F(Log, EndsItsFolderWithASeparator) {
    for (const auto& [given, kept] : std::map<std::string, std::string>{{"a", "a/"}, {"a/", "a/"}, {"", ""}}) {
        log.LogFolder(given);
        EXPECT_EQ(log.LogFolder(), kept);
    }
}

TEST_F(Log, TheSameTimeOfAnotherDayIsAnotherMoment) {
    log.LogLevel(2);
    for (const int day : {5, 6}) {
        now = moment(2002, 1, day);
        event("p", "m", 2);
    }
    EXPECT_EQ(contentOf(folder / "_01-06-02.LOG").find("01/06/02 09:05:07 "), 0U);
}

TEST_F(Log, EveryLineHasItsOwnTime) {
    log.LogLevel(2);
    for (const int second : {7, 8, 8, 7}) {
        now.tm_sec = second;
        event("p", "m", 2);
    }
    const std::string lines = contentOf(folder / "_01-05-02.LOG");
    std::string seconds;
    for (auto at = lines.find("09:05:"); at != std::string::npos; at = lines.find("09:05:", at + 1))
        seconds += lines.substr(at + 6, 2);
    EXPECT_EQ(seconds, "07080807");
}

TEST_F(Log, AFolderThatIsMissingIsAnErrorAndIsNotMade) {
    log.LogLevel(2);
    log.LogFolder(folder / "none");
    EXPECT_EQ(raisedNumber([this] { event("p", "m", 2); }), 76);
    EXPECT_FALSE(std::filesystem::exists(folder / "none"));
    try {
        event("p", "m", 2);
    } catch (const RuntimeError& error) {
        EXPECT_EQ(std::string(error.what()).find("log file \"" + (folder / "none/")), 0U) << error.what();
    }
    std::filesystem::create_directory(folder / "_01-05-02.LOG");
    log.LogFolder(folder.path());
    EXPECT_EQ(raisedNumber([this] { event("p", "m", 2); }), 75);
}

struct EnvironmentCase {
    const char* name;
    const char* level;
    std::int16_t expected;
};

class LogEnvironment : public testing::TestWithParam<EnvironmentCase> {};

TEST_P(LogEnvironment, RaisesTheLevelOfANewLog) {
    const TemporaryFolder folder;
    setenv("OPANE_LOG_LEVEL", GetParam().level, 1);
    setenv("OPANE_LOG_TESTER", "BANC2", 1);
    setenv("OPANE_LOG_FOLDER", folder.path().c_str(), 1);
    const clsLog log;
    unsetenv("OPANE_LOG_LEVEL");
    unsetenv("OPANE_LOG_TESTER");
    unsetenv("OPANE_LOG_FOLDER");
    EXPECT_EQ(log.LogLevel(), GetParam().expected);
    EXPECT_EQ(log.TesteurName(), "BANC2");
    EXPECT_EQ(log.LogFolder(), folder.path() + "/");
}

INSTANTIATE_TEST_SUITE_P(Levels, LogEnvironment,
                         testing::Values(EnvironmentCase{"two", "2", 2}, EnvironmentCase{"zero", "0", 0},
                                         EnvironmentCase{"three", "3", 3}, EnvironmentCase{"two_digits", "12", 0},
                                         EnvironmentCase{"four", "4", 0}, EnvironmentCase{"word", "high", 0},
                                         EnvironmentCase{"empty", "", 0}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(LogTester, FromOutsideNamesNoOtherFolder) {
    for (const auto& [given, taken] : std::map<std::string, std::string>{
             {"BANC 2: été", "BANC 2: été"}, {"../BANC2", ""}, {"BANC\\2", ""}, {"BANC\n2", ""}, {"BANC\x7F", ""}}) {
        setenv("OPANE_LOG_TESTER", given.c_str(), 1);
        EXPECT_EQ(clsLog().TesteurName(), taken);
        unsetenv("OPANE_LOG_TESTER");
    }
}

TEST(LogFolder, IsUnderTheLibrarysFolder) {
    const std::string folder = clsLog().LogFolder();
    EXPECT_TRUE(folder.ends_with("/log/")) << folder;
    EXPECT_EQ(folder.front(), '/');
}

}  // namespace
}  // namespace opane::test
