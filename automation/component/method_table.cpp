#include "automation/component/method_table.h"

#include <algorithm>
#include <utility>

#include "shared/letter_case.h"

namespace opane::component {
namespace {

/// How an argument of the interface stands in a variant.
template <typename Argument>
struct Passing;

template <>
struct Passing<SHORT*> {
    static constexpr VARTYPE kType = VT_I2;
    static SHORT* from(VARIANT& value) { return &value.iVal; }
};
template <>
struct Passing<LONG*> {
    static constexpr VARTYPE kType = VT_I4;
    static LONG* from(VARIANT& value) { return &value.lVal; }
};
template <>
struct Passing<BSTR> {
    static constexpr VARTYPE kType = VT_BSTR;
    static BSTR from(VARIANT& value) { return value.bstrVal; }
};
template <>
struct Passing<BSTR*> {
    static constexpr VARTYPE kType = VT_BSTR;
    static BSTR* from(VARIANT& value) { return &value.bstrVal; }
};

/// A parameter as a row of the table gives it.
struct Named {
    const char* name;
    Direction direction;
};
constexpr Named in(const char* name) {
    return {name, Direction::in};
}
constexpr Named out(const char* name) {
    return {name, Direction::out};
}

template <auto Slot>
struct Row;

template <typename... Arguments, HRESULT (STDMETHODCALLTYPE _clsOPaneCommDLL::*Slot)(Arguments...)>
struct Row<Slot> {
    static constexpr Method of(const char* name, DISPID identifier, const Named (&parameters)[sizeof...(Arguments)]) {
        constexpr std::array types{Passing<Arguments>::kType...};
        Method method{name, identifier, {}, types.size(), &call};
        for (std::size_t i = 0; i < types.size(); ++i)
            method.allParameters[i] = {parameters[i].name, parameters[i].direction, types[i]};
        return method;
    }

private:
    static HRESULT call(_clsOPaneCommDLL& object, VARIANT* values) {
        return [&]<std::size_t... Index>(std::index_sequence<Index...>) {
            return (object.*Slot)(Passing<Arguments>::from(values[Index])...);
        }
        (std::index_sequence_for<Arguments...>{});
    }
};

using I = _clsOPaneCommDLL;

constexpr std::array kMethods{
    Row<&I::DisplayString>::of("DisplayString", 0x60030000,
                               {in("strString"), in("intLignePos"), in("intColumnPos"), in("intPreGap"),
                                in("intInvertedText"), in("strGenCarFile"), out("intReturnStatus")}),
    Row<&I::Synchronize>::of("Synchronize", 0x60030003,
                             {in("intComPort"), in("lngBaudrate"), in("intNode"), out("intReturnStatus")}),
    Row<&I::Version>::of("Version", 0x60030004, {out("strVersion")}),
    Row<&I::ChangeBaudrate>::of("ChangeBaudrate", 0x60030005, {in("lngNewBaudrate"), out("intReturnStatus")}),
    Row<&I::ReadStatus>::of("ReadStatus", 0x60030006,
                            {out("intUpSideDown"), out("intInvertedDisplay"), out("intCadreON"), out("intLCDOn"),
                             out("intAutomaticBacklightON"), out("intReturnStatus")}),
    Row<&I::WriteStatus>::of("WriteStatus", 0x60030007,
                             {in("intUpSideDown"), in("intInvertedDisplay"), in("intCadreON"), in("intLCDOn"),
                              in("intAutomaticBacklightON"), out("intReturnStatus")}),
    Row<&I::DisplayBMP>::of("DisplayBMP", 0x60030008, {in("strFileNameWithPath"), out("intReturnStatus")}),
    Row<&I::ReadIRLastKey>::of("ReadIRLastKey", 0x60030009,
                               {out("intLastKeyNumber"), out("intToggleOn"), out("intReturnStatus")}),
};

template <typename Matches>
const Method* findMethod(Matches matches) {
    const auto found = std::find_if(kMethods.begin(), kMethods.end(), matches);
    return found == kMethods.end() ? nullptr : &*found;
}

}  // namespace

std::span<const Method> methods() {
    return kMethods;
}

const Method* methodNamed(std::basic_string_view<OLECHAR> name) {
    return findMethod([name](const Method& method) { return isSameName(method.name, name); });
}

const Method* methodWith(DISPID identifier) {
    return findMethod([identifier](const Method& method) { return method.identifier == identifier; });
}

DISPID parameterNamed(const Method& method, std::basic_string_view<OLECHAR> name) {
    const auto parameters = method.parameters();
    const auto found = std::find_if(parameters.begin(), parameters.end(),
                                    [name](const Parameter& row) { return isSameName(row.name, name); });
    return found == parameters.end() ? DISPID_UNKNOWN : static_cast<DISPID>(found - parameters.begin());
}

}  // namespace opane::component
