#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "opane/component_runtime.h"

namespace opane::component {

struct FreeString {
    void operator()(OLECHAR* text) const { SysFreeString(text); }
};
/// An automation string that is freed at the end.
using OwnedString = std::unique_ptr<OLECHAR, FreeString>;

/// Text of the component runtime in UTF-8; a null string is empty.
std::string textOf(std::basic_string_view<OLECHAR> text);
std::string textOf(BSTR text);

/// UTF-8 as the component runtime takes it.
std::basic_string<OLECHAR> wideText(const std::string& text);

/// A new automation string, to be freed by whom it is given to.
/// @throws std::bad_alloc
BSTR allocateString(const std::string& text);

}  // namespace opane::component
