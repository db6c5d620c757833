#pragma once

/// The component runtime as hosts and components see it. On Windows it is the system's own. Elsewhere this header
/// declares the same binary interface, and libopane-component.so holds it: what a host and a component written against
/// the one need on the other.

#ifdef _WIN32

#include <windows.h>
// After windows.h, which they need.
#include <oaidl.h>
#include <ocidl.h>
#include <oleauto.h>
#include <olectl.h>

#else

#include <cstddef>
#include <cstdint>

#define STDMETHODCALLTYPE
#define STDAPI extern "C" __attribute__((visibility("default"))) HRESULT
#define OPANE_RUNTIME_API extern "C" __attribute__((visibility("default")))
#define OLESTR(text) u##text

// The system's types by width: a LONG has 32 bits everywhere, so signatures never say long or int.
typedef std::int32_t HRESULT;
typedef std::int32_t SCODE;
typedef std::int32_t LONG;
typedef std::uint32_t ULONG;
typedef std::int16_t SHORT;
typedef std::uint16_t USHORT;
typedef std::uint16_t WORD;
typedef std::uint32_t DWORD;
typedef std::uint32_t UINT;
typedef std::int32_t INT;
typedef std::int32_t BOOL;
typedef std::uint32_t LCID;
typedef std::int32_t DISPID;
typedef std::int32_t MEMBERID;
typedef std::uint16_t VARTYPE;
typedef std::int16_t VARIANT_BOOL;
typedef double DATE;
typedef char16_t OLECHAR;
typedef OLECHAR* LPOLESTR;
typedef const OLECHAR* LPCOLESTR;
typedef OLECHAR* BSTR;  ///< UTF-16 units behind their length in bytes (4 bytes, unsigned); null stands for empty

constexpr VARIANT_BOOL VARIANT_TRUE = -1;
constexpr VARIANT_BOOL VARIANT_FALSE = 0;

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};
typedef GUID IID;
typedef GUID CLSID;
typedef const GUID& REFGUID;
typedef const IID& REFIID;
typedef const CLSID& REFCLSID;

inline bool operator==(REFGUID one, REFGUID other) {
    bool same = one.Data1 == other.Data1 && one.Data2 == other.Data2 && one.Data3 == other.Data3;
    for (int i = 0; i < 8; ++i)
        same = same && one.Data4[i] == other.Data4[i];
    return same;
}
inline bool operator!=(REFGUID one, REFGUID other) {
    return !(one == other);
}

constexpr bool SUCCEEDED(HRESULT result) {
    return result >= 0;
}
constexpr bool FAILED(HRESULT result) {
    return result < 0;
}

constexpr HRESULT S_OK = 0;
constexpr HRESULT S_FALSE = 1;
constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001U);
constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002U);
constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003U);
constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005U);
constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFFU);
constexpr HRESULT E_ACCESSDENIED = static_cast<HRESULT>(0x80070005U);
constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000EU);
constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057U);
constexpr HRESULT DISP_E_UNKNOWNINTERFACE = static_cast<HRESULT>(0x80020001U);
constexpr HRESULT DISP_E_MEMBERNOTFOUND = static_cast<HRESULT>(0x80020003U);
constexpr HRESULT DISP_E_PARAMNOTFOUND = static_cast<HRESULT>(0x80020004U);
constexpr HRESULT DISP_E_TYPEMISMATCH = static_cast<HRESULT>(0x80020005U);
constexpr HRESULT DISP_E_UNKNOWNNAME = static_cast<HRESULT>(0x80020006U);
constexpr HRESULT DISP_E_BADVARTYPE = static_cast<HRESULT>(0x80020008U);
constexpr HRESULT DISP_E_EXCEPTION = static_cast<HRESULT>(0x80020009U);
constexpr HRESULT DISP_E_OVERFLOW = static_cast<HRESULT>(0x8002000AU);
constexpr HRESULT DISP_E_BADINDEX = static_cast<HRESULT>(0x8002000BU);
constexpr HRESULT DISP_E_BADPARAMCOUNT = static_cast<HRESULT>(0x8002000EU);
constexpr HRESULT DISP_E_PARAMNOTOPTIONAL = static_cast<HRESULT>(0x8002000FU);
constexpr HRESULT RPC_E_WRONG_THREAD = static_cast<HRESULT>(0x8001010EU);
constexpr HRESULT CLASS_E_NOAGGREGATION = static_cast<HRESULT>(0x80040110U);
constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = static_cast<HRESULT>(0x80040111U);
constexpr HRESULT REGDB_E_READREGDB = static_cast<HRESULT>(0x80040150U);
constexpr HRESULT REGDB_E_CLASSNOTREG = static_cast<HRESULT>(0x80040154U);
constexpr HRESULT SELFREG_E_CLASS = static_cast<HRESULT>(0x80040201U);
constexpr HRESULT CO_E_CLASSSTRING = static_cast<HRESULT>(0x800401F3U);
constexpr HRESULT CO_E_DLLNOTFOUND = static_cast<HRESULT>(0x800401F8U);
constexpr HRESULT CO_E_ERRORINDLL = static_cast<HRESULT>(0x800401F9U);

constexpr DWORD CLSCTX_INPROC_SERVER = 1;
constexpr DWORD COINIT_APARTMENTTHREADED = 2;
constexpr WORD DISPATCH_METHOD = 1;
constexpr WORD DISPATCH_PROPERTYGET = 2;
constexpr DISPID DISPID_UNKNOWN = -1;
constexpr LCID LOCALE_USER_DEFAULT = 0x0400;

enum VARENUM : VARTYPE {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_DATE = 7,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    VT_BYREF = 0x4000,
};

struct IDispatch;
struct ITypeInfo;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // nothing is deleted through an interface
/// Interfaces have no virtual destructor and no overloads, so that their slots are where every compiler expects them.
struct IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;
};

/// A value and its type. What VT_BYREF points to belongs to the caller; a string by value belongs to the variant.
struct VARIANT {
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union {
        std::int8_t cVal;
        std::uint8_t bVal;
        SHORT iVal;
        USHORT uiVal;
        LONG lVal;
        ULONG ulVal;
        INT intVal;
        UINT uintVal;
        std::int64_t llVal;
        std::uint64_t ullVal;
        float fltVal;
        double dblVal;
        DATE date;
        VARIANT_BOOL boolVal;
        SCODE scode;
        BSTR bstrVal;
        IUnknown* punkVal;
        IDispatch* pdispVal;
        std::int8_t* pcVal;
        std::uint8_t* pbVal;
        SHORT* piVal;
        USHORT* puiVal;
        LONG* plVal;
        ULONG* pulVal;
        INT* pintVal;
        UINT* puintVal;
        std::int64_t* pllVal;
        std::uint64_t* pullVal;
        float* pfltVal;
        double* pdblVal;
        DATE* pdate;
        VARIANT_BOOL* pboolVal;
        SCODE* pscode;
        BSTR* pbstrVal;
        VARIANT* pvarVal;
        void* byref;
        void* pointers[2];  // the width of the widest member that the system has
    };
};
typedef VARIANT VARIANTARG;

struct DISPPARAMS {
    VARIANTARG* rgvarg;  ///< last argument first; the named ones before all others
    DISPID* rgdispidNamedArgs;
    UINT cArgs;
    UINT cNamedArgs;
};

struct EXCEPINFO {
    WORD wCode;
    WORD wReserved;
    BSTR bstrSource;
    BSTR bstrDescription;
    BSTR bstrHelpFile;
    DWORD dwHelpContext;
    void* pvReserved;
    HRESULT(STDMETHODCALLTYPE* pfnDeferredFillIn)(EXCEPINFO*);
    SCODE scode;
};

static_assert(sizeof(VARIANT) == 8 + 2 * sizeof(void*) && offsetof(VARIANT, byref) == 8, "not the binary interface");
static_assert(sizeof(void*) != 8 || sizeof(EXCEPINFO) == 64, "not the binary interface");

struct IClassFactory : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** object) = 0;
    virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) = 0;
};

struct IDispatch : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid,
                                                    DISPID* identifiers) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID identifier, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params,
                                             VARIANT* result, EXCEPINFO* exception, UINT* argumentError) = 0;
};

struct IErrorInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetGUID(GUID* guid) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSource(BSTR* source) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDescription(BSTR* description) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR* helpFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD* helpContext) = 0;
};

struct ICreateErrorInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE SetGUID(REFGUID guid) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSource(LPOLESTR source) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDescription(LPOLESTR description) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpFile(LPOLESTR helpFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD helpContext) = 0;
};

struct ISupportErrorInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID riid) = 0;
};

#pragma GCC diagnostic pop

constexpr GUID IID_NULL = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};
constexpr IID IID_IUnknown = {0x00000000, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID IID_IClassFactory = {0x00000001, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID IID_IDispatch = {0x00020400, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID IID_IErrorInfo = {0x1CF2B120, 0x547D, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};
constexpr IID IID_ICreateErrorInfo = {0x22F03340, 0x547D, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};
constexpr IID IID_ISupportErrorInfo = {0xDF0B3D60, 0x548F, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};

// Strings. Allocation gives null when memory runs out; a null string is freed and measured as an empty one.
OPANE_RUNTIME_API BSTR SysAllocString(LPCOLESTR text);
OPANE_RUNTIME_API BSTR SysAllocStringLen(LPCOLESTR text, UINT units);  ///< null text: units that the caller fills
OPANE_RUNTIME_API void SysFreeString(BSTR text);
OPANE_RUNTIME_API UINT SysStringLen(BSTR text);      ///< UTF-16 units
OPANE_RUNTIME_API UINT SysStringByteLen(BSTR text);  ///< bytes

// Variants: empty, numbers, truth values and strings, by value and by reference.
OPANE_RUNTIME_API void VariantInit(VARIANT* variant);
OPANE_RUNTIME_API HRESULT VariantClear(VARIANT* variant);
OPANE_RUNTIME_API HRESULT VariantCopy(VARIANT* target, const VARIANT* source);     ///< a reference stays one
OPANE_RUNTIME_API HRESULT VariantCopyInd(VARIANT* target, const VARIANT* source);  ///< by value what was by reference
/// Converts to a number, a truth value or a string; halves round to even; a text is a decimal number with a point, or
/// one in hexadecimal after &H. Target and source may be the same. On failure the target stays as it was.
/// @param lcid, flags  without effect here: texts are the same in every locale
/// @return DISP_E_TYPEMISMATCH, DISP_E_OVERFLOW, DISP_E_BADVARTYPE, E_OUTOFMEMORY
OPANE_RUNTIME_API HRESULT VariantChangeTypeEx(VARIANT* target, const VARIANT* source, LCID lcid, USHORT flags,
                                              VARTYPE type);

OPANE_RUNTIME_API HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT flags, VARTYPE type);

// Classes. A failure leaves an explanation for GetErrorInfo: CO_E_CLASSSTRING for a name and REGDB_E_CLASSNOTREG for an
// identifier that is not registered, REGDB_E_READREGDB for a registry that cannot be read, CO_E_DLLNOTFOUND for a
// library that cannot be loaded, CO_E_ERRORINDLL for one that is no component, and what the component answers.
OPANE_RUNTIME_API HRESULT CLSIDFromString(LPCOLESTR text, CLSID* clsid);        ///< "{8-4-4-4-12}" in hexadecimal
OPANE_RUNTIME_API int StringFromGUID2(REFGUID guid, LPOLESTR text, int units);  ///< 39 units with the final zero
OPANE_RUNTIME_API HRESULT CLSIDFromProgID(LPCOLESTR progId, CLSID* clsid);      ///< any letter case
OPANE_RUNTIME_API HRESULT CoInitialize(void* reserved);  ///< nothing to do here; hosts of both systems call it
OPANE_RUNTIME_API HRESULT CoInitializeEx(void* reserved, DWORD model);
OPANE_RUNTIME_API void CoUninitialize();
OPANE_RUNTIME_API HRESULT CoGetClassObject(REFCLSID clsid, DWORD context, void* reserved, REFIID riid, void** object);
OPANE_RUNTIME_API HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID riid, void** object);
/// Unloads the components that hold nothing any more. Not while another thread is releasing an object.
OPANE_RUNTIME_API void CoFreeUnusedLibraries();

// Error information of the calling thread.
OPANE_RUNTIME_API HRESULT CreateErrorInfo(ICreateErrorInfo** info);
OPANE_RUNTIME_API HRESULT SetErrorInfo(ULONG reserved, IErrorInfo* info);   ///< null: none
OPANE_RUNTIME_API HRESULT GetErrorInfo(ULONG reserved, IErrorInfo** info);  ///< takes it; S_FALSE and null: none

/// Enters a class into the registry: the file that OPANE_COMPONENT_REGISTRY names, else opane/components under
/// XDG_DATA_HOME or ~/.local/share. Written whole, under a lock, so that parallel registrations lose nothing. Another
/// class under the same programmatic identifier gives way.
/// @param library  absolute path of the component, UTF-8
/// @return E_ACCESSDENIED, SELFREG_E_CLASS or E_INVALIDARG, with an explanation, and the registry stays as it was
OPANE_RUNTIME_API HRESULT OpaneRegisterClass(REFCLSID clsid, const char* progId, const char* library);
/// Takes it out again, and removes the file with its last class. One that is not there is no failure.
OPANE_RUNTIME_API HRESULT OpaneUnregisterClass(REFCLSID clsid);

/// What a file dialog is asked to be; UTF-8.
struct OpaneFileDialog {
    BOOL save;  ///< else open
    const char* title;
    const char* folder;      ///< where it starts
    const char* filter;      ///< "description|pattern"
    const char* suggestion;  ///< the name chosen before
    BOOL overwritePrompt;
};

/// What a host without a system's message queue gives the components on its thread. Each member may be null. They are
/// called on the thread that set them, in the middle of a call, and must not let an exception out.
struct OpaneHost {
    void* context;  ///< handed to each of them
    /// Runs the host's pending events once, at least every millisecond of a wait; it may call the component.
    void (*runEvents)(void* context);
    /// Shows a message box; @return whether OK closed it. Without it the text goes to the standard error stream.
    BOOL (*showMessageBox)(void* context, const char* text, const char* title, BOOL withCancel);
    /// Lets the user choose a file; @return whether path (UTF-8, of that many bytes) has been filled. Without it every
    /// dialog is cancelled.
    BOOL (*chooseFile)(void* context, const OpaneFileDialog* dialog, char* path, std::size_t pathBytes);
    /// The device of a COM port, copied at once; null or empty: none. Without it the environment variable
    /// OPANE_COM<n>, else /dev/ttyS<n-1>.
    const char* (*deviceOfPort)(void* context, SHORT comPort);
};

/// Sets the calling thread's host, which must stay where it is until it is replaced; null: none.
/// @return the one before
OPANE_RUNTIME_API const OpaneHost* OpaneSetHost(const OpaneHost* host);
OPANE_RUNTIME_API const OpaneHost* OpaneGetHost();

#endif
