#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <thread>

#include "host/HolderWatch.h"
#include "host/HostSegments.h"

/// What a host has to say to one request.
struct CServerReply {
    std::string strReply;  ///< what the script printed; ends at its first NUL for the client
    std::string strError;  ///< empty when the script raised no error
    std::uint32_t nUpdateCount = 0;  ///< the directory's update counter from now on
};

/// One message segment and the thread that answers the requests in it, one after the other.
///
/// A client may die at any step and leave its words behind. Whenever the thread has waited for a
/// moment in vain, it looks around: when the client that had the segment is proven dead, the words
/// are put back to rest and the request lock is freed for the next. When the client may be alive,
/// nothing in the segment is touched: `IsHeldUp` then asks for another channel under the host's
/// name, and this one goes on for those who are still in it. It looks around only where it owes
/// nothing to anybody: without the mutex, and never between an enter lock and its command.
class CMessageChannel {
public:
    /// One that throws has failed; the client then gets a text that says so.
    using Handler = std::function<CServerReply(std::string const& request)>;

    /// Makes the segment and starts answering with `handler`, on a thread of its own. Throws
    /// `CHostSegmentError` when the segment cannot be had.
    CMessageChannel(int nId, SegmentName name, Handler handler);
    /// Closes the segment to new requests, answers the one under way, sends away who is in it
    /// without an answer, and removes the segment.
    ~CMessageChannel();
    CMessageChannel(CMessageChannel const&) = delete;
    CMessageChannel& operator=(CMessageChannel const&) = delete;

    /// Whether a client that does not run has been keeping the others waiting. Any thread.
    bool IsHeldUp() const noexcept { return m_fHeldUp; }

    /// Takes the place of another channel, which then ends by itself when its last client leaves.
    /// False when the platform cannot do that.
    bool Replace(CMessageChannel& old) noexcept;

    /// Whether a replaced channel has come to its end. Any thread.
    bool HasEnded() const noexcept { return m_fEnded; }

private:
    void Serve();
    bool IsOver();
    bool IsClosed() const noexcept;
    bool HasNewRequest() const noexcept;
    bool TakeMutex();
    void FreeMutex() noexcept;
    void JoinWaitersForRequest() noexcept;
    void AwaitRequest();
    bool AnswerRequest();
    bool AwaitFreeEnterLock(ConditionWords& condition) noexcept;
    std::optional<CServerReply> RunRequest() noexcept;
    void WriteReply(std::optional<CServerReply> const& reply) noexcept;
    bool LookAround() noexcept;
    void PutToRest() noexcept;

    MessageRecord* Record() const noexcept { return m_segment.Record(); }

    const Handler m_handler;
    CHostMessageSegment m_segment;
    CHolderWatch m_watch;
    std::string m_strRequest;   ///< has room for the longest one
    bool m_fMutexHeld = false;  ///< by the answering thread
    std::atomic<bool> m_fHeldUp = false;
    std::atomic<bool> m_fReplaced = false;
    std::atomic<bool> m_fEnded = false;
    std::thread m_thread;
};
