#include "host/HostProcesses.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "host/Alignment.h"
#include "host/Doubling.h"
#include "host/Resampling.h"

namespace {

DocumentKind Document(CHostContext const& context) {
    return context.m_Document.value();
}

std::vector<CRegion const*> RegionsInRange(CTrack const& track, std::int64_t lStart,
                                           std::int64_t lEnd) {
    std::vector<CRegion const*> regions;
    for (CRegion const& region : track.m_Regions)
        if (region.Start() < lEnd && region.End() > lStart) regions.push_back(&region);
    return regions;
}

void MixRegion(CAudio& mix, std::int64_t lMixStart, CRegion const& region,
               CCheckpoint const& checkpoint) {
    constexpr std::int64_t kBlock = 1 << 16;
    std::int64_t const lFrom = std::max(lMixStart, region.Start());
    std::int64_t const lTo = std::min(lMixStart + mix.Frames(), region.End());
    CRegionReader reader(region, mix.m_nSampleRate, lFrom - region.m_lFilePosition);
    for (std::int64_t lAt = lFrom; lAt < lTo; lAt += kBlock) {
        if (checkpoint) checkpoint();
        CAudio const block = reader.Read(std::min(kBlock, lTo - lAt));
        for (std::size_t n = 0; n < mix.m_Channels.size(); ++n) {
            bool const fMono = block.m_Channels.size() == 1;
            if (!fMono && n >= block.m_Channels.size()) break;
            auto const& source = block.m_Channels[fMono ? 0 : n];
            float* pTarget = mix.m_Channels[n].data() + (lAt - lMixStart);
            for (std::size_t i = 0; i < source.size(); ++i) pTarget[i] += source[i];
        }
    }
}

/// A file of the audio directory that goes again unless it is kept.
class CResultFile {
public:
    explicit CResultFile(std::string strPath) : m_strPath(std::move(strPath)) {}
    ~CResultFile() {
        if (!m_fKeep) std::remove(m_strPath.c_str());
    }
    CResultFile(CResultFile const&) = delete;
    CResultFile& operator=(CResultFile const&) = delete;

    std::string const& Path() const { return m_strPath; }
    void Keep() { m_fKeep = true; }

private:
    std::string m_strPath;
    bool m_fKeep = false;
};

CAudio CollectInput(CHostContext const& context, CProcessInput const& input) {
    CTrack const& track = context.m_Session.Track(Document(context), input.m_idTrack);
    return CollectTrackAudio(context, track, input.m_lStart, input.m_lEnd);
}

CAudio ProcessAudio(CHostContext const& context, CProcess const& process) {
    CAudio const first = CollectInput(context, process.m_Inputs.at(0));
    if (process.m_Kind == ProcessKind::Doubler) return MakeDouble(first, {}, context.m_Checkpoint);
    CAudio const dub = CollectInput(context, process.m_Inputs.at(1));
    return AlignDub(first, dub, context.m_Checkpoint);
}

CRegion ResultRegion(CAudio const& audio, std::string const& strFile, std::int64_t lPosition) {
    CRegion region;
    region.m_strFile = strFile;
    region.m_nFileRate = audio.m_nSampleRate;
    region.m_lFilePosition = lPosition;
    region.m_lEnd = audio.Frames();
    for (std::size_t n = 0; n < audio.m_Channels.size(); ++n)
        region.m_Channels.push_back(static_cast<int>(n));
    return region;
}

}  // namespace

CAudio CollectTrackAudio(CHostContext const& context, CTrack const& track, std::int64_t lStart,
                         std::int64_t lEnd) {
    if (lEnd - lStart > kMaxProcessFrames)
        throw CHostFunctionError("a process takes at most " + std::to_string(kMaxProcessFrames) +
                                 " samples, not " + std::to_string(lEnd - lStart));
    auto const regions = RegionsInRange(track, lStart, lEnd);
    if (regions.empty())
        throw CHostFunctionError("the track \"" + track.m_strName + "\" has no audio from " +
                                 std::to_string(lStart) + " to " + std::to_string(lEnd));
    std::size_t nChannels = 1;
    for (CRegion const* pRegion : regions)
        nChannels = std::max(nChannels, pRegion->m_Channels.size());
    if (static_cast<std::int64_t>(nChannels) * (lEnd - lStart) > 4 * kMaxProcessFrames)
        throw CHostFunctionError("the track \"" + track.m_strName +
                                 "\" has too many channels there");
    CAudio mix{context.m_Session.SampleRate(), {}};
    mix.m_Channels.assign(nChannels,
                          std::vector<float>(static_cast<std::size_t>(lEnd - lStart), 0.0f));
    for (CRegion const* pRegion : regions) MixRegion(mix, lStart, *pRegion, context.m_Checkpoint);
    return mix;
}

CSessionId CarryOutProcess(CHostContext& context, CProcess process) {
    CSession& session = context.m_Session;
    DocumentKind const kind = Document(context);
    session.Track(kind, process.m_idOutputTrack);
    CAudio const audio = ProcessAudio(context, process);

    std::string const strStem = std::string(ProcessKindName(process.m_Kind)) + "_" +
                                std::to_string(session.Data().m_idNext);
    CResultFile file(context.m_Directory.NewFile(
        strStem, audio.Frames() * static_cast<std::int64_t>(audio.m_Channels.size()) * 4));
    WriteAudioFile(file.Path(), audio);

    CSession changed = session;
    process.m_idRegion =
        changed.AddRegion(kind, process.m_idOutputTrack,
                          ResultRegion(audio, file.Path(), process.m_Inputs.front().m_lStart));
    for (CProcessInput const& input : process.m_Inputs) {
        CTrack const& track = changed.Track(kind, input.m_idTrack);
        if (!track.m_MarkerTracks.empty())
            changed.AddMarkerArea(kind, track.m_MarkerTracks.front().m_idMarkerTrack,
                                  input.m_lStart, input.m_lEnd);
    }
    CSessionId const idProcess = changed.AddProcess(kind, std::move(process));
    context.m_Results.insert(file.Path());
    session = std::move(changed);
    file.Keep();
    return idProcess;
}
