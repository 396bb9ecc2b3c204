#include "tools/LinkMonitor.h"

#include <boost/interprocess/exceptions.hpp>
#include <chrono>
#include <ctime>

#include "link/LinkClock.h"
#include "link/MappedSegment.h"
#include "link/SharedSegments.h"

namespace {

constexpr int kTrackListTimeoutMs = 1000;
constexpr std::size_t kKeptExchanges = 20;

std::string TimeOfDay() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[16];
    std::strftime(text, sizeof text, "%H:%M:%S", &local);
    return text;
}

}  // namespace

template <typename Command>
void CLinkMonitor::Time(std::string const& strWhat, Command command) {
    const auto start = std::chrono::steady_clock::now();
    std::string strResult = command();
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - start;
    m_exchanges.push_front({TimeOfDay(), strWhat, std::move(strResult), taken.count()});
    if (m_exchanges.size() > kKeptExchanges) m_exchanges.pop_back();
}

bool CLinkMonitor::Look() {
    const int nHost = m_client.GetCurrentIdFromMainDirectory();
    const bool fChanged = m_client.NeedsUpdate();
    if (m_fLooked && !fChanged && nHost == m_view.nHost) return false;

    LinkView view;
    view.nHost = m_client.GetCurrentTANHost();
    if (view.nHost > 0) {
        Time("track list", [&] {
            m_client.ListTracksWithTimeout(m_fAudioSuite, &view.tracks, kTrackListTimeoutMs);
            return std::to_string(view.tracks.size()) + " tracks";
        });
    }
    view.strError = m_client.m_strLastError;
    view.strAdvice = m_client.m_strAdvice;
    const bool fNew = !m_fLooked || !(view == m_view);
    if (view.nHost != m_view.nHost) m_lProcess = 0;
    m_view = std::move(view);
    m_fLooked = true;
    return fNew;
}

void CLinkMonitor::Ask() {
    if (m_view.nHost < 1) return;
    Time("update count", [this] {
        std::string script = "print(GetUpdateCount())\n";
        std::string strReply;
        const int nStatus =
            m_client.SendTANMessage(m_view.nHost, script, strReply, kTrackListTimeoutMs);
        if (nStatus != 0) return "status " + std::to_string(nStatus);
        m_nUpdateCount = std::atoi(strReply.c_str());
        return std::to_string(m_nUpdateCount);
    });
    if (m_lProcess != 0) return;
    std::string script = "print(GetProcessID())\n";
    std::string strReply;
    if (m_client.SendTANMessage(m_view.nHost, script, strReply, kTrackListTimeoutMs) == 0) {
        m_lProcess = std::atoll(strReply.c_str());
    }
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
