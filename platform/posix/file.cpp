#include "platform/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "platform/posix/file_descriptor.h"
#include "shared/runtime_error.h"

namespace opane {

const char kPathSeparator = '/';

namespace {

bool folderExists(const std::string& path) {
    const auto separator = path.find_last_of(kPathSeparator);
    if (separator == std::string::npos)
        return true;
    struct stat status {};
    const std::string folder = path.substr(0, std::max<std::size_t>(separator, 1));
    return stat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

[[noreturn]] void raiseOpenError(const std::string& path, int error) {
    const std::string named = "file \"" + path + "\"";
    if (error == ENOENT || error == ENOTDIR) {
        if (!folderExists(path))
            throw RuntimeError(ErrorNumber::pathNotFound, named + ": its folder does not exist");
        throw RuntimeError(ErrorNumber::fileNotFound, named + " does not exist");
    }
    if (error == EACCES || error == EPERM || error == EROFS)
        throw RuntimeError(ErrorNumber::permissionDenied, named + " may not be opened: permission denied");
    throw RuntimeError(ErrorNumber::pathFileAccess,
                       named + " cannot be opened: " + std::generic_category().message(error));
}

[[noreturn]] void raiseTransferError(const std::string& path, const char* what, int error) {
    throw RuntimeError(ErrorNumber::deviceIo,
                       "file \"" + path + "\" cannot be " + what + ": " + std::generic_category().message(error));
}

/// Opens a regular file. O_NONBLOCK: a pipe or a device by that name is refused instead of waited for.
FileDescriptor openRegular(const std::string& path, int flags) {
    if (path.find('\0') != std::string::npos)
        throw RuntimeError(ErrorNumber::pathFileAccess, "file name \"" + path + "\" holds a zero character");
    FileDescriptor file = openFile(path.c_str(), flags | O_NONBLOCK | O_NOCTTY, 0666);
    if (!file)
        raiseOpenError(path, errno);
    struct stat status {};
    if (fstat(file.get(), &status) != 0)
        raiseOpenError(path, errno);
    if (S_ISDIR(status.st_mode))
        throw RuntimeError(ErrorNumber::pathFileAccess, "\"" + path + "\" is a folder; expected a file");
    if (!S_ISREG(status.st_mode))
        throw RuntimeError(ErrorNumber::pathFileAccess, "\"" + path + "\" is a device or a pipe; expected a file");
    return file;
}

/// Removes the last bytes that were appended, unless somebody else has appended since: no half line stays.
void takeBack(int file, off_t bytes) {
    const off_t end = lseek(file, 0, SEEK_CUR);
    struct stat status {};
    if (bytes == 0 || fstat(file, &status) != 0 || status.st_size != end)
        return;
    [[maybe_unused]] const int truncated = ftruncate(file, end - bytes);
}

class FileReader final : public ByteReader {
public:
    explicit FileReader(const std::string& path) : path_(path), file_(openRegular(path, O_RDONLY)) {}

    std::size_t read(std::span<std::uint8_t> bytes) override {
        std::size_t filled = 0;
        while (filled < bytes.size()) {
            const ssize_t got = ::read(file_.get(), bytes.data() + filled, bytes.size() - filled);
            if (got < 0 && errno == EINTR)
                continue;
            if (got < 0)
                raiseTransferError(path_, "read", errno);
            if (got == 0)
                break;
            filled += static_cast<std::size_t>(got);
        }
        return filled;
    }

private:
    std::string path_;
    FileDescriptor file_;
};

}  // namespace

std::unique_ptr<ByteReader> openToRead(const std::string& path) {
    return std::make_unique<FileReader>(path);
}

void appendToFile(const std::string& path, const std::string& text) {
    const FileDescriptor file = openRegular(path, O_WRONLY | O_APPEND | O_CREAT);
    std::size_t written = 0;
    while (written < text.size()) {  // one write, but for a full disk or a signal
        const ssize_t put = write(file.get(), text.data() + written, text.size() - written);
        if (put < 0 && errno == EINTR)
            continue;
        if (put < 0) {
            const int error = errno;
            takeBack(file.get(), static_cast<off_t>(written));
            raiseTransferError(path, "written", error);
        }
        written += static_cast<std::size_t>(put);
    }
}

}  // namespace opane
