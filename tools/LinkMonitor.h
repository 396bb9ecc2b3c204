#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "link/TANClientInterProcess.h"

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

    /// Asks the host for its update count and for what has happened to its session. True when
    /// there is something new.
    bool Ask();

    LinkView const& View() const { return m_view; }
    /// Age of the host's heartbeat in seconds; negative when there is no directory.
    double HeartbeatAge() const;
    std::int64_t Process() const { return m_lProcess; }
    std::int32_t UpdateCount() const { return m_nUpdateCount; }
    /// The last events of the session, the oldest first, each with its time of day. A host that
    /// keeps no journal has none.
    std::deque<std::string> const& Events() const { return m_events; }
    /// How many of them came with the last `Ask`.
    std::size_t NewEvents() const { return m_nNewEvents; }

private:
    void ForgetHost();

    bool m_fAudioSuite;
    bool m_fLooked = false;
    CTANClientInterProcess m_client;
    LinkView m_view;
    std::int64_t m_lProcess = 0;
    std::int32_t m_nUpdateCount = 0;
    std::int64_t m_lSeen = 0;  // how many events the host had
    std::size_t m_nNewEvents = 0;
    std::deque<std::string> m_events;
};
