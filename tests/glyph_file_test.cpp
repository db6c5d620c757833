#include "automation/glyph_file.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

#include "shared/runtime_error.h"
#include "support/glyph_bytes.h"
#include "support/raised_number.h"

namespace opane::test {
namespace {

/// A column's value, or the error that it raises as a negative number: -6 overflow, -13 type mismatch, -94 null.
int columnOf(const GlyphFile& file, bool inverted) {
    int value = 0;
    const int raised = raisedNumber([&] { value = file.column('A', 3, inverted); });
    return raised != 0 ? -raised : value;
}

struct Column {
    const char* name;
    ByteArray tagged;
    int plain, inverted;
};

class GlyphColumn : public testing::TestWithParam<Column> {};

TEST_P(GlyphColumn, GivesAValueOrAnError) {
    const GlyphFile file = GlyphFile::parse(generatorWithColumn('A', 3, GetParam().tagged), "test");
    ASSERT_TRUE(file.has('A'));
    EXPECT_EQ(columnOf(file, false), GetParam().plain);
    EXPECT_EQ(columnOf(file, true), GetParam().inverted);
}

ByteArray float32(float value) {
    return tagged<4>(4, std::bit_cast<std::uint32_t>(value));
}
ByteArray float64(double value, std::uint16_t tag = 5) {
    return tagged<8>(tag, std::bit_cast<std::uint64_t>(value));
}
ByteArray currency(std::int64_t units) {
    return tagged<8>(6, static_cast<std::uint64_t>(units));
}

ByteArray text(const std::string& characters) {
    ByteArray bytes = tagged<2>(8, characters.size());
    for (const char character : characters)
        bytes.push_back(static_cast<std::uint8_t>(character));
    return bytes;
}

INSTANTIATE_TEST_SUITE_P(
    EveryTag, GlyphColumn,
    testing::Values(
        Column{"empty", {0, 0}, 0, -6}, Column{"null", {1, 0}, -94, -94}, Column{"int16_0", {2, 0, 0, 0}, 0, -6},
        Column{"int16_255", {2, 0, 0xFF, 0x00}, 255, -6}, Column{"int16_256", {2, 0, 0x00, 0x01}, -6, -6},
        Column{"int16_minus_1", {2, 0, 0xFF, 0xFF}, -6, 0}, Column{"int16_minus_256", {2, 0, 0x00, 0xFF}, -6, 255},
        Column{"int16_minus_257", {2, 0, 0xFF, 0xFE}, -6, -6}, Column{"int32_124", {3, 0, 0x7C, 0, 0, 0}, 124, -6},
        Column{"int32_minus_125", {3, 0, 0x83, 0xFF, 0xFF, 0xFF}, -6, 124},
        Column{"int32_smallest", {3, 0, 0, 0, 0, 0x80}, -6, -6},
        Column{"float32_half_to_even_down", float32(2.5F), 2, -6},
        Column{"float32_half_to_even_up", float32(3.5F), 4, -6}, Column{"float32_minus_1", float32(-1.0F), -6, 0},
        Column{"float64_minus_half", float64(-0.5), 0, -6}, Column{"float64_255_4", float64(255.4), 255, -6},
        Column{"float64_255_5", float64(255.5), -6, -6}, Column{"float64_minus_256_5", float64(-256.5), -6, 255},
        Column{"float64_huge", float64(1e300), -6, -6}, Column{"float64_no_number", float64(std::nan("")), -6, -6},
        Column{"currency_0_5", currency(5000), 0, -6}, Column{"currency_1_5", currency(15000), 2, -6},
        Column{"currency_minus_1_4999", currency(-14999), -6, 0},
        Column{"currency_largest", currency(std::numeric_limits<std::int64_t>::max()), -6, -6},
        Column{"date_17", float64(17.25, 7), 17, -6}, Column{"string_65", {8, 0, 2, 0, '6', '5'}, 65, -6},
        Column{"string_padded_minus_2", {8, 0, 4, 0, ' ', '-', '2', ' '}, -6, 1},
        Column{"string_plus_7", {8, 0, 2, 0, '+', '7'}, 7, -6},
        Column{"string_plus_minus_7", {8, 0, 3, 0, '+', '-', '7'}, -13, -13},
        Column{"string_word", {8, 0, 2, 0, '6', 'x'}, -13, -13},
        Column{"string_huge", {8, 0, 5, 0, '1', 'e', '9', '9', '9'}, -6, -6},
        Column{"string_empty", {8, 0, 0, 0}, -13, -13},
        // as the component's own conversion of an argument reads them
        Column{"string_hexadecimal", text("&HFF"), 255, -6},
        Column{"string_hexadecimal_of_32_bits", text("&hffffff00"), -6, 255},
        Column{"string_hexadecimal_too_long", text("&H100000000"), -6, -6},
        Column{"string_octal", text("\t&O17\r\n"), 15, -6},
        Column{"string_hexadecimal_without_digits", text("&H"), -13, -13},
        Column{"string_half_to_even", text("2.5E0"), 2, -6},
        Column{"string_nearly_nothing", text("0." + std::string(400, '0') + "1e9"), 0, -6},
        Column{"string_huge_in_spite_of_its_exponent", text("1" + std::string(400, '0') + "e-9"), -6, -6},
        Column{"string_no_number", text("nan(1)"), -13, -13},
        Column{"string_not_ascii",
               text("\xA0"
                    "6"),
               -13, -13},
        Column{"false", {11, 0, 0, 0}, 0, 255}, Column{"true", {11, 0, 0xFF, 0xFF}, 255, 0},
        Column{"byte_0", {17, 0, 0}, 0, 255}, Column{"byte_124", {17, 0, 0x7C}, 0x7C, 0x83},
        Column{"byte_255", {17, 0, 0xFF}, 255, 0}),
    [](const auto& row) { return std::string(row.param.name); });

struct Element {
    const char* name;
    ByteArray element0;
    bool has;
};

class FirstElement : public testing::TestWithParam<Element> {};

TEST_P(FirstElement, SaysWhetherTheCodeIsThere) {
    EXPECT_EQ(GlyphFile::parse(generatorWithElement0('A', GetParam().element0), "test").has('A'), GetParam().has);
}

INSTANTIATE_TEST_SUITE_P(Tags, FirstElement,
                         testing::Values(Element{"itself", {8, 0, 1, 0, 'A'}, true},
                                         Element{"another_character", {8, 0, 1, 0, 'B'}, false},
                                         Element{"longer_text", {8, 0, 2, 0, 'A', 'A'}, false},
                                         Element{"its_code", {2, 0, 65, 0}, false},
                                         Element{"its_code_as_a_byte", {17, 0, 65}, false},
                                         Element{"empty", {0, 0}, false}, Element{"null", {1, 0}, false}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(GlyphFile, AShortFileHasTheCodesThatItHas) {
    ByteArray bytes = generator();  // 26 bytes a record
    bytes.resize(26 * 66 + 25);     // whole up to code 65, one byte short of code 66
    const GlyphFile file = GlyphFile::parse(bytes, "test");
    EXPECT_TRUE(file.has('A'));
    EXPECT_FALSE(file.has('B'));
    EXPECT_EQ(file.count(), 66);
    EXPECT_EQ(raisedNumber([&] { file.column('B', 0, false); }), 9);
    EXPECT_EQ(GlyphFile::parse({}, "test").count(), 0);
}

TEST(GlyphFile, WhatFollowsTheLastRecordIsNotRead) {
    ByteArray bytes = generator();
    bytes.insert(bytes.end(), {0x63, 0x00});
    EXPECT_EQ(GlyphFile::parse(bytes, "test").count(), 256);
}

TEST(GlyphFile, AnUnknownTagIsNoGenerator) {
    for (const std::uint8_t tag : ByteArray{9, 10, 12, 16, 18}) {
        const ByteArray bytes = generatorWithColumn('A', 3, {tag, 0, 0});
        EXPECT_EQ(raisedNumber([&] { GlyphFile::parse(bytes, "test"); }), 321) << int{tag};
    }
    EXPECT_EQ(raisedNumber([] { GlyphFile::parse(ByteArray{17, 1, 0}, "test"); }), 321) << "the tag has 16 bits";
}

}  // namespace
}  // namespace opane::test
