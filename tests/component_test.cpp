// The component as a host meets it: the built library, found in the registry, called by its virtual table and by name.

#include <algorithm>
#include <deque>
#include <thread>
#include <vector>

#include "support/component.h"
#include "support/program.h"

namespace opane::test {
namespace {

constexpr DISPID kSynchronize = 0x60030003;
constexpr DISPID kVersion = 0x60030004;
constexpr DISPID kDisplayBMP = 0x60030008;
constexpr DISPID kReadIRLastKey = 0x60030009;

constexpr auto kFileNotFound = static_cast<HRESULT>(0x800A0035U);

TEST_F(Component, ExportsItsFourEntryPointsAndNothingElse) {
    const auto symbols = runProgram({"nm", "-D", "--defined-only", "--format=just-symbols", OPANECOMMDLL_PROGRAM});
    EXPECT_EQ(symbols.output, "DllCanUnloadNow\nDllGetClassObject\nDllRegisterServer\nDllUnregisterServer\n");
    const std::string others =
        "readelf -d " OPANECOMMDLL_PROGRAM
        " | grep NEEDED | grep -vE '\\[(lib(opane-component|stdc\\+\\+|m|gcc_s|c|asan|ubsan|tsan)|ld-linux)[-.]'";
    EXPECT_EQ(runProgram({"sh", "-c", others}).output, "");
}

TEST_F(Component, DrivesAModuleThroughItsVirtualTable) {
    const auto object = create();
    ASSERT_EQ(synchronize(*object), 0);
    SHORT upside = 0, inverted = 1, frame = 1, lcd = 1, light = 0, status = 7;
    ASSERT_EQ(object->WriteStatus(&upside, &inverted, &frame, &lcd, &light, &status), S_OK);
    EXPECT_EQ(status, 0);
    inverted = frame = lcd = 7;
    ASSERT_EQ(object->ReadStatus(&upside, &inverted, &frame, &lcd, &light, &status), S_OK);
    EXPECT_EQ((std::vector{upside, inverted, frame, lcd, light, status}), (std::vector<SHORT>{0, 1, 1, 1, 0, 0}));
    LONG noRate = 14400;
    ASSERT_EQ(object->ChangeBaudrate(&noRate, &status), S_OK);
    EXPECT_EQ(status, 1);
}

TEST_F(Component, IsCreatedWithoutAPortAndExplainsAnError) {
    const ThreadHost without("/nonexistent/device");
    const auto object = create();
    EXPECT_EQ(synchronize(*object, static_cast<HRESULT>(0x800A1F52U)), 7);
    EXPECT_NE(takeDescription().find("/nonexistent/device"), std::string::npos);
    SHORT status = 7;
    EXPECT_EQ(object->DisplayBMP(AutomationString("none.bmp"), nullptr), E_POINTER);
    EXPECT_NE(takeDescription().find("intReturnStatus"), std::string::npos);
    EXPECT_EQ(object->DisplayBMP(nullptr, &status), kFileNotFound);
    EXPECT_EQ(status, 7);
}

TEST_F(Component, RefusesWhatItIsNotAndChangesNothing) {
    const auto object = create();
    ASSERT_EQ(synchronize(*object), 0);
    void* made = &made;
    EXPECT_EQ(create(IID_IUnknown, &made, object.get()), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(create(IID_IErrorInfo, &made), E_NOINTERFACE);
    EXPECT_EQ(create(IID_IUnknown, nullptr), E_INVALIDARG);
    const CLSID other = {1, 2, 3, {4}};
    EXPECT_EQ(CoCreateInstance(other, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &made), REGDB_E_CLASSNOTREG);
    EXPECT_NE(takeDescription().find("{00000001-0002-0003-0400-000000000000}"), std::string::npos);
    ASSERT_EQ(OpaneRegisterClass(other, "Other.Class", OPANECOMMDLL_PROGRAM), S_OK);
    EXPECT_EQ(CoCreateInstance(other, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &made), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(synchronize(*object), 0) << "the thread's link is still this object's";
}

TEST_F(Component, BelongsToItsThreadButMayBeReleasedAnywhere) {
    auto object = create();
    ASSERT_EQ(synchronize(*object), 0);
    std::thread([&object] {
        EXPECT_EQ(synchronize(*object, RPC_E_WRONG_THREAD), 7);
        EXPECT_NE(takeDescription(), "");
        object.reset();
    }).join();
    EXPECT_EQ(callEntry("DllCanUnloadNow"), S_OK);
    object = create();
    EXPECT_EQ(synchronize(*object), 0) << "the port is free again";
    std::thread([&] { object = create(); }).join();
    for (int thread = 0; thread < 50; ++thread)  // also when the thread has ended
        std::thread([&] { EXPECT_EQ(synchronize(*object, RPC_E_WRONG_THREAD), 7); }).join();
}

TEST_F(Component, GivesEachThreadAModuleOfItsOwn) {
    simulator::ServedModule second;
    std::vector<std::jthread> threads;
    for (const std::string& device : {module.devicePath(), second.devicePath()})
        threads.emplace_back([device] {
            const ThreadHost own(device);
            for (int round = 0; round < 10; ++round)
                EXPECT_EQ(synchronize(*create()), 0);
        });
}

TEST_F(Component, MayLoseItsLinkInTheMiddleOfItsCalls) {
    const auto first = create();
    auto second = create();
    std::thread releases([&second] { second.reset(); });
    HRESULT result = S_OK;
    SHORT key = 0, toggle = 0, status = 0;
    while (result == S_OK)  // on the second one's link, which has its port since it was made
        result = first->ReadIRLastKey(&key, &toggle, &status);
    EXPECT_EQ(result, static_cast<HRESULT>(0x800A005BU));
    releases.join();
}

TEST_F(Component, LivesUntilItsCallEndsWhenAnEventReleasesIt) {
    auto object = create();
    _clsOPaneCommDLL* const held = object.get();
    SHORT port = 1, nobody = 1, status = 7;
    LONG baudRate = 9600;
    host.events = [&] {
        object.reset();
        EXPECT_EQ(callEntry("DllCanUnloadNow"), S_FALSE);
    };
    EXPECT_EQ(held->Synchronize(&port, &baudRate, &nobody, &status), S_OK);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(callEntry("DllCanUnloadNow"), S_OK);
}

TEST_F(Component, IsUnloadedOnceNothingIsHeld) {
    const auto isLoaded = [] {
        CoFreeUnusedLibraries();
        return contentOf("/proc/self/maps").find("libOPaneCommDLL") != std::string::npos;
    };
    const auto classFactory = [] {
        void* made = nullptr;
        CoGetClassObject(CLSID_clsOPaneCommDLL, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory, &made);
        return Reference<IClassFactory>(static_cast<IClassFactory*>(made));
    };
    auto object = create();
    EXPECT_TRUE(isLoaded());
    object.reset();
    auto factory = classFactory();
    EXPECT_TRUE(isLoaded());
    factory->LockServer(1);
    factory.reset();
    EXPECT_TRUE(isLoaded());
    classFactory()->LockServer(0);
    EXPECT_FALSE(isLoaded());
}

TEST_F(Component, LeavesNothingOfItselfInTheRegistry) {
    const std::string entered = contentOf(registry);
    ASSERT_NE(entered.find("OPaneCommDLL.clsOPaneCommDLL"), std::string::npos);
    EXPECT_EQ(callEntry("DllRegisterServer"), S_OK);
    EXPECT_EQ(contentOf(registry), entered);
    std::ofstream(registry, std::ios::app) << "# a note\n";
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(callEntry("DllUnregisterServer"), S_OK);
        EXPECT_EQ(contentOf(registry), "# a note\n");
    }
    void* made = nullptr;
    EXPECT_EQ(create(IID_IUnknown, &made), CO_E_CLASSSTRING);
    EXPECT_NE(takeDescription().find(registry), std::string::npos);
}

TEST_F(Component, LosesNothingInParallelRegistrations) {
    std::vector<std::jthread> threads;
    for (std::uint32_t t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            for (std::uint32_t i = 0; i < 25; ++i) {
                const CLSID clsid{t, 0, 0, {static_cast<std::uint8_t>(i)}};
                const std::string name = "Some.Class" + std::to_string(t * 25 + i);
                EXPECT_EQ(OpaneRegisterClass(clsid, name.c_str(), "/some.so"), S_OK);
            }
        });
    threads.clear();
    const std::string content = contentOf(registry);
    EXPECT_EQ(std::count(content.begin(), content.end(), '\n'), 1 + 4 * 25);
}

TEST_F(Component, KeepsARegistryBehindALink) {
    const std::string link = folder / "link";
    std::filesystem::create_symlink(folder / "real/components", link);  // which leads nowhere yet
    setenv("OPANE_COMPONENT_REGISTRY", link.c_str(), 1);
    EXPECT_EQ(callEntry("DllRegisterServer"), S_OK);
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(callEntry("DllUnregisterServer"), S_OK);
    EXPECT_FALSE(std::filesystem::exists(folder / "real/components"));
}

TEST_F(Component, RegistersItsOwnFileAlsoWhenLoadedByARelativeName) {
    const SharedLibrary library("." / std::filesystem::relative(OPANECOMMDLL_PROGRAM));
    std::filesystem::current_path("/");
    EXPECT_EQ(library.function<HRESULT()>("DllRegisterServer")(), S_OK);
    EXPECT_NE(contentOf(registry).find(OPANECOMMDLL_PROGRAM "\n"), std::string::npos);
}

TEST_F(Component, SaysWhyARegistryCannotBeWritten) {
    for (const std::string& place : {folder.path(), std::string("/proc/nothing/components"), std::string(5000, 'a')}) {
        setenv("OPANE_COMPONENT_REGISTRY", place.c_str(), 1);
        EXPECT_EQ(callEntry("DllRegisterServer"), SELFREG_E_CLASS) << place;
        const std::string named = place.size() < 4096 ? place.substr(0, 8) : "5000 bytes";
        EXPECT_NE(takeDescription().find(named), std::string::npos) << place;
    }
    EXPECT_EQ(OpaneRegisterClass(CLSID_clsOPaneCommDLL, "Some.Class", "relative.so"), E_INVALIDARG);
}

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

TEST_F(LateBound, HasTheNamesNumbersAndOrderOfTheTypeLibrary) {
    const std::string idl = contentOf(OPANE_SOURCE "/automation/OPaneCommDLL.idl");
    for (const GUID& guid : {LIBID_OPaneCommDLL, IID__clsOPaneCommDLL, CLSID_clsOPaneCommDLL}) {
        OLECHAR written[39];
        StringFromGUID2(guid, written, 39);
        const std::regex uuid("uuid\\(" + std::string(written + 1, written + 37) + "\\)", std::regex::icase);
        EXPECT_TRUE(std::regex_search(idl, uuid)) << std::string(written + 1, written + 37);
    }
    const auto numbers = captures(idl, R"(\[id\((0x\w+)\)\])"), methods = captures(idl, R"(HRESULT (\w+\([^;]*\);))");
    ASSERT_EQ(methods.size(), 8U);
    EXPECT_EQ(captures(idl, R"(HRESULT (\w+))"),
              captures(contentOf(OPANE_SOURCE "/include/opane/OPaneCommDLL.h"), R"(STDMETHODCALLTYPE (\w+))"));
    for (std::size_t method = 0; method < methods.size(); ++method) {
        std::deque<std::u16string> words;  // the method's name and its parameters', in the other letter case
        std::vector<LPOLESTR> names;
        for (const std::string& word : captures(methods[method], R"((\w+)(?=\(\[|,\s*\[|\);))")) {
            names.push_back(words.emplace_back(word.begin(), word.end()).data());
            *names.back() = static_cast<char16_t>(word.front() ^ 0x20);
        }
        const auto count = static_cast<UINT>(names.size());
        std::vector<DISPID> identifiers(count, 99);
        EXPECT_EQ(object->GetIDsOfNames(IID_NULL, names.data(), count, 0, identifiers.data()), S_OK);
        EXPECT_EQ(identifiers.front(), std::stol(numbers.at(method), nullptr, 16)) << methods[method];
        for (std::size_t i = 1; i < count; ++i)
            EXPECT_EQ(identifiers[i], static_cast<DISPID>(i - 1)) << methods[method];
    }
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
    EXPECT_EQ(exception.scode, kFileNotFound);
    EXPECT_EQ(plainText(exception.bstrSource), "OPaneCommDLL");
    EXPECT_NE(plainText(exception.bstrDescription).find("missing.bmp"), std::string::npos);
    EXPECT_EQ(held.vt, VT_I2) << "written back all the same";
    EXPECT_EQ(held.iVal, 5);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
}

}  // namespace
}  // namespace opane::test
