// What a plug-in's window costs: from the order to a window that turns, memory on both sides, and
// the workstation's idle call while the window's program is halted. Prints its results as JSON
// lines; needs a display.
//
//   WindowBench WINDOW-PROGRAM [--quick]

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "bench/ResultLog.h"
#include "bench/exchange/BenchProcess.h"
#include "platform/Processes.h"
#include "plugin/WindowProcess.h"

namespace {

constexpr double kMegabyte = 1024;

/// A plug-in that has nothing to say, and notes when its window turned first.
class CIdlePlugIn final : public CPlugInAccess {
public:
    PlugInKind Kind() const override { return PlugInKind::APT; }
    int SampleRate() const override { return 48000; }
    void ViewTurned() override {
        double dNever = 0;
        m_dTurned.compare_exchange_strong(dNever, NowUs());
    }
    std::optional<CTake> PickTake() override { return {}; }
    bool IsTakeWaiting() const override { return false; }
    void TakeHandled(std::int32_t) override {}
    void TakePutBack(TakeFate) override {}
    std::optional<CTake> LastTakeOn(std::int32_t) const override { return {}; }
    std::optional<CGuide> Guide() const override { return {}; }
    std::optional<CTake> LastTake() const override { return {}; }
    std::int32_t Track() const override { return 0; }
    void SetTrack(std::int32_t) override {}
    bool PickReturnRequest(ReturnMode*) override { return false; }
    void SetReturned(std::string const&, std::int64_t) override {}
    CPlugInStatus Status() const override { return {}; }
    void Report(PlugInResult, std::string const&) override {}
    CPlugInActivity Activity() const override { return {}; }

    /// When that was; 0: not yet.
    std::atomic<double> m_dTurned{0};
};

/// A window, served as the plug-in's disk thread does.
class CServedWindow {
public:
    explicit CServedWindow(std::string const& strProgram)
        : m_Window(m_PlugIn, strProgram), m_Thread([this] { Serve(); }) {}
    ~CServedWindow() {
        m_fQuit = true;
        m_Thread.join();
    }

    void Show() {
        CWindowOrder order;
        order.fShow = 1;
        m_Window.Order(order);
    }

    /// When the window turned first; 0 when it did not within ten seconds.
    double Turned() const {
        for (int nTry = 0; nTry < 10000 && m_PlugIn.m_dTurned == 0; ++nTry) SleepUs(1000);
        return m_PlugIn.m_dTurned;
    }

    CWindowProcess& Window() { return m_Window; }

private:
    void Serve() {
        while (!m_fQuit) {
            m_Window.Serve();
            SleepUs(10000);
        }
    }

    CIdlePlugIn m_PlugIn;
    CWindowProcess m_Window;
    std::atomic<bool> m_fQuit{false};
    std::thread m_Thread;
};

pid_t OnlyChild() {
    for (auto const& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream list(task.path() / "children");
        if (pid_t nChild = 0; list >> nChild) return nChild;
    }
    return 0;
}

// A line of the kernel's account of a process's memory, in megabytes.
double Memory(std::string const& strProcess, std::string const& strName) {
    std::ifstream lines("/proc/" + strProcess + "/smaps_rollup");
    std::string strField;
    while (lines >> strField) {
        double dKilobytes = 0;
        if (strField == strName + ":" && lines >> dKilobytes) return dKilobytes / kMegabyte;
    }
    return 0;
}

void MeasureOpening(std::string const& strProgram, int nRounds) {
    CSamples times;
    for (int nRound = 0; nRound < nRounds; ++nRound) {
        CServedWindow window(strProgram);
        const double dBegin = NowUs();
        window.Show();
        const double dTurned = window.Turned();
        Check(dTurned != 0, "no window opened");
        times.Add((dTurned - dBegin) / 1000);
    }
    PrintSeries("window: show to first turn", "tavarin-view", "ms", times);
}

void MeasureOpened(std::string const& strProgram, bool fQuick) {
    const double dBefore = Memory("self", "Rss");
    CServedWindow window(strProgram);
    window.Show();
    Check(window.Turned() != 0, "no window opened");
    SleepUs(1000000);
    PrintValue("window: memory in the workstation", "tavarin-view", "MB",
               Memory("self", "Rss") - dBefore);
    const pid_t nProcess = OnlyChild();
    const std::string strProcess = std::to_string(nProcess);
    PrintValue("window: resident memory", "tavarin-view", "MB", Memory(strProcess, "Rss"));
    PrintValue("window: memory, what is shared divided", "tavarin-view", "MB",
               Memory(strProcess, "Pss"));
    const double dUsed = ProcessorSecondsOf(nProcess);
    const double dSeconds = fQuick ? 2 : 10;
    SleepUs(dSeconds * 1e6);
    PrintValue("window: idle, of a core", "tavarin-view", "%",
               100 * (ProcessorSecondsOf(nProcess) - dUsed) / dSeconds);

    kill(nProcess, SIGSTOP);
    CSamples calls;
    for (int nCall = 0; nCall < 3000; ++nCall) {
        const double dBegin = NowUs();
        window.Window().TakeNote();
        calls.Add(NowUs() - dBegin);
        SleepUs(1000);
    }
    PrintSeries("window: idle call, window halted", "tavarin-view", "us", calls);
}

}  // namespace

int main(int argc, char** argv) {
    Check(argc > 1, "which program shows the window?");
    const bool fQuick = argc > 2 && std::strcmp(argv[2], "--quick") == 0;
    MeasureOpened(argv[1], fQuick);
    MeasureOpening(argv[1], fQuick ? 5 : 20);
    return 0;
}
