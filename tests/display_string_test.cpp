#include <gtest/gtest.h>

#include "automation/clsOPaneCommDLL.h"
#include "support/bench.h"
#include "support/glyph_bytes.h"
#include "support/temporary_folder.h"

namespace opane::test {
namespace {

using simulator::Fault;

/// A synchronised public object with a module in memory and a generator that has every code.
class DisplayString : public testing::Test {
protected:
    DisplayString() {
        std::int16_t status = 1;
        object.Synchronize(1, 9600, 3, status);
        EXPECT_EQ(status, 0);
    }

    std::int16_t show(const std::string& text, std::int16_t line, std::int16_t column, std::int16_t preGap = 0,
                      std::int16_t inverted = 0) {
        std::int16_t status = -1;
        object.DisplayString(text, line, column, preGap, inverted, file, status);
        return status;
    }

    bool pixel(int column, int row) { return isDark(bench.module.state().screen, column, row); }

    /// One pixel column of a text line as a column byte, the top row first.
    int columnByte(int pixelColumn, int line) {
        int byte = 0;
        for (int row = 0; row < 8; ++row)
            byte = byte * 2 + (pixel(pixelColumn, 8 * line + row) ? 1 : 0);
        return byte;
    }

    std::vector<ByteArray> blocks() {
        std::vector<ByteArray> positions;
        for (const auto& frame : bench.module.frames())
            positions.push_back({frame[5], frame[3], frame[4]});
        return positions;
    }

    TemporaryFolder folder;
    std::string file = folder.write("test.gen", [] {
        const ByteArray bytes = generator();
        return std::string(bytes.begin(), bytes.end());
    }());
    Bench bench;
    clsOPaneCommDLL object;
};

TEST_F(DisplayString, PutsEachGlyphColumnInItsPlace) {
    // Pixel columns 19 to 30 of line 2, so block columns 2 and 3.
    EXPECT_EQ(show("Aé", 2, 3, 1), 0);
    EXPECT_EQ(blocks(), (std::vector<ByteArray>{{3, 2, 2}, {3, 2, 3}}));
    for (int column = 0; column < 6; ++column) {
        EXPECT_EQ(columnByte(19 + column, 2), glyphOf('A')[static_cast<std::size_t>(column)]);
        EXPECT_EQ(columnByte(25 + column, 2), glyphOf(0xE9)[static_cast<std::size_t>(column)]) << "é is code 233";
    }
    EXPECT_EQ(columnByte(18, 2), 0);
    EXPECT_EQ(columnByte(31, 2), 0);
}

TEST_F(DisplayString, KeepsWhatStandsBesideItInItsFirstAndLastBlock) {
    ASSERT_EQ(show("AB", 0, 0), 0);       // pixel columns 0 to 11
    ASSERT_EQ(show("C", 0, 3, 2, 1), 0);  // 20 to 25, so blocks 2 and 3
    ASSERT_EQ(show("D", 0, 2, 1), 0);     // 13 to 18: the end of block 1 and the start of block 2
    const Glyph b = glyphOf('B');
    EXPECT_EQ(columnByte(11, 0), b[5]) << "the first text's last column";
    EXPECT_EQ(columnByte(12, 0), 0);
    EXPECT_EQ(columnByte(13, 0), glyphOf('D')[0]);
    EXPECT_EQ(columnByte(18, 0), glyphOf('D')[5]);
    EXPECT_EQ(columnByte(19, 0), 0) << "kept pixels are not complemented";
    EXPECT_EQ(columnByte(20, 0), 255 - glyphOf('C')[0]) << "the second text, inverted";
}

TEST_F(DisplayString, OneBlockKeepsBothSides) {
    ASSERT_EQ(show("B", 1, 0), 0);     // 0 to 5
    ASSERT_EQ(show("A", 1, 0, 2), 0);  // 2 to 7
    EXPECT_EQ(columnByte(0, 1), glyphOf('B')[0]);
    EXPECT_EQ(columnByte(1, 1), glyphOf('B')[1]);
    EXPECT_EQ(columnByte(2, 1), glyphOf('A')[0]);
    EXPECT_EQ(columnByte(7, 1), glyphOf('A')[5]);
    EXPECT_EQ(blocks().size(), 2U);
}

struct RefusedText {
    const char* name;
    std::string text;
    std::int16_t line, column, preGap, inverted;
    int raised;
    std::int16_t status;
    std::size_t sent = 0;
};

class TextArguments : public DisplayString, public testing::WithParamInterface<RefusedText> {};

TEST_P(TextArguments, GiveAStatusOrAnError) {
    const RefusedText& row = GetParam();
    std::int16_t status = -1;
    EXPECT_EQ(raisedNumber([&] {
                  object.DisplayString(row.text, row.line, row.column, row.preGap, row.inverted, file, status);
              }),
              row.raised);
    EXPECT_EQ(status, row.status);
    EXPECT_EQ(bench.module.frames().size(), row.sent);
}

const std::string k20 = "ABCDEFGHIJKLMNOPQRST";

INSTANTIATE_TEST_SUITE_P(
    Edges, TextArguments,
    testing::Values(
        RefusedText{"whole_line", k20, 0, 0, 0, 0, 0, 0, 15}, RefusedText{"21_characters", k20 + "U", 0, 0, 0, 0, 0, 1},
        RefusedText{"last_cell", "A", 7, 19, 0, 0, 0, 0, 1}, RefusedText{"a_pixel_beyond", "A", 7, 19, 1, 0, 0, 1},
        RefusedText{"beyond_the_screen", "A", 0, 20, 0, 0, 0, 1},
        RefusedText{"gap_back_to_the_edge", "A", 0, 1, -6, 0, 0, 0, 1}, RefusedText{"empty", "", 0, 0, 0, 0, 0, 1},
        RefusedText{"empty_on_no_line", "", 9, -9, 0, 0, 0, 1}, RefusedText{"inverted_2", "A", 0, 0, 0, 2, 0, 1},
        RefusedText{"inverted_minus_1", "A", 0, 0, 0, -1, 0, 1},
        RefusedText{"not_in_the_code_page", "Aж", 0, 0, 0, 0, 0, 1}, RefusedText{"no_utf8", "A\xFF", 0, 0, 0, 0, 0, 1},
        RefusedText{"line_8", "A", 8, 0, 0, 0, 9, 0}, RefusedText{"line_minus_1", "A", -1, 0, 0, 0, 9, 0},
        RefusedText{"left_of_the_screen", "A", 0, 0, -1, 0, 9, 0},
        RefusedText{"left_of_the_screen_by_a_block", "A", 0, -2, 0, 0, 9, 0},
        RefusedText{"too_long_from_far_left", std::string(4000, 'A'), 0, -4000, 0, 0, 9, 0},
        RefusedText{"column_beyond_16_bits", "A", 0, 5462, 0, 0, 6, 0},
        RefusedText{"gap_beyond_16_bits", "A", 0, 5461, 2, 0, 6, 0},
        RefusedText{"text_beyond_16_bits", std::string(5462, 'A'), 0, 0, 0, 0, 6, 0},
        RefusedText{"line_beyond_16_bits", "A", 4096, 0, 0, 0, 6, 0}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(DisplayString, TheGeneratorIsReadBeforeThePosition) {
    std::int16_t status = -1;
    EXPECT_EQ(raisedNumber([&] { object.DisplayString("", 0, 0, 0, 0, folder / "none.gen", status); }), 53);
    EXPECT_EQ(raisedNumber([&] { object.DisplayString("A", 0, 0, 0, 0, folder / "no/none.gen", status); }), 76);
    EXPECT_EQ(raisedNumber([&] { object.DisplayString("A", 0, 0, 0, 0, folder.path(), status); }), 75);
    EXPECT_EQ(status, 0);
    object.DisplayString("A", 0, 0, 0, 2, folder / "none.gen", status);  // refused before it is looked for
    EXPECT_EQ(status, 1);
}

TEST_F(DisplayString, AnAbsentOrBadGlyphSendsNothing) {
    const auto use = [this](const ByteArray& bytes) {
        file = folder.write("other.gen", std::string(bytes.begin(), bytes.end()));
    };
    use(generatorWithElement0('C', {2, 0, 67, 0}));
    EXPECT_EQ(show("ABC", 0, 0), 1);
    use(generatorWithColumn('C', 5, {2, 0, 0, 1}));
    EXPECT_EQ(raisedNumber([&] { show("ABC", 0, 0); }), 6);
    EXPECT_EQ(show("AB", 0, 0), 0) << "only what is shown is converted";
    EXPECT_EQ(bench.module.frames().size(), 2U);
}

TEST_F(DisplayString, AFailedBlockGivesStatus1AndTheOthersAreSentAndRecorded) {
    // The second of three blocks is refused all five times.
    bench.module.fault({.fault = Fault::aux, .count = 5, .after = 1});
    EXPECT_EQ(show("ABCD", 0, 0), 1);
    EXPECT_EQ(blocks().size(), 1U + 5U + 1U);
    EXPECT_EQ(columnByte(16, 0), glyphOf('C')[4]) << "the third block";
    EXPECT_EQ(columnByte(8, 0), 0) << "the second one was not shown";
    // It is recorded all the same: a text that shares the block sends its pixels.
    EXPECT_EQ(show("Z", 0, 1, 4), 0);  // 10 to 15
    EXPECT_EQ(columnByte(8, 0), glyphOf('B')[2]);
}

}  // namespace
}  // namespace opane::test
