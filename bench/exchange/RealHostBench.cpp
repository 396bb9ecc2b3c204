#include "bench/exchange/RealHostBench.h"

#include <sndfile.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "FileIO/FileName.h"
#include "bench/ResultLog.h"
#include "bench/exchange/ExchangePeer.h"
#include "link/TANClientInterProcess.h"

namespace {

constexpr int kCallsToWarm = 10;
constexpr int kCalls = 40;
constexpr std::int64_t kTakeFrames = 48000;

/// A directory with a take in it, gone with this object.
class CTakeDirectory {
public:
    CTakeDirectory()
        : m_path(std::filesystem::temp_directory_path() /
                 ("tavarin-bench-" + std::to_string(getpid()))) {
        std::filesystem::create_directories(m_path);
        SF_INFO info{};
        info.samplerate = 48000;
        info.channels = 1;
        info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_24;
        SNDFILE* const pFile = sf_open(Take().c_str(), SFM_WRITE, &info);
        const std::vector<float> samples(kTakeFrames, 0.25f);
        Check(pFile && sf_writef_float(pFile, samples.data(), kTakeFrames) == kTakeFrames,
              "no take");
        sf_close(pFile);
    }
    ~CTakeDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    CTakeDirectory(CTakeDirectory const&) = delete;
    CTakeDirectory& operator=(CTakeDirectory const&) = delete;

    std::string Take() const { return (m_path / "take.wav").string(); }

private:
    std::filesystem::path m_path;
};

std::string TrackNames(int nTracks) {
    std::string strNames;
    for (int n = 0; n < nTracks; ++n)
        strNames += (n > 0 ? ",Track " : "Track ") + std::to_string(n);
    return strNames;
}

/// The program itself, as a user starts it.
class CHostProgram {
public:
    CHostProgram(char const* szProgram, EPlacement placement, int nTracks)
        : m_strTracks(TrackNames(nTracks)), m_process([&] {
              PlaceServer(placement);
              execl(szProgram, szProgram, "--quiet", "--tracks", m_strTracks.c_str(),
                    static_cast<char*>(nullptr));
          }) {
        CTANClientInterProcess client;
        for (int nTry = 0; nTry < 5000; ++nTry) {
            if (client.GetCurrentIdFromMainDirectory() > 0) return;
            SleepUs(1'000);
        }
        Check(false, "the host did not start; is another one running?");
    }

private:
    std::string m_strTracks;
    CChild m_process;
};

class CTimes {
public:
    void Measure(char const* szContender, std::function<void()> const& call) {
        for (int i = 0; i < kCallsToWarm; ++i) call();
        for (int i = 0; i < kCalls; ++i) {
            const double dStart = NowUs();
            call();
            m_times[szContender].Add(NowUs() - dStart);
        }
    }

    void Print(std::string const& work) const {
        for (auto const& [strContender, times] : m_times)
            PrintSeries(work, strContender, "us", times);
    }

    CSamples const& Of(char const* szContender) const { return m_times.at(szContender); }

private:
    std::map<std::string, CSamples> m_times;
};

void ListTracks(CTANClientInterProcess& client, std::size_t nTracks) {
    std::vector<std::string> tracks;
    client.ListTracksWithTimeout(false, &tracks, 10'000);
    Check(tracks.size() == nTracks, "a wrong track list");
}

void MeasureCommands(CTimes& times, CFileName& take) {
    CTANClientInterProcess client;
    times.Measure("GetUpdateCount", [&] { Check(client.GetUpdateCount() > 0, "no count"); });
    times.Measure("track list of 3", [&] { ListTracks(client, 3); });
    const auto fDuplicate = [&](int nTrack) {
        return client.CheckDuplicateRegion(false, nTrack, &take, 0, 0, kTakeFrames);
    };
    Check(client.SendFile(false, 0, &take, 0, 0, kTakeFrames, 0) == 0 && fDuplicate(0),
          "the take was not taken");
    times.Measure("duplicate check", [&] { Check(fDuplicate(0), "no duplicate"); });
    times.Measure("send", [&] {
        Check(client.SendFile(false, 1, &take, 0, 0, kTakeFrames, 0) == 0, "the take was refused");
    });
}

}  // namespace

void MeasureRealHost(std::string const& work, char const* szHostProgram, EPlacement placement,
                     int nTurns) {
    const CTakeDirectory directory;
    CFileName take(directory.Take().c_str());
    CTimes times;
    PlaceClient(placement);
    for (int nTurn = 0; nTurn < nTurns; ++nTurn) {
        {
            const auto empty = MakeLinkPeer({placement});
            times.Measure("empty handler", [&] { empty->Call(); });
        }
        {
            const CHostProgram host(szHostProgram, placement, 3);
            MeasureCommands(times, take);
        }
        {
            const CHostProgram host(szHostProgram, placement, 500);
            CTANClientInterProcess client;
            times.Measure("track list of 500", [&] { ListTracks(client, 500); });
        }
        const auto plain = MakeLuaSocketPeer({placement});
        times.Measure("socket and plain Lua", [&] { plain->Call(); });
    }
    times.Print(work);
    CSamples perTrack;
    const double dThree = times.Of("track list of 3").Quantile(0.5);
    for (int n = 0; n <= 200; ++n)
        perTrack.Add((times.Of("track list of 500").Quantile(n / 200.0) - dThree) / 497);
    PrintSeries(work, "each further track", "us", perTrack);
}
