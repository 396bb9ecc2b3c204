#include "host/Timeline.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <initializer_list>
#include <map>
#include <utility>

#include "host/AtomicFile.h"
#include "host/TimeScale.h"
#include "host/XmlText.h"

namespace {

// Places and sizes, in pixels.
constexpr double kWidth = 1600.0;
constexpr double kMargin = 28.0;
constexpr double kNameWidth = 176.0;
constexpr double kHeader = 84.0;
constexpr double kTitle = 46.0;
constexpr double kRuler = 26.0;
constexpr double kLane = 92.0;
constexpr double kLaneGap = 6.0;
constexpr double kMarkerStrip = 9.0;
constexpr double kProcessRow = 30.0;
constexpr double kPanelGap = 26.0;
constexpr double kLetter = 6.6;

/// Beyond so many regions in a picture the rest are drawn without waveforms.
constexpr int kMaxWaveforms = 400;

constexpr char const* kTrackColours[] = {"#6fb1d6", "#d9a86c", "#8cc594",
                                         "#b99be0", "#dd8f97", "#74c7bf"};

constexpr char const* kStyle = R"(
text{font-family:Inter,"Helvetica Neue","DejaVu Sans",Arial,sans-serif;fill:#d5dbe4}
.title{font-size:22px;font-weight:600;fill:#eef2f7}
.panel{font-size:15px;font-weight:600;fill:#eef2f7}
.dim{font-size:12px;fill:#8b96a5}
.name{font-size:14px;font-weight:600}
.file{font-size:11px;fill:#eef2f7}
.tick{font-size:11px;fill:#8b96a5}
.process{font-size:12px;fill:#f3e3c3}
)";

std::string Num(double dNumber) {
    return NumberText(dNumber, 2);
}

/// The text of an SVG document as it grows.
class CSvg {
public:
    using CAttributes = std::initializer_list<std::pair<char const*, std::string>>;

    /// An element without content.
    void Element(char const* pszName, CAttributes attributes) {
        Start(pszName, attributes);
        m_strText += "/>\n";
    }

    /// An element that holds what follows until `Close`.
    void Open(char const* pszName, CAttributes attributes) {
        Start(pszName, attributes);
        m_strText += ">\n";
    }

    void Close(char const* pszName) { m_strText += std::string("</") + pszName + ">\n"; }

    void Text(double dX, double dY, char const* pszClass, std::string const& strText,
              char const* pszAnchor = "start") {
        Start("text",
              {{"x", Num(dX)}, {"y", Num(dY)}, {"class", pszClass}, {"text-anchor", pszAnchor}});
        m_strText += ">" + XmlText(strText) + "</text>\n";
    }

    void Rect(double dX, double dY, double dW, double dH, double dRadius,
              std::string const& strFill, double dOpacity = 1.0) {
        Element("rect", {{"x", Num(dX)},
                         {"y", Num(dY)},
                         {"width", Num(dW)},
                         {"height", Num(dH)},
                         {"rx", Num(dRadius)},
                         {"fill", strFill},
                         {"fill-opacity", Num(dOpacity)}});
    }

    void Line(double dX1, double dY1, double dX2, double dY2, std::string const& strStroke,
              double dThickness = 1.0) {
        Element("line", {{"x1", Num(dX1)},
                         {"y1", Num(dY1)},
                         {"x2", Num(dX2)},
                         {"y2", Num(dY2)},
                         {"stroke", strStroke},
                         {"stroke-width", Num(dThickness)}});
    }

    /// Shown when the pointer rests on the element that is open.
    void Tip(std::string const& strText) {
        m_strText += "<title>" + XmlText(strText) + "</title>\n";
    }

    void Style(char const* pszStyle) {
        m_strText += std::string("<style>") + pszStyle + "</style>\n";
    }

    std::string Finished() { return std::move(m_strText); }

private:
    void Start(char const* pszName, CAttributes attributes) {
        m_strText += std::string("<") + pszName;
        for (auto const& [pszKey, strValue] : attributes)
            m_strText += std::string(" ") + pszKey + "=\"" + XmlText(strValue) + "\"";
    }

    std::string m_strText;
};

/// The front of a text that fits a width, with an ellipsis when something is missing.
std::string Shortened(std::string const& strText, double dWidth) {
    auto const nRoom = static_cast<std::size_t>(std::max(0.0, dWidth / kLetter));
    std::size_t nLetters = 0;
    std::size_t nCut = strText.size();
    for (std::size_t n = 0; n < strText.size(); ++n) {
        if ((static_cast<unsigned char>(strText[n]) & 0xC0) == 0x80) continue;
        if (++nLetters == nRoom) nCut = n;
    }
    if (nLetters <= nRoom) return strText;
    return nRoom < 4 ? std::string() : strText.substr(0, nCut) + "…";
}

char const* TrackColour(std::size_t nTrack) {
    return kTrackColours[nTrack % std::size(kTrackColours)];
}

/// Rows for things with a left and a right end, so that nothing in one row overlaps.
class CRows {
public:
    std::size_t Place(double dLeft, double dRight) {
        auto const row =
            std::find_if(m_Ends.begin(), m_Ends.end(), [&](double dEnd) { return dEnd <= dLeft; });
        if (row == m_Ends.end()) {
            m_Ends.push_back(dRight);
            return m_Ends.size() - 1;
        }
        *row = dRight;
        return static_cast<std::size_t>(row - m_Ends.begin());
    }

    std::size_t Count() const { return m_Ends.size(); }

private:
    std::vector<double> m_Ends;
};

/// Draws one document as a panel.
class CPanel {
public:
    CPanel(CSvg& svg, CSession const& session, DocumentKind kind, CTimeScale const& scale,
           CPeakCache& peaks, int& nWaveforms)
        : m_Svg(svg),
          m_Session(session),
          m_Document(session.Document(kind)),
          m_Kind(kind),
          m_Scale(scale),
          m_Peaks(peaks),
          m_nWaveforms(nWaveforms) {
        PlaceProcesses();
    }

    double Height() const {
        double const dLanes =
            static_cast<double>(std::max<std::size_t>(1, m_Document.m_Tracks.size()));
        double const dRows = static_cast<double>(m_Rows.Count());
        return kTitle + kRuler + dLanes * (kLane + kLaneGap) + dRows * kProcessRow +
               (dRows > 0 ? 16.0 : 0.0) + 10.0;
    }

    void Draw(double dTop) {
        m_dTop = dTop;
        m_Svg.Rect(kMargin, dTop, kWidth - 2 * kMargin, Height(), 10.0, "#1a1e25");
        DrawTitle();
        DrawLanes();
        DrawRuler();
        for (std::size_t n = 0; n < m_Document.m_Tracks.size(); ++n) DrawTrack(n);
        for (auto const& bar : m_Bars) DrawLinks(bar);
        for (auto const& bar : m_Bars) DrawProcess(bar);
        DrawCursor();
    }

private:
    /// A process's bar below the lanes.
    struct CBar {
        CProcess const* m_pProcess;
        std::string m_strText;
        double m_dLeft;
        double m_dRight;
        std::size_t m_nRow;
    };

    double LanesTop() const { return m_dTop + kTitle + kRuler; }
    double LaneTop(std::size_t nTrack) const {
        return LanesTop() + static_cast<double>(nTrack) * (kLane + kLaneGap);
    }
    double LanesBottom() const {
        return LaneTop(std::max<std::size_t>(1, m_Document.m_Tracks.size())) - kLaneGap;
    }
    double BarTop(CBar const& bar) const {
        return LanesBottom() + 16.0 + static_cast<double>(bar.m_nRow) * kProcessRow;
    }
    double Place(std::int64_t lPosition) const {
        return m_Scale.At(static_cast<double>(lPosition));
    }

    std::size_t TrackNumber(CSessionId idTrack) const {
        CTrack const* pTrack = m_Document.FindTrack(idTrack);
        return static_cast<std::size_t>(pTrack - m_Document.m_Tracks.data());
    }

    std::string ProcessText(CProcess const& process) const {
        std::string strText = std::string(ProcessKindName(process.m_Kind)) + ": ";
        for (std::size_t n = 0; n < process.m_Inputs.size(); ++n)
            strText += (n > 0 ? " + " : "") +
                       m_Document.FindTrack(process.m_Inputs[n].m_idTrack)->m_strName;
        return strText + " → " + m_Document.FindTrack(process.m_idOutputTrack)->m_strName;
    }

    void PlaceProcesses() {
        for (CProcess const& process : m_Document.m_Processes) {
            if (process.m_Inputs.empty()) continue;
            CProcessInput const& first = process.m_Inputs.front();
            std::string strText = ProcessText(process);
            double const dNeeded = static_cast<double>(strText.size()) * kLetter + 24.0;
            double const dLeft = std::min(Place(first.m_lStart), m_Scale.Right() - dNeeded);
            double const dRight = std::max(dLeft + dNeeded, Place(first.m_lEnd));
            m_Bars.push_back(
                {&process, std::move(strText), dLeft, dRight, m_Rows.Place(dLeft, dRight + 6.0)});
        }
    }

    void DrawTitle() {
        bool const fScript = m_Kind == DocumentKind::Script;
        m_Svg.Text(kMargin + 18.0, m_dTop + 29.0, "panel",
                   fScript ? "Script document" : "AudioSuite document");
        double const dPosition = m_Document.m_dDisplayPosition / m_Session.SampleRate();
        m_Svg.Text(kWidth - kMargin - 18.0, m_dTop + 29.0, "dim",
                   "display at " + TimeText(dPosition, 3), "end");
    }

    void DrawLanes() {
        if (m_Document.m_Tracks.empty())
            m_Svg.Text(m_Scale.Left(), LanesTop() + 30.0, "dim", "This document has no tracks.");
        for (std::size_t n = 0; n < m_Document.m_Tracks.size(); ++n)
            m_Svg.Rect(m_Scale.Left(), LaneTop(n), m_Scale.Right() - m_Scale.Left(), kLane, 5.0,
                       "#222730");
    }

    void DrawRuler() {
        double const dBase = LanesTop() - 6.0;
        for (CTimeScale::CTick const& tick : m_Scale.Ticks()) {
            m_Svg.Line(tick.m_dPlace, dBase - 14.0, tick.m_dPlace, LanesBottom(), "#2f3641");
            bool const fRoom = tick.m_dPlace + 50.0 < kWidth - kMargin;
            if (fRoom) m_Svg.Text(tick.m_dPlace + 4.0, dBase - 8.0, "tick", tick.m_strLabel);
        }
    }

    void DrawTrack(std::size_t nTrack) {
        CTrack const& track = m_Document.m_Tracks[nTrack];
        double const dTop = LaneTop(nTrack);
        m_Svg.Rect(kMargin + 18.0, dTop + 20.0, 4.0, 34.0, 2.0, TrackColour(nTrack));
        m_Svg.Text(kMargin + 32.0, dTop + 34.0, "name",
                   Shortened(track.m_strName, kNameWidth - 50.0));
        std::size_t const nRegions = track.m_Regions.size();
        m_Svg.Text(kMargin + 32.0, dTop + 52.0, "dim",
                   std::to_string(nRegions) + (nRegions == 1 ? " region" : " regions"));
        for (CRegion const& region : track.m_Regions) DrawRegion(region, dTop, TrackColour(nTrack));
        for (CMarkerTrack const& markers : track.m_MarkerTracks)
            for (CMarkerArea const& area : markers.m_Areas)
                m_Svg.Rect(Place(area.m_lStart), dTop + kLane - kMarkerStrip + 2.0,
                           std::max(2.0, Place(area.m_lEnd) - Place(area.m_lStart)), 4.0, 2.0,
                           "#e8c27a", 0.75);
    }

    std::string RegionText(CRegion const& region) const {
        std::string strText = std::filesystem::path(region.m_strFile).filename().string();
        if (region.m_nFileRate != m_Session.SampleRate())
            strText += "  (" + std::to_string(region.m_nFileRate) + " Hz)";
        return strText;
    }

    std::string RegionTip(CRegion const& region) const {
        double const dRate = m_Session.SampleRate();
        return region.m_strFile + "\n" + TimeText(static_cast<double>(region.Start()) / dRate, 3) +
               " to " + TimeText(static_cast<double>(region.End()) / dRate, 3);
    }

    void DrawRegion(CRegion const& region, double dLaneTop, std::string const& strColour) {
        double const dLeft = Place(region.Start());
        double const dWidth = std::max(2.0, Place(region.End()) - dLeft);
        double const dHeight = kLane - kMarkerStrip - 5.0;
        bool const fSelected = region.m_idRegion == m_Document.m_idSelectedRegion;
        m_Svg.Open("svg", {{"x", Num(dLeft)},
                           {"y", Num(dLaneTop + 3.0)},
                           {"width", Num(dWidth)},
                           {"height", Num(dHeight)}});
        m_Svg.Tip(RegionTip(region));
        m_Svg.Rect(0.5, 0.5, dWidth - 1.0, dHeight - 1.0, 4.0, strColour, 0.20);
        DrawWaveform(region, dWidth, dHeight, strColour);
        m_Svg.Element("rect", {{"x", "0.75"},
                               {"y", "0.75"},
                               {"width", Num(dWidth - 1.5)},
                               {"height", Num(dHeight - 1.5)},
                               {"rx", "4"},
                               {"fill", "none"},
                               {"stroke", fSelected ? "#f4f7fb" : strColour},
                               {"stroke-opacity", fSelected ? "1" : "0.55"},
                               {"stroke-width", fSelected ? "1.6" : "1"}});
        m_Svg.Text(7.0, 14.0, "file", Shortened(RegionText(region), dWidth - 12.0));
        m_Svg.Close("svg");
    }

    void DrawWaveform(CRegion const& region, double dWidth, double dHeight,
                      std::string const& strColour) {
        if (++m_nWaveforms > kMaxWaveforms) return;
        std::vector<CPeak> const& peaks = m_Peaks.Peaks(region);
        if (peaks.empty()) return;
        auto const nColumns =
            std::min(peaks.size(), static_cast<std::size_t>(std::max(2.0, dWidth)));
        float loudest = 0.1f;
        for (CPeak const& peak : peaks) loudest = std::max({loudest, -peak.m_Low, peak.m_High});
        double const dMiddle = 18.0 + (dHeight - 22.0) / 2.0;
        double const dScale = (dHeight - 26.0) / 2.0 / static_cast<double>(loudest);
        std::string strUpper;
        std::string strLower;
        for (std::size_t n = 0; n < nColumns; ++n) {
            CPeak column;
            for (std::size_t k = n * peaks.size() / nColumns; k < (n + 1) * peaks.size() / nColumns;
                 ++k) {
                column.m_Low = std::min(column.m_Low, peaks[k].m_Low);
                column.m_High = std::max(column.m_High, peaks[k].m_High);
            }
            double const dX =
                dWidth * (static_cast<double>(n) + 0.5) / static_cast<double>(nColumns);
            auto const point = [&](double dValue) {
                return NumberText(dX, 1) + " " + NumberText(dMiddle - dValue * dScale, 1);
            };
            strUpper +=
                (n == 0 ? "M" : "L") + point(static_cast<double>(column.m_High) + 0.4 / dScale);
            strLower.insert(0, "L" + point(static_cast<double>(column.m_Low) - 0.4 / dScale));
        }
        m_Svg.Element(
            "path",
            {{"d", strUpper + strLower + "Z"}, {"fill", strColour}, {"fill-opacity", "0.85"}});
    }

    /// Curves from each input to the result.
    void DrawLinks(CBar const& bar) {
        CRegion const* pResult = m_Document.FindRegion(bar.m_pProcess->m_idRegion);
        if (!pResult) return;
        std::size_t const nOutput = TrackNumber(bar.m_pProcess->m_idOutputTrack);
        for (CProcessInput const& input : bar.m_pProcess->m_Inputs) {
            std::size_t const nInput = TrackNumber(input.m_idTrack);
            bool const fDown = nInput <= nOutput;
            double const dX1 = (Place(input.m_lStart) + Place(input.m_lEnd)) / 2.0;
            double const dX2 = (Place(pResult->Start()) + Place(pResult->End())) / 2.0;
            double const dY1 = LaneTop(nInput) + (fDown ? kLane - 5.0 : 3.0);
            double const dY2 = LaneTop(nOutput) + (fDown ? 3.0 : kLane - 11.0);
            double const dBend = std::max(8.0, std::abs(dY2 - dY1) / 2.0) * (fDown ? 1.0 : -1.0);
            double const dSide = std::abs(dX1 - dX2) < 1.0 && nInput + 1 != nOutput ? 60.0 : 0.0;
            m_Svg.Element("path", {{"d", "M" + Num(dX1) + " " + Num(dY1) + "C" + Num(dX1 + dSide) +
                                             " " + Num(dY1 + dBend) + " " + Num(dX2 + dSide) + " " +
                                             Num(dY2 - dBend) + " " + Num(dX2) + " " + Num(dY2)},
                                   {"fill", "none"},
                                   {"stroke", "#e8c27a"},
                                   {"stroke-width", "1.6"},
                                   {"stroke-opacity", "0.8"}});
            for (auto [dX, dY] : {std::pair{dX1, dY1}, {dX2, dY2}})
                m_Svg.Element(
                    "circle",
                    {{"cx", Num(dX)}, {"cy", Num(dY)}, {"r", "3.2"}, {"fill", "#e8c27a"}});
        }
    }

    void DrawProcess(CBar const& bar) {
        double const dTop = BarTop(bar);
        bool const fSelected = bar.m_pProcess->m_idProcess == m_Document.m_idSelectedProcess;
        m_Svg.Element("rect", {{"x", Num(bar.m_dLeft)},
                               {"y", Num(dTop)},
                               {"width", Num(bar.m_dRight - bar.m_dLeft)},
                               {"height", "22"},
                               {"rx", "11"},
                               {"fill", "#e8c27a"},
                               {"fill-opacity", "0.14"},
                               {"stroke", "#e8c27a"},
                               {"stroke-opacity", fSelected ? "0.9" : "0.35"}});
        m_Svg.Text(bar.m_dLeft + 12.0, dTop + 15.5, "process", bar.m_strText);
    }

    void DrawCursor() {
        double const dX = m_Scale.At(m_Document.m_dDisplayPosition);
        double const dTop = LanesTop() - 7.0;
        m_Svg.Line(dX, dTop, dX, LanesBottom(), "#ff7f6b", 1.4);
        m_Svg.Element("path", {{"d", "M" + Num(dX - 5.0) + " " + Num(dTop - 2.0) + "h10l-5 7z"},
                               {"fill", "#ff7f6b"}});
    }

    CSvg& m_Svg;
    CSession const& m_Session;
    CDocument const& m_Document;
    DocumentKind m_Kind;
    CTimeScale const& m_Scale;
    CPeakCache& m_Peaks;
    int& m_nWaveforms;
    CRows m_Rows;
    std::vector<CBar> m_Bars;
    double m_dTop = 0.0;
};

/// The documents that hold something, or both when neither does.
std::vector<DocumentKind> ShownDocuments(CSession const& session) {
    std::vector<DocumentKind> shown;
    std::copy_if(kDocumentKinds.begin(), kDocumentKinds.end(), std::back_inserter(shown),
                 [&](DocumentKind kind) { return session.Document(kind).HoldsSomething(); });
    if (shown.empty()) shown.assign(kDocumentKinds.begin(), kDocumentKinds.end());
    return shown;
}

void DrawHeader(CSvg& svg, CSession const& session) {
    svg.Text(kMargin + 18.0, 44.0, "title", "Session");
    std::string strFacts = std::to_string(session.SampleRate()) + " Hz   ·   link offset " +
                           NumberText(session.LinkSMPTEOffset(), 3) + " s";
    if (!session.Selected()) strFacts += "   ·   not selected";
    svg.Text(kMargin + 18.0, 66.0, "dim", strFacts);
}

}  // namespace

std::string RenderTimeline(CSession const& session, CPeakCache& peaks) {
    peaks.Keep(session);
    double const dLeft = kMargin + kNameWidth;
    CTimeScale const scale(session, dLeft, kWidth - kMargin - 18.0 - dLeft);
    CSvg svg;
    int nWaveforms = 0;
    std::vector<CPanel> panels;
    double dHeight = kHeader;
    for (DocumentKind kind : ShownDocuments(session)) {
        panels.emplace_back(svg, session, kind, scale, peaks, nWaveforms);
        dHeight += panels.back().Height() + kPanelGap;
    }
    svg.Open("svg", {{"xmlns", "http://www.w3.org/2000/svg"},
                     {"width", Num(kWidth)},
                     {"height", Num(dHeight)},
                     {"viewBox", "0 0 " + Num(kWidth) + " " + Num(dHeight)}});
    svg.Style(kStyle);
    svg.Rect(0.0, 0.0, kWidth, dHeight, 0.0, "#12151a");
    DrawHeader(svg, session);
    double dTop = kHeader;
    for (CPanel& panel : panels) {
        panel.Draw(dTop);
        dTop += panel.Height() + kPanelGap;
    }
    svg.Close("svg");
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + svg.Finished();
}

std::string RenderTimeline(CSession const& session) {
    CPeakCache peaks;
    return RenderTimeline(session, peaks);
}

void WriteTimeline(CSession const& session, CPeakCache& peaks, std::string const& strPath) {
    WriteFileAtomically(strPath, RenderTimeline(session, peaks));
}
