#include "platform/whole_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <set>

#include "platform/posix/file_descriptor.h"
#include "support/raised_number.h"
#include "support/temporary_folder.h"
#include "support/without_rights.h"

namespace opane::test {
namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

const ByteArray kNew{'n', 'e', 'w'};

class WholeFile : public testing::Test {
protected:
    Names names() const {
        Names all;
        for (const auto& entry : fs::directory_iterator(folder.path()))
            all.insert(entry.path().filename());
        return all;
    }
    struct stat status() const {
        struct stat result {};
        stat(file.c_str(), &result);
        return result;
    }

    TemporaryFolder folder;
    std::string file = folder / "file";
};

TEST_F(WholeFile, KeepsTheRightsOfTheFileThatItReplaces) {
    const mode_t earlier = umask(027);
    writeWholeFile(file, kNew);
    umask(earlier);
    EXPECT_EQ(status().st_mode & 07777, 0640) << "a new one is as the user has it";
    [[maybe_unused]] const int given = chown(file.c_str(), 1234, 1235);  // where root may
    for (const mode_t mode : {0600U, 0644U, 0666U, 0750U, 04755U, 02710U}) {
        folder.write("file", "old");
        chmod(file.c_str(), mode);
        const struct stat before = status();
        writeWholeFile(file, kNew);
        EXPECT_EQ(contentOf(file), "new");
        EXPECT_EQ(status().st_mode, before.st_mode);
        EXPECT_EQ(status().st_uid, before.st_uid);
        EXPECT_EQ(status().st_gid, before.st_gid);
        EXPECT_EQ(names(), Names{"file"});
    }
}

TEST_F(WholeFile, FollowsALinkOfItsNameAndNoOther) {
    const std::string victim = folder.write("victim", "old");
    fs::create_symlink("victim", folder / "link.0123456789abcdef.part");
    fs::create_symlink("file", folder / "link");
    for (const ByteArray& content : {kNew, ByteArray{}}) {  // the file is still to be made, then it is there
        writeWholeFile(folder / "link", content);
        EXPECT_EQ(contentOf(file).size(), content.size());
    }
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(contentOf(victim), "old");
}

TEST_F(WholeFile, RemovesWhatAKilledWriterLeftAndNothingElse) {
    Names kept{"file.0123456789abcdeg.part", "file.12345.part", "files.0123456789abcdef.part",
               "file.1111111111111111.part"};
    for (const std::string& name : kept)
        folder.write(name, "old");
    const FileDescriptor written = openFile((folder / "file.1111111111111111.part").c_str(), O_WRONLY);
    flock(written.get(), LOCK_EX);  // as a living writer
    folder.write("file.0123456789abcdef.part", "old");
    folder.write("file.fedcba9876543210.part", "");
    writeWholeFile(file, kNew);
    kept.insert("file");
    EXPECT_EQ(names(), kept);
}

TEST_F(WholeFile, ThatIsRefusedStaysAsItWas) {
    struct Row {
        mode_t folderMode;
        gid_t group;
        bool isLinked;
        const char* says;
    };
    for (const Row& row :
         {Row{0777, 0, true, "it has 2 names (hard links)"}, Row{0555, 0, false, "nothing can be made in its folder"},
          Row{0777, 1235, false, "its group cannot be kept"}}) {
        folder.write("file", "old");
        chmod(file.c_str(), 0640);
        const bool isGiven = chown(file.c_str(), WithoutRights::kNobody, row.group) == 0;  // only root may
        if (row.isLinked)
            fs::create_hard_link(file, folder / "second");
        const Names before = names();
        chmod(folder.path().c_str(), row.folderMode);
        std::string raised;
        {
            const WithoutRights asNobody;
            raised = raisedText([this] { writeWholeFile(file, kNew); });
        }
        if (row.group == 0 || isGiven) {
            EXPECT_PRED_FORMAT2(testing::IsSubstring, row.says, raised);
            EXPECT_EQ(std::atoi(raised.c_str()), row.isLinked ? 75 : 70);
            EXPECT_EQ(contentOf(file), "old");
        }
        chmod(folder.path().c_str(), 0755);
        EXPECT_EQ(names(), before);
        fs::remove(file);
    }
}

}  // namespace
}  // namespace opane::test
