// The program tavarin-workstation, unattended, against the program tavarin-host.

#include <gtest/gtest.h>
#include <sndfile.h>

#include <memory>
#include <optional>
#include <thread>

#include "ChildProcess.h"
#include "ScopedEnvironment.h"
#include "TemporaryDirectory.h"
#include "link/TANClientInterProcess.h"

namespace {

using Strings = std::vector<std::string>;

class Workstation : public testing::Test {
protected:
    // A killed host would look alive to the next test for as long as its last heartbeat is fresh.
    void TearDown() override {
        if (!m_host) return;
        m_host->Signal(SIGTERM);
        EXPECT_EQ(m_host->Wait(), 0);
    }

    void StartHost(std::string const& strTracks = "Guide,Dub,Out,Double") {
        m_host.emplace(Strings{TAVARIN_HOST_PROGRAM, "--quiet", "--tracks", strTracks},
                       m_directory.File("host.out"), m_directory.File("host.err"));
        for (int nTry = 0; nTry < 500; ++nTry) {
            if (m_client.GetCurrentIdFromMainDirectory() > 0) return;
            usleep(10'000);
        }
        FAIL() << "the host did not start: " << m_directory.Read("host.err");
    }

    std::unique_ptr<CChildProcess> Start(std::string const& strName, Strings arguments) {
        arguments.insert(arguments.begin(), TAVARIN_WORKSTATION_PROGRAM);
        return std::make_unique<CChildProcess>(arguments, m_directory.File(strName + ".out"),
                                               m_directory.File(strName + ".err"));
    }
    int Run(Strings const& arguments) { return Start("run", arguments)->Wait(); }
    std::string Log() const { return m_directory.Read("run.out"); }
    bool HasLine(std::string const& strPart) const {
        return Log().find(strPart) != std::string::npos;
    }

    int CountTakes() const {
        int nCount = 0;
        for (auto const& entry :
             std::filesystem::recursive_directory_iterator(m_directory.File("takes"))) {
            nCount += entry.path().extension() == ".wav";
        }
        return nCount;
    }

    // Width and height, as a PNG file has them.
    std::pair<int, int> PictureSize(std::string const& strName) const {
        const std::string strPicture = m_directory.Read(strName);
        const auto number = [&strPicture](std::size_t nAt) {
            int nNumber = 0;
            for (std::size_t n = nAt; n < nAt + 4 && n < strPicture.size(); ++n) {
                nNumber = nNumber * 256 + static_cast<unsigned char>(strPicture[n]);
            }
            return nNumber;
        };
        return {number(16), number(20)};
    }

    sf_count_t Frames(std::string const& strName) const {
        SF_INFO info{};
        SNDFILE* const pFile = sf_open(m_directory.File(strName).c_str(), SFM_READ, &info);
        if (pFile) sf_close(pFile);
        return info.frames;
    }

    CTemporaryDirectory m_directory;
    const CScopedEnvironment m_captures{"TAVARIN_CAPTURES", m_directory.MakeDirectory("takes")};
    CTANClientInterProcess m_client;
    std::optional<CChildProcess> m_host;
};

TEST_F(Workstation, RunsAWholeCycle) {
    StartHost();
    ASSERT_EQ(Run({"--view", "apt", "--auto-switch", "on", "--capture", "guide@48000", "--capture",
                   "dub@52000", "--render", "--export", m_directory.File("aligned.wav"),
                   "--screenshot", m_directory.File("window.png"), "--quit"}),
              0)
        << Log() << m_directory.Read("run.err");
    EXPECT_EQ(Frames("aligned.wav"), 144000);
    EXPECT_TRUE(
        HasLine("apt  TASR  after   nSampleRate 48000  lStart 48000  lEnd 192000  fResult 1"));
    EXPECT_EQ(m_directory.Read("window.png").substr(1, 3), "PNG");
    EXPECT_TRUE(HasLine("apt  the host has the take")) << Log();
    EXPECT_EQ(CountTakes(), 2) << "the host's session refers to them";
}

TEST_F(Workstation, StoresTheSwitchInTheUsersDefaults) {
    const std::string strFile =
        std::string(std::getenv("TAVARIN_TEST_DEFAULTS")) + "/" TAVARIN_BUNDLE_IDENTIFIER ".plist";
    const auto stored = [&strFile] {
        std::ifstream file(strFile);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    ASSERT_EQ(Run({"--auto-switch", "on", "--quit"}), 0);
    EXPECT_NE(stored().find("<string>1</string>"), std::string::npos) << stored();
    ASSERT_EQ(Run({"--auto-switch", "off", "--quit"}), 0);
    EXPECT_NE(stored().find("<string>0</string>"), std::string::npos) << stored();
}

TEST_F(Workstation, ShowsAllThreeAndChoosesAmongThem) {
    StartHost();
    ASSERT_EQ(Run({"--view",         "all",      "--track",   "1",
                   "--capture",      "guide@10", "--plug-in", "doubler",
                   "--capture",      "dub@20",   "--export",  m_directory.File("doubled.wav"),
                   "--plug-in",      "apt",      "--guide",   "--dub",
                   "--update-count", "--print",  "hello",     "--quit"}),
              0)
        << Log() << m_directory.Read("run.err");
    EXPECT_TRUE(HasLine("link  TAAS  before"));
    EXPECT_TRUE(HasLine("doubler  TAEP  after"));
    EXPECT_TRUE(HasLine("apt  TAPT  before  \"hello\""));
    EXPECT_GT(Frames("doubled.wav"), 0);
}

TEST_F(Workstation, CapturesAFileAndKeepsTheOriginal) {
    StartHost();
    ASSERT_EQ(Run({"--view", "link", "--capture", "guide@0", "--captures",
                   m_directory.MakeDirectory("kept"), "--quit"}),
              0);
    const std::string strTake = m_directory.File("kept/1 guide.wav");
    ASSERT_TRUE(m_directory.Has("kept/1 guide.wav"));
    ASSERT_EQ(Run({"--view", "link", "--capture", strTake + "@96000", "--capture",
                   strTake + "@96000", "--quit"}),
              0);
    EXPECT_TRUE(m_directory.Has("kept/1 guide.wav"))
        << "the view deletes a duplicate capture, not the file it was made from";
}

TEST_F(Workstation, TwoAtOnceShareOneHost) {
    StartHost();
    const auto steps = [this](std::string const& strView, std::string const& strFile) {
        return Strings{"--view",
                       strView,
                       "--capture",
                       "guide@0",
                       "--render",
                       "--export",
                       m_directory.File(strFile),
                       "--capture",
                       "dub@500",
                       "--update-count",
                       "--quit"};
    };
    auto one = Start("one", steps("doubler", "one.wav"));
    auto two = Start("two", steps("doubler", "two.wav"));
    EXPECT_EQ(one->Wait(), 0) << m_directory.Read("one.out") << m_directory.Read("one.err");
    EXPECT_EQ(two->Wait(), 0) << m_directory.Read("two.out") << m_directory.Read("two.err");
}

TEST_F(Workstation, WithoutAHostTheStepsFailAndTheStatusSaysSo) {
    EXPECT_EQ(Run({"--view", "apt", "--capture", "guide@0", "--render", "--quit"}), 1);
    EXPECT_TRUE(HasLine("fResult 0")) << Log();
    EXPECT_TRUE(HasLine("apt  the step failed: Error - Tavarin Pro is not running.")) << Log();
}

TEST_F(Workstation, TakeWithoutAHostIsKeptAndToldAndTheStatusSaysSo) {
    EXPECT_EQ(Run({"--view", "link", "--capture", "guide@48000", "--quit"}), 1);
    EXPECT_TRUE(HasLine("link  the take waits for a host: ")) << Log();
    EXPECT_TRUE(HasLine("link  a take still waits for the host: ")) << Log();
    EXPECT_EQ(CountTakes(), 1);
}

TEST_F(Workstation, TakeThatWaitedIsHandedOverWhenThereIsAHost) {
    auto workstation = Start("run", {"--view", "doubler", "--capture", "guide@48000", "--wait", "4",
                                     "--export", m_directory.File("doubled.wav"), "--quit"});
    for (int nTry = 0; nTry < 1000 && !HasLine("the take waits for a host"); ++nTry) usleep(10'000);
    StartHost();
    EXPECT_EQ(workstation->Wait(), 0) << Log();
    EXPECT_TRUE(HasLine("doubler  the host has the take")) << Log();
    EXPECT_GT(Frames("doubled.wav"), 0);
}

TEST_F(Workstation, TakeThatWaitedAndGoesWrongMakesTheStatus) {
    auto workstation =
        Start("run", {"--view", "doubler", "--capture", "guide@48000", "--wait", "4", "--quit"});
    for (int nTry = 0; nTry < 1000 && !HasLine("the take waits for a host"); ++nTry) usleep(10'000);
    StartHost("Voice");
    EXPECT_EQ(workstation->Wait(), 1) << Log();
    EXPECT_TRUE(HasLine("doubler  the host has the take, but what follows it failed: ")) << Log();
}

TEST_F(Workstation, TakeWhoseProcessFailsIsNoSuccess) {
    StartHost("Guide,Dub");
    EXPECT_EQ(Run({"--view", "apt", "--guide", "--capture", "guide@0", "--quit"}), 0) << Log();
    EXPECT_EQ(Run({"--view", "apt", "--auto-switch", "off", "--guide", "--capture", "guide@0",
                   "--dub", "--capture", "dub@0", "--quit"}),
              1)
        << Log();
    EXPECT_TRUE(HasLine("apt  the host has the take, but what follows it failed: ")) << Log();
}

// The halted host keeps a client of another process waiting until it is killed, and would for ever.
TEST_F(Workstation, WhoWaitsForADeadHostIsSentAway) {
    StartHost();
    auto workstation =
        Start("run", {"--view", "link", "--wait", "1.5", "--picture", m_directory.File("ready.png"),
                      "--wait", "1.5", "--capture", "guide@0", "--wait", "2", "--quit"});
    for (int nTry = 0; nTry < 1000 && !m_directory.Has("ready.png"); ++nTry) usleep(10'000);
    m_host->Signal(SIGSTOP);
    std::thread other([] {
        CTANClientInterProcess client;
        std::string strScript = "print(1)", strReply;
        client.SendTANMessage(1, strScript, strReply, -1);
    });
    usleep(200'000);
    m_host->Signal(SIGKILL);
    m_host->Wait();
    m_host.reset();
    other.join();
    EXPECT_EQ(workstation->Wait(), 1) << "the take still waits";
    EXPECT_TRUE(HasLine("Tavarin Pro has died. Whoever waited for it was sent away.")) << Log();
    EXPECT_TRUE(HasLine("link  the take waits for a host: ")) << Log();
    for (const char* szLeft :
         {"TAN_Host_1", "__KEL_TAN_INTERPROCESS_DIR6__", "__KEL_TAN_INTERPROCESS_DIR6__.lock"}) {
        std::filesystem::remove(std::string("/dev/shm/") + szLeft);
    }
}

TEST_F(Workstation, StepsThatNobodyAnswersFailWithoutAHost) {
    for (Strings const& step :
         {Strings{"--print", "hello"}, Strings{"--update-count"}, Strings{"--track", "0"}}) {
        Strings arguments{"--view", "link"};
        arguments.insert(arguments.end(), step.begin(), step.end());
        arguments.push_back("--quit");
        EXPECT_EQ(Run(arguments), 1) << step.front();
        EXPECT_TRUE(HasLine("link  the step failed: Error - Tavarin Pro is not running.")) << Log();
    }
}

TEST_F(Workstation, EveryFailedStepSaysWhy) {
    StartHost();
    EXPECT_EQ(Run({"--view", "all", "--plug-in", "link", "--guide", "--track", "7", "--render",
                   "--plug-in", "doubler", "--auto-switch", "on", "--track", "0", "--export",
                   m_directory.File("none.wav"), "--quit"}),
              1);
    for (const char* szLine : {"link  the step failed: only the APT view has this",
                               "link  the step failed: there is no track 7; the host has 4, from 0",
                               "link  the step failed: the host gave nothing",
                               "doubler  the step failed: only the APT view has this",
                               "doubler  the step failed: only the Link view has tracks to choose",
                               "doubler  the step failed: No Tavarin Pro"}) {
        EXPECT_TRUE(HasLine(szLine)) << szLine << '\n' << Log();
    }
}

TEST_F(Workstation, EventsAreToldInWords) {
    StartHost();
    ASSERT_EQ(
        Run({"--view", "all", "--track", "1", "--plug-in", "apt", "--auto-switch", "on",
             "--capture", "guide@48000", "--capture", "dub@52000", "--render", "--export",
             m_directory.File("aligned.wav"), "--update-count", "--print", "hello", "--quit"}),
        0)
        << Log();
    for (const char* szLine :
         {"link  captures go to the track \"Dub\"", "apt  the automatic switch is on",
          "apt  captured 48000 to 192000 (3.00 s) as the guide: ",
          "apt  captured 52000 to 196000 (3.00 s): ", "apt  the host has the take",
          "apt  the host rendered 48000 to 192000 (3.00 s)", "apt  the host exported 3.00 s: ",
          "apt  the host's update count is ", "apt  the host was given a text to print: hello"}) {
        EXPECT_TRUE(HasLine(szLine)) << szLine << '\n' << Log();
    }
}

TEST_F(Workstation, StepsThatAreNotTakenMakeTheStatus) {
    EXPECT_EQ(Run({"--view", "apt", "--quit", "--guide"}), 1);
    EXPECT_TRUE(HasLine("steps that were not taken: 1")) << Log();
}

TEST_F(Workstation, NoFileIsReplacedUnlessItIsSaid) {
    StartHost();
    for (const char* szWhat : {"--export", "--screenshot", "--picture"}) {
        m_directory.Write("there", "mine");
        Strings arguments{"--view",  "doubler", "--capture",
                          "guide@0", szWhat,    m_directory.File("there"),
                          "--quit"};
        EXPECT_EQ(Run(arguments), 1) << szWhat;
        EXPECT_EQ(m_directory.Read("there"), "mine");
        EXPECT_TRUE(HasLine("is there already; --force replaces it")) << Log();
        arguments.push_back("--force");
        EXPECT_EQ(Run(arguments), 0) << szWhat << Log();
        EXPECT_NE(m_directory.Read("there"), "mine");
    }
    m_directory.Write("there", "mine");
    EXPECT_EQ(Run({"--gallery", "--screenshot", m_directory.File("there"), "--quit"}), 1);
    EXPECT_EQ(m_directory.Read("there"), "mine");
}

TEST_F(Workstation, WithoutADisplayThereIsOneSentence) {
    const CScopedEnvironment display("DISPLAY", "");
    EXPECT_EQ(Run({"--quit"}), 2);
    EXPECT_EQ(m_directory.Read("run.err"),
              "tavarin-workstation: there is no display: DISPLAY is not set\n");
    const CScopedEnvironment unreachable("DISPLAY", ":4711");
    EXPECT_EQ(Run({"--quit"}), 2);
    EXPECT_EQ(m_directory.Read("run.err"),
              "tavarin-workstation: there is no display: Unable to connect to X Server `:4711'\n");
}

TEST_F(Workstation, MissingTakesAndBundlesAreNamed) {
    EXPECT_EQ(Run({"--capture", m_directory.File("nothing.wav") + "@5", "--quit"}), 1);
    EXPECT_TRUE(HasLine("nothing.wav: No such file")) << Log();
    m_directory.Write("text.wav", "this is no sound");
    EXPECT_EQ(Run({"--capture", m_directory.File("text.wav"), "--quit"}), 1);
    EXPECT_EQ(Run({"--bundle", m_directory.MakeDirectory("Empty.bundle"), "--quit"}), 2);
    EXPECT_NE(m_directory.Read("run.err").find("Empty.bundle"), std::string::npos);
}

TEST_F(Workstation, BundleWithoutANibStopsItAndWaitsForNobody) {
    const std::filesystem::path source(TAVARIN_BUNDLE);
    const std::filesystem::path bundle = m_directory.File("NoNib.bundle");
    std::filesystem::copy(source, bundle, std::filesystem::copy_options::recursive);
    std::filesystem::remove(bundle / "Resources" / "TavarinProAPTLink_View.xib");
    EXPECT_EQ(Run({"--bundle", bundle.string(), "--view", "apt", "--quit"}), -1);
    EXPECT_NE(m_directory.Read("run.err").find("Assertion failed: viewController != nil,"),
              std::string::npos)
        << m_directory.Read("run.err");
}

TEST_F(Workstation, GalleryIsPhotographedAndHasNoPlugIn) {
    const std::string strPicture = m_directory.File("gallery.png");
    EXPECT_EQ(Run({"--gallery", "--screenshot", strPicture, "--quit"}), 0);
    EXPECT_EQ(m_directory.Read("gallery.png").substr(1, 3), "PNG");
    EXPECT_EQ(Run({"--gallery", "--render", "--quit"}), 1);
    EXPECT_TRUE(HasLine("the step failed: a gallery has no plug-in")) << Log();
}

class WorkstationScheme : public Workstation, public testing::WithParamInterface<const char*> {
protected:
    std::string Write(std::string const& strColour) const {
        return m_directory.Write("mine.json",
                                 R"({"format": "TavarinColourScheme", "colours": [
            {"component": "ccWindowBackground", "name": "Window", "colour": ")" +
                                     strColour + R"("}]})");
    }

    std::string PictureOf(std::string const& strScheme) {
        EXPECT_EQ(Run({GetParam(), "--scheme", strScheme, "--wait", "0.5", "--picture",
                       m_directory.File("new.png"), "--quit"}),
                  0)
            << m_directory.Read("run.err");
        const std::string strPicture = m_directory.Read("new.png");
        std::filesystem::remove(m_directory.File("new.png"));
        return strPicture;
    }
};

// The picture that is taken when a scheme has changed is that of the new scheme from the start.
TEST_P(WorkstationScheme, IsShownAndFollowsItsFile) {
    const std::string strFile = Write("#304050");
    const std::string strBefore = PictureOf(strFile);
    EXPECT_NE(strBefore, PictureOf("designer"));
    auto workstation = Start("run", {GetParam(), "--scheme", strFile, "--wait", "0.5", "--picture",
                                     m_directory.File("first.png"), "--wait", "4", "--picture",
                                     m_directory.File("last.png"), "--quit"});
    for (int nTry = 0; nTry < 1000 && !m_directory.Has("first.png"); ++nTry) usleep(10'000);
    Write("#5030401");
    for (int nTry = 0; nTry < 300 && !HasLine("stays as it was: "); ++nTry) usleep(10'000);
    Write("#503040");
    EXPECT_EQ(workstation->Wait(), 0);
    EXPECT_TRUE(HasLine("the scheme stays as it was: colour 1 in")) << Log();
    EXPECT_TRUE(HasLine("the scheme was read again: " + strFile)) << Log();
    EXPECT_EQ(m_directory.Read("first.png"), strBefore);
    const std::string strAfter = m_directory.Read("last.png");
    EXPECT_NE(strAfter, strBefore);
    EXPECT_EQ(strAfter, PictureOf(strFile));
}

INSTANTIATE_TEST_SUITE_P(, WorkstationScheme, testing::Values("--gallery", "--view=apt"),
                         [](auto const& info) {
                             return std::string(info.param).substr(2, 4) == "view" ? "View"
                                                                                   : "Gallery";
                         });

TEST_F(Workstation, SchemeThatCannotBeReadIsNamed) {
    EXPECT_EQ(Run({"--scheme", "nothing", "--quit"}), 2);
    EXPECT_NE(m_directory.Read("run.err").find("\"nothing\" is no palette and no file"),
              std::string::npos)
        << m_directory.Read("run.err");
}

// What is written of the window is as large as the window is then.
TEST_F(Workstation, WindowIsResizedAndClicksAndKeysReachTheTrackList) {
    if (std::system("command -v xdotool >/dev/null") != 0) GTEST_SKIP() << "no xdotool";
    std::string strTracks = "Lead";
    for (int nTrack = 2; nTrack <= 200; ++nTrack) strTracks += ",Track " + std::to_string(nTrack);
    StartHost(strTracks);
    auto workstation =
        Start("run", {"--view", "link", "--wait", "0.5", "--picture", m_directory.File("ready.png"),
                      "--wait", "5", "--screenshot", m_directory.File("window.png"), "--capture",
                      "guide@0", "--quit"});
    for (int nTry = 0; nTry < 1000 && !m_directory.Has("ready.png"); ++nTry) usleep(10'000);
    EXPECT_EQ(std::system("window=$(xdotool search --name 'Tavarin workstation' | tail -1) && "
                          "xdotool windowsize $window 700 800 && sleep 0.5 && "
                          "xdotool mousemove --window $window 200 97 click 1 && sleep 0.5 && "
                          "xdotool key t r a c k space 1 5 9 Return"),
              0);
    EXPECT_EQ(workstation->Wait(), 0) << Log();
    EXPECT_EQ(PictureSize("window.png"), (std::pair{700, 800}));
    CTANClientInterProcess client;
    std::string strScript =
        "if SelectScriptDocument() then print(GetRegionCount(GetTrackID(158))) end\n";
    std::string strReply;
    EXPECT_EQ(client.SendTANMessage(1, strScript, strReply, 5000), 0);
    EXPECT_EQ(strReply, "1\n") << client.m_strLastError;
}

TEST_F(Workstation, BadArgumentsAreExplained) {
    EXPECT_EQ(Run({"--view", "none"}), 2);
    EXPECT_EQ(Run({"--auto-switch", "maybe", "--quit"}), 2);
    EXPECT_EQ(Run({"--capture", "guide@soon", "--quit"}), 2);
    EXPECT_EQ(Run({"--nonsense"}), 2);
    EXPECT_EQ(Run({"--help"}), 0);
    EXPECT_TRUE(HasLine("--screenshot"));
}

}  // namespace
