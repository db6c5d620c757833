#include "platform/whole_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/posix/file_descriptor.h"
#include "platform/posix/folder_entries.h"
#include "platform/posix/link_target.h"
#include "platform/temporary_name.h"
#include "shared/runtime_error.h"

namespace opane {
namespace {

namespace fs = std::filesystem;

constexpr int kMostAttempts = 16;  // against somebody who keeps changing the folder
constexpr const char* kAccessList = "system.posix_acl_access";
constexpr std::size_t kLongestAccessList = 4096;
constexpr auto kUnchanged = static_cast<uid_t>(-1);

bool isSameFile(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// A file on its way: written beside its place, then moved there. It goes away unless it is moved.
class Replacement {
public:
    explicit Replacement(const std::string& path) : path_(path) {}
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement() {
        if (!part_.empty())
            unlinkat(folder_.get(), part_.c_str(), 0);
    }

    /// Everything that can be refused before the content is there.
    void begin() {
        if (path_.find('\0') != std::string::npos)
            refuse(ErrorNumber::pathFileAccess, "its name holds a zero character");
        find();
        if (earlier_ && earlierStatus_.st_nlink > 1)
            refuse(ErrorNumber::pathFileAccess, "it has " + std::to_string(earlierStatus_.st_nlink) +
                                                    " names (hard links), and the others would keep the earlier "
                                                    "content; remove them or write to another file");
        requireReplaceable();
        removeLeftovers();
        make();
        if (earlier_)
            keepOwner();
    }

    void write(const ByteArray& content) {
        for (std::size_t written = 0; written < content.size();) {
            const ssize_t put = ::write(file_.get(), content.data() + written, content.size() - written);
            if (put < 0 && errno != EINTR)
                refuse(errno);
            if (put > 0)
                written += static_cast<std::size_t>(put);
        }
    }

    void moveToPlace() {
        if (earlier_ && fchmod(file_.get(), mode_) != 0)  // after the last byte: a write takes the set-id bits away
            refuse(errno, "its mode cannot be kept: ");
        sync(file_);
        if (renameat(folder_.get(), part_.c_str(), folder_.get(), name_.c_str()) != 0)
            refuse(errno);
        part_.clear();
        sync(folder_);
    }

private:
    [[noreturn]] void refuse(ErrorNumber number, const std::string& why) const {
        throw RuntimeError(number, "\"" + path_ + "\" cannot be written: " + why);
    }

    [[noreturn]] void refuse(int error, const std::string& what = {}) const {
        const bool denied = error == EACCES || error == EPERM || error == EROFS;
        refuse(denied ? ErrorNumber::permissionDenied : ErrorNumber::pathFileAccess,
               what + std::generic_category().message(error));
    }

    /// Finds the place, with its folder and what is there. The links are followed twice, by the system, which passes
    /// over none that it distrusts, and for the name: both must lead to the same file.
    void find() {
        for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
            openEarlier();
            const fs::path place = linkTarget(path_);
            if (!earlier_ && place != fs::path(path_) && !isLinkTrusted())
                continue;
            openFolder(place.has_parent_path() ? place.parent_path() : ".");
            name_ = place.filename().string();
            if (name_.empty())
                refuse(ErrorNumber::pathFileAccess, "expected the name of a file");
            struct stat there {};
            const bool isThere = fstatat(folder_.get(), name_.c_str(), &there, AT_SYMLINK_NOFOLLOW) == 0;
            if (isThere ? earlier_ && isSameFile(there, earlierStatus_) : !earlier_ && errno == ENOENT)
                return;
        }
        refuse(ErrorNumber::pathFileAccess, "somebody else keeps changing what is there");
    }

    /// Of a link to what is still to be made: in a folder where everybody may put one, it must be the folder's owner's
    /// or our own, as the system itself has it for a file that is there.
    /// @return false when the link has gone
    bool isLinkTrusted() const {
        const fs::path link(path_);
        struct stat there {};
        struct stat folder {};
        if (lstat(path_.c_str(), &there) != 0 || !S_ISLNK(there.st_mode) ||
            stat(link.has_parent_path() ? link.parent_path().c_str() : ".", &folder) != 0)
            return false;
        const bool isForEverybody = (folder.st_mode & S_ISVTX) != 0 && (folder.st_mode & S_IWOTH) != 0;
        if (isForEverybody && there.st_uid != geteuid() && there.st_uid != folder.st_uid)
            refuse(ErrorNumber::permissionDenied, "it is a link that somebody else has made in a folder for everybody");
        return true;
    }

    /// For writing, though it is not written: what may not be written is not replaced either.
    void openEarlier() {
        earlier_.reset();
        // Looked at first: opening a device or a pipe may do something to it.
        if (stat(path_.c_str(), &earlierStatus_) == 0) {
            requireFile();
            earlier_ = openFile(path_.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY);
            if (earlier_ && fstat(earlier_.get(), &earlierStatus_) == 0)
                return requireFile();
        }
        if (errno != ENOENT && errno != ENOTDIR)
            refuse(errno);
    }

    void requireFile() const {
        if (!S_ISREG(earlierStatus_.st_mode))
            refuse(ErrorNumber::pathFileAccess,
                   S_ISDIR(earlierStatus_.st_mode) ? "it is a folder" : "it is a device or a pipe");
    }

    void openFolder(const fs::path& folder) {
        folderPath_ = folder;
        folder_ = openFile(folder.c_str(), O_RDONLY | O_DIRECTORY);
        if (!folder_ && errno == EACCES)  // it may still be written: not listed and not synchronised then
            folder_ = openFile(folder.c_str(), O_PATH | O_DIRECTORY);
        if (!folder_ && (errno == ENOENT || errno == ENOTDIR))
            refuse(ErrorNumber::pathNotFound, "its folder does not exist");
        if (!folder_)
            refuse(errno, "its folder: ");
    }

    /// In a sticky folder only a file's owner, the folder's and root put another one in its place.
    void requireReplaceable() const {
        struct stat folder {};
        const bool mayAnyway = !earlier_ || geteuid() == 0 || earlierStatus_.st_uid == geteuid();
        if (!mayAnyway && fstat(folder_.get(), &folder) == 0 && (folder.st_mode & S_ISVTX) != 0 &&
            folder.st_uid != geteuid())
            refuse(ErrorNumber::permissionDenied, "its folder lets nobody but its owner replace it");
    }

    /// Locked as long as it is written: an unlocked one is a killed writer's.
    void make() {
        for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
            std::string name = temporaryName(name_);
            // In place of another file it is its user's alone until it has that one's rights.
            const mode_t mode = earlier_ ? S_IRUSR | S_IWUSR : 0666;
            file_ = openFile(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode, folder_.get());
            if (!file_ && errno == EEXIST)
                continue;
            if (!file_)
                refuse(errno, "nothing can be made in its folder, where it is written first: ");
            part_ = std::move(name);
            // Another writer may be looking whether it is a killed one's, and remove it.
            struct stat status {};
            const bool isLocked = flock(file_.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
            if (isLocked && fstat(file_.get(), &status) == 0 && status.st_nlink > 0)
                return;
            unlinkat(folder_.get(), part_.c_str(), 0);
            part_.clear();
        }
        refuse(ErrorNumber::pathFileAccess, "somebody else keeps changing its folder");
    }

    void removeLeftovers() const {
        for (const fs::path& entry : entriesOf(folderPath_)) {
            const std::string name = entry.filename().string();
            if (isTemporaryName(name, name_))
                removeLeftover(name);
        }
    }

    void removeLeftover(const std::string& name) const {
        const auto isOurs = [this](const struct stat& status) {
            const bool ownedAsWritten =
                status.st_uid == geteuid() || (earlier_ && status.st_uid == earlierStatus_.st_uid);
            return S_ISREG(status.st_mode) && ownedAsWritten && status.st_nlink == 1;
        };
        struct stat status {};
        if (fstatat(folder_.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 || !isOurs(status))
            return;
        const FileDescriptor file = openFile(name.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK, 0, folder_.get());
        if (file && flock(file.get(), LOCK_EX | LOCK_NB) == 0 && fstat(file.get(), &status) == 0 && isOurs(status))
            unlinkat(folder_.get(), name.c_str(), 0);  // still locked: nobody can begin with it meanwhile
    }

    /// Gives it the earlier file's owner, where the system lets it, group and access list.
    void keepOwner() {
        mode_ = earlierStatus_.st_mode & 07777;
        bool isGroupKept = true;
        if (fchown(file_.get(), earlierStatus_.st_uid, earlierStatus_.st_gid) != 0) {
            mode_ &= ~static_cast<mode_t>(S_ISUID);
            isGroupKept = fchown(file_.get(), kUnchanged, earlierStatus_.st_gid) == 0;
        }
        std::array<char, kLongestAccessList> list{};
        const ssize_t size = fgetxattr(earlier_.get(), kAccessList, list.data(), list.size());
        if (size < 0 && errno == ERANGE)
            refuse(errno, "its access list: ");
        // Another group is no matter where it may do what everybody may.
        const bool needsGroup = size > 0 || (mode_ >> 3 & S_IRWXO) != (mode_ & S_IRWXO);
        if (!isGroupKept && needsGroup)
            refuse(EPERM, "its group cannot be kept, and others would have its rights: ");
        if (!isGroupKept)
            mode_ &= ~static_cast<mode_t>(S_ISGID);
        if (size > 0 && fsetxattr(file_.get(), kAccessList, list.data(), static_cast<std::size_t>(size), 0) != 0)
            refuse(errno, "its access list cannot be kept: ");
        if (size <= 0)
            fremovexattr(file_.get(), kAccessList);  // one that the folder has given it
    }

    /// What cannot be synchronised at all passes.
    void sync(const FileDescriptor& what) const {
        if (fsync(what.get()) != 0 && errno != EINVAL && errno != EBADF)
            refuse(errno, part_.empty() ? "it has its new content, which may not outlast a loss of power: " : "");
    }

    std::string path_;
    FileDescriptor earlier_;  // not open: there is none
    struct stat earlierStatus_ {};
    mode_t mode_ = 0;  // that it gets in place of an earlier one
    fs::path folderPath_;
    FileDescriptor folder_;
    std::string name_;
    FileDescriptor file_;
    std::string part_;  // name of file_ in folder_; empty: not made, or moved
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
