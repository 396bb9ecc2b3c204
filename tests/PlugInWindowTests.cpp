#include <gtest/gtest.h>

#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include "plugin/ExternalWindow.h"
#include "plugin/PlugInAccess.h"
#include "tests/PlugInHost.h"
#include "tests/PlugInWindowHost.h"
#include "tests/TemporaryDirectory.h"

namespace {

constexpr char szModule[] = TAVARIN_LV2_MODULE "/tavarin.so";
constexpr char szWindowModule[] = TAVARIN_LV2_MODULE "/tavarin_ui.so";
constexpr char szWindow[] = "urn:tavarin:pro:window";
constexpr char szExternal[] = "urn:tavarin:pro:external-window";

CPlugInAccess& Access(CPlugInHost& host) {
    return *static_cast<CPlugInHandle*>(host.Handle())->pAccess;
}

void Pause() {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

struct PlugInWindow : testing::Test {
    CTemporaryDirectory place;
    void SetUp() override { setenv("TAVARIN_CAPTURES", place.Path().c_str(), 1); }
    void TearDown() override { unsetenv("TAVARIN_CAPTURES"); }
};

// The first of all, while AppKit was not there yet.
TEST_F(PlugInWindow, LeavesTheProcessAsItWas) {
    std::setlocale(LC_ALL, "C");
    void (*const handler)(int) = [](int) {};
    for (const int nSignal : {SIGCHLD, SIGPIPE, SIGTERM}) std::signal(nSignal, handler);
    CPlugInHost host(szModule, "urn:tavarin:pro:link");
    CPlugInWindowHost window(szWindowModule, szWindow, host.Handle());
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    for (const int nSignal : {SIGCHLD, SIGPIPE, SIGTERM}) {
        EXPECT_EQ(std::signal(nSignal, SIG_DFL), handler) << nSignal;
    }
}

TEST_F(PlugInWindow, OpensForSeveralInstancesOfEveryKindAtOnce) {
    std::vector<std::unique_ptr<CPlugInHost>> hosts;
    std::vector<std::unique_ptr<CPlugInWindowHost>> windows;
    for (int nRound = 0; nRound < 2; ++nRound) {
        for (CPlugInVariant const& variant : kPlugInVariants) {
            hosts.push_back(std::make_unique<CPlugInHost>(szModule, variant.szUri));
            windows.push_back(std::make_unique<CPlugInWindowHost>(szWindowModule, szWindow,
                                                                  hosts.back()->Handle()));
            windows.back()->Show();
        }
    }
    for (int nTurn = 0; nTurn < 5; ++nTurn) {
        for (auto& window : windows) EXPECT_TRUE(window->Turn());
        Pause();
    }
    for (auto& host : hosts) {
        EXPECT_NE(Access(*host).Status().result, PlugInResult::WindowFailed);
    }
    // Any of them may go first.
    windows.erase(windows.begin());
    for (auto& window : windows) EXPECT_TRUE(window->Turn());
}

TEST_F(PlugInWindow, OpensAgainAfterItWasClosed) {
    CPlugInHost host(szModule, "urn:tavarin:pro:apt");
    for (int nRound = 0; nRound < 3; ++nRound) {
        CPlugInWindowHost window(szWindowModule, szWindow, host.Handle());
        window.Show();
        EXPECT_TRUE(window.Turn());
        window.Hide();
        EXPECT_TRUE(window.Turn());
        window.Show();
        EXPECT_TRUE(window.Turn());
    }
}

TEST_F(PlugInWindow, IsTurnedByTheExternalExtensionToo) {
    static int nClosed = 0;
    CExternalHost workstation{[](void*) { ++nClosed; }, "A title of the workstation"};
    CPlugInHost host(szModule, "urn:tavarin:pro:doubler");
    CPlugInWindowHost window(szWindowModule, szExternal, host.Handle(), szExternalUiHost,
                             &workstation);
    auto* widget = static_cast<CExternalWidget*>(window.widget);
    ASSERT_NE(widget, nullptr);
    widget->show(widget);
    for (int nTurn = 0; nTurn < 3; ++nTurn) widget->run(widget);
    widget->hide(widget);
    EXPECT_EQ(nClosed, 0);
}

TEST_F(PlugInWindow, NeedsThePlugInItself) {
    EXPECT_THROW(CPlugInWindowHost(szWindowModule, szWindow, nullptr), std::runtime_error);
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
    Access(host).SetTrack(1);
    window.Turn();
    window.Turn();
    EXPECT_EQ(Access(host).Track(), 1);
    EXPECT_TRUE(written.empty());
}

TEST_F(PlugInWindow, TellsThatATakeWaitsForAHost) {
    CPlugInHost host(szModule, "urn:tavarin:pro:link");
    CPlugInWindowHost window(szWindowModule, szWindow, host.Handle());
    window.Show();
    host.Activate();
    host.controls[portCapture] = 1;
    host.Run(1000);
    host.Deactivate();
    for (int nTry = 0; nTry < 1000 && Access(host).Status().result != PlugInResult::NoHost;
         ++nTry) {
        window.Turn();
        Pause();
    }
    EXPECT_EQ(Access(host).Status().result, PlugInResult::NoHost);
    EXPECT_EQ(Access(host).Status().strText,
              "A take waits for the host: Error - Tavarin Pro is not running.");
    EXPECT_TRUE(Access(host).IsTakeWaiting());
}

}  // namespace
