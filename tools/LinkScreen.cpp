#include "tools/LinkScreen.h"

#include <algorithm>
#include <cstdio>

#include "tools/InputOutput.h"

namespace {

constexpr std::size_t kShownEvents = 6;
constexpr std::size_t kRowsBesidesTracks = 8;

// Cuts a line, never inside a character.
std::string Fit(std::string strLine, std::size_t nColumns) {
    std::size_t nShown = 0;
    for (std::size_t nByte = 0; nByte < strLine.size(); ++nByte) {
        const bool fContinues = (static_cast<unsigned char>(strLine[nByte]) & 0xC0U) == 0x80U;
        if (!fContinues && ++nShown > nColumns) {
            strLine.resize(nByte);
            break;
        }
    }
    return strLine;
}

// The name without the quotation marks, in which nothing can move a terminal's cursor.
std::string Safe(std::string const& strName) {
    const std::string strQuoted = Quoted(strName);
    return strQuoted.substr(1, strQuoted.size() - 2);
}

std::string DescribeHost(CLinkMonitor const& monitor) {
    const int nHost = monitor.View().nHost;
    if (nHost < 0) return "no host";
    if (nHost == 0) return "a host with no session selected";
    std::string strText = "host " + std::to_string(nHost) + ", session selected";
    if (monitor.Process() > 0) strText += ", process " + std::to_string(monitor.Process());
    return strText;
}

std::string DescribeHeartbeat(double dAge) {
    if (dAge < 0) return "none";
    char text[64];
    std::snprintf(text, sizeof text, "%.1f s old%s", std::min(dAge, 99999.0),
                  dAge < 1 ? "" : " (the host is gone)");
    return text;
}

void AddTracks(std::vector<std::string>& lines, std::vector<std::string> const& tracks,
               std::size_t nRows) {
    lines.push_back("Tracks      " + std::to_string(tracks.size()));
    const std::size_t nShown =
        tracks.size() <= nRows ? tracks.size() : std::max<std::size_t>(nRows, 1) - 1;
    for (std::size_t nTrack = 0; nTrack < nShown; ++nTrack) {
        char number[32];
        std::snprintf(number, sizeof number, "  %4zu  ", nTrack);
        lines.push_back(number + Safe(tracks[nTrack]));
    }
    if (nShown < tracks.size()) {
        lines.push_back("        ... and " + std::to_string(tracks.size() - nShown) + " more");
    }
}

void AddEvents(std::vector<std::string>& lines, CLinkMonitor const& monitor) {
    if (monitor.Events().empty()) return;
    lines.emplace_back("Last events of the session");
    const std::size_t nShown = std::min(kShownEvents, monitor.Events().size());
    for (std::size_t n = 0; n < nShown; ++n)
        lines.push_back("  " + Safe(monitor.Events()[monitor.Events().size() - 1 - n]));
}

}  // namespace

std::vector<std::string> DrawLinkScreen(CLinkMonitor const& monitor, std::size_t nColumns,
                                        std::size_t nRows) {
    LinkView const& view = monitor.View();
    std::vector<std::string> lines;
    lines.push_back("Tavarin Pro link    " + DescribeHost(monitor));
    lines.push_back(
        "Heartbeat   " + DescribeHeartbeat(monitor.HeartbeatAge()) +
        (view.nHost > 0 ? ", update count " + std::to_string(monitor.UpdateCount()) : ""));
    if (!view.strError.empty()) lines.push_back(Safe(view.strError));
    if (!view.strAdvice.empty()) lines.push_back(Safe(view.strAdvice));
    lines.emplace_back();
    if (view.nHost > 0) {
        const std::size_t nOthers = kRowsBesidesTracks + kShownEvents;
        AddTracks(lines, view.tracks, nRows > nOthers ? nRows - nOthers : 0);
        lines.emplace_back();
    }
    AddEvents(lines, monitor);
    if (lines.size() > nRows) lines.resize(nRows);
    for (std::string& strLine : lines) strLine = Fit(std::move(strLine), nColumns);
    return lines;
}
