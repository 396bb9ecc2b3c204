// One exchange over the link against the same round trip over a Unix-domain socket: 200 bytes out,
// 100 bytes back, in one run, the two in turn; first warm, then after 50 +- 10 ms of idleness.

#include <sys/socket.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "LatencyStatistics.h"
#include "host/LinkServer.h"
#include "link/LinkClock.h"
#include "link/MappedSegment.h"
#include "link/TANClientInterProcess.h"

namespace {

constexpr int kHost = 1;
constexpr std::size_t kRequestSize = 200;
constexpr std::size_t kReplySize = 100;
constexpr int kWarmRounds = 20'000;
constexpr int kIdleRounds = 200;

double NowUs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

void SleepUs(double dMicroseconds) {
    usleep(static_cast<useconds_t>(dMicroseconds));
}

void Check(bool fHolds, const char* szWhat) {
    if (fHolds) return;
    std::fprintf(stderr, "bench: %s\n", szWhat);
    std::exit(1);
}

// A child process that ends when this object does.
class CChild {
public:
    template <typename Body>
    explicit CChild(Body body) : m_nProcess(fork()) {
        if (m_nProcess == 0) {
            body();
            _exit(0);
        }
    }
    ~CChild() {
        kill(m_nProcess, SIGTERM);
        waitpid(m_nProcess, nullptr, 0);
    }

private:
    pid_t m_nProcess;
};

void RunHost() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    const CLinkServer server(kHost, true, [](std::string const&) {
        return CServerReply{std::string(kReplySize, 'r'), "", 0};
    });
    int nSignal = 0;
    sigwait(&signals, &nSignal);
}

bool ReadAll(int nSocket, char* pBytes, std::size_t nSize) {
    for (std::size_t nDone = 0; nDone < nSize;) {
        const ssize_t nRead = read(nSocket, pBytes + nDone, nSize - nDone);
        if (nRead <= 0) return false;
        nDone += static_cast<std::size_t>(nRead);
    }
    return true;
}

void EchoOverSocket(int nSocket) {
    char request[kRequestSize];
    const std::string strReply(kReplySize, 'r');
    while (ReadAll(nSocket, request, sizeof(request))) {
        if (write(nSocket, strReply.data(), strReply.size()) < 0) return;
    }
}

struct Peers {
    explicit Peers(int nSocketToEcho) : nSocket(nSocketToEcho) {}

    const int nSocket;
    CTANClientInterProcess client;
    std::string strRequest = std::string(kRequestSize, 'q');
    std::string strReply;

    // One command as a view makes it: the host check and the exchange.
    double TimeLink() {
        const double dStart = NowUs();
        const int id = client.GetCurrentTANHost();
        const int nStatus = client.SendTANMessage(id, strRequest, strReply, -1);
        const double dTime = NowUs() - dStart;
        Check(nStatus == 0 && strReply.size() == kReplySize, "the link gave a wrong reply");
        return dTime;
    }

    double TimeSocket() {
        char reply[kReplySize];
        const double dStart = NowUs();
        Check(write(nSocket, strRequest.data(), kRequestSize) == ssize_t{kRequestSize} &&
                  ReadAll(nSocket, reply, sizeof(reply)),
              "the socket failed");
        return NowUs() - dStart;
    }
};

void Report(const char* szRow, CLatencyStatistics const& link, CLatencyStatistics const& socket) {
    std::printf("%-28s %10.1f %10.1f %10.1f %10.1f %9.2f %9.2f\n", szRow, link.Percentile(50),
                link.Percentile(99), socket.Percentile(50), socket.Percentile(99),
                link.Percentile(50) / socket.Percentile(50),
                link.Percentile(99) / socket.Percentile(99));
}

void WaitForHost(CTANClientInterProcess& client) {
    for (int nTry = 0; nTry < 500; ++nTry) {
        if (client.GetCurrentIdFromMainDirectory() == kHost) return;
        SleepUs(10'000);
    }
    Check(false, "the host did not start; is another one running?");
}

void MeasureWarm(Peers& peers) {
    CLatencyStatistics link, socket;
    for (int nRound = 0; nRound < kWarmRounds; ++nRound) {
        const double dLink = peers.TimeLink();
        const double dSocket = peers.TimeSocket();
        if (nRound < kWarmRounds / 20) continue;
        link.Add(dLink);
        socket.Add(dSocket);
    }
    Report("warm, in turn", link, socket);
}

void MeasureWarmAlone(Peers& peers) {
    CLatencyStatistics link, socket;
    for (int nRound = 0; nRound < kWarmRounds; ++nRound) link.Add(peers.TimeLink());
    for (int nRound = 0; nRound < kWarmRounds; ++nRound) socket.Add(peers.TimeSocket());
    Report("warm, one after the other", link, socket);
}

void MeasureIdle(Peers& peers) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> pause(40'000, 60'000);
    CLatencyStatistics link, socket;
    for (int nRound = 0; nRound < kIdleRounds; ++nRound) {
        SleepUs(pause(random));
        link.Add(peers.TimeLink());
        SleepUs(pause(random));
        socket.Add(peers.TimeSocket());
    }
    Report("after 50 +- 10 ms idle", link, socket);
}

}  // namespace

int main() {
    int sockets[2];
    Check(socketpair(AF_UNIX, SOCK_STREAM, 0, sockets) == 0, "no socket pair");
    const CChild host(RunHost);
    const CChild echo([&] {
        close(sockets[0]);
        EchoOverSocket(sockets[1]);
    });
    close(sockets[1]);

    Peers peers(sockets[0]);
    WaitForHost(peers.client);
    std::printf("One round trip, 200 bytes out and 100 back, microseconds\n");
    std::printf("%-28s %10s %10s %10s %10s %9s %9s\n", "", "link 50%", "link 99%", "socket 50%",
                "socket 99%", "ratio 50%", "ratio 99%");
    MeasureWarmAlone(peers);
    MeasureWarm(peers);
    MeasureIdle(peers);
    return 0;
}
