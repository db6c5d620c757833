#include "shared/utf8.h"

#include <cstdint>

namespace opane {
namespace {

struct Sequence {
    char32_t character;
    std::size_t bytes;
};

std::uint8_t byteAt(std::string_view text, std::size_t position) {
    return static_cast<std::uint8_t>(text[position]);
}

/// The sequence that starts at position; one invalid byte when none does.
Sequence sequenceAt(std::string_view text, std::size_t position) {
    constexpr Sequence kInvalid{kInvalidCharacter, 1};
    const std::uint8_t lead = byteAt(text, position);
    if (lead < 0x80)
        return {lead, 1};

    std::size_t bytes = 0;
    char32_t character = 0;
    char32_t smallest = 0;
    if ((lead & 0xE0) == 0xC0) {
        bytes = 2, character = lead & 0x1FU, smallest = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        bytes = 3, character = lead & 0x0FU, smallest = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        bytes = 4, character = lead & 0x07U, smallest = 0x1'0000;
    } else {
        return kInvalid;
    }
    if (text.size() - position < bytes)
        return kInvalid;
    for (std::size_t i = 1; i < bytes; ++i) {
        const std::uint8_t next = byteAt(text, position + i);
        if ((next & 0xC0) != 0x80)
            return kInvalid;
        character = (character << 6) | (next & 0x3FU);
    }
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    if (character < smallest || surrogate || character > 0x10'FFFF)
        return kInvalid;
    return {character, bytes};
}

}  // namespace

std::u32string decodeUtf8(std::string_view text) {
    std::u32string characters;
    for (std::size_t position = 0; position < text.size();) {
        const Sequence sequence = sequenceAt(text, position);
        characters.push_back(sequence.character);
        position += sequence.bytes;
    }
    return characters;
}

void appendUtf8(std::string& text, char32_t character) {
    const auto put = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (character < 0x80) {
        put(character);
    } else if (character < 0x800) {
        put(0xC0 | (character >> 6));
        put(0x80 | (character & 0x3F));
    } else if (character < 0x1'0000) {
        put(0xE0 | (character >> 12));
        put(0x80 | ((character >> 6) & 0x3F));
        put(0x80 | (character & 0x3F));
    } else {
        put(0xF0 | (character >> 18));
        put(0x80 | ((character >> 12) & 0x3F));
        put(0x80 | ((character >> 6) & 0x3F));
        put(0x80 | (character & 0x3F));
    }
}

bool isValidUtf8(std::string_view text) {
    return decodeUtf8(text).find(kInvalidCharacter) == std::u32string::npos;
}

void padRight(std::string& text, std::size_t characters) {
    const std::size_t length = decodeUtf8(text).size();
    if (length < characters)
        text.append(characters - length, ' ');
}

}  // namespace opane
