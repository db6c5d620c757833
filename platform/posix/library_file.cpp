#include <dlfcn.h>
#include <link.h>

#include <climits>
#include <cstdlib>
#include <string>

#include "platform/folders.h"

namespace opane {
namespace {

/// The full path of a name, or the name itself when there is no such file (any more).
std::string resolved(const std::string& name) {
    char path[PATH_MAX];
    return realpath(name.c_str(), path) != nullptr ? path : name;
}

}  // namespace

std::string libraryFile() {
    static const char anchor = 0;
    Dl_info found{};
    link_map* map = nullptr;
    const bool known = dladdr1(&anchor, &found, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) != 0;
    // The program itself has no name here, and was perhaps called by one that leads nowhere; the link in /proc knows.
    if (!known || map->l_name == nullptr || *map->l_name == '\0')
        return resolved("/proc/self/exe");
    const std::string name = map->l_name;
    char folder[PATH_MAX];
    // A relative name was one of the folder in which the library was loaded.
    if (name.front() == '/' || dlinfo(map, RTLD_DI_ORIGIN, folder) != 0)
        return resolved(name);
    return resolved(std::string(folder) + "/" + name.substr(name.find_last_of('/') + 1));
}

}  // namespace opane
