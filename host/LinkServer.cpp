#include "host/LinkServer.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "link/LinkClock.h"
#include "link/WordProtocol.h"
#include "platform/WordWait.h"

namespace {

constexpr std::chrono::milliseconds kHeartbeatPeriod{250};
constexpr std::int64_t kDirectoryLockUs = 100'000;
constexpr char kRequestTaken = 1;

bool IsSet(const std::uint8_t* pFlag) noexcept {
    return __atomic_load_n(pFlag, __ATOMIC_SEQ_CST) != 0;
}

void Set(std::uint8_t* pFlag, std::uint8_t nValue) noexcept {
    __atomic_store_n(pFlag, nValue, __ATOMIC_SEQ_CST);
}

// Every client ends its request with a NUL in the capacity's last byte. Another value there marks
// the request as taken, so that a later one is told apart from it even if its text is the same.
char* TakenMark(CHostSegments const& segments) noexcept {
    return segments.Buffer() + MessageLayout::kRequestCapacity - 1;
}

// Copies what fits with its NUL; true when all of it did.
bool CopyText(std::string const& text, char* pTarget, std::size_t nTargetSize) noexcept {
    const std::size_t nLength = std::min(text.size(), nTargetSize - 1);
    std::memcpy(pTarget, text.data(), nLength);
    pTarget[nLength] = '\0';
    return nLength == text.size();
}

}  // namespace

CLinkServer::CLinkServer(int nId, bool fSessionSelected, Handler handler)
    : m_nId(nId),
      m_handler(std::move(handler)),
      m_segments(nId),
      m_fSessionSelected(fSessionSelected) {
    RefreshDirectory();
    m_serveThread = std::thread([this] { ServeRequests(); });
    m_heartbeatThread = std::thread([this] { KeepHeartbeat(); });
}

CLinkServer::~CLinkServer() {
    MessageRecord* const pMessage = m_segments.Message();
    Set(&pMessage->fClosed, 1);
    AcquireWordEagerly(&pMessage->nExchangeMutex);
    NotifyOne(&pMessage->requestCondition);
    ReleaseWord(&pMessage->nExchangeMutex);
    WakeWord(&pMessage->requestCondition.nCommand);
    m_serveThread.join();
    {
        const std::lock_guard guard(m_mutex);
        m_fStop = true;
    }
    m_wake.notify_one();
    m_heartbeatThread.join();
}

void CLinkServer::SelectSession(bool fSelected) {
    {
        const std::lock_guard guard(m_mutex);
        m_fSessionSelected = fSelected;
    }
    RefreshDirectory();
}

void CLinkServer::SetUpdateCount(std::uint32_t nUpdateCount) noexcept {
    __atomic_store_n(&m_segments.Directory()->nUpdateCount, nUpdateCount, __ATOMIC_RELEASE);
}

void CLinkServer::ServeRequests() {
    MessageRecord* const pMessage = m_segments.Message();
    AcquireWordEagerly(&pMessage->nExchangeMutex);
    while (!IsSet(&pMessage->fClosed) || IsClientWaiting()) {
        if (HasNewRequest()) {
            AnswerRequest();
        } else {
            WaitOnCondition(&pMessage->requestCondition, &pMessage->nExchangeMutex, kNoDeadline,
                            kHostPace);
        }
    }
    ReleaseWord(&pMessage->nExchangeMutex);
}

bool CLinkServer::HasNewRequest() const noexcept {
    return IsSet(&m_segments.Message()->fPending) && *TakenMark(m_segments) != kRequestTaken;
}

bool CLinkServer::IsClientWaiting() const noexcept {
    const std::uint32_t* const pWaiters = &m_segments.Message()->replyCondition.nWaiterCount;
    return HasNewRequest() && __atomic_load_n(pWaiters, __ATOMIC_SEQ_CST) > 0;
}

// Called and left with the exchange mutex held. It is free while the script runs, so that a client
// whose time-out ends can go its way.
void CLinkServer::AnswerRequest() {
    MessageRecord* const pMessage = m_segments.Message();
    const char* const pRequest = m_segments.Buffer();
    const std::string strRequest(pRequest, strnlen(pRequest, MessageLayout::kRequestCapacity));
    *TakenMark(m_segments) = kRequestTaken;
    ReleaseWord(&pMessage->nExchangeMutex);

    const CServerReply reply = m_handler(strRequest);
    SetUpdateCount(reply.nUpdateCount);

    AcquireWordEagerly(&pMessage->nExchangeMutex);
    if (HasNewRequest()) return;
    WriteReply(reply);
    Set(&pMessage->fPending, 0);
    if (NotifyOneAndRelease(&pMessage->replyCondition, &pMessage->nExchangeMutex)) {
        WakeWord(&pMessage->replyCondition.nCommand);
    }
    AcquireWordEagerly(&pMessage->nExchangeMutex);
}

void CLinkServer::WriteReply(CServerReply const& reply) {
    std::string strError = reply.strError;
    if (!CopyText(reply.strReply, m_segments.Buffer(), MessageLayout::kReplySize)) {
        if (!strError.empty()) strError += "; ";
        strError +=
            "the reply was cut after " + std::to_string(MessageLayout::kReplySize - 1) + " bytes";
    }
    CopyText(strError, m_segments.ErrorText(), MessageLayout::kErrorSize);
}

void CLinkServer::KeepHeartbeat() {
    std::unique_lock lock(m_mutex);
    while (!m_wake.wait_for(lock, kHeartbeatPeriod, [this] { return m_fStop; })) {
        lock.unlock();
        RefreshDirectory();
        lock.lock();
    }
}

void CLinkServer::RefreshDirectory() noexcept {
    bool fSelected = false;
    {
        const std::lock_guard guard(m_mutex);
        fSelected = m_fSessionSelected;
    }
    DirectoryRecord* const pDirectory = m_segments.Directory();
    const CWordLock lock(&pDirectory->nLock, LinkTimeNow() + kDirectoryLockUs);
    if (!lock.IsHeld()) return;
    pDirectory->nCurrentHost = fSelected ? m_nId : 0;
    pDirectory->lHeartbeat = LinkTimeNow();
}
