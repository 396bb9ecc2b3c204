#include <cctype>
#include <chrono>
#include <cstring>
#include <future>
#include <thread>
#include <vector>

#include "link/LinkClock.h"
#include "link/MessageSegment.h"
#include "link/WordProtocol.h"
#include "platform/Processes.h"
#include "platform/SharedMemory.h"
#include "tools/check/CheckText.h"
#include "tools/check/CheckedHost.h"
#include "tools/check/Rule.h"

namespace {

constexpr char szGreeting[] = "tavarin check-host";
constexpr char szBadScript[] = "print(\"before\")\nNoFunctionHasThisName()\nprint(\"after\")\n";
constexpr int kManyExchanges = 50;
constexpr int kClients = 4;
constexpr int kExchangesOfEach = 25;
constexpr int kShortTimeoutMs = 20;
// Shorter than a host takes to suspect that the holder is dead.
constexpr std::chrono::milliseconds kRestWithLock{60};
constexpr int kLooksAtFreeLock = 300;
constexpr int kLooksAtHolder = 3;

std::string PrintOf(std::string const& strText) {
    return "print(\"" + strText + "\")\n";
}

Finding Answers(CCheckedHost& host) {
    const CheckedExchange exchange = host.Exchange(PrintOf(szGreeting));
    return PassedIf(exchange.IsGood() && exchange.strReply.starts_with(szGreeting),
                    exchange.Describe());
}

Finding EndsLines(CCheckedHost& host) {
    const CheckedExchange exchange = host.Exchange(PrintOf("one") + PrintOf("two"));
    return PassedIf(exchange.IsGood() && exchange.strReply == "one\ntwo\n", exchange.Describe());
}

// What the segment shows to a client at the moment its answer is there.
struct AnswerMoment {
    bool fLocked = false;
    bool fAnswered = false;
    bool fPending = true;
    std::string strReply;
    std::string strError;
};

// An exchange by hand, because the client does not tell what it saw on the way. The caller holds
// the request lock.
AnswerMoment ExchangeByHand(CMessageSegment& segment) {
    const std::int64_t lDeadline = DeadlineFromTimeout(5000);
    MessageRecord& record = *segment.Record();
    AnswerMoment moment;
    const CWordLock mutex(&record.nExchangeMutex, lDeadline);
    if (!mutex.IsHeld()) return moment;
    moment.fLocked = true;
    segment.WriteRequest(PrintOf(szGreeting));
    NotifyOne(&record.requestCondition);
    segment.SetPending();
    moment.fAnswered = WaitOnCondition(&record.replyCondition, &record.nExchangeMutex, lDeadline);
    moment.fPending = segment.IsPending();
    moment.strReply = segment.ReadReply();
    moment.strError = segment.ReadError();
    return moment;
}

Finding ClearsPendingFirst(CCheckedHost& host) {
    const CMappedSegment mapping = host.MapMessages();
    CMessageSegment segment(mapping.Bytes(), mapping.Size());
    if (!segment.IsUsable()) return Failed("the segment cannot be used");
    const CWordLock request(&segment.Record()->nRequestLock, DeadlineFromTimeout(5000));
    if (!request.IsHeld()) return NotTried("other clients hold the request lock");
    const AnswerMoment moment = ExchangeByHand(segment);
    if (!moment.fLocked) return NotTried("the exchange mutex is held");
    if (!moment.fAnswered) return Failed("no notification within 5 s");
    if (moment.fPending) return Failed("the flag is still set when the client is woken");
    return PassedIf(
        moment.strReply.starts_with(szGreeting) && moment.strError.empty(),
        "reply " + Shorten(moment.strReply) + ", error text " + Shorten(moment.strError));
}

// The request lock, held with a value that means the same to every client and is gone once somebody
// writes the word.
class CMarkedRequestLock {
public:
    explicit CMarkedRequestLock(std::uint32_t* pWord) : m_pWord(pWord) {
        m_fHeld = AcquireWord(m_pWord, DeadlineFromTimeout(5000));
        if (m_fHeld) __atomic_store_n(m_pWord, kMark, __ATOMIC_SEQ_CST);
    }
    ~CMarkedRequestLock() {
        if (m_fHeld && Word() != 0) __atomic_store_n(m_pWord, 0, __ATOMIC_SEQ_CST);
    }
    CMarkedRequestLock(CMarkedRequestLock const&) = delete;
    CMarkedRequestLock& operator=(CMarkedRequestLock const&) = delete;

    bool IsHeld() const { return m_fHeld; }
    bool IsUntouched() const { return Word() == kMark; }
    std::uint32_t Word() const { return __atomic_load_n(m_pWord, __ATOMIC_SEQ_CST); }

private:
    static constexpr std::uint32_t kMark = 0x80000001;

    std::uint32_t* m_pWord;
    bool m_fHeld = false;
};

// Whether the word is held although only one process has the segment, which is the host.
bool HoldsRequestLock(CMappedSegment const& segment, std::uint32_t const& nLock) {
    for (int nLook = 0; nLook < kLooksAtHolder; ++nLook) {
        if (__atomic_load_n(&nLock, __ATOMIC_SEQ_CST) == 0) return false;
        const auto threads = ThreadsThatMap(segment.Descriptor());
        if (!threads || threads->empty()) return false;
        if (threads->front().nProcess != threads->back().nProcess) return false;
    }
    return __atomic_load_n(&nLock, __ATOMIC_SEQ_CST) != 0;
}

Finding LeavesRequestLock(CCheckedHost& host) {
    const CMappedSegment mapping = host.MapMessages();
    CMessageSegment segment(mapping.Bytes(), mapping.Size());
    std::uint32_t& nLock = segment.Record()->nRequestLock;
    {
        const CMarkedRequestLock lock(&nLock);
        if (!lock.IsHeld()) return NotTried("other clients hold it");
        const AnswerMoment moment = ExchangeByHand(segment);
        std::this_thread::sleep_for(kRestWithLock);
        if (!lock.IsUntouched())
            return Failed("it was " + std::string(lock.Word() == 0 ? "freed" : "set") +
                          " while a client held it");
        if (!moment.fAnswered) return Failed("no notification within 5 s");
    }
    for (int nLook = 0; nLook < kLooksAtFreeLock; ++nLook) {
        if (HoldsRequestLock(mapping, nLock)) return Failed("it is held, and there is no client");
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return Passed("untouched in an exchange, and free without one");
}

Finding FreesWords(CCheckedHost& host) {
    const CheckedExchange exchange = host.Exchange(PrintOf(szGreeting));
    const CMappedSegment mapping = host.MapMessages();
    const auto* const pRecord = reinterpret_cast<MessageRecord*>(mapping.Bytes());
    const std::int64_t lDeadline = LinkTimeNow() + kMicrosecondsPerSecond;
    std::string strHeld;
    do {
        const MessageRecord record = *pRecord;
        strHeld.clear();
        if (record.nExchangeMutex != 0) strHeld = "the exchange mutex";
        if (record.requestCondition.nEnterLock != 0) strHeld = "the request condition's enter lock";
        if (record.requestCondition.nCommand != 0) strHeld = "the request condition's command";
        if (record.replyCondition.nEnterLock != 0) strHeld = "the reply condition's enter lock";
        if (record.replyCondition.nCommand != 0) strHeld = "the reply condition's command";
        if (record.requestCondition.nWaiterCount != 1) strHeld = "the host does not wait:";
        if (strHeld.empty()) return Passed("within a second of " + exchange.Describe());
        std::this_thread::yield();
    } while (LinkTimeNow() < lDeadline);
    return Failed(strHeld + " stays as it was in the exchange");
}

Finding ReportsScriptErrors(CCheckedHost& host) {
    const CheckedExchange exchange = host.Exchange(szBadScript);
    return PassedIf(exchange.nStatus == 0 && !exchange.strError.empty(), exchange.Describe());
}

Finding KeepsWhatWasPrinted(CCheckedHost& host) {
    const CheckedExchange exchange = host.Exchange(szBadScript);
    return PassedIf(exchange.strReply == "before\n", "reply " + Shorten(exchange.strReply));
}

Finding ForgetsErrors(CCheckedHost& host) {
    host.Exchange(szBadScript);
    const CheckedExchange exchange = host.Exchange(PrintOf("good again"));
    return PassedIf(exchange.IsGood(), exchange.Describe());
}

// How many of a client's own numbers came back to it.
int CountOwnAnswers(CCheckedHost& host, int nClient, int nExchanges) {
    const int nHost = host.Id();
    CTANClientInterProcess client;
    int nOwn = 0;
    for (int nExchange = 0; nExchange < nExchanges; ++nExchange) {
        const std::string strNumber = std::to_string(nClient) + " of " + std::to_string(nExchange);
        std::string script = PrintOf(strNumber);
        std::string strReply;
        const int nStatus = client.SendTANMessage(nHost, script, strReply, 5000);
        nOwn += nStatus == 0 && strReply == strNumber + "\n";
    }
    return nOwn;
}

Finding AnswersInOrder(CCheckedHost& host) {
    const int nOwn = CountOwnAnswers(host, 0, kManyExchanges);
    return PassedIf(nOwn == kManyExchanges,
                    std::to_string(nOwn) + " of " + std::to_string(kManyExchanges));
}

Finding AnswersManyClients(CCheckedHost& host) {
    std::vector<std::future<int>> clients;
    for (int nClient = 1; nClient <= kClients; ++nClient) {
        clients.push_back(std::async(std::launch::async, [&host, nClient] {
            return CountOwnAnswers(host, nClient, kExchangesOfEach);
        }));
    }
    int nOwn = 0;
    for (std::future<int>& client : clients) nOwn += client.get();
    constexpr int kAll = kClients * kExchangesOfEach;
    return PassedIf(nOwn == kAll, std::to_string(nOwn) + " of " + std::to_string(kAll) + " from " +
                                      std::to_string(kClients) + " clients");
}

// A script of just this many bytes whose last statement prints "end".
std::string ScriptOfSize(std::size_t nSize) {
    const std::string strEnd = "print(\"end\")";
    return std::string(nSize - strEnd.size(), ' ') + strEnd;
}

std::size_t Capacity(CCheckedHost& host) {
    const CMappedSegment mapping = host.MapMessages();
    return static_cast<std::size_t>(
        reinterpret_cast<MessageRecord*>(mapping.Bytes())->nRequestCapacity);
}

Finding TakesFullRequests(CCheckedHost& host) {
    const std::size_t nSize = Capacity(host) - 1;
    const CheckedExchange exchange = host.Exchange(ScriptOfSize(nSize));
    return PassedIf(exchange.IsGood() && exchange.strReply == "end\n",
                    std::to_string(nSize) + " bytes: " + exchange.Describe());
}

// The client cuts the request, so its last statement lacks the closing parenthesis.
Finding SurvivesCutRequests(CCheckedHost& host) {
    const CheckedExchange cut = host.Exchange(ScriptOfSize(Capacity(host)));
    const CheckedExchange next = host.Exchange(PrintOf("good again"));
    if (cut.nStatus != 0) return Failed(cut.Describe());
    if (cut.strError.empty()) return Failed("no error for half a statement");
    return PassedIf(next.IsGood(), "then " + next.Describe());
}

Finding DoesNotCutReplies(CCheckedHost& host) {
    const std::size_t nLines = Capacity(host) / 32;
    const std::string strLine(63, 'x');
    const CheckedExchange exchange =
        host.Exchange("for n = 1," + std::to_string(nLines) + " do\n" + PrintOf(strLine) + "end\n");
    if (exchange.nStatus != 0) return Failed(exchange.Describe());
    const bool fWhole = exchange.strReply.size() == nLines * 64;
    return PassedIf(fWhole || !exchange.strError.empty(),
                    std::to_string(exchange.strReply.size()) + " bytes of " +
                        std::to_string(nLines * 64) +
                        (fWhole ? "" : ", error " + Shorten(exchange.strError)));
}

// The reply to an abandoned request must not reach the client that comes next.
Finding DropsLateReplies(CCheckedHost& host) {
    const CheckedExchange slow =
        host.Exchange("for n = 1,30000000 do\nend\n" + PrintOf("late"), kShortTimeoutMs);
    if (slow.nStatus == 0) {
        return NotTried("the host answered a long loop in " + Milliseconds(slow.dMilliseconds));
    }
    const CheckedExchange next = host.Exchange(PrintOf("next"), 10'000);
    return PassedIf(next.IsGood() && next.strReply == "next\n", "then " + next.Describe());
}

Finding Counts(CCheckedHost& host) {
    const CheckedExchange exchange = host.Exchange("print(GetUpdateCount())\n");
    const bool fNumber = !exchange.strReply.empty() && std::isdigit(exchange.strReply[0]);
    return PassedIf(exchange.IsGood() && fNumber, exchange.Describe());
}

Finding NamesItsProcess(CCheckedHost& host) {
    const CheckedExchange exchange = host.Exchange("print(GetProcessID())\n");
    if (!exchange.IsGood()) return Failed(exchange.Describe());
    const std::int64_t lProcess = host.Client().GetTANProcessID();
    const bool fRuns = ProcessRuns(static_cast<pid_t>(lProcess));
    return PassedIf(fRuns, "process " + std::to_string(lProcess));
}

Finding Closes(CCheckedHost&) {
    return NotTried("the host would have to stop");
}

constexpr Rule kRules[] = {
    {"answer", "a script is run and what it printed comes back", "segment-layout", Answers,
     "the request is not read from the buffer, or the reply condition is never notified",
     Place::szExchange},
    {"line-ends", "every print ends its line with a line feed", "answer", EndsLines,
     "print does not end its line, or lines are joined", Place::szCommands},
    {"order", "reply there, error empty, pending cleared, then notified", "answer",
     ClearsPendingFirst,
     "the client is notified before the reply is whole and the pending flag clear",
     Place::szExchange},
    {"release", "after an exchange the host waits again, words free", "answer", FreesWords,
     "a woken host does not free the enter lock, or does not wait again", Place::szWords},
    {"request-lock", "the request lock is left to the clients", "answer", LeavesRequestLock,
     "the host takes, sets or frees the request lock, which belongs to the clients",
     Place::szMessages},
    {"script-error", "a script's error comes back with status 0", "answer", ReportsScriptErrors,
     "the error text is not written, or at another offset than the record says", Place::szExchange},
    {"error-print", "what it printed before its error comes back too", "script-error",
     KeepsWhatWasPrinted, "what was printed is thrown away when the script fails",
     Place::szExchange},
    {"error-cleared", "the error is gone with the next exchange", "script-error", ForgetsErrors,
     "the error text is not emptied for a script that raises none", Place::szExchange},
    {"sequence", "each of many requests gets its own reply", "answer", AnswersInOrder,
     "a reply is written for the request before, or the buffer is not ended with a NUL",
     Place::szExchange},
    {"clients", "several clients at once get their own replies", "sequence", AnswersManyClients,
     "the exchange mutex is not held while request and reply are read and written",
     Place::szExchange},
    {"capacity", "a request that fills the capacity is run", "answer", TakesFullRequests,
     "a request is read only up to a size of the host's own", Place::szMessages},
    {"cut", "a request that was cut is an error, and harmless", "script-error", SurvivesCutRequests,
     "the host reads beyond the NUL at the end of the capacity", Place::szMessages},
    {"long-reply", "a reply of twice the capacity is whole, or an error", "answer",
     DoesNotCutReplies, "a long reply is cut without an error text", Place::szMessages},
    {"late-reply", "a reply that comes too late reaches nobody", "answer", DropsLateReplies,
     "the reply of an abandoned request is written although another request stands in the buffer",
     Place::szExchange},
    {"update-count", "GetUpdateCount() is a number", "answer", Counts, "GetUpdateCount is missing",
     Place::szCommands},
    {"process-id", "GetProcessID() is a running process", "answer", NamesItsProcess,
     "GetProcessID is missing, or gives another id than the system does", Place::szCommands},
    {"closed", "a host that stops sets the closed flag", "answer", Closes,
     "the flag is not set before the segments go", Place::szMessages},
};

}  // namespace

std::span<const Rule> ExchangeRules() {
    return kRules;
}
