#include "shared/runtime_error.h"

namespace opane {

RuntimeError::RuntimeError(ErrorNumber number, const std::string& text) : std::runtime_error(text), number_(number) {}

}  // namespace opane
