#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "PeerHost.h"
#include "link/SharedSegments.h"

/// What a test sees of an exchange from outside, at one instant.
struct ExchangeView {
    MessageRecord record;
    bool fCopied;   ///< the request stands whole in the buffer
    bool fTaken;    ///< the host has marked it as taken
    bool fReplied;  ///< the reply stands in the buffer
};

/// Looks at a mapped message segment.
inline ExchangeView LookAt(CTestSegment const& segment, std::string_view request,
                           std::string_view reply) {
    ExchangeView view{segment.Get<MessageRecord>(0), false, false, false};
    const auto* const pBuffer =
        reinterpret_cast<const char*>(segment.Bytes()) + view.record.nBufferOffset;
    const char cMark = pBuffer[view.record.nRequestCapacity - 1];
    view.fCopied = request == pBuffer && cMark == 0;
    view.fTaken = cMark == 1;
    view.fReplied = reply == pBuffer;
    return view;
}

/// One change of the shared words, and who has to be halted so that it can be met exactly.
struct ExchangeStep {
    const char* szName;
    bool (*isReached)(ExchangeView const& view);
    bool fHostRuns = false;  ///< the other side has to do something before this
};

/// What a client does to the words, from the first to the last, when its reply comes.
inline std::vector<ExchangeStep> const& AnsweredClientSteps() {
    using View = ExchangeView const&;
    static const std::vector<ExchangeStep> steps{
        {"before it starts", [](View) { return true; }},
        {"request lock taken", [](View v) { return v.record.nRequestLock == 1; }},
        {"mutex taken", [](View v) { return v.record.nExchangeMutex == 1; }},
        {"request copied", [](View v) { return v.fCopied; }},
        {"entered to notify", [](View v) { return v.record.requestCondition.nEnterLock == 1; }},
        {"notified", [](View v) { return v.record.requestCondition.nCommand == 1; }},
        {"pending", [](View v) { return v.record.fPending == 1; }},
        {"entered to wait", [](View v) { return v.record.replyCondition.nEnterLock == 1; }},
        {"counted", [](View v) { return v.record.replyCondition.nWaiterCount == 1; }},
        {"mutex freed to wait", [](View v) { return v.record.nExchangeMutex == 0; }},
        {"waiting", [](View v) { return v.record.replyCondition.nEnterLock == 0; }},
        {"reply announced", [](View v) { return v.record.replyCondition.nCommand == 1; }, true},
        {"announcement taken", [](View v) { return v.record.replyCondition.nCommand == 0; }},
        {"no longer counted", [](View v) { return v.record.replyCondition.nWaiterCount == 0; }},
        {"notifier's lock freed", [](View v) { return v.record.replyCondition.nEnterLock == 0; }},
        {"mutex taken back", [](View v) { return v.record.nExchangeMutex == 1; }},
        {"mutex freed", [](View v) { return v.record.nExchangeMutex == 0; }},
        {"request lock freed", [](View v) { return v.record.nRequestLock == 0; }},
    };
    return steps;
}

/// The same for a client whose time-out ends, as far as it differs.
inline std::vector<ExchangeStep> const& TimedOutClientSteps() {
    using View = ExchangeView const&;
    static const std::vector<ExchangeStep> steps{
        {"pending", [](View v) { return v.record.fPending == 1; }},
        {"waiting",
         [](View v) {
             return v.record.replyCondition.nWaiterCount == 1 &&
                    v.record.replyCondition.nEnterLock == 0;
         }},
        {"entered to leave", [](View v) { return v.record.replyCondition.nEnterLock == 1; }},
        {"no longer counted", [](View v) { return v.record.replyCondition.nWaiterCount == 0; }},
        {"left", [](View v) { return v.record.replyCondition.nEnterLock == 0; }},
        {"mutex taken back", [](View v) { return v.record.nExchangeMutex == 1; }},
        {"mutex freed", [](View v) { return v.record.nExchangeMutex == 0; }},
        {"request lock freed", [](View v) { return v.record.nRequestLock == 0; }},
    };
    return steps;
}

/// What the host does to the words for one request.
inline std::vector<ExchangeStep> const& HostSteps() {
    using View = ExchangeView const&;
    static const std::vector<ExchangeStep> steps{
        {"notification there", [](View v) { return v.record.fPending == 1; }},
        {"notification taken", [](View v) { return v.record.requestCondition.nCommand == 0; }},
        {"no longer counted", [](View v) { return v.record.requestCondition.nWaiterCount == 0; }},
        {"notifier's lock freed", [](View v) { return v.record.requestCondition.nEnterLock == 0; }},
        {"mutex taken back", [](View v) { return v.record.nExchangeMutex == 1; }},
        {"request taken", [](View v) { return v.fTaken; }},
        {"mutex freed for the script", [](View v) { return v.record.nExchangeMutex == 0; }},
        {"mutex taken for the reply", [](View v) { return v.record.nExchangeMutex == 1; }},
        {"reply written", [](View v) { return v.fReplied; }},
        {"no longer pending", [](View v) { return v.record.fPending == 0; }},
        {"entered to notify", [](View v) { return v.record.replyCondition.nEnterLock == 1; }},
        {"entered to wait again", [](View v) { return v.record.requestCondition.nEnterLock == 1; }},
        {"counted again", [](View v) { return v.record.requestCondition.nWaiterCount == 1; }},
        {"mutex freed with the reply", [](View v) { return v.record.nExchangeMutex == 0; }},
        {"waiting again", [](View v) { return v.record.requestCondition.nEnterLock == 0; }},
        {"reply announced", [](View v) { return v.record.replyCondition.nCommand == 1; }},
    };
    return steps;
}
