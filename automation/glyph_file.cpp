#include "automation/glyph_file.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <optional>

#include "platform/file.h"
#include "shared/number_in_text.h"
#include "shared/runtime_error.h"

namespace opane {
namespace {

class MemoryReader final : public ByteReader {
public:
    explicit MemoryReader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    std::size_t read(std::span<std::uint8_t> bytes) override {
        const auto next = rest_.first(std::min(bytes.size(), rest_.size()));
        std::copy(next.begin(), next.end(), bytes.begin());
        rest_ = rest_.subspan(next.size());
        return next.size();
    }

private:
    std::span<const std::uint8_t> rest_;
};

}  // namespace

/// Takes records from the front and keeps of each what is drawn; of the values only the one that it is at.
class GlyphFile::Parser {
public:
    Parser(ByteReader& source, const std::string& name) : source_(source), name_(name) {}

    /// The next record, of that code; nothing when the end has come before the record's.
    std::optional<Glyph> glyph(std::size_t code) {
        Glyph glyph;
        for (std::size_t element = 0; element < kGlyphElements; ++element) {
            if (!takeValue())
                return std::nullopt;
            if (element == 0)
                glyph.isPresent = tag_ == GlyphTag::string && text_ == std::string(1, static_cast<char>(code));
            else if (element >= 2)
                glyph.columns[element - 2] = column();
        }
        return glyph;
    }

private:
    bool fill(std::span<std::uint8_t> bytes) {
        while (!bytes.empty()) {
            if (rest_.empty())
                rest_ = std::span(chunk_).first(source_.read(chunk_));
            if (rest_.empty())
                return false;
            const auto next = rest_.first(std::min(bytes.size(), rest_.size()));
            std::copy(next.begin(), next.end(), bytes.begin());
            bytes = bytes.subspan(next.size());
            rest_ = rest_.subspan(next.size());
            taken_ += next.size();
        }
        return true;
    }

    /// A little-endian value of that type, kept as what it is counted in.
    template <typename Stored, typename Kept>
    bool take(Kept& kept) {
        std::array<std::uint8_t, sizeof(Stored)> bytes{};
        if (!fill(bytes))
            return false;
        if constexpr (std::endian::native == std::endian::big)
            std::reverse(bytes.begin(), bytes.end());
        kept = std::bit_cast<Stored>(bytes);
        return true;
    }

    bool takeText() {
        std::uint16_t length = 0;
        if (!take<std::uint16_t>(length))
            return false;
        text_.resize(length);
        return fill(std::span(reinterpret_cast<std::uint8_t*>(text_.data()), length));
    }

    bool takeValue() {
        std::uint16_t tag = 0;
        if (!take<std::uint16_t>(tag))
            return false;
        tag_ = static_cast<GlyphTag>(tag);
        switch (tag_) {
            case GlyphTag::empty:
            case GlyphTag::null:
                return true;
            case GlyphTag::int16:
            case GlyphTag::boolean:
                return take<std::int16_t>(integer_);
            case GlyphTag::int32:
                return take<std::int32_t>(integer_);
            case GlyphTag::currency:
                return take<std::int64_t>(integer_);
            case GlyphTag::byte:
                return take<std::uint8_t>(integer_);
            case GlyphTag::float32:
                return take<float>(real_);
            case GlyphTag::float64:
            case GlyphTag::date:
                return take<double>(real_);
            case GlyphTag::string:
                return takeText();
        }
        throw RuntimeError(ErrorNumber::invalidFileFormat,
                           "\"" + name_ + "\" is no character generator: type tag " + std::to_string(tag) +
                               " at byte " + std::to_string(taken_ - sizeof tag) + "; expected 0 to 8, 11 or 17");
    }

    /// A 32-bit integer by rounding; too large outside its range and for what is no number.
    static Column rounded(long double value) {
        const auto integer = roundedTo<std::int32_t>(value);
        return integer ? Column{Column::Kind::integer, *integer} : Column{Column::Kind::tooLarge, 0};
    }

    static Column numberOf(std::string_view text) {
        const NumberInText read = numberInText(text);
        switch (read.kind) {
            case NumberInText::Kind::none:
                return {Column::Kind::noNumber, 0};
            case NumberInText::Kind::tooLarge:
                return {Column::Kind::tooLarge, 0};
            case NumberInText::Kind::bits:
                return {Column::Kind::integer, static_cast<std::int32_t>(static_cast<std::uint32_t>(read.value))};
            case NumberInText::Kind::number:
                break;
        }
        return rounded(read.value);
    }

    /// The column of the value that was taken last.
    Column column() const {
        switch (tag_) {
            case GlyphTag::empty:
                return {};
            case GlyphTag::null:
                return {Column::Kind::null, 0};
            case GlyphTag::float32:
            case GlyphTag::float64:
            case GlyphTag::date:
                return rounded(real_);
            case GlyphTag::currency:  // exact to the last of its units for all that is near a byte
                return {Column::Kind::integer, static_cast<std::int64_t>(roundedHalfToEven(integer_ / 10000.0L))};
            case GlyphTag::string:
                return numberOf(text_);
            case GlyphTag::boolean:
                return {Column::Kind::byte, integer_ != 0 ? 255 : 0};
            case GlyphTag::byte:
                return {Column::Kind::byte, integer_};
            case GlyphTag::int16:
            case GlyphTag::int32:
                break;
        }
        return {Column::Kind::integer, integer_};
    }

    ByteReader& source_;
    const std::string& name_;
    std::array<std::uint8_t, 16384> chunk_;
    std::span<const std::uint8_t> rest_;  // of the chunk
    std::size_t taken_ = 0;

    // The value that was taken last; the member that its tag asks for.
    GlyphTag tag_ = GlyphTag::empty;
    std::int64_t integer_ = 0;
    double real_ = 0;
    std::string text_;
};

GlyphFile GlyphFile::read(const std::string& path) {
    return parse(*openToRead(path), path);
}

GlyphFile GlyphFile::parse(std::span<const std::uint8_t> bytes, const std::string& name) {
    MemoryReader reader(bytes);
    return parse(reader, name);
}

GlyphFile GlyphFile::parse(ByteReader& bytes, const std::string& name) {
    GlyphFile file;
    Parser parser(bytes, name);
    while (file.glyphs_.size() < kGlyphRecords) {
        const auto glyph = parser.glyph(file.glyphs_.size());
        if (!glyph)
            break;
        file.glyphs_.push_back(*glyph);
    }
    return file;
}

bool GlyphFile::has(std::uint8_t code) const {
    return code < glyphs_.size() && glyphs_[code].isPresent;
}

int GlyphFile::count() const {
    int codes = 0;
    for (int code = 0; code < kGlyphRecords; ++code)
        codes += has(static_cast<std::uint8_t>(code)) ? 1 : 0;
    return codes;
}

std::uint8_t GlyphFile::column(std::uint8_t code, int column, bool inverted) const {
    const std::string where = "glyph column " + std::to_string(column) + " of character code " + std::to_string(code);
    if (code >= glyphs_.size() || column < 0 || column >= kGlyphColumns)
        throw RuntimeError(ErrorNumber::subscript, where + " is not in the generator");
    const Column& stored = glyphs_[code].columns[static_cast<std::size_t>(column)];
    switch (stored.kind) {
        case Column::Kind::null:
            throw RuntimeError(ErrorNumber::invalidNull, where + " is null");
        case Column::Kind::noNumber:
            throw RuntimeError(ErrorNumber::typeMismatch, where + " is a text that is no number");
        case Column::Kind::tooLarge:
            throw RuntimeError(ErrorNumber::overflow, where + " lies outside 0 to 255");
        case Column::Kind::integer:
        case Column::Kind::byte:
            break;
    }
    std::int64_t integer = stored.value;
    if (inverted)
        integer = stored.kind == Column::Kind::byte ? 255 - integer : -1 - integer;
    if (integer < 0 || integer > 255)
        throw RuntimeError(ErrorNumber::overflow, where + (inverted ? " complemented is " : " is ") +
                                                      std::to_string(integer) + "; a column byte holds 0 to 255");
    return static_cast<std::uint8_t>(integer);
}

}  // namespace opane
