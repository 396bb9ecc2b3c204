#include "FileIO/FileName.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <limits>
#include <string>

#include "tests/ScopedEnvironment.h"
#include "tests/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;

constexpr unsigned long kCreator = 0x5456524E;
constexpr unsigned long kType = 0x57415645;

CFileName In(CTemporaryDirectory const& directory, std::string const& name) {
    return CFileName(directory.File(name).c_str());
}

/// What `action` adds to the log.
template <typename Action>
std::string LogOf(Action const& action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

TEST(FileName, SplitsAFullPathAtTheLastSlash) {
    const CFileName file("/Volumes/Audio/take.wav");
    EXPECT_EQ(file.path.path, "/Volumes/Audio");
    EXPECT_EQ(file.name, "take.wav");
    EXPECT_EQ(file.GetFullPath(), "/Volumes/Audio/take.wav");
    EXPECT_EQ(file.GetFullPathString(), "/Volumes/Audio/take.wav");
}

TEST(FileName, SplitsEveryKindOfTextAlike) {
    std::string text = "/\xC3\xA4/\xE2\x82\xAC.wav";
    const CFileName fromText(text.c_str());
    EXPECT_EQ(fromText.path.path, "/\xC3\xA4");
    EXPECT_EQ(fromText.name, "\xE2\x82\xAC.wav");
    EXPECT_EQ(CFileName(&text), fromText);
    EXPECT_EQ(CFileName(static_cast<std::string const*>(&text)), fromText);
    EXPECT_EQ(CFileName(CFSTR("/\xC3\xA4/\xE2\x82\xAC.wav")), fromText);
    EXPECT_TRUE(CFileName(static_cast<CFStringRef>(nullptr)).Empty());
}

TEST(FileName, HasNoDirectoryWithoutASlash) {
    const CFileName file("take.wav");
    EXPECT_EQ(file.path.path, "");
    EXPECT_EQ(file.GetFullPath(), "take.wav");
    EXPECT_FALSE(file.Empty());
}

TEST(FileName, LosesTheLeadingSlashOfAFileInTheRoot) {
    const CFileName file("/take.wav");
    EXPECT_TRUE(file.path.Empty());
    EXPECT_EQ(file.GetFullPath(), "take.wav");
}

TEST(FileName, HasAnEmptyNameWhenThePathEndsInASlash) {
    const CFileName file("/a/b/");
    EXPECT_EQ(file.path.path, "/a/b");
    EXPECT_EQ(file.name, "");
    EXPECT_EQ(file.GetFullPath(), "/a/b/");
    EXPECT_FALSE(file.Empty());
}

TEST(FileName, IsMadeFromADirectoryAndAName) {
    CDiskPath directory("/a");
    std::string name = "b.wav";
    EXPECT_EQ(CFileName(&directory, &name).GetFullPath(), "/a/b.wav");
    EXPECT_EQ(CFileName(&directory, "sub/b.wav").GetFullPath(), "/a/sub/b.wav");
    EXPECT_EQ(CFileName(&directory, CFSTR("\xC3\xA4.wav")).GetFullPath(), "/a/\xC3\xA4.wav");
    EXPECT_EQ(CFileName(&directory, static_cast<CFStringRef>(nullptr)).GetFullPath(), "/a/");
}

TEST(FileName, JoinsWithOneSlash) {
    const CDiskPath closed("/a/");
    const CDiskPath root("/");
    const CDiskPath none;
    EXPECT_EQ(CFileName(&closed, "b").GetFullPath(), "/a/b");
    EXPECT_EQ(CFileName(&root, "b").GetFullPath(), "/b");
    EXPECT_EQ(CFileName(&none, "b").GetFullPath(), "b");
}

TEST(FileName, IsEmptyOnlyWithoutDirectoryAndName) {
    const CDiskPath directory("/a");
    EXPECT_TRUE(CFileName().Empty());
    EXPECT_TRUE(CFileName("").Empty());
    EXPECT_FALSE(CFileName(&directory, "").Empty());
}

TEST(FileName, ComparesDirectoryAndNameByteForByte) {
    EXPECT_TRUE(CFileName("/a/b") == CFileName("/a/b"));
    EXPECT_FALSE(CFileName("/a/b") == CFileName("/a/B"));
    EXPECT_FALSE(CFileName("/a/b") == CFileName("/A/b"));
    const CDiskPath directory("/a");
    EXPECT_FALSE(CFileName(&directory, "b/c") == CFileName("/a/b/c"));
}

TEST(FileName, CopiesBothParts) {
    const CFileName file("/a/b");
    const CFileName copy(file);
    CFileName assigned("/c/d");
    assigned = file;
    EXPECT_EQ(copy, file);
    EXPECT_EQ(assigned, file);
}

TEST(FileName, GivesItsTextsAsCoreFoundationStrings) {
    const CFileName file("/\xC3\xA4/\xE2\x82\xAC.wav");
    const CFStringRef name = file.GetNameCFString();
    const CFStringRef full = file.GetFullPathCFString();
    EXPECT_TRUE(CFEqual(name, CFSTR("\xE2\x82\xAC.wav")));
    EXPECT_TRUE(CFEqual(full, CFSTR("/\xC3\xA4/\xE2\x82\xAC.wav")));
    CFRelease(name);
    CFRelease(full);
    EXPECT_EQ(CFileName("/a/\xFF").GetNameCFString(), nullptr);
    EXPECT_EQ(CFileName("/\xFF/a").GetFullPathCFString(), nullptr);
}

TEST(FileNameUrl, NamesTheFileOnTheLocalHost) {
    EXPECT_EQ(CFileName("/Volumes/Audio/take.wav").GetURL(),
              "file://localhost/Volumes/Audio/take.wav");
    EXPECT_EQ(CFileName("a/take.wav").GetURL(), "file://localhost/a/take.wav");
    EXPECT_EQ(CFileName("take.wav").GetURL(), "file://localhost/take.wav");
    EXPECT_EQ(CFileName().GetURL(), "file://localhost/");
}

TEST(FileNameUrl, DropsColonsAndTurnsBackslashes) {
    const CDiskPath directory("C:\\x");
    EXPECT_EQ(CFileName(&directory, "a:b").GetURL(), "file://localhost/C/x/ab");
    const CDiskPath network("\\\\server");
    EXPECT_EQ(CFileName(&network, "a").GetURL(), "file://localhost///server/a");
    const CDiskPath colon(":/x");
    EXPECT_EQ(CFileName(&colon, "a").GetURL(), "file://localhost//x/a");
}

TEST(FileNameUrl, AlwaysInsertsASeparator) {
    const CDiskPath directory("/a/");
    EXPECT_EQ(CFileName(&directory, "b").GetURL(), "file://localhost/a//b");
    const CDiskPath twoSlashes("//a");
    EXPECT_EQ(CFileName(&twoSlashes, "b").GetURL(), "file://localhost//a/b");
}

TEST(FileNameUrl, EscapesNothing) {
    EXPECT_EQ(CFileName("/a b/\xC3\xA4%20#?.wav").GetURL(),
              "file://localhost/a b/\xC3\xA4%20#?.wav");
}

TEST(FileName, TakesItsExtensionFromTheName) {
    const CDiskPath directory("/a.b");
    EXPECT_EQ(CFileName(&directory, "take.tar.gz").GetExtension(), "gz");
    EXPECT_EQ(CFileName(&directory, "take").GetExtension(), "");
}

TEST(FileName, CleansTheNameAndNotTheDirectory) {
    const CDiskPath directory("/a:b*c");
    CFileName file(&directory, "a:b*c?.wav");
    file.Clean();
    EXPECT_EQ(file.name, "a_b_c_.wav");
    EXPECT_EQ(file.path.path, "/a:b*c");
}

TEST(FileName, CleansEachUnwantedByteAndNoOther) {
    const CDiskPath directory;
    CFileName file(&directory, "\"*:<>?\\|/\xC3\xA4 '_.");
    file.Clean();
    EXPECT_EQ(file.name, "________/\xC3\xA4 '_.");
}

TEST(TemporaryFileName, IsANewEmptyFileInTheUsersTemporaryDirectory) {
    const CTemporaryDirectory base;
    const CScopedEnvironment environment("TMPDIR", base.Path());
    const CFileName first = CFileName::MakeTemporaryFileName();
    const CFileName second = CFileName("ignored").MakeTemporaryFileName();
    EXPECT_EQ(first.path.path, base.Path());
    EXPECT_EQ(first.name.rfind("TavarinPro.", 0), 0u);
    EXPECT_EQ(first.name.size(), std::string("TavarinPro.XXXXXX").size());
    EXPECT_NE(first.name, "TavarinPro.XXXXXX");
    EXPECT_TRUE(fs::is_regular_file(first.GetFullPath()));
    EXPECT_EQ(first.GetSize(), 0u);
    EXPECT_FALSE(first == second);
}

TEST(TemporaryFileName, StandsInTmpWithoutAUsersDirectory) {
    const CScopedEnvironment environment("TMPDIR", std::nullopt);
    CFileName file = CFileName::MakeTemporaryFileName();
    EXPECT_EQ(file.path.path, "/tmp");
    EXPECT_TRUE(file.Exists());
    file.FileDelete();
    EXPECT_FALSE(file.Exists());
}

TEST(TemporaryFileName, IsEmptyWhenItCannotBeMade) {
    const CTemporaryDirectory base;
    const CScopedEnvironment environment("TMPDIR", base.File("missing"));
    EXPECT_TRUE(CFileName::MakeTemporaryFileName().Empty());
}

TEST(FileDelete, RemovesTheFileAndGivesZero) {
    const CTemporaryDirectory directory;
    directory.Write("\xC3\xA4.wav");
    EXPECT_EQ(In(directory, "\xC3\xA4.wav").FileDelete(), 0);
    EXPECT_FALSE(directory.Has("\xC3\xA4.wav"));
}

TEST(FileDelete, GivesZeroAlsoWhenNothingWasRemoved) {
    const CTemporaryDirectory directory;
    directory.Write("full/file");
    EXPECT_EQ(In(directory, "missing").FileDelete(), 0);
    EXPECT_EQ(In(directory, "full").FileDelete(), 0);
    EXPECT_TRUE(directory.Has("full/file"));
    EXPECT_EQ(CFileName().FileDelete(), 0);
}

TEST(RenameFile, MovesTheFileAndKeepsTheOldName) {
    const CTemporaryDirectory directory;
    directory.Write("a.wav", "audio");
    directory.MakeDirectory("sub");
    const CFileName file = In(directory, "a.wav");
    const std::string log =
        LogOf([&] { EXPECT_TRUE(file.RenameFile(directory.File("sub/\xC3\xA4.wav").c_str())); });
    EXPECT_EQ(log, "");
    EXPECT_FALSE(directory.Has("a.wav"));
    EXPECT_EQ(directory.Read("sub/\xC3\xA4.wav"), "audio");
    EXPECT_EQ(file.GetFullPath(), directory.File("a.wav"));
}

TEST(RenameFile, ReplacesNothingAndSaysSo) {
    const CTemporaryDirectory directory;
    directory.Write("a.wav", "first");
    directory.Write("b.wav", "second");
    const std::string log = LogOf(
        [&] { EXPECT_FALSE(In(directory, "a.wav").RenameFile(directory.File("b.wav").c_str())); });
    EXPECT_EQ(log, "MoveFiles: " + directory.File("a.wav") + " - File exists\n");
    EXPECT_EQ(directory.Read("a.wav"), "first");
    EXPECT_EQ(directory.Read("b.wav"), "second");
}

TEST(RenameFile, FailsForAMissingFileAndAMissingDirectory) {
    const CTemporaryDirectory directory;
    directory.Write("a.wav");
    const std::string log = LogOf([&] {
        EXPECT_FALSE(In(directory, "none").RenameFile(directory.File("b.wav").c_str()));
        EXPECT_FALSE(In(directory, "a.wav").RenameFile(directory.File("none/b.wav").c_str()));
        EXPECT_FALSE(CFileName().RenameFile(directory.File("c.wav").c_str()));
    });
    EXPECT_EQ(log, "MoveFiles: " + directory.File("none") + " - No such file or directory\n" +
                       "MoveFiles: " + directory.File("a.wav") + " - No such file or directory\n" +
                       "MoveFiles:  - No such file or directory\n");
    EXPECT_TRUE(directory.Has("a.wav"));
}

TEST(FileAttributes, TellWhetherTheFileExists) {
    const CTemporaryDirectory directory;
    directory.Write("\xC3\xA4.wav");
    EXPECT_TRUE(In(directory, "\xC3\xA4.wav").Exists());
    EXPECT_TRUE(CFileName(directory.Path().c_str()).Exists());
    EXPECT_FALSE(In(directory, "none").Exists());
    EXPECT_FALSE(CFileName().Exists());
}

TEST(FileAttributes, TellTheSize) {
    const CTemporaryDirectory directory;
    directory.Write("a.wav", "12345");
    EXPECT_EQ(In(directory, "a.wav").GetSize(), 5u);
    EXPECT_EQ(In(directory, "none").GetSize(), 0u);
}

TEST(FileAttributes, TellSizesBeyond32Bits) {
    const CTemporaryDirectory directory;
    const std::string file = directory.Write("sparse");
    fs::resize_file(file, 5'000'000'000);
    EXPECT_EQ(In(directory, "sparse").GetSize(), 5'000'000'000u);
}

TEST(FileAttributes, AreNotBusyWithoutABusyFlag) {
    const CTemporaryDirectory directory;
    directory.Write("a.wav");
    EXPECT_FALSE(In(directory, "a.wav").Busy());
    EXPECT_FALSE(In(directory, "none").Busy());
}

TEST(ModificationTime, IsGivenBackAsSet) {
    const CTemporaryDirectory directory;
    directory.Write("a.wav");
    CFileName file = In(directory, "a.wav");
    for (const double seconds : {1'394'150'400.0, 1'394'150'400.25, 0.0, -1.5}) {
        EXPECT_EQ(LogOf([&] { file.SetModificationDateTime(seconds); }), "");
        EXPECT_EQ(file.GetModificationDateTime(), seconds);
    }
}

TEST(ModificationTime, JustBelowAWholeSecondIsThatSecond) {
    const CTemporaryDirectory directory;
    CFileName file(directory.Write("take.wav").c_str());
    for (const double seconds : {-1e-17, -5e-324}) {
        file.SetModificationDateTime(1000.0);
        EXPECT_EQ(LogOf([&] { file.SetModificationDateTime(seconds); }), "");
        EXPECT_EQ(file.GetModificationDateTime(), 0.0);
    }
}

TEST(ModificationTime, IsZeroForAMissingFile) {
    EXPECT_EQ(CFileName("/no/such/file").GetModificationDateTime(), 0.0);
}

TEST(ModificationTime, LogsAFailure) {
    EXPECT_EQ(LogOf([] { CFileName("/no/such/file").SetModificationDateTime(1.0); }),
              "SetModificationDateTime: /no/such/file - No such file or directory\n");
}

TEST(ModificationTime, RefusesWhatIsNoTime) {
    const CTemporaryDirectory directory;
    directory.Write("a.wav");
    CFileName file = In(directory, "a.wav");
    file.SetModificationDateTime(1000.0);
    using Limits = std::numeric_limits<double>;
    for (const double seconds :
         {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), 1e300, -1e300}) {
        EXPECT_EQ(LogOf([&] { file.SetModificationDateTime(seconds); }),
                  "SetModificationDateTime: " + file.GetFullPath() + " - Invalid argument\n");
        EXPECT_EQ(file.GetModificationDateTime(), 1000.0);
    }
}

TEST(CreatorType, IsIgnoredWhereTheFileSystemHasNone) {
    const CTemporaryDirectory directory;
    directory.Write("a.wav", "audio");
    EXPECT_EQ(LogOf([&] { In(directory, "a.wav").SetCreatorType(kCreator, kType); }), "");
    EXPECT_EQ(directory.Read("a.wav"), "audio");
}

TEST(CreatorType, LogsAFailure) {
    EXPECT_EQ(LogOf([] { CFileName("/no/such/file").SetCreatorType(kCreator, kType); }),
              "SetCreatorType: /no/such/file - No such file or directory\n");
}

}  // namespace
