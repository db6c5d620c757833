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

struct Row {
    const char* name;
    ByteArray tagged;
    int plain, inverted;  // an error as a negative number: -6 overflow, -13 type mismatch, -94 null
};

class GlyphColumn : public testing::TestWithParam<Row> {};

TEST_P(GlyphColumn, GivesAValueOrAnError) {
    const GlyphFile file = GlyphFile::parse(generator('A', kFirstColumn + 3, GetParam().tagged), "test");
    ASSERT_TRUE(file.has('A'));
    for (const bool inverted : {false, true}) {
        int value = 0;
        const int raised = raisedNumber([&] { value = file.column('A', 3, inverted); });
        EXPECT_EQ(raised != 0 ? -raised : value, inverted ? GetParam().inverted : GetParam().plain);
    }
}

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

INSTANTIATE_TEST_SUITE_P(
    EveryTag, GlyphColumn,
    testing::Values(
        Row{"empty", {0, 0}, 0, -6}, Row{"null", {1, 0}, -94, -94}, Row{"int16_0", {2, 0, 0, 0}, 0, -6},
        Row{"int16_255", {2, 0, 0xFF, 0x00}, 255, -6}, Row{"int16_256", {2, 0, 0x00, 0x01}, -6, -6},
        Row{"int16_minus_1", {2, 0, 0xFF, 0xFF}, -6, 0}, Row{"int16_minus_256", {2, 0, 0x00, 0xFF}, -6, 255},
        Row{"int16_minus_257", {2, 0, 0xFF, 0xFE}, -6, -6}, Row{"int32_124", tagged(3, 124), 124, -6},
        Row{"int32_minus_125", tagged(3, -125), -6, 124}, Row{"int32_smallest", tagged(3, INT32_MIN), -6, -6},
        Row{"float32_half_down", tagged(4, 2.5F), 2, -6}, Row{"float32_half_up", tagged(4, 3.5F), 4, -6},
        Row{"float32_minus_1", tagged(4, -1.0F), -6, 0}, Row{"float64_minus_half", tagged(5, -0.5), 0, -6},
        Row{"float64_255_4", tagged(5, 255.4), 255, -6}, Row{"float64_255_5", tagged(5, 255.5), -6, -6},
        Row{"float64_minus_256_5", tagged(5, -256.5), -6, 255}, Row{"float64_huge", tagged(5, 1e300), -6, -6},
        Row{"float64_no_number", tagged(5, std::nan("")), -6, -6}, Row{"currency_0_5", tagged(6, 5000LL), 0, -6},
        Row{"currency_1_5", tagged(6, 15000LL), 2, -6}, Row{"currency_minus_1_4999", tagged(6, -14999LL), -6, 0},
        Row{"currency_largest", tagged(6, INT64_MAX), -6, -6}, Row{"date_17", tagged(7, 17.25), 17, -6},
        Row{"text_65", text("65"), 65, -6}, Row{"text_padded_minus_2", text(" -2 "), -6, 1},
        Row{"text_plus_7", text("+7"), 7, -6}, Row{"text_plus_minus_7", text("+-7"), -13, -13},
        Row{"text_word", text("6x"), -13, -13}, Row{"text_huge", text("1e999"), -6, -6},
        Row{"text_empty", text(""), -13, -13},
        // as the component's own conversion of an argument reads them
        Row{"text_hex", text("&HFF"), 255, -6}, Row{"text_hex_of_32_bits", text("&hffffff00"), -6, 255},
        Row{"text_hex_too_long", text("&H100000000"), -6, -6}, Row{"text_octal", text("\t&O17\r\n"), 15, -6},
        Row{"text_hex_digitless", text("&H"), -13, -13}, Row{"text_half_to_even", text("2.5E0"), 2, -6},
        Row{"text_nearly_nothing", text("0." + std::string(400, '0') + "1e9"), 0, -6},
        Row{"text_huge_with_exponent", text("1" + std::string(400, '0') + "e-9"), -6, -6},
        Row{"text_no_number", text("nan(1)"), -13, -13}, Row{"text_not_ascii", text("\2406"), -13, -13},
        Row{"false", {11, 0, 0, 0}, 0, 255}, Row{"true", {11, 0, 0xFF, 0xFF}, 255, 0},
        Row{"byte_0", {17, 0, 0}, 0, 255}, Row{"byte_124", {17, 0, 0x7C}, 0x7C, 0x83},
        Row{"byte_255", {17, 0, 0xFF}, 255, 0}),
    [](const auto& row) { return std::string(row.param.name); });

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
