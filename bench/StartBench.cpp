// How long the reference host takes from its start to its first answer, with an empty session and
// with one of 10,000 regions. Prints its results as JSON lines.
//
//   StartBench HOST-PROGRAM [--quick]

#include <cstring>
#include <filesystem>
#include <string>

#include "bench/ResultLog.h"
#include "bench/exchange/BenchProcess.h"
#include "host/AudioFile.h"
#include "host/SessionFile.h"
#include "link/TANClientInterProcess.h"

namespace {

namespace fs = std::filesystem;

constexpr int kRegions = 10000;
constexpr int kFrames = 4800;

void WriteLargeSession(std::string const& strPath) {
    const std::string strTake = strPath + ".wav";
    WriteAudioFile(strTake, {48000, {std::vector<float>(kFrames, 0.25F)}});
    CSession session({"Guide", "Dub", "Out"}, 48000);
    CRegion region;
    region.m_strFile = strTake;
    region.m_nFileRate = 48000;
    region.m_lEnd = kFrames;
    region.m_Channels = {0};
    const CSessionId idTrack = session.TrackAt(DocumentKind::Script, 0).m_idTrack;
    for (int n = 0; n < kRegions; ++n) {
        region.m_lFilePosition = std::int64_t{n} * kFrames;
        session.AddRegion(DocumentKind::Script, idTrack, region);
    }
    SaveSession(session, strPath);
}

// `szSession` is null for an empty session.
CSamples MeasureStart(const char* szHost, const char* szSession, int nRounds) {
    CSamples times;
    const char* const szOption = szSession ? "--session" : nullptr;
    for (int nRound = 0; nRound < nRounds; ++nRound) {
        CTANClientInterProcess client;
        const double dStart = NowUs();
        const CChild host([&] {
            execl(szHost, szHost, "--quiet", szOption, szSession, static_cast<char*>(nullptr));
        });
        while (client.GetUpdateCount() == 0 && NowUs() - dStart < 10e6) SleepUs(200);
        times.Add((NowUs() - dStart) / 1000);
    }
    return times;
}

}  // namespace

int main(int argc, char** argv) {
    Check(argc > 1, "which program is the host?");
    const bool fQuick = argc > 2 && std::strcmp(argv[2], "--quick") == 0;
    const int nRounds = fQuick ? 5 : 30;
    const fs::path directory =
        fs::temp_directory_path() / ("tavarin-start-" + std::to_string(getpid()));
    fs::create_directories(directory);
    const std::string strSession = directory / "session.json";
    WriteLargeSession(strSession);
    PrintSeries("host start to first answer", "reference host", "ms",
                MeasureStart(argv[1], nullptr, nRounds));
    PrintSeries("host start to first answer", "with 10,000 regions", "ms",
                MeasureStart(argv[1], strSession.c_str(), nRounds));
    fs::remove_all(directory);
    return 0;
}
