#include "platform/file.h"

#include <algorithm>

#include "platform/windows/handle.h"
#include "platform/windows/system_text.h"
#include "shared/runtime_error.h"

namespace opane {

const char kPathSeparator = '\\';

namespace {

bool isFolder(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool folderExists(const std::string& path) {
    const auto separator = path.find_last_of("\\/");
    return separator == std::string::npos || isFolder(wideText(path.substr(0, separator + 1)));
}

[[noreturn]] void raiseOpenError(const std::string& path, DWORD error) {
    const std::string named = "file \"" + path + "\"";
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
        case ERROR_INVALID_DRIVE:
            if (!folderExists(path))
                throw RuntimeError(ErrorNumber::pathNotFound, named + ": its folder does not exist");
            throw RuntimeError(ErrorNumber::fileNotFound, named + " does not exist");
        case ERROR_ACCESS_DENIED:
            if (isFolder(wideText(path)))
                throw RuntimeError(ErrorNumber::pathFileAccess, "\"" + path + "\" is a folder; expected a file");
            [[fallthrough]];
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
        case ERROR_WRITE_PROTECT:
            throw RuntimeError(ErrorNumber::permissionDenied, named + " may not be opened: " + systemErrorText(error));
        default:
            throw RuntimeError(ErrorNumber::pathFileAccess, named + " cannot be opened: " + systemErrorText(error));
    }
}

[[noreturn]] void raiseTransferError(const std::string& path, const char* what, DWORD error) {
    throw RuntimeError(ErrorNumber::deviceIo,
                       "file \"" + path + "\" cannot be " + what + ": " + systemErrorText(error));
}

Handle openRegular(const std::string& path, DWORD access, DWORD disposition) {
    if (path.find('\0') != std::string::npos)
        throw RuntimeError(ErrorNumber::pathFileAccess, "file name \"" + path + "\" holds a zero character");
    const std::wstring name = wideText(path);  // named: its end would change the last error
    Handle file(CreateFileW(name.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file)
        raiseOpenError(path, GetLastError());
    if (GetFileType(file.get()) != FILE_TYPE_DISK)
        throw RuntimeError(ErrorNumber::pathFileAccess, "\"" + path + "\" is a device or a pipe; expected a file");
    return file;
}

/// In the system's code page.
std::string textFileBytes(const std::string& text) {
    const std::wstring wide = wideText(text);
    const int units = static_cast<int>(wide.size());
    const int length = WideCharToMultiByte(CP_ACP, 0, wide.data(), units, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_ACP, 0, wide.data(), units, bytes.data(), length, nullptr, nullptr);
    return bytes;
}

class FileReader final : public ByteReader {
public:
    explicit FileReader(const std::string& path) : path_(path), file_(openRegular(path, GENERIC_READ, OPEN_EXISTING)) {}

    std::size_t read(std::span<std::uint8_t> bytes) override {
        constexpr std::size_t kMostAtOnce = 1U << 20;  // the system counts in 32 bits
        std::size_t filled = 0;
        while (filled < bytes.size()) {
            DWORD got = 0;
            const auto wanted = static_cast<DWORD>(std::min(bytes.size() - filled, kMostAtOnce));
            if (ReadFile(file_.get(), bytes.data() + filled, wanted, &got, nullptr) == 0)
                raiseTransferError(path_, "read", GetLastError());
            if (got == 0)
                break;
            filled += got;
        }
        return filled;
    }

private:
    std::string path_;
    Handle file_;
};

}  // namespace

std::unique_ptr<ByteReader> openToRead(const std::string& path) {
    return std::make_unique<FileReader>(path);
}

void appendToFile(const std::string& path, const std::string& text) {
    const Handle file = openRegular(path, FILE_APPEND_DATA | SYNCHRONIZE, OPEN_ALWAYS);
    const std::string bytes = textFileBytes(text);
    DWORD put = 0;
    if (WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &put, nullptr) == 0)
        raiseTransferError(path, "written", GetLastError());
    if (put != bytes.size())
        raiseTransferError(path, "written", ERROR_DISK_FULL);
}

}  // namespace opane
