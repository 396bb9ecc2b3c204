#include "plugin/WindowProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "plugin/PlugIn.h"
#include "tests/TemporaryDirectory.h"

namespace {

using namespace std::chrono_literals;

CWindowOrder ShowOrder(std::string const& strTitle = "") {
    CWindowOrder order;
    order.fShow = 1;
    order.title.Set(strTitle);
    return order;
}

std::size_t Descriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

long ResidentKilobytes() {
    std::ifstream statm("/proc/self/statm");
    long nTotal = 0;
    long nResident = 0;
    statm >> nTotal >> nResident;
    return nResident * (sysconf(_SC_PAGESIZE) / 1024);
}

// The programs that this process started and that run or are halted.
std::vector<pid_t> Children() {
    std::vector<pid_t> children;
    for (auto const& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream list(task.path() / "children");
        for (pid_t nChild = 0; list >> nChild;) children.push_back(nChild);
    }
    return children;
}

struct WindowProcess : testing::Test {
    CTemporaryDirectory place;
    std::unique_ptr<CPlugIn> plugIn;
    std::unique_ptr<CWindowProcess> window;
    std::string strTake;

    void SetUp() override {
        setenv("TAVARIN_CAPTURES", place.Path().c_str(), 1);
        plugIn = std::make_unique<CPlugIn>(PlugInKind::Link, 1, 48000);
        plugIn->ViewTurned();
    }
    void TearDown() override {
        window.reset();
        plugIn.reset();
        unsetenv("TAVARIN_CAPTURES");
    }

    // A program that behaves like that.
    std::string Program(std::string const& strBehaviour) {
        const std::string strLink = place.File("view-" + strBehaviour);
        std::error_code there;
        std::filesystem::create_symlink(TAVARIN_VIEW_DOUBLE, strLink, there);
        return strLink;
    }

    void Show(std::string const& strProgram) {
        window = std::make_unique<CWindowProcess>(*plugIn, strProgram);
        window->Order(ShowOrder());
    }

    // A take that nobody has handed over yet, as the book of a session that is opened has it.
    void AddTake() {
        strTake = place.File("Take_0001.wav");
        std::ofstream(strTake) << "audio";
        CPlugInState state;
        state.nKind = static_cast<std::int32_t>(PlugInKind::Link);
        CTake take;
        take.strFile = strTake;
        take.lFrames = 100;
        state.takes = {take};
        plugIn->Restore(state);
        plugIn->ViewTurned();
    }

    bool Within(std::chrono::seconds limit, std::function<bool()> const& condition) {
        const auto end = std::chrono::steady_clock::now() + limit;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) return false;
            window->Serve();
            std::this_thread::sleep_for(2ms);
        }
        return true;
    }
    bool Within(std::function<bool()> const& condition) { return Within(60s, condition); }

    bool IsReported(PlugInResult result) { return plugIn->Status().result == result; }
    bool IsText(std::string const& strText) { return plugIn->Status().strText == strText; }

    // Turns as the window does, so that the plug-in itself leaves the take alone.
    bool IsInHands() {
        plugIn->ViewTurned();
        if (std::optional<CTake> take = plugIn->PickTake()) {
            plugIn->TakePutBack(TakeFate::NotThere);
            return false;
        }
        return true;
    }

    bool IsClosed() {
        const std::optional<CWindowNote> note = window->TakeNote();
        return note && note->fClosed;
    }

    void Close() {
        window->Order({});
        EXPECT_TRUE(Within([] { return Children().empty(); }));
        window->Serve();
    }
};

TEST_F(WindowProcess, StartsWithTheFirstShowAndEndsWithTheWindow) {
    window = std::make_unique<CWindowProcess>(*plugIn, Program("turns"));
    window->Serve();
    EXPECT_TRUE(Children().empty());
    for (int nRound = 0; nRound < 2; ++nRound) {
        window->Order(ShowOrder());
        window->Serve();
        EXPECT_EQ(Children().size(), 1U);
        Close();
        EXPECT_FALSE(window->TakeNote());
    }
    EXPECT_TRUE(IsReported(PlugInResult::Ready));
}

TEST_F(WindowProcess, HandsATakeOver) {
    AddTake();
    Show(Program("hands-over"));
    EXPECT_TRUE(Within([this] { return plugIn->LastTakeOn(4).has_value(); }));
    EXPECT_FALSE(plugIn->IsTakeWaiting());
}

TEST_F(WindowProcess, KnowsTheGuideThatAnotherPlugInCaptured) {
    plugIn = std::make_unique<CPlugIn>(PlugInKind::APT, 1, 48000);
    plugIn->ViewTurned();
    Show(Program("names"));
    EXPECT_TRUE(Within([] { return Children().size() == 1; }));
    CTake guide;
    guide.lPosition = 700;
    guide.lFrames = 100;
    CSharedGuide::Join()->Put(guide);
    EXPECT_TRUE(Within([this] { return IsText("700+100"); }));
}

// A second name, because a host that has the take already deletes the file that it is asked for.
TEST_F(WindowProcess, PutsATakeBackUnderAnotherName) {
    AddTake();
    Show(Program("puts-back"));
    const std::string strFirst = plugIn->LastTake()->strFile;
    EXPECT_TRUE(Within([&] { return plugIn->LastTake()->strFile != strFirst; }));
    EXPECT_TRUE(std::filesystem::exists(strFirst));
    EXPECT_TRUE(std::filesystem::exists(plugIn->LastTake()->strFile));
    EXPECT_TRUE(plugIn->LastTake()->fMayBeThere);
    EXPECT_TRUE(plugIn->IsTakeWaiting());
}

TEST_F(WindowProcess, TakesATakeBackFromAWindowThatCrashed) {
    AddTake();
    Show(Program("crashes"));
    EXPECT_TRUE(Within([this] { return IsClosed(); }));
    EXPECT_TRUE(IsReported(PlugInResult::WindowFailed));
    EXPECT_TRUE(IsText("The window ended by itself. It can be shown again."));
    EXPECT_FALSE(IsInHands());
    Show(Program("hands-over"));
    EXPECT_TRUE(Within([this] { return plugIn->LastTakeOn(4).has_value(); }));
}

TEST_F(WindowProcess, SaysThatAWindowHangsAndEndsItWhenItIsClosed) {
    AddTake();
    const std::string strFirst = plugIn->LastTake()->strFile;
    Show(Program("hangs"));
    EXPECT_TRUE(Within([this] { return IsReported(PlugInResult::NoAnswer); }));
    EXPECT_TRUE(IsText("Tavarin Pro does not answer"));
    EXPECT_TRUE(IsInHands());
    Close();
    EXPECT_FALSE(IsInHands());
    EXPECT_NE(plugIn->LastTake()->strFile, strFirst);
    EXPECT_TRUE(std::filesystem::exists(strFirst));
}

TEST_F(WindowProcess, ForgetsThatAWindowHungWhenItGoesOn) {
    Show(Program("turns"));
    EXPECT_TRUE(Within([this] { return window->Serve(), Children().size() == 1; }));
    std::this_thread::sleep_for(50ms);
    window->Serve();
    kill(Children().front(), SIGSTOP);
    EXPECT_TRUE(Within([this] { return IsReported(PlugInResult::NoAnswer); }));
    kill(Children().front(), SIGCONT);
    EXPECT_TRUE(Within([this] { return IsReported(PlugInResult::Ready); }));
}

TEST_F(WindowProcess, EndsAHaltedWindowWithThePlugIn) {
    Show(Program("turns"));
    window->Serve();
    kill(Children().front(), SIGSTOP);
    window.reset();
    EXPECT_TRUE(Children().empty());
}

TEST_F(WindowProcess, OutlivesAWindowThatIsKilledAtAnyMoment) {
    AddTake();
    for (int nRound = 0; nRound < 60; ++nRound) {
        Show(Program("holds"));
        window->Serve();
        const pid_t nProcess = Children().front();
        std::thread killer([nProcess, nRound] {
            std::this_thread::sleep_for(nRound * 500us);
            kill(nProcess, SIGKILL);
        });
        EXPECT_TRUE(Within([this] { return IsClosed(); })) << nRound;
        killer.join();
        EXPECT_TRUE(IsReported(PlugInResult::WindowFailed)) << nRound;
        EXPECT_FALSE(IsInHands()) << nRound;
    }
}

TEST_F(WindowProcess, SaysWhatIsWrongWithTheProgram) {
    const std::string strText = place.File("not-a-program");
    std::ofstream(strText) << "text";
    const struct {
        std::string strProgram;
        std::string strPart;
    } cases[] = {
        {place.File("missing"), place.File("missing")},
        {strText, "Permission denied"},
        {Program("old"), "The window's program is of another version: "},
        {Program("fails"), "No window can be shown: a reason"},
    };
    for (auto const& one : cases) {
        Show(one.strProgram);
        EXPECT_TRUE(Within([this] { return IsClosed(); })) << one.strProgram;
        EXPECT_TRUE(IsReported(PlugInResult::WindowFailed));
        EXPECT_NE(plugIn->Status().strText.find(one.strPart), std::string::npos)
            << plugIn->Status().strText;
        EXPECT_TRUE(Children().empty());
    }
}

TEST_F(WindowProcess, SaysThatTheUserClosedTheWindow) {
    Show(Program("closes"));
    EXPECT_TRUE(Within([this] { return IsClosed(); }));
    EXPECT_TRUE(IsReported(PlugInResult::Ready));
}

TEST_F(WindowProcess, PassesOnWhatTheUserSets) {
    Show(Program("sets"));
    std::vector<CWindowNote> notes;
    EXPECT_TRUE(Within([&] {
        if (const auto note = window->TakeNote()) notes.push_back(*note);
        return notes.size() == 2;
    }));
    EXPECT_EQ(notes.front().nPort, portCapture);
    EXPECT_EQ(notes.front().value, 1);
    EXPECT_EQ(notes.back().nPort, portTrack);
    EXPECT_EQ(notes.back().value, 3);
    EXPECT_EQ(plugIn->Track(), 3);
}

TEST_F(WindowProcess, RaisesAWindowThatIsShownAlready) {
    Show(Program("raised"));
    window->Serve();
    window->Order(ShowOrder());
    EXPECT_TRUE(Within([this] { return IsText("raised"); }));
    EXPECT_EQ(Children().size(), 1U);
}

TEST_F(WindowProcess, GivesTheProgramItsSocketAndNothingElse) {
    const int nFile = open("/dev/null", O_RDONLY);
    window = std::make_unique<CWindowProcess>(*plugIn, Program("looks"));
    window->Order(ShowOrder("A title"));
    EXPECT_TRUE(Within([this] { return !IsText(""); }));
    EXPECT_EQ(plugIn->Status().strText, "A title|socket");
    close(nFile);
}

TEST_F(WindowProcess, IgnoresOrdersOfAnotherVersion) {
    window = std::make_unique<CWindowProcess>(*plugIn, Program("turns"));
    CWindowOrder order = ShowOrder();
    ++order.nVersion;
    window->Order(order);
    window->Serve();
    EXPECT_TRUE(Children().empty());
}

// What has the descriptor's number then is somebody else's.
TEST_F(WindowProcess, OutlivesAWorkstationThatClosesItsDescriptors) {
    Show(Program("turns"));
    window->Serve();
    std::vector<int> sockets;
    for (auto const& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        const int nDescriptor = std::stoi(entry.path().filename());
        struct stat status {};
        if (fstat(nDescriptor, &status) == 0 && S_ISSOCK(status.st_mode)) {
            sockets.push_back(nDescriptor);
        }
    }
    ASSERT_EQ(sockets.size(), 1U);
    int others[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, others), 0);
    ASSERT_EQ(dup2(others[0], sockets.front()), sockets.front());
    EXPECT_TRUE(Within([this] { return IsClosed(); }));
    char byte = 0;
    EXPECT_EQ(recv(others[1], &byte, 1, MSG_DONTWAIT), -1);
    EXPECT_NE(fcntl(sockets.front(), F_GETFD), -1);
    for (const int nDescriptor : {others[0], others[1], sockets.front()}) close(nDescriptor);
}

// The process that it forked keeps every descriptor, the socket's among them.
TEST_F(WindowProcess, EndsWithAWorkstationThatForkedAndEndedWithoutAWord) {
    int report[2];
    ASSERT_EQ(pipe(report), 0);
    const std::string strProgram = Program("turns");
    const pid_t nWorkstation = fork();
    if (nWorkstation == 0) {
        CWindowProcess own(*plugIn, strProgram);
        own.Order(ShowOrder());
        own.Serve();
        const pid_t pids[2] = {Children().front(), fork()};
        if (pids[1] == 0) {
            for (;;) pause();
        }
        (void)!write(report[1], pids, sizeof(pids));
        _exit(0);
    }
    pid_t pids[2] = {};
    ASSERT_EQ(read(report[0], pids, sizeof(pids)), static_cast<ssize_t>(sizeof(pids)));
    waitpid(nWorkstation, nullptr, 0);
    bool fGone = false;
    for (int nTry = 0; nTry < 6000 && !fGone; ++nTry) {
        // Whoever adopted it may not have waited for it yet.
        std::ifstream stat("/proc/" + std::to_string(pids[0]) + "/stat");
        std::string strNumber, strName, strState;
        fGone = !(stat >> strNumber >> strName >> strState) || strState == "Z";
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_TRUE(fGone);
    kill(pids[1], SIGKILL);
    // Where this process is the one that adopts them.
    for (const pid_t nProcess : pids) waitpid(nProcess, nullptr, 0);
    for (const int nEnd : report) close(nEnd);
}

TEST_F(WindowProcess, OpensAThousandTimesWithoutGrowing) {
    window = std::make_unique<CWindowProcess>(*plugIn, Program("turns"));
    const auto openAndClose = [this] {
        window->Order(ShowOrder());
        window->Serve();
        ASSERT_EQ(Children().size(), 1U);
        Close();
    };
    for (int nRound = 0; nRound < 20; ++nRound) openAndClose();
    const std::size_t nDescriptors = Descriptors();
    const long nResident = ResidentKilobytes();
    for (int nRound = 0; nRound < 1000; ++nRound) openAndClose();
    EXPECT_EQ(Descriptors(), nDescriptors);
#ifndef __SANITIZE_ADDRESS__
    // A sanitizer keeps what was freed.
    EXPECT_LT(ResidentKilobytes(), nResident + 1024);
#else
    (void)nResident;
#endif
}

TEST_F(WindowProcess, OpensTwentyAtOnce) {
    std::vector<std::unique_ptr<CWindowProcess>> windows;
    for (int nWindow = 0; nWindow < 20; ++nWindow) {
        windows.push_back(std::make_unique<CWindowProcess>(*plugIn, Program("turns")));
        windows.back()->Order(ShowOrder());
    }
    for (int nTurn = 0; nTurn < 100; ++nTurn) {
        for (auto& one : windows) one->Serve();
        std::this_thread::sleep_for(2ms);
    }
    EXPECT_EQ(Children().size(), 20U);
    windows.clear();
    EXPECT_TRUE(Children().empty());
    EXPECT_TRUE(IsReported(PlugInResult::Ready));
}

TEST(WindowRecords, TextsAreCutBetweenCharacters) {
    CRecordText<6> text{};
    text.Set("abcd\xC3\xA9");
    EXPECT_EQ(text.Get(), "abcd");
    text.Set("abc\xC3\xA9");
    EXPECT_EQ(text.Get(), "abc\xC3\xA9");
    std::fill(std::begin(text.szText), std::end(text.szText), 'x');
    EXPECT_EQ(text.Get(), "xxxxxx");
}

}  // namespace
