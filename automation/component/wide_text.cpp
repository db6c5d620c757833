#include "automation/component/wide_text.h"

#include <new>

#include "shared/utf16.h"

namespace opane::component {

std::string textOf(std::basic_string_view<OLECHAR> text) {
    // Unit by unit: on Windows a unit is a wchar_t, of the same width.
    return utf8Text(std::u16string(text.begin(), text.end()));
}

std::string textOf(BSTR text) {
    return textOf(std::basic_string_view<OLECHAR>(text, SysStringLen(text)));
}

std::basic_string<OLECHAR> wideText(const std::string& text) {
    const std::u16string wide = utf16Text(text);
    return {wide.begin(), wide.end()};
}

BSTR allocateString(const std::string& text) {
    const auto wide = wideText(text);
    const BSTR allocated = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    if (allocated == nullptr)
        throw std::bad_alloc();
    return allocated;
}

}  // namespace opane::component
