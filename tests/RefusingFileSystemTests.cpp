// What the product says, and what stays as it was, when the file system says no.

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>

#include "FileIO/FileIO.h"
#include "FileIO/FileName.h"
#include "ForkedProcess.h"
#include "LinkScripts.h"
#include "ScopedEnvironment.h"
#include "TemporaryDirectory.h"
#include "TestAudio.h"
#include "host/LinkServer.h"
#include "host/ScriptEngine.h"
#include "host/SessionFile.h"
#include "link/TANClientInterProcess.h"
#include "utils/ParameterBlock.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr int kSkipped = 77;
constexpr uid_t kNobody = 65534;
constexpr std::size_t kLongestPath = 4095;

// The sanitizer of virtual calls asks through a pipe whether an object may be read, and takes every
// object for a wrong one where there are no descriptors.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitizerNeedsDescriptors = true;
#else
constexpr bool kSanitizerNeedsDescriptors = false;
#endif

// Runs the rest of a test in a process of its own, whose limits and mounts go with it.
void InAProcess(std::function<void()> const& run) {
    CForkedProcess child([&] {
        run();
        if (testing::Test::IsSkipped()) return kSkipped;
        return testing::Test::HasFailure() ? 1 : 0;
    });
    const std::optional<int> status = child.Wait(100s);
    if (status == kSkipped) GTEST_SKIP() << "this system does not let a test do that";
    EXPECT_EQ(status, 0);
}

bool WriteText(const char* szFile, std::string const& strText) {
    return bool(std::ofstream(szFile) << strText << std::flush);
}

// A file system of a few pages at `strPath`, for this process alone; any user may have one.
bool MountSmall(std::string const& strPath, const char* szSize) {
    const uid_t nUser = geteuid();
    const gid_t nGroup = getegid();
    if (unshare(CLONE_NEWNS) != 0) {
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
        WriteText("/proc/self/setgroups", "deny");
        WriteText("/proc/self/uid_map", std::to_string(nUser) + " " + std::to_string(nUser) + " 1");
        WriteText("/proc/self/gid_map",
                  std::to_string(nGroup) + " " + std::to_string(nGroup) + " 1");
    }
    mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
    return mount("none", strPath.c_str(), "tmpfs", 0, szSize) == 0;
}

// The superuser may write everywhere, so it becomes somebody else for a scope.
class COrdinaryUser {
public:
    COrdinaryUser() {
        if (geteuid() == 0) m_fChanged = seteuid(kNobody) == 0;
    }
    ~COrdinaryUser() {
        if (m_fChanged && seteuid(0) != 0) abort();
    }

private:
    bool m_fChanged = false;
};

void LimitTo(int nResource, rlim_t nLimit) {
    rlimit limit{};
    getrlimit(nResource, &limit);
    limit.rlim_cur = nLimit;
    EXPECT_EQ(setrlimit(nResource, &limit), 0);
}

CFileName NameOf(std::string const& strPath) {
    return CFileName(strPath.c_str());
}

CParameterBlock BlockOf(std::size_t nBytes) {
    CParameterBlock block;
    block.AddParameter("Text", std::string(nBytes, 't').c_str());
    return block;
}

int SaveBlock(std::size_t nBytes, std::string const& strFile) {
    CParameterBlock block = BlockOf(nBytes);
    const CFileName file = NameOf(strFile);
    return block.SaveBinarySession("id", &file);
}

int LoadBlock(std::string const& strFile, CParameterBlock* pBlock = nullptr) {
    const std::vector<const char*> ids{"id"};
    CParameterBlock block;
    const CFileName file = NameOf(strFile);
    return (pBlock ? pBlock : &block)->LoadBinarySession(&ids, &file);
}

bool HoldsBlock(std::string const& strFile, std::size_t nBytes) {
    CParameterBlock loaded;
    return LoadBlock(strFile, &loaded) == sessionDone && loaded == BlockOf(nBytes);
}

// Saves as a careful program does: beside the file, compared, moved into place.
bool SaveBlockSafely(std::size_t nBytes, std::string const& strFile) {
    const std::string strBeside = strFile + ".new";
    if (SaveBlock(nBytes, strBeside) != sessionDone || !HoldsBlock(strBeside, nBytes)) {
        fs::remove(strBeside);
        return false;
    }
    fs::rename(strBeside, strFile);
    return true;
}

std::string WhatOf(std::function<void()> const& run) {
    try {
        run();
    } catch (std::exception const& failure) {
        return failure.what();
    }
    return {};
}

void ExpectContains(std::string const& strText, std::string const& strPart) {
    EXPECT_NE(strText.find(strPart), std::string::npos) << strText;
}

std::string Reason(int nError) {
    return std::generic_category().message(nError);
}

CSession LargeSession() {
    return CSession(std::vector<std::string>(900, std::string(100, 'n')), 48000);
}

class CFullDisk : public testing::TestWithParam<bool> {
protected:
    // Full because of the device or because of the user's limit.
    void WhileFull(std::function<void()> const& prepare, std::function<void()> const& run) {
        InAProcess([&] {
            if (GetParam()) {
                std::signal(SIGXFSZ, SIG_IGN);
                prepare();
                LimitTo(RLIMIT_FSIZE, 64 << 10);
            } else {
                if (!MountSmall(m_directory.Path(), "size=128k")) GTEST_SKIP();
                prepare();
            }
            run();
            LimitTo(RLIMIT_FSIZE, RLIM_INFINITY);
        });
    }
    int Refusal() const { return GetParam() ? EFBIG : ENOSPC; }

    CTemporaryDirectory m_directory;
};

TEST_P(CFullDisk, WritesAreShort) {
    WhileFull([] {},
              [&] {
                  CFileIO file;
                  const CFileName name = NameOf(m_directory.File("a"));
                  file.Open(&name, true, true);
                  const std::vector<unsigned char> bytes(1 << 20, 'x');
                  EXPECT_LT(file.Write(bytes.size(), bytes.data()), bytes.size());
              });
}

TEST_P(CFullDisk, SessionThatWasThereSurvivesACarefulSave) {
    const std::string strFile = m_directory.File("session");
    WhileFull([&] { EXPECT_TRUE(SaveBlockSafely(1000, strFile)); },
              [&] {
                  EXPECT_FALSE(SaveBlockSafely(1 << 20, strFile));
                  EXPECT_TRUE(HoldsBlock(strFile, 1000));
                  EXPECT_FALSE(m_directory.Has("session.new"));
              });
}

TEST_P(CFullDisk, HostsSessionSurvivesAFailedSave) {
    const std::string strFile = m_directory.File("session.json");
    WhileFull([&] { SaveSession(CSession({"Kept"}, 48000), strFile); },
              [&] {
                  const std::string strText = WhatOf([&] { SaveSession(LargeSession(), strFile); });
                  ExpectContains(strText, "cannot save the session \"" + strFile + "\"");
                  ExpectContains(strText, Reason(Refusal()));
                  EXPECT_EQ(LoadSession(strFile).TrackAt(DocumentKind::Script, 0).m_strName,
                            "Kept");
                  EXPECT_EQ(std::distance(fs::directory_iterator(m_directory.Path()), {}), 1);
              });
}

TEST_P(CFullDisk, AudioIsRefusedInWordsAndLeavesNoPieces) {
    const std::string strFile = m_directory.File("take.wav");
    WhileFull([] {},
              [&] {
                  const std::string strText =
                      WhatOf([&] { WriteAudioFile(strFile, TestAudio::Silence(200'000)); });
                  ExpectContains(strText, strFile);
                  ExpectContains(strText, Reason(Refusal()));
                  EXPECT_TRUE(fs::is_empty(m_directory.Path()));
              });
}

TEST_P(CFullDisk, ScriptThatRendersSaysSoAndTheSessionStays) {
    const std::string strTake = m_directory.File("take.wav");
    const std::string strAudio = m_directory.File("audio");
    WhileFull(
        [&] { WriteAudioFile(strTake, TestAudio::Phrase(20'000), SampleFormat::Pcm24); },
        [&] {
            CSession session({"Guide", "Dub", "Out"}, 48000);
            CScriptEngineOptions options;
            options.m_strAudioDirectory = strAudio;
            CScriptEngine engine(session, options);
            ASSERT_EQ(
                engine.Run(LinkScripts::SendFile(false, 0, strTake, 0, 0, 20'000, "0")).strError,
                "");
            const CScriptResult result = engine.Run(LinkScripts::Render(false));
            ExpectContains(result.strError, Reason(Refusal()));
            EXPECT_EQ(session.TrackAt(DocumentKind::Script, 0).m_Regions.at(0).m_strFile, strTake);
            EXPECT_TRUE(fs::is_empty(strAudio));
        });
}

INSTANTIATE_TEST_SUITE_P(RefusingFileSystem, CFullDisk, testing::Bool(),
                         [](auto const& info) { return info.param ? "ByLimit" : "ByDevice"; });

TEST(RefusingFileSystem, HostWithoutRoomForItsSegmentsIsRefusedInWords) {
    InAProcess([] {
        if (!MountSmall("/dev/shm", "size=256k")) GTEST_SKIP();
        const std::string strText = WhatOf([] {
            const CLinkServer server(1, true, [](std::string const&) { return CServerReply{}; });
        });
        ExpectContains(strText, "cannot create the shared-memory segment TAN_Host_1");
        EXPECT_TRUE(fs::is_empty("/dev/shm"));
    });
}

TEST(RefusingFileSystem, ReadOnlyDirectoryIsRefusedEverywhere) {
    InAProcess([] {
        const CTemporaryDirectory directory;
        const std::string strSession = directory.File("session.json");
        const std::string strBlock = directory.File("block");
        SaveSession(CSession({"Kept"}, 48000), strSession);
        ASSERT_EQ(SaveBlock(10, strBlock), sessionDone);
        fs::permissions(strSession, fs::perms(0444));
        fs::permissions(strBlock, fs::perms(0444));
        fs::permissions(directory.Path(), fs::perms(0555));
        {
            const COrdinaryUser user;
            const CScopedEnvironment temporary("TMPDIR", directory.Path());
            EXPECT_TRUE(CDiskPath().MakeTemporaryDirectory().Empty());
            EXPECT_TRUE(CFileName().MakeTemporaryFileName().Empty());
            EXPECT_TRUE(CDiskPath(directory.Path().c_str()).CreateUniqueSubDirectory("c").Empty());
            const CFileName fresh = NameOf(directory.File("fresh"));
            try {
                CFileIO().Open(&fresh, true, true);
                ADD_FAILURE() << "the directory is not read-only";
            } catch (CFileIOException& refusal) {
                EXPECT_EQ(refusal.GetStatus(), 3008u);
            }
            EXPECT_EQ(SaveBlock(10, strBlock), sessionFileFailed);
            EXPECT_EQ(LoadBlock(strBlock), sessionDone);
            ExpectContains(WhatOf([&] { SaveSession(LargeSession(), strSession); }),
                           Reason(EACCES));
            EXPECT_EQ(LoadSession(strSession).TrackAt(DocumentKind::Script, 0).m_strName, "Kept");
            CSession session({"Guide"}, 48000);
            ExpectContains(
                WhatOf([&] {
                    const CScriptEngine engine(session, {{}, directory.File("audio"), 1 << 20});
                }),
                Reason(EACCES));
            EXPECT_FALSE(NameOf(strBlock).RenameFile(directory.File("moved").c_str()));
            EXPECT_TRUE(fs::exists(strBlock));
        }
        fs::permissions(directory.Path(), fs::perms(0755));
    });
}

TEST(RefusingFileSystem, MissingTemporaryDirectoryIsToldInWords) {
    const CScopedEnvironment temporary("TMPDIR", "/nowhere/at/all");
    EXPECT_TRUE(CDiskPath().MakeTemporaryDirectory().Empty());
    EXPECT_TRUE(CFileName().MakeTemporaryFileName().Empty());
    CSession session({"Guide"}, 48000);
    ExpectContains(WhatOf([&] { const CScriptEngine engine(session); }), "/nowhere/at/all");
}

// Leaves the process as many descriptors as it has already.
void LeaveNoDescriptor() {
    const int nFree = dup(0);
    close(nFree);
    LimitTo(RLIMIT_NOFILE, static_cast<rlim_t>(nFree));
}

TEST(RefusingFileSystem, WithoutDescriptorsEverythingSaysSo) {
    if (kSanitizerNeedsDescriptors) GTEST_SKIP() << "the sanitizer needs descriptors itself";
    InAProcess([] {
        const CTemporaryDirectory directory;
        const CScopedEnvironment temporary("TMPDIR", directory.Path());
        const std::string strBlock = directory.File("block");
        const std::string strSession = directory.File("session.json");
        const std::string strTake = directory.File("take.wav");
        ASSERT_EQ(SaveBlock(10, strBlock), sessionDone);
        SaveSession(CSession({"Kept"}, 48000), strSession);
        WriteAudioFile(strTake, TestAudio::Phrase(1000));
        CSession session({"Guide"}, 48000);
        CScriptEngine engine(session);
        const CLinkServer server(1, true, [](std::string const&) { return CServerReply{}; });
        rlimit before{};
        getrlimit(RLIMIT_NOFILE, &before);
        LeaveNoDescriptor();

        CTANClientInterProcess client;
        EXPECT_EQ(client.GetCurrentTANHost(), -1);
        EXPECT_EQ(client.m_strLastError, "Error - Tavarin Pro is not running.");
        std::string strRequest = "x", strReply;
        EXPECT_EQ(client.SendTANMessage(1, strRequest, strReply, 100), EMFILE);
        EXPECT_TRUE(client.NeedsUpdate());
        std::string strMessage;
        EXPECT_FALSE(NameOf(strBlock).CanFileBeOpened(&strMessage));
        EXPECT_EQ(strMessage, "The file " + strBlock + " exists but cannot be opened. Error: 3008");
        EXPECT_FALSE(CDiskPath().MakeTemporaryDirectory().Empty());
        EXPECT_TRUE(CFileName().MakeTemporaryFileName().Empty());
        CFileName found;
        EXPECT_FALSE(CDiskPath(directory.Path().c_str()).FirstFile(&found, "wav"));
        EXPECT_EQ(SaveBlock(10, strBlock), sessionFileFailed);
        EXPECT_EQ(LoadBlock(strBlock), sessionFileFailed);
        ExpectContains(WhatOf([&] { SaveSession(session, strSession); }), Reason(EMFILE));
        ExpectContains(WhatOf([&] { LoadSession(strSession); }), strSession);
        const std::string strError =
            engine.Run(LinkScripts::SendFile(false, 0, strTake, 0, 0, 1000, "0")).strError;
        ExpectContains(strError, strTake);
        ExpectContains(strError, Reason(EMFILE));

        setrlimit(RLIMIT_NOFILE, &before);
        EXPECT_EQ(LoadBlock(strBlock), sessionDone);
        EXPECT_EQ(LoadSession(strSession).TrackAt(DocumentKind::Script, 0).m_strName, "Kept");
        EXPECT_EQ(client.SendTANMessage(1, strRequest, strReply, 5000), 0);
    });
}

// Makes directories below one another until a file name makes the path as long as wanted.
std::string PathOfLength(std::string strDirectory, std::size_t nLength) {
    constexpr std::size_t kDirectoryName = 200;
    while (strDirectory.size() + 1 + 255 < nLength) {
        strDirectory += "/" + std::string(kDirectoryName, 'd');
        fs::create_directory(strDirectory);
    }
    return strDirectory + "/" + std::string(nLength - strDirectory.size() - 5, 'f') + ".wav";
}

TEST(RefusingFileSystem, LongestPathThatTheSystemTakesWorksEverywhere) {
    const CTemporaryDirectory directory;
    const std::string strFile = PathOfLength(directory.Path(), kLongestPath);
    ASSERT_EQ(strFile.size(), kLongestPath);
    WriteAudioFile(directory.File("take.wav"), TestAudio::Phrase(1000));
    fs::rename(directory.File("take.wav"), strFile);
    const CFileName name = NameOf(strFile);
    EXPECT_EQ(name.GetFullPathString(), strFile);
    std::string strMessage;
    EXPECT_TRUE(NameOf(strFile).CanFileBeOpened(&strMessage)) << strMessage;

    CSession session({"Guide"}, 48000);
    CScriptEngine engine(session);
    EXPECT_EQ(engine.Run(LinkScripts::SendFile(false, 0, strFile, 0, 0, 1000, "0")).strError, "");
    EXPECT_EQ(engine.Run(LinkScripts::CheckDuplicate(false, 0, strFile, 0, 0, 1000)).strPrinted,
              "1\n");
    const std::string strSession = directory.File("session.json");
    SaveSession(session, strSession);
    EXPECT_EQ(LoadSession(strSession).TrackAt(DocumentKind::Script, 0).m_Regions.at(0).m_strFile,
              strFile);
}

TEST(RefusingFileSystem, PathThatIsOneByteTooLongIsRefusedInWords) {
    const CTemporaryDirectory directory;
    const std::string strFile = PathOfLength(directory.Path(), kLongestPath + 1);
    CFileName name = NameOf(strFile);
    EXPECT_FALSE(name.Exists());
    std::string strMessage;
    EXPECT_FALSE(name.CanFileBeOpened(&strMessage));
    EXPECT_EQ(strMessage, "The file " + strFile + " does not exists.");
    EXPECT_EQ(SaveBlock(10, strFile), sessionFileFailed);
    CSession session({"Guide"}, 48000);
    CScriptEngine engine(session);
    ExpectContains(engine.Run(LinkScripts::SendFile(false, 0, strFile, 0, 0, 1000, "0")).strError,
                   Reason(ENAMETOOLONG));
}

TEST(RefusingFileSystem, NamesOfAnyBytesWorkEverywhere) {
    const CTemporaryDirectory directory;
    const std::vector<std::string> names{"plain.wav",
                                         "Gr\xc3\xbc\xc3\x9f"
                                         "e.wav",
                                         "Gru\xcc\x88\xc3\x9f"
                                         "e.wav",
                                         "\xe6\x97\xa5\xe6\x9c\xac\xe8\xaa\x9e.wav",
                                         "\xf0\x9f\x8e\xa4\xf0\x9f\x8f\xbd.wav",
                                         "\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d.wav",
                                         "a\xe2\x80\x8b"
                                         "b.wav",
                                         "\xe2\x80\xae"
                                         "gnp.wav",
                                         "\xff\xfe.wav",
                                         "%s%n.wav",
                                         " leading and trailing .wav",
                                         "it's [1].wav",
                                         "back\\\\slash.wav",
                                         "\xc3\xa9" + std::string(200, 'x') + ".wav"};
    CSession session({"Guide"}, 48000);
    CScriptEngine engine(session);
    std::map<std::string, int> wanted;
    std::int64_t lPosition = 0;
    for (std::string const& strName : names) {
        const std::string strFile = directory.File(strName);
        WriteAudioFile(strFile, TestAudio::Phrase(100));
        ++wanted[strName];
        EXPECT_TRUE(NameOf(strFile).Exists()) << strName;
        const std::string strEscaped = EscapeBackstroke(strFile);
        EXPECT_EQ(engine.Run(LinkScripts::SendFile(false, 0, strEscaped, lPosition, 0, 100, "0"))
                      .strError,
                  "");
        EXPECT_EQ(session.TrackAt(DocumentKind::Script, 0).m_Regions.back().m_strFile, strFile);
        lPosition += 100;
    }
    CDiskPath path(directory.Path().c_str());
    CFileName found;
    for (bool fFound = path.FirstFile(&found, "wav"); fFound; fFound = path.NextFile(&found)) {
        --wanted[fs::path(found.GetFullPathString()).filename().string()];
    }
    for (auto const& [strName, nLeft] : wanted) EXPECT_EQ(nLeft, 0) << strName;
    const std::string strSession = directory.File("session.json");
    SaveSession(session, strSession);
    EXPECT_EQ(LoadSession(strSession).TrackAt(DocumentKind::Script, 0).m_Regions.size(),
              names.size());
}

TEST(RefusingFileSystem, CaptureThatVanishesBeforeItIsSentIsNamed) {
    const CTemporaryDirectory directory;
    const std::string strFile = directory.File("take.wav");
    WriteAudioFile(strFile, TestAudio::Phrase(1000));
    CSession session({"Guide"}, 48000);
    CScriptEngine engine(session);
    EXPECT_EQ(engine.Run(LinkScripts::CheckDuplicate(false, 0, strFile, 0, 0, 1000)).strPrinted,
              "0\n");
    fs::remove(strFile);
    const std::string strError =
        engine.Run(LinkScripts::SendFile(false, 0, strFile, 0, 0, 1000, "0")).strError;
    ExpectContains(strError, strFile);
    ExpectContains(strError, Reason(ENOENT));
    EXPECT_TRUE(session.TrackAt(DocumentKind::Script, 0).m_Regions.empty());
}

TEST(RefusingFileSystem, RegionWhoseFileVanishedStillAnswersEveryCommand) {
    const CTemporaryDirectory directory;
    const std::string strFile = directory.File("take.wav");
    WriteAudioFile(strFile, TestAudio::Phrase(1000));
    CSession session({"Guide"}, 48000);
    CScriptEngine engine(session);
    ASSERT_EQ(engine.Run(LinkScripts::SendFile(false, 0, strFile, 0, 0, 1000, "0")).strError, "");
    fs::remove(strFile);
    for (std::string const& strScript : {LinkScripts::Render(false), LinkScripts::Export(false)}) {
        ExpectContains(engine.Run(strScript).strError, strFile);
    }
    EXPECT_EQ(session.TrackAt(DocumentKind::Script, 0).m_Regions.size(), 1u);
}

}  // namespace
