#include "FileIO/FileIO.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "FileIO/FileName.h"
#include "tests/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;

using Code = CFileIOException::FileExceptionCode;

CFileIOException Exception(const char* file, int code, unsigned long value) {
    return {file, static_cast<Code>(code), value, "source", 7};
}

/// The exception that `action` throws.
template <typename Action>
CFileIOException ThrownBy(Action const& action) {
    try {
        action();
    } catch (CFileIOException const& exception) {
        return exception;
    }
    throw std::logic_error("nothing was thrown");
}

std::string BytesOf(CFileIO& file, unsigned long count) {
    std::vector<unsigned char> buffer(count);
    const unsigned long read = file.Read(count, buffer.data());
    return {buffer.begin(), buffer.begin() + static_cast<long>(read)};
}

unsigned long Put(CFileIO& file, std::string const& bytes) {
    return file.Write(bytes.size(), reinterpret_cast<unsigned char const*>(bytes.data()));
}

class FileIOTest : public testing::Test {
protected:
    CFileName Name(std::string const& name) const {
        return CFileName(directory.File(name).c_str());
    }

    void Open(std::string const& name, bool write, bool create) {
        const CFileName fileName = Name(name);
        file.Open(&fileName, write, create);
    }

    CTemporaryDirectory directory;
    CFileIO file;
};

TEST(FileException, HasTheTextAndTheStatusOfItsCode) {
    const struct {
        int code;
        const char* text;
        std::uint32_t status;
    } expected[] = {
        {CFileIOException::OpenFailed, ": open failed: ", 3008},
        {CFileIOException::FileClosed, ":fFile closed: ", 3015},
        {CFileIOException::SetPositionFailed, ": set position: ", 3010},
        {CFileIOException::GetPositionFailed, ": get position: ", 3010},
        {CFileIOException::ReadFailed, ": file read: ", 3005},
        {CFileIOException::WriteFailed, ": file write: ", 3006},
        {CFileIOException::CloseFailed, ": file close: ", 3009},
        {CFileIOException::LengthFailed, ": file length: ", 3010},
        {CFileIOException::DeleteFailed, ": cannot delete: ", 3009},
    };
    for (auto const& row : expected) {
        const CFileIOException exception = Exception("/tmp/x", row.code, 1);
        EXPECT_EQ(exception.description, "/tmp/x" + std::string(row.text) + "1");
        EXPECT_EQ(exception.GetStatus(), row.status) << row.text;
    }
}

TEST(FileException, HasAStatusButNoTextForCode10) {
    const CFileIOException exception = Exception("/tmp/x", CFileIOException::Code10, 1);
    EXPECT_EQ(exception.description, "/tmp/x: unknown error: 1");
    EXPECT_EQ(exception.GetStatus(), 4009u);
}

TEST(FileException, HasTheUnknownTextAndStatusForEveryOtherCode) {
    for (const int code : {0, 11, -1, INT_MIN, INT_MAX}) {
        const CFileIOException exception = Exception("/tmp/x", code, 1);
        EXPECT_EQ(exception.description, "/tmp/x: unknown error: 1") << code;
        EXPECT_EQ(exception.GetStatus(), 3002u) << code;
    }
}

TEST(FileException, ItsDescriptionHasTheNameUpToItsFirstNul) {
    const std::string name("a\0b", 3);
    const CFileIOException exception(name, CFileIOException::OpenFailed, 1, "source", 7);
    EXPECT_EQ(exception.fileName, name);
    EXPECT_EQ(exception.description, "a: open failed: 1");
}

TEST(FileException, CodesAreNumberedFromOneInTheirOrder) {
    EXPECT_EQ(CFileIOException::OpenFailed, 1);
    EXPECT_EQ(CFileIOException::FileClosed, 2);
    EXPECT_EQ(CFileIOException::SetPositionFailed, 3);
    EXPECT_EQ(CFileIOException::GetPositionFailed, 4);
    EXPECT_EQ(CFileIOException::ReadFailed, 5);
    EXPECT_EQ(CFileIOException::WriteFailed, 6);
    EXPECT_EQ(CFileIOException::CloseFailed, 7);
    EXPECT_EQ(CFileIOException::LengthFailed, 8);
    EXPECT_EQ(CFileIOException::DeleteFailed, 9);
    EXPECT_EQ(CFileIOException::Code10, 10);
    EXPECT_EQ(sizeof(Code), 4u);
}

TEST(FileException, KeepsAllThatItIsMadeFrom) {
    const CFileIOException exception = Exception("/tmp/x", 5, 42);
    EXPECT_EQ(exception.fileName, "/tmp/x");
    EXPECT_EQ(exception.code, CFileIOException::ReadFailed);
    EXPECT_EQ(exception.value, 42u);
    EXPECT_STREQ(exception.sourceFile, "source");
    EXPECT_EQ(exception.sourceLine, 7);
}

TEST(FileException, PrintsItsValueAsASigned32BitNumber) {
    EXPECT_EQ(Exception("x", 2, 0).description, "x:fFile closed: 0");
    EXPECT_EQ(Exception("x", 1, 0xFFFFFFFF).description, "x: open failed: -1");
    EXPECT_EQ(Exception("x", 1, 0x80000000).description, "x: open failed: -2147483648");
    EXPECT_EQ(Exception("x", 1, 0x100000005).description, "x: open failed: 5");
    EXPECT_EQ(Exception("x", 1, 0x100000005).value, 0x100000005u);
}

TEST(FileException, TakesLongNamesAndFormatCharactersAsTheyAre) {
    const std::string name = std::string(5000, '%') + "s%n\xC3\xA4";
    EXPECT_EQ(Exception(name.c_str(), 1, 1).description, name + ": open failed: 1");
}

TEST(FileException, SetsItsDescriptionWithoutItsCode) {
    CFileIOException exception = Exception("old", 1, 1);
    exception.SetDescription("new", CFileIOException::ReadFailed, 3);
    EXPECT_EQ(exception.fileName, "new");
    EXPECT_EQ(exception.description, "new: file read: 3");
    EXPECT_EQ(exception.code, CFileIOException::OpenFailed);
    EXPECT_EQ(exception.value, 1u);
    EXPECT_EQ(exception.GetStatus(), 3008u);
}

TEST(FileException, KeepsItsFileNameWhenAssignedTo) {
    CFileIOException target("/target", CFileIOException::OpenFailed, 1, "here", 1);
    CFileIOException source("/source", CFileIOException::FileClosed, 2, "there", 2);
    const CFileIOException constant("/constant", CFileIOException::ReadFailed, 3, "else", 3);
    target = source;
    EXPECT_EQ(target.fileName, "/target");
    EXPECT_EQ(target.code, CFileIOException::FileClosed);
    EXPECT_EQ(target.value, 2u);
    EXPECT_STREQ(target.sourceFile, "there");
    EXPECT_EQ(target.sourceLine, 2);
    EXPECT_EQ(target.description, "/source:fFile closed: 2");
    target = constant;
    EXPECT_EQ(target.fileName, "/target");
    EXPECT_EQ(target.description, "/constant: file read: 3");
    target = Exception("/temporary", 1, 4);
    EXPECT_EQ(target.fileName, "/target");
    EXPECT_EQ(target.description, "/temporary: open failed: 4");
}

TEST(FileException, CopiesItsFileNameWhenThrown) {
    const CFileIOException thrown = ThrownBy([] { throw Exception("/tmp/x", 1, 1); });
    EXPECT_EQ(thrown.fileName, "/tmp/x");
    EXPECT_EQ(CFileIOException(thrown).fileName, "/tmp/x");
}

TEST(MemoryException, CopiesItsThreeFieldsWhenAssigned) {
    CFileMemoryException source;
    source.sourceFile = "there";
    source.sourceLine = 9;
    source.description = "no memory";
    CFileMemoryException target;
    target = source;
    EXPECT_STREQ(target.sourceFile, "there");
    EXPECT_EQ(target.sourceLine, 9);
    EXPECT_EQ(target.description, "no memory");
}

TEST_F(FileIOTest, StartsClosed) {
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.stream, nullptr);
    EXPECT_EQ(file.fileName, "");
}

TEST_F(FileIOTest, ThrowsForAMissingFile) {
    const CFileIOException exception = ThrownBy([&] { Open("none", false, false); });
    EXPECT_EQ(exception.code, CFileIOException::OpenFailed);
    EXPECT_EQ(exception.value, 1u);
    EXPECT_EQ(exception.fileName, directory.File("none"));
    EXPECT_EQ(exception.description, directory.File("none") + ": open failed: 1");
    EXPECT_EQ(exception.GetStatus(), 3008u);
    EXPECT_STREQ(exception.sourceFile, "Utils/FileIO/FileIO");
    EXPECT_GT(exception.sourceLine, 0);
}

TEST_F(FileIOTest, HoldsTheNameAfterAFailedOpenAndCanBeUsedAgain) {
    EXPECT_THROW(Open("none", false, false), CFileIOException);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.fileName, directory.File("none"));
    EXPECT_EQ(ThrownBy([&] { file.GetPosition(); }).description,
              directory.File("none") + ":fFile closed: 0");
    Open("new", true, true);
    EXPECT_TRUE(file.IsOpen());
    EXPECT_EQ(file.fileName, directory.File("new"));
}

TEST_F(FileIOTest, ReadsOnlyInReadMode) {
    directory.Write("a", "12345");
    Open("a", false, false);
    EXPECT_EQ(BytesOf(file, 3), "123");
    EXPECT_EQ(BytesOf(file, 10), "45");
    EXPECT_EQ(BytesOf(file, 10), "");
    EXPECT_EQ(Put(file, "x"), 0u);
    file.Close();
    EXPECT_EQ(directory.Read("a"), "12345");
}

TEST_F(FileIOTest, IgnoresCreateWithoutWrite) {
    directory.Write("a", "12345");
    Open("a", false, true);
    EXPECT_EQ(BytesOf(file, 10), "12345");
    EXPECT_THROW(Open("none", false, true), CFileIOException);
    EXPECT_FALSE(directory.Has("none"));
}

TEST_F(FileIOTest, ReadsAndWritesAnExistingFileInPlace) {
    directory.Write("a", "12345");
    Open("a", true, false);
    EXPECT_EQ(Put(file, "ab"), 2u);
    file.SetPosition(1);
    EXPECT_EQ(BytesOf(file, 10), "b345");
    file.Close();
    EXPECT_EQ(directory.Read("a"), "ab345");
    EXPECT_THROW(Open("none", true, false), CFileIOException);
}

TEST_F(FileIOTest, CreatesAndEmptiesAFile) {
    directory.Write("a", "12345");
    Open("a", true, true);
    EXPECT_EQ(file.GetLength(), 0u);
    Put(file, "\xC3\xA4");
    file.SetPosition(0);
    EXPECT_EQ(BytesOf(file, 10), "\xC3\xA4");
    Open("\xE2\x82\xAC", true, true);
    EXPECT_EQ(directory.Read("a"), "\xC3\xA4");
    EXPECT_TRUE(directory.Has("\xE2\x82\xAC"));
}

TEST_F(FileIOTest, OpensNoDirectoryInAnyMode) {
    directory.MakeDirectory("dir");
    EXPECT_EQ(ThrownBy([&] { Open("dir", false, false); }).code, CFileIOException::OpenFailed);
    EXPECT_EQ(file.stream, nullptr);
    EXPECT_EQ(ThrownBy([&] { Open("dir", true, false); }).code, CFileIOException::OpenFailed);
    EXPECT_EQ(ThrownBy([&] { Open("dir", true, true); }).code, CFileIOException::OpenFailed);
}

TEST_F(FileIOTest, ClosesMoreThanOnce) {
    Open("a", true, true);
    file.Close();
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.fileName, "");
    file.Close();
    EXPECT_THROW(Open("none", false, false), CFileIOException);
    file.Close();
    EXPECT_EQ(file.fileName, "");
}

TEST_F(FileIOTest, ClosesWhenDestroyed) {
    const CFileName name = Name("a");
    {
        CFileIO writer;
        writer.Open(&name, true, true);
        Put(writer, "buffered");
    }
    EXPECT_EQ(directory.Read("a"), "buffered");
}

TEST_F(FileIOTest, ClosesThroughTheVirtualOperationWhenOpened) {
    struct CountingFile : CFileIO {
        int closed = 0;
        void Close() override {
            ++closed;
            CFileIO::Close();
        }
    } counting;
    const CFileName name = Name("a");
    counting.Open(&name, true, true);
    EXPECT_EQ(counting.closed, 1);
    counting.Open(&name, false, false);
    EXPECT_EQ(counting.closed, 2);
}

TEST_F(FileIOTest, ThrowsWhenPositionedWhileClosed) {
    for (CFileIOException const& exception :
         {ThrownBy([&] { file.GetPosition(); }), ThrownBy([&] { file.SetPosition(0); }),
          ThrownBy([&] { file.GetLength(); })}) {
        EXPECT_EQ(exception.code, CFileIOException::FileClosed);
        EXPECT_EQ(exception.value, 0u);
        EXPECT_EQ(exception.description, ":fFile closed: 0");
        EXPECT_EQ(exception.GetStatus(), 3015u);
        EXPECT_STREQ(exception.sourceFile, "Utils/FileIO/FileIO");
    }
}

TEST_F(FileIOTest, TransfersNothingWhileClosed) {
    unsigned char byte = 0;
    EXPECT_EQ(file.Read(1, &byte), 0u);
    EXPECT_EQ(file.Write(1, &byte), 0u);
    EXPECT_EQ(file.WriteString("abc", true), 0u);
}

TEST_F(FileIOTest, GoesToAPositionAndTellsIt) {
    directory.Write("a", "12345");
    Open("a", false, false);
    EXPECT_EQ(file.GetPosition(), 0u);
    EXPECT_EQ(file.SetPosition(3), 0);
    EXPECT_EQ(file.GetPosition(), 3u);
    EXPECT_EQ(BytesOf(file, 10), "45");
    EXPECT_EQ(file.GetPosition(), 5u);
}

TEST_F(FileIOTest, GoesBeyondTheEndWithoutMakingTheFileLonger) {
    directory.Write("a", "12345");
    Open("a", true, false);
    EXPECT_EQ(file.SetPosition(1000), 0);
    EXPECT_EQ(file.GetLength(), 5u);
    EXPECT_EQ(file.GetPosition(), 1000u);
    file.Close();
    EXPECT_EQ(directory.Read("a"), "12345");
}

TEST_F(FileIOTest, RefusesAPositionThatNoFileHas) {
    directory.Write("a", "12345");
    Open("a", false, false);
    file.SetPosition(2);
    for (const unsigned long offset : {LONG_MAX + 1ul, ULONG_MAX}) {
        const CFileIOException exception = ThrownBy([&] { file.SetPosition(offset); });
        EXPECT_EQ(exception.code, CFileIOException::SetPositionFailed);
        EXPECT_EQ(exception.description, directory.File("a") + ": set position: 1");
        EXPECT_EQ(exception.GetStatus(), 3010u);
    }
    EXPECT_EQ(BytesOf(file, 10), "345");
}

TEST_F(FileIOTest, TellsTheLengthAndKeepsThePosition) {
    Open("a", true, true);
    EXPECT_EQ(file.GetLength(), 0u);
    Put(file, "12345");
    EXPECT_EQ(file.GetLength(), 5u);
    file.SetPosition(1);
    EXPECT_EQ(file.GetLength(), 5u);
    EXPECT_EQ(file.GetPosition(), 1u);
}

TEST_F(FileIOTest, ThrowsForThePositionAndTheLengthOfAPipe) {
    const CFileName pipe = Name("pipe");
    ASSERT_EQ(mkfifo(pipe.GetFullPath().c_str(), 0600), 0);
    file.Open(&pipe, true, false);
    EXPECT_EQ(ThrownBy([&] { file.GetPosition(); }).description,
              pipe.GetFullPath() + ": get position: 1");
    EXPECT_EQ(ThrownBy([&] { file.GetLength(); }).description,
              pipe.GetFullPath() + ": file length: 1");
    EXPECT_EQ(ThrownBy([&] { file.SetPosition(0); }).description,
              pipe.GetFullPath() + ": set position: 1");
}

TEST_F(FileIOTest, WritesTextWithAndWithoutALineEnd) {
    Open("a", true, true);
    EXPECT_EQ(file.WriteString("abc", true), 5u);
    EXPECT_EQ(file.WriteString("de", false), 2u);
    EXPECT_EQ(file.WriteString("", true), 2u);
    EXPECT_EQ(file.WriteString("", false), 0u);
    file.Close();
    EXPECT_EQ(directory.Read("a"), "abc\r\nde\r\n");
}

TEST_F(FileIOTest, WritesTextThroughTheVirtualWrite) {
    struct RecordingFile : CFileIO {
        std::vector<std::string> writes;
        unsigned long Write(unsigned long count, unsigned char const* buffer) override {
            writes.emplace_back(buffer, buffer + count);
            return count;
        }
    } recording;
    EXPECT_EQ(recording.WriteString("abc", true), 5u);
    EXPECT_EQ(recording.writes, (std::vector<std::string>{"abc", "\r\n"}));
}

TEST_F(FileIOTest, DoesNothingToPreallocateOrToSetCodes) {
    Open("a", true, true);
    const CFileName name = Name("a");
    EXPECT_EQ(file.PreAllocate(1'000'000), 0);
    EXPECT_EQ(file.SetFileCreatorType(&name, 1, 2), 0);
    EXPECT_EQ(file.GetLength(), 0u);
}

TEST_F(FileIOTest, CanBeOpenedLeavesTheMessageAlone) {
    directory.Write("a");
    std::string message = "kept";
    EXPECT_TRUE(Name("a").CanFileBeOpened(&message));
    EXPECT_EQ(message, "kept");
}

TEST_F(FileIOTest, CannotBeOpenedWhenMissing) {
    std::string message = "replaced";
    EXPECT_FALSE(CFileName("/no/such/b.wav").CanFileBeOpened(&message));
    EXPECT_EQ(message, "The file /no/such/b.wav does not exists.");
}

TEST_F(FileIOTest, CannotBeOpenedWhenItIsADirectory) {
    directory.MakeDirectory("dir");
    fs::create_directory_symlink("dir", directory.File("link"));
    std::string message;
    EXPECT_FALSE(Name("dir").CanFileBeOpened(&message));
    EXPECT_EQ(message, "Cannot open " + directory.File("dir") + " is a directory.");
    EXPECT_FALSE(Name("link").CanFileBeOpened(&message));
    EXPECT_EQ(message, "Cannot open " + directory.File("link") + " is a directory.");
}

TEST_F(FileIOTest, CannotBeOpenedWhenADanglingLink) {
    fs::create_symlink("nowhere", directory.File("link"));
    std::string message;
    EXPECT_FALSE(Name("link").CanFileBeOpened(&message));
    EXPECT_EQ(message, "The file " + directory.File("link") + " does not exists.");
}

TEST_F(FileIOTest, CannotBeOpenedWhenItIsThereButRefusesToOpen) {
    const CFileName socket = Name("socket");
    ASSERT_EQ(mknod(socket.GetFullPath().c_str(), S_IFSOCK | 0600, 0), 0);
    std::string message;
    EXPECT_FALSE(socket.CanFileBeOpened(&message));
    EXPECT_EQ(message,
              "The file " + directory.File("socket") + " exists but cannot be opened. Error: 3008");
}

static_assert(std::has_virtual_destructor_v<CFileIO>);
static_assert(!std::is_copy_constructible_v<CFileIO> && !std::is_copy_assignable_v<CFileIO>);
static_assert(!std::is_polymorphic_v<CFileIOException> && !std::is_polymorphic_v<CCodeException>);
static_assert(std::is_nothrow_destructible_v<CFileIO>);

}  // namespace
