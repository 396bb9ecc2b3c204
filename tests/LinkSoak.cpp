// A long run of mixed traffic: eight client processes send texts, captures and requests with short
// time-outs to the program tavarin-host, which is halted wherever it is about once a second and is
// stopped and started again every few seconds, while half of the clients are killed now and then.
// Tells whether anything was lost or mixed up, and draws the use of memory and descriptors.
//
//   LinkSoak MINUTES PICTURE.svg

#include <sys/mman.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <random>

#include "ChildProcess.h"
#include "FileIO/FileName.h"
#include "ForkedProcess.h"
#include "SegmentNames.h"
#include "SoakChart.h"
#include "TemporaryDirectory.h"
#include "TestTone.h"
#include "link/TANClientInterProcess.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr int kClients = 8;
// The others live as long as the run.
constexpr int kMortalClients = 4;
constexpr int kHost = 1;
constexpr int kRate = 8000;
constexpr int kFrames = 800;
constexpr int kTimeoutStatus = 121;
constexpr auto kHostLife = 4s;
constexpr auto kKillEvery = 3s;
// How long the host runs between two halts at the most, and how long a halt lasts.
constexpr int kLongestRunMs = 1000;
constexpr int kShortestHaltMs = 50;
constexpr int kLongestHaltMs = 1500;
constexpr int kPatienceMs = 20'000;

/// What a client has done, in memory that outlives it.
struct ClientRecord {
    std::atomic<long> lAnswered = 0;  ///< exchanges with the right reply
    std::atomic<long> lTimedOut = 0;
    std::atomic<long> lRefused = 0;  ///< no host at that moment, or one that was stopping
    std::atomic<long> lMixed = 0;    ///< replies that belong to another request
    std::atomic<long> lLost = 0;     ///< captures that were taken and are not there
    std::atomic<long> lStuck = 0;    ///< exchanges that a patient client gave up
    std::atomic<long> lCaptures = 0;
    std::atomic<int> nOnTrack = 0;    ///< captures that must be on the client's track
    std::atomic<int> nUncertain = 0;  ///< captures that may be there, because nobody said so
};

using Records = std::array<ClientRecord, kClients>;

class CSoakClient {
public:
    CSoakClient(int nClient, ClientRecord& record, std::string strTake)
        : m_nClient(nClient),
          m_record(record),
          m_take(strTake.c_str()),
          m_random(std::random_device()()) {}

    [[noreturn]] void Run() {
        for (;;) {
            switch (m_random() % 8) {
                case 0:
                    Capture();
                    break;
                case 1:
                    SendText(static_cast<int>(m_random() % 4));
                    break;
                default:
                    SendText(kPatienceMs);
            }
            if (m_record.nOnTrack + m_record.nUncertain > 20) CountCaptures();
            if (m_random() % 4 == 0) std::this_thread::sleep_for(1ms * (m_random() % 10));
        }
    }

    // Looks whether every capture is where it belongs, and clears the track.
    void CountCaptures() {
        const std::string strTrack = "GetTrackID(" + std::to_string(m_nClient) + ")";
        std::string strReply;
        if (!Send("if SelectScriptDocument() then print(GetRegionCount(" + strTrack + ")) end",
                  kPatienceMs, strReply)) {
            return;
        }
        const int nFound = std::atoi(strReply.c_str());
        const int nLeast = m_record.nOnTrack;
        const int nMost = nLeast + m_record.nUncertain;
        if (nFound < nLeast) m_record.lLost += nLeast - nFound;
        if (nFound > nMost) ++m_record.lMixed;
        m_record.nUncertain = nMost;
        m_record.nOnTrack = 0;
        if (!Send("if SelectScriptDocument() then local id = " + strTrack +
                      " while GetRegionCount(id) > 0 do DeleteRegion(GetRegionID(id, 0)) end "
                      "print('cleared') end",
                  kPatienceMs, strReply)) {
            return;
        }
        if (strReply == "cleared\n") m_record.nUncertain = 0;
    }

private:
    bool Send(std::string strRequest, int nTimeoutMs, std::string& strReply) {
        const int nStatus = m_client.SendTANMessage(kHost, strRequest, strReply, nTimeoutMs);
        if (nStatus == 0 && m_client.m_strLastError.empty()) {
            ++m_record.lAnswered;
            return true;
        }
        if (nStatus != kTimeoutStatus) {
            ++m_record.lRefused;
        } else if (nTimeoutMs == kPatienceMs) {
            ++m_record.lStuck;
        } else {
            ++m_record.lTimedOut;
        }
        return false;
    }

    void SendText(int nTimeoutMs) {
        const std::string strText = "client " + std::to_string(m_nClient) + " process " +
                                    std::to_string(getpid()) + " round " +
                                    std::to_string(m_lRound++);
        std::string strReply;
        if (!Send("print('" + strText + "')\n", nTimeoutMs, strReply)) return;
        m_record.lMixed += strReply != strText + "\n";
    }

    void Capture() {
        ++m_record.nUncertain;
        const bool fTaken = m_client.SendFile(false, m_nClient, &m_take, m_lRound++ * kFrames, 0,
                                              kFrames, 0) == 0 &&
                            m_client.m_strLastError.empty();
        if (!fTaken) {
            ++m_record.lRefused;
            return;
        }
        ++m_record.nOnTrack;
        --m_record.nUncertain;
        ++m_record.lCaptures;
    }

    const int m_nClient;
    ClientRecord& m_record;
    CFileName m_take;
    std::mt19937 m_random;
    long m_lRound = 0;
    CTANClientInterProcess m_client;
};

double ResidentMegabytes(pid_t nProcess) {
    std::ifstream file("/proc/" + std::to_string(nProcess) + "/statm");
    double dTotal = 0, dResident = 0;
    file >> dTotal >> dResident;
    return dResident * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1 << 20);
}

int Descriptors(pid_t nProcess) {
    std::error_code error;
    fs::directory_iterator entries("/proc/" + std::to_string(nProcess) + "/fd", error);
    int nCount = 0;
    for (; !error && entries != fs::directory_iterator(); entries.increment(error)) ++nCount;
    return nCount;
}

class CSoak {
public:
    explicit CSoak(std::chrono::seconds length) : m_length(length) {
        WriteTestTone(m_directory.File("take.wav"), kRate, kFrames);
        void* const pShared = mmap(nullptr, sizeof(Records), PROT_READ | PROT_WRITE,
                                   MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        m_pRecords = new (pShared) Records();
    }

    void Run() {
        StartHost();
        for (int nClient = 0; nClient < kClients; ++nClient) StartClient(nClient);
        const Clock::time_point start = Clock::now();
        Clock::time_point restart = start + kHostLife, killing = start + kKillEvery, sample = start;
        Clock::time_point halting = start + kHostLife / 4, resuming{};
        while (Clock::now() < start + m_length) {
            std::this_thread::sleep_for(20ms);
            if (m_fHalted && Clock::now() >= resuming) {
                ResumeHost();
                halting = Clock::now() + 1ms * Random(1, kLongestRunMs);
            } else if (!m_fHalted && Clock::now() >= halting) {
                HaltHost();
                resuming = Clock::now() + 1ms * Random(kShortestHaltMs, kLongestHaltMs);
            }
            if (Clock::now() >= sample) {
                TakeSample(std::chrono::duration<double>(Clock::now() - start).count());
                sample = Clock::now() + 1s;
            }
            if (Clock::now() >= restart) {
                RestartHost();
                restart = Clock::now() + kHostLife;
            }
            if (Clock::now() >= killing) {
                StartClient(m_nKilled++ % kMortalClients);
                killing = Clock::now() + kKillEvery;
            }
        }
        Finish();
    }

    // True when nothing was lost, mixed up or stuck.
    bool Report(std::string const& strPicture) const {
        ClientRecord sum;
        for (ClientRecord const& record : *m_pRecords) {
            sum.lAnswered += record.lAnswered;
            sum.lTimedOut += record.lTimedOut;
            sum.lRefused += record.lRefused;
            sum.lMixed += record.lMixed;
            sum.lLost += record.lLost;
            sum.lStuck += record.lStuck;
            sum.lCaptures += record.lCaptures;
        }
        std::printf(
            "%ld answered (%ld captures), %ld timed out, %ld refused while the host restarted\n"
            "%d host restarts, %d halts of the host, %d clients killed\n"
            "%ld lost, %ld mixed up, %ld stuck\n",
            sum.lAnswered + sum.lCaptures, sum.lCaptures.load(), sum.lTimedOut.load(),
            sum.lRefused.load(), m_nRestarts, m_nHalts, m_nKilled, sum.lLost.load(),
            sum.lMixed.load(), sum.lStuck.load());
        PrintGrowth("host", [](SoakSample const& s) { return s.dHostMegabytes; });
        PrintGrowth("clients", [](SoakSample const& s) { return s.dClientMegabytes; });
        std::ofstream(strPicture) << DrawSoak(
            m_samples,
            std::to_string(m_length.count()) + " seconds of mixed traffic, eight clients");
        return sum.lLost == 0 && sum.lMixed == 0 && sum.lStuck == 0 && sum.lCaptures > 0;
    }

private:
    void StartHost() {
        m_host.emplace(
            std::vector<std::string>{TAVARIN_HOST_PROGRAM, "--sample-rate", std::to_string(kRate),
                                     "--tracks", "A,B,C,D,E,F,G,H", "--quiet", "--session",
                                     m_directory.File("session.json")},
            m_directory.File("host.out"), m_directory.File("host.err"));
    }

    void RestartHost() {
        if (m_fHalted) ResumeHost();
        m_host->Signal(SIGTERM);
        if (m_host->Wait() != 0) {
            std::fprintf(stderr, "the host ended badly: %s\n",
                         m_directory.Read("host.err").c_str());
            std::exit(1);
        }
        ++m_nRestarts;
        StartHost();
    }

    void HaltHost() {
        m_host->Signal(SIGSTOP);
        m_fHalted = true;
        ++m_nHalts;
    }

    void ResumeHost() {
        m_host->Signal(SIGCONT);
        m_fHalted = false;
    }

    int Random(int nFrom, int nTo) {
        return std::uniform_int_distribution<int>(nFrom, nTo)(m_random);
    }

    void StartClient(int nClient) {
        m_clients[nClient].reset();
        m_clients[nClient] = std::make_unique<CForkedProcess>([this, nClient]() -> int {
            CSoakClient(nClient, (*m_pRecords)[nClient], m_directory.File("take.wav")).Run();
        });
    }

    void TakeSample(double dSeconds) {
        SoakSample sample{dSeconds, ResidentMegabytes(m_host->Id()), 0, Descriptors(m_host->Id()),
                          0};
        for (int nClient = kMortalClients; nClient < kClients; ++nClient) {
            sample.dClientMegabytes += ResidentMegabytes(m_clients[nClient]->Id());
            sample.nClientDescriptors += Descriptors(m_clients[nClient]->Id());
        }
        m_samples.push_back(sample);
    }

    void Finish() {
        if (m_fHalted) ResumeHost();
        for (auto& pClient : m_clients) pClient.reset();
        for (int nClient = 0; nClient < kClients; ++nClient) {
            CSoakClient(nClient, (*m_pRecords)[nClient], "").CountCaptures();
        }
        m_host.reset();
    }

    template <typename Value>
    void PrintGrowth(const char* szName, Value valueOf) const {
        const auto meanOf = [&](std::size_t nFirst, std::size_t nLast) {
            double dSum = 0;
            for (std::size_t n = nFirst; n < nLast; ++n) dSum += valueOf(m_samples[n]);
            return dSum / static_cast<double>(std::max<std::size_t>(1, nLast - nFirst));
        };
        const std::size_t nFifth = m_samples.size() / 5;
        std::printf("%s: %.2f MB in the second fifth of the run, %.2f MB in the last\n", szName,
                    meanOf(nFifth, 2 * nFifth), meanOf(4 * nFifth, m_samples.size()));
    }

    const std::chrono::seconds m_length;
    CTemporaryDirectory m_directory;
    Records* m_pRecords;
    std::optional<CChildProcess> m_host;
    std::array<std::unique_ptr<CForkedProcess>, kClients> m_clients;
    std::vector<SoakSample> m_samples;
    std::mt19937 m_random{std::random_device()()};
    bool m_fHalted = false;
    int m_nHalts = 0;
    int m_nRestarts = 0;
    int m_nKilled = 0;
};

}  // namespace

int main(int argc, char** argv) {
    const double dMinutes = argc == 3 ? std::atof(argv[1]) : 0;
    if (dMinutes <= 0) {
        std::fprintf(stderr, "usage: LinkSoak MINUTES PICTURE.svg\n");
        return 2;
    }
    if (!ClaimSegmentNames()) {
        std::fprintf(stderr, "A host application is running: quit it first.\n");
        return 3;
    }
    CSoak soak(std::chrono::seconds(std::lround(dMinutes * 60)));
    soak.Run();
    return soak.Report(argv[2]) ? 0 : 1;
}
