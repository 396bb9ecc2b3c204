// Runs one plug-in of each kind on a JACK server for a long time, with captures, returns and
// windows that open and close, and says at the end what it cost. scripts/plugin-stress does the
// rest.

#include <jack/jack.h>
#include <jack/transport.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <memory>
#include <thread>

#include "tests/PlugInHost.h"
#include "tests/PlugInWindowHost.h"

namespace {

using namespace std::chrono;

constexpr milliseconds kTurn{30};
constexpr seconds kTakeEvery{6};
constexpr seconds kTakeLength{3};
constexpr seconds kWindowEvery{10};
constexpr seconds kWindowLength{7};
constexpr seconds kReportEvery{60};
constexpr seconds kHostEvery{30};
constexpr seconds kHostLife{29};
constexpr char szWindowUri[] = "urn:tavarin:pro:window";
constexpr char const* kUris[] = {"urn:tavarin:pro:link", "urn:tavarin:pro:apt",
                                 "urn:tavarin:pro:doubler"};

double Seconds(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

long ResidentKilobytes() {
    std::ifstream statm("/proc/self/statm");
    long nTotal = 0;
    long nResident = 0;
    statm >> nTotal >> nResident;
    return nResident * (sysconf(_SC_PAGESIZE) / 1024);
}

struct CPlugInSlot {
    std::unique_ptr<CPlugInHost> host;
    std::unique_ptr<CPlugInWindowHost> window;
    std::atomic<float> capture{0};
    std::atomic<float> returned{0};
    std::atomic<float> track{0};
    std::atomic<float> result{0};
};

// How long something took of each cycle.
struct CRunTimes {
    std::atomic<double> dWorstWall{0};
    std::atomic<double> dWorstCpu{0};
    std::atomic<double> dTotal{0};
    std::atomic<long> nRuns{0};
    std::atomic<long> nHeavy{0};  ///< over a tenth of the cycle

    template <typename Action>
    void Measure(double dCycle, Action action) {
        const double dWall = Seconds(CLOCK_MONOTONIC);
        const double dCpu = Seconds(CLOCK_THREAD_CPUTIME_ID);
        action();
        const double dTook = Seconds(CLOCK_THREAD_CPUTIME_ID) - dCpu;
        dWorstCpu = std::max(dWorstCpu.load(), dTook);
        dWorstWall = std::max(dWorstWall.load(), Seconds(CLOCK_MONOTONIC) - dWall);
        dTotal = dTotal + dTook;
        ++nRuns;
        if (dTook > 0.1 * dCycle) ++nHeavy;
    }
};

struct CStress {
    jack_client_t* client = nullptr;
    std::array<CPlugInSlot, std::size(kUris)> slots;
    std::uint32_t nNoise = 1;
    std::int64_t lExpected = -1;
    double dCycle = 0;
    std::atomic<long> nCycles{0};
    std::atomic<long> nXruns{0};
    CRunTimes plugIns;
    CRunTimes yardstick;

    static int CountXrun(void* data) {
        ++static_cast<CStress*>(data)->nXruns;
        return 0;
    }

    static int Process(jack_nframes_t nFrames, void* data) {
        static_cast<CStress*>(data)->Cycle(nFrames);
        return 0;
    }

    // Some microseconds of arithmetic that touch no memory: what the machine adds to them it adds
    // to the plug-ins as well.
    void Yardstick() {
        for (int nStep = 0; nStep < 2000; ++nStep) nNoise = nNoise * 1664525 + 1013904223;
        asm volatile("" : : "r"(nNoise));
    }

    void Cycle(jack_nframes_t nFrames) {
        jack_position_t position{};
        const bool fRolling = jack_transport_query(client, &position) == JackTransportRolling;
        for (CPlugInSlot& slot : slots) {
            yardstick.Measure(dCycle, [this] { Yardstick(); });
            if (!slot.host) continue;
            CPlugInHost& host = *slot.host;
            host.controls[portCapture] = slot.capture;
            host.controls[portReturn] = slot.returned;
            host.controls[portTrack] = slot.track;
            for (jack_nframes_t nFrame = 0; nFrame < nFrames; ++nFrame) {
                nNoise = nNoise * 1664525 + 1013904223;
                host.inputs[0][nFrame] = static_cast<float>(static_cast<int>(nNoise)) / 4e9F;
            }
            host.SetTransport(0, position.frame, fRolling ? 1.0F : 0.0F);
            plugIns.Measure(dCycle, [&host, nFrames] { host.Run(nFrames); });
            slot.result = host.controls[portResult];
        }
        ++nCycles;
    }
};

void Report(const char* szWhat, CRunTimes const& times, double dCycle) {
    const double dMean = times.dTotal / static_cast<double>(std::max(1L, times.nRuns.load()));
    std::printf(
        "  %s: mean %.2f us, worst %.1f us (%.2f %%), by the clock %.1f us, over a tenth "
        "of the cycle %ld of %ld\n",
        szWhat, 1e6 * dMean, 1e6 * times.dWorstCpu, 100 * times.dWorstCpu / dCycle,
        1e6 * times.dWorstWall, times.nHeavy.load(), times.nRuns.load());
}

void Report(CStress const& stress, seconds elapsed) {
    std::printf("%5lld s  cycles %ld  dropouts %ld  results %g %g %g  resident %ld kB\n",
                static_cast<long long>(elapsed.count()), stress.nCycles.load(),
                stress.nXruns.load(), stress.slots[0].result.load(), stress.slots[1].result.load(),
                stress.slots[2].result.load(), ResidentKilobytes());
    Report("plug-ins ", stress.plugIns, stress.dCycle);
    Report("yardstick", stress.yardstick, stress.dCycle);
    std::fflush(stdout);
}

/// The reference host, which is killed without a word every half minute and comes back one second
/// later. It is killed while nobody waits for its answer: whoever does waits without limit.
class CMortalHost {
public:
    explicit CMortalHost(std::string strProgram) : m_strProgram(std::move(strProgram)) {}
    ~CMortalHost() { Kill(); }

    void Turn(seconds elapsed) {
        if (m_strProgram.empty()) return;
        const bool fAlive = elapsed % kHostEvery < kHostLife;
        if (fAlive && m_nProcess == 0) Start();
        if (!fAlive && m_nProcess != 0) Kill();
    }

private:
    void Start() {
        std::string strTracks = "Guide,Dub,Out";
        std::array<char*, 5> arguments{m_strProgram.data(), const_cast<char*>("--quiet"),
                                       const_cast<char*>("--tracks"), strTracks.data(), nullptr};
        if (posix_spawn(&m_nProcess, m_strProgram.c_str(), nullptr, nullptr, arguments.data(),
                        environ) != 0) {
            m_nProcess = 0;
        }
    }
    void Kill() {
        if (m_nProcess == 0) return;
        kill(m_nProcess, SIGKILL);
        waitpid(m_nProcess, nullptr, 0);
        m_nProcess = 0;
    }

    std::string m_strProgram;
    pid_t m_nProcess = 0;
};

void TurnWindows(CStress& stress, seconds elapsed, char const* szModule) {
    const bool fOpen = elapsed % kWindowEvery < kWindowLength;
    for (CPlugInSlot& slot : stress.slots) {
        if (fOpen && slot.host && !slot.window) {
            slot.window =
                std::make_unique<CPlugInWindowHost>(szModule, szWindowUri, slot.host->Handle());
            slot.window->Show();
        } else if (!fOpen && slot.window) {
            slot.window->Hide();
            slot.window.reset();
        }
        if (slot.window) slot.window->Turn();
    }
}

// Takes come every few seconds, guides and dubs in turn, and now and then a return is wanted.
void TurnControls(CStress& stress, seconds elapsed) {
    const bool fTake = elapsed % kTakeEvery < kTakeLength;
    const auto nTake = elapsed / kTakeEvery;
    for (CPlugInSlot& slot : stress.slots) {
        slot.capture = fTake ? 1.0F : 0.0F;
        slot.track = static_cast<float>(nTake % 2);
        slot.returned = nTake % 4 == 3 ? 1.0F : 0.0F;
    }
    const bool fRolls = elapsed % kTakeEvery < kTakeEvery - seconds(1);
    static bool fWasRolling = false;
    if (fRolls == fWasRolling) return;
    fWasRolling = fRolls;
    if (fRolls) {
        jack_transport_locate(stress.client, 48000 * static_cast<jack_nframes_t>(nTake % 5));
        jack_transport_start(stress.client);
    } else {
        jack_transport_stop(stress.client);
    }
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Runs the plug-ins for a long time and measures them.");
    std::string strModules;
    double dMinutes = 30;
    std::string strHost;
    bool fWindows = false;
    bool fNone = false;
    app.add_option("modules", strModules, "directory with the plug-ins' modules")->required();
    app.add_flag("--none", fNone, "no plug-ins: what the machine does by itself");
    app.add_option("--minutes", dMinutes, "how long");
    app.add_option("--host", strHost, "the reference host's program, to be killed and restarted");
    app.add_flag("--windows", fWindows, "open and close windows");
    CLI11_PARSE(app, argc, argv);

    CStress stress;
    stress.client = jack_client_open("plugin-stress", JackNoStartServer, nullptr);
    if (stress.client == nullptr) {
        std::fprintf(stderr, "plugin-stress: no JACK server\n");
        return 1;
    }
    const auto dRate = static_cast<double>(jack_get_sample_rate(stress.client));
    stress.dCycle = jack_get_buffer_size(stress.client) / dRate;
    for (std::size_t nSlot = 0; !fNone && nSlot < stress.slots.size(); ++nSlot) {
        stress.slots[nSlot].host = std::make_unique<CPlugInHost>(
            (strModules + "/tavarin.so").c_str(), kUris[nSlot], dRate);
        stress.slots[nSlot].host->Activate();
    }
    jack_set_process_callback(stress.client, CStress::Process, &stress);
    jack_set_xrun_callback(stress.client, CStress::CountXrun, &stress);
    jack_activate(stress.client);

    const std::string strWindows = strModules + "/tavarin_ui.so";
    const auto begin = steady_clock::now();
    const auto length = duration_cast<seconds>(duration<double>(60 * dMinutes));
    seconds reported{-1};
    CMortalHost host(strHost);
    for (;;) {
        const auto elapsed = duration_cast<seconds>(steady_clock::now() - begin);
        if (elapsed >= length) break;
        if (elapsed % kReportEvery == seconds(0) && elapsed != reported) {
            reported = elapsed;
            Report(stress, elapsed);
        }
        host.Turn(elapsed);
        TurnControls(stress, elapsed);
        if (fWindows) TurnWindows(stress, elapsed, strWindows.c_str());
        std::this_thread::sleep_for(kTurn);
    }
    Report(stress, length);
    jack_deactivate(stress.client);
    for (CPlugInSlot& slot : stress.slots) slot.window.reset();
    for (CPlugInSlot& slot : stress.slots) slot.host.reset();
    jack_client_close(stress.client);
    // What the machine adds to a run it adds to the yardstick as well.
    const bool fLight = stress.plugIns.dWorstCpu < 0.1 * stress.dCycle ||
                        stress.plugIns.nHeavy <= 2 * stress.yardstick.nHeavy;
    std::printf("runs over a tenth of the cycle: %s\n",
                fLight ? "none, or no more than the machine makes" : "TOO MANY");
    return fLight ? 0 : 1;
}
