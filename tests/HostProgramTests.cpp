// The link client and the command-line tool against the program tavarin-host, as a user runs them.

#include <sys/stat.h>

#include "FileIO/FileName.h"
#include "HostPairs.h"
#include "HostProgramFixture.h"

namespace {

TEST_F(HostProgram, ServesEveryCommandOfTheClient) {
    StartHost();
    std::vector<std::string> tracks;
    EXPECT_EQ(m_client.ListTracksWithTimeout(true, &tracks, 1000), 0);
    EXPECT_EQ(tracks, (std::vector<std::string>{"Guide", "Dub", "Out", "Double"}));
    EXPECT_EQ(m_client.GetTANProcessID(), m_host->Id());

    CFileName guide(Guide().c_str());
    CFileName dub(Dub().c_str());
    EXPECT_FALSE(m_client.CheckDuplicateRegion(true, 0, &guide, 1000, 0, kFrames));
    EXPECT_EQ(m_client.SendFile(true, 0, &guide, 1000, 0, kFrames, 0), 0);
    EXPECT_EQ(m_client.m_strLastError, "");
    EXPECT_TRUE(m_client.CheckDuplicateRegion(true, 0, &guide, 1000, 0, kFrames));
    EXPECT_FALSE(m_client.CheckDuplicateRegion(true, 0, &guide, 1001, 0, kFrames));
    EXPECT_EQ(m_client.SendFile(true, 1, &dub, 3000, 0, kFrames, 1), 0);
    const std::int32_t nCount = m_client.GetUpdateCount();
    EXPECT_GT(nCount, 0);

    EXPECT_TRUE(m_client.CreateAPT(true, 0, 1000, 1000 + kFrames, 1, 3000, 3000 + kFrames, 2));
    EXPECT_EQ(m_client.m_strLastError, "");
    std::int64_t lStart = 0, lEnd = 0;
    EXPECT_TRUE(m_client.RenderSelectedRegion(true, kRate, &lStart, &lEnd));
    EXPECT_EQ(m_client.m_strLastError, "");
    EXPECT_EQ(lStart, 1000);
    EXPECT_EQ(lEnd, 1000 + kFrames);

    CFileName exported;
    EXPECT_TRUE(m_client.ExportSelectedRegion(true, kRate, &exported));
    EXPECT_GT(exported.GetSize(), static_cast<std::uint64_t>(kFrames));

    EXPECT_TRUE(m_client.CreateDoubler(true, 0, 1000, 1000 + kFrames, 1, 3));
    EXPECT_EQ(m_client.m_strLastError, "");
    m_client.ClearTrack(true, 3);
    EXPECT_EQ(m_client.m_strLastError, "");
    EXPECT_EQ(m_client.GetLinkSMPTEOffset(true), 0.0);
    EXPECT_GT(m_client.GetUpdateCount(), nCount);
}

TEST_F(HostProgram, MissingFileIsAnErrorThatNamesIt) {
    StartHost();
    CFileName missing("/nowhere/at all.wav");
    EXPECT_EQ(m_client.SendFile(false, 0, &missing, 0, 0, 100, 0), 0);
    EXPECT_NE(m_client.m_strLastError.find("/nowhere/at all.wav"), std::string::npos);
}

TEST_F(HostProgram, QuoteInAFileNameStaysInTheSandbox) {
    StartHost();
    const std::string strProof = m_directory.File("proof");
    CFileName hostile(
        ("x\", true, false, 0,0,1) os.execute(\"touch " + strProof + "\") --").c_str());
    m_client.SendFile(false, 0, &hostile, 0, 0, 100, 0);
    EXPECT_NE(m_client.m_strLastError, "");
    EXPECT_FALSE(fs::exists(strProof));
}

TEST_F(HostProgram, UpdateCounterOfTheDirectoryFollowsTheSession) {
    StartHost();
    m_client.NeedsUpdate();
    CFileName guide(Guide().c_str());
    m_client.SendFile(false, 0, &guide, 0, 0, kFrames, 0);
    EXPECT_TRUE(m_client.NeedsUpdate());
    EXPECT_EQ(m_client.m_nUpdateCount, m_client.GetUpdateCount());
}

TEST_F(HostProgram, UpdateCounterTellsARestart) {
    for (int nStart = 0; nStart < 3; ++nStart) {
        StartHost();
        EXPECT_TRUE(m_client.NeedsUpdate());
        EXPECT_EQ(m_client.m_nUpdateCount, m_client.GetUpdateCount());
        EXPECT_GT(m_client.m_nUpdateCount, 0);
        EXPECT_FALSE(m_client.NeedsUpdate());
        EXPECT_EQ(StopHost(), 0);
    }
}

TEST_F(HostProgram, UpdateCounterOfALoadedSessionTellsARestart) {
    const std::string strSession = m_directory.File("session.json");
    StartHost({"--session", strSession});
    m_client.NeedsUpdate();
    EXPECT_EQ(StopHost(), 0);
    StartHost({"--session", strSession});
    EXPECT_TRUE(m_client.NeedsUpdate());
}

TEST_F(HostProgram, StopsCleanlyOnEitherSignalAndWhenItsTerminalIsClosed) {
    for (const int nSignal : {SIGINT, SIGTERM, SIGHUP}) {
        StartHost();
        const std::string strAudio = AudioDirectory();
        EXPECT_TRUE(fs::is_directory(strAudio));
        EXPECT_EQ(StopHost(nSignal), 0);
        EXPECT_FALSE(fs::exists(strAudio));
        EXPECT_EQ(m_client.GetCurrentIdFromMainDirectory(), -1);
        EXPECT_FALSE(fs::exists("/dev/shm/TAN_Host_1"));
        EXPECT_FALSE(fs::exists("/dev/shm/__KEL_TAN_INTERPROCESS_DIR6__"));
    }
}

TEST_F(HostProgram, OutlivesItsTerminalWhenItWasStartedForThat) {
    StartHost({}, {"/bin/sh", "-c", "trap '' HUP; exec \"$0\" \"$@\""});
    m_host->Signal(SIGHUP);
    usleep(300'000);
    EXPECT_EQ(m_client.GetTANProcessID(), m_host->Id());
    EXPECT_EQ(StopHost(), 0);
}

TEST_F(HostProgram, GoesOnWhenNobodyReadsWhatItShows) {
    const std::string strPipe = m_directory.File("host.out");
    ASSERT_EQ(mkfifo(strPipe.c_str(), 0600), 0);
    const int nReader = open(strPipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    StartHost({"--verbose"});
    close(nReader);
    for (int nRequest = 0; nRequest < 3; ++nRequest) {
        std::vector<std::string> tracks;
        m_client.ListTracksWithTimeout(false, &tracks, 5000);
        EXPECT_EQ(tracks.size(), 4u);
    }
    EXPECT_EQ(StopHost(), 0);
}

// Where a session can be kept, or not, as the test likes.
class CSessionPlace {
public:
    explicit CSessionPlace(CTemporaryDirectory const& directory)
        : m_strPath(directory.MakeDirectory("place")) {}

    std::string File(std::string const& strName) const { return m_strPath + "/" + strName; }
    void Close() const { fs::rename(m_strPath, m_strPath + " elsewhere"); }
    void Open() const { fs::rename(m_strPath + " elsewhere", m_strPath); }

private:
    std::string m_strPath;
};

TEST_F(HostProgram, SessionThatCannotBeSavedIsToldOnceAndSavedWhenItCan) {
    const CSessionPlace place(m_directory);
    StartHost({"--session", place.File("session.json"), "--audio", m_directory.File("audio"),
               "--timeline", m_directory.File("timeline.svg")});
    AwaitReady();
    place.Close();
    CFileName guide(Guide().c_str());
    EXPECT_EQ(m_client.SendFile(false, 0, &guide, 0, 0, kFrames, 0), 0);
    ASSERT_TRUE(WaitForError("cannot save the session"));
    EXPECT_EQ(m_client.SendFile(false, 1, &guide, 0, 0, kFrames, 0), 0);
    usleep(1'500'000);
    EXPECT_EQ(CountErrors("cannot save the session"), 1);
    EXPECT_NE(m_directory.Read("timeline.svg").find("guide.wav"), std::string::npos);
    place.Open();
    ASSERT_TRUE(WaitForError("is kept again"));
    EXPECT_EQ(CountErrors("tavarin-host:"), 2);
    const json session = json::parse(m_directory.Read("place/session.json"));
    EXPECT_EQ(session["documents"]["script"]["tracks"][1]["regions"].size(), 1u);
    EXPECT_EQ(StopHost(), 0);
}

TEST_F(HostProgram, SessionThatIsNotSavedAtTheEndIsTold) {
    const CSessionPlace place(m_directory);
    const std::string strSession = place.File("session.json");
    StartHost({"--session", strSession, "--audio", m_directory.File("audio")});
    AwaitReady();
    place.Close();
    CFileName guide(Guide().c_str());
    EXPECT_EQ(m_client.SendFile(false, 0, &guide, 0, 0, kFrames, 0), 0);
    EXPECT_EQ(StopHost(), 1);
    EXPECT_NE(
        m_directory.Read("host.err").find("\"" + strSession + "\" lacks what has changed since"),
        std::string::npos)
        << m_directory.Read("host.err");
    EXPECT_NE(m_directory.Read("host.out").find("of guide.wav"), std::string::npos);
    EXPECT_FALSE(fs::exists("/dev/shm/TAN_Host_1"));
}

TEST_F(HostProgram, SessionThatCannotBeSavedAtTheStartRefusesIt) {
    CChildProcess host({TAVARIN_HOST_PROGRAM, "--session", m_directory.File("nowhere/s.json"),
                        "--audio", m_directory.File("audio")},
                       m_directory.File("1.out"), m_directory.File("1.err"));
    EXPECT_EQ(host.Wait(), 2);
    EXPECT_NE(m_directory.Read("1.err").find("cannot save the session"), std::string::npos);
}

TEST_F(HostProgram, DirectoryOfASessionIsNotMadeUp) {
    CChildProcess host({TAVARIN_HOST_PROGRAM, "--session", m_directory.File("nowhere/s.json")},
                       m_directory.File("1.out"), m_directory.File("1.err"));
    EXPECT_EQ(host.Wait(), 2);
    EXPECT_NE(m_directory.Read("1.err").find("is not there"), std::string::npos);
    EXPECT_FALSE(m_directory.Has("nowhere"));
}

TEST_F(HostProgram, LoadedSessionTellsWhatItLacksAndWhatItOverrides) {
    const std::string strSession = m_directory.File("session.json");
    StartHost({"--session", strSession});
    ASSERT_EQ(Tool({"link", "capture", Guide(), "--track", "1", "--position", "0"}), 0);
    ASSERT_EQ(StopHost(), 0);
    EXPECT_EQ(m_directory.Read("host.err"), "");
    fs::remove(Guide());
    StartHost({"--session", strSession});
    AwaitReady();
    EXPECT_EQ(m_directory.Read("host.err"), "tavarin-host: --tracks is not used: \"" + strSession +
                                                "\" has its own\n"
                                                "tavarin-host: --sample-rate is not used: \"" +
                                                strSession +
                                                "\" has its own\n"
                                                "tavarin-host: the audio file \"" +
                                                Guide() +
                                                "\" of a region on track \"Dub\" is missing\n");
}

TEST_F(HostProgram, EveryCaptureThatWasTakenIsSavedWhenItStops) {
    const std::string strSession = m_directory.File("session.json");
    for (int nRound = 0; nRound < 5; ++nRound) {
        fs::remove(strSession);
        StartHost({"--session", strSession});
        CFileName guide(Guide().c_str());
        std::size_t nTaken = 0;
        for (int nCapture = 0; nCapture < 400; ++nCapture) {
            if (nCapture == 20) m_host->Signal(SIGTERM);
            if (m_client.SendFile(false, 0, &guide, nCapture, 0, kFrames, 0) != 0) break;
            nTaken += m_client.m_strLastError.empty();
        }
        EXPECT_EQ(m_host->Wait(), 0);
        const json session = json::parse(m_directory.Read("session.json"));
        EXPECT_EQ(session["documents"]["script"]["tracks"][0]["regions"].size(), nTaken);
    }
}

TEST_F(HostProgram, SaysAtItsEndWhatItHolds) {
    StartHost();
    ASSERT_EQ(Tool({"link", "capture", Guide(), "--track", "1", "--position", "100"}), 0);
    ASSERT_EQ(Tool({"link", "doubler", "--input", "1", "--output", "3"}), 0);
    ASSERT_EQ(StopHost(), 0);
    const std::string strOutput = m_directory.Read("host.out");
    EXPECT_NE(strOutput.find("Script document\n"
                             "  track Guide\n"
                             "  track Dub\n"
                             "    region from 100 to 24100 (3 s) of guide.wav\n"),
              std::string::npos)
        << strOutput;
    EXPECT_NE(strOutput.find("  Doubler process: Dub in, Double out\n"), std::string::npos);
    EXPECT_EQ(strOutput.find("AudioSuite document"), std::string::npos);
}

TEST_F(HostProgram, SecondHostIsRefused) {
    StartHost();
    CChildProcess second({TAVARIN_HOST_PROGRAM, "--id", "2"}, m_directory.File("2.out"),
                         m_directory.File("2.err"));
    EXPECT_EQ(second.Wait(), 1);
    EXPECT_NE(m_directory.Read("2.err").find("already running"), std::string::npos);
    EXPECT_EQ(m_client.GetTANProcessID(), m_host->Id());
}

TEST_F(HostProgram, OfTwoAtTheSameMomentOneRuns) {
    ExpectOneHostOfEachPair(TAVARIN_HOST_PROGRAM, 10);
}

TEST_F(HostProgram, WithoutASessionCommandsSayWhatToDo) {
    StartHost({"--no-session"});
    EXPECT_EQ(Tool({"link", "status"}), 1);
    EXPECT_EQ(Errors(),
              "tavarin: No Tavarin Pro session has been selected.\n"
              "         Select a session in Tavarin Pro.\n");
}

TEST_F(HostProgram, SessionAndItsPictureAreKept) {
    const std::string strSession = m_directory.File("session.json");
    std::vector<std::string> arguments{"--session", strSession, "--timeline",
                                       m_directory.File("timeline.svg")};
    StartHost(arguments);
    ASSERT_EQ(
        Tool({"link", "--audiosuite", "capture", Guide(), "--track", "0", "--position", "8000"}),
        0);
    ASSERT_EQ(Tool({"link", "--audiosuite", "doubler", "--input", "0", "--output", "3"}), 0);
    ASSERT_EQ(StopHost(), 0);
    EXPECT_NE(m_directory.Read("timeline.svg").find("guide.wav"), std::string::npos);

    arguments.emplace_back("--force");
    StartHost(arguments);
    ASSERT_EQ(Tool({"link", "--audiosuite", "--json", "export"}), 0);
    EXPECT_TRUE(fs::exists(OutputAsJson()["file"].get<std::string>()));
}

TEST_F(HostProgram, PictureOfSomebodyElseIsNotReplacedUnlessItIsTold) {
    const std::string strPicture = m_directory.Write("timeline.svg", "mine");
    CChildProcess refused({TAVARIN_HOST_PROGRAM, "--timeline", strPicture},
                          m_directory.File("1.out"), m_directory.File("1.err"));
    EXPECT_EQ(refused.Wait(), 2);
    EXPECT_EQ(m_directory.Read("1.err"),
              "tavarin-host: \"" + strPicture + "\" is there already; say --force to replace it\n");
    EXPECT_EQ(m_directory.Read("timeline.svg"), "mine");
    StartHost({"--timeline", strPicture, "--force"});
    AwaitReady();
    EXPECT_NE(m_directory.Read("timeline.svg").find("<svg"), std::string::npos);
}

TEST_F(HostProgram, SessionFilesThatAreNoneAreToldInOwnWords) {
    for (const char* szText : {"", "{", "[]", "{}", R"({"format": 5})",
                               R"({"format": "tavarin-host session", "version": "x"})"}) {
        CChildProcess host({TAVARIN_HOST_PROGRAM, "--session", m_directory.Write("s.json", szText)},
                           m_directory.File("1.out"), m_directory.File("1.err"));
        EXPECT_EQ(host.Wait(), 2);
        const std::string strError = m_directory.Read("1.err");
        EXPECT_NE(strError.find("cannot load the session"), std::string::npos) << strError;
        EXPECT_EQ(strError.find("exception"), std::string::npos) << strError;
    }
}

TEST_F(HostProgram, FailuresAreToldInWordsOfTheUser) {
    const std::string strText = m_directory.Write("text.wav", "no sound");
    const std::vector<std::vector<std::string>> failures{
        {"link", "capture", strText, "--track", "0", "--position", "0"},
        {"link", "capture", m_directory.File("none.wav"), "--track", "0", "--position", "0"},
        {"link", "--timeout", "0", "status"},
        {"link", "rescue", "--id", "-1"},
        {"link", "export", "-o", m_directory.File("none/x.wav")},
        {"link", "run", m_directory.Path()},
        {"link", "status"},
        {"check-host", "--timeout", "1e308"},
        {"timecode", "1e308"},
        {"block", "pack", strText, "-o", "-"},
        {"block", "dump", strText}};
    for (auto const& arguments : failures) {
        EXPECT_NE(Tool(arguments), 0);
        const std::string strSaid = Errors();
        std::size_t nDigits = 0, nMost = 0;
        for (const char c : strSaid) {
            nDigits = c >= '0' && c <= '9' ? nDigits + 1 : 0;
            nMost = std::max(nMost, nDigits);
        }
        EXPECT_LT(nMost, 20u) << strSaid;
        for (const char* szBad : {"..", ". .", "exception", "System error"})
            EXPECT_EQ(strSaid.find(szBad), std::string::npos) << strSaid;
    }
    CChildProcess host({TAVARIN_HOST_PROGRAM, "--id", "0"}, m_directory.File("1.out"),
                       m_directory.File("1.err"));
    EXPECT_EQ(host.Wait(), 2);
    EXPECT_LT(m_directory.Read("1.err").size(), 200u) << m_directory.Read("1.err");
}

TEST_F(HostProgram, OneScriptCannotStopTheNext) {
    StartHost();
    const std::string strLoop = m_directory.Write("error.lua", "print('first') error('oops')");
    EXPECT_EQ(Tool({"link", "run", strLoop}), 1);
    EXPECT_EQ(Output(), "first\n");
    EXPECT_NE(Errors().find("oops"), std::string::npos);
    const std::string strGood = m_directory.Write("good.lua", "print(1 + 1)");
    EXPECT_EQ(Tool({"link", "run", strGood}), 0);
    EXPECT_EQ(Output(), "2\n");
}

// One step of the interpreter each, in which no hook is called.
const char* const scriptsThatNothingStops[] = {
    "('a'):rep(100000):find(('.-'):rep(20) .. 'b')",
    "table.concat(setmetatable({}, {__index = table.concat}), '', 1, 1 << 62)",
    "table.move(setmetatable({}, {__index = rawlen, __newindex = rawlen}), 1, 1 << 62, 2)",
    "('('):rep(20000000):find('%b()')",
};

TEST_F(HostProgram, ScriptThatNothingStopsEndsTheHostWithAWordAndTheSessionSaved) {
    const std::string strSession = m_directory.File("session.json");
    double dPosition = 0;
    for (const std::string strScript : scriptsThatNothingStops) {
        StartHost({"--session", strSession, "--script-time", "0.1"});
        AwaitReady();
        dPosition += 1000;
        std::string strReply;
        std::string strRequest = "SelectScriptDocument() MoveDisplayToPosition(" +
                                 std::to_string(dPosition) + "); " + strScript;
        m_client.SendTANMessage(1, strRequest, strReply, -1);
        EXPECT_NE(m_client.m_strLastError.find("ended before it had answered"), std::string::npos);
        EXPECT_EQ(m_host->Wait(), 1);
        EXPECT_EQ(CountErrors("one step that nothing can stop"), 1) << strScript;
        EXPECT_EQ(
            json::parse(m_directory.Read("session.json"))["documents"]["script"]["displayPosition"],
            dPosition)
            << strScript;
    }
    StartHost({"--session", strSession});
    AwaitReady();
    EXPECT_GT(m_client.GetUpdateCount(), 0);
}

TEST_F(HostProgram, HostWithAScriptThatNothingStopsLeavesNoPrivateDirectory) {
    StartHost({"--script-time", "0.1"});
    const std::string strAudio = AudioDirectory();
    EXPECT_TRUE(fs::is_directory(strAudio));
    std::string strRequest = scriptsThatNothingStops[0], strReply;
    m_client.SendTANMessage(1, strRequest, strReply, -1);
    EXPECT_EQ(m_host->Wait(), 1);
    EXPECT_FALSE(fs::exists(strAudio));
}

TEST_F(HostProgram, ScriptThatRunsTooLongIsStoppedAndTheHostGoesOn) {
    StartHost({"--script-time", "0.1"});
    std::string strRequest = "while true do end", strReply;
    EXPECT_EQ(m_client.SendTANMessage(1, strRequest, strReply, -1), 0);
    EXPECT_EQ(m_client.m_strLastError, "script:1: stopped: the script ran longer than 100 ms");
    EXPECT_GT(m_client.GetUpdateCount(), 0);
}

TEST_F(HostProgram, ClientThatGivesUpALongProcessFindsAHealthyHost) {
    constexpr int kLong = 600 * kRate;
    WriteTestTone(m_directory.File("long.wav"), kRate, kLong);
    StartHost();
    CFileName take(m_directory.File("long.wav").c_str());
    ASSERT_EQ(m_client.SendFile(true, 0, &take, 0, 0, kLong, 0), 0);
    std::string strProcess =
        "SelectAudioSuiteDocument()\n"
        "Input = { IOType=1, Track=GetTrackID(0), Start=0, End=" +
        std::to_string(kLong) +
        " }\n"
        "CreateProcess(\"Doubler\", \"PT\", { Input }, { { Track=GetTrackID(3) } })\n"
        "print(\"the first client's\")";
    std::string strReply;
    EXPECT_EQ(m_client.SendTANMessage(1, strProcess, strReply, 5), 121);
    EXPECT_EQ(strReply, "");

    // Asked while the host is at work: the answer is this question's, and comes after the work.
    std::string strQuestion = "SelectAudioSuiteDocument() print(GetRegionCount(GetTrackID(3)))";
    EXPECT_EQ(m_client.SendTANMessage(1, strQuestion, strReply, -1), 0);
    EXPECT_EQ(m_client.m_strLastError, "");
    EXPECT_EQ(strReply, "1\n");
    EXPECT_EQ(m_client.GetTANProcessID(), m_host->Id());
}

TEST_F(HostProgram, ToolShowsStatusAndTracks) {
    StartHost();
    EXPECT_EQ(Tool({"link", "status", "--json"}), 0);
    EXPECT_EQ(OutputAsJson()["host"], 1);
    EXPECT_EQ(OutputAsJson()["process"], m_host->Id());
    EXPECT_EQ(OutputAsJson()["session"], (json{{"document", "script"},
                                               {"sample_rate", kRate},
                                               {"tracks", {"Guide", "Dub", "Out", "Double"}},
                                               {"regions", 0}}));
    EXPECT_EQ(Tool({"link", "status"}), 0);
    EXPECT_NE(
        Output().find(".\nThe session has 4 tracks, 0 regions and a sample rate of 8000 Hz.\n"),
        std::string::npos)
        << Output();
    EXPECT_EQ(Tool({"link", "tracks"}), 0);
    EXPECT_EQ(Output(), "0  Guide\n1  Dub\n2  Out\n3  Double\n");
    EXPECT_EQ(Tool({"link", "offset"}), 0);
    EXPECT_EQ(Output(), "0.0\n");
    EXPECT_EQ(Tool({"link", "print", "hello"}), 0);
}

TEST_F(HostProgram, ToolRunsTheWholeJourney) {
    StartHost();
    const std::vector<std::string> link{"link", "--audiosuite"};
    const auto run = [&](std::vector<std::string> command) {
        command.insert(command.begin(), link.begin(), link.end());
        return Tool(command);
    };
    EXPECT_EQ(run({"capture", Guide(), "--track", "0", "--position", "8000"}), 0) << Errors();
    EXPECT_EQ(run({"capture", Dub(), "--track", "1", "--position", "9000"}), 0) << Errors();
    EXPECT_EQ(run({"capture", Dub(), "--track", "1", "--position", "9000"}), 1);
    EXPECT_EQ(Errors(),
              "tavarin: Same audio captured previously.\n"
              "         This capture has been cancelled\n");
    EXPECT_EQ(run({"apt"}), 0) << Errors();
    EXPECT_EQ(run({"render", "--rate", "44100"}), 0);
    EXPECT_NE(Errors().find("Warning - Session Sample Rate is: 44100"), std::string::npos);
    EXPECT_EQ(Output(), "Start: 8000 End: 32000 Sample Rate: 8000\n");
    const std::string strExported = m_directory.File("aligned.wav");
    EXPECT_EQ(run({"export", "-o", strExported}), 0) << Errors();
    EXPECT_GT(fs::file_size(strExported), static_cast<std::uintmax_t>(kFrames));
    EXPECT_EQ(Output(), "File: " + strExported + " (24000 samples, 3.00 s)\n");
    EXPECT_EQ(run({"doubler"}), 2) << "no default could be right: a dub may lie there";
    EXPECT_EQ(run({"doubler", "--output", "3"}), 0) << Errors();
    EXPECT_EQ(run({"clear", "3"}), 0);
    EXPECT_EQ(run({"doubler", "--input", "3", "--output", "2"}), 1);
    EXPECT_NE(Errors().find("holds no region"), std::string::npos);
}

TEST_F(HostProgram, FileOfAnotherSampleRateIsToldAndHeardAtItsOwnPitch) {
    StartHost({"--timeline", m_directory.File("timeline.svg")});
    const std::string strSpeech = m_directory.File("speech.wav");
    WriteTestTone(strSpeech, 2 * kRate, 4 * kRate);
    ASSERT_EQ(Tool({"link", "capture", strSpeech, "--track", "0", "--position", "0"}), 0);
    EXPECT_EQ(Errors(), "tavarin: \"" + strSpeech +
                            "\" has a sample rate of 16000 Hz, the session has 8000 Hz: the host "
                            "has to resample it\n");
    ASSERT_EQ(Tool({"link", "export", "--json"}), 0);
    EXPECT_EQ(OutputAsJson()["frames"], 2 * kRate) << "two seconds, as in the file";
    EXPECT_EQ(OutputAsJson()["sample_rate"], kRate);
    EXPECT_TRUE(WaitForError("has 16000 Hz, the session has 8000 Hz; it is resampled"));
    EXPECT_EQ(StopHost(), 0);
    EXPECT_EQ(CountErrors("it is resampled"), 1);
    EXPECT_NE(m_directory.Read("host.out")
                  .find("region from 0 to 16000 (2 s) of speech.wav, resampled from 16000 Hz\n"),
              std::string::npos)
        << m_directory.Read("host.out");
    EXPECT_NE(m_directory.Read("timeline.svg").find("(16000 Hz)"), std::string::npos);
}

TEST_F(HostProgram, ExportReplacesNothingUnlessItIsTold) {
    StartHost();
    ASSERT_EQ(Tool({"link", "capture", Guide(), "--track", "0", "--position", "0"}), 0);
    const std::string strThere = m_directory.Write("there.wav", "mine");
    EXPECT_EQ(Tool({"link", "export", "-o", strThere}), 2);
    EXPECT_NE(Errors().find("is there already"), std::string::npos) << Errors();
    EXPECT_EQ(m_directory.Read("there.wav"), "mine");
    EXPECT_EQ(Tool({"link", "export", "-o", strThere, "--force"}), 0) << Errors();
    EXPECT_EQ(ReadSoundFile(strThere).samples.size(), std::size_t{kFrames});
}

TEST_F(HostProgram, ExportWritesTheFormatThatTheNameSays) {
    StartHost();
    ASSERT_EQ(Tool({"link", "capture", Guide(), "--track", "0", "--position", "0"}), 0);
    const struct {
        const char* szName;
        const char* szMagic;
    } formats[] = {{"a.wav", "RIFF"}, {"a.flac", "fLaC"}, {"a.OGG", "OggS"}};
    for (auto const& format : formats) {
        ASSERT_EQ(Tool({"link", "export", "--json", "-o", m_directory.File(format.szName)}), 0)
            << Errors();
        EXPECT_EQ(m_directory.Read(format.szName).substr(0, 4), format.szMagic);
        EXPECT_EQ(OutputAsJson()["frames"], kFrames);
    }
    for (const char* szName : {"a.mp3", "a"}) {
        EXPECT_EQ(Tool({"link", "export", "-o", m_directory.File(szName)}), 2);
        EXPECT_FALSE(m_directory.Has(szName));
    }
    EXPECT_NE(Errors().find(".wav, .flac or .ogg"), std::string::npos) << Errors();
    ASSERT_EQ(Tool({"link", "export", "-o", "-"}), 0);
    EXPECT_EQ(Output().substr(0, 4), "RIFF");
    EXPECT_GT(Output().size(), 4 * std::size_t{kFrames});
}

TEST_F(HostProgram, CapturesThatMakeNoSenseAreRefusedBeforeAnythingIsSent) {
    StartHost();
    const std::vector<std::vector<std::string>> senseless{
        {"--position", "nan"},
        {"--position", "inf"},
        {"--position", "0", "--channels", "0,0"},
        {"--position", "0", "--channels", "1"},
        {"--position", "0", "--end", "-5"},
        {"--position", "0", "--end", "24001"},
        {"--position", "0", "--start", "-1"},
        {"--position", "0", "--start", "100", "--end", "100"}};
    for (auto const& options : senseless) {
        std::vector<std::string> arguments{"link", "capture", Guide(), "--track", "0"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        EXPECT_EQ(Tool(arguments), 2) << options.back();
        EXPECT_NE(Errors(), "");
    }
    EXPECT_EQ(StopHost(), 0);
    EXPECT_EQ(m_directory.Read("host.out").find("guide.wav"), std::string::npos);
}

TEST_F(HostProgram, TracksHaveNamesAndPlacesHaveSeconds) {
    StartHost();
    EXPECT_EQ(Tool({"link", "regions"}), 0);
    EXPECT_EQ(Output(), "There are no regions.\n");
    ASSERT_EQ(Tool({"link", "capture", Guide(), "--track", "Dub", "--position", "2.5s"}), 0)
        << Errors();
    ASSERT_EQ(Tool({"link", "doubler", "--input", "Dub", "--start", "3s", "--end", "24000",
                    "--output", "Out"}),
              1)
        << "it ends where it starts";
    EXPECT_EQ(Tool({"link", "regions"}), 0);
    EXPECT_EQ(Output(), "1  Dub  20000 to 44000 (3.00 s)\n");
    EXPECT_EQ(Tool({"link", "regions", "--json"}), 0);
    EXPECT_EQ(OutputAsJson()["regions"],
              json::array({{{"track", 1}, {"name", "Dub"}, {"start", 20000}, {"end", 44000}}}));
    EXPECT_EQ(Tool({"link", "clear", "Nobody"}), 2);
    EXPECT_NE(Errors().find("there is no track \"Nobody\""), std::string::npos) << Errors();
    EXPECT_EQ(Tool({"link", "clear", "Dub"}), 0);
    EXPECT_EQ(Tool({"link", "capture", Guide(), "--track", "0", "--position", "2.5m"}), 2);
}

TEST_F(HostProgram, PlacesHaveTimeCode) {
    StartHost();
    const auto capture = [&](const char* szPosition, std::vector<std::string> options) {
        options.insert(options.begin(),
                       {"link", "capture", Guide(), "--track", "0", "--position", szPosition});
        return Tool(options);
    };
    ASSERT_EQ(capture("00:00:10:05", {}), 0) << Errors();
    ASSERT_EQ(capture("00:01:00;02", {"--fps", "29.97"}), 0) << Errors();
    EXPECT_EQ(Tool({"link", "regions"}), 0);
    // 10 seconds and 5 of 25 frames; 1800 frames of 1001/30000 seconds.
    EXPECT_EQ(Output(),
              "0  Guide  81600 to 105600 (3.00 s)\n0  Guide  480480 to 504480 (3.00 s)\n");
    EXPECT_EQ(capture("00:01:00;00", {"--fps", "29.97"}), 2);
    EXPECT_NE(Errors().find("is shown by no clock"), std::string::npos) << Errors();
    EXPECT_EQ(capture("00:01:00;02", {}), 2);
    EXPECT_NE(Errors().find("is drop-frame"), std::string::npos) << Errors();
    EXPECT_EQ(capture("00:00:00:25", {}), 2);
    EXPECT_EQ(capture("00:00:00", {}), 2);
    EXPECT_EQ(Tool({"link", "doubler", "--start", "00:00:10:05", "--end", "00:00:11:05", "--output",
                    "3"}),
              0)
        << Errors();
    EXPECT_EQ(Output(), "Doubler: input on track 0 (81600 to 89600), output on track 3.\n");
}

TEST_F(HostProgram, FileOfTheSessionsRateNeedsNoWord) {
    StartHost();
    ASSERT_EQ(Tool({"link", "capture", Guide(), "--track", "0", "--position", "0"}), 0);
    EXPECT_EQ(Errors(), "");
    EXPECT_EQ(StopHost(), 0);
    EXPECT_EQ(m_directory.Read("host.err"), "");
}

TEST_F(HostProgram, ToolWatchesTheLink) {
    const std::string strOutput = m_directory.File("watch.out");
    CChildProcess watch({TAVARIN_TOOL_PROGRAM, "link", "watch"}, strOutput,
                        m_directory.File("watch.err"));
    const auto waitFor = [&](const char* szText) {
        for (int nTry = 0; nTry < 1000; ++nTry) {
            if (m_directory.Read("watch.out").find(szText) != std::string::npos) return true;
            usleep(10'000);
        }
        return false;
    };
    EXPECT_TRUE(waitFor("Error - Tavarin Pro is not running."));
    StartHost();
    EXPECT_TRUE(waitFor("Guide"));
    ASSERT_EQ(Tool({"link", "--audiosuite", "capture", Guide(), "--track", "0", "--position", "5"}),
              0);
    ASSERT_EQ(Tool({"link", "--audiosuite", "doubler", "--output", "2"}), 0);
    ASSERT_EQ(Tool({"link", "--audiosuite", "export"}), 0);
    ASSERT_EQ(Tool({"link", "--audiosuite", "clear", "0"}), 0);
    for (const char* szEvent :
         {" captured guide.wav onto Guide (AudioSuite document), 5 to 24005\n",
          " Doubler process done, result on Out (AudioSuite document), 5 to ",
          " exported Out (AudioSuite document), 5 to ",
          " removed regions from Guide (AudioSuite document)\n"})
        EXPECT_TRUE(waitFor(szEvent)) << szEvent << m_directory.Read("watch.out");
    watch.Signal(SIGINT);
    EXPECT_EQ(watch.Wait(), 0);
}

TEST_F(HostProgram, ToolWatchesTheEventsAsJson) {
    StartHost();
    ASSERT_EQ(Tool({"link", "capture", Guide(), "--track", "0", "--position", "5"}), 0);
    CChildProcess watch({TAVARIN_TOOL_PROGRAM, "link", "watch", "--json"},
                        m_directory.File("watch.out"), m_directory.File("watch.err"));
    for (int nTry = 0; nTry < 1000 && !m_directory.Read("watch.out").ends_with('\n'); ++nTry)
        usleep(10'000);
    watch.Signal(SIGINT);
    EXPECT_EQ(watch.Wait(), 0);
    const json first = json::parse(m_directory.Read("watch.out"));
    EXPECT_EQ(first["tracks"][0], "Guide");
    EXPECT_EQ(first["events"].size(), 1u);
    EXPECT_NE(first["events"][0].get<std::string>().find("captured guide.wav"), std::string::npos);
}

TEST_F(HostProgram, ToolWithoutAHostGivesErrorAndAdvice) {
    EXPECT_EQ(Tool({"link", "tracks"}), 1);
    EXPECT_EQ(Output(), "");
    EXPECT_EQ(Errors(),
              "tavarin: Error - Tavarin Pro is not running.\n"
              "         Locate and launch Tavarin Pro.\n");
}

TEST_F(HostProgram, ToolWithoutAHostSaysSoInJsonToo) {
    EXPECT_EQ(Tool({"link", "tracks", "--json"}), 1);
    EXPECT_EQ(Output(), "");
    EXPECT_EQ(json::parse(Errors()), (json{{"code", "no_host"},
                                           {"error", "Error - Tavarin Pro is not running."},
                                           {"advice", "Locate and launch Tavarin Pro."}}));
}

TEST_F(HostProgram, TextIsPrintedAsTextUnlessItIsCalledAScript) {
    StartHost({"--verbose"});
    const std::string strText = "'\" .. GetTrackCount() .. \"' \\ \n end";
    EXPECT_EQ(Tool({"link", "print", strText}), 0) << Errors();
    EXPECT_EQ(Tool({"link", "print", "--script", "\" .. GetProcessID() .. \""}), 0) << Errors();
    const std::string strProcess = std::to_string(m_host->Id());
    EXPECT_EQ(StopHost(), 0);
    const std::string strLog = m_directory.Read("host.out");
    EXPECT_NE(strLog.find("--- reply\n" + strText + "\n"), std::string::npos) << strLog;
    EXPECT_NE(strLog.find("--- reply\n" + strProcess), std::string::npos) << strLog;
}

TEST_F(HostProgram, QuoteInAFileNameIsRefusedBeforeAnythingIsSent) {
    StartHost({"--verbose"});
    const std::string strQuote = m_directory.File("a\"b.wav");
    fs::copy_file(Guide(), strQuote);
    EXPECT_EQ(Tool({"link", "capture", strQuote, "--track", "0", "--position", "0"}), 2);
    EXPECT_NE(Errors().find("a\\\"b.wav\" has a quotation mark"), std::string::npos) << Errors();
    EXPECT_EQ(StopHost(), 0);
    EXPECT_EQ(m_directory.Read("host.out").find("--- script"), std::string::npos);
}

TEST_F(HostProgram, PlacesInScriptsAreToldOfTheUsersOwnOnly) {
    StartHost();
    EXPECT_EQ(Tool({"link", "clear", "99"}), 1);
    EXPECT_EQ(Errors().find("script:"), std::string::npos) << Errors();
    EXPECT_NE(Errors().find("there is no track number 99"), std::string::npos) << Errors();
    EXPECT_EQ(Tool({"link", "run", m_directory.Write("bad.lua", "\n\nerror('oops')")}), 1);
    EXPECT_NE(Errors().find("script:3: oops"), std::string::npos) << Errors();
}

TEST_F(HostProgram, MistypedCommandIsNamedWithTheNearestOne) {
    EXPECT_EQ(Tool({"link", "--timeout", "5", "statsu"}), 2);
    EXPECT_EQ(Errors(),
              "tavarin: there is no command \"statsu\" in \"tavarin link\"; did you mean "
              "\"status\"?\n");
    EXPECT_EQ(Tool({"blok"}), 2);
    EXPECT_NE(Errors().find("did you mean \"block\"?"), std::string::npos) << Errors();
}

TEST_F(HostProgram, WrongCommandLinesEndWithTwo) {
    EXPECT_EQ(Tool({}), 2);
    EXPECT_EQ(Tool({"link"}), 2);
    EXPECT_EQ(Tool({"link", "capture"}), 2);
    EXPECT_EQ(Tool({"link", "capture", Guide(), "--track", "0", "--position", "x"}), 2);
    EXPECT_EQ(Tool({"link", "nonsense"}), 2);
    EXPECT_EQ(Tool({"--help"}), 0);
    EXPECT_EQ(Tool({"--version"}), 0);
}

}  // namespace
