#include <gtest/gtest.h>
#include <sys/resource.h>

#include <ctime>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <type_traits>

#include "FileIO/FileName.h"
#include "tests/ScopedEnvironment.h"
#include "tests/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;

using Names = std::multiset<std::string>;

Names Walk(CDiskPath* directory, const char* extension) {
    Names names;
    CFileName file;
    bool found = directory->FirstFile(&file, extension);
    while (found) {
        EXPECT_EQ(file.path, *directory);
        names.insert(file.name);
        found = directory->NextFile(&file);
    }
    return names;
}

Names Walk(CTemporaryDirectory const& directory, const char* extension) {
    CDiskPath path(&directory.Path());
    return Walk(&path, extension);
}

std::string Today() {
    const std::time_t now = std::time(nullptr);
    char text[32];
    std::strftime(text, sizeof text, "%Y_%m_%d", std::localtime(&now));
    return text;
}

TEST(DiskPath, IsMadeFromEveryKindOfText) {
    std::string text = "/Volumes/Audio";
    EXPECT_EQ(CDiskPath().path, "");
    EXPECT_EQ(CDiskPath(&text).path, text);
    EXPECT_EQ(CDiskPath(static_cast<std::string const*>(&text)).path, text);
    EXPECT_EQ(CDiskPath("/Volumes/Audio/").path, "/Volumes/Audio/");
    EXPECT_EQ(CDiskPath(CFSTR("/\xC3\xA4/b")).path, "/\xC3\xA4/b");
    EXPECT_EQ(CDiskPath(static_cast<CFStringRef>(nullptr)).path, "");
}

TEST(DiskPath, KnowsWhetherItIsEmpty) {
    EXPECT_TRUE(CDiskPath().Empty());
    EXPECT_FALSE(CDiskPath("/").Empty());
}

TEST(DiskPath, GivesItsPathAsBothKindsOfString) {
    const CDiskPath path("/\xC3\xA4/b");
    EXPECT_EQ(path.GetFullPathString(), "/\xC3\xA4/b");
    const CFStringRef text = path.GetFullPathCFString();
    EXPECT_TRUE(CFEqual(text, CFSTR("/\xC3\xA4/b")));
    CFRelease(text);
    EXPECT_EQ(CDiskPath("/\xFF").GetFullPathCFString(), nullptr);
}

TEST(DiskPath, ComparesByteForByte) {
    EXPECT_TRUE(CDiskPath("a/b") == CDiskPath("a/b"));
    EXPECT_TRUE(CDiskPath("a/b") != CDiskPath("a/b/"));
    EXPECT_TRUE(CDiskPath("a/b") != CDiskPath("a/B"));
}

TEST(DiskPath, ExistsAsADirectoryAndAsAPlainFile) {
    const CTemporaryDirectory directory;
    const std::string file = directory.Write("plain");
    EXPECT_TRUE(CDiskPath(&directory.Path()).Exists());
    EXPECT_TRUE(CDiskPath(&file).Exists());
    EXPECT_FALSE(CDiskPath((directory.Path() + "/none").c_str()).Exists());
    EXPECT_FALSE(CDiskPath().Exists());
}

TEST(DiskPath, DeletesAnEmptyDirectoryOnly) {
    const CTemporaryDirectory directory;
    const std::string sub = directory.MakeDirectory("sub");
    const std::string file = directory.Write("sub/plain");
    CDiskPath path(&sub);
    EXPECT_EQ(path.DirDelete(), -1);
    EXPECT_TRUE(directory.Has("sub/plain"));
    fs::remove(file);
    EXPECT_EQ(path.DirDelete(), 0);
    EXPECT_FALSE(directory.Has("sub"));
    EXPECT_EQ(path.DirDelete(), -1);
}

TEST(DiskPath, DeletesNothingForAnEmptyPath) {
    EXPECT_EQ(CDiskPath().DirDelete(), 0);
}

TEST(TemporaryDirectoryOfADiskPath, IsNewInTheUsersTemporaryDirectory) {
    const CTemporaryDirectory base;
    const CScopedEnvironment environment("TMPDIR", base.Path());
    const CDiskPath first = CDiskPath::MakeTemporaryDirectory();
    const CDiskPath second = CDiskPath("ignored").MakeTemporaryDirectory();
    EXPECT_TRUE(fs::is_directory(first.path));
    EXPECT_TRUE(fs::is_directory(second.path));
    EXPECT_NE(first, second);
    EXPECT_EQ(ExtractPath(&first.path), base.Path());
    EXPECT_EQ(first.path.size(), base.File("TANroXXXXXX").size());
    EXPECT_EQ(first.path.rfind(base.File("TANro"), 0), 0u);
    EXPECT_EQ(first.path.find("XXXXXX"), std::string::npos);
}

TEST(TemporaryDirectoryOfADiskPath, TakesTheUsersDirectoryWithAndWithoutASlash) {
    const CTemporaryDirectory base;
    const CScopedEnvironment environment("TMPDIR", base.Path() + "/");
    const CDiskPath made = CDiskPath::MakeTemporaryDirectory();
    EXPECT_EQ(ExtractPath(&made.path), base.Path());
}

TEST(TemporaryDirectoryOfADiskPath, StandsInTmpWithoutAUsersDirectory) {
    for (auto const& value : {std::optional<std::string>(), std::optional<std::string>("")}) {
        const CScopedEnvironment environment("TMPDIR", value);
        CDiskPath made = CDiskPath::MakeTemporaryDirectory();
        EXPECT_EQ(made.path.rfind("/tmp/TANro", 0), 0u);
        EXPECT_EQ(made.DirDelete(), 0);
    }
}

TEST(TemporaryDirectoryOfADiskPath, IsEmptyWhenItCannotBeMade) {
    const CTemporaryDirectory base;
    const CScopedEnvironment environment("TMPDIR", base.File("missing"));
    EXPECT_TRUE(CDiskPath::MakeTemporaryDirectory().Empty());
}

TEST(UniqueSubDirectory, StandsUnderTheNameAndTodaysDate) {
    const CTemporaryDirectory base;
    const CDiskPath path(&base.Path());
    const std::string before = Today();
    const CDiskPath made = path.CreateUniqueSubDirectory("Capture");
    const std::string after = Today();
    EXPECT_TRUE(fs::is_directory(made.path));
    const std::string dated = ExtractPath(&made.path);
    EXPECT_TRUE(dated == base.File("Capture/" + before) || dated == base.File("Capture/" + after));
    const std::string name = fs::path(made.path).filename();
    EXPECT_EQ(name.rfind("Audio_", 0), 0u);
    EXPECT_EQ(name.size(), std::string("Audio_XXXXXX").size());
    EXPECT_NE(name, "Audio_XXXXXX");
}

TEST(UniqueSubDirectory, DiffersAtEveryCall) {
    const CTemporaryDirectory base;
    const CDiskPath path(&base.Path());
    const CDiskPath first = path.CreateUniqueSubDirectory("Capture");
    const CDiskPath second = path.CreateUniqueSubDirectory("Capture");
    EXPECT_TRUE(fs::is_directory(first.path));
    EXPECT_TRUE(fs::is_directory(second.path));
    EXPECT_NE(first, second);
}

TEST(UniqueSubDirectory, GoesByTheLocalDate) {
    const CTemporaryDirectory base;
    const CDiskPath path(&base.Path());
    const auto dateIn = [&path](const char* zone) {
        const CScopedEnvironment environment("TZ", zone);
        const CDiskPath made = path.CreateUniqueSubDirectory("Capture");
        return fs::path(made.path).parent_path().filename().string();
    };
    const std::string west = dateIn("WEST+14");
    const std::string east = dateIn("EAST-14");
    tzset();
    EXPECT_LT(west, east);
}

TEST(UniqueSubDirectory, IsMadeAlsoWhenTheBaseIsMissing) {
    const CTemporaryDirectory base;
    const CDiskPath made = CDiskPath(base.File("new/one/").c_str()).CreateUniqueSubDirectory("C");
    EXPECT_TRUE(fs::is_directory(made.path));
    EXPECT_EQ(made.path.rfind(base.File("new/one/C/"), 0), 0u);
}

TEST(UniqueSubDirectory, IsEmptyWhenItsParentCannotBeMade) {
    const CTemporaryDirectory base;
    const std::string file = base.Write("plain");
    EXPECT_TRUE(CDiskPath(&file).CreateUniqueSubDirectory("Capture").Empty());
}

TEST(UniqueSubDirectory, IsEmptyWhenAFileHasTheNameOfTheDate) {
    const CTemporaryDirectory base;
    std::string before;
    CDiskPath made;
    do {
        before = Today();
        base.Write("Capture/" + before);
        made = CDiskPath(&base.Path()).CreateUniqueSubDirectory("Capture");
    } while (before != Today());
    EXPECT_TRUE(made.Empty());
}

TEST(DirectoryWalk, MatchesTheExtensionExactly) {
    const CTemporaryDirectory directory;
    directory.Write("a.WAV");
    directory.Write("sub/b.wav");
    EXPECT_EQ(Walk(directory, "wav"), Names{"sub/b.wav"});
    EXPECT_EQ(Walk(directory, "WAV"), Names{"a.WAV"});
    EXPECT_EQ(Walk(directory, ".wav"), Names{});
}

TEST(DirectoryWalk, GoesThroughEveryLevel) {
    const CTemporaryDirectory directory;
    for (const char* name : {"1.wav", "a/2.wav", "a/b/3.wav", "a/b/c/4.wav", "d/5.wav", "d/6.aif",
                             "d/\xC3\xA4 \xF0\x9F\x8E\xA4.wav"}) {
        directory.Write(name);
    }
    directory.MakeDirectory("empty/below");
    EXPECT_EQ(Walk(directory, "wav"), (Names{"1.wav", "a/2.wav", "a/b/3.wav", "a/b/c/4.wav",
                                             "d/5.wav", "d/\xC3\xA4 \xF0\x9F\x8E\xA4.wav"}));
}

TEST(DirectoryWalk, ReadsTheExtensionFromTheLastNameOnly) {
    const CTemporaryDirectory directory;
    for (const char* name :
         {"x.wav/take", "x.wav/.wav", "x.wav/take.", "x.wav/.hidden.wav", "x.wav/take.wav.bak"}) {
        directory.Write(name);
    }
    EXPECT_EQ(Walk(directory, "wav"), (Names{"x.wav", "x.wav/.hidden.wav"}));
    EXPECT_EQ(Walk(directory, ""), (Names{"x.wav/take", "x.wav/.wav", "x.wav/take."}));
}

TEST(DirectoryWalk, DoesNotEnterLinkedDirectories) {
    const CTemporaryDirectory directory;
    directory.Write("real/a.wav");
    fs::create_directory_symlink(directory.Path(), directory.File("loop"));
    fs::create_symlink("nowhere", directory.File("dangling.wav"));
    EXPECT_EQ(Walk(directory, "wav"), (Names{"dangling.wav", "real/a.wav"}));
}

TEST(DirectoryWalk, StartsAtALinkToADirectory) {
    const CTemporaryDirectory directory;
    directory.Write("real/a.wav");
    fs::create_directory_symlink("real", directory.File("link"));
    CDiskPath path(directory.File("link").c_str());
    EXPECT_EQ(Walk(&path, "wav"), Names{"a.wav"});
}

TEST(DirectoryWalk, GivesNamesWhoseFullPathExists) {
    const CTemporaryDirectory directory;
    directory.Write("sub/b.wav", "12345");
    CDiskPath path(&directory.Path());
    CFileName file;
    ASSERT_TRUE(path.FirstFile(&file, "wav"));
    EXPECT_EQ(file.GetFullPath(), directory.File("sub/b.wav"));
    EXPECT_EQ(file.GetSize(), 5u);
}

TEST(DirectoryWalk, FindsNothingInWhatIsNoDirectory) {
    const CTemporaryDirectory directory;
    const std::string file = directory.Write("take.wav");
    CFileName out("kept/name");
    for (CDiskPath path : {CDiskPath(), CDiskPath(&file), CDiskPath("/no/such/place")}) {
        EXPECT_FALSE(path.FirstFile(&out, "wav")) << path.path;
        EXPECT_EQ(path.iterator, nullptr);
    }
    EXPECT_EQ(out.GetFullPath(), "kept/name");
}

TEST(DirectoryWalk, IsOverOnceItReturnedFalse) {
    const CTemporaryDirectory directory;
    directory.Write("a.wav");
    CDiskPath path(&directory.Path());
    CFileName file;
    ASSERT_TRUE(path.FirstFile(&file, "wav"));
    EXPECT_NE(path.iterator, nullptr);
    EXPECT_FALSE(path.NextFile(&file));
    EXPECT_EQ(path.iterator, nullptr);
    EXPECT_TRUE(path.FirstFile(&file, "wav"));
}

TEST(DirectoryWalk, StopsTheProcessWhenNoneIsUnderWay) {
    CDiskPath path("/");
    CFileName file;
    EXPECT_DEATH(path.NextFile(&file), "iterator != nullptr");
}

TEST(DirectoryWalk, StartsAgainWithFirstFile) {
    const CTemporaryDirectory directory;
    directory.Write("a.wav");
    directory.Write("b.wav");
    directory.Write("c.aif");
    CDiskPath path(&directory.Path());
    CFileName file;
    ASSERT_TRUE(path.FirstFile(&file, "wav"));
    ASSERT_TRUE(path.FirstFile(&file, "aif"));
    EXPECT_EQ(file.name, "c.aif");
    EXPECT_FALSE(path.NextFile(&file));
}

TEST(DirectoryWalk, IsNotTouchedByCloseFileFind) {
    const CTemporaryDirectory directory;
    directory.Write("a.wav");
    directory.Write("b.wav");
    CDiskPath path(&directory.Path());
    path.CloseFileFind();
    CFileName first;
    CFileName second;
    ASSERT_TRUE(path.FirstFile(&first, "wav"));
    path.CloseFileFind();
    EXPECT_NE(path.iterator, nullptr);
    ASSERT_TRUE(path.NextFile(&second));
    EXPECT_EQ((Names{first.name, second.name}), (Names{"a.wav", "b.wav"}));
    path.CloseFileFind();
    EXPECT_FALSE(path.NextFile(&second));
    path.CloseFileFind();
}

TEST(DirectoryWalk, EndsWithAnAssignmentToItsDirectory) {
    const CTemporaryDirectory directory;
    directory.Write("a.wav");
    CDiskPath path(&directory.Path());
    CFileName file;
    ASSERT_TRUE(path.FirstFile(&file, "wav"));
    path = CDiskPath("/elsewhere");
    EXPECT_EQ(path.iterator, nullptr);
    EXPECT_EQ(path.path, "/elsewhere");
}

TEST(DirectoryWalk, GoesOnWhenTheTextIsSet) {
    const CTemporaryDirectory directory;
    directory.Write("a.wav");
    directory.Write("b.wav");
    CDiskPath path(&directory.Path());
    CFileName first;
    CFileName second;
    ASSERT_TRUE(path.FirstFile(&first, "wav"));
    std::string other = "/elsewhere";
    path.Set(&other);
    EXPECT_EQ(path.path, other);
    ASSERT_TRUE(path.NextFile(&second));
    EXPECT_NE(first.name, second.name);
    EXPECT_EQ(second.path.path, other);
}

TEST(DirectoryWalk, IsNeverTakenOverByACopy) {
    const CTemporaryDirectory directory;
    directory.Write("a.wav");
    CDiskPath path(&directory.Path());
    CFileName file;
    ASSERT_TRUE(path.FirstFile(&file, "wav"));
    const CDiskPath copy(path);
    CDiskPath assigned;
    assigned = path;
    const CFileName inside(&path, "x");
    EXPECT_EQ(copy.iterator, nullptr);
    EXPECT_EQ(assigned.iterator, nullptr);
    EXPECT_EQ(inside.path.iterator, nullptr);
    EXPECT_EQ(file.path.iterator, nullptr);
    EXPECT_EQ(copy, path);
    EXPECT_NE(path.iterator, nullptr);
}

TEST(DirectoryWalk, MayWriteToTheFileNameThatHoldsItsDirectory) {
    const CTemporaryDirectory directory;
    directory.Write("a.wav");
    CFileName file;
    file.path.Set(&directory.Path());
    EXPECT_TRUE(file.path.FirstFile(&file, "wav"));
    EXPECT_EQ(file.GetFullPath(), directory.File("a.wav"));
    EXPECT_EQ(file.path.iterator, nullptr);
}

TEST(DirectoryWalk, NeedsNoDescriptorPerLevel) {
    const CTemporaryDirectory directory;
    std::string deep;
    for (int level = 0; level < 200; ++level) deep += "d/";
    directory.Write(deep + "a.wav");
    rlimit former{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &former), 0);
    const rlimit few{64, former.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    const Names found = Walk(directory, "wav");
    setrlimit(RLIMIT_NOFILE, &former);
    EXPECT_EQ(found, Names{deep + "a.wav"});
}

static_assert(!std::is_polymorphic_v<CDiskPath> && !std::is_polymorphic_v<CFileName>);

}  // namespace
