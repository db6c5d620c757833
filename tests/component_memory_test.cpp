// The component and its runtime when memory runs out: at each allocation of a call, that one fails, or it and all that
// follow. The call has its result, nothing is lost, and the next one works.

#include <dlfcn.h>

#include <limits>
#include <new>

#include "support/component.h"
#include "support/glyph_bytes.h"

namespace {

// Allocations of this thread: from the first that fails to the last one; and the blocks that it holds.
constexpr long kNever = std::numeric_limits<long>::max();
thread_local long allocations = 0;
thread_local long firstFailure = kNever;
thread_local long lastFailure = kNever;
thread_local long held = 0;

bool fails() {
    const long number = ++allocations;
    return number >= firstFailure && number <= lastFailure;
}

void* allocate(std::size_t bytes) {
    void* const block = fails() ? nullptr : std::malloc(bytes);
    held += block != nullptr ? 1 : 0;
    return block;
}

}  // namespace

// Not inlined: the compiler would take new and free for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t bytes) {
    void* const block = allocate(bytes);
    return block != nullptr ? block : throw std::bad_alloc();
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return allocate(bytes);
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
    held -= block != nullptr ? 1 : 0;
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
BSTR SysAllocStringLen(LPCOLESTR text, UINT units) {
    static auto* const real = reinterpret_cast<decltype(&SysAllocStringLen)>(dlsym(RTLD_NEXT, "SysAllocStringLen"));
    const BSTR allocated = fails() ? nullptr : real(text, units);
    held += allocated != nullptr ? 1 : 0;
    return allocated;
}
void SysFreeString(BSTR text) {
    static auto* const real = reinterpret_cast<decltype(&SysFreeString)>(dlsym(RTLD_NEXT, "SysFreeString"));
    held -= text != nullptr ? 1 : 0;
    real(text);
}

namespace opane::test {
namespace {

struct OutOfMemory : Component {
    OutOfMemory() {
        setenv("OPANE_LOG_LEVEL", "3", 1);
        setenv("OPANE_LOG_FOLDER", folder.path().c_str(), 1);
    }

    /// Runs a call that gives its result in the end, with a failure at each of its allocations.
    template <typename Call>
    void exhaust(const char* name, HRESULT expected, Call call) {
        ASSERT_EQ(call(), expected) << name;
        SetErrorInfo(0, nullptr);
        const long before = held;
        for (const bool alone : {true, false}) {
            bool hasFailed = true;
            for (long number = 1; hasFailed; ++number) {
                firstFailure = allocations + number;
                lastFailure = alone ? firstFailure : kNever;
                const HRESULT result = call();
                hasFailed = allocations >= firstFailure;
                firstFailure = lastFailure = kNever;
                EXPECT_TRUE(result == expected || result == E_OUTOFMEMORY) << name << ", " << number << ": " << result;
            }
        }
        EXPECT_EQ(call(), expected) << name;
        SetErrorInfo(0, nullptr);
        EXPECT_EQ(held, before) << name;
    }
};

TEST_F(OutOfMemory, IsAResultOfEveryCallOfAnObject) {
    const auto object = create();
    SHORT zero = 0, status = 7;
    ASSERT_EQ(synchronize(*object), 0);
    const AutomationString missing(folder / "nowhere/missing.bmp");
    exhaust("DisplayBMP", static_cast<HRESULT>(0x800A004CU), [&] { return object->DisplayBMP(missing, &status); });
    const AutomationString path(folder.write("all.gen", fileText(generator())));
    const AutomationString text("a text");
    exhaust("DisplayString", S_OK,
            [&] { return object->DisplayString(text, &zero, &zero, &zero, &zero, path, &status); });
    BSTR version = nullptr;
    exhaust("Version", S_OK, [&] { return object->Version(&version); });
    SysFreeString(version);

    VARIANT written{};
    VARIANT arguments[]{variable(written), variant(VT_BSTR, static_cast<BSTR>(missing))};
    DISPID parameters[]{0, 1};
    EXCEPINFO exception{};
    const auto invoke = [&](DISPID method, UINT count) {
        DISPPARAMS named{arguments, parameters, count, count};
        const HRESULT result =
            object->Invoke(method, IID_NULL, 0, DISPATCH_METHOD, &named, nullptr, &exception, nullptr);
        VariantClear(&written);
        SysFreeString(std::exchange(exception.bstrSource, nullptr));
        SysFreeString(std::exchange(exception.bstrDescription, nullptr));
        return result == DISP_E_EXCEPTION ? exception.scode : result;
    };
    exhaust("Invoke, named", S_OK, [&] { return invoke(0x60030004, 1); });
    exhaust("Invoke, no number", DISP_E_TYPEMISMATCH, [&] { return invoke(0x60030008, 2); });
    std::u16string unknown = u"NoSuchMethodOfThis";
    LPOLESTR names = unknown.data();
    exhaust("GetIDsOfNames", DISP_E_UNKNOWNNAME,
            [&] { return object->GetIDsOfNames(IID_NULL, &names, 1, 0, parameters); });

    EXPECT_EQ(synchronize(*object), 0);
}

TEST_F(OutOfMemory, IsAResultOfCreatingAndRegistering) {
    auto kept = create();  // holds the library, whose own memory is made once
    exhaust("CoCreateInstance", S_OK, [&] {
        void* made = nullptr;
        const HRESULT result = create(IID_IUnknown, &made);
        const Reference<IUnknown> released(static_cast<IUnknown*>(made));
        return result;
    });
    exhaust("CoCreateInstance of another", REGDB_E_CLASSNOTREG, [&] {
        void* none = nullptr;
        return CoCreateInstance(CLSID{}, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &none);
    });
    CLSID clsid{};
    exhaust("CLSIDFromProgID", CO_E_CLASSSTRING, [&] { return CLSIDFromProgID(u"No.Such", &clsid); });
    exhaust("CLSIDFromString", CO_E_CLASSSTRING, [&] { return CLSIDFromString(u"No such", &clsid); });
    const AutomationString digits("                   12");
    const VARIANT written = variant(VT_BSTR, static_cast<BSTR>(digits));
    exhaust("VariantChangeType", S_OK, [&] {
        VARIANT changed{};
        return VariantChangeType(&changed, &written, 0, VT_I4);
    });
    const SharedLibrary library(OPANECOMMDLL_PROGRAM);
    for (const char* entry : {"DllUnregisterServer", "DllRegisterServer"})
        exhaust(entry, S_OK, [&] { return library.function<HRESULT()>(entry)(); });
    kept.reset();
    const long before = held;
    EXPECT_NE(create(), nullptr);
    EXPECT_EQ(held, before) << "what a thread's only object leaves";
}

}  // namespace
}  // namespace opane::test
