#include "log/line_writer.h"

#include "platform/file.h"

namespace opane {

void FileLineWriter::write(const std::string& fileName, const std::string& line, std::int16_t /*level*/) {
    appendToFile(fileName, line);
}

}  // namespace opane
