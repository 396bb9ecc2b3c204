#pragma once

#include <condition_variable>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "host/HostSegments.h"
#include "host/MessageChannel.h"

/// The host's side of the link: announces itself in the directory and answers one request after
/// the other.
///
/// Threads: requests are answered on a thread of its own, and the heartbeat is kept on another, so
/// that a long script does not make the host look dead. The public operations are safe on any
/// thread. A request that its client gave up waiting for is run to its end, and its reply is
/// dropped when another client's request has taken its place meanwhile.
///
/// A client that dies in the middle of an exchange costs the others about a second at most. One
/// that is only halted, by a signal or a debugger, keeps its segment until it goes on or dies, and
/// so do those that were already waiting behind it; everybody else gets a fresh one.
class CLinkServer {
public:
    using Handler = CMessageChannel::Handler;

    /// Creates the segments and starts answering with `handler`, which is called for one request at
    /// a time, but not always on the same thread. The update counter is in the directory before the
    /// first request is answered. Throws `CHostSegmentError` when the segments cannot be had, or
    /// without a given lock when another host has it.
    CLinkServer(int nId, bool fSessionSelected, Handler handler, std::uint32_t nUpdateCount = 0,
                std::shared_ptr<const CHostLock> pLock = std::make_shared<CHostLock>());
    /// Closes the segments to new requests, answers the one under way and removes the segments.
    ~CLinkServer();
    CLinkServer(CLinkServer const&) = delete;
    CLinkServer& operator=(CLinkServer const&) = delete;

    /// Writes this host's id into the directory, or 0 when no session is selected.
    void SelectSession(bool fSelected);
    /// Writes the directory's update counter.
    void SetUpdateCount(std::uint32_t nUpdateCount) noexcept;

private:
    CServerReply Answer(std::string const& request);
    void KeepUp();
    void RefreshDirectory() noexcept;
    void LookAfterChannels();

    const int m_nId;
    const Handler m_handler;
    std::mutex m_handlerMutex;
    const std::shared_ptr<const CHostLock> m_pLock;
    CHostDirectory m_directory;
    std::mutex m_channelsMutex;
    std::list<CMessageChannel>
        m_channels;  ///< the last one is where clients look; empty at the end
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_fSessionSelected;
    bool m_fStop = false;
    std::thread m_keeper;
};
