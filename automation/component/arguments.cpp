#include "automation/component/arguments.h"

#include <cstring>
#include <exception>
#include <string>
#include <utility>

#include "automation/component/boundary.h"
#include "automation/component/variant_number.h"
#include "automation/component/wide_text.h"

namespace opane::component {
namespace {

constexpr VARTYPE kReferenceToVariant = VT_BYREF | VT_VARIANT;
constexpr const char* kNotWritable = "is a reference to a type that is not written to; expected a number or a text";

/// Whether an argument is written back through a reference to that type.
bool isWritten(VARTYPE type) {
    VARIANT any{};
    return type == VT_BSTR || (type != VT_DATE && withNumber(any, type, [](const auto&) {}));
}

std::string expectedText(VARTYPE type) {
    switch (type) {
        case VT_I2:
            return "a number from -32768 to 32767";
        case VT_I4:
            return "a number from -2147483648 to 2147483647";
        default:
            return "a text";
    }
}

/// What an argument is, for a message.
std::string description(const VARIANT& argument) {
    const auto type = static_cast<VARTYPE>(argument.vt & ~VT_BYREF);
    if (type == VT_NULL)
        return "Null";
    if (type == VT_DISPATCH || type == VT_UNKNOWN)
        return "an object";
    VARIANT text{};
    if (FAILED(VariantChangeTypeEx(&text, const_cast<VARIANT*>(&argument), LOCALE_USER_DEFAULT, 0, VT_BSTR)))
        return "of variant type " + std::to_string(argument.vt);
    const OwnedString owned(text.bstrVal);
    std::string result = textOf(owned.get());
    if (type == VT_BSTR) {
        result.insert(result.begin(), '"');
        result += '"';
    }
    return result;
}

bool isLeftOut(const VARIANT& argument) {
    return argument.vt == VT_ERROR && argument.scode == DISP_E_PARAMNOTFOUND;
}

bool isNullReference(const VARIANT& argument) {
    return (argument.vt & VT_BYREF) != 0 && argument.byref == nullptr;
}

}  // namespace

CallArguments::CallArguments(const Method& method, const DISPPARAMS& passed, LCID lcid, UINT* argumentError)
    : method_(method), lcid_(lcid), argumentError_(argumentError) {
    match(passed);
    for (std::size_t i = 0; i < method_.parameterCount; ++i)
        take(i, passed.rgvarg[places_[i].index]);
}

void CallArguments::match(const DISPPARAMS& passed) {
    const std::string name = method_.name;
    if (passed.cArgs != method_.parameterCount || passed.cNamedArgs > passed.cArgs)
        throw ComponentError(DISP_E_BADPARAMCOUNT, name + " takes " + std::to_string(method_.parameterCount) +
                                                       " arguments; " + std::to_string(passed.cArgs) + " were passed");
    if (passed.rgvarg == nullptr || (passed.cNamedArgs > 0 && passed.rgdispidNamedArgs == nullptr))
        throw ComponentError(E_POINTER, name + ": the array of arguments is a null pointer");
    std::array<bool, kMostParameters> given{};
    for (UINT index = 0; index < passed.cArgs; ++index) {
        // The named ones come first, each with its parameter's number; the others follow, the last parameter first.
        const DISPID position =
            index < passed.cNamedArgs ? passed.rgdispidNamedArgs[index] : static_cast<DISPID>(passed.cArgs - 1 - index);
        const auto parameter = static_cast<std::size_t>(position);
        if (position < 0 || parameter >= method_.parameterCount || given[parameter]) {
            if (argumentError_ != nullptr)
                *argumentError_ = index;
            std::string text = name + ": parameter ";
            text.append(std::to_string(position))
                .append(" of a named argument is given twice or unknown; it has 0 to ");
            throw ComponentError(DISP_E_PARAMNOTFOUND, text.append(std::to_string(method_.parameterCount - 1)));
        }
        given[parameter] = true;
        places_[parameter].index = index;
    }
}

void CallArguments::take(std::size_t position, VARIANT& passed) {
    const Parameter& parameter = method_.allParameters[position];
    VARIANT* argument = &passed;
    bool byReference = false;
    if (argument->vt == kReferenceToVariant && argument->pvarVal != nullptr) {
        argument = argument->pvarVal;
        byReference = true;
    }
    if (isNullReference(*argument))
        refuse(position, E_POINTER, "is a null reference");
    if (isLeftOut(*argument))
        refuse(position, DISP_E_PARAMNOTOPTIONAL, "is left out");
    const bool typed = (argument->vt & VT_BYREF) != 0;
    places_[position].variant = argument;
    places_[position].isVariantOfCaller = byReference && !typed;

    if (parameter.direction == Direction::out && typed && !isWritten(static_cast<VARTYPE>(argument->vt & ~VT_BYREF)))
        refuse(position, DISP_E_TYPEMISMATCH, kNotWritable);  // told before the call, not after it
    const HRESULT result = VariantChangeTypeEx(&values_[position], argument, lcid_, 0, parameter.type);
    if (FAILED(result))
        refuse(position, result, "is " + description(*argument) + "; expected " + expectedText(parameter.type));
}

void CallArguments::writeBack() {
    std::exception_ptr first;
    for (std::size_t i = 0; i < method_.parameterCount; ++i) {
        if (method_.allParameters[i].direction != Direction::out)
            continue;
        try {
            giveBack(i);
        } catch (...) {
            if (!first)
                first = std::current_exception();
        }
    }
    if (first)
        std::rethrow_exception(first);
}

void CallArguments::giveBack(std::size_t position) {
    VARIANT& value = values_[position];
    VARIANT& target = *places_[position].variant;
    if (places_[position].isVariantOfCaller) {
        VariantClear(&target);
        target = std::exchange(value, VARIANT{});
        return;
    }
    if ((target.vt & VT_BYREF) == 0)
        return;
    const auto type = static_cast<VARTYPE>(target.vt & ~VT_BYREF);
    if (!isWritten(type))  // an event of the host's has changed it since
        refuse(position, DISP_E_TYPEMISMATCH, kNotWritable);
    if (value.vt != type) {
        const HRESULT result = VariantChangeTypeEx(&value, &value, lcid_, 0, type);
        if (FAILED(result))
            refuse(position, result, "became " + description(value) + ", which the caller's type cannot hold");
    }
    if (type == VT_BSTR)
        SysFreeString(std::exchange(*target.pbstrVal, std::exchange(value, VARIANT{}).bstrVal));
    else
        withNumber(value, type, [&target](auto number) { std::memcpy(target.byref, &number, sizeof number); });
}

void CallArguments::refuse(std::size_t position, HRESULT code, const std::string& reason) const {
    if (argumentError_ != nullptr)
        *argumentError_ = places_[position].index;
    std::string text = method_.name;
    text.append(": argument ").append(std::to_string(position + 1)).append(", ");
    throw ComponentError(code, text.append(method_.allParameters[position].name).append(", ").append(reason));
}

}  // namespace opane::component
