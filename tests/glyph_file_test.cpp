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

constexpr int kOverflow = -6;
constexpr int kTypeMismatch = -13;
constexpr int kNull = -94;

/// A column's value, or the error that it raises as a negative number.
int columnOf(const GlyphFile& file, bool inverted) {
    int value = 0;
    const int raised = raisedNumber([&] { value = file.column('A', 3, inverted); });
    return raised != 0 ? -raised : value;
}

struct ColumnCase {
    const char* name;
    ByteArray tagged;
    int plain, inverted;
};

class GlyphColumn : public testing::TestWithParam<ColumnCase> {};

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
    testing::Values(ColumnCase{"empty", {0, 0}, 0, kOverflow}, ColumnCase{"null", {1, 0}, kNull, kNull},
                    ColumnCase{"int16_0", {2, 0, 0, 0}, 0, kOverflow},
                    ColumnCase{"int16_255", {2, 0, 0xFF, 0x00}, 255, kOverflow},
                    ColumnCase{"int16_256", {2, 0, 0x00, 0x01}, kOverflow, kOverflow},
                    ColumnCase{"int16_minus_1", {2, 0, 0xFF, 0xFF}, kOverflow, 0},
                    ColumnCase{"int16_minus_256", {2, 0, 0x00, 0xFF}, kOverflow, 255},
                    ColumnCase{"int16_minus_257", {2, 0, 0xFF, 0xFE}, kOverflow, kOverflow},
                    ColumnCase{"int32_124", {3, 0, 0x7C, 0, 0, 0}, 124, kOverflow},
                    ColumnCase{"int32_minus_125", {3, 0, 0x83, 0xFF, 0xFF, 0xFF}, kOverflow, 124},
                    ColumnCase{"int32_smallest", {3, 0, 0, 0, 0, 0x80}, kOverflow, kOverflow},
                    ColumnCase{"float32_half_to_even_down", float32(2.5F), 2, kOverflow},
                    ColumnCase{"float32_half_to_even_up", float32(3.5F), 4, kOverflow},
                    ColumnCase{"float32_minus_1", float32(-1.0F), kOverflow, 0},
                    ColumnCase{"float64_minus_half", float64(-0.5), 0, kOverflow},
                    ColumnCase{"float64_255_4", float64(255.4), 255, kOverflow},
                    ColumnCase{"float64_255_5", float64(255.5), kOverflow, kOverflow},
                    ColumnCase{"float64_minus_256_5", float64(-256.5), kOverflow, 255},
                    ColumnCase{"float64_huge", float64(1e300), kOverflow, kOverflow},
                    ColumnCase{"float64_no_number", float64(std::nan("")), kOverflow, kOverflow},
                    ColumnCase{"currency_0_5", currency(5000), 0, kOverflow},
                    ColumnCase{"currency_1_5", currency(15000), 2, kOverflow},
                    ColumnCase{"currency_minus_1_4999", currency(-14999), kOverflow, 0},
                    ColumnCase{"currency_largest", currency(std::numeric_limits<std::int64_t>::max()), kOverflow,
                               kOverflow},
                    ColumnCase{"date_17", float64(17.25, 7), 17, kOverflow},
                    ColumnCase{"string_65", {8, 0, 2, 0, '6', '5'}, 65, kOverflow},
                    ColumnCase{"string_padded_minus_2", {8, 0, 4, 0, ' ', '-', '2', ' '}, kOverflow, 1},
                    ColumnCase{"string_plus_7", {8, 0, 2, 0, '+', '7'}, 7, kOverflow},
                    ColumnCase{"string_plus_minus_7", {8, 0, 3, 0, '+', '-', '7'}, kTypeMismatch, kTypeMismatch},
                    ColumnCase{"string_word", {8, 0, 2, 0, '6', 'x'}, kTypeMismatch, kTypeMismatch},
                    ColumnCase{"string_huge", {8, 0, 5, 0, '1', 'e', '9', '9', '9'}, kOverflow, kOverflow},
                    ColumnCase{"string_empty", {8, 0, 0, 0}, kTypeMismatch, kTypeMismatch},
                    // as the component's own conversion of an argument reads them
                    ColumnCase{"string_hexadecimal", text("&HFF"), 255, kOverflow},
                    ColumnCase{"string_hexadecimal_of_32_bits", text("&hffffff00"), kOverflow, 255},
                    ColumnCase{"string_hexadecimal_too_long", text("&H100000000"), kOverflow, kOverflow},
                    ColumnCase{"string_octal", text("\t&O17\r\n"), 15, kOverflow},
                    ColumnCase{"string_hexadecimal_without_digits", text("&H"), kTypeMismatch, kTypeMismatch},
                    ColumnCase{"string_half_to_even", text("2.5E0"), 2, kOverflow},
                    ColumnCase{"string_nearly_nothing", text("0." + std::string(400, '0') + "1e9"), 0, kOverflow},
                    ColumnCase{"string_huge_in_spite_of_its_exponent", text("1" + std::string(400, '0') + "e-9"),
                               kOverflow, kOverflow},
                    ColumnCase{"string_no_number", text("nan(1)"), kTypeMismatch, kTypeMismatch},
                    ColumnCase{"string_not_ascii",
                               text("\xA0"
                                    "6"),
                               kTypeMismatch, kTypeMismatch},
                    ColumnCase{"false", {11, 0, 0, 0}, 0, 255}, ColumnCase{"true", {11, 0, 0xFF, 0xFF}, 255, 0},
                    ColumnCase{"byte_0", {17, 0, 0}, 0, 255}, ColumnCase{"byte_124", {17, 0, 0x7C}, 0x7C, 0x83},
                    ColumnCase{"byte_255", {17, 0, 0xFF}, 255, 0}),
    [](const auto& row) { return std::string(row.param.name); });

struct ElementCase {
    const char* name;
    ByteArray element0;
    bool has;
};

class FirstElement : public testing::TestWithParam<ElementCase> {};

TEST_P(FirstElement, SaysWhetherTheCodeIsThere) {
    EXPECT_EQ(GlyphFile::parse(generatorWithElement0('A', GetParam().element0), "test").has('A'), GetParam().has);
}

INSTANTIATE_TEST_SUITE_P(Tags, FirstElement,
                         testing::Values(ElementCase{"itself", {8, 0, 1, 0, 'A'}, true},
                                         ElementCase{"another_character", {8, 0, 1, 0, 'B'}, false},
                                         ElementCase{"longer_text", {8, 0, 2, 0, 'A', 'A'}, false},
                                         ElementCase{"its_code", {2, 0, 65, 0}, false},
                                         ElementCase{"its_code_as_a_byte", {17, 0, 65}, false},
                                         ElementCase{"empty", {0, 0}, false}, ElementCase{"null", {1, 0}, false}),
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
