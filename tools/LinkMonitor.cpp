#include "tools/LinkMonitor.h"

#include <boost/interprocess/exceptions.hpp>
#include <cstdlib>
#include <sstream>

#include "link/LinkClock.h"
#include "link/MappedSegment.h"
#include "link/SharedSegments.h"

namespace {

constexpr int kTimeoutMs = 1000;
constexpr std::int64_t kKeptEvents = 20;

// Hosts that keep no journal print the first two lines, whatever they make of the rest.
std::string QuestionScript(std::int64_t lSeen) {
    return "print(GetUpdateCount())\nprint(GetProcessID())\n"
           "if GetEventCount then\n"
           "nCount = GetEventCount()\nprint(nCount)\n"
           "nFirst = math.max(nCount < " +
           std::to_string(lSeen) + " and 0 or " + std::to_string(lSeen) + ", nCount-" +
           std::to_string(kKeptEvents) +
           ")\n"
           "for nEvent = nFirst,nCount-1 do print(GetEvent(nEvent)) end\n"
           "end\n";
}

std::vector<std::string> Lines(std::string const& strText) {
    std::vector<std::string> lines;
    std::istringstream text(strText);
    for (std::string strLine; std::getline(text, strLine);) lines.push_back(strLine);
    return lines;
}

}  // namespace

void CLinkMonitor::ForgetHost() {
    m_lProcess = 0;
    m_lSeen = 0;
    m_events.clear();
}

bool CLinkMonitor::Look() {
    const int nHost = m_client.GetCurrentIdFromMainDirectory();
    const bool fChanged = m_client.NeedsUpdate();
    if (m_fLooked && !fChanged && nHost == m_view.nHost) return false;

    LinkView view;
    view.nHost = m_client.GetCurrentTANHost();
    if (view.nHost > 0) m_client.ListTracksWithTimeout(m_fAudioSuite, &view.tracks, kTimeoutMs);
    view.strError = m_client.m_strLastError;
    view.strAdvice = m_client.m_strAdvice;
    const bool fNew = !m_fLooked || !(view == m_view);
    if (view.nHost != m_view.nHost) ForgetHost();
    m_view = std::move(view);
    m_fLooked = true;
    return fNew;
}

bool CLinkMonitor::Ask() {
    m_nNewEvents = 0;
    if (m_view.nHost < 1) return false;
    std::string strScript = QuestionScript(m_lSeen), strReply;
    if (m_client.SendTANMessage(m_view.nHost, strScript, strReply, kTimeoutMs) != 0) return false;
    const std::vector<std::string> lines = Lines(strReply);
    if (lines.empty()) return false;
    m_nUpdateCount = std::atoi(lines[0].c_str());
    if (lines.size() < 2) return false;
    const std::int64_t lProcess = std::atoll(lines[1].c_str());
    if (m_lProcess != 0 && lProcess != m_lProcess) ForgetHost();
    m_lProcess = lProcess;
    if (lines.size() < 3) return false;
    m_lSeen = std::atoll(lines[2].c_str());
    m_events.insert(m_events.end(), lines.begin() + 3, lines.end());
    while (m_events.size() > kKeptEvents) m_events.pop_front();
    m_nNewEvents = lines.size() - 3;
    return m_nNewEvents > 0;
}

double CLinkMonitor::HeartbeatAge() const {
    try {
        const CMappedSegment segment(szDirectorySegment);
        if (segment.Size() < sizeof(DirectoryRecord)) return -1;
        // One look without the lock: a torn number would be shown for a fifth of a second.
        const std::int64_t lHeartbeat =
            reinterpret_cast<const DirectoryRecord*>(segment.Bytes())->lHeartbeat;
        return static_cast<double>(LinkTimeNow() - lHeartbeat) / kMicrosecondsPerSecond;
    } catch (boost::interprocess::interprocess_exception const&) {
        return -1;
    }
}
