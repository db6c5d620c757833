#include "log/line_writer.h"

#include "platform/file.h"
#include "shared/runtime_error.h"

namespace opane {

void FileLineWriter::write(const std::string& fileName, const std::string& line, std::int16_t /*level*/) {
    try {
        appendToFile(fileName, line);
    } catch (const RuntimeError& error) {
        throw RuntimeError(error.number(), "log " + std::string(error.what()));
    }
}

}  // namespace opane
