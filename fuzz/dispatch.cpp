// Late-bound calls as any script may make them, on an object whose module is simulated in memory: any method, any
// number of arguments, of any type, by value and by reference.
//
// Input: calls, each of a method, flags, counts and the arguments (see argument()).

#include <array>
#include <deque>

#include "automation/component/automation_object.h"
#include "automation/component/boundary.h"
#include "automation/component/method_table.h"
#include "fuzz_input.h"
#include "require.h"
#include "support/bench.h"

namespace opane::fuzz {
namespace {

using namespace opane::component;

constexpr std::size_t kMostCalls = 12;
constexpr std::size_t kMostArguments = 9;
constexpr std::array<VARTYPE, 24> kTypes{VT_EMPTY, VT_NULL,  VT_I2,       VT_I4,      VT_R4,  VT_R8, VT_DATE, VT_BSTR,
                                         VT_BOOL,  VT_I1,    VT_UI1,      VT_UI2,     VT_UI4, VT_I8, VT_UI8,  VT_INT,
                                         VT_UINT,  VT_ERROR, VT_DISPATCH, VT_UNKNOWN, 14,     VT_I2, VT_I4,   VT_BSTR};

/// The arguments of one call and what they refer to.
class Arguments {
public:
    ~Arguments() {
        for (VARIANT& variant : variants_)
            VariantClear(&variant);
        for (VARIANT& variant : passed)
            VariantClear(&variant);
        for (BSTR& text : texts_)
            SysFreeString(text);
    }

    /// A type and how it is passed (by value, in a variant by reference, by typed reference, as a null reference, as a
    /// reference in a variant by reference), then its value.
    VARIANT argument(Input& input) {
        const std::uint8_t choice = input.byte();
        const VARTYPE type = kTypes[choice % kTypes.size()];
        switch (choice / kTypes.size() % 5) {
            case 1: {
                VARIANT& variable = variants_.emplace_back(value(input, type));
                return reference(VT_VARIANT, &variable);
            }
            case 2:
                return typedReference(input, type);
            case 3:
                return reference(type, nullptr);
            case 4:
                return reference(VT_VARIANT, &variants_.emplace_back(typedReference(input, type)));
            default:
                return value(input, type);
        }
    }

    std::vector<VARIANT> passed;  // last one first

private:
    static VARIANT reference(VARTYPE type, void* to) {
        VARIANT variant{};
        variant.vt = static_cast<VARTYPE>(VT_BYREF | type);
        variant.byref = to;
        return variant;
    }
    static BSTR text(Input& input) {
        const std::size_t length = input.byte();
        std::u16string characters;
        for (std::size_t i = 0; i < length && !input.isEmpty(); ++i) {
            const auto character = static_cast<char16_t>(length % 2 == 0 ? input.byte() : input.word());
            characters += character == u'/' ? u'_' : character;  // no path leads out of the current folder
        }
        return SysAllocStringLen(characters.data(), static_cast<UINT>(characters.size()));
    }
    static std::uint64_t bits(Input& input) {
        std::uint64_t value = 0;
        for (int width = 1 << input.byte() % 4; width > 0; --width)
            value = value << 8 | input.byte();
        return value;
    }
    static VARIANT value(Input& input, VARTYPE type) {
        VARIANT variant{};
        variant.vt = type;
        if (type == VT_BSTR)
            variant.bstrVal = input.byte() == 0 ? nullptr : text(input);
        else if (type != VT_DISPATCH && type != VT_UNKNOWN)  // those point to nothing
            variant.ullVal = bits(input);
        return variant;
    }
    VARIANT typedReference(Input& input, VARTYPE type) {
        if (type == VT_BSTR)
            return reference(type, &texts_.emplace_back(text(input)));
        std::uint64_t& storage = storage_.emplace_back(0);
        if (type != VT_DISPATCH && type != VT_UNKNOWN)
            storage = bits(input);
        return reference(type, &storage);
    }

    std::deque<VARIANT> variants_;
    std::deque<BSTR> texts_;
    std::deque<std::uint64_t> storage_;
};

void require(HRESULT result) {
    fuzz::require(result != E_UNEXPECTED, "a call ended with E_UNEXPECTED");
    fuzz::require(result == S_OK || (static_cast<unsigned>(result) >> 31) != 0, "a call ended with half a success");
}

void call(IDispatch& object, Input& input) {
    const std::uint8_t choice = input.byte();
    const DISPID method = choice < 250 ? methods()[choice % methods().size()].identifier : input.word();
    const WORD flags = input.byte() % 8 == 7 ? input.byte() : DISPATCH_METHOD;
    const std::uint8_t counts = input.byte();
    std::size_t count = counts % (kMostArguments + 1);
    if (counts >= 100)  // as many as it takes
        count = choice < 250 ? methods()[choice % methods().size()].parameterCount : 0;
    Arguments arguments;
    std::vector<DISPID> names;
    for (std::size_t i = 0; i < count; ++i)
        arguments.passed.push_back(arguments.argument(input));
    if (counts % 16 == 15) {
        for (std::size_t i = input.byte() % (count + 2); i > 0; --i)
            names.push_back(static_cast<std::int8_t>(input.byte()) % 9);
    }
    DISPPARAMS params{arguments.passed.data(), names.data(), static_cast<UINT>(count), static_cast<UINT>(names.size())};
    VARIANT result{};
    EXCEPINFO exception{};
    UINT argumentError = 0;
    const bool withOutputs = input.byte() % 4 != 0;
    const HRESULT end = object.Invoke(method, IID_NULL, 0, flags, &params, withOutputs ? &result : nullptr,
                                      withOutputs ? &exception : nullptr, withOutputs ? &argumentError : nullptr);
    require(end);
    if (end == DISP_E_EXCEPTION && withOutputs)
        require(exception.scode);
    VariantClear(&result);
    for (const BSTR text : {exception.bstrSource, exception.bstrDescription, exception.bstrHelpFile})
        SysFreeString(text);
}

void askNames(IDispatch& object, Input& input) {
    std::u16string name;
    for (std::size_t left = input.byte() % 32; left > 0; --left)
        name += static_cast<char16_t>(input.byte());
    std::u16string parameter(1, static_cast<char16_t>(input.word()));
    std::array<LPOLESTR, 2> names{name.data(), parameter.data()};
    std::array<DISPID, 2> identifiers{};
    require(object.GetIDsOfNames(IID_NULL, names.data(), 1 + input.byte() % 2, 0, identifiers.data()));
}

void tryCalls(Input input) {
    test::Bench bench;
    bench.services->messageBox = [](const auto&, const auto&, auto) { return MessageBoxAnswer::ok; };
    void* made = nullptr;
    fuzz::require(AutomationObject::create(IID_IDispatch, &made) == S_OK, "no object was made");
    auto* const object = static_cast<IDispatch*>(made);
    for (std::size_t calls = 0; calls < kMostCalls && !input.isEmpty(); ++calls) {
        if (input.byte() == 255)
            askNames(*object, input);
        else
            call(*object, input);
    }
    fuzz::require(object->Release() == 0, "references to the object are left");
    forgetErrorInformation();
}

}  // namespace
}  // namespace opane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    opane::fuzz::tryCalls(opane::fuzz::Input(data, size));
    return 0;
}
