#include "automation/component/posix/runtime/registry.h"

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <thread>

#include "automation/component/posix/runtime/identifiers.h"
#include "platform/environment.h"
#include "platform/file.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/link_target.h"
#include "platform/whole_file.h"
#include "shared/letter_case.h"
#include "shared/runtime_error.h"
#include "shared/utf16.h"

namespace opane::component_runtime {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestRegistry = 1U << 20;
constexpr int kLockRetryMs = 5;
constexpr int kLongestLockMs = 5000;

[[noreturn]] void fail(int error, const std::string& what) {
    const auto number = error == EACCES || error == EPERM || error == EROFS ? ErrorNumber::permissionDenied
                                                                            : ErrorNumber::pathFileAccess;
    throw RuntimeError(number, what + ": " + std::strerror(error));
}

/// Makes a folder with all that leads to it, for its user alone; all of it or nothing.
void makeFolder(const fs::path& folder) {
    std::error_code ignored;
    std::vector<fs::path> missing;
    for (fs::path each = folder; !each.empty() && !fs::is_directory(each, ignored); each = each.parent_path())
        missing.push_back(each);
    for (auto each = missing.rbegin(); each != missing.rend(); ++each) {
        if (mkdir(each->c_str(), S_IRWXU) == 0 || errno == EEXIST)
            continue;
        const int error = errno;
        for (auto made = each.base(); made != missing.end(); ++made)
            rmdir(made->c_str());  // only those that are empty
        fail(error, "the folder \"" + folder.string() + "\" of the registry cannot be made");
    }
}

/// The registry's folder, locked against the other processes and threads that change the file in it. The folder and no
/// file of its own, so that nothing is left behind.
class LockedFolder {
public:
    explicit LockedFolder(const fs::path& folder) : folder_(openFile(folder.c_str(), O_RDONLY | O_DIRECTORY)) {
        const std::string name = "the folder \"" + folder.string() + "\" of the registry";
        if (!folder_)
            fail(errno, name + " cannot be opened");
        for (int waitedMs = 0; flock(folder_.get(), LOCK_EX | LOCK_NB) != 0; waitedMs += kLockRetryMs) {
            if (errno != EWOULDBLOCK && errno != EINTR)
                fail(errno, name + " cannot be locked");
            if (waitedMs >= kLongestLockMs)
                fail(EBUSY, name + " is locked by another program");
            std::this_thread::sleep_for(std::chrono::milliseconds(kLockRetryMs));
        }
    }

private:
    FileDescriptor folder_;
};

/// None at all when there is no registry.
std::vector<std::string> readLines(const std::string& file) {
    ByteArray content;
    try {
        content = readFile(file, kLongestRegistry);
    } catch (const RuntimeError& error) {
        if (error.number() == ErrorNumber::fileNotFound || error.number() == ErrorNumber::pathNotFound)
            return {};
        throw;
    }
    if (content.size() == kLongestRegistry)
        throw RuntimeError(ErrorNumber::pathFileAccess, "\"" + file + "\" is too long for a registry of components");
    std::vector<std::string> lines;
    for (auto begin = content.begin(); begin != content.end();) {
        const auto end = std::find(begin, content.end(), '\n');
        lines.emplace_back(begin, end);
        begin = end == content.end() ? end : end + 1;
    }
    return lines;
}

std::optional<RegisteredClass> parseLine(std::string line) {
    if (line.ends_with('\r'))
        line.pop_back();
    const auto first = line.find('\t');
    const auto second = first == std::string::npos ? first : line.find('\t', first + 1);
    RegisteredClass row{};
    if (second == std::string::npos || !parseIdentifier(utf16Text(line.substr(0, first)).c_str(), row.clsid))
        return std::nullopt;
    row.progId = line.substr(first + 1, second - first - 1);
    row.library = line.substr(second + 1);
    if (!row.library.starts_with('/'))
        return std::nullopt;
    return row;
}

std::string lineOf(const RegisteredClass& row) {
    return identifierText(row.clsid) + "\t" + row.progId + "\t" + row.library;
}

/// Where the environment puts the registry.
std::string namedFile() {
    if (std::string named = environmentText("OPANE_COMPONENT_REGISTRY"); !named.empty())
        return named;
    if (const std::string data = environmentText("XDG_DATA_HOME"); data.starts_with('/'))
        return data + "/opane/components";
    if (const std::string home = environmentText("HOME"); home.starts_with('/'))
        return home + "/.local/share/opane/components";
    throw RuntimeError(ErrorNumber::pathNotFound,
                       "there is no place for the registry of components: OPANE_COMPONENT_REGISTRY, XDG_DATA_HOME and "
                       "HOME name none");
}

}  // namespace

std::string registryFile() {
    const fs::path file = namedFile();
    if (file.native().size() >= PATH_MAX)
        throw RuntimeError(ErrorNumber::pathFileAccess, "the path of the registry has " +
                                                            std::to_string(file.native().size()) +
                                                            " bytes; the system takes " + std::to_string(PATH_MAX - 1));
    return linkTarget(file).string();  // so that every way to it locks the same folder
}

std::optional<RegisteredClass> findClass(const std::function<bool(const RegisteredClass&)>& matches) {
    for (const std::string& line : readLines(registryFile()))
        if (auto row = parseLine(line); row && matches(*row))
            return row;
    return std::nullopt;
}

void enterClass(REFCLSID clsid, const std::optional<RegisteredClass>& entered) {
    const std::string file = registryFile();
    const fs::path parent = fs::path(file).parent_path();
    const fs::path folder = parent.empty() ? "." : parent;
    std::error_code ignored;
    if (!entered && !fs::is_directory(folder, ignored))
        return;  // nothing to take out, and no folder to make for it
    makeFolder(folder);
    const LockedFolder lock(folder);

    const std::vector<std::string> before = readLines(file);
    std::vector<std::string> lines = before;
    std::erase_if(lines, [&](const std::string& line) {
        const auto row = parseLine(line);
        return row && (row->clsid == clsid || (entered && isSameName(row->progId, entered->progId)));
    });
    if (entered)
        lines.push_back(lineOf(*entered));
    if (lines == before)
        return;
    if (lines.empty()) {
        if (unlink(file.c_str()) != 0)
            fail(errno, "the registry \"" + file + "\" cannot be removed");
        return;
    }
    ByteArray content;
    for (const std::string& line : lines) {
        content.insert(content.end(), line.begin(), line.end());
        content.push_back('\n');
    }
    writeWholeFile(file, content);
}

}  // namespace opane::component_runtime
