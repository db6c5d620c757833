#pragma once

#include <string>

namespace opane::test {

/// Names the rows of a table by their first field.
inline constexpr auto rowName = [](const auto& row) { return std::string(row.param.name); };

}  // namespace opane::test
