#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "FileIO/FileName.h"

namespace {

std::string ExtensionOf(std::string const& path) {
    return GetExtension(&path);
}

std::string ExtractNameOf(std::string const& path) {
    return GetExtractName(&path);
}

std::string ExtractPathOf(std::string const& path) {
    return ExtractPath(&path);
}

TEST(AddExtension, PutsExactlyOneDotBetween) {
    EXPECT_EQ(AddExtension("take", "wav"), "take.wav");
    EXPECT_EQ(AddExtension("take", ".wav"), "take.wav");
    EXPECT_EQ(AddExtension("take.", "wav"), "take.wav");
    EXPECT_EQ(AddExtension("take.", ".wav"), "take.wav");
}

TEST(AddExtension, AddsToAnExtensionThatIsThere) {
    EXPECT_EQ(AddExtension("take.wav", "bak"), "take.wav.bak");
}

TEST(AddExtension, GivesAnEmptyNameNoDot) {
    EXPECT_EQ(AddExtension("", ".wav"), "wav");
    EXPECT_EQ(AddExtension("", "wav"), "wav");
    EXPECT_EQ(AddExtension("", ""), "");
}

TEST(AddExtension, DropsOneLeadingDotOnly) {
    EXPECT_EQ(AddExtension("take", "..wav"), "take..wav");
    EXPECT_EQ(AddExtension("take", ""), "take.");
    EXPECT_EQ(AddExtension("take", "."), "take.");
}

TEST(GetExtension, TakesWhatFollowsTheLastDot) {
    EXPECT_EQ(ExtensionOf("/a/take.wav"), "wav");
    EXPECT_EQ(ExtensionOf("take.tar.gz"), "gz");
    EXPECT_EQ(ExtensionOf(".hidden"), "hidden");
    EXPECT_EQ(ExtensionOf("take."), "");
    EXPECT_EQ(ExtensionOf("take"), "");
    EXPECT_EQ(ExtensionOf(""), "");
}

TEST(GetExtension, LooksPastSlashes) {
    EXPECT_EQ(ExtensionOf("dir.ext/take"), "ext/take");
}

TEST(GetExtractName, LeavesOutDirectoryAndExtension) {
    EXPECT_EQ(ExtractNameOf("/a/take.wav"), "take");
    EXPECT_EQ(ExtractNameOf("take.wav"), "take");
    EXPECT_EQ(ExtractNameOf("/take.wav"), "take");
    EXPECT_EQ(ExtractNameOf("a/take.tar.gz"), "take.tar");
    EXPECT_EQ(ExtractNameOf("take"), "take");
    EXPECT_EQ(ExtractNameOf("a/"), "");
    EXPECT_EQ(ExtractNameOf(""), "");
}

TEST(GetExtractName, KeepsADotThatStartsTheText) {
    EXPECT_EQ(ExtractNameOf(".hidden"), ".hidden");
    EXPECT_EQ(ExtractNameOf("."), ".");
}

TEST(GetExtractName, IsEmptyWhenTheDotFollowsTheSlash) {
    EXPECT_EQ(ExtractNameOf("dir/.hidden"), "");
    EXPECT_EQ(ExtractNameOf("/.hidden"), "");
}

TEST(GetExtractName, RunsToTheEndWhenOnlyTheDirectoryHasADot) {
    EXPECT_EQ(ExtractNameOf("dir.x/take"), "take");
    EXPECT_EQ(ExtractNameOf("./take"), "take");
    EXPECT_EQ(ExtractNameOf("dir.x/"), "");
}

TEST(ExtractPath, TakesWhatPrecedesTheLastSlash) {
    EXPECT_EQ(ExtractPathOf("/a/b/take.wav"), "/a/b");
    EXPECT_EQ(ExtractPathOf("a/b/"), "a/b");
    EXPECT_EQ(ExtractPathOf("//take.wav"), "/");
}

TEST(ExtractPath, IsEmptyInTheRootAndWithoutADirectory) {
    EXPECT_EQ(ExtractPathOf("/take.wav"), "");
    EXPECT_EQ(ExtractPathOf("take.wav"), "");
    EXPECT_EQ(ExtractPathOf(""), "");
}

TEST(PathForms, AreTheSameAndLeaveTheArgumentAlone) {
    std::string path = "/Volumes/Audio:1/\xC3\xA4\\take.wav";
    const std::string before = path;
    EXPECT_EQ(PathNeutralToPlatform(path), before);
    EXPECT_EQ(PathPlatformToNeutral(path), before);
    EXPECT_EQ(path, before);
}

TEST(CFStringToCString, GivesUtf8ForTheCallerToFree) {
    const std::unique_ptr<char[]> text(CFStringToCString(CFSTR("\xC3\xA4\xF0\x9F\x8E\xA4.wav")));
    EXPECT_STREQ(text.get(), "\xC3\xA4\xF0\x9F\x8E\xA4.wav");
    const std::unique_ptr<char[]> empty(CFStringToCString(CFSTR("")));
    EXPECT_STREQ(empty.get(), "");
}

TEST(CFStringToCString, GivesNullForNoString) {
    EXPECT_EQ(CFStringToCString(nullptr), nullptr);
}

}  // namespace
