// What commands, the picture and the session file cost as a session grows: regions on one track,
// each of an audio file of its own, and one track more for every twenty. Prints its results as JSON
// lines; the contender is the size.
//
//   GrowthBench [--quick]

#include <cstring>
#include <filesystem>
#include <functional>
#include <map>

#include "bench/ResultLog.h"
#include "bench/exchange/BenchProcess.h"
#include "host/ScriptEngine.h"
#include "host/SessionFile.h"
#include "host/Timeline.h"

namespace {

namespace fs = std::filesystem;

constexpr int kSizes[] = {625, 1250, 2500, 5000, 10000};
constexpr std::int64_t kFrames = 4800;
constexpr int kRegionsPerTrack = 20;

std::string FileName(std::string const& strDirectory, int n) {
    return strDirectory + "/take" + std::to_string(n) + ".wav";
}

void WriteTakes(std::string const& strDirectory) {
    const CAudio take{48000, {std::vector<float>(kFrames, 0.25f)}};
    for (int n = 0; n < *std::rbegin(kSizes); ++n) WriteAudioFile(FileName(strDirectory, n), take);
}

std::vector<std::string> TrackNames(int nRegions) {
    std::vector<std::string> names;
    for (int n = 0; n < std::max(1, nRegions / kRegionsPerTrack); ++n)
        names.push_back("Track " + std::to_string(n));
    return names;
}

std::string AddingScript(std::string const& strFile, int n) {
    return "SelectScriptDocument() AddAudioRegion(GetTrackID(0), \"" + strFile +
           "\", true, false, " + std::to_string(n * kFrames) + ", 0, " + std::to_string(kFrames) +
           ")";
}

std::string DuplicateScript(std::string const& strFile, int n) {
    return "SelectScriptDocument() print(CheckForDuplicateRegion(GetTrackID(0), \"" + strFile +
           "\", " + std::to_string(n * kFrames) + ", 0, " + std::to_string(kFrames) + "))";
}

constexpr char szList[] =
    "SelectScriptDocument() for n = 0, GetTrackCount() - 1 do print(GetTrackName(GetTrackID(n))) "
    "end";
constexpr char szClear[] =
    "SelectScriptDocument() local id = GetTrackID(0) while GetRegionCount(id) > 0 do "
    "DeleteRegion(GetRegionID(id, 0)) end";

class CGrowth {
public:
    explicit CGrowth(std::string strDirectory) : m_strDirectory(std::move(strDirectory)) {}

    void Measure(int nRegions) {
        CSession session(TrackNames(nRegions), 48000);
        CScriptEngineOptions options;
        options.m_Limits.m_Time = std::chrono::hours(1);
        CScriptEngine engine(session, options);
        const auto run = [&](std::string const& strScript) {
            const CScriptResult result = engine.Run(strScript);
            Check(result.strError.empty(), result.strError.c_str());
        };
        Note("adding all regions", nRegions, [&] {
            for (int n = 0; n < nRegions; ++n) run(AddingScript(FileName(m_strDirectory, n), n));
        });
        const int nMiddle = nRegions / 2;
        Note("a duplicate check", nRegions,
             [&] { run(DuplicateScript(FileName(m_strDirectory, nMiddle), nMiddle)); });
        Note("the track list", nRegions, [&] { run(szList); });
        Note("a copy of the session", nRegions, [&] { const CSession copy = session; });
        const std::string strFile = m_strDirectory + "/session.json";
        Note("saving the session", nRegions, [&] { SaveSession(session, strFile); });
        Note("loading the session", nRegions, [&] { LoadSession(strFile); });
        CPeakCache peaks;
        RenderTimeline(session, peaks);
        Note("the picture again", nRegions, [&] { RenderTimeline(session, peaks); });
        Note("clearing the track", nRegions, [&] { run(szClear); });
    }

    void Print() const {
        for (auto const& [strWork, sizes] : m_times)
            for (auto const& [nSize, times] : sizes)
                PrintSeries("growth: " + strWork, std::to_string(nSize), "us", times);
    }

private:
    void Note(char const* szWork, int nRegions, std::function<void()> const& work) {
        const double dStart = NowUs();
        work();
        m_times[szWork][nRegions].Add(NowUs() - dStart);
    }

    std::string m_strDirectory;
    std::map<std::string, std::map<int, CSamples>> m_times;
};

}  // namespace

int main(int argc, char** argv) {
    const bool fQuick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
    const std::string strDirectory =
        (fs::temp_directory_path() / ("tavarin-growth-" + std::to_string(getpid()))).string();
    fs::create_directories(strDirectory);
    WriteTakes(strDirectory);
    CGrowth growth(strDirectory);
    for (int nRound = 0; nRound < (fQuick ? 1 : 5); ++nRound)
        for (int nSize : kSizes) growth.Measure(nSize);
    growth.Print();
    fs::remove_all(strDirectory);
    return 0;
}
