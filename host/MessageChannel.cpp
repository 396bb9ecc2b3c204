#include "host/MessageChannel.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "link/LinkClock.h"
#include "link/WordProtocol.h"
#include "platform/WordWait.h"

namespace {

// How long the thread waits for anything before it looks after the client.
constexpr std::int64_t kLookUs = 100'000;
constexpr char kRequestTaken = 1;

bool IsSet(const std::uint8_t* pFlag) noexcept {
    return __atomic_load_n(pFlag, __ATOMIC_SEQ_CST) != 0;
}

void Set(std::uint8_t* pFlag, std::uint8_t nValue) noexcept {
    __atomic_store_n(pFlag, nValue, __ATOMIC_SEQ_CST);
}

void SetWord(std::uint32_t* pWord, std::uint32_t nValue) noexcept {
    __atomic_store_n(pWord, nValue, __ATOMIC_SEQ_CST);
}

void PutConditionToRest(ConditionWords& condition) noexcept {
    SetWord(&condition.nWaiterCount, 0);
    SetWord(&condition.nCommand, kCommandSleep);
    SetWord(&condition.nEnterLock, 0);
}

// Every client ends its request with a NUL in the capacity's last byte. Another value there marks
// the request as taken, so that a later one is told apart from it even if its text is the same.
char* TakenMark(CHostMessageSegment const& segment) noexcept {
    return segment.Buffer() + MessageLayout::kRequestCapacity - 1;
}

// Copies what fits with its NUL; true when all of it did.
bool CopyText(std::string const& text, char* pTarget, std::size_t nTargetSize) noexcept {
    const std::size_t nLength = std::min(text.size(), nTargetSize - 1);
    std::memcpy(pTarget, text.data(), nLength);
    pTarget[nLength] = '\0';
    return nLength == text.size();
}

}  // namespace

CMessageChannel::CMessageChannel(int nId, SegmentName name, Handler handler)
    : m_handler(std::move(handler)),
      m_segment(nId, name),
      m_watch(m_segment.Descriptor(), Record()),
      m_thread([this] { Serve(); }) {}

CMessageChannel::~CMessageChannel() {
    Set(&Record()->fClosed, 1);
    WaitLimit limit{LinkTimeNow() + kLookUs};
    if (AcquireWordEagerly(&Record()->nExchangeMutex, limit.lTime)) {
        NotifyOne(&Record()->requestCondition, &limit);
        ReleaseWord(&Record()->nExchangeMutex);
    }
    WakeWord(&Record()->requestCondition.nCommand);
    m_thread.join();
    // Who waits behind a dead or halted client now finds the segment closed, and writes nothing.
    SetWord(&Record()->nExchangeMutex, 0);
    SetWord(&Record()->nRequestLock, 0);
}

bool CMessageChannel::Replace(CMessageChannel& old) noexcept {
    if (!m_segment.TakeNameOf(old.m_segment)) return false;
    old.m_fReplaced = true;
    return true;
}

void CMessageChannel::Serve() {
    while (GoesOn()) {
        if (!m_fMutexHeld) {
            if (!TakeMutex()) MendIfHolderIsGone();
        } else if (HasNewRequest()) {
            AnswerRequest();
        } else {
            WaitForRequest();
            if (!m_fMutexHeld || !HasNewRequest()) MendIfHolderIsGone();
        }
    }
    if (m_fMutexHeld) ReleaseWord(&Record()->nExchangeMutex);
    m_fEnded = true;
}

// A closed channel still answers the client that waits.
bool CMessageChannel::GoesOn() {
    if (IsClosed()) return TakeMutex() && IsClientWaiting();
    return !m_fReplaced || !HasNobody();
}

bool CMessageChannel::IsClosed() const noexcept {
    return IsSet(&Record()->fClosed);
}

bool CMessageChannel::HasNewRequest() const noexcept {
    return IsSet(&Record()->fPending) && *TakenMark(m_segment) != kRequestTaken;
}

bool CMessageChannel::IsClientWaiting() const noexcept {
    const std::uint32_t* const pWaiters = &Record()->replyCondition.nWaiterCount;
    return HasNewRequest() && __atomic_load_n(pWaiters, __ATOMIC_SEQ_CST) > 0;
}

// Once replaced, nobody comes any more.
bool CMessageChannel::HasNobody() {
    return CExclusiveUse(m_segment.Descriptor()).Others() == OtherUsers::None;
}

bool CMessageChannel::TakeMutex() {
    if (!m_fMutexHeld) {
        m_fMutexHeld = AcquireWordEagerly(&Record()->nExchangeMutex, LinkTimeNow() + kLookUs);
    }
    return m_fMutexHeld;
}

void CMessageChannel::WaitForRequest() {
    // Clients touch this condition with the mutex only, so nobody is in it.
    PutConditionToRest(Record()->requestCondition);
    WaitLimit limit{LinkTimeNow() + 2 * kLookUs};
    const bool fNotified =
        WaitOnCondition(&Record()->requestCondition, &Record()->nExchangeMutex,
                        LinkTimeNow() + kLookUs, m_fIdle ? kIdleHostPace : kHostPace, &limit);
    m_fIdle = !fNotified;
    m_fMutexHeld = !limit.fReached;
}

// Called with the exchange mutex held. It is free while the script runs, so that a client whose
// time-out ends can go its way.
void CMessageChannel::AnswerRequest() {
    const char* const pRequest = m_segment.Buffer();
    const std::string strRequest(pRequest, strnlen(pRequest, MessageLayout::kRequestCapacity));
    *TakenMark(m_segment) = kRequestTaken;
    ReleaseWord(&Record()->nExchangeMutex);
    m_fMutexHeld = false;

    const CServerReply reply = m_handler(strRequest);
    m_watch.NoteProgress();

    for (bool fWritten = false; TakeMutexForReply() && !HasNewRequest(); fWritten = true) {
        if (!fWritten) WriteReply(reply);
        Set(&Record()->fPending, 0);
        WaitLimit limit{LinkTimeNow() + kLookUs};
        const bool fNotified =
            NotifyOneAndRelease(&Record()->replyCondition, &Record()->nExchangeMutex, &limit);
        m_fMutexHeld = false;
        if (fNotified) WakeWord(&Record()->replyCondition.nCommand);
        if (!limit.fReached || MendIfHolderIsGone() || IsClosed()) break;
    }
}

// False when there is nobody to reply to any more.
bool CMessageChannel::TakeMutexForReply() {
    while (!TakeMutex()) {
        if (MendIfHolderIsGone() || IsClosed()) return false;
    }
    return true;
}

void CMessageChannel::WriteReply(CServerReply const& reply) {
    std::string strError = reply.strError;
    if (!CopyText(reply.strReply, m_segment.Buffer(), MessageLayout::kReplySize)) {
        if (!strError.empty()) strError += "; ";
        strError +=
            "the reply was cut after " + std::to_string(MessageLayout::kReplySize - 1) + " bytes";
    }
    CopyText(strError, m_segment.ErrorText(), MessageLayout::kErrorSize);
}

// True when a dead client's words have been put to rest; this thread then holds the mutex.
bool CMessageChannel::MendIfHolderIsGone() {
    if (!m_watch.IsSuspicious()) return false;
    {
        const CExclusiveUse use(m_segment.Descriptor());
        if (use.Others() == OtherUsers::None && m_watch.IsSuspicious()) {
            PutToRest();
            return true;
        }
    }
    const Holder holder = m_watch.Judge();
    m_fHeldUp = m_fHeldUp || holder == Holder::Halted;
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
    PutConditionToRest(pRecord->requestCondition);
    PutConditionToRest(pRecord->replyCondition);
    m_watch.NoteProgress();
    SetWord(&pRecord->nRequestLock, 0);
}
