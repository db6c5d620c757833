// The component as a host meets it: the built library, loaded by the component runtime from its registry.

#include <gtest/gtest.h>
#include <malloc.h>

#include <thread>
#include <vector>

#include "support/component.h"
#include "support/program.h"

namespace opane::test {
namespace {

using simulator::ServedModule;

constexpr HRESULT kFileNotFound = static_cast<HRESULT>(0x800A0035U);
constexpr HRESULT kObjectNotSet = static_cast<HRESULT>(0x800A005BU);
constexpr HRESULT kPortNotOpen = static_cast<HRESULT>(0x800A1F52U);

SHORT synchronize(_clsOPaneCommDLL* object, HRESULT expected = S_OK) {
    SHORT port = 1;
    LONG baudRate = 9600;
    SHORT node = 3;
    SHORT status = 7;
    EXPECT_EQ(object->Synchronize(&port, &baudRate, &node, &status), expected);
    return status;
}

class Component : public testing::Test {
protected:
    RegisteredComponent component;
};

TEST_F(Component, ExportsItsFourEntryPointsAndNothingElse) {
    const auto symbols = runProgram({"nm", "-D", "--defined-only", "--format=just-symbols", OPANECOMMDLL_PROGRAM});
    EXPECT_EQ(symbols.output, "DllCanUnloadNow\nDllGetClassObject\nDllRegisterServer\nDllUnregisterServer\n");
    const auto needs =
        runProgram({"sh", "-c", "readelf -d " OPANECOMMDLL_PROGRAM " | sed -n 's/.*NEEDED.*\\[\\(.*\\)\\]/\\1/p'"});
    std::istringstream names(needs.output);
    for (std::string name; std::getline(names, name);)
        EXPECT_TRUE(name.starts_with("libopane-component") || name.starts_with("libstdc++") ||
                    name.starts_with("libm.") || name.starts_with("libgcc") || name.starts_with("libc.") ||
                    name.starts_with("ld-linux") || name.starts_with("libasan") || name.starts_with("libubsan") ||
                    name.starts_with("libtsan"))
            << name;
}

TEST_F(Component, DrivesAModuleThroughItsVirtualTable) {
    ServedModule module;
    const ThreadHost host(module.devicePath());
    const auto object = component.create();
    ASSERT_EQ(synchronize(object.get()), 0);

    SHORT upside = 0, inverted = 1, frame = 1, lcd = 1, light = 0, status = 7;
    ASSERT_EQ(object->WriteStatus(&upside, &inverted, &frame, &lcd, &light, &status), S_OK);
    EXPECT_EQ(status, 0);
    inverted = frame = lcd = 7;
    ASSERT_EQ(object->ReadStatus(&upside, &inverted, &frame, &lcd, &light, &status), S_OK);
    EXPECT_EQ((std::vector{upside, inverted, frame, lcd, light, status}), (std::vector<SHORT>{0, 1, 1, 1, 0, 0}));

    module.withModule([](auto& served) { served.pressKey(5); });
    SHORT key = 0, toggle = 7;
    ASSERT_EQ(object->ReadIRLastKey(&key, &toggle, &status), S_OK);
    EXPECT_EQ(key, 5);

    BSTR version = SysAllocString(OLESTR("before"));
    ASSERT_EQ(object->Version(&version), S_OK);
    EXPECT_EQ(plainText(version), "OpaneCommDLL V1.0.0");
    SysFreeString(version);
}

TEST_F(Component, ExplainsAnErrorAndKeepsTheStatus) {
    ServedModule module;
    const ThreadHost host(module.devicePath());
    const auto object = component.create();
    ASSERT_EQ(synchronize(object.get()), 0);
    SHORT status = 7;
    EXPECT_EQ(object->DisplayBMP(AutomationString("/nowhere/a.bmp"), &status), kFileNotFound - 0x35 + 76);
    EXPECT_EQ(status, 7);
    EXPECT_NE(takeDescription().find("/nowhere/a.bmp"), std::string::npos);
    EXPECT_EQ(object->DisplayBMP(AutomationString("none.bmp"), nullptr), E_POINTER);
    EXPECT_NE(takeDescription().find("intReturnStatus"), std::string::npos);
    EXPECT_EQ(object->DisplayBMP(nullptr, &status), kFileNotFound);
    EXPECT_EQ(object->Version(nullptr), E_POINTER);
}

TEST_F(Component, IsCreatedWithoutAPort) {
    const ThreadHost host("/nonexistent/device");
    const auto object = component.create();
    ASSERT_NE(object.get(), nullptr);
    EXPECT_EQ(synchronize(object.get(), kPortNotOpen), 7);
    EXPECT_NE(takeDescription().find("/nonexistent/device"), std::string::npos);
}

TEST_F(Component, RefusesWhatItIsNotAndChangesNothing) {
    ServedModule module;
    const ThreadHost host(module.devicePath());
    const auto object = component.create();
    ASSERT_EQ(synchronize(object.get()), 0);

    void* made = &made;
    EXPECT_EQ(component.create(IID_IUnknown, &made, object.get()), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(component.create(IID_IErrorInfo, &made), E_NOINTERFACE);
    EXPECT_EQ(component.create(IID_IUnknown, nullptr), E_INVALIDARG);
    const CLSID other = {1, 2, 3, {4}};
    EXPECT_EQ(CoCreateInstance(other, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &made), REGDB_E_CLASSNOTREG);
    EXPECT_NE(takeDescription().find("{00000001-0002-0003-0400-000000000000}"), std::string::npos);
    ASSERT_EQ(OpaneRegisterClass(other, "Other.Class", OPANECOMMDLL_PROGRAM), S_OK);
    EXPECT_EQ(CoCreateInstance(other, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &made), CLASS_E_CLASSNOTAVAILABLE);

    SHORT key = 0, toggle = 0, status = 7;  // the thread's link is still this object's
    EXPECT_EQ(object->ReadIRLastKey(&key, &toggle, &status), S_OK);
    EXPECT_EQ(status, 0);
}

TEST_F(Component, BelongsToItsThreadButMayBeReleasedAnywhere) {
    ServedModule module;
    const ThreadHost host(module.devicePath());
    auto object = component.create();
    ASSERT_EQ(synchronize(object.get()), 0);
    std::thread([&object] {
        EXPECT_EQ(synchronize(object.get(), RPC_E_WRONG_THREAD), 7);
        EXPECT_NE(takeDescription(), "");
        object.reset();
    }).join();
    EXPECT_EQ(component.callEntry("DllCanUnloadNow"), S_OK);
    object = component.create();  // the port is free again
    EXPECT_EQ(synchronize(object.get()), 0);
}

TEST_F(Component, BelongsToItsThreadAlsoWhenThatHasEnded) {
    Reference<_clsOPaneCommDLL> object;
    std::thread([&] { object = component.create(); }).join();
    for (int thread = 0; thread < 50; ++thread)
        std::thread([&] { EXPECT_EQ(synchronize(object.get(), RPC_E_WRONG_THREAD), 7); }).join();
}

TEST_F(Component, GivesEachThreadAModuleOfItsOwn) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t)
        threads.emplace_back([this] {
            ServedModule module;
            const ThreadHost host(module.devicePath());
            for (int round = 0; round < 10; ++round) {
                const auto object = component.create();
                EXPECT_EQ(synchronize(object.get()), 0);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(Component, TakesTheLinkOverForASecondObject) {
    ServedModule module;
    const ThreadHost host(module.devicePath());
    const auto first = component.create();
    auto second = component.create();
    EXPECT_EQ(synchronize(first.get()), 0);  // on the second one's link
    std::thread([&second] { second.reset(); }).join();
    EXPECT_EQ(synchronize(first.get(), kObjectNotSet), 7);
    BSTR version = nullptr;
    EXPECT_EQ(first->Version(&version), S_OK);
    SysFreeString(version);
}

TEST_F(Component, MayLoseItsLinkInTheMiddleOfItsCalls) {
    ServedModule module;
    const ThreadHost host(module.devicePath());
    const auto first = component.create();
    auto second = component.create();
    std::thread releases([&second] { second.reset(); });
    HRESULT result = S_OK;
    SHORT key = 0, toggle = 0, status = 0;
    while (result == S_OK)
        result = first->ReadIRLastKey(&key, &toggle, &status);
    EXPECT_EQ(result, kObjectNotSet);
    releases.join();
}

TEST_F(Component, LivesUntilItsCallEndsWhenAnEventReleasesIt) {
    ServedModule module;
    module.withModule([](auto& served) { served.fault({simulator::Fault::ignoreHandshake}); });
    ThreadHost host(module.devicePath());
    auto object = component.create();
    _clsOPaneCommDLL* const held = object.get();
    int events = 0;
    host.events = [&] {
        if (++events == 3)
            object.reset();
    };
    EXPECT_EQ(synchronize(held), 1);  // nobody answered, for 100 ms
    EXPECT_GE(events, 3);
    EXPECT_EQ(component.callEntry("DllCanUnloadNow"), S_OK);
}

TEST_F(Component, ShowsMessageBoxesThroughTheHost) {
    ServedModule module;
    ThreadHost host(module.devicePath());
    const auto object = component.create();
    ASSERT_EQ(synchronize(object.get()), 0);
    module.withModule(
        [](auto& served) { served.fault({.fault = simulator::Fault::ignoreHandshake, .count = simulator::kForEver}); });
    LONG baudRate = 19200;
    SHORT status = 0;
    EXPECT_EQ(object->ChangeBaudrate(&baudRate, &status), S_OK);
    EXPECT_EQ(status, 1);
    EXPECT_NE(host.shown, "");
}

TEST_F(Component, IsUnloadedOnceNothingIsHeld) {
    const auto isLoaded = [] { return contentOf("/proc/self/maps").find("libOPaneCommDLL") != std::string::npos; };
    const ThreadHost host("/nonexistent");
    auto object = component.create();
    CoFreeUnusedLibraries();
    EXPECT_TRUE(isLoaded());
    object.reset();
    const auto classFactory = [] {
        void* made = nullptr;
        CoGetClassObject(CLSID_clsOPaneCommDLL, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory, &made);
        return Reference(static_cast<IClassFactory*>(made));
    };
    auto factory = classFactory();
    CoFreeUnusedLibraries();
    EXPECT_TRUE(isLoaded());
    factory->LockServer(1);
    factory.reset();
    CoFreeUnusedLibraries();
    EXPECT_TRUE(isLoaded());
    classFactory()->LockServer(0);
    CoFreeUnusedLibraries();
    EXPECT_FALSE(isLoaded());
}

TEST_F(Component, DoesNotGrow) {
    const ThreadHost host("/nonexistent");
    const auto rounds = [this](int count) {
        for (int i = 0; i < count; ++i)
            ASSERT_NE(component.create().get(), nullptr);
    };
    rounds(100);
    const auto before = mallinfo2().uordblks;
    rounds(10'000);
    EXPECT_LT(mallinfo2().uordblks, before + 4096);
}

// ---- the registry -------------------------------------------------------------------------------------------------

TEST_F(Component, LeavesNothingOfItselfInTheRegistry) {
    const std::string entered = contentOf(component.registry());
    ASSERT_NE(entered.find("OPaneCommDLL.clsOPaneCommDLL"), std::string::npos);
    EXPECT_EQ(component.callEntry("DllRegisterServer"), S_OK);
    EXPECT_EQ(contentOf(component.registry()), entered);
    std::ofstream(component.registry(), std::ios::app) << "# a note\n";
    EXPECT_EQ(component.callEntry("DllUnregisterServer"), S_OK);
    EXPECT_EQ(contentOf(component.registry()), "# a note\n");
    EXPECT_EQ(component.callEntry("DllUnregisterServer"), S_OK);

    void* made = nullptr;
    EXPECT_EQ(component.create(IID_IUnknown, &made), CO_E_CLASSSTRING);
    EXPECT_NE(takeDescription().find(component.registry()), std::string::npos);
}

TEST_F(Component, LosesNothingInParallelRegistrations) {
    constexpr std::uint32_t kThreads = 4;
    constexpr std::uint32_t kClasses = 25;
    std::vector<std::thread> threads;
    for (std::uint32_t t = 0; t < kThreads; ++t)
        threads.emplace_back([t] {
            for (std::uint32_t i = 0; i < kClasses; ++i) {
                const std::string name = "Some.Class" + std::to_string(t * kClasses + i);
                EXPECT_EQ(OpaneRegisterClass({t, 0, 0, {static_cast<std::uint8_t>(i)}}, name.c_str(), "/some.so"),
                          S_OK);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    const std::string content = contentOf(component.registry());
    EXPECT_EQ(std::count(content.begin(), content.end(), '\n'), 1 + kThreads * kClasses);
}

TEST_F(Component, KeepsARegistryBehindALink) {
    const TemporaryFolder folder;
    const std::string link = folder / "link";
    std::filesystem::create_symlink(folder / "real/components", link);  // which leads nowhere yet
    setenv("OPANE_COMPONENT_REGISTRY", link.c_str(), 1);
    EXPECT_EQ(component.callEntry("DllRegisterServer"), S_OK);
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_NE(contentOf(folder / "real/components"), "");
    EXPECT_EQ(component.callEntry("DllUnregisterServer"), S_OK);
    EXPECT_FALSE(std::filesystem::exists(folder / "real/components"));
}

TEST_F(Component, RegistersItsOwnFileAlsoWhenLoadedByARelativeName) {
    const auto before = std::filesystem::current_path();
    const std::filesystem::path file = OPANECOMMDLL_PROGRAM;
    std::filesystem::current_path(file.parent_path());
    const SharedLibrary library("./" + file.filename().string());
    std::filesystem::current_path(before);
    EXPECT_EQ(library.function<HRESULT()>("DllRegisterServer")(), S_OK);
    EXPECT_NE(contentOf(component.registry()).find("\t" + file.string() + "\n"), std::string::npos);
}

TEST_F(Component, SaysWhyARegistryCannotBeWritten) {
    const TemporaryFolder folder;
    for (const std::string& place : {folder.path(), std::string("/proc/nothing/components"), std::string(5000, 'a')}) {
        setenv("OPANE_COMPONENT_REGISTRY", place.c_str(), 1);
        EXPECT_EQ(component.callEntry("DllRegisterServer"), SELFREG_E_CLASS) << place;
        const std::string named = place.size() < 4096 ? place.substr(0, 8) : "5000 bytes";
        EXPECT_NE(takeDescription().find(named), std::string::npos) << place;
    }
    EXPECT_EQ(OpaneRegisterClass(CLSID_clsOPaneCommDLL, "Some.Class", "relative.so"), E_INVALIDARG);
}

}  // namespace
}  // namespace opane::test
