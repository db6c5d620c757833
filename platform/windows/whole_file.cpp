#include "platform/whole_file.h"

#include <algorithm>
#include <system_error>

#include "platform/temporary_name.h"
#include "platform/utf8_path.h"
#include "platform/windows/handle.h"
#include "platform/windows/system_text.h"
#include "shared/runtime_error.h"

namespace opane {
namespace {

namespace fs = std::filesystem;

/// A file on its way: written beside its place, then moved there. It goes away unless it is moved.
class Replacement {
public:
    explicit Replacement(const std::string& path) : path_(path) {}
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement() {
        file_ = Handle();
        if (!part_.empty())
            DeleteFileW(part_.c_str());
    }

    /// Everything that can be refused before the content is there.
    void begin() {
        if (path_.find('\0') != std::string::npos)
            refuse(ErrorNumber::pathFileAccess, "its name holds a zero character");
        std::error_code ignored;
        target_ = utf8Path(path_);
        if (fs::is_symlink(target_, ignored))
            target_ = fs::weakly_canonical(target_, ignored);
        if (!target_.has_filename())
            refuse(ErrorNumber::pathFileAccess, "expected the name of a file");
        if (target_.has_parent_path() && !fs::is_directory(target_.parent_path(), ignored))
            refuse(ErrorNumber::pathNotFound, "its folder does not exist");
        if (fs::is_directory(target_, ignored))
            refuse(ErrorNumber::pathFileAccess, "it is a folder");
        replaces_ = fs::exists(target_, ignored);
        if (replaces_)
            requireReplaceable();
        removeLeftovers();
        const std::wstring name = wideText(temporaryName(utf8Text(target_.filename().wstring())));
        part_ = (target_.parent_path() / name).wstring();
        file_ =
            Handle(CreateFileW(part_.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file_) {
            const DWORD error = GetLastError();
            part_.clear();
            refuse(error, "nothing can be made in its folder, where it is written first: ");
        }
    }

    void write(const ByteArray& content) {
        DWORD put = 0;
        if (WriteFile(file_.get(), content.data(), static_cast<DWORD>(content.size()), &put, nullptr) == 0)
            refuse(GetLastError());
        if (put != content.size())
            refuse(ERROR_DISK_FULL);
    }

    void moveToPlace() {
        if (FlushFileBuffers(file_.get()) == 0)
            refuse(GetLastError());
        file_ = Handle();
        // Replacing keeps the earlier file's access list and attributes.
        if (replaces_
                ? ReplaceFileW(target_.c_str(), part_.c_str(), nullptr, 0, nullptr, nullptr) == 0
                : MoveFileExW(part_.c_str(), target_.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0)
            refuse(GetLastError());
        part_.clear();
    }

private:
    [[noreturn]] void refuse(ErrorNumber number, const std::string& why) const {
        throw RuntimeError(number, "\"" + path_ + "\" cannot be written: " + why);
    }

    [[noreturn]] void refuse(DWORD error, const std::string& what = {}) const {
        constexpr DWORD kDenials[]{ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION, ERROR_LOCK_VIOLATION,
                                   ERROR_WRITE_PROTECT, ERROR_UNABLE_TO_REMOVE_REPLACED};
        const bool denied = std::ranges::find(kDenials, error) != std::end(kDenials);
        refuse(denied ? ErrorNumber::permissionDenied : ErrorNumber::pathFileAccess, what + systemErrorText(error));
    }

    /// What may not be written is not replaced either.
    void requireReplaceable() const {
        const Handle earlier(CreateFileW(target_.c_str(), GENERIC_WRITE,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                         FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!earlier)
            refuse(GetLastError());
        BY_HANDLE_FILE_INFORMATION information{};
        if (GetFileType(earlier.get()) != FILE_TYPE_DISK)
            refuse(ErrorNumber::pathFileAccess, "it is a device or a pipe");
        if (GetFileInformationByHandle(earlier.get(), &information) != 0 && information.nNumberOfLinks > 1)
            refuse(ErrorNumber::pathFileAccess, "it has " + std::to_string(information.nNumberOfLinks) +
                                                    " names (hard links), and the others would keep the earlier "
                                                    "content; remove them or write to another file");
    }

    /// The system does not remove what a living writer has open.
    void removeLeftovers() const {
        const std::string name = utf8Text(target_.filename().wstring());
        std::error_code error;
        const fs::path folder = target_.has_parent_path() ? target_.parent_path() : fs::path(".");
        for (auto entry = fs::directory_iterator(folder, error); entry != fs::directory_iterator();
             entry.increment(error))
            if (isTemporaryName(utf8Text(entry->path().filename().wstring()), name))
                DeleteFileW(entry->path().c_str());
    }

    std::string path_;
    fs::path target_;
    bool replaces_ = false;
    std::wstring part_;  // empty: not made, or moved
    Handle file_;
};

}  // namespace

void writeWholeFile(const std::string& path, const ByteArray& content) {
    Replacement file(path);
    file.begin();
    file.write(content);
    file.moveToPlace();
}

void checkWholeFile(const std::string& path) {
    Replacement(path).begin();
}

}  // namespace opane
