// Automation strings: a block of malloc that begins with 4 unused bytes and the length in bytes, so that the text lies
// at an address that fits every type; behind the text a zero unit that the length does not count.

#include <cstdlib>
#include <cstring>
#include <string>

#include "opane/component_runtime.h"

namespace {

constexpr std::size_t kBeforeText = 8;
constexpr UINT kMostUnits = 0x7FFF'FFF0U / sizeof(OLECHAR);

std::uint32_t* lengthOf(BSTR text) {
    return reinterpret_cast<std::uint32_t*>(text) - 1;
}

}  // namespace

BSTR SysAllocStringLen(LPCOLESTR text, UINT units) {
    if (units > kMostUnits)
        return nullptr;
    const std::size_t bytes = units * sizeof(OLECHAR);
    auto* const block = static_cast<char*>(std::malloc(kBeforeText + bytes + sizeof(OLECHAR)));
    if (block == nullptr)
        return nullptr;
    auto* const allocated = reinterpret_cast<BSTR>(block + kBeforeText);
    *lengthOf(allocated) = static_cast<std::uint32_t>(bytes);
    if (text != nullptr)
        std::memcpy(allocated, text, bytes);
    allocated[units] = u'\0';
    return allocated;
}

BSTR SysAllocString(LPCOLESTR text) {
    if (text == nullptr)
        return nullptr;
    const std::size_t units = std::char_traits<OLECHAR>::length(text);
    return units > kMostUnits ? nullptr : SysAllocStringLen(text, static_cast<UINT>(units));
}

void SysFreeString(BSTR text) {
    if (text != nullptr)
        std::free(reinterpret_cast<char*>(text) - kBeforeText);
}

UINT SysStringByteLen(BSTR text) {
    return text == nullptr ? 0 : *lengthOf(text);
}

UINT SysStringLen(BSTR text) {
    return SysStringByteLen(text) / static_cast<UINT>(sizeof(OLECHAR));
}
