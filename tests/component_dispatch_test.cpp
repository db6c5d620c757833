// Late binding: what a script's calls become.

#include <gtest/gtest.h>

#include <regex>
#include <utility>
#include <vector>

#include "support/component.h"

namespace opane::test {
namespace {

constexpr DISPID kSynchronize = 0x60030003;
constexpr DISPID kVersion = 0x60030004;
constexpr DISPID kDisplayBMP = 0x60030008;
constexpr DISPID kReadIRLastKey = 0x60030009;

VARIANT text(BSTR value) {
    return variant(VT_BSTR, value);
}

/// An object on a synchronised module, called through IDispatch alone.
class LateBound : public Component {
protected:
    LateBound() {
        void* made = nullptr;
        create(IID_IDispatch, &made);
        object.reset(static_cast<IDispatch*>(made));
        EXPECT_EQ(synchronize(*static_cast<_clsOPaneCommDLL*>(made)), 0);
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

    Reference<IDispatch> object;
    EXCEPINFO exception{};
    UINT argumentError = 99;
    VARIANT status = number(7);
};

/// The place in the virtual table that a call by name compiles to; in this system's binary interface its offset plus 1.
template <typename Member>
std::size_t slotOf(Member member) {
    std::size_t offset = 0;
    std::memcpy(&offset, &member, sizeof offset);
    return offset / sizeof(void*);
}

TEST_F(LateBound, HasTheNamesNumbersAndSlotsOfTheTypeLibrary) {
    const std::string idl = contentOf(OPANE_SOURCE "/automation/OPaneCommDLL.idl");
    for (const GUID& guid : {LIBID_OPaneCommDLL, IID__clsOPaneCommDLL, CLSID_clsOPaneCommDLL}) {
        OLECHAR written[39];
        StringFromGUID2(guid, written, 39);
        const std::regex uuid("uuid\\(" + std::string(written + 1, written + 37) + "\\)", std::regex::icase);
        EXPECT_TRUE(std::regex_search(idl, uuid)) << std::string(written + 1, written + 37);
    }
    using I = _clsOPaneCommDLL;
    const std::string order[]{"DisplayString", "Synchronize", "Version",    "ChangeBaudrate",
                              "ReadStatus",    "WriteStatus", "DisplayBMP", "ReadIRLastKey"};
    const std::size_t slots[]{slotOf(&I::DisplayString),  slotOf(&I::Synchronize),  slotOf(&I::Version),
                              slotOf(&I::ChangeBaudrate), slotOf(&I::ReadStatus),   slotOf(&I::WriteStatus),
                              slotOf(&I::DisplayBMP),     slotOf(&I::ReadIRLastKey)};
    const std::regex method(R"(\[id\((0x\w+)\)\]\s+HRESULT (\w+)\([^;]*\);)"), name(R"(\w+(?=\(\[|,\s*\[|\);))");
    std::size_t methods = 0;
    for (std::sregex_iterator found(idl.begin(), idl.end(), method), end; found != end; ++found, ++methods) {
        ASSERT_LT(methods, std::size(slots));
        EXPECT_EQ((*found)[2], order[methods]);
        EXPECT_EQ(slots[methods], 7 + methods);
        const std::string declaration = (*found)[0];
        std::vector<std::u16string> words;  // the method's name and its parameters'
        for (std::sregex_iterator each(declaration.begin(), declaration.end(), name); each != end; ++each)
            words.emplace_back((*each)[0].first, (*each)[0].second);
        std::vector<LPOLESTR> names;
        for (std::u16string& word : words) {
            word.front() = static_cast<char16_t>(word.front() ^ 0x20);  // the other letter case
            names.push_back(word.data());
        }
        std::vector<DISPID> identifiers(names.size(), 99);
        ASSERT_EQ(object->GetIDsOfNames(IID_NULL, names.data(), static_cast<UINT>(names.size()), 0, identifiers.data()),
                  S_OK)
            << declaration;
        EXPECT_EQ(identifiers.front(), std::stol((*found)[1], nullptr, 16));
        for (std::size_t i = 1; i < identifiers.size(); ++i)
            EXPECT_EQ(identifiers[i], static_cast<DISPID>(i - 1));
    }
    EXPECT_EQ(methods, std::size(slots));
}

TEST_F(LateBound, RefusesUnknownNamesAndInterfaces) {
    DISPID identifiers[2]{};
    std::u16string synchronize = u"Synchronize", unknown = u"lngBaud";
    LPOLESTR names[]{synchronize.data(), unknown.data()};
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, names, 2, 0, identifiers), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(identifiers[0], kSynchronize);
    EXPECT_EQ(identifiers[1], DISPID_UNKNOWN);
    EXPECT_EQ(takeDescription(), "\"lngBaud\" is no parameter of Synchronize");
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, names + 1, 1, 0, identifiers), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(object->GetIDsOfNames(IID_IUnknown, names, 1, 0, identifiers), DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, nullptr, 1, 0, identifiers), E_POINTER);

    void* other = nullptr;
    ASSERT_EQ(object->QueryInterface(IID_ISupportErrorInfo, &other), S_OK);
    const Reference<ISupportErrorInfo> supports(static_cast<ISupportErrorInfo*>(other));
    EXPECT_EQ(supports->InterfaceSupportsErrorInfo(IID__clsOPaneCommDLL), S_OK);
    EXPECT_EQ(supports->InterfaceSupportsErrorInfo(IID_IUnknown), S_FALSE);
    EXPECT_EQ(object->QueryInterface(IID_IErrorInfo, &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(object->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    UINT count = 9;
    EXPECT_EQ(object->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 0U) << "there is no type library on this system";
    ITypeInfo* description = nullptr;
    EXPECT_EQ(object->GetTypeInfo(0, 0, &description), DISP_E_BADINDEX);
    EXPECT_EQ(object->GetTypeInfo(0, 0, nullptr), E_POINTER);
}

TEST_F(LateBound, ConvertsWhatIsANumberAndSaysWhatIsNone) {
    const AutomationString rate(" 9600 "), hexadecimal("&H2580\r\n"), letters("abc");
    SHORT one = 1;
    LONG wideOne = 1, heldRate = 9600;
    VARIANT heldPort = number(1), rateReference = variant(VT_BYREF | VT_I4, &heldRate), itself{};
    itself = variable(itself);
    const struct {
        VARIANT port, baudRate;
        HRESULT code = S_OK;
        const char* explanation = "";
    } rows[]{
        {variant(VT_BYREF | VT_I2, &one), rateReference},
        {variant(VT_I4, 1), number(9600)},
        {variant(VT_BYREF | VT_I4, &wideOne), variant(VT_R8, 9600.5)},  // half to even
        {variant(VT_R8, 1.4), text(rate)},
        {number(1), text(hexadecimal)},
        {variable(heldPort), variable(rateReference)},
        {number(1), text(letters), DISP_E_TYPEMISMATCH,
         "argument 2, lngBaudrate, is \"abc\"; expected a number from -2147483648"},
        {number(1), variant(VT_NULL), DISP_E_TYPEMISMATCH, "is Null"},
        {number(1), variant(VT_DISPATCH), DISP_E_TYPEMISMATCH, "is an object"},
        {number(1), variant(VT_R8, 3e9), DISP_E_OVERFLOW, "is 3000000000; expected"},
        {number(1), variant(VT_BYREF | VT_I4), E_POINTER, "is a null reference"},
        {number(1), variant(VT_BYREF | VT_VARIANT), E_POINTER, "is a null reference"},
        {number(1), variable(itself), DISP_E_BADVARTYPE, "expected a number"},
        {number(1), variant(VT_ERROR, DISP_E_PARAMNOTFOUND), DISP_E_PARAMNOTOPTIONAL, "is left out"},
        {number(1), variant(VT_ERROR), DISP_E_TYPEMISMATCH, "is of variant type 10"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << &row - rows << ' ' << row.explanation);
        const bool accepted = row.code == S_OK;
        status = number(7);
        EXPECT_EQ(invoke(kSynchronize, {row.port, row.baudRate, number(3), variable(status)}), row.code);
        EXPECT_EQ(argumentError, accepted ? 99U : 2U);  // in the caller's array, which begins with the last one
        EXPECT_NE(takeDescription().find(row.explanation), std::string::npos);
        EXPECT_EQ(status.iVal != 7, accepted) << "the method has run";
    }
    status = number(7);
    EXPECT_EQ(invoke(kSynchronize, {number(1), variable(status), number(3), variant(VT_I4, 9600)}, {3, 2, 1}), S_OK);
    EXPECT_NE(status.iVal, 7);
}

TEST_F(LateBound, RefusesCallsOfTheWrongShape) {
    status = number(7);
    const std::vector<VARIANT> good{number(1), variant(VT_I4, 9600), number(3), variable(status)};
    EXPECT_EQ(invoke(kSynchronize, {number(1), variant(VT_I4, 9600), number(3)}), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(takeDescription(), "Synchronize takes 4 arguments; 3 were passed");
    EXPECT_EQ(invoke(kVersion, good), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(invoke(kSynchronize + 0x100, good), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(invoke(kSynchronize, good, {}, DISPATCH_PROPERTYGET), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(invoke(kSynchronize, good, {4}), DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(invoke(kSynchronize, good, {0}), DISP_E_PARAMNOTFOUND) << "the first one twice";
    DISPPARAMS nothing{nullptr, nullptr, 4, 0};
    for (DISPPARAMS* const params : {&nothing, static_cast<DISPPARAMS*>(nullptr)})
        EXPECT_EQ(object->Invoke(kSynchronize, IID_NULL, 0, 1, params, nullptr, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(status.iVal, 7);
}

TEST_F(LateBound, WritesBackInTheTypeOfEachReference) {
    module.withModule([](auto& served) { served.pressKey(7); });
    for (const VARTYPE type :
         {VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4, VT_INT, VT_UINT, VT_I8, VT_UI8, VT_R4, VT_R8, VT_BOOL}) {
        std::uint64_t place = 0;
        const VARIANT reference = variant(VT_BYREF | type, &place);
        ASSERT_EQ(invoke(kReadIRLastKey, {reference, number(0), number(0)}), S_OK) << type;
        VARIANT read{};
        ASSERT_EQ(VariantCopyInd(&read, &reference), S_OK) << type;
        ASSERT_EQ(VariantChangeType(&read, &read, 0, VT_I4), S_OK) << type;
        EXPECT_EQ(read.lVal, type == VT_BOOL ? VARIANT_TRUE : 7) << type;
    }
    BSTR string = SysAllocString(OLESTR("1"));
    VARIANT held = text(SysAllocString(OLESTR("1")));
    ASSERT_EQ(invoke(kReadIRLastKey, {variable(held), variant(VT_BYREF | VT_BSTR, &string), number(0)}), S_OK);
    EXPECT_EQ(held.vt, VT_I2) << "the method's own type";
    EXPECT_EQ(plainText(string), "0");
    SysFreeString(string);
    IDispatch* none = nullptr;
    EXPECT_EQ(invoke(kReadIRLastKey, {number(0), variant(VT_BYREF | VT_DISPATCH, &none), number(0)}),
              DISP_E_TYPEMISMATCH);
    VARIANT version{};
    ASSERT_EQ(invoke(kVersion, {variable(version)}), S_OK);
    ASSERT_EQ(version.vt, VT_BSTR);
    EXPECT_EQ(plainText(version.bstrVal), "OpaneCommDLL V1.0.0");
    VariantClear(&version);
    EXPECT_EQ(invoke(kVersion, {number(0)}), S_OK) << "by value: nowhere to write";

    module.withModule(
        [](auto& served) { served.fault({.fault = simulator::Fault::typeZero, .count = simulator::kForEver}); });
    std::uint8_t tooSmall = 5;  // for the -1 of a key that was not read
    EXPECT_EQ(invoke(kReadIRLastKey, {variant(VT_BYREF | VT_UI1, &tooSmall), number(0), variable(status)}),
              DISP_E_OVERFLOW);
    EXPECT_EQ(argumentError, 2U);
    EXPECT_EQ(tooSmall, 5);
    EXPECT_EQ(status.iVal, 1) << "the others have got theirs";
}

TEST_F(LateBound, HandsAnErrorOverAsAnException) {
    const AutomationString missing("missing.bmp");
    VARIANT held = text(SysAllocString(OLESTR("5")));
    EXPECT_EQ(invoke(kDisplayBMP, {text(missing), variable(held)}), DISP_E_EXCEPTION);
    EXPECT_EQ(static_cast<std::uint32_t>(exception.scode), 0x800A0035U);
    EXPECT_EQ(plainText(exception.bstrSource), "OPaneCommDLL");
    EXPECT_NE(plainText(exception.bstrDescription).find("missing.bmp"), std::string::npos);
    EXPECT_EQ(held.vt, VT_I2) << "written back all the same";
    EXPECT_EQ(held.iVal, 5);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
}

}  // namespace
}  // namespace opane::test
