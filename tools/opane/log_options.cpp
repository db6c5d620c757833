#include "log_options.h"

#include <filesystem>
#include <system_error>

#include "log/log_line.h"
#include "platform/environment.h"
#include "platform/file.h"
#include "platform/services.h"
#include "platform/utf8_path.h"
#include "shared/runtime_error.h"

namespace opane::tool {
namespace {

namespace fs = std::filesystem;

constexpr std::int16_t kFirstWritten = 2;  // log level; nothing has a lower one

/// Each folder of the path that is missing, mode 0755 less what the umask takes: nobody but its owner writes into it.
void makeFolder(const fs::path& folder) {
    std::error_code error;
    if (folder.empty() || fs::is_directory(folder, error))
        return;
    makeFolder(folder.parent_path());
    if (fs::create_directory(folder, error))
        fs::permissions(folder, fs::perms::group_write | fs::perms::others_write, fs::perm_options::remove, error);
    if (error)
        throw InputError("the log's folder \"" + utf8Name(folder) + "\" cannot be made: " + error.message());
}

}  // namespace

void setLog(const Arguments& arguments, clsLog& log) {
    if (!arguments.logFolder.empty())
        log.LogFolder(arguments.logFolder);
    if (!arguments.tester.empty())
        log.TesteurName(arguments.tester);
    log.LogLevel(arguments.logLevel.value_or(log.LogLevel()));
}

void prepareLog(const Arguments& arguments) {
    clsLog log;
    setLog(arguments, log);
    const std::string level = environmentText("OPANE_LOG_LEVEL");
    if (!arguments.logLevel && !level.empty() && !isLogLevel(level))
        throw InputError("OPANE_LOG_LEVEL is \"" + level + "\"; expected 0 to 3");
    if (log.LogLevel() < kFirstWritten)
        return;
    const std::string tester = environmentText("OPANE_LOG_TESTER");
    if (arguments.tester.empty() && !isTesterName(tester))
        throw InputError("OPANE_LOG_TESTER is \"" + tester + "\": it holds a path separator or a control character");
    const bool isTold = !arguments.logFolder.empty() || !environmentText("OPANE_LOG_FOLDER").empty();
    if (isTold)
        makeFolder(utf8Path(log.LogFolder()).parent_path());  // the folder ends with a separator
    try {
        appendToFile(logFileName(log.LogFolder(), log.TesteurName(), services().calendar()), "");
    } catch (const RuntimeError& error) {
        const std::string text = std::string("the log: ") + error.what() + "; name another folder with --log-folder";
        if (isTold)
            throw InputError(text);
        throw RuntimeError(error.number(), text);
    }
}

}  // namespace opane::tool
