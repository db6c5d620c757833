#include "platform/environment.h"

#include <cstdlib>

namespace opane {

std::string environmentText(const std::string& name) {
    const char* const value = secure_getenv(name.c_str());
    return value != nullptr ? value : "";
}

}  // namespace opane
