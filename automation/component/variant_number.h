#pragma once

#include "opane/component_runtime.h"

namespace opane::component {

/// Calls with the member of a variant that holds a number of that type. Truth values and dates are numbers too.
/// @return false, and nothing has been called, when the type is none of a number
template <typename Variant, typename Use>
bool withNumber(Variant& variant, VARTYPE type, Use use) {
    switch (type) {
        case VT_I1:
            return use(variant.cVal), true;
        case VT_UI1:
            return use(variant.bVal), true;
        case VT_I2:
        case VT_BOOL:
            return use(variant.iVal), true;
        case VT_UI2:
            return use(variant.uiVal), true;
        case VT_I4:
        case VT_INT:
            return use(variant.lVal), true;
        case VT_UI4:
        case VT_UINT:
            return use(variant.ulVal), true;
        case VT_I8:
            return use(variant.llVal), true;
        case VT_UI8:
            return use(variant.ullVal), true;
        case VT_R4:
            return use(variant.fltVal), true;
        case VT_R8:
        case VT_DATE:
            return use(variant.dblVal), true;
        default:
            return false;
    }
}

}  // namespace opane::component
