#include "host/SessionFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/TemporaryDirectory.h"

namespace fs = std::filesystem;

namespace {

class CSessionFileTest : public testing::Test {
protected:
    CSessionFileTest() : m_strPath(m_Directory.Path() + "/session.json") {
        CRegion region;
        region.m_strFile = "/audio/Grüße \"eins\".wav";
        region.m_nFileRate = 44100;
        region.m_lFilePosition = -500;
        region.m_lStart = 10;
        region.m_lEnd = 2000;
        region.m_Channels = {0, 2};
        CSessionId const idTrack = m_Session.TrackAt(DocumentKind::AudioSuite, 1).m_idTrack;
        CSessionId const idRegion = m_Session.AddRegion(DocumentKind::AudioSuite, idTrack, region);
        m_Session.AddMarkerArea(
            DocumentKind::AudioSuite,
            m_Session.Track(DocumentKind::AudioSuite, idTrack).m_MarkerTracks[0].m_idMarkerTrack, 5,
            9);
        CProcess process;
        process.m_Kind = ProcessKind::Doubler;
        process.m_Inputs = {{1, idTrack, 0, 100}};
        process.m_idOutputTrack = idTrack;
        process.m_idRegion = idRegion;
        m_Session.AddProcess(DocumentKind::AudioSuite, process);
        m_Session.MoveDisplayToPosition(DocumentKind::Script, 1234.5);
        m_Session.SetLinkSMPTEOffset(3600.25);
    }

    std::string Text() const {
        std::ifstream file(m_strPath, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    void Write(std::string const& strText) const {
        std::ofstream(m_strPath, std::ios::binary) << strText;
    }

    std::string LoadError() const {
        try {
            LoadSession(m_strPath);
        } catch (CSessionFileError const& error) {
            return error.what();
        }
        return {};
    }

    CTemporaryDirectory m_Directory;
    std::string m_strPath;
    CSession m_Session{{"One", "Two"}, 48000};
};

}  // namespace

TEST_F(CSessionFileTest, EverythingComesBack) {
    SaveSession(m_Session, m_strPath);
    CSession const loaded = LoadSession(m_strPath);
    std::string const strFirst = Text();
    SaveSession(loaded, m_strPath);
    EXPECT_EQ(Text(), strFirst);

    CDocument const& document = loaded.Document(DocumentKind::AudioSuite);
    CRegion const& region = document.m_Tracks[1].m_Regions.at(0);
    EXPECT_EQ(region.m_strFile, "/audio/Grüße \"eins\".wav");
    EXPECT_EQ(region.m_lFilePosition, -500);
    EXPECT_EQ(region.m_Channels, (std::vector<int>{0, 2}));
    EXPECT_EQ(region.m_nFileRate, 44100);
    EXPECT_EQ(document.m_Tracks[1].m_MarkerTracks[0].m_Areas.at(0).m_lEnd, 9);
    EXPECT_EQ(document.m_Processes.at(0).m_Kind, ProcessKind::Doubler);
    EXPECT_EQ(document.m_Processes.at(0).m_idRegion, region.m_idRegion);
    EXPECT_EQ(document.m_idSelectedRegion, region.m_idRegion);
    EXPECT_EQ(loaded.Document(DocumentKind::Script).m_dDisplayPosition, 1234.5);
    EXPECT_EQ(loaded.LinkSMPTEOffset(), 3600.25);
    EXPECT_EQ(loaded.UpdateCount(), m_Session.UpdateCount());
    EXPECT_EQ(loaded.Data().m_idNext, m_Session.Data().m_idNext);
}

TEST_F(CSessionFileTest, FileNamesOfAnyBytesComeBack) {
    CRegion region;
    region.m_strFile = "/audio/\xff\xfe.wav";
    region.m_nFileRate = 48000;
    region.m_lEnd = 1;
    region.m_Channels = {0};
    m_Session.AddRegion(DocumentKind::Script, m_Session.TrackAt(DocumentKind::Script, 0).m_idTrack,
                        region);
    SaveSession(m_Session, m_strPath);
    EXPECT_EQ(
        LoadSession(m_strPath).Document(DocumentKind::Script).m_Tracks[0].m_Regions[0].m_strFile,
        region.m_strFile);
}

TEST_F(CSessionFileTest, BracketsInNamesNestNothing) {
    std::string const strName = std::string(40, '[') + "\\\"" + std::string(40, '{');
    m_Session.AddTrack(DocumentKind::Script, strName);
    SaveSession(m_Session, m_strPath);
    EXPECT_EQ(LoadSession(m_strPath).TrackAt(DocumentKind::Script, 2).m_strName, strName);
}

TEST_F(CSessionFileTest, FailuresNameTheFileAndTheReason) {
    EXPECT_NE(LoadError().find(m_strPath), std::string::npos);
    Write("");
    EXPECT_NE(LoadError().find(m_strPath), std::string::npos);
    Write("{}");
    EXPECT_NE(LoadError().find("\"format\" is missing"), std::string::npos);
    Write("[1, 2");
    EXPECT_NE(LoadError().find("no JSON from byte"), std::string::npos);
    Write(R"({"format": "other"})");
    EXPECT_NE(LoadError().find("not a session of this host"), std::string::npos);
    Write(R"({"format": "tavarin-host-session", "version": 2})");
    EXPECT_NE(LoadError().find("version 2"), std::string::npos);
    Write(std::string(32, '[') + "0");
    EXPECT_NE(LoadError().find("no JSON from byte"), std::string::npos);
    Write(std::string(33, '[') + "0");
    EXPECT_NE(LoadError().find("nested too deeply"), std::string::npos);
    Write(std::string(1 << 20, '['));
    EXPECT_NE(LoadError().find("nested too deeply"), std::string::npos);
    fs::remove(m_strPath);
    fs::create_directory(m_strPath);
    EXPECT_NE(LoadError().find("not a regular file"), std::string::npos);
}

TEST_F(CSessionFileTest, APipeIsNotWaitedFor) {
    ASSERT_EQ(mkfifo(m_strPath.c_str(), 0600), 0);
    EXPECT_NE(LoadError().find("not a regular file"), std::string::npos);
}

TEST_F(CSessionFileTest, EveryDamagedValueIsRefusedOrHarmless) {
    SaveSession(m_Session, m_strPath);
    std::string const strGood = Text();
    int nRefused = 0;
    for (std::size_t nColon = strGood.find(':'); nColon != std::string::npos;
         nColon = strGood.find(':', nColon + 1)) {
        std::size_t const nEnd = strGood.find_first_of(",\n", nColon);
        for (char const* pszValue : {"null", "\"x\"", "[]", "{}", "-7", "1e999", "1.5",
                                     "99999999999999999999", "9223372036854775807"}) {
            Write(strGood.substr(0, nColon + 1) + pszValue + strGood.substr(nEnd));
            nRefused += LoadError().empty() ? 0 : 1;
        }
    }
    EXPECT_GT(nRefused, 300);
}

TEST_F(CSessionFileTest, ACutFileIsRefused) {
    SaveSession(m_Session, m_strPath);
    std::string const strGood = Text();
    for (std::size_t nLength = 0; nLength + 2 < strGood.size(); nLength += 17) {
        Write(strGood.substr(0, nLength));
        EXPECT_NE(LoadError(), "") << nLength;
    }
}

TEST_F(CSessionFileTest, AFailedSaveKeepsTheOldFile) {
    SaveSession(m_Session, m_strPath);
    std::string const strGood = Text();
    fs::create_directory(m_Directory.Path() + "/directory");
    EXPECT_THROW(SaveSession(m_Session, m_Directory.Path() + "/directory"), CSessionFileError);
    EXPECT_THROW(SaveSession(m_Session, m_Directory.Path() + "/none/session.json"),
                 CSessionFileError);
    EXPECT_EQ(Text(), strGood);
    EXPECT_EQ(std::distance(fs::directory_iterator(m_Directory.Path()), {}), 2);
}

TEST_F(CSessionFileTest, SavingKeepsTheFilesPermissions) {
    SaveSession(m_Session, m_strPath);
    fs::permissions(m_strPath, fs::perms::owner_read | fs::perms::owner_write);
    SaveSession(m_Session, m_strPath);
    EXPECT_EQ(fs::status(m_strPath).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}
