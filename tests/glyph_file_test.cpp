#include "automation/glyph_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>

#include "shared/runtime_error.h"
#include "support/glyph_bytes.h"
#include "support/raised_number.h"

namespace opane::test {
namespace {

/// A tagged value as it lies in the memory of a machine that is little-endian, as the file is.
template <typename Value>
ByteArray tagged(std::uint8_t tag, Value value) {
    ByteArray bytes(2 + sizeof value, 0);
    bytes[0] = tag;
    std::memcpy(bytes.data() + 2, &value, sizeof value);
    return bytes;
}
ByteArray text(const std::string& characters) {
    ByteArray bytes = tagged(8, static_cast<std::uint16_t>(characters.size()));
    for (const char character : characters)
        bytes.push_back(static_cast<std::uint8_t>(character));
    return bytes;
}

/// What each gives as a column; an error as a negative number: -6 overflow, -13 type mismatch, -94 null.
void expectColumns(int plain, int inverted, std::initializer_list<ByteArray> values) {
    for (const ByteArray& value : values) {
        const GlyphFile file = GlyphFile::parse(generator('A', kFirstColumn + 3, value), "test");
        ASSERT_TRUE(file.has('A'));
        for (const bool isInverted : {false, true}) {
            int column = 0;
            const int raised = raisedNumber([&] { column = file.column('A', 3, isInverted); });
            EXPECT_EQ(raised != 0 ? -raised : column, isInverted ? inverted : plain) << testing::PrintToString(value);
        }
    }
}

// Texts as the component's own conversion of an argument reads them.
TEST(GlyphFile, GivesAColumnOrAnErrorForEveryTag) {
    expectColumns(0, -6,
                  {ByteArray{0, 0}, ByteArray{2, 0, 0, 0}, tagged(5, -0.5), tagged(6, 5000LL),
                   text("0." + std::string(400, '0') + "1e9")});
    expectColumns(-94, -94, {ByteArray{1, 0}});
    expectColumns(255, -6, {ByteArray{2, 0, 0xFF, 0x00}, tagged(3, 255), tagged(5, 255.4), text("&HFF")});
    expectColumns(-6, -6,
                  {ByteArray{2, 0, 0x00, 0x01}, ByteArray{2, 0, 0xFF, 0xFE}, tagged(3, INT32_MIN), tagged(5, 255.5),
                   tagged(5, 1e300), tagged(5, std::nan("")), tagged(6, INT64_MAX), text("1e999"), text("&H100000000"),
                   text("1" + std::string(400, '0') + "e-9")});
    expectColumns(-6, 0, {ByteArray{2, 0, 0xFF, 0xFF}, tagged(4, -1.0F), tagged(6, -14999LL), text(" -1 ")});
    expectColumns(-6, 255, {ByteArray{2, 0, 0x00, 0xFF}, tagged(3, -256), tagged(5, -256.5), text("&hffffff00")});
    expectColumns(2, -6, {tagged(4, 2.5F), tagged(4, 1.5F), tagged(6, 15000LL), text("2.5E0")});
    expectColumns(17, -6, {tagged(7, 17.25), text("+17")});
    expectColumns(-13, -13, {text("+-7"), text("6x"), text(""), text("&H"), text("nan(1)"), text("\2406")});
    expectColumns(15, -6, {text("15"), text("\t&O17\r\n")});
    expectColumns(0, 255, {ByteArray{11, 0, 0, 0}, ByteArray{17, 0, 0}});
    expectColumns(255, 0, {ByteArray{11, 0, 0xFF, 0xFF}, ByteArray{17, 0, 0xFF}});
    expectColumns(0x7C, 0x83, {ByteArray{17, 0, 0x7C}});
}

TEST(GlyphFile, SaysWhichCodesItHas) {
    EXPECT_TRUE(GlyphFile::parse(generator(), "test").has('A'));
    const ByteArray others[]{text("B"), text("AA"), {2, 0, 65, 0}, {17, 0, 65}, {0, 0}, {1, 0}};
    for (const ByteArray& element : others)
        EXPECT_FALSE(GlyphFile::parse(generator('A', 0, element), "test").has('A')) << int{element[0]};

    ByteArray bytes = generator();            // 26 bytes a record
    bytes.insert(bytes.end(), {0x63, 0x00});  // what follows the last one is not read
    EXPECT_EQ(GlyphFile::parse(bytes, "test").count(), 256);
    bytes.resize(26 * 66 + 25);  // whole up to code 65, one byte short of code 66
    const GlyphFile file = GlyphFile::parse(bytes, "test");
    EXPECT_TRUE(file.has('A'));
    EXPECT_FALSE(file.has('B'));
    EXPECT_EQ(file.count(), 66);
    EXPECT_EQ(raisedNumber([&] { file.column('B', 0, false); }), 9);
    EXPECT_EQ(GlyphFile::parse({}, "test").count(), 0);
}

TEST(GlyphFile, AnUnknownTagIsNoGenerator) {
    for (const std::uint8_t tag : ByteArray{9, 10, 12, 16, 18}) {
        const ByteArray bytes = generator('A', kFirstColumn + 3, {tag, 0, 0});
        EXPECT_EQ(raisedNumber([&] { GlyphFile::parse(bytes, "test"); }), 321) << int{tag};
    }
    EXPECT_EQ(raisedNumber([] { GlyphFile::parse(ByteArray{17, 1, 0}, "test"); }), 321) << "the tag has 16 bits";
}

}  // namespace
}  // namespace opane::test
