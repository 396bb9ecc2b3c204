#include "host/MessageChannel.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "host/Farewell.h"
#include "link/LinkClock.h"
#include "link/WordProtocol.h"
#include "platform/WordWait.h"

namespace {

// How long the thread waits for anything before it looks after the client.
constexpr std::int64_t kLookUs = 20'000;
// So many looks in vain, and the host rests.
constexpr int kLooksUntilIdle = 5;
constexpr char kRequestTaken = 1;
constexpr std::string_view strHostFailed = "The host application failed to carry this out.";
constexpr std::string_view strReplyCut = "the reply was cut after 1048575 bytes";
static_assert(MessageLayout::kReplySize == 1048576);

bool IsSet(const std::uint8_t* pFlag) noexcept {
    return __atomic_load_n(pFlag, __ATOMIC_SEQ_CST) != 0;
}

void Set(std::uint8_t* pFlag, std::uint8_t nValue) noexcept {
    __atomic_store_n(pFlag, nValue, __ATOMIC_SEQ_CST);
}

void SetWord(std::uint32_t* pWord, std::uint32_t nValue) noexcept {
    __atomic_store_n(pWord, nValue, __ATOMIC_SEQ_CST);
}

// Every client ends its request with a NUL in the capacity's last byte. Another value there marks
// the request as taken, so that a later one is told apart from it even if its text is the same.
char* TakenMark(CHostMessageSegment const& segment) noexcept {
    return segment.Buffer() + MessageLayout::kRequestCapacity - 1;
}

// Writes texts one after the other into a buffer, as far as they fit with a NUL behind them.
class CTextBuffer {
public:
    CTextBuffer(char* pStart, std::size_t nSize) noexcept : m_pNext(pStart), m_nLeft(nSize - 1) {
        *m_pNext = '\0';
    }

    // False when the text was cut.
    bool Add(std::string_view text) noexcept {
        const std::size_t nLength = std::min(text.size(), m_nLeft);
        std::memcpy(m_pNext, text.data(), nLength);
        m_pNext += nLength;
        m_nLeft -= nLength;
        *m_pNext = '\0';
        return nLength == text.size();
    }

private:
    char* m_pNext;
    std::size_t m_nLeft;
};

}  // namespace

CMessageChannel::CMessageChannel(int nId, SegmentName name, Handler handler)
    : m_handler(std::move(handler)),
      m_segment(nId, name),
      m_watch(m_segment.Descriptor(), Record()) {
    m_strRequest.reserve(MessageLayout::kRequestCapacity);
    m_thread = std::thread([this] { Serve(); });
}

CMessageChannel::~CMessageChannel() {
    Set(&Record()->fClosed, 1);
    m_thread.join();
    SendEverybodyAway(m_segment.Descriptor(), reinterpret_cast<unsigned char*>(Record()),
                      MessageLayout::kSegmentSize);
}

bool CMessageChannel::Replace(CMessageChannel& old) noexcept {
    if (!m_segment.TakeNameOf(old.m_segment)) return false;
    old.m_fReplaced = true;
    return true;
}

void CMessageChannel::Serve() {
    while (!IsOver() && TakeMutex()) {
        if (HasNewRequest()) {
            if (!AnswerRequest()) continue;
        } else {
            JoinWaitersForRequest();
        }
        AwaitRequest();
    }
    // Who had passed the closed flag is answered still.
    if (IsClosed() && TakeMutex() && HasNewRequest()) AnswerRequest();
    if (m_fMutexHeld) FreeMutex();
    m_fEnded = true;
}

// Once replaced, nobody comes any more.
bool CMessageChannel::IsOver() {
    if (IsClosed()) return true;
    return m_fReplaced && CExclusiveUse(m_segment.Descriptor()).Others() == OtherUsers::None;
}

bool CMessageChannel::IsClosed() const noexcept {
    return IsSet(&Record()->fClosed);
}

bool CMessageChannel::HasNewRequest() const noexcept {
    return IsSet(&Record()->fPending) && *TakenMark(m_segment) != kRequestTaken;
}

// False when it is over and the mutex was not to be had.
bool CMessageChannel::TakeMutex() {
    while (!m_fMutexHeld) {
        m_fMutexHeld = AcquireWordEagerly(&Record()->nExchangeMutex, LinkTimeNow() + kLookUs);
        if (!m_fMutexHeld && !LookAround() && IsOver()) return false;
    }
    m_watch.NoteProgress();
    return true;
}

void CMessageChannel::FreeMutex() noexcept {
    ReleaseWord(&Record()->nExchangeMutex);
    m_fMutexHeld = false;
}

void CMessageChannel::JoinWaitersForRequest() noexcept {
    JoinWaiters(&Record()->requestCondition, &Record()->nExchangeMutex, kNoDeadline);
    m_fMutexHeld = false;
}

// The thread stays among the waiters until a request comes.
void CMessageChannel::AwaitRequest() {
    ConditionWords* const pCondition = &Record()->requestCondition;
    for (int nLooks = 0;; ++nLooks) {
        WaitPace const& pace = nLooks < kLooksUntilIdle ? kHostPace : kIdleHostPace;
        if (AwaitCommand(pCondition, LinkTimeNow() + kLookUs, pace)) break;
        if (LookAround() || IsOver()) return;
    }
    m_watch.NoteProgress();
}

// Called with the exchange mutex held. It is free while the script runs, so that a client whose
// time-out ends can go its way. True when the reply has gone out and the thread is among the
// waiters for the next request: its client, once it is woken, never meets this thread at the mutex.
bool CMessageChannel::AnswerRequest() {
    ConditionWords* const pCondition = &Record()->replyCondition;
    const char* const pRequest = m_segment.Buffer();
    m_strRequest.assign(pRequest, strnlen(pRequest, MessageLayout::kRequestCapacity));
    *TakenMark(m_segment) = kRequestTaken;
    FreeMutex();

    const std::optional<CServerReply> reply = RunRequest();

    for (bool fWritten = false; TakeMutex() && !HasNewRequest(); fWritten = true) {
        if (!fWritten) WriteReply(reply);
        Set(&Record()->fPending, 0);
        if (AcquireWordEagerly(&pCondition->nEnterLock, LinkTimeNow() + kLookUs)) {
            // In a closed segment the thread may be among them still, and no request comes.
            const bool fGoesOn = !IsClosed();
            fGoesOn ? JoinWaitersForRequest() : FreeMutex();
            if (NotifyOneEntered(pCondition)) WakeWord(&pCondition->nCommand);
            m_watch.NoteProgress();
            return fGoesOn;
        }
        FreeMutex();
        if (!AwaitFreeEnterLock(*pCondition)) return false;
    }
    return false;
}

// Its client is on the way into the condition or out of it, and may need the mutex, which is free
// meanwhile. False when there is nobody to reply to any more.
bool CMessageChannel::AwaitFreeEnterLock(ConditionWords& condition) noexcept {
    while (__atomic_load_n(&condition.nEnterLock, __ATOMIC_SEQ_CST) != 0) {
        if (LookAround() || IsOver()) return false;
        SleepOnWord(&condition.nEnterLock, 1, kLookUs);
    }
    return true;
}

std::optional<CServerReply> CMessageChannel::RunRequest() noexcept {
    try {
        return m_handler(m_strRequest);
    } catch (std::exception const&) {
        return std::nullopt;
    }
}

void CMessageChannel::WriteReply(std::optional<CServerReply> const& reply) noexcept {
    CTextBuffer text(m_segment.Buffer(), MessageLayout::kReplySize);
    CTextBuffer error(m_segment.ErrorText(), MessageLayout::kErrorSize);
    if (!reply) {
        error.Add(strHostFailed);
        return;
    }
    error.Add(reply->strError);
    if (text.Add(reply->strReply)) return;
    if (!reply->strError.empty()) error.Add("; ");
    error.Add(strReplyCut);
}

// True when a dead client's words have been put to rest; this thread then holds the mutex, and does
// not wait for anything any more.
bool CMessageChannel::LookAround() noexcept {
    if (IsClosed() || !m_watch.IsSuspicious()) return false;
    {
        const CExclusiveUse use(m_segment.Descriptor());
        if (use.Others() == OtherUsers::None && m_watch.IsSuspicious()) {
            PutToRest();
            return true;
        }
    }
    const Holder holder = m_watch.Judge();
    m_fHeldUp = m_fHeldUp || holder == Holder::Doubtful;
    if (holder != Holder::Gone) return false;
    PutToRest();
    return true;
}

// For the moment nobody but this thread has anything in the segment: those who wait for the request
// lock look at that word alone, so it comes last. What the dead client may have been writing is not
// a request.
void CMessageChannel::PutToRest() noexcept {
    MessageRecord* const pRecord = Record();
    SetWord(&pRecord->nExchangeMutex, 1);
    m_fMutexHeld = true;
    Set(&pRecord->fPending, 0);
    for (ConditionWords* const pCondition :
         {&pRecord->requestCondition, &pRecord->replyCondition}) {
        SetWord(&pCondition->nWaiterCount, 0);
        SetWord(&pCondition->nCommand, kCommandSleep);
        SetWord(&pCondition->nEnterLock, 0);
    }
    m_watch.NoteProgress();
    SetWord(&pRecord->nRequestLock, 0);
}
