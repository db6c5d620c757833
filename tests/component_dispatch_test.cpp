// Late binding: what a script's calls become.

#include <gtest/gtest.h>

#include <cstring>
#include <regex>
#include <utility>
#include <vector>

#include "support/component.h"

namespace opane::test {
namespace {

using simulator::ServedModule;

constexpr DISPID kSynchronize = 0x60030003;
constexpr DISPID kVersion = 0x60030004;
constexpr DISPID kDisplayBMP = 0x60030008;
constexpr DISPID kReadIRLastKey = 0x60030009;

VARIANT number(SHORT value) {
    VARIANT variant{};
    variant.vt = VT_I2;
    variant.iVal = value;
    return variant;
}
VARIANT longNumber(LONG value) {
    VARIANT variant{};
    variant.vt = VT_I4;
    variant.lVal = value;
    return variant;
}
VARIANT real(double value) {
    VARIANT variant{};
    variant.vt = VT_R8;
    variant.dblVal = value;
    return variant;
}
VARIANT text(BSTR value) {
    VARIANT variant{};
    variant.vt = VT_BSTR;
    variant.bstrVal = value;
    return variant;
}
VARIANT ofType(VARTYPE type, void* pointer = nullptr) {
    VARIANT variant{};
    variant.vt = type;
    variant.byref = pointer;
    return variant;
}
VARIANT variable(VARIANT& variant) {
    return ofType(VT_BYREF | VT_VARIANT, &variant);
}
VARIANT leftOut() {
    VARIANT variant{};
    variant.vt = VT_ERROR;
    variant.scode = DISP_E_PARAMNOTFOUND;
    return variant;
}

/// An object on a synchronised module, called through IDispatch alone.
class LateBound : public testing::Test {
protected:
    LateBound() {
        void* made = nullptr;
        component.create(IID_IDispatch, &made);
        object = Reference(static_cast<IDispatch*>(made));
        VARIANT status = number(7);
        EXPECT_EQ(invoke(kSynchronize, {number(1), longNumber(9600), number(3), variable(status)}), S_OK);
        EXPECT_EQ(status.iVal, 0);
    }

    /// Calls a method with its arguments in the order of its parameters; the named ones, the last of them, by number.
    HRESULT invoke(DISPID method, std::vector<VARIANT> arguments, std::vector<DISPID> names = {},
                   WORD flags = DISPATCH_METHOD) {
        std::vector<VARIANT> passed(arguments.rbegin(), arguments.rend());
        std::vector<DISPID> passedNames(names.rbegin(), names.rend());
        DISPPARAMS params{passed.data(), passedNames.data(), static_cast<UINT>(passed.size()),
                          static_cast<UINT>(passedNames.size())};
        exception = EXCEPINFO{};
        argumentError = 99;
        return object->Invoke(method, IID_NULL, 0, flags, &params, nullptr, &exception, &argumentError);
    }

    HRESULT identifierOf(std::u16string name, DISPID& identifier) {
        LPOLESTR names = name.data();
        return object->GetIDsOfNames(IID_NULL, &names, 1, 0, &identifier);
    }

    ServedModule module;
    ThreadHost host{module.devicePath()};
    RegisteredComponent component;
    Reference<IDispatch> object;
    EXCEPINFO exception{};
    UINT argumentError = 99;
};

std::u16string wide(const std::string& ascii) {
    return {ascii.begin(), ascii.end()};
}

TEST_F(LateBound, KnowsTheNamesOfTheTypeLibrary) {
    const std::string idl = contentOf(OPANE_SOURCE "/automation/OPaneCommDLL.idl");
    for (const GUID& guid : {LIBID_OPaneCommDLL, IID__clsOPaneCommDLL, CLSID_clsOPaneCommDLL}) {
        OLECHAR written[39];
        StringFromGUID2(guid, written, 39);
        std::string plain(written + 1, written + 37);
        std::transform(plain.begin(), plain.end(), plain.begin(), [](char c) { return std::tolower(c); });
        EXPECT_NE(idl.find("uuid(" + plain + ")"), std::string::npos) << plain;
    }
    const std::regex method(R"(\[id\((0x\w+)\)\]\s+HRESULT (\w+)\(([^;]*)\);)");
    int methods = 0;
    for (std::sregex_iterator found(idl.begin(), idl.end(), method), end; found != end; ++found, ++methods) {
        std::vector<std::u16string> words{wide((*found)[2])};
        const std::string parameters = (*found)[3];
        const std::regex parameter(R"((\w+)(,\s*\[|$))");
        for (std::sregex_iterator each(parameters.begin(), parameters.end(), parameter); each != end; ++each)
            words.push_back(wide((*each)[1]));
        std::vector<LPOLESTR> names;
        for (std::u16string& word : words) {
            word.front() = static_cast<char16_t>(word.front() ^ 0x20);  // the other letter case
            names.push_back(word.data());
        }
        std::vector<DISPID> identifiers(names.size(), 99);
        ASSERT_EQ(object->GetIDsOfNames(IID_NULL, names.data(), static_cast<UINT>(names.size()), 0, identifiers.data()),
                  S_OK)
            << (*found)[2];
        EXPECT_EQ(identifiers.front(), std::stol((*found)[1], nullptr, 16));
        for (std::size_t i = 1; i < identifiers.size(); ++i)
            EXPECT_EQ(identifiers[i], static_cast<DISPID>(i - 1));
    }
    EXPECT_EQ(methods, 8);
}

/// The place in the virtual table that a call by name compiles to; in this system's binary interface its offset plus 1.
template <typename Member>
std::size_t slotOf(Member member) {
    std::size_t offset = 0;
    std::memcpy(&offset, &member, sizeof offset);
    return offset / sizeof(void*);
}

TEST_F(LateBound, HasTheSlotsOfTheTypeLibrary) {
    using I = _clsOPaneCommDLL;
    const std::vector<std::pair<std::string, std::size_t>> slots{{"DisplayString", slotOf(&I::DisplayString)},
                                                                 {"Synchronize", slotOf(&I::Synchronize)},
                                                                 {"Version", slotOf(&I::Version)},
                                                                 {"ChangeBaudrate", slotOf(&I::ChangeBaudrate)},
                                                                 {"ReadStatus", slotOf(&I::ReadStatus)},
                                                                 {"WriteStatus", slotOf(&I::WriteStatus)},
                                                                 {"DisplayBMP", slotOf(&I::DisplayBMP)},
                                                                 {"ReadIRLastKey", slotOf(&I::ReadIRLastKey)}};
    const std::string idl = contentOf(OPANE_SOURCE "/automation/OPaneCommDLL.idl");
    std::size_t position = 0;
    for (std::size_t i = 0; i < slots.size(); ++i) {
        EXPECT_EQ(slots[i].second, 3 + 4 + i) << slots[i].first;
        position = idl.find("HRESULT " + slots[i].first + "(", position);
        EXPECT_NE(position, std::string::npos) << slots[i].first << " stands elsewhere in the type library";
    }
}

TEST_F(LateBound, RefusesUnknownNames) {
    DISPID identifiers[2]{};
    std::u16string synchronize = u"Synchronize";
    std::u16string unknown = u"lngBaud";
    LPOLESTR names[]{synchronize.data(), unknown.data()};
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, names, 2, 0, identifiers), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(identifiers[0], kSynchronize);
    EXPECT_EQ(identifiers[1], DISPID_UNKNOWN);
    EXPECT_EQ(takeDescription(), "\"lngBaud\" is no parameter of Synchronize");
    EXPECT_EQ(identifierOf(u"Initialize", identifiers[0]), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(object->GetIDsOfNames(IID_IUnknown, names, 1, 0, identifiers), DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, nullptr, 1, 0, identifiers), E_POINTER);
}

struct Accepted {
    const char* name;
    VARIANT port;
    VARIANT baudRate;
};

TEST_F(LateBound, ConvertsWhatItIsGiven) {
    const AutomationString rate(" 9600 ");
    const AutomationString hexadecimal("&H2580\r\n");
    SHORT one = 1;
    LONG wideOne = 1;
    LONG heldRate = 9600;
    VARIANT heldPort = number(1);
    VARIANT rateReference = ofType(VT_BYREF | VT_I4, &heldRate);
    const Accepted rows[]{
        {"exact", number(1), longNumber(9600)},
        {"exact references", ofType(VT_BYREF | VT_I2, &one), rateReference},
        {"other number types", longNumber(1), number(9600)},
        {"reference to a wider number", ofType(VT_BYREF | VT_I4, &wideOne), real(9600.5)},  // half to even
        {"texts", real(1.4), text(rate)},
        {"hexadecimal text", number(1), text(hexadecimal)},
        {"variables", variable(heldPort), variable(rateReference)},
    };
    for (const Accepted& row : rows) {
        VARIANT status = number(7);
        EXPECT_EQ(invoke(kSynchronize, {row.port, row.baudRate, number(3), variable(status)}), S_OK) << row.name;
        EXPECT_EQ(status.iVal, 0) << row.name;
    }
}

TEST_F(LateBound, RefusesWhatIsNoNumberAndSaysWhich) {
    const AutomationString letters("abc");
    VARIANT itself{};
    itself = variable(itself);
    struct Row {
        VARIANT baudRate;
        HRESULT code;
        const char* explanation;
    };
    const Row rows[]{
        {text(letters), DISP_E_TYPEMISMATCH, "argument 2, lngBaudrate, is \"abc\"; expected a number from -2147483648"},
        {ofType(VT_NULL), DISP_E_TYPEMISMATCH, "is Null"},
        {ofType(VT_DISPATCH), DISP_E_TYPEMISMATCH, "is an object"},
        {real(3e9), DISP_E_OVERFLOW, "is 3000000000; expected"},
        {ofType(VT_BYREF | VT_I4), E_POINTER, "is a null reference"},
        {ofType(VT_BYREF | VT_VARIANT), E_POINTER, "is a null reference"},
        {variable(itself), DISP_E_BADVARTYPE, "expected a number"},
        {leftOut(), DISP_E_PARAMNOTOPTIONAL, "is left out"},
        {ofType(VT_ERROR), DISP_E_TYPEMISMATCH, "is of variant type 10"},
    };
    const auto sent = [this] { return module.withModule([](auto& served) { return served.handshakes(); }); };
    const auto before = sent();
    for (const Row& row : rows) {
        VARIANT status = number(7);
        EXPECT_EQ(invoke(kSynchronize, {number(1), row.baudRate, number(3), variable(status)}), row.code)
            << row.explanation;
        EXPECT_EQ(argumentError, 2U) << row.explanation;  // in the caller's array, which begins with the last one
        EXPECT_NE(takeDescription().find(row.explanation), std::string::npos) << row.explanation;
        EXPECT_EQ(status.iVal, 7);
    }
    EXPECT_EQ(sent(), before);
}

TEST_F(LateBound, RefusesCallsOfTheWrongShape) {
    VARIANT status = number(7);
    const std::vector<VARIANT> good{number(1), longNumber(9600), number(3), variable(status)};
    EXPECT_EQ(invoke(kSynchronize, {number(1), longNumber(9600), number(3)}), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(takeDescription(), "Synchronize takes 4 arguments; 3 were passed");
    EXPECT_EQ(invoke(kSynchronize, {number(1), longNumber(9600), number(3), variable(status), number(1)}),
              DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(invoke(kSynchronize + 0x100, good), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(invoke(kSynchronize, good, {}, DISPATCH_PROPERTYGET), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(invoke(kSynchronize, good, {4}), DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(invoke(kSynchronize, good, {0}), DISP_E_PARAMNOTFOUND);  // the first one twice
    DISPPARAMS nothing{nullptr, nullptr, 4, 0};
    EXPECT_EQ(object->Invoke(kSynchronize, IID_NULL, 0, DISPATCH_METHOD, &nothing, nullptr, nullptr, nullptr),
              E_POINTER);
    EXPECT_EQ(object->Invoke(kSynchronize, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr),
              E_POINTER);
    EXPECT_EQ(status.iVal, 7);
}

TEST_F(LateBound, TakesNamedArguments) {
    VARIANT status = number(7);
    EXPECT_EQ(invoke(kSynchronize, {number(1), variable(status), number(3), longNumber(9600)}, {3, 2, 1}), S_OK);
    EXPECT_EQ(status.iVal, 0);
}

TEST_F(LateBound, WritesBackIntoWhatTheCallerPassed) {
    module.withModule([](auto& served) { served.pressKey(7); });
    LONG wide = -1;
    BSTR string = SysAllocString(OLESTR("0"));
    VARIANT plain = text(SysAllocString(OLESTR("1")));
    ASSERT_EQ(invoke(kReadIRLastKey, {ofType(VT_BYREF | VT_I4, &wide), variable(plain),
                                      ofType(VT_BYREF | VT_BSTR, static_cast<void*>(&string))}),
              S_OK);
    EXPECT_EQ(wide, 7);
    EXPECT_EQ(plain.vt, VT_I2);  // the method's own type
    EXPECT_EQ(plainText(string), "0");
    SysFreeString(string);

    VARIANT version{};
    ASSERT_EQ(invoke(kVersion, {variable(version)}), S_OK);
    ASSERT_EQ(version.vt, VT_BSTR);
    EXPECT_EQ(plainText(version.bstrVal), "OpaneCommDLL V1.0.0");
    VariantClear(&version);
    EXPECT_EQ(invoke(kVersion, {number(0)}), S_OK);  // by value: nowhere to write
    IDispatch* none = nullptr;
    EXPECT_EQ(invoke(kReadIRLastKey, {number(0), ofType(VT_BYREF | VT_DISPATCH, static_cast<void*>(&none)), number(0)}),
              DISP_E_TYPEMISMATCH);
}

TEST_F(LateBound, WritesBackInTheTypeOfEachReference) {
    module.withModule([](auto& served) { served.pressKey(7); });
    for (const VARTYPE type :
         {VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4, VT_INT, VT_UINT, VT_I8, VT_UI8, VT_R4, VT_R8}) {
        std::uint64_t place = 0;
        const VARIANT reference = ofType(static_cast<VARTYPE>(VT_BYREF | type), static_cast<void*>(&place));
        ASSERT_EQ(invoke(kReadIRLastKey, {reference, number(0), number(0)}), S_OK) << type;
        VARIANT read{};
        ASSERT_EQ(VariantCopyInd(&read, &reference), S_OK) << type;
        ASSERT_EQ(VariantChangeType(&read, &read, 0, VT_I4), S_OK) << type;
        EXPECT_EQ(read.lVal, 7) << type;
    }
    VARIANT_BOOL truth = VARIANT_FALSE;
    ASSERT_EQ(invoke(kReadIRLastKey, {ofType(VT_BYREF | VT_BOOL, static_cast<void*>(&truth)), number(0), number(0)}),
              S_OK);
    EXPECT_EQ(truth, VARIANT_TRUE);

    module.withModule(
        [](auto& served) { served.fault({.fault = simulator::Fault::typeZero, .count = simulator::kForEver}); });
    std::uint8_t tooSmall = 5;  // for the -1 of a key that was not read
    VARIANT status = number(7);
    EXPECT_EQ(
        invoke(kReadIRLastKey, {ofType(VT_BYREF | VT_UI1, static_cast<void*>(&tooSmall)), number(0), variable(status)}),
        DISP_E_OVERFLOW);
    EXPECT_EQ(argumentError, 2U);
    EXPECT_EQ(tooSmall, 5);
    EXPECT_EQ(status.iVal, 1);  // the others have got theirs
}

TEST_F(LateBound, SaysWhichInterfacesItHas) {
    void* other = nullptr;
    ASSERT_EQ(object->QueryInterface(IID_ISupportErrorInfo, &other), S_OK);
    const Reference supports(static_cast<ISupportErrorInfo*>(other));
    EXPECT_EQ(supports->InterfaceSupportsErrorInfo(IID__clsOPaneCommDLL), S_OK);
    EXPECT_EQ(supports->InterfaceSupportsErrorInfo(IID_IUnknown), S_FALSE);
    EXPECT_EQ(object->QueryInterface(IID_IErrorInfo, &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(object->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    ITypeInfo* description = nullptr;
    EXPECT_EQ(object->GetTypeInfo(0, 0, &description), DISP_E_BADINDEX);  // there is no type library on this system
    EXPECT_EQ(object->GetTypeInfo(0, 0, nullptr), E_POINTER);
}

TEST_F(LateBound, HandsAnErrorOverAsAnException) {
    const AutomationString missing("missing.bmp");
    VARIANT status = text(SysAllocString(OLESTR("5")));
    EXPECT_EQ(invoke(kDisplayBMP, {text(missing), variable(status)}), DISP_E_EXCEPTION);
    EXPECT_EQ(static_cast<std::uint32_t>(exception.scode), 0x800A0035U);
    EXPECT_EQ(plainText(exception.bstrSource), "OPaneCommDLL");
    EXPECT_NE(plainText(exception.bstrDescription).find("missing.bmp"), std::string::npos);
    EXPECT_EQ(status.vt, VT_I2);  // written back all the same
    EXPECT_EQ(status.iVal, 5);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    UINT count = 9;
    EXPECT_EQ(object->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 0U);
}

}  // namespace
}  // namespace opane::test
