#pragma once

#include <span>
#include <string>

#include "shared/frame_byte.h"
#include "tools/opane-generator/glyph_cells.h"

namespace opane {

// Two ways to show cells, each as a sheet and as a line of text. A sheet has 16 codes in a row and hexadecimal digits
// along its edges: row 4, column 1 is code 0x41.

/// For the terminal, two pixel rows to a line, in half blocks; absent codes are dotted, faulty columns shaded.
std::string terminalSheet(std::span<const Cell> cells);
std::string terminalText(std::span<const Cell> cells);

/// As the content of a PNG file; absent codes are hatched, faulty columns red.
ByteArray pngSheet(std::span<const Cell> cells);
ByteArray pngText(std::span<const Cell> cells);

}  // namespace opane
