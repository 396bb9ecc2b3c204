// One command over the link against the floor of its protocol and against other ways to ask another
// process, in one run, by turns: 200 bytes out, 100 back. Prints its results as JSON lines.
//
//   ExchangeBench HOST-PROGRAM [--quick] [WORK...]    only the works whose names begin with one of
//                                                     the words

#include <sys/mman.h>

#include <cstring>
#include <random>
#include <set>
#include <span>

#include "bench/ResultLog.h"
#include "bench/exchange/CommandSteps.h"
#include "bench/exchange/ExchangePeer.h"
#include "bench/exchange/RealHostBench.h"

namespace {

const CPeerKind link{"link", MakeLinkPeer};
const CPeerKind floorKind{"floor", MakeFloorPeer};
const CPeerKind socketKept{"Unix socket", MakeSocketPeer};

const CPeerKind everyKind[] = {
    link,
    floorKind,
    socketKept,
    {"Unix socket per call", MakeSocketPerCallPeer},
    {"POSIX message queue", MakePosixQueuePeer},
    {"Boost message_queue", MakeBoostQueuePeer},
#ifdef TAVARIN_BENCH_ZEROMQ
    {"ZeroMQ", MakeZeroMqPeer},
#endif
#ifdef TAVARIN_BENCH_DBUS
    {"D-Bus", MakeDBusPeer},
#endif
#ifdef TAVARIN_BENCH_NNG
    // Last: it cannot go on in a process that was forked while it ran.
    {"nng", MakeNngPeer},
#endif
};

const CPeerKind linkAndSocket[] = {link, socketKept};
const CPeerKind linkFloorAndSocket[] = {link, floorKind, socketKept};
const CPeerKind forManyClients[] = {
    link, floorKind, {"floor, locks every 2 ms", MakePacedFloorPeer}, socketKept};

struct CContender {
    const char* szName;
    std::unique_ptr<CExchangePeer> pPeer;
    CSamples times;
};

std::vector<CContender> Start(std::span<CPeerKind const> kinds, CServerManner const& manner) {
    std::vector<CContender> contenders;
    for (CPeerKind const& kind : kinds)
        if (auto peer = kind.make(manner))
            contenders.push_back({kind.szName, std::move(peer), CSamples()});
    PlaceClient(manner.placement);
    return contenders;
}

double TimeCall(CExchangePeer& peer) {
    const double dStart = NowUs();
    peer.Call();
    return NowUs() - dStart;
}

void Print(std::string const& work, std::vector<CContender> const& contenders) {
    for (CContender const& contender : contenders)
        PrintSeries(work, contender.szName, "us", contender.times);
}

// By turns of a few calls; the first ones of each turn bring its server back to its senses.
void MeasureWarm(std::string const& work, std::span<CPeerKind const> kinds, EPlacement placement,
                 int nTurns) {
    constexpr int kCallsToWarm = 10;
    constexpr int kCalls = 40;
    std::vector<CContender> contenders = Start(kinds, {placement});
    for (int nTurn = 0; nTurn < nTurns; ++nTurn)
        for (CContender& contender : contenders) {
            for (int i = 0; i < kCallsToWarm; ++i) contender.pPeer->Call();
            for (int i = 0; i < kCalls; ++i) contender.times.Add(TimeCall(*contender.pPeer));
        }
    Print(work, contenders);
}

void MeasureAfterIdleness(std::string const& work, EPlacement placement, int nRounds) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> pause(40'000, 60'000);
    std::vector<CContender> contenders = Start(linkFloorAndSocket, {placement});
    for (int nRound = 0; nRound < nRounds; ++nRound)
        for (CContender& contender : contenders) {
            SleepUs(pause(random));
            contender.times.Add(TimeCall(*contender.pPeer));
        }
    Print(work, contenders);
}

// Where the time goes.
void MeasureSteps(std::string const& work, EPlacement placement, double dPauseUs, int nRounds) {
    const auto host = MakeLinkPeer({placement});
    PlaceClient(placement);
    for (int i = 0; i < 20; ++i) host->Call();
    MeasureCommandSteps(work, nRounds, dPauseUs);
}

void KeepBusy(int nCore) {
    RunOnCore(nCore);
    for (volatile bool fGoOn = true; fGoOn;) {
    }
}

void MeasureBesideBusyProcesses(std::string const& work, EPlacement placement, int nTurns) {
    std::vector<std::unique_ptr<CChild>> busy;
    for (int nCore = 0; nCore < sysconf(_SC_NPROCESSORS_ONLN); ++nCore)
        busy.push_back(std::make_unique<CChild>([nCore] { KeepBusy(nCore); }));
    MeasureWarm(work, linkFloorAndSocket, placement, nTurns);
}

void MeasureLongScript(std::string const& work, int nRounds) {
    constexpr int kScriptUs = 20'000;
    std::vector<CContender> contenders = Start(linkAndSocket, {EPlacement::Free, kScriptUs});
    std::vector<CSamples> shares(contenders.size());
    for (int nRound = 0; nRound < nRounds; ++nRound)
        for (std::size_t i = 0; i < contenders.size(); ++i) {
            const double dUsed = ProcessorUs();
            const double dTime = TimeCall(*contenders[i].pPeer);
            contenders[i].times.Add(dTime);
            shares[i].Add((ProcessorUs() - dUsed) / dTime * 100);
        }
    Print(work, contenders);
    for (std::size_t i = 0; i < contenders.size(); ++i)
        PrintSeries(work + ", client's processor time", contenders[i].szName, "% of the wait",
                    shares[i]);
}

constexpr int kClients = 8;

struct CClientCounts {
    volatile bool fGo = false;
    volatile bool fStop = false;
    volatile long lCalls[kClients] = {};
};

// How many calls each of eight processes gets done in the given time.
std::vector<double> CountCalls(CExchangePeer& peer, double dUs) {
    void* const pShared = mmap(nullptr, sizeof(CClientCounts), PROT_READ | PROT_WRITE,
                               MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    Check(pShared != MAP_FAILED, "no shared memory");
    auto& counts = *new (pShared) CClientCounts;
    {
        std::vector<std::unique_ptr<CChild>> clients;
        for (int i = 0; i < kClients; ++i)
            clients.push_back(std::make_unique<CChild>([&, i] {
                PlaceClient(EPlacement::Free);
                peer.Reconnect();
                while (!counts.fGo) SleepUs(1000);
                while (!counts.fStop) {
                    peer.Call();
                    counts.lCalls[i] = counts.lCalls[i] + 1;
                }
                // Ended from outside, it would never let go of what it shares with the others.
                for (;;) pause();
            }));
        SleepUs(100'000);
        counts.fGo = true;
        SleepUs(dUs);
        counts.fStop = true;
        SleepUs(100'000);
    }
    std::vector<double> calls;
    for (long lCalls : counts.lCalls) calls.push_back(static_cast<double>(lCalls));
    munmap(pShared, sizeof(CClientCounts));
    return calls;
}

void MeasureManyClients(std::string const& work, int nRounds) {
    constexpr double kRoundUs = 500'000;
    std::vector<CContender> contenders = Start(forManyClients, {EPlacement::Free, 0, kClients});
    std::vector<CSamples> shares(contenders.size());
    for (int nRound = 0; nRound < nRounds; ++nRound)
        for (std::size_t i = 0; i < contenders.size(); ++i) {
            const std::vector<double> calls = CountCalls(*contenders[i].pPeer, kRoundUs);
            double dTotal = 0;
            for (double dCalls : calls) dTotal += dCalls;
            contenders[i].times.Add(dTotal / kRoundUs * 1e6);
            const double dSlowest = *std::min_element(calls.begin(), calls.end());
            shares[i].Add(dTotal > 0 ? dSlowest / dTotal * 100 : 0);
        }
    for (std::size_t i = 0; i < contenders.size(); ++i) {
        PrintSeries(work, contenders[i].szName, "exchanges a second", contenders[i].times);
        PrintSeries(work + ", slowest client's share", contenders[i].szName, "%", shares[i]);
    }
}

char const* szHostProgram = nullptr;

struct CWork {
    const char* szName;
    std::function<void(std::string const& name, int nScale)> measure;
};

// `nScale` is 1 for a quick run.
const CWork works[] = {
    {"warm, apart",
     [](auto& name, int n) { MeasureWarm(name, everyKind, EPlacement::Apart, 20 * n); }},
    {"warm, on one core",
     [](auto& name, int n) { MeasureWarm(name, everyKind, EPlacement::Together, 10 * n); }},
    {"warm, unpinned",
     [](auto& name, int n) { MeasureWarm(name, everyKind, EPlacement::Free, 20 * n); }},
    {"idle, apart",
     [](auto& name, int n) { MeasureAfterIdleness(name, EPlacement::Apart, 40 * n); }},
    {"idle, unpinned",
     [](auto& name, int n) { MeasureAfterIdleness(name, EPlacement::Free, 40 * n); }},
    {"steps of a command, warm, apart",
     [](auto& name, int n) { MeasureSteps(name, EPlacement::Apart, 0, 200 * n); }},
    {"steps of a command after 50 ms, apart",
     [](auto& name, int n) { MeasureSteps(name, EPlacement::Apart, 50'000, 20 * n); }},
    {"steps of a command after 50 ms, unpinned",
     [](auto& name, int n) { MeasureSteps(name, EPlacement::Free, 50'000, 20 * n); }},
    {"busy, apart",
     [](auto& name, int n) { MeasureBesideBusyProcesses(name, EPlacement::Apart, 10 * n); }},
    {"busy, unpinned",
     [](auto& name, int n) { MeasureBesideBusyProcesses(name, EPlacement::Free, 10 * n); }},
    {"20 ms script", [](auto& name, int n) { MeasureLongScript(name, 30 * n); }},
    {"eight clients", [](auto& name, int n) { MeasureManyClients(name, 2 * n); }},
    {"real host, apart",
     [](auto& name, int n) { MeasureRealHost(name, szHostProgram, EPlacement::Apart, 4 * n); }},
    {"real host, on one core",
     [](auto& name, int n) { MeasureRealHost(name, szHostProgram, EPlacement::Together, 2 * n); }},
};

}  // namespace

int main(int argc, char** argv) {
    int nScale = 4;
    bool fFine = true;
    std::vector<std::string> wanted;
    Check(argc > 1, "which program is the host?");
    szHostProgram = argv[1];
    for (int i = 2; i < argc; ++i)
        if (std::strcmp(argv[i], "--quick") == 0)
            nScale = 1;
        else
            wanted.emplace_back(argv[i]);
    for (CWork const& work : works) {
        const std::string name = work.szName;
        const bool fWanted =
            wanted.empty() || std::any_of(wanted.begin(), wanted.end(),
                                          [&](auto& w) { return name.rfind(w, 0) == 0; });
        if (!fWanted) continue;
        // A process of its own for each: what a library leaves behind ends with it.
        const pid_t nWorker = fork();
        if (nWorker == 0) {
            EndWithParent();
            work.measure(name, nScale);
            return 0;
        }
        int nStatus = 0;
        waitpid(nWorker, &nStatus, 0);
        fFine = fFine && nStatus == 0;
    }
    return fFine ? 0 : 1;
}
