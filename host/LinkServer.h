#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "host/HostSegments.h"

/// What a host has to say to one request.
struct CServerReply {
    std::string strReply;  ///< what the script printed; ends at its first NUL for the client
    std::string strError;  ///< empty when the script raised no error
    std::uint32_t nUpdateCount = 0;  ///< the directory's update counter from now on
};

/// The host's side of the link: announces itself in the directory and answers one request after
/// the other.
///
/// Threads: requests are answered on a thread of its own, and the heartbeat is kept on another, so
/// that a long script does not make the host look dead. The public operations are safe on any
/// thread. A request that its client gave up waiting for is run to its end, and its reply is
/// dropped when another client's request has taken its place meanwhile.
class CLinkServer {
public:
    using Handler = std::function<CServerReply(std::string const& request)>;

    /// Creates the segments and starts answering with `handler`, which is called on the answering
    /// thread only. Throws `CHostSegmentError` when the segments cannot be had.
    CLinkServer(int nId, bool fSessionSelected, Handler handler);
    /// Closes the segments to new requests, answers the one under way and removes the segments.
    ~CLinkServer();
    CLinkServer(CLinkServer const&) = delete;
    CLinkServer& operator=(CLinkServer const&) = delete;

    /// Writes this host's id into the directory, or 0 when no session is selected.
    void SelectSession(bool fSelected);
    /// Writes the directory's update counter.
    void SetUpdateCount(std::uint32_t nUpdateCount) noexcept;

private:
    void ServeRequests();
    bool HasNewRequest() const noexcept;
    bool IsClientWaiting() const noexcept;
    void AnswerRequest();
    void WriteReply(CServerReply const& reply);
    void KeepHeartbeat();
    void RefreshDirectory() noexcept;

    const int m_nId;
    const Handler m_handler;
    CHostSegments m_segments;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_fSessionSelected;
    bool m_fStop = false;
    std::thread m_serveThread;
    std::thread m_heartbeatThread;
};
