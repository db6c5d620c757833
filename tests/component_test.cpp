// The component as a host meets it: the built library, loaded by the component runtime from its registry.

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

#include "support/component.h"
#include "support/program.h"

namespace opane::test {
namespace {

constexpr auto kFileNotFound = static_cast<HRESULT>(0x800A0035U);
constexpr auto kObjectNotSet = static_cast<HRESULT>(0x800A005BU);
constexpr auto kPortNotOpen = static_cast<HRESULT>(0x800A1F52U);

TEST_F(Component, ExportsItsFourEntryPointsAndNothingElse) {
    const auto symbols = runProgram({"nm", "-D", "--defined-only", "--format=just-symbols", OPANECOMMDLL_PROGRAM});
    EXPECT_EQ(symbols.output, "DllCanUnloadNow\nDllGetClassObject\nDllRegisterServer\nDllUnregisterServer\n");
    const auto others =
        runProgram({"sh", "-c",
                    "readelf -d " OPANECOMMDLL_PROGRAM " | grep NEEDED | "
                    "grep -vE '\\[(libopane-component|libstdc\\+\\+|libm|libgcc_s|libc|ld-linux|lib(a|ub|t)san)[-.]'"});
    EXPECT_EQ(others.output, "");
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
    EXPECT_EQ(synchronize(*object, kPortNotOpen), 7);
    EXPECT_NE(takeDescription().find("/nonexistent/device"), std::string::npos);
    SHORT status = 7;
    EXPECT_EQ(object->DisplayBMP(AutomationString("none.bmp"), nullptr), E_POINTER);
    EXPECT_NE(takeDescription().find("intReturnStatus"), std::string::npos);
    EXPECT_EQ(object->DisplayBMP(nullptr, &status), kFileNotFound);
    EXPECT_EQ(status, 7);
    EXPECT_EQ(object->Version(nullptr), E_POINTER);
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

    SHORT key = 0, toggle = 0, status = 7;  // the thread's link is still this object's
    EXPECT_EQ(object->ReadIRLastKey(&key, &toggle, &status), S_OK);
    EXPECT_EQ(status, 0);
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
    const auto rounds = [](const std::string& device) {
        const ThreadHost own(device);
        for (int round = 0; round < 10; ++round)
            EXPECT_EQ(synchronize(*create()), 0);
    };
    simulator::ServedModule second;
    std::thread other(rounds, second.devicePath());
    rounds(module.devicePath());
    other.join();
}

TEST_F(Component, MayLoseItsLinkInTheMiddleOfItsCalls) {
    const auto first = create();
    auto second = create();
    EXPECT_EQ(synchronize(*first), 0) << "on the second one's link";
    std::thread releases([&second] { second.reset(); });
    HRESULT result = S_OK;
    SHORT key = 0, toggle = 0, status = 0;
    while (result == S_OK)
        result = first->ReadIRLastKey(&key, &toggle, &status);
    EXPECT_EQ(result, kObjectNotSet);
    releases.join();
}

TEST_F(Component, LivesUntilItsCallEndsWhenAnEventReleasesIt) {
    auto object = create();
    _clsOPaneCommDLL* const held = object.get();
    SHORT port = 1, nobody = 1, status = 7;
    LONG baudRate = 9600;
    host.events = [&] { object.reset(); };
    EXPECT_EQ(held->Synchronize(&port, &baudRate, &nobody, &status), S_OK);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(object, nullptr);
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

// ---- the registry -------------------------------------------------------------------------------------------------

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
    std::vector<std::thread> threads;
    for (std::uint32_t t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            for (std::uint32_t i = 0; i < 25; ++i) {
                const CLSID clsid{t, 0, 0, {static_cast<std::uint8_t>(i)}};
                const std::string name = "Some.Class" + std::to_string(t * 25 + i);
                EXPECT_EQ(OpaneRegisterClass(clsid, name.c_str(), "/some.so"), S_OK);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
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
    const auto before = std::filesystem::current_path();
    const std::filesystem::path file = OPANECOMMDLL_PROGRAM;
    std::filesystem::current_path(file.parent_path());
    const SharedLibrary library(std::filesystem::path(".") / file.filename());
    std::filesystem::current_path(before);
    EXPECT_EQ(library.function<HRESULT()>("DllRegisterServer")(), S_OK);
    EXPECT_NE(contentOf(registry).find(file.string() + "\n"), std::string::npos);
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

}  // namespace
}  // namespace opane::test
