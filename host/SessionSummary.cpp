#include "host/SessionSummary.h"

#include <filesystem>

#include "host/TimeScale.h"

namespace {

char const* DocumentName(DocumentKind kind) {
    return kind == DocumentKind::Script ? "Script document" : "AudioSuite document";
}

std::string Seconds(std::int64_t lSamples, int nSampleRate) {
    return NumberText(static_cast<double>(lSamples) / nSampleRate, 2) + " s";
}

std::string DescribeRegion(CRegion const& region, int nSampleRate) {
    const bool fResampled = region.m_nFileRate != nSampleRate;
    return "    region from " + std::to_string(region.Start()) + " to " +
           std::to_string(region.End()) + " (" + Seconds(region.Length(), nSampleRate) + ") of " +
           std::filesystem::path(region.m_strFile).filename().string() +
           (fResampled ? ", resampled from " + std::to_string(region.m_nFileRate) + " Hz\n" : "\n");
}

std::string DescribeTrack(CTrack const& track, int nSampleRate) {
    std::string strText = "  track " + track.m_strName + "\n";
    for (CRegion const& region : track.m_Regions) strText += DescribeRegion(region, nSampleRate);
    return strText;
}

std::string TrackName(CDocument const& document, CSessionId idTrack) {
    CTrack const* const pTrack = document.FindTrack(idTrack);
    return pTrack ? pTrack->m_strName : "a track that is gone";
}

std::string DescribeProcess(CDocument const& document, CProcess const& process) {
    std::string strText = std::string("  ") + ProcessKindName(process.m_Kind) + " process: ";
    for (std::size_t nInput = 0; nInput < process.m_Inputs.size(); ++nInput) {
        if (nInput > 0) strText += " and ";
        strText += TrackName(document, process.m_Inputs[nInput].m_idTrack);
    }
    return strText + " in, " + TrackName(document, process.m_idOutputTrack) + " out\n";
}

}  // namespace

std::string DescribeSession(CSession const& session) {
    std::string strText;
    for (DocumentKind kind : kDocumentKinds) {
        CDocument const& document = session.Document(kind);
        if (!document.HoldsSomething()) continue;
        strText += std::string(DocumentName(kind)) + "\n";
        for (CTrack const& track : document.m_Tracks) {
            strText += DescribeTrack(track, session.SampleRate());
        }
        for (CProcess const& process : document.m_Processes) {
            strText += DescribeProcess(document, process);
        }
    }
    return strText.empty() ? "Nothing was captured.\n" : strText;
}
