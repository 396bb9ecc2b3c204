#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "link/TANClientInterProcess.h"

/// One exchange of the monitor's own.
struct MonitoredExchange {
    std::string strTime;  ///< local time of day, hh:mm:ss
    std::string strWhat;
    std::string strResult;
    double dMilliseconds;
};

/// What is known of the host at one moment.
struct LinkView {
    int nHost = -1;
    std::string strError;
    std::string strAdvice;
    std::vector<std::string> tracks;

    bool operator==(LinkView const&) const = default;
};

/// Looks at the host again and again: who it is, its tracks, how it is doing. Used on one thread.
class CLinkMonitor {
public:
    explicit CLinkMonitor(bool fAudioSuite) : m_fAudioSuite(fAudioSuite) {}

    /// Looks at the directory, and asks the host for its tracks when something has changed since
    /// the last time. True when the view differs from what it was.
    bool Look();

    /// Asks the host for its update count, so that there is an exchange to be timed.
    void Ask();

    LinkView const& View() const { return m_view; }
    /// Age of the host's heartbeat in seconds; negative when there is no directory.
    double HeartbeatAge() const;
    std::int64_t Process() const { return m_lProcess; }
    std::int32_t UpdateCount() const { return m_nUpdateCount; }
    /// The last exchanges, the newest first.
    std::deque<MonitoredExchange> const& Exchanges() const { return m_exchanges; }

private:
    template <typename Command>
    void Time(std::string const& strWhat, Command command);

    bool m_fAudioSuite;
    bool m_fLooked = false;
    CTANClientInterProcess m_client;
    LinkView m_view;
    std::int64_t m_lProcess = 0;
    std::int32_t m_nUpdateCount = 0;
    std::deque<MonitoredExchange> m_exchanges;
};
