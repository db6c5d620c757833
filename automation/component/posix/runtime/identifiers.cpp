#include "automation/component/posix/runtime/identifiers.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "automation/component/posix/runtime/error_information.h"
#include "shared/letter_case.h"
#include "shared/utf16.h"

namespace {

constexpr const char* kPattern = "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";
constexpr int kTextUnits = 39;  // with the final zero

int hexDigit(OLECHAR unit) {
    if (unit >= u'0' && unit <= u'9')
        return unit - u'0';
    const OLECHAR letter = opane::lowerCase(unit);
    return letter >= u'a' && letter <= u'f' ? letter - u'a' + 10 : -1;
}

}  // namespace

namespace opane::component_runtime {

bool parseIdentifier(LPCOLESTR text, GUID& identifier) {
    std::uint8_t bytes[16]{};
    int digits = 0;
    const OLECHAR* unit = text;
    for (const char* expected = kPattern; *expected != '\0'; ++expected, ++unit) {
        const int digit = hexDigit(*unit);
        if (*expected == 'x' ? digit < 0 : *unit != static_cast<OLECHAR>(*expected))
            return false;
        if (*expected == 'x') {
            bytes[digits / 2] = static_cast<std::uint8_t>(bytes[digits / 2] * 16 + digit);
            ++digits;
        }
    }
    if (*unit != u'\0')
        return false;
    identifier.Data1 =
        std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
    identifier.Data2 = static_cast<std::uint16_t>(bytes[4] << 8 | bytes[5]);
    identifier.Data3 = static_cast<std::uint16_t>(bytes[6] << 8 | bytes[7]);
    std::memcpy(identifier.Data4, bytes + 8, sizeof identifier.Data4);
    return true;
}

std::string identifierText(REFGUID identifier) {
    OLECHAR text[kTextUnits];
    StringFromGUID2(identifier, text, kTextUnits);
    return utf8Text(text);
}

}  // namespace opane::component_runtime

HRESULT CLSIDFromString(LPCOLESTR text, CLSID* clsid) try {
    if (text == nullptr || clsid == nullptr)
        return E_INVALIDARG;
    *clsid = CLSID{};
    if (opane::component_runtime::parseIdentifier(text, *clsid))
        return S_OK;
    std::string explanation = opane::utf8Text(text);
    explanation.append(" is no identifier; expected ").append(kPattern);
    return opane::component_runtime::explain(CO_E_CLASSSTRING, explanation.c_str());
} catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
}

int StringFromGUID2(REFGUID guid, LPOLESTR text, int units) {
    if (text == nullptr || units < kTextUnits)
        return 0;
    char plain[kTextUnits];
    std::snprintf(plain, sizeof plain, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", guid.Data1, guid.Data2,
                  guid.Data3, guid.Data4[0], guid.Data4[1], guid.Data4[2], guid.Data4[3], guid.Data4[4], guid.Data4[5],
                  guid.Data4[6], guid.Data4[7]);
    for (int i = 0; i < kTextUnits; ++i)
        text[i] = static_cast<OLECHAR>(plain[i]);
    return kTextUnits;
}
