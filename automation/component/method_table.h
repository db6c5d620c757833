#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "opane/OPaneCommDLL.h"

namespace opane::component {

enum class Direction { in, out };

/// One argument of a method: what a method reads (in) or also writes (out).
struct Parameter {
    const char* name;
    Direction direction;
    VARTYPE type;  ///< VT_I2, VT_I4 or VT_BSTR
};

inline constexpr std::size_t kMostParameters = 7;

/// One method of the dual interface.
struct Method {
    const char* name;
    DISPID identifier;
    std::array<Parameter, kMostParameters> allParameters;
    std::size_t parameterCount;
    /// Calls it through its slot with one variant for each parameter, each of the parameter's type.
    HRESULT (*call)(_clsOPaneCommDLL& object, VARIANT* values);

    std::span<const Parameter> parameters() const { return {allParameters.data(), parameterCount}; }
};

/// The methods in the order of their slots. Names, identifiers, types and directions for every way of calling come from
/// here; the types follow from the interface itself.
std::span<const Method> methods();

/// Null when there is none. Names are compared without regard to letter case.
const Method* methodNamed(std::basic_string_view<OLECHAR> name);
const Method* methodWith(DISPID identifier);

/// The position of a parameter by its name in any letter case, DISPID_UNKNOWN when the method has none such.
DISPID parameterNamed(const Method& method, std::basic_string_view<OLECHAR> name);

}  // namespace opane::component
