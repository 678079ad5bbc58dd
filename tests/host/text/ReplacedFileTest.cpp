#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "FileContents.h"
#include "RefusedCall.h"
#include "Sandbox.h"
#include "TemporaryDirectory.h"
#include "text/Output.h"
#include "text/ReplacedFile.h"

namespace fs = std::filesystem;

namespace {

using host::OutputError;
using host::ReplacedFile;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> namesIn(const fs::path& directory) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

std::string complaintOf(const ReplacedFile& file, const std::string& text = "new\n") {
    try {
        file.replace(text);
        return "";
    } catch (const OutputError& failure) {
        return failure.what();
    }
}

class ReplacedFileTest : public testing::Test {
  protected:
    TemporaryDirectory m_directory;
    std::string m_path = m_directory.path("page.prom");
    ReplacedFile m_file{m_path};
};

TEST_F(ReplacedFileTest, HoldsTheLastTextAndNothingIsBesideIt) {
    m_file.replace("first and longer\n");
    m_file.replace("second\n");
    EXPECT_EQ(contentsOf(fs::path(m_path)), "second\n");
    EXPECT_THAT(namesIn(m_directory.path()), ElementsAre("page.prom"));
}

TEST_F(ReplacedFileTest, EveryoneMayReadItWhateverTheUmask) {
    const mode_t before = umask(0777);
    m_file.replace("text\n");
    umask(before);
    EXPECT_EQ(fs::status(m_path).permissions(), static_cast<fs::perms>(0644));
}

TEST_F(ReplacedFileTest, OpenReaderKeepsTheOldText) {
    m_file.replace("old\n");
    std::ifstream reader(m_path);
    m_file.replace("new\n");
    std::string line;
    std::getline(reader, line);
    EXPECT_EQ(line, "old");
}

TEST_F(ReplacedFileTest, PathWithoutADirectoryIsInTheCurrentOne) {
    const fs::path before = fs::current_path();
    fs::current_path(m_directory.path());
    ReplacedFile("here").replace("text\n");
    fs::current_path(before);
    EXPECT_THAT(namesIn(m_directory.path()), ElementsAre("here"));
}

TEST_F(ReplacedFileTest, LeftTemporaryFileIsNoHindrance) {
    const std::string target = m_directory.write("target", "precious");
    fs::create_symlink(target, m_directory.path(".page.prom.tmp"));
    m_file.replace("text\n");
    EXPECT_EQ(contentsOf(fs::path(m_path)), "text\n");
    EXPECT_EQ(contentsOf(fs::path(target)), "precious");
    EXPECT_THAT(namesIn(m_directory.path()), ElementsAre("page.prom", "target"));
}

TEST_F(ReplacedFileTest, MissingDirectoryIsSaid) {
    const std::string path = m_directory.path("gone/page.prom");
    EXPECT_EQ(complaintOf(ReplacedFile(path)), path + " cannot be written: No such file or directory");
}

TEST_F(ReplacedFileTest, OnlyARegularFileIsReplaced) {
    fs::create_directory(m_path);
    EXPECT_EQ(complaintOf(m_file), m_path + " cannot be replaced: it is no regular file");
    m_file.remove();
    EXPECT_THAT(namesIn(m_directory.path()), ElementsAre("page.prom"));
    fs::remove(m_path);
    const std::string target = m_directory.write("target", "precious");
    fs::create_symlink(target, m_path);
    EXPECT_EQ(complaintOf(m_file), m_path + " cannot be replaced: it is no regular file");
    m_file.remove();
    m_file.removeSilently();
    EXPECT_THAT(namesIn(m_directory.path()), ElementsAre("page.prom", "target"));
}

TEST_F(ReplacedFileTest, FullDiskLeavesTheOldFileAndNothingBesideIt) {
    REQUIRE_SANDBOX();
    ASSERT_EQ(mount("small", m_directory.path().c_str(), "tmpfs", 0, "size=8k"), 0);
    m_file.replace("old\n");
    EXPECT_EQ(complaintOf(m_file, std::string(20000, 'x')), m_path + " cannot be written: No space left on device");
    EXPECT_EQ(contentsOf(fs::path(m_path)), "old\n");
    EXPECT_THAT(namesIn(m_directory.path()), ElementsAre("page.prom"));
    EXPECT_EQ(umount(m_directory.path().c_str()), 0);
}

TEST_F(ReplacedFileTest, RemovalLeavesNothing) {
    m_file.replace("text\n");
    m_directory.write(".page.prom.tmp", "half");
    m_file.removeSilently();
    EXPECT_THAT(namesIn(m_directory.path()), IsEmpty());
    m_file.remove();
    m_file.removeSilently();
}

TEST_F(ReplacedFileTest, RemovalThatFailsIsSaid) {
    REQUIRE_SANDBOX();
    ASSERT_EQ(mount("still", m_directory.path().c_str(), "tmpfs", 0, "size=8k"), 0);
    m_file.replace("old\n");
    ASSERT_EQ(mount(nullptr, m_directory.path().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    try {
        m_file.remove();
        ADD_FAILURE() << "it was removed";
    } catch (const OutputError& failure) {
        EXPECT_EQ(failure.what(), m_path + " cannot be removed: Read-only file system");
    }
    EXPECT_EQ(umount(m_directory.path().c_str()), 0);
}

// A file system that does not know the kernel's RENAME_NOREPLACE.
class PlainRenameTest : public ReplacedFileTest {
  protected:
    void replaceNew() {
        const ReplacedFile file(m_path, ReplacedFile::Kind::New);
        const Refusal refusal = refuseCall(SYS_renameat2, 1, EINVAL, [&] { m_complaint = complaintOf(file); });
        if (!refusal.whyImpossible.empty()) GTEST_SKIP() << "SKIPPED: " << refusal.whyImpossible;
        EXPECT_TRUE(refusal.hasCome);
    }

    std::string m_complaint;
};

TEST_F(PlainRenameTest, NewFileGetsItsName) {
    replaceNew();
    if (IsSkipped()) return;
    EXPECT_EQ(m_complaint, "");
    EXPECT_EQ(contentsOf(fs::path(m_path)), "new\n");
    EXPECT_THAT(namesIn(m_directory.path()), ElementsAre("page.prom"));
}

TEST_F(PlainRenameTest, NewFileReplacesNothing) {
    m_directory.write("page.prom", "somebody else's\n");
    replaceNew();
    if (IsSkipped()) return;
    EXPECT_EQ(m_complaint, m_path + " is somebody else's by now; what belongs there is in " + m_path + ".1");
    EXPECT_EQ(contentsOf(fs::path(m_path)), "somebody else's\n");
    EXPECT_EQ(contentsOf(fs::path(m_path + ".1")), "new\n");
    EXPECT_THAT(namesIn(m_directory.path()), ElementsAre("page.prom", "page.prom.1"));
}

}  // namespace
