#include "host/Farewell.h"

#include <algorithm>
#include <boost/interprocess/exceptions.hpp>
#include <string>
#include <string_view>

#include "link/LinkClock.h"
#include "link/MappedSegment.h"
#include "link/SharedSegments.h"
#include "platform/SharedMemory.h"
#include "platform/WordWait.h"

namespace {

constexpr std::int64_t kLongestUs = kMicrosecondsPerSecond;
constexpr int kBetweenTriesUs = 10'000;
constexpr std::string_view strHostEnded =
    "The host application ended before it had answered; what it was asked may be undone.";

template <typename Word>
void Set(Word* pWord, Word nValue) noexcept {
    __atomic_store_n(pWord, nValue, __ATOMIC_SEQ_CST);
}

// Puts a text where a client will read it, as far as it fits.
void PutText(unsigned char* pBytes, std::size_t nSize, std::int32_t nOffset,
             std::string_view text) noexcept {
    const auto nStart = static_cast<std::size_t>(nOffset);
    if (nOffset < static_cast<std::int32_t>(sizeof(MessageRecord)) ||
        nStart + text.size() >= nSize) {
        return;
    }
    std::copy(text.begin(), text.end(), pBytes + nStart);
    pBytes[nStart + text.size()] = 0;
}

// In a closed segment at most one client is in an exchange: the one that had passed the flag. What
// it has sent is pending until its reply is in the buffer. It reads the error text last.
void PutFarewell(MessageRecord& record, unsigned char* pBytes, std::size_t nSize) noexcept {
    if (__atomic_load_n(&record.fPending, __ATOMIC_SEQ_CST) == 0) return;
    PutText(pBytes, nSize, record.nErrorOffset, strHostEnded);
    PutText(pBytes, nSize, record.nBufferOffset, {});
}

// Nothing is left to wait for: every lock word is free, and a command lies ready for the one that
// waits for its reply, or comes to wait. The others hold a lock just to find the segment closed, so
// it does not matter that several can.
void OpenEveryDoor(MessageRecord& record) noexcept {
    ConditionWords& request = record.requestCondition;
    Set<std::uint32_t>(&request.nWaiterCount, 0);
    Set<std::uint32_t>(&request.nCommand, kCommandSleep);
    Set<std::uint32_t>(&request.nEnterLock, 0);
    ConditionWords& reply = record.replyCondition;
    Set<std::uint32_t>(&reply.nCommand, kCommandNotifyOne);
    Set<std::uint32_t>(&reply.nEnterLock, 0);
    WakeWord(&reply.nCommand);
    Set<std::uint32_t>(&record.nExchangeMutex, 0);
    Set<std::uint32_t>(&record.nRequestLock, 0);
}

bool IsAlone(int nDescriptor) noexcept {
    return CExclusiveUse(nDescriptor).Others() == OtherUsers::None;
}

}  // namespace

void SendEverybodyAway(int nDescriptor, unsigned char* pBytes, std::size_t nSize) noexcept {
    if (nSize < sizeof(MessageRecord)) return;
    auto& record = *reinterpret_cast<MessageRecord*>(pBytes);
    Set<std::uint8_t>(&record.fClosed, 1);
    const std::uint32_t nNever = 0;
    const std::int64_t lEnd = LinkTimeNow() + kLongestUs;
    for (;;) {
        PutFarewell(record, pBytes, nSize);
        OpenEveryDoor(record);
        // Whoever still comes, before the segment loses its name, finds the words ready too.
        if (IsAlone(nDescriptor) || LinkTimeNow() >= lEnd) return;
        SleepOnWord(&nNever, 0, kBetweenTriesUs);
    }
}

void SendAwayFromLeftover(int nId) noexcept {
    try {
        const CMappedSegment segment((szHostSegmentPrefix + std::to_string(nId)).c_str());
        SendEverybodyAway(segment.Descriptor(), segment.Bytes(), segment.Size());
    } catch (boost::interprocess::interprocess_exception const&) {
        // There is none.
    }
}
