// Variants and their conversion. Numbers go through long double, which holds every 64-bit integer and every double.

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <new>
#include <string>
#include <string_view>

#include "opane/component_runtime.h"
#include "shared/number_in_text.h"

namespace {

using opane::NumberInText;
using Number = long double;

template <typename Integer>
HRESULT storeInteger(Number value, Integer& target) {
    const Number integer = opane::roundedHalfToEven(value);
    if (!(integer >= static_cast<Number>(std::numeric_limits<Integer>::min()) &&
          integer <= static_cast<Number>(std::numeric_limits<Integer>::max())))
        return DISP_E_OVERFLOW;
    target = static_cast<Integer>(integer);
    return S_OK;
}

/// The characters of a text in lower case; one that is not ASCII becomes '?'.
std::string plainText(BSTR text) {
    std::string plain;
    for (UINT i = 0; i < SysStringLen(text); ++i) {
        const OLECHAR unit = text[i];
        const bool isUpper = unit >= u'A' && unit <= u'Z';
        plain += unit < 0x80 ? static_cast<char>(isUpper ? unit - u'A' + u'a' : unit) : '?';
    }
    return plain;
}

HRESULT resultOf(const NumberInText& read) {
    switch (read.kind) {
        case NumberInText::Kind::none:
            return DISP_E_TYPEMISMATCH;
        case NumberInText::Kind::tooLarge:
            return DISP_E_OVERFLOW;
        case NumberInText::Kind::number:
        case NumberInText::Kind::bits:
            break;
    }
    return S_OK;
}

/// The number of a value that is not by reference, and whether it stands for bits.
HRESULT numberOf(const VARIANT& value, Number& number, bool& isBits) {
    isBits = false;
    switch (value.vt) {
        case VT_EMPTY:
            number = 0;
            return S_OK;
        case VT_I1:
            number = value.cVal;
            return S_OK;
        case VT_UI1:
            number = value.bVal;
            return S_OK;
        case VT_I2:
        case VT_BOOL:
            number = value.iVal;
            return S_OK;
        case VT_UI2:
            number = value.uiVal;
            return S_OK;
        case VT_I4:
        case VT_INT:
            number = static_cast<Number>(value.lVal);
            return S_OK;
        case VT_UI4:
        case VT_UINT:
            number = static_cast<Number>(value.ulVal);
            return S_OK;
        case VT_I8:
            number = static_cast<Number>(value.llVal);
            return S_OK;
        case VT_UI8:
            number = static_cast<Number>(value.ullVal);
            return S_OK;
        case VT_R4:
            number = static_cast<Number>(value.fltVal);
            return S_OK;
        case VT_R8:
        case VT_DATE:
            number = static_cast<Number>(value.dblVal);
            return S_OK;
        case VT_BSTR: {
            const NumberInText read = opane::numberInText(plainText(value.bstrVal));
            number = read.value;
            isBits = read.kind == NumberInText::Kind::bits;
            return resultOf(read);
        }
        default:
            return DISP_E_TYPEMISMATCH;
    }
}

HRESULT truthOf(const VARIANT& value, VARIANT_BOOL& truth) {
    const std::string plain = value.vt == VT_BSTR ? plainText(value.bstrVal) : "";
    const std::string_view text = opane::withoutBlanks(plain);
    if (text == "true" || text == "#true#" || text == "false" || text == "#false#") {
        truth = text.find('t') <= 1 ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    }
    Number number = 0;
    bool isBits = false;
    const HRESULT result = numberOf(value, number, isBits);
    if (SUCCEEDED(result))
        truth = number != 0 ? VARIANT_TRUE : VARIANT_FALSE;
    return result;
}

HRESULT textOf(const VARIANT& value, BSTR& text) {
    if (value.vt == VT_BSTR) {
        text = SysAllocStringLen(value.bstrVal, SysStringLen(value.bstrVal));
        return text == nullptr ? E_OUTOFMEMORY : S_OK;
    }
    char digits[64] = "";
    char* end = digits;
    if (value.vt != VT_EMPTY) {
        Number number = 0;
        bool isBits = false;
        if (const HRESULT result = numberOf(value, number, isBits); FAILED(result))
            return result;
        if (number == 0)
            number = 0;  // without the sign that a real may have
        const bool isReal = value.vt == VT_R4 || value.vt == VT_R8 || value.vt == VT_DATE;
        const int significant = value.vt == VT_R4 ? 7 : 15;
        if (isReal)
            end = std::to_chars(digits, std::end(digits), static_cast<double>(number), std::chars_format::general,
                                significant)
                      .ptr;
        else if (value.vt == VT_UI8)
            end = std::to_chars(digits, std::end(digits), value.ullVal).ptr;
        else
            end = std::to_chars(digits, std::end(digits), static_cast<std::int64_t>(number)).ptr;
    }
    std::replace(digits, end, 'e', 'E');
    OLECHAR units[sizeof digits];
    std::copy(digits, end, units);
    text = SysAllocStringLen(units, static_cast<UINT>(end - digits));
    return text == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT convert(VARIANT& target, const VARIANT& source, VARTYPE type) {
    if (type == VT_BSTR)
        return textOf(source, target.bstrVal);
    if (type == VT_BOOL)
        return truthOf(source, target.boolVal);
    Number number = 0;
    bool isBits = false;
    if (const HRESULT result = numberOf(source, number, isBits); FAILED(result))
        return result;
    // Bits that fill the type are its bits: &HFFFF is -1 in 16 of them.
    if (isBits && type == VT_I2 && number > INT16_MAX && number <= UINT16_MAX)
        number -= UINT16_MAX + 1;
    if (isBits && (type == VT_I4 || type == VT_INT) && number > INT32_MAX)
        number -= static_cast<Number>(UINT32_MAX) + 1;
    switch (type) {
        case VT_I1:
            return storeInteger(number, target.cVal);
        case VT_UI1:
            return storeInteger(number, target.bVal);
        case VT_I2:
            return storeInteger(number, target.iVal);
        case VT_UI2:
            return storeInteger(number, target.uiVal);
        case VT_I4:
        case VT_INT:
            return storeInteger(number, target.lVal);
        case VT_UI4:
        case VT_UINT:
            return storeInteger(number, target.ulVal);
        case VT_I8:
            return storeInteger(number, target.llVal);
        case VT_UI8:
            return storeInteger(number, target.ullVal);
        case VT_R4:
            if (std::isfinite(number) && std::fabs(number) > static_cast<Number>(std::numeric_limits<float>::max()))
                return DISP_E_OVERFLOW;
            target.fltVal = static_cast<float>(number);
            return S_OK;
        case VT_R8:
        case VT_DATE:
            target.dblVal = static_cast<double>(number);
            return S_OK;
        default:
            return DISP_E_BADVARTYPE;
    }
}

/// The value that a reference points to, borrowed; not for a reference to a variant.
HRESULT follow(const VARIANT& reference, VARIANT& value) {
    value.vt = static_cast<VARTYPE>(reference.vt & ~VT_BYREF);
    switch (value.vt) {
        case VT_I1:
        case VT_UI1:
            value.bVal = *reference.pbVal;
            return S_OK;
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            value.iVal = *reference.piVal;
            return S_OK;
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_R4:
        case VT_ERROR:
            value.lVal = *reference.plVal;
            return S_OK;
        case VT_I8:
        case VT_UI8:
        case VT_R8:
        case VT_DATE:
            value.llVal = *reference.pllVal;
            return S_OK;
        case VT_BSTR:
        case VT_DISPATCH:
        case VT_UNKNOWN:
            value.byref = *static_cast<void**>(reference.byref);
            return S_OK;
        default:
            return DISP_E_BADVARTYPE;
    }
}

/// The value itself, behind any references; borrowed.
HRESULT behindReferences(const VARIANT& variant, VARIANT& value) {
    const VARIANT* inner = &variant;
    if (inner->vt == (VT_BYREF | VT_VARIANT)) {
        if (inner->pvarVal == nullptr)
            return E_INVALIDARG;
        inner = inner->pvarVal;
        if (inner->vt == (VT_BYREF | VT_VARIANT))
            return DISP_E_BADVARTYPE;  // it may lead back to itself
    }
    if ((inner->vt & VT_BYREF) == 0) {
        value = *inner;
        return S_OK;
    }
    return inner->byref == nullptr ? E_INVALIDARG : follow(*inner, value);
}

}  // namespace

void VariantInit(VARIANT* variant) {
    *variant = VARIANT{};
}

HRESULT VariantClear(VARIANT* variant) {
    if (variant == nullptr)
        return E_INVALIDARG;
    if (variant->vt == VT_BSTR)
        SysFreeString(variant->bstrVal);
    if ((variant->vt == VT_DISPATCH || variant->vt == VT_UNKNOWN) && variant->punkVal != nullptr)
        variant->punkVal->Release();
    *variant = VARIANT{};
    return S_OK;
}

HRESULT VariantCopyInd(VARIANT* target, const VARIANT* source) {
    if (target == nullptr || source == nullptr)
        return E_INVALIDARG;
    VARIANT value{};
    const HRESULT result = behindReferences(*source, value);
    return FAILED(result) ? result : VariantCopy(target, &value);
}

HRESULT VariantCopy(VARIANT* target, const VARIANT* source) {
    if (target == nullptr || source == nullptr)
        return E_INVALIDARG;
    VARIANT copy = *source;
    if (copy.vt == VT_BSTR) {
        copy.bstrVal = SysAllocStringLen(copy.bstrVal, SysStringLen(copy.bstrVal));
        if (copy.bstrVal == nullptr)
            return E_OUTOFMEMORY;
    }
    if ((copy.vt == VT_DISPATCH || copy.vt == VT_UNKNOWN) && copy.punkVal != nullptr)
        copy.punkVal->AddRef();
    VariantClear(target);
    *target = copy;
    return S_OK;
}

HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT flags, VARTYPE type) {
    return VariantChangeTypeEx(target, source, LOCALE_USER_DEFAULT, flags, type);
}

HRESULT VariantChangeTypeEx(VARIANT* target, const VARIANT* source, LCID /*lcid*/, USHORT /*flags*/, VARTYPE type) try {
    if (target == nullptr || source == nullptr)
        return E_INVALIDARG;
    VARIANT value{};
    if (const HRESULT result = behindReferences(*source, value); FAILED(result))
        return result;
    VARIANT converted{};
    converted.vt = type;
    if (const HRESULT result = convert(converted, value, type); FAILED(result))
        return result;
    VariantClear(target);
    *target = converted;
    return S_OK;
} catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
}
