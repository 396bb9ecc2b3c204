#include <gtest/gtest.h>
#include <lv2/atom/util.h>
#include <lv2/options/options.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "platform/WindowHolder.h"
#include "plugin/ExternalWindow.h"
#include "plugin/PlugInAccess.h"
#include "tests/HostProgramFixture.h"
#include "tests/PeerHost.h"
#include "tests/PlugInHost.h"
#include "tests/PlugInWindowHost.h"
#include "tests/ScopedEnvironment.h"
#include "tests/TemporaryDirectory.h"

namespace {

constexpr char szModule[] = TAVARIN_LV2_MODULE "/tavarin.so";
constexpr char szWindowModule[] = TAVARIN_LV2_MODULE "/tavarin_ui.so";
constexpr char szWindow[] = "urn:tavarin:pro:window";
constexpr char szEmbedded[] = "urn:tavarin:pro:embedded-window";
constexpr char szExternal[] = "urn:tavarin:pro:external-window";
// Only a window that is there and turns says this.
constexpr char szWaits[] = "A take waits for the host: Error - Tavarin Pro is not running.";

CPlugInAccess& Access(CPlugInHost& host) {
    return *static_cast<CPlugInHandle*>(host.Handle())->pAccess;
}

bool Within(std::function<bool()> const& condition) {
    for (int nTry = 0; nTry < 3000; ++nTry) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

void Take(CPlugInHost& host) {
    host.Activate();
    host.controls[portCapture] = 1;
    host.SetTransport(0, 0, 1);
    host.Run(1000);
    host.controls[portCapture] = 0;
    host.Run(1000);
}

struct PlugInWindow : testing::Test {
    CTemporaryDirectory place;
    void SetUp() override { setenv("TAVARIN_CAPTURES", place.Path().c_str(), 1); }
    void TearDown() override { unsetenv("TAVARIN_CAPTURES"); }
};

TEST_F(PlugInWindow, OpensForSeveralInstancesOfEveryKindAtOnce) {
    std::vector<std::unique_ptr<CPlugInHost>> hosts;
    std::vector<std::unique_ptr<CPlugInWindowHost>> windows;
    for (CPlugInVariant const& variant : kPlugInVariants) {
        hosts.push_back(std::make_unique<CPlugInHost>(szModule, variant.szUri));
        windows.push_back(
            std::make_unique<CPlugInWindowHost>(szWindowModule, szWindow, hosts.back()->Handle()));
        windows.back()->Show();
        Take(*hosts.back());
    }
    for (std::size_t nWindow = 0; nWindow < windows.size(); ++nWindow) {
        EXPECT_TRUE(Within([&] {
            return windows[nWindow]->Turn() && Access(*hosts[nWindow]).Status().strText == szWaits;
        })) << Access(*hosts[nWindow]).Status().strText;
    }
    // Any of them may go first.
    windows.erase(windows.begin());
    for (auto& window : windows) EXPECT_TRUE(window->Turn());
}

TEST_F(PlugInWindow, LeavesTheWorkstationWithoutAppKit) {
    CPlugInHost host(szModule, "urn:tavarin:pro:link");
    CPlugInWindowHost window(szWindowModule, szWindow, host.Handle());
    window.Show();
    Take(host);
    EXPECT_TRUE(Within([&] { return Access(host).Status().strText == szWaits; }));
    std::ifstream maps("/proc/self/maps");
    const std::string strMaps((std::istreambuf_iterator<char>(maps)), {});
    EXPECT_NE(strMaps.find("tavarin_ui.so"), std::string::npos);
    for (char const* szLibrary : {"gnustep", "libobjc", "TavarinProLink"}) {
        EXPECT_EQ(strMaps.find(szLibrary), std::string::npos) << szLibrary;
    }
}

TEST_F(PlugInWindow, OpensAgainAfterItWasClosed) {
    CPlugInHost host(szModule, "urn:tavarin:pro:apt");
    CPlugInWindowHost window(szWindowModule, szWindow, host.Handle());
    window.Show();
    EXPECT_TRUE(window.Turn());
    window.Hide();
    window.Show();
    Take(host);
    EXPECT_TRUE(Within([&] { return Access(host).Status().strText == szWaits; }));
    EXPECT_TRUE(window.Turn());
}

TEST_F(PlugInWindow, IsTurnedByTheExternalExtensionToo) {
    static int nClosed = 0;
    CExternalHost workstation{[](void*) { ++nClosed; }, "A title of the workstation"};
    CPlugInHost host(szModule, "urn:tavarin:pro:doubler");
    CPlugInWindowHost window(
        szWindowModule, szExternal,
        {{LV2_INSTANCE_ACCESS_URI, host.Handle()}, {szExternalUiHost, &workstation}});
    auto* widget = static_cast<CExternalWidget*>(window.widget);
    ASSERT_NE(widget, nullptr);
    widget->show(widget);
    Take(host);
    EXPECT_TRUE(Within([&] {
        widget->run(widget);
        return Access(host).Status().strText == szWaits;
    }));
    widget->hide(widget);
    EXPECT_EQ(nClosed, 0);
}

// Of a workstation that has its windows in another process than its plug-ins.
TEST_F(PlugInWindow, ReachesThePlugInByMessagesWhereItCannotBeReachedOtherwise) {
    CPlugInHost host(szModule, "urn:tavarin:pro:link");
    LV2_URID_Map* const map = host.Map();
    CPlugInWindowHost window(szWindowModule, szWindow, {{LV2_URID__map, map}});
    window.onMessage = [&host](LV2_Atom const* message) { host.Send(message); };
    const LV2_URID nFormat = host.Number(LV2_ATOM__eventTransfer);
    const auto run = [&] {
        host.Run(64);
        LV2_ATOM_SEQUENCE_FOREACH(&host.Notes(), event) {
            window.TellMessage(nFormat, &event->body);
        }
        return window.Turn();
    };
    window.Show();
    Take(host);
    EXPECT_TRUE(Within([&] { return run() && Access(host).Status().strText == szWaits; }));
    const CScopedEnvironment display("DISPLAY", "");
    window.Hide();
    for (int nCycle = 0; nCycle < 20; ++nCycle) {
        EXPECT_TRUE(run());
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    window.Show();
    // The module hears by message, too, that there is no window.
    EXPECT_TRUE(Within([&] { return !run(); }));
}

/// What stands where on the display.
class CDisplayTree {
public:
    CDisplayTree() : m_pConnection(xcb_connect(nullptr, nullptr)) {}
    ~CDisplayTree() { xcb_disconnect(m_pConnection); }
    CDisplayTree(CDisplayTree const&) = delete;
    CDisplayTree& operator=(CDisplayTree const&) = delete;

    xcb_window_t Root() const {
        return xcb_setup_roots_iterator(xcb_get_setup(m_pConnection)).data->root;
    }

    /// The first window within a window; 0: none.
    xcb_window_t FirstWithin(xcb_window_t window) const {
        const CReply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(m_pConnection, xcb_query_tree(m_pConnection, window), nullptr));
        if (!tree || xcb_query_tree_children_length(tree.get()) == 0) return 0;
        return xcb_query_tree_children(tree.get())[0];
    }

    /// Takes a selection for as long as this object lives.
    void Own(std::string const& strSelection) const {
        const CReply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
            m_pConnection,
            xcb_intern_atom(m_pConnection, 0, static_cast<std::uint16_t>(strSelection.size()),
                            strSelection.data()),
            nullptr));
        const xcb_window_t owner = xcb_generate_id(m_pConnection);
        xcb_create_window(m_pConnection, 0, owner, Root(), 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_set_selection_owner(m_pConnection, owner, atom->atom, XCB_CURRENT_TIME);
        free(xcb_get_input_focus_reply(m_pConnection, xcb_get_input_focus(m_pConnection), nullptr));
    }

    /// Place within the window around it, and size.
    std::array<int, 4> Frame(xcb_window_t window) const {
        const CReply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(
            m_pConnection, xcb_get_geometry(m_pConnection, window), nullptr));
        if (!geometry) return {};
        return {geometry->x, geometry->y, geometry->width, geometry->height};
    }

private:
    template <typename Reply>
    struct CReply : std::unique_ptr<Reply, decltype(&free)> {
        explicit CReply(Reply* reply) : std::unique_ptr<Reply, decltype(&free)>(reply, free) {}
    };

    xcb_connection_t* m_pConnection;
};

// With a workstation that shows everything twice as large.
TEST_F(PlugInWindow, StandsWithinTheWorkstationsWindowInItsSize) {
    const CDisplayTree tree;
    const CWindowHolder workstation(tree.Root(), 1000, 700);
    CPlugInHost host(szModule, "urn:tavarin:pro:apt");
    const float scale = 2;
    const LV2_Options_Option options[] = {
        {LV2_OPTIONS_INSTANCE, 0, host.Number(LV2_UI__scaleFactor), sizeof(scale),
         host.Number("float"), &scale},
        {LV2_OPTIONS_INSTANCE, 0, 0, 0, 0, nullptr}};
    CPlugInWindowHost window(szWindowModule, szEmbedded,
                             {{LV2_INSTANCE_ACCESS_URI, host.Handle()},
                              {LV2_URID__map, host.Map()},
                              {LV2_OPTIONS__options, const_cast<LV2_Options_Option*>(options)},
                              {LV2_UI__parent, reinterpret_cast<void*>(workstation.Id())}});
    const auto holder = static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(window.widget));
    EXPECT_EQ(tree.FirstWithin(static_cast<xcb_window_t>(workstation.Id())), holder);
    const std::array<int, 4> expected{0, 0, 2 * kWindowWidth, 2 * kWindowHeight};
    EXPECT_EQ(tree.Frame(holder), expected);
    EXPECT_TRUE(Within([&] {
        const xcb_window_t view = tree.FirstWithin(holder);
        return window.Turn() && view != 0 && tree.Frame(view) == expected;
    }));
    Take(host);
    EXPECT_TRUE(Within([&] { return window.Turn() && Access(host).Status().strText == szWaits; }));
}

TEST_F(PlugInWindow, NeedsAWayToThePlugIn) {
    EXPECT_THROW(CPlugInWindowHost(szWindowModule, szWindow, std::vector<LV2_Feature>{}),
                 std::runtime_error);
    CPlugInHost host(szModule, "urn:tavarin:pro:link");
    EXPECT_THROW(CPlugInWindowHost(szWindowModule, szExternal, host.Handle()), std::runtime_error);
}

TEST_F(PlugInWindow, TakesTheTrackThatTheWorkstationChose) {
    CPlugInHost host(szModule, "urn:tavarin:pro:apt");
    CPlugInWindowHost window(szWindowModule, szWindow, host.Handle());
    std::vector<float> written;
    window.onWrite = [&written](std::uint32_t nPort, float value) {
        if (nPort == portTrack) written.push_back(value);
    };
    window.Show();
    host.controls[portTrack] = 1;
    Take(host);
    EXPECT_TRUE(Within([&] { return window.Turn() && Access(host).Status().strText == szWaits; }));
    EXPECT_EQ(Access(host).Track(), 1);
    EXPECT_TRUE(written.empty());
}

bool Does(char const* szCommand) {
    return std::system(szCommand) == 0;
}

TEST_F(PlugInWindow, LeavesTheKeysToTheWorkstationUntilTabIsPressed) {
    if (!Does("command -v xdotool >/dev/null")) GTEST_SKIP() << "there is no xdotool";
    CPlugInHost host(szModule, "urn:tavarin:pro:apt");
    CPlugInWindowHost window(szWindowModule, szWindow, host.Handle());
    std::vector<float> written;
    window.onWrite = [&written](std::uint32_t nPort, float value) {
        if (nPort == portCapture) written.push_back(value);
    };
    window.Show();
    Take(host);
    ASSERT_TRUE(Within([&] { return Access(host).Status().strText == szWaits; }));
    ASSERT_TRUE(
        Does("xdotool search --onlyvisible --name 'Tavarin APT Link'"
             " mousemove --sync --window %1 80 255 sleep 0.2"
             " mousedown 1 sleep 0.1 mouseup 1"));
    EXPECT_TRUE(Within([&] { return window.Turn() && written == std::vector<float>{1}; }));
    ASSERT_TRUE(Does("xdotool key space sleep 0.3 key Return sleep 0.5"));
    EXPECT_TRUE(window.Turn());
    EXPECT_EQ(written, std::vector<float>{1});
    // Guide, Dub, Auto switch, Capture.
    ASSERT_TRUE(Does("xdotool key --delay 100 Tab Tab Tab Tab space"));
    EXPECT_TRUE(Within([&] { return window.Turn() && written == std::vector<float>{1, 0}; }));
}

constexpr char szFindLink[] = "xdotool search --onlyvisible --name 'Tavarin Link' ";

// The view hangs in the first thing that it asks a host that has just come.
TEST_F(PlugInWindow, ClosesWhileItWaitsForTheHost) {
    if (!Does("command -v xdotool >/dev/null")) GTEST_SKIP() << "there is no xdotool";
    CPlugInHost host(szModule, "urn:tavarin:pro:link");
    CPlugInWindowHost window(szWindowModule, szWindow, host.Handle());
    window.Show();
    Take(host);
    ASSERT_TRUE(Within([&] { return Access(host).Status().strText == szWaits; }));
    std::atomic<bool> fAsked{false}, fAnswers{false};
    CPeerHost peer;
    peer.AnswerWith([&fAsked, &fAnswers](std::string const&) {
        fAsked = true;
        while (!fAnswers) std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return CPeerHost::Answer{};
    });
    EXPECT_TRUE(Within([&] { return fAsked.load(); }));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_TRUE(window.Turn());
    ASSERT_TRUE(Does((std::string(szFindLink) + "windowactivate --sync key alt+F4").c_str()));
    EXPECT_TRUE(Within([&] { return !window.Turn(); }));
    fAnswers = true;
    EXPECT_NE(Access(host).Status().result, PlugInResult::WindowFailed);
}

// Those of other workstations, which this one knows nothing of.
TEST_F(PlugInWindow, StandsBesideOtherProgramsWindows) {
    if (!Does("command -v xdotool >/dev/null")) GTEST_SKIP() << "there is no xdotool";
    constexpr int nFree = 5;
    const CDisplayTree tree;
    for (int nPlace = 0; nPlace < 8; ++nPlace) {
        if (nPlace != nFree) tree.Own("TAVARIN_PLACE_" + std::to_string(nPlace));
    }
    CPlugInHost host(szModule, "urn:tavarin:pro:link");
    CPlugInWindowHost window(szWindowModule, szWindow, host.Handle());
    window.Show();
    Take(host);
    ASSERT_TRUE(Within([&] { return Access(host).Status().strText == szWaits; }));
    // The window manager's frame is a few pixels wide.
    EXPECT_TRUE(Does(
        (std::string(szFindLink) + "getwindowgeometry --shell | grep -E '^X=(19[0-9]|20[0-9])$'")
            .c_str()));
}

TEST_F(PlugInWindow, SaysThatThereIsNoDisplay) {
    const CScopedEnvironment display("DISPLAY", "");
    CPlugInHost host(szModule, "urn:tavarin:pro:link");
    CPlugInWindowHost window(szWindowModule, szWindow, host.Handle());
    window.Show();
    EXPECT_TRUE(Within([&] { return !window.Turn(); }));
    EXPECT_EQ(Access(host).Status().result, PlugInResult::WindowFailed);
    EXPECT_EQ(Access(host).Status().strText, "No window can be shown: there is no display");
}

/// A display of its own that can be taken away.
class CVirtualDisplay {
public:
    CVirtualDisplay() {
        int ends[2];
        if (pipe(ends) != 0) throw std::runtime_error("no pipe");
        std::string strEnd = std::to_string(ends[1]);
        std::string arguments[] = {"Xvfb", "-displayfd", strEnd, "-nolisten", "tcp"};
        char* list[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(),
                        arguments[3].data(), arguments[4].data(), nullptr};
        const bool fStarted =
            posix_spawnp(&m_nServer, list[0], nullptr, nullptr, list, environ) == 0;
        close(ends[1]);
        char number[16] = {};
        if (fStarted && read(ends[0], number, sizeof(number) - 1) > 0) {
            m_strName = ":" + std::to_string(std::atoi(number));
        }
        close(ends[0]);
    }
    ~CVirtualDisplay() { TakeAway(); }
    CVirtualDisplay(CVirtualDisplay const&) = delete;
    CVirtualDisplay& operator=(CVirtualDisplay const&) = delete;

    std::string const& Name() const { return m_strName; }

    void TakeAway() {
        if (m_nServer == 0) return;
        kill(m_nServer, SIGTERM);
        waitpid(m_nServer, nullptr, 0);
        m_nServer = 0;
    }

private:
    pid_t m_nServer = 0;
    std::string m_strName;
};

TEST_F(PlugInWindow, SaysThatTheDisplayWentAway) {
    CVirtualDisplay own;
    ASSERT_FALSE(own.Name().empty());
    const CScopedEnvironment display("DISPLAY", own.Name().c_str());
    CPlugInHost host(szModule, "urn:tavarin:pro:link");
    CPlugInWindowHost window(szWindowModule, szWindow, host.Handle());
    window.Show();
    Take(host);
    EXPECT_TRUE(Within([&] { return Access(host).Status().strText == szWaits; }));
    own.TakeAway();
    EXPECT_TRUE(Within([&] { return !window.Turn(); }));
    EXPECT_EQ(Access(host).Status().strText, "The window ended by itself. It can be shown again.");
    EXPECT_TRUE(Access(host).IsTakeWaiting());
}

// The window is open while the guide is captured on another track.
struct PlugInWindowOnTheHost : HostProgram {
    void SetUp() override {
        HostProgram::SetUp();
        setenv("TAVARIN_CAPTURES", m_directory.Path().c_str(), 1);
        StartHost({"--session", m_directory.File("session.json")});
    }
    void TearDown() override {
        unsetenv("TAVARIN_CAPTURES");
        HostProgram::TearDown();
    }

    static void Take(CPlugInHost& host, std::int64_t lPosition, float track) {
        host.controls[portTrack] = track;
        host.controls[portCapture] = 1;
        host.SetTransport(0, lPosition, 1);
        for (std::size_t nFrame = 0; nFrame < 4000; ++nFrame) {
            host.inputs[0][nFrame] = std::sin(static_cast<float>(nFrame) * (0.1F + track / 10));
        }
        host.Run(4000);
        host.controls[portCapture] = 0;
        host.Run(10);
    }

    json Processes() {
        EXPECT_EQ(StopHost(), 0);
        m_host.reset();
        return json::parse(
            m_directory.Read("session.json"))["documents"]["audioSuite"]["processes"];
    }
};

TEST_F(PlugInWindowOnTheHost, AlignsWithTheGuideThatAnotherPlugInCapturedSince) {
    CPlugInHost guide(szModule, "urn:tavarin:pro:apt", kRate);
    CPlugInHost dub(szModule, "urn:tavarin:pro:apt", kRate);
    guide.Activate();
    dub.Activate();
    CPlugInWindowHost window(szWindowModule, szWindow, dub.Handle());
    window.Show();
    const auto says = [&](CPlugInHost& host, std::string const& strText) {
        return Within([&] { return window.Turn() && Access(host).Status().strText == strText; });
    };
    Take(dub, 40000, 1);
    EXPECT_TRUE(says(dub, "The host has the take. No guide was captured to align the dub with."));
    EXPECT_EQ(Access(dub).Status().result, PlugInResult::NotAligned);
    Take(guide, 9000, 0);
    EXPECT_TRUE(says(guide, "The host has the take."));
    Take(dub, 40000, 1);
    EXPECT_TRUE(says(dub,
                     "The host has the take. The dub, 0:05.0 to 0:05.5, does not overlap the "
                     "guide, 0:01.1 to 0:01.6."));
    Take(dub, 10000, 1);
    EXPECT_TRUE(says(dub, "The host has the take."));
    const json processes = Processes();
    ASSERT_EQ(processes.size(), 1U);
    std::vector<int> places;
    for (json const& input : processes[0]["inputs"]) {
        places.push_back(input["start"].get<int>());
        places.push_back(input["end"].get<int>());
    }
    EXPECT_EQ(places, (std::vector<int>{9000, 13000, 10000, 14000}));
}

}  // namespace
