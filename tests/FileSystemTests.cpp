#include "platform/FileSystem.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <ostream>
#include <set>
#include <string>
#include <system_error>

#include "platform/posix/MoveFile.h"
#include "tests/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;

struct Mover {
    const char* name;
    std::error_code (*move)(const char* from, const char* to);
};

void PrintTo(Mover const& mover, std::ostream* out) {
    *out << mover.name;
}

const Mover kAtOnce{"AtOnce", FileSystem::MoveFile};
const Mover kByLink{"ByLink", FileSystem::MoveFileByLink};
const Mover kByCopy{"ByCopy", FileSystem::MoveFileByCopy};

std::string NameOf(testing::TestParamInfo<Mover> const& mover) {
    return mover.param.name;
}

/// Every way of moving keeps the same promises; which one runs depends on the file systems.
class MoveTest : public testing::TestWithParam<Mover> {
protected:
    std::error_code Move(std::string const& from, std::string const& to) const {
        return GetParam().move(directory.File(from).c_str(), directory.File(to).c_str());
    }

    /// The directory holds nothing but these.
    void ExpectOnly(std::set<std::string> const& expected) const {
        std::set<std::string> names;
        for (auto const& entry : fs::directory_iterator(directory.Path())) {
            names.insert(entry.path().filename());
        }
        EXPECT_EQ(names, expected);
    }

    CTemporaryDirectory directory;
};

TEST_P(MoveTest, KeepsContentsTimeAndPermissions) {
    const std::string from = directory.Write("from", "audio");
    fs::permissions(from, fs::perms(0640));
    const auto modified = fs::last_write_time(from) - std::chrono::hours(1);
    fs::last_write_time(from, modified);
    EXPECT_EQ(Move("from", "to"), std::error_code());
    ExpectOnly({"to"});
    EXPECT_EQ(directory.Read("to"), "audio");
    EXPECT_EQ(fs::last_write_time(directory.File("to")), modified);
    EXPECT_EQ(fs::status(directory.File("to")).permissions(), fs::perms(0640));
}

TEST_P(MoveTest, KeepsWhatStandsAtTheTarget) {
    directory.Write("from", "first");
    directory.Write("to", "second");
    EXPECT_EQ(Move("from", "to"), std::errc::file_exists);
    ExpectOnly({"from", "to"});
    EXPECT_EQ(directory.Read("from"), "first");
    EXPECT_EQ(directory.Read("to"), "second");
}

TEST_P(MoveTest, KeepsADirectoryAndADanglingLinkAtTheTarget) {
    directory.Write("from", "first");
    directory.MakeDirectory("directory");
    fs::create_symlink("nowhere", directory.File("link"));
    EXPECT_EQ(Move("from", "directory"), std::errc::file_exists);
    EXPECT_EQ(Move("from", "link"), std::errc::file_exists);
    ExpectOnly({"directory", "from", "link"});
}

TEST_P(MoveTest, KeepsAFileMovedOntoItself) {
    directory.Write("from", "first");
    EXPECT_EQ(Move("from", "from"), std::errc::file_exists);
    EXPECT_EQ(directory.Read("from"), "first");
}

TEST_P(MoveTest, FailsWithoutASourceOrAParentOfTheTarget) {
    directory.Write("from");
    EXPECT_EQ(Move("none", "to"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(Move("from", "none/to"), std::errc::no_such_file_or_directory);
    ExpectOnly({"from"});
}

INSTANTIATE_TEST_SUITE_P(, MoveTest, testing::Values(kAtOnce, kByLink, kByCopy), NameOf);

class MoveDirectoryTest : public MoveTest {};

TEST_P(MoveDirectoryTest, MovesItWithAllItHolds) {
    directory.Write("from/sub/file", "audio");
    EXPECT_EQ(Move("from", "to"), std::error_code());
    ExpectOnly({"to"});
    EXPECT_EQ(directory.Read("to/sub/file"), "audio");
}

TEST_P(MoveDirectoryTest, KeepsAnEmptyDirectoryAtTheTarget) {
    directory.Write("from/file");
    directory.MakeDirectory("to");
    EXPECT_EQ(Move("from", "to"), std::errc::file_exists);
    ExpectOnly({"from", "to"});
}

TEST_P(MoveDirectoryTest, DoesNotMoveItIntoItself) {
    directory.MakeDirectory("from");
    EXPECT_EQ(Move("from", "from/to"), std::errc::invalid_argument);
    ExpectOnly({"from"});
}

INSTANTIATE_TEST_SUITE_P(, MoveDirectoryTest, testing::Values(kAtOnce, kByLink), NameOf);

TEST(MoveBetweenFileSystems, MovesAPlainFile) {
    const fs::path memory = "/dev/shm";
    if (!fs::is_directory(memory)) GTEST_SKIP() << "this machine has no /dev/shm";
    const CTemporaryDirectory here;
    const CTemporaryDirectory there(memory);
    const std::string from = here.Write("from", "audio");
    EXPECT_EQ(FileSystem::Move(from, there.File("to")), std::nullopt);
    EXPECT_FALSE(here.Has("from"));
    EXPECT_EQ(there.Read("to"), "audio");
    here.Write("from", "other");
    EXPECT_NE(FileSystem::Move(from, there.File("to")), std::nullopt);
    EXPECT_EQ(here.Read("from"), "other");
    EXPECT_EQ(there.Read("to"), "audio");
}

TEST(FileSystemItem, IsToldThroughLinks) {
    const CTemporaryDirectory directory;
    directory.Write("file");
    fs::create_symlink("file", directory.File("toFile"));
    fs::create_directory_symlink(".", directory.File("toDirectory"));
    fs::create_symlink("nowhere", directory.File("dangling"));
    using FileSystem::GetItem;
    using FileSystem::Item;
    EXPECT_EQ(GetItem(directory.File("file")), Item::File);
    EXPECT_EQ(GetItem(directory.Path()), Item::Directory);
    EXPECT_EQ(GetItem(directory.File("toFile")), Item::File);
    EXPECT_EQ(GetItem(directory.File("toDirectory")), Item::Directory);
    EXPECT_EQ(GetItem(directory.File("dangling")), Item::Missing);
    EXPECT_TRUE(FileSystem::GetAttributes(directory.File("dangling")).has_value());
}

TEST(DirectoryEnumerator, NamesFilesAndDirectoriesAlike) {
    const CTemporaryDirectory directory;
    directory.Write("a/b/file");
    directory.Write(".hidden");
    FileSystem::CDirectoryEnumerator enumerator(directory.Path());
    std::multiset<std::string> items;
    std::string item;
    while (enumerator.Next(&item)) items.insert(item);
    EXPECT_EQ(items, (std::multiset<std::string>{".hidden", "a", "a/b", "a/b/file"}));
    EXPECT_FALSE(enumerator.Next(&item));
}

TEST(DirectoryEnumerator, PassesOverADirectoryThatVanishes) {
    const CTemporaryDirectory directory;
    directory.MakeDirectory("gone");
    FileSystem::CDirectoryEnumerator enumerator(directory.Path());
    std::string item;
    ASSERT_TRUE(enumerator.Next(&item));
    fs::remove(directory.File("gone"));
    EXPECT_FALSE(enumerator.Next(&item));
}

TEST(ProgramPath, NamesTheRunningProgram) {
    EXPECT_EQ(fs::path(FileSystem::ProgramPath()).filename(), "FileSystemTests");
    EXPECT_TRUE(fs::path(FileSystem::ProgramPath()).is_absolute());
}

TEST(PlatformLog, GetsOneLine) {
    testing::internal::CaptureStderr();
    FileSystem::Log("MoveFiles: /a%s - 100%");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "MoveFiles: /a%s - 100%\n");
}

}  // namespace
