#include "automation/component/automation_object.h"

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "automation/component/arguments.h"
#include "automation/component/boundary.h"
#include "automation/component/component_host.h"
#include "automation/component/method_table.h"
#include "automation/component/type_information.h"
#include "automation/component/wide_text.h"

namespace opane::component {
namespace {

/// One argument of the interface as the class takes it.
template <typename Argument>
class Adapted;

template <>
class Adapted<SHORT*> {
public:
    explicit Adapted(SHORT* number) : number_(*number) {}
    operator std::int16_t&() const { return number_; }
    void finish() {}

private:
    SHORT& number_;
};

template <>
class Adapted<LONG*> {
public:
    explicit Adapted(const LONG* number) : number_(*number) {}
    operator std::int32_t() const { return number_; }
    void finish() {}

private:
    std::int32_t number_;
};

template <>
class Adapted<BSTR> {
public:
    explicit Adapted(BSTR text) : text_(textOf(text)) {}
    operator const std::string&() const { return text_; }
    void finish() {}

private:
    std::string text_;
};

template <>
class Adapted<BSTR*> {
public:
    explicit Adapted(BSTR* text) : target_(text), text_(textOf(*text)) {}
    operator std::string&() { return text_; }
    void finish() {
        const BSTR replacement = allocateString(text_);
        SysFreeString(std::exchange(*target_, replacement));
    }

private:
    BSTR* target_;
    std::string text_;
};

/// The argument itself, unless it is a null pointer; a null string is an empty one.
template <typename Argument>
Argument checked(Argument argument, const Method& method, std::size_t position) {
    if constexpr (!std::is_same_v<Argument, BSTR>) {
        if (argument == nullptr)
            throw ComponentError(E_POINTER, std::string(method.name) + ": argument " + std::to_string(position + 1) +
                                                ", " + method.allParameters[position].name + ", is a null pointer");
    }
    return argument;
}

void checkPointer(const void* pointer, const char* what) {
    if (pointer == nullptr)
        throw ComponentError(E_POINTER, std::string(what) + " is a null pointer");
}

void checkReserved(REFIID riid) {
    if (riid != IID_NULL)
        throw ComponentError(DISP_E_UNKNOWNINTERFACE, "the reserved interface identifier is not null");
}

std::string quoted(std::basic_string_view<OLECHAR> name) {
    std::string result(1, '"');
    return result.append(textOf(name)).append(1, '"');
}

/// Whether it is the dual interface or one that this extends.
bool isOwn(REFIID riid) {
    return riid == IID_IUnknown || riid == IID_IDispatch || riid == IID__clsOPaneCommDLL;
}

/// Moves the thread's error information into the exception of a late-bound call.
void fill(EXCEPINFO& exception, HRESULT code) {
    exception = EXCEPINFO{};
    exception.scode = code;
    IErrorInfo* info = nullptr;
    if (GetErrorInfo(0, &info) != S_OK)
        return;
    info->GetSource(&exception.bstrSource);
    info->GetDescription(&exception.bstrDescription);
    info->Release();
}

}  // namespace

HRESULT AutomationObject::create(REFIID riid, void** object) {
    return atBoundary([&] {
        checkPointer(object, "the place for the object");
        *object = nullptr;
        // Asked before it is made: making one takes the thread's link over.
        if (!isOwn(riid) && riid != IID_ISupportErrorInfo)
            throw ComponentError(E_NOINTERFACE, "clsOPaneCommDLL has no such interface");
        const ComponentHostScope host;
        auto* const made = new AutomationObject;
        made->QueryInterface(riid, object);
        made->Release();
    });
}

void* AutomationObject::interfaceFor(REFIID riid) {
    if (isOwn(riid))
        return static_cast<_clsOPaneCommDLL*>(this);
    return riid == IID_ISupportErrorInfo ? static_cast<ISupportErrorInfo*>(this) : nullptr;
}

/// The calling thread's number, which no other thread gets, not even after its end.
std::uint64_t AutomationObject::callingThread() noexcept {
    static std::atomic<std::uint64_t> lastNumber = 0;
    thread_local std::uint64_t number = 0;  // nothing to destroy: that would pin the library in its process
    if (number == 0)
        number = ++lastNumber;
    return number;
}

void AutomationObject::checkThread() const {
    if (thread_ != callingThread())
        throw ComponentError(RPC_E_WRONG_THREAD, "the object belongs to the thread that created it");
}

HRESULT AutomationObject::InterfaceSupportsErrorInfo(REFIID riid) {
    return riid == IID__clsOPaneCommDLL || riid == IID_IDispatch ? S_OK : S_FALSE;
}

HRESULT AutomationObject::GetTypeInfoCount(UINT* count) {
    return atBoundary([&] {
        checkPointer(count, "the place for the count");
        *count = typeInformationCount();
    });
}

HRESULT AutomationObject::GetTypeInfo(UINT index, LCID /*lcid*/, ITypeInfo** info) {
    return atBoundary([&] {
        checkPointer(info, "the place for the type information");
        *info = nullptr;
        if (index >= typeInformationCount())
            throw ComponentError(DISP_E_BADINDEX, "there is no type information " + std::to_string(index));
        *info = typeInformation();
    });
}

HRESULT AutomationObject::GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID /*lcid*/, DISPID* identifiers) {
    return atBoundary([&] {
        checkThread();
        checkReserved(riid);
        checkPointer(names, "the array of names");
        checkPointer(identifiers, "the array of identifiers");
        for (UINT i = 0; i < count; ++i) {
            checkPointer(names[i], "a name");
            identifiers[i] = DISPID_UNKNOWN;
        }
        if (count == 0)
            return;
        const Method* const method = methodNamed(names[0]);
        if (method == nullptr)
            throw ComponentError(DISP_E_UNKNOWNNAME, quoted(names[0]) + " is no method of clsOPaneCommDLL");
        identifiers[0] = method->identifier;
        std::string unknown;
        for (UINT i = 1; i < count; ++i) {
            identifiers[i] = parameterNamed(*method, names[i]);
            if (identifiers[i] == DISPID_UNKNOWN && unknown.empty())
                unknown = quoted(names[i]) + " is no parameter of " + method->name;
        }
        if (!unknown.empty())
            throw ComponentError(DISP_E_UNKNOWNNAME, unknown);
    });
}

HRESULT AutomationObject::Invoke(DISPID identifier, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params,
                                 VARIANT* result, EXCEPINFO* exception, UINT* argumentError) {
    AddRef();  // a host event may release the object in the middle of the call
    HRESULT end = S_OK;
    const HRESULT refused = atBoundary([&] {
        checkThread();
        checkReserved(riid);
        const Method* const method = methodWith(identifier);
        if (method == nullptr || (flags & DISPATCH_METHOD) == 0)
            throw ComponentError(DISP_E_MEMBERNOTFOUND,
                                 method == nullptr ? "clsOPaneCommDLL has no member " + std::to_string(identifier)
                                                   : std::string(method->name) + " is a method, no property");
        checkPointer(params, "the arguments");
        CallArguments arguments(*method, *params, lcid, argumentError);
        end = method->call(*this, arguments.values());
        if (FAILED(end) && exception != nullptr)
            fill(*exception, end);
        arguments.writeBack();
        if (result != nullptr)
            VariantInit(result);
    });
    Release();
    if (FAILED(end))
        return DISP_E_EXCEPTION;
    return refused;
}

/// Calls the operation of the class between the checks that every method has. The object outlives the call even when a
/// host event releases it meanwhile.
template <auto Operation, typename... Arguments>
HRESULT AutomationObject::call(std::size_t slot, Arguments... arguments) {
    AddRef();
    const HRESULT result = atBoundary([&] {
        checkThread();
        const Method& method = methods()[slot];
        [&]<std::size_t... Index>(std::index_sequence<Index...>) {
            std::tuple adapted{Adapted<Arguments>(checked(arguments, method, Index))...};
            const ComponentHostScope host;
            (object_.*Operation)(std::get<Index>(adapted)...);
            (std::get<Index>(adapted).finish(), ...);
        }
        (std::index_sequence_for<Arguments...>{});
    });
    Release();
    return result;
}

HRESULT AutomationObject::DisplayString(BSTR strString, SHORT* intLignePos, SHORT* intColumnPos, SHORT* intPreGap,
                                        SHORT* intInvertedText, BSTR strGenCarFile, SHORT* intReturnStatus) {
    return call<&clsOPaneCommDLL::DisplayString>(0, strString, intLignePos, intColumnPos, intPreGap, intInvertedText,
                                                 strGenCarFile, intReturnStatus);
}

HRESULT AutomationObject::Synchronize(SHORT* intComPort, LONG* lngBaudrate, SHORT* intNode, SHORT* intReturnStatus) {
    return call<&clsOPaneCommDLL::Synchronize>(1, intComPort, lngBaudrate, intNode, intReturnStatus);
}

HRESULT AutomationObject::Version(BSTR* strVersion) {
    return call<&clsOPaneCommDLL::Version>(2, strVersion);
}

HRESULT AutomationObject::ChangeBaudrate(LONG* lngNewBaudrate, SHORT* intReturnStatus) {
    return call<&clsOPaneCommDLL::ChangeBaudrate>(3, lngNewBaudrate, intReturnStatus);
}

HRESULT AutomationObject::ReadStatus(SHORT* intUpSideDown, SHORT* intInvertedDisplay, SHORT* intCadreON,
                                     SHORT* intLCDOn, SHORT* intAutomaticBacklightON, SHORT* intReturnStatus) {
    return call<&clsOPaneCommDLL::ReadStatus>(4, intUpSideDown, intInvertedDisplay, intCadreON, intLCDOn,
                                              intAutomaticBacklightON, intReturnStatus);
}

HRESULT AutomationObject::WriteStatus(SHORT* intUpSideDown, SHORT* intInvertedDisplay, SHORT* intCadreON,
                                      SHORT* intLCDOn, SHORT* intAutomaticBacklightON, SHORT* intReturnStatus) {
    return call<&clsOPaneCommDLL::WriteStatus>(5, intUpSideDown, intInvertedDisplay, intCadreON, intLCDOn,
                                               intAutomaticBacklightON, intReturnStatus);
}

HRESULT AutomationObject::DisplayBMP(BSTR strFileNameWithPath, SHORT* intReturnStatus) {
    return call<&clsOPaneCommDLL::DisplayBMP>(6, strFileNameWithPath, intReturnStatus);
}

HRESULT AutomationObject::ReadIRLastKey(SHORT* intLastKeyNumber, SHORT* intToggleOn, SHORT* intReturnStatus) {
    return call<&clsOPaneCommDLL::ReadIRLastKey>(7, intLastKeyNumber, intToggleOn, intReturnStatus);
}

}  // namespace opane::component
