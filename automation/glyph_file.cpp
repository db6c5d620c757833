#include "automation/glyph_file.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <utility>

#include "platform/file.h"
#include "shared/runtime_error.h"
#include "shared/screen_geometry.h"

namespace opane {
namespace {

/// The longest file that 256 records can make: every element a string of 65535 characters behind its tag and length.
constexpr std::size_t kLongestFile = std::size_t{kGlyphRecords} * kGlyphElements * (2 + 2 + 65535);

/// Takes little-endian values from the front of the bytes; what is not there gives nothing.
class Reader {
public:
    Reader(std::span<const std::uint8_t> bytes, const std::string& name)
        : rest_(bytes), size_(bytes.size()), name_(name) {}

    std::optional<GlyphRecord> record() {
        GlyphRecord record;
        for (GlyphValue& element : record) {
            auto value = taggedValue();
            if (!value)
                return std::nullopt;
            element = std::move(*value);
        }
        return record;
    }

private:
    template <typename Unsigned>
    std::optional<Unsigned> number() {
        if (rest_.size() < sizeof(Unsigned))
            return std::nullopt;
        Unsigned value = 0;
        for (std::size_t i = sizeof(Unsigned); i-- > 0;)
            value = static_cast<Unsigned>((static_cast<std::uint64_t>(value) << 8) | rest_[i]);
        rest_ = rest_.subspan(sizeof(Unsigned));
        return value;
    }

    /// The next bytes of that many as a number of another type with the same width.
    template <typename Unsigned, typename Stored, typename Wide>
    std::optional<GlyphValue> value(GlyphTag tag) {
        const auto bits = number<Unsigned>();
        if (!bits)
            return std::nullopt;
        return GlyphValue{tag, Wide{std::bit_cast<Stored>(*bits)}};
    }

    std::optional<GlyphValue> text() {
        const auto length = number<std::uint16_t>();
        if (!length || rest_.size() < *length)
            return std::nullopt;
        std::string characters(rest_.begin(), rest_.begin() + *length);
        rest_ = rest_.subspan(*length);
        return GlyphValue{GlyphTag::string, std::move(characters)};
    }

    std::optional<GlyphValue> taggedValue() {
        const auto tag = number<std::uint16_t>();
        if (!tag)
            return std::nullopt;
        switch (static_cast<GlyphTag>(*tag)) {
            case GlyphTag::empty:
            case GlyphTag::null:
                return GlyphValue{static_cast<GlyphTag>(*tag), {}};
            case GlyphTag::int16:
                return value<std::uint16_t, std::int16_t, std::int64_t>(GlyphTag::int16);
            case GlyphTag::int32:
                return value<std::uint32_t, std::int32_t, std::int64_t>(GlyphTag::int32);
            case GlyphTag::float32:
                return value<std::uint32_t, float, double>(GlyphTag::float32);
            case GlyphTag::float64:
                return value<std::uint64_t, double, double>(GlyphTag::float64);
            case GlyphTag::currency:
                return value<std::uint64_t, std::int64_t, std::int64_t>(GlyphTag::currency);
            case GlyphTag::date:
                return value<std::uint64_t, double, double>(GlyphTag::date);
            case GlyphTag::string:
                return text();
            case GlyphTag::boolean:
                return value<std::uint16_t, std::int16_t, std::int64_t>(GlyphTag::boolean);
            case GlyphTag::byte:
                return value<std::uint8_t, std::uint8_t, std::int64_t>(GlyphTag::byte);
        }
        throw RuntimeError(ErrorNumber::invalidFileFormat, "\"" + name_ + "\" is no character generator: type tag " +
                                                               std::to_string(*tag) + " at byte " +
                                                               std::to_string(size_ - rest_.size() - sizeof *tag) +
                                                               "; expected 0 to 8, 11 or 17");
    }

    std::span<const std::uint8_t> rest_;
    std::size_t size_;
    const std::string& name_;
};

/// Rounds to the nearest integer, halves to even, without touching the rounding mode.
double roundedHalfToEven(double value) {
    const double floor = std::floor(value);
    const double fraction = value - floor;
    if (fraction != 0.5)
        return fraction < 0.5 ? floor : floor + 1;
    return std::fmod(floor, 2) == 0 ? floor : floor + 1;
}

/// A 32-bit integer by rounding; @throws RuntimeError 6 outside its range and for what is no number.
std::int64_t rounded(double value, const std::string& where) {
    const double integer = roundedHalfToEven(value);
    if (!(integer >= std::numeric_limits<std::int32_t>::min() && integer <= std::numeric_limits<std::int32_t>::max()))
        throw RuntimeError(ErrorNumber::overflow, where + " lies outside 0 to 255");
    return static_cast<std::int64_t>(integer);
}

/// 1/10000 units, rounded as roundedHalfToEven does but exactly: a double would lose the last digits.
std::int64_t roundedCurrency(std::int64_t units) {
    constexpr std::int64_t kOne = 10000;
    std::int64_t whole = units / kOne;
    std::int64_t rest = units % kOne;
    if (rest < 0) {
        rest += kOne;
        --whole;
    }
    const bool up = rest > kOne / 2 || (rest == kOne / 2 && whole % 2 != 0);
    return up ? whole + 1 : whole;
}

double numberInText(const std::string& text, const std::string& where) {
    const auto first = text.find_first_not_of(' ');
    const auto last = text.find_last_not_of(' ');
    double value = 0;
    if (first != std::string::npos) {
        const char* const end = text.data() + last + 1;
        const char* begin = text.data() + first;
        if (*begin == '+' && end - begin > 1 && begin[1] != '-')
            ++begin;
        const auto [rest, error] = std::from_chars(begin, end, value);
        if (error == std::errc::result_out_of_range)
            throw RuntimeError(ErrorNumber::overflow, where + " lies outside 0 to 255");
        if (error == std::errc{} && rest == end && std::isfinite(value))
            return value;
    }
    throw RuntimeError(ErrorNumber::typeMismatch, where + " is a text that is no number");
}

/// The integer that a column's value stands for, before it is complemented or narrowed.
std::int64_t columnInteger(const GlyphValue& value, const std::string& where) {
    switch (value.tag) {
        case GlyphTag::empty:
            return 0;
        case GlyphTag::null:
            throw RuntimeError(ErrorNumber::invalidNull, where + " is null");
        case GlyphTag::float32:
        case GlyphTag::float64:
        case GlyphTag::date:
            return rounded(std::get<double>(value.content), where);
        case GlyphTag::currency:
            return roundedCurrency(std::get<std::int64_t>(value.content));
        case GlyphTag::string:
            return rounded(numberInText(std::get<std::string>(value.content), where), where);
        case GlyphTag::boolean:
            return std::get<std::int64_t>(value.content) != 0 ? 255 : 0;
        case GlyphTag::int16:
        case GlyphTag::int32:
        case GlyphTag::byte:
            break;
    }
    return std::get<std::int64_t>(value.content);
}

}  // namespace

GlyphFile GlyphFile::read(const std::string& path) {
    return parse(readFile(path, kLongestFile), path);
}

GlyphFile GlyphFile::parse(std::span<const std::uint8_t> bytes, const std::string& name) {
    GlyphFile file;
    Reader reader(bytes, name);
    while (file.records_.size() < kGlyphRecords) {
        auto record = reader.record();
        if (!record)
            break;
        file.records_.push_back(std::move(*record));
    }
    return file;
}

bool GlyphFile::has(std::uint8_t code) const {
    if (code >= records_.size() || records_[code].front().tag != GlyphTag::string)
        return false;
    const auto& text = std::get<std::string>(records_[code].front().content);
    return text.size() == 1 && static_cast<std::uint8_t>(text.front()) == code;
}

int GlyphFile::count() const {
    int codes = 0;
    for (int code = 0; code < kGlyphRecords; ++code)
        codes += has(static_cast<std::uint8_t>(code)) ? 1 : 0;
    return codes;
}

std::uint8_t GlyphFile::column(std::uint8_t code, int column, bool inverted) const {
    const std::string where = "glyph column " + std::to_string(column) + " of character code " + std::to_string(code);
    if (code >= records_.size() || column < 0 || column >= kGlyphColumns)
        throw RuntimeError(ErrorNumber::subscript, where + " is not in the generator");
    const GlyphValue& value = records_[code][static_cast<std::size_t>(column) + 2];

    std::int64_t integer = columnInteger(value, where);
    if (inverted) {
        const bool ofOneByte = value.tag == GlyphTag::byte || value.tag == GlyphTag::boolean;
        integer = ofOneByte ? 255 - integer : -1 - integer;
    }
    if (integer < 0 || integer > 255)
        throw RuntimeError(ErrorNumber::overflow, where + (inverted ? " complemented is " : " is ") +
                                                      std::to_string(integer) + "; a column byte holds 0 to 255");
    return static_cast<std::uint8_t>(integer);
}

}  // namespace opane
