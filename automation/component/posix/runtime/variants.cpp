// Variants and their conversion. Numbers go through long double, which holds every 64-bit integer and every double.

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>

#include "automation/component/variant_number.h"
#include "opane/component_runtime.h"
#include "shared/letter_case.h"
#include "shared/number_in_text.h"

namespace {

using opane::NumberInText;
using opane::component::withNumber;
using Number = long double;

/// The characters of a text; one that is not ASCII becomes '?'.
std::string plainText(BSTR text) {
    std::string plain;
    for (UINT i = 0; i < SysStringLen(text); ++i)
        plain += text[i] < 0x80 ? static_cast<char>(text[i]) : '?';
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

/// The number of a value that is not by reference.
NumberInText numberOf(const VARIANT& value) {
    if (value.vt == VT_BSTR)
        return opane::numberInText(plainText(value.bstrVal));
    NumberInText number{value.vt == VT_EMPTY ? NumberInText::Kind::number : NumberInText::Kind::none};
    withNumber(value, value.vt, [&number](auto member) {
        number = {NumberInText::Kind::number, static_cast<Number>(member)};
    });
    return number;
}

HRESULT truthOf(const VARIANT& value, VARIANT_BOOL& truth) {
    const std::string plain = value.vt == VT_BSTR ? plainText(value.bstrVal) : "";
    const auto is = [text = opane::withoutBlanks(plain)](std::string_view word) {
        return opane::isSameName(text, word);
    };
    const bool isTrue = is("true") || is("#true#");
    const NumberInText number =
        isTrue || is("false") || is("#false#") ? NumberInText{NumberInText::Kind::number} : numberOf(value);
    truth = isTrue || number.value != 0 ? VARIANT_TRUE : VARIANT_FALSE;
    return resultOf(number);
}

HRESULT textOf(const VARIANT& value, BSTR& text) {
    if (value.vt == VT_BSTR) {
        text = SysAllocStringLen(value.bstrVal, SysStringLen(value.bstrVal));
        return text == nullptr ? E_OUTOFMEMORY : S_OK;
    }
    char digits[64] = "";
    char* end = digits;
    const bool isNumber = withNumber(value, value.vt, [&](auto member) {
        if constexpr (std::is_floating_point_v<decltype(member)>)  // a zero without the sign that it may have
            end = std::to_chars(digits, std::end(digits), member == 0 ? 0 : static_cast<double>(member),
                                std::chars_format::general, sizeof member == sizeof(float) ? 7 : 15)
                      .ptr;
        else
            end = std::to_chars(digits, std::end(digits), member).ptr;
    });
    if (!isNumber && value.vt != VT_EMPTY)
        return DISP_E_TYPEMISMATCH;
    std::replace(digits, end, 'e', 'E');
    OLECHAR units[sizeof digits];
    std::copy(digits, end, units);
    text = SysAllocStringLen(units, static_cast<UINT>(end - digits));
    return text == nullptr ? E_OUTOFMEMORY : S_OK;
}

template <typename Value>
HRESULT store(const NumberInText& number, Value& target) {
    using Limits = std::numeric_limits<Value>;
    Number value = number.value;
    if constexpr (std::is_floating_point_v<Value>) {
        if (std::isfinite(value) && std::fabs(value) > static_cast<Number>(Limits::max()))
            return DISP_E_OVERFLOW;
        target = static_cast<Value>(value);
    } else {
        // Bits that fill the type are its bits: &HFFFF is -1 in 16 of them.
        constexpr auto kAllBits = static_cast<Number>(std::numeric_limits<std::make_unsigned_t<Value>>::max());
        if (number.kind == NumberInText::Kind::bits && sizeof(Value) > 1 &&
            value > static_cast<Number>(Limits::max()) && value <= kAllBits)
            value -= kAllBits + 1;
        const auto integer = opane::roundedTo<Value>(value);
        if (!integer)
            return DISP_E_OVERFLOW;
        target = *integer;
    }
    return S_OK;
}

HRESULT convert(VARIANT& target, const VARIANT& source, VARTYPE type) {
    if (type == VT_BSTR)
        return textOf(source, target.bstrVal);
    if (type == VT_BOOL)
        return truthOf(source, target.boolVal);
    const NumberInText number = numberOf(source);
    HRESULT result = resultOf(number);
    if (FAILED(result))
        return result;
    result = DISP_E_BADVARTYPE;
    withNumber(target, type, [&](auto& member) { result = store(number, member); });
    return result;
}

/// The value that a reference points to, borrowed; not for a reference to a variant.
HRESULT follow(const VARIANT& reference, VARIANT& value) {
    value.vt = static_cast<VARTYPE>(reference.vt & ~VT_BYREF);
    if (withNumber(value, value.vt, [&](auto& member) { std::memcpy(&member, reference.byref, sizeof member); }))
        return S_OK;
    switch (value.vt) {
        case VT_ERROR:
            value.scode = *reference.pscode;
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
