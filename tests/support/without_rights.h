#pragma once

#include <unistd.h>

namespace opane::test {

/// Takes root's rights away until its end, and nothing from anybody else.
struct WithoutRights {
    static constexpr uid_t kNobody = 65534;
    static bool matters() { return getuid() == 0; }

    WithoutRights() { [[maybe_unused]] const int set = matters() ? seteuid(kNobody) : 0; }
    ~WithoutRights() { [[maybe_unused]] const int set = matters() ? seteuid(0) : 0; }
};

}  // namespace opane::test
