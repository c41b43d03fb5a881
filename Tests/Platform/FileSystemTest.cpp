#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Linux/PosixFileSystem.h"
#include "Platform/Simulated/SimulatedFileSystem.h"
#include "Support/TemporaryFolder.h"

namespace tessara {
namespace {

constexpr std::size_t anySize = 1 << 20;

/// A file system with an empty folder to work in.
struct RealFolder {
    TemporaryFolder temporary;
    PosixFileSystem files;
    std::string folder = temporary.path("");
};

struct SimulatedFolder {
    SimulatedFolder() { files.putFolder(folder); }

    SimulatedFileSystem files;
    std::string folder = "/home/someone";
};

template <typename Folder>
class FileSystemTest : public ::testing::Test {
  protected:
    std::string path(const std::string& name) const { return place.folder + "/" + name; }
    Folder place;
};

using Folders = ::testing::Types<RealFolder, SimulatedFolder>;
TYPED_TEST_SUITE(FileSystemTest, Folders);

TYPED_TEST(FileSystemTest, a_replaced_file_reads_back_whole) {
    FileSystem& files = this->place.files;
    const std::string path = this->path("document");
    const std::string second("binary\0too", 10);
    for (const std::string& contents : {std::string("first, and longer"), second, std::string()}) {
        ASSERT_TRUE(files.replaceAtomically(path, contents));
        EXPECT_EQ(files.read(path, anySize), contents);
    }
}

TYPED_TEST(FileSystemTest, what_is_not_a_readable_file_is_told_by_kind) {
    FileSystem& files = this->place.files;
    ASSERT_TRUE(files.replaceAtomically(this->path("file"), "1234"));
    ASSERT_TRUE(files.createFolders(this->path("a/b")));
    const std::string missing = this->path("missing");

    EXPECT_EQ(files.exists(missing), false);
    EXPECT_EQ(files.exists(this->path("file")), true);
    EXPECT_EQ(files.exists(this->path("a/b")), true);
    EXPECT_EQ(files.read(missing, anySize).error().kind, FileError::Kind::notFound);
    EXPECT_EQ(files.read(this->path("a"), anySize).error().kind, FileError::Kind::isFolder);
    EXPECT_EQ(files.read(this->path("file"), 4), "1234");
    EXPECT_EQ(files.read(this->path("file"), 3).error().kind, FileError::Kind::tooLarge);
    EXPECT_EQ(files.replaceAtomically(this->path("a"), "").error().kind, FileError::Kind::isFolder);
    EXPECT_EQ(files.replaceAtomically(this->path("x/y"), "").error().kind,
              FileError::Kind::notFound);
    EXPECT_EQ(files.remove(missing).error().kind, FileError::Kind::notFound);
    EXPECT_NE(files.read(missing, anySize).error().description.find(missing), std::string::npos);
}

TYPED_TEST(FileSystemTest, a_rename_never_replaces_anything) {
    FileSystem& files = this->place.files;
    ASSERT_TRUE(files.replaceAtomically(this->path("old"), "old"));
    ASSERT_TRUE(files.replaceAtomically(this->path("taken"), "taken"));

    EXPECT_EQ(files.rename(this->path("old"), this->path("taken")).error().kind,
              FileError::Kind::alreadyExists);
    EXPECT_EQ(files.read(this->path("taken"), anySize), "taken");
    ASSERT_TRUE(files.rename(this->path("old"), this->path("new")));
    EXPECT_EQ(files.exists(this->path("old")), false);
    EXPECT_EQ(files.read(this->path("new"), anySize), "old");
}

TEST(PosixFileSystem, a_replacement_leaves_no_other_file_and_keeps_permissions_and_owner) {
    RealFolder place;
    const std::string path = place.folder + "/document";
    ASSERT_TRUE(place.files.replaceAtomically(path, "a"));
    constexpr uid_t another = 12345;
    const bool isRoot = ::chown(path.c_str(), another, another) == 0;
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    ASSERT_TRUE(place.files.replaceAtomically(path, "b"));

    struct stat info{};
    ASSERT_EQ(::stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640U);
    EXPECT_EQ(info.st_uid, isRoot ? another : ::getuid());
    EXPECT_EQ(info.st_gid == another, isRoot);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(place.folder), {}), 1);
}

TEST(PosixFileSystem, a_document_behind_a_link_stays_behind_it) {
    RealFolder place;
    const std::string link = place.folder + "/link";
    ASSERT_TRUE(place.files.replaceAtomically(place.folder + "/real", "a"));
    std::filesystem::create_symlink("real", link);
    ASSERT_TRUE(place.files.replaceAtomically(link, "b"));
    EXPECT_EQ(place.files.read(place.folder + "/real", anySize), "b");

    std::filesystem::remove(place.folder + "/real");
    EXPECT_EQ(place.files.replaceAtomically(link, "c").error().kind, FileError::Kind::notFound);
    EXPECT_TRUE(std::filesystem::is_symlink(link)) << "also while its end is out of reach";
}

TEST(PosixFileSystem, a_pipe_in_the_place_of_a_file_is_an_error_and_no_wait) {
    RealFolder place;
    const std::string path = place.folder + "/pipe";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    EXPECT_FALSE(place.files.read(path, anySize));
}

TEST(SimulatedFileSystem, a_replacement_that_fails_or_crashes_anywhere_leaves_old_or_new) {
    using UnsyncedWork = SimulatedFileSystem::UnsyncedWork;
    std::size_t sawNew = 0;
    for (const auto unsynced : {UnsyncedWork::lost, UnsyncedWork::kept}) {
        for (std::size_t step = 0; step < 5; ++step) {
            SimulatedFolder place;
            place.files.putFile("/home/someone/document", "old");
            const std::size_t first = place.files.stepCount();
            place.files.crashAtStep(first + step, unsynced);
            EXPECT_FALSE(place.files.replaceAtomically("/home/someone/document", "new"));
            EXPECT_FALSE(place.files.read("/home/someone/document", anySize));
            place.files.restart();
            const auto contents = place.files.contents("/home/someone/document");
            EXPECT_TRUE(contents == "old" || contents == "new");
            sawNew += contents == "new";
        }
    }
    EXPECT_EQ(sawNew, 1U) << "only a rename that reached the disk unsynced shows the new file";

    for (std::size_t step = 0; step < 5; ++step) {
        SimulatedFolder place;
        place.files.putFile("/home/someone/document", "old");
        place.files.failAtStep(place.files.stepCount() + step, FileError::Kind::noSpace);
        const auto outcome = place.files.replaceAtomically("/home/someone/document", "new");
        EXPECT_EQ(outcome.error().kind, FileError::Kind::noSpace);
        EXPECT_EQ(place.files.files().size(), 1U) << "no temporary file is left";
    }
}

}  // namespace
}  // namespace tessara
