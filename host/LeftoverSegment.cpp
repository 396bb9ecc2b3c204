#include "host/LeftoverSegment.h"

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

std::uint32_t Word(const std::uint32_t* pWord) noexcept {
    return __atomic_load_n(pWord, __ATOMIC_SEQ_CST);
}

void SetWord(std::uint32_t* pWord, std::uint32_t nValue) noexcept {
    __atomic_store_n(pWord, nValue, __ATOMIC_SEQ_CST);
}

// Puts a text where a client will read it, as far as it fits.
void PutText(CMappedSegment const& segment, std::int32_t nOffset, std::string_view text) {
    const auto nStart = static_cast<std::size_t>(nOffset);
    if (nOffset < static_cast<std::int32_t>(sizeof(MessageRecord)) ||
        nStart + text.size() >= segment.Size()) {
        return;
    }
    std::copy(text.begin(), text.end(), segment.Bytes() + nStart);
    segment.Bytes()[nStart + text.size()] = 0;
}

// The dead host's words are freed, and the notification that it owes is given. A live client holds
// its words for moments only, and in a closed segment none of them writes.
void FreeWords(CMappedSegment const& segment, MessageRecord& record) {
    SetWord(&record.requestCondition.nWaiterCount, 0);
    SetWord(&record.requestCondition.nCommand, kCommandSleep);
    SetWord(&record.requestCondition.nEnterLock, 0);
    ConditionWords& reply = record.replyCondition;
    if (Word(&reply.nWaiterCount) > 0 && Word(&reply.nCommand) == kCommandSleep) {
        PutText(segment, record.nBufferOffset, {});
        PutText(segment, record.nErrorOffset, strHostEnded);
        SetWord(&reply.nEnterLock, 1);
        SetWord(&reply.nCommand, kCommandNotifyOne);
        WakeWord(&reply.nCommand);
    } else if (Word(&reply.nWaiterCount) == 0) {
        SetWord(&reply.nCommand, kCommandSleep);
        SetWord(&reply.nEnterLock, 0);
    }
    SetWord(&record.nExchangeMutex, 0);
    SetWord(&record.nRequestLock, 0);
}

bool IsAlone(CMappedSegment const& segment) {
    return CExclusiveUse(segment.Descriptor()).Others() != OtherUsers::Some;
}

}  // namespace

void SendAwayFromLeftover(int nId) {
    try {
        const CMappedSegment segment((szHostSegmentPrefix + std::to_string(nId)).c_str());
        if (segment.Size() < sizeof(MessageRecord)) return;
        auto& record = *reinterpret_cast<MessageRecord*>(segment.Bytes());
        __atomic_store_n(&record.fClosed, std::uint8_t{1}, __ATOMIC_SEQ_CST);
        const std::uint32_t nNever = 0;
        const std::int64_t lEnd = LinkTimeNow() + kLongestUs;
        while (!IsAlone(segment) && LinkTimeNow() < lEnd) {
            FreeWords(segment, record);
            SleepOnWord(&nNever, 0, kBetweenTriesUs);
        }
    } catch (boost::interprocess::interprocess_exception const&) {
        // There is none.
    }
}
