#include "platform/environment.h"

#include "platform/windows/system_text.h"

namespace opane {

std::string environmentText(const std::string& name) {
    const std::wstring wideName = wideText(name);
    std::wstring value;
    DWORD length = GetEnvironmentVariableW(wideName.c_str(), nullptr, 0);
    while (length > value.size()) {  // asked again when it has grown meanwhile
        value.resize(length);
        length = GetEnvironmentVariableW(wideName.c_str(), value.data(), length);
    }
    value.resize(length);
    return utf8Text(value);
}

}  // namespace opane
