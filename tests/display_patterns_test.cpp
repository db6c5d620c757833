#include <gtest/gtest.h>

#include <numeric>

#include "support/bench.h"

namespace opane::test {
namespace {

using Operation = std::function<bool(clsOPane&)>;

enum class End { sent, refused, overflow };

struct PatternCase {
    const char* name;
    Operation operation;
    End end;
    ByteArray header{};  // Leng, Node, Aux1, Aux2, Type of the frame
    const char* line = "";
};

ByteArray rows(std::size_t count) {
    ByteArray bytes(count);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return bytes;
}

Operation affData(std::int16_t zone, std::size_t count) {
    return [=](clsOPane& link) { return link.OPaneCmd_AffData(zone, rows(count)); };
}
Operation affBloc1(std::int16_t line, std::int16_t column, std::size_t count = 8) {
    return [=](clsOPane& link) { return link.OPaneCmd_AffBloc1(line, column, rows(count)); };
}
Operation affBloc4(std::int16_t line, std::int16_t column, std::size_t count = 32) {
    return [=](clsOPane& link) { return link.OPaneCmd_AffBloc4(line, column, rows(count)); };
}
Operation cadre(std::int16_t pattern) {
    return [=](clsOPane& link) { return link.OPaneCmd_Cadre(pattern); };
}
Operation clear(std::int16_t pattern) {
    return [=](clsOPane& link) { return link.OPaneCmd_Clear(pattern); };
}

class Pattern : public testing::TestWithParam<PatternCase> {};

TEST_P(Pattern, IsSentRefusedOrRaised) {
    LinkBench bench;
    threadGlobals()->gobjLog->LogLevel(2);
    const PatternCase& row = GetParam();
    ScriptedPeer& peer = bench.scripted();
    if (row.end == End::sent)
        peer.answers = {{0xAA, 0, 3, 0, 0, row.header[4], 0}};

    bool result = false;
    EXPECT_EQ(raisedNumber([&] { result = row.operation(bench.link()); }), row.end == End::overflow ? 6 : 0);
    EXPECT_EQ(result, row.end == End::sent);
    ASSERT_EQ(peer.heard.size(), row.end == End::sent ? 1U : 0U);
    // A refused call leaves no trace; one that raises has logged its type.
    EXPECT_EQ(bench.log, row.end == End::refused ? std::vector<std::string>{} : std::vector<std::string>{row.line});
    if (row.end != End::sent)
        return;
    const ByteArray& frame = peer.heard.front();
    EXPECT_EQ(ByteArray(frame.begin() + 1, frame.begin() + 6), row.header);
    EXPECT_EQ(ByteArray(frame.begin() + 6, frame.end() - 1), rows(row.header[0])) << "in the array's order";
}

INSTANTIATE_TEST_SUITE_P(
    Edges, Pattern,
    testing::Values(PatternCase{"line_0", affData(0, 120), End::sent, {120, 3, 0, 0, 1}, "Cmd Type : 1"},
                    PatternCase{"line_255", affData(255, 120), End::sent, {120, 3, 255, 0, 1}, "Cmd Type : 1"},
                    PatternCase{"line_256", affData(256, 120), End::overflow, {}, "Cmd Type : 1"},
                    PatternCase{"line_of_119", affData(0, 119), End::refused},
                    PatternCase{"line_of_121", affData(0, 121), End::refused},
                    PatternCase{"block_7_14", affBloc1(7, 14), End::sent, {8, 3, 7, 14, 3}, "Cmd Type : 3"},
                    PatternCase{"block_line_8", affBloc1(8, 14), End::refused},
                    PatternCase{"block_column_15", affBloc1(7, 15), End::refused},
                    PatternCase{"block_of_9", affBloc1(0, 0, 9), End::refused},
                    PatternCase{"block_line_minus_1", affBloc1(-1, 0), End::overflow, {}, "Cmd Type : 3"},
                    PatternCase{"block_column_minus_1", affBloc1(0, -1), End::overflow, {}, "Cmd Type : 3"},
                    PatternCase{"square_6_13", affBloc4(6, 13), End::sent, {32, 3, 6, 13, 4}, "Cmd Type : 4"},
                    PatternCase{"square_line_7", affBloc4(7, 13), End::refused},
                    PatternCase{"square_column_14", affBloc4(6, 14), End::refused},
                    PatternCase{"square_of_8", affBloc4(0, 0, 8), End::refused},
                    PatternCase{"frame_255", cadre(255), End::sent, {0, 3, 255, 0, 5}, "Cmd Type : 5"},
                    PatternCase{"frame_256", cadre(256), End::overflow, {}, "Cmd Type : 5"},
                    PatternCase{"clear_0", clear(0), End::sent, {0, 3, 0, 0, 6}, "Cmd Type : 6"},
                    PatternCase{"clear_minus_1", clear(-1), End::overflow, {}, "Cmd Type : 6"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(PatternOnTheModule, ShowsWhatWasAskedFor) {
    LinkBench bench;
    clsOPane& link = bench.link();
    const auto& state = bench.module.state();
    EXPECT_TRUE(link.OPaneCmd_Clear(0x55));
    EXPECT_EQ(state.screen[63][14], 0x55);
    EXPECT_TRUE(link.OPaneCmd_AffData(7, rows(120)));
    EXPECT_EQ(state.screen[56][0], 1) << "the top row's first byte";
    EXPECT_EQ(state.screen[63][14], 120);
    EXPECT_TRUE(link.OPaneCmd_Cadre(255));
    EXPECT_TRUE(state.frameDrawn());
    EXPECT_FALSE(link.OPaneCmd_AffData(8, rows(120))) << "the module refuses what it does not have";
    EXPECT_EQ(bench.log.back(), "Retry = 5. Exit SendDataAndReceiveResponse without success");
}

}  // namespace
}  // namespace opane::test
