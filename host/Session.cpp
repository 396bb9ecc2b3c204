#include "host/Session.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include "platform/Utf8.h"

namespace {

constexpr int kMaxSampleRate = 768000;
constexpr std::size_t kMaxTrackName = 255;

std::string Text(std::int64_t lNumber) {
    return std::to_string(lNumber);
}

void CheckSampleRate(int nSampleRate) {
    if (nSampleRate < 1 || nSampleRate > kMaxSampleRate)
        throw CSessionError("a sample rate of " + Text(nSampleRate) + " Hz is not possible (1 to " +
                            Text(kMaxSampleRate) + ")");
}

void CheckTrackName(std::string const& strName) {
    if (strName.empty() || strName.size() > kMaxTrackName)
        throw CSessionError("a track name has 1 to " + Text(kMaxTrackName) + " bytes, not " +
                            Text(static_cast<std::int64_t>(strName.size())));
    auto control = [](unsigned char ch) { return ch < 0x20 || ch == 0x7F; };
    if (std::any_of(strName.begin(), strName.end(), control))
        throw CSessionError("a track name holds no control characters or line ends");
    if (!IsUtf8(strName)) throw CSessionError("a track name is text in UTF-8");
}

void CheckRegion(CRegion const& region) {
    if (region.m_strFile.empty()) throw CSessionError("a region needs a file");
    CheckSampleRate(region.m_nFileRate);
    if (region.m_lStart < 0)
        throw CSessionError("a region cannot start at " + Text(region.m_lStart) +
                            ", before its file");
    CheckTimelineRange(region.m_lStart, region.m_lEnd);
    CheckTimelinePosition(region.m_lFilePosition);
    CheckTimelineRange(region.Start(), region.End());
    if (region.m_Channels.empty() || region.m_Channels.size() > 1024)
        throw CSessionError("a region uses 1 to 1024 channels");
    for (int nChannel : region.m_Channels)
        if (nChannel < 0 || nChannel > 1023)
            throw CSessionError("channel " + Text(nChannel) + " is not possible");
}

void CheckDisplayPosition(double dPosition) {
    if (!std::isfinite(dPosition) || std::abs(dPosition) > static_cast<double>(kMaxPosition))
        throw CSessionError("the display cannot move to a position outside the timeline");
}

void CheckLinkOffset(double dOffset) {
    if (!std::isfinite(dOffset)) throw CSessionError("the link offset must be a finite number");
}

void CheckCount(std::size_t nCount, std::size_t nLimit, char const* pszWhat) {
    if (nCount >= nLimit)
        throw CSessionError("the document is full: it holds " +
                            Text(static_cast<std::int64_t>(nCount)) + " " + pszWhat);
}

/// Gathers every id of a session and refuses one that is used twice or was never given out.
class CIdCheck {
public:
    explicit CIdCheck(CSessionId idNext) : m_idNext(idNext) {
        if (idNext < 1) throw CSessionError("the next id " + Text(idNext) + " is not possible");
    }

    void Add(CSessionId id) {
        if (id < 1 || id >= m_idNext)
            throw CSessionError("the id " + Text(id) + " was never given out");
        if (!m_Ids.insert(id).second) throw CSessionError("the id " + Text(id) + " is used twice");
    }

private:
    CSessionId m_idNext;
    std::set<CSessionId> m_Ids;
};

void CheckTrack(CTrack const& track, CIdCheck& ids) {
    CheckTrackName(track.m_strName);
    ids.Add(track.m_idTrack);
    for (CRegion const& region : track.m_Regions) {
        CheckRegion(region);
        ids.Add(region.m_idRegion);
    }
    for (CMarkerTrack const& markers : track.m_MarkerTracks) {
        ids.Add(markers.m_idMarkerTrack);
        for (CMarkerArea const& area : markers.m_Areas) {
            CheckTimelineRange(area.m_lStart, area.m_lEnd);
            ids.Add(area.m_idArea);
        }
    }
}

void CheckProcess(CDocument const& document, CProcess const& process) {
    for (CProcessInput const& input : process.m_Inputs) {
        CheckTimelineRange(input.m_lStart, input.m_lEnd);
        if (!document.FindTrack(input.m_idTrack))
            throw CSessionError("a process reads from track " + Text(input.m_idTrack) +
                                ", which does not exist");
    }
    if (!document.FindTrack(process.m_idOutputTrack))
        throw CSessionError("a process writes to track " + Text(process.m_idOutputTrack) +
                            ", which does not exist");
    if (process.m_idRegion != kNullId && !document.FindRegion(process.m_idRegion))
        throw CSessionError("a process's result " + Text(process.m_idRegion) + " does not exist");
}

void CheckDocument(CDocument const& document, CIdCheck& ids) {
    if (document.m_Tracks.size() > CSession::kMaxTracks ||
        document.m_Processes.size() > CSession::kMaxProcesses ||
        document.m_RegionPlaces.size() > CSession::kMaxRegions ||
        document.m_AreaTracks.size() > CSession::kMaxMarkerAreas)
        throw CSessionError("a document holds more than a session can");
    for (CProcess const& process : document.m_Processes) {
        CheckProcess(document, process);
        ids.Add(process.m_idProcess);
    }
    CSessionId const idRegion = document.m_idSelectedRegion;
    if (idRegion != kNullId && !document.FindRegion(idRegion))
        throw CSessionError("the selected region " + Text(idRegion) + " does not exist");
    for (CSessionId idProcess : {document.m_idSelectedProcess, document.m_idLastProcess})
        if (idProcess != kNullId && !document.FindProcess(idProcess))
            throw CSessionError("the selected or last process " + Text(idProcess) +
                                " does not exist");
    CheckDisplayPosition(document.m_dDisplayPosition);
}

bool Earlier(CRegion const& left, CRegion const& right) {
    if (left.Start() != right.Start()) return left.Start() < right.Start();
    return left.m_idRegion < right.m_idRegion;
}

auto PlaceOf(std::deque<CRegion> const& regions, CSessionId idRegion, std::int64_t lStart) {
    return std::lower_bound(regions.begin(), regions.end(), lStart,
                            [&](CRegion const& region, std::int64_t lWanted) {
                                if (region.Start() != lWanted) return region.Start() < lWanted;
                                return region.m_idRegion < idRegion;
                            });
}

/// The number of the track that a marker track belongs to.
std::size_t TrackOf(CDocument const& document, CSessionId idMarkerTrack) {
    auto const owns = [&](CTrack const& track) {
        return std::any_of(
            track.m_MarkerTracks.begin(), track.m_MarkerTracks.end(),
            [&](CMarkerTrack const& markers) { return markers.m_idMarkerTrack == idMarkerTrack; });
    };
    auto const track = std::find_if(document.m_Tracks.begin(), document.m_Tracks.end(), owns);
    return static_cast<std::size_t>(track - document.m_Tracks.begin());
}

}  // namespace

void CheckTimelinePosition(std::int64_t lPosition) {
    if (lPosition < -kMaxPosition || lPosition > kMaxPosition)
        throw CSessionError("position " + Text(lPosition) + " is outside the timeline");
}

void CheckTimelineRange(std::int64_t lStart, std::int64_t lEnd) {
    CheckTimelinePosition(lStart);
    CheckTimelinePosition(lEnd);
    if (lEnd <= lStart)
        throw CSessionError("the end " + Text(lEnd) + " does not lie behind the start " +
                            Text(lStart));
}

char const* ProcessKindName(ProcessKind kind) {
    return kind == ProcessKind::APT ? "APT" : "Doubler";
}

bool CDocument::HoldsSomething() const {
    const auto hasRegions = [](CTrack const& track) { return !track.m_Regions.empty(); };
    return !m_Processes.empty() || std::any_of(m_Tracks.begin(), m_Tracks.end(), hasRegions);
}

CRegion const* CDocument::FindRegion(CSessionId idRegion) const {
    auto const place = m_RegionPlaces.find(idRegion);
    if (place == m_RegionPlaces.end()) return nullptr;
    auto const& [nTrack, lStart] = place->second;
    return &*PlaceOf(m_Tracks[nTrack].m_Regions, idRegion, lStart);
}

CProcess const* CDocument::FindProcess(CSessionId idProcess) const {
    for (CProcess const& process : m_Processes)
        if (process.m_idProcess == idProcess) return &process;
    return nullptr;
}

CTrack const* CDocument::FindTrack(CSessionId idTrack) const {
    auto const place = m_TrackPlaces.find(idTrack);
    return place == m_TrackPlaces.end() ? nullptr : &m_Tracks[place->second];
}

CSession::CSession(std::vector<std::string> const& trackNames, int nSampleRate) {
    SetSampleRate(nSampleRate);
    for (DocumentKind kind : kDocumentKinds)
        for (std::string const& strName : trackNames) AddTrack(kind, strName);
}

CSession::CSession(CSessionData data) : m_Data(std::move(data)) {
    CheckSampleRate(m_Data.m_nSampleRate);
    CheckLinkOffset(m_Data.m_dLinkSMPTEOffset);
    CIdCheck ids(m_Data.m_idNext);
    for (CDocument& document : m_Data.m_Documents) {
        for (CTrack const& track : document.m_Tracks) CheckTrack(track, ids);
        Arrange(document);
        CheckDocument(document, ids);
    }
}

void CSession::Arrange(CDocument& document) {
    for (std::size_t nTrack = 0; nTrack < document.m_Tracks.size(); ++nTrack) {
        CTrack& track = document.m_Tracks[nTrack];
        document.m_TrackPlaces[track.m_idTrack] = nTrack;
        std::sort(track.m_Regions.begin(), track.m_Regions.end(), Earlier);
        for (CRegion const& region : track.m_Regions)
            document.m_RegionPlaces[region.m_idRegion] = {nTrack, region.Start()};
        for (CMarkerTrack const& markers : track.m_MarkerTracks)
            for (CMarkerArea const& area : markers.m_Areas)
                document.m_AreaTracks[area.m_idArea] = nTrack;
    }
}

CDocument const& CSession::Document(DocumentKind kind) const {
    return m_Data.m_Documents[static_cast<std::size_t>(kind)];
}

CDocument& CSession::MutableDocument(DocumentKind kind) {
    return m_Data.m_Documents[static_cast<std::size_t>(kind)];
}

void CSession::SetSelected(bool fSelected) {
    if (m_Data.m_fSelected == fSelected) return;
    m_Data.m_fSelected = fSelected;
    Changed();
}

void CSession::SetSampleRate(int nSampleRate) {
    CheckSampleRate(nSampleRate);
    if (m_Data.m_nSampleRate == nSampleRate) return;
    m_Data.m_nSampleRate = nSampleRate;
    Changed();
}

void CSession::SetLinkSMPTEOffset(double dOffset) {
    CheckLinkOffset(dOffset);
    if (m_Data.m_dLinkSMPTEOffset == dOffset) return;
    m_Data.m_dLinkSMPTEOffset = dOffset;
    Changed();
}

CSessionId CSession::AddTrack(DocumentKind kind, std::string const& strName) {
    CheckTrackName(strName);
    CDocument& document = MutableDocument(kind);
    CheckCount(document.m_Tracks.size(), kMaxTracks, "tracks");
    CTrack track;
    track.m_idTrack = NewId();
    track.m_strName = strName;
    track.m_MarkerTracks.push_back({NewId(), {}});
    document.m_TrackPlaces[track.m_idTrack] = document.m_Tracks.size();
    document.m_Tracks.push_back(std::move(track));
    Changed();
    return document.m_Tracks.back().m_idTrack;
}

CTrack const& CSession::Track(DocumentKind kind, CSessionId idTrack) const {
    if (CTrack const* pTrack = Document(kind).FindTrack(idTrack)) return *pTrack;
    throw CSessionError("there is no track with the id " + Text(idTrack));
}

CTrack& CSession::MutableTrack(DocumentKind kind, CSessionId idTrack) {
    return const_cast<CTrack&>(Track(kind, idTrack));
}

CRegion const& CSession::Region(DocumentKind kind, CSessionId idRegion) const {
    if (CRegion const* pRegion = Document(kind).FindRegion(idRegion)) return *pRegion;
    throw CSessionError("there is no region with the id " + Text(idRegion));
}

CProcess const& CSession::Process(DocumentKind kind, CSessionId idProcess) const {
    if (CProcess const* pProcess = Document(kind).FindProcess(idProcess)) return *pProcess;
    throw CSessionError("there is no process with the id " + Text(idProcess));
}

CMarkerTrack const& CSession::MarkerTrack(DocumentKind kind, CSessionId idMarkerTrack) const {
    for (CTrack const& track : Document(kind).m_Tracks)
        for (CMarkerTrack const& markers : track.m_MarkerTracks)
            if (markers.m_idMarkerTrack == idMarkerTrack) return markers;
    throw CSessionError("there is no marker track with the id " + Text(idMarkerTrack));
}

CTrack const& CSession::TrackAt(DocumentKind kind, std::int64_t nTrack) const {
    auto const& tracks = Document(kind).m_Tracks;
    auto const nCount = static_cast<std::int64_t>(tracks.size());
    if (nTrack >= 0 && nTrack < nCount) return tracks[static_cast<std::size_t>(nTrack)];
    throw CSessionError("there is no track number " + Text(nTrack) + ": the document has " +
                        Text(nCount) + (nCount == 1 ? " track" : " tracks") + ", counted from 0");
}

CSessionId CSession::AddRegion(DocumentKind kind, CSessionId idTrack, CRegion region) {
    CTrack& track = MutableTrack(kind, idTrack);
    CheckRegion(region);
    CDocument& document = MutableDocument(kind);
    CheckCount(document.m_RegionPlaces.size(), kMaxRegions, "regions");
    region.m_idRegion = NewId();
    CSessionId const idRegion = region.m_idRegion;
    auto const place =
        std::upper_bound(track.m_Regions.begin(), track.m_Regions.end(), region, Earlier);
    document.m_RegionPlaces[idRegion] = {document.m_TrackPlaces.at(idTrack), region.Start()};
    track.m_Regions.insert(place, std::move(region));
    document.m_idSelectedRegion = idRegion;
    Changed();
    return idRegion;
}

void CSession::DeleteRegion(DocumentKind kind, CSessionId idRegion) {
    Region(kind, idRegion);
    CDocument& document = MutableDocument(kind);
    auto const place = document.m_RegionPlaces.find(idRegion);
    auto const [nTrack, lStart] = place->second;
    document.m_RegionPlaces.erase(place);
    auto& regions = document.m_Tracks[nTrack].m_Regions;
    regions.erase(PlaceOf(regions, idRegion, lStart));
    for (CProcess& process : document.m_Processes)
        if (process.m_idRegion == idRegion) process.m_idRegion = kNullId;
    if (document.m_idSelectedRegion == idRegion) document.m_idSelectedRegion = kNullId;
    Changed();
}

void CSession::SelectRegion(DocumentKind kind, CSessionId idRegion) {
    if (idRegion != kNullId) Region(kind, idRegion);
    CDocument& document = MutableDocument(kind);
    if (document.m_idSelectedRegion == idRegion) return;
    document.m_idSelectedRegion = idRegion;
    Changed();
}

CSessionId CSession::AddProcess(DocumentKind kind, CProcess process) {
    CDocument& document = MutableDocument(kind);
    CheckProcess(document, process);
    CheckCount(document.m_Processes.size(), kMaxProcesses, "processes");
    process.m_idProcess = NewId();
    document.m_idLastProcess = process.m_idProcess;
    document.m_idSelectedProcess = process.m_idProcess;
    document.m_idSelectedRegion = process.m_idRegion;
    document.m_Processes.push_back(std::move(process));
    Changed();
    return document.m_idLastProcess;
}

void CSession::SelectProcess(DocumentKind kind, CSessionId idProcess) {
    CSessionId const idRegion =
        idProcess == kNullId ? kNullId : Process(kind, idProcess).m_idRegion;
    CDocument& document = MutableDocument(kind);
    if (document.m_idSelectedProcess == idProcess && document.m_idSelectedRegion == idRegion)
        return;
    document.m_idSelectedProcess = idProcess;
    document.m_idSelectedRegion = idRegion;
    Changed();
}

CSessionId CSession::AddMarkerArea(DocumentKind kind, CSessionId idMarkerTrack, std::int64_t lStart,
                                   std::int64_t lEnd) {
    auto& markers = const_cast<CMarkerTrack&>(MarkerTrack(kind, idMarkerTrack));
    CheckTimelineRange(lStart, lEnd);
    CDocument& document = MutableDocument(kind);
    CheckCount(document.m_AreaTracks.size(), kMaxMarkerAreas, "marker areas");
    markers.m_Areas.push_back({NewId(), lStart, lEnd});
    document.m_AreaTracks[markers.m_Areas.back().m_idArea] = TrackOf(document, idMarkerTrack);
    Changed();
    return markers.m_Areas.back().m_idArea;
}

void CSession::DeleteMarkerArea(DocumentKind kind, CSessionId idArea) {
    CDocument& document = MutableDocument(kind);
    auto const place = document.m_AreaTracks.find(idArea);
    if (place == document.m_AreaTracks.end())
        throw CSessionError("there is no marker area with the id " + Text(idArea));
    for (CMarkerTrack& markers : document.m_Tracks[place->second].m_MarkerTracks) {
        auto const area = std::find_if(
            markers.m_Areas.begin(), markers.m_Areas.end(),
            [&](CMarkerArea const& candidate) { return candidate.m_idArea == idArea; });
        if (area == markers.m_Areas.end()) continue;
        markers.m_Areas.erase(area);
        break;
    }
    document.m_AreaTracks.erase(place);
    Changed();
}

void CSession::MoveDisplayToPosition(DocumentKind kind, double dPosition) {
    CheckDisplayPosition(dPosition);
    CDocument& document = MutableDocument(kind);
    if (document.m_dDisplayPosition == dPosition) return;
    document.m_dDisplayPosition = dPosition;
    Changed();
}
