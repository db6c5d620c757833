#include "platform/windows/desktop.h"

#include "platform/windows/system_headers.h"

namespace opane {

bool hasVisibleDesktop() {
    USEROBJECTFLAGS flags{};
    return GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags, nullptr) != 0 &&
           (flags.dwFlags & WSF_VISIBLE) != 0;
}

}  // namespace opane
