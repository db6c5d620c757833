#pragma once

#include <cstddef>
#include <cstdint>

#include "automation/clsOPaneCommDLL.h"
#include "automation/component/lifetime.h"
#include "automation/component/referenced.h"
#include "opane/OPaneCommDLL.h"

namespace opane::component {

/// The public class as hosts hold it: its dual interface with error information, on the thread that made it.
/// References may be taken and released on any thread; every call elsewhere gives RPC_E_WRONG_THREAD.
class AutomationObject final : public Referenced<AutomationObject, _clsOPaneCommDLL, ISupportErrorInfo> {
public:
    /// Makes the object, with one reference for the caller.
    /// @return E_NOINTERFACE, and nothing has been made, for an interface that it has not
    static HRESULT create(REFIID riid, void** object);

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info) override;
    /// The first name is a method's, the others are names of its parameters; in any letter case.
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid,
                                            DISPID* identifiers) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID identifier, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params,
                                     VARIANT* result, EXCEPINFO* exception, UINT* argumentError) override;

    HRESULT STDMETHODCALLTYPE DisplayString(BSTR strString, SHORT* intLignePos, SHORT* intColumnPos, SHORT* intPreGap,
                                            SHORT* intInvertedText, BSTR strGenCarFile,
                                            SHORT* intReturnStatus) override;
    HRESULT STDMETHODCALLTYPE Synchronize(SHORT* intComPort, LONG* lngBaudrate, SHORT* intNode,
                                          SHORT* intReturnStatus) override;
    HRESULT STDMETHODCALLTYPE Version(BSTR* strVersion) override;
    HRESULT STDMETHODCALLTYPE ChangeBaudrate(LONG* lngNewBaudrate, SHORT* intReturnStatus) override;
    HRESULT STDMETHODCALLTYPE ReadStatus(SHORT* intUpSideDown, SHORT* intInvertedDisplay, SHORT* intCadreON,
                                         SHORT* intLCDOn, SHORT* intAutomaticBacklightON,
                                         SHORT* intReturnStatus) override;
    HRESULT STDMETHODCALLTYPE WriteStatus(SHORT* intUpSideDown, SHORT* intInvertedDisplay, SHORT* intCadreON,
                                          SHORT* intLCDOn, SHORT* intAutomaticBacklightON,
                                          SHORT* intReturnStatus) override;
    HRESULT STDMETHODCALLTYPE DisplayBMP(BSTR strFileNameWithPath, SHORT* intReturnStatus) override;
    HRESULT STDMETHODCALLTYPE ReadIRLastKey(SHORT* intLastKeyNumber, SHORT* intToggleOn,
                                            SHORT* intReturnStatus) override;

    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID riid) override;

private:
    friend Referenced;

    AutomationObject() = default;
    ~AutomationObject() = default;

    void* interfaceFor(REFIID riid);
    void checkThread() const;
    template <auto Operation, typename... Arguments>
    HRESULT call(std::size_t slot, Arguments... arguments);

    const Holding holding_;
    const std::uint64_t thread_ = callingThread();
    clsOPaneCommDLL object_;

    static std::uint64_t callingThread() noexcept;
};

}  // namespace opane::component
