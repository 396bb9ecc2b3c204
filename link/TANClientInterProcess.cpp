#include "link/TANClientInterProcess.h"

#include <boost/interprocess/exceptions.hpp>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "link/CommandTexts.h"
#include "link/LinkClock.h"
#include "link/MappedSegment.h"
#include "link/MessageSegment.h"
#include "link/SharedSegments.h"
#include "link/WordProtocol.h"
#include "platform/NumberText.h"

namespace {

using boost::interprocess::interprocess_exception;

constexpr int kStatusClosed = -1;
constexpr int kStatusTimeout = 121;
constexpr int kStatusBadSegment = EINVAL;
constexpr int kNoHost = -1;
constexpr int kDirectoryLockTimeoutMs = 1000;
constexpr std::size_t kLongestLine = 4095;

constexpr char strTavarinNotRunning[] = "Error - Tavarin Pro is not running.";
constexpr char strLaunchTavarin[] = "Locate and launch Tavarin Pro.";

// Null when the segment is too small to be a directory.
DirectoryRecord* DirectoryIn(CMappedSegment const& segment) noexcept {
    if (!segment.Bytes() || segment.Size() < sizeof(DirectoryRecord)) return nullptr;
    return reinterpret_cast<DirectoryRecord*>(segment.Bytes());
}

int ReadCurrentHost(DirectoryRecord* pDirectory) noexcept {
    const CWordLock lock(&pDirectory->nLock, DeadlineFromTimeout(kDirectoryLockTimeoutMs));
    if (!lock.IsHeld()) return kNoHost;
    const bool fStale = IsHeartbeatStale(pDirectory->lHeartbeat, LinkTimeNow());
    return fStale ? kNoHost : pDirectory->nCurrentHost;
}

// Sends the request and waits for its answer, with both locks held by the caller.
int DeliverRequest(CMessageSegment& segment, std::string const& request, int timeoutMs) {
    MessageRecord* const pRecord = segment.Record();
    if (segment.IsClosed()) return kStatusClosed;

    segment.WriteRequest(request);
    const bool fNotified = NotifyOne(&pRecord->requestCondition);
    segment.SetPending();
    if (segment.IsClosed()) return kStatusClosed;
    if (!segment.IsPending()) return kExchangeDone;
    const bool fAnswered = WaitOnCondition(
        &pRecord->replyCondition, &pRecord->nExchangeMutex, DeadlineFromTimeout(timeoutMs),
        kClientPace, fNotified ? &pRecord->requestCondition.nCommand : nullptr);
    return fAnswered ? kExchangeDone : kStatusTimeout;
}

// Takes one line and its line end off the front of the text, which has no NUL.
std::string_view TakeLine(std::string_view& text) noexcept {
    std::string_view line = text.substr(0, kLongestLine);
    line = line.substr(0, line.find('\n'));
    line = line.substr(0, line.find('\r'));

    std::size_t nEnd = line.size();
    bool fLineFeedTaken = false;
    for (; nEnd < text.size(); ++nEnd) {
        const bool fLineFeed = text[nEnd] == '\n' && !fLineFeedTaken;
        if (text[nEnd] != '\r' && !fLineFeed) break;
        fLineFeedTaken = fLineFeedTaken || fLineFeed;
    }
    text.remove_prefix(nEnd);
    return line;
}

}  // namespace

int CTANClientInterProcess::GetCurrentIdFromMainDirectory() {
    try {
        const CMappedSegment segment(szDirectorySegment);
        DirectoryRecord* const pDirectory = DirectoryIn(segment);
        return pDirectory ? ReadCurrentHost(pDirectory) : kNoHost;
    } catch (interprocess_exception const&) {
        return kNoHost;
    }
}

int CTANClientInterProcess::GetCurrentTANHost() {
    m_strLastError.clear();
    m_strAdvice.clear();
    const int id = GetCurrentIdFromMainDirectory();
    if (id < 0) {
        m_strLastError = strTavarinNotRunning;
        m_strAdvice = strLaunchTavarin;
    } else if (id == 0) {
        m_strLastError = strNoSessionSelected;
    }
    return id;
}

bool CTANClientInterProcess::NeedsUpdate() {
    try {
        const CMappedSegment segment(szDirectorySegment);
        if (!segment.Bytes()) return false;
        if (DirectoryRecord* const pDirectory = DirectoryIn(segment)) {
            const auto nCount = static_cast<std::int32_t>(
                __atomic_load_n(&pDirectory->nUpdateCount, __ATOMIC_ACQUIRE));
            const bool fChanged = nCount != m_nUpdateCount;
            m_nUpdateCount = nCount;
            return fChanged;
        }
    } catch (interprocess_exception const&) {
        // A missing directory is told by the result, like one that is too short.
    }
    m_nUpdateCount = -1;
    return true;
}

std::string CTANClientInterProcess::GetNameOfHost(int id) {
    return szHostSegmentPrefix + std::to_string(id);
}

int CTANClientInterProcess::SendTANMessage(int id, std::string& request, std::string& reply,
                                           int timeoutMs) {
    if (!m_fKeepMessages) {
        m_strLastError.clear();
        m_strAdvice.clear();
    }
    try {
        const CMappedSegment mapping(GetNameOfHost(id).c_str());
        CMessageSegment segment(mapping.Bytes(), mapping.Size());
        if (!segment.IsUsable()) return kStatusBadSegment;
        return Exchange(segment, request, reply, timeoutMs);
    } catch (interprocess_exception const& failure) {
        // An empty segment is refused by the mapping without an operating-system error.
        return failure.get_native_error() > 0 ? failure.get_native_error() : kStatusBadSegment;
    }
}

int CTANClientInterProcess::Exchange(CMessageSegment& segment, std::string const& request,
                                     std::string& reply, int timeoutMs) {
    MessageRecord* const pRecord = segment.Record();
    const CWordLock requestLock(&pRecord->nRequestLock, DeadlineFromTimeout(timeoutMs));
    if (!requestLock.IsHeld()) return kStatusTimeout;
    const CWordLock exchangeMutex(&pRecord->nExchangeMutex, DeadlineFromTimeout(timeoutMs));
    if (!exchangeMutex.IsHeld()) return segment.IsClosed() ? kStatusClosed : kStatusTimeout;

    const int nStatus = DeliverRequest(segment, request, timeoutMs);
    if (nStatus != kExchangeDone) return nStatus;

    reply = segment.ReadReply();
    std::string strError = segment.ReadError();
    if (!strError.empty()) {
        m_strLastError = std::move(strError);
        m_fKeepMessages = false;
    }
    return kExchangeDone;
}

void CTANClientInterProcess::SplitResult(std::string& reply, std::vector<std::string>* values) {
    values->clear();
    std::string_view text(reply.c_str());
    const std::string strCount(TakeLine(text));
    const auto nCount = static_cast<std::int32_t>(ParseInteger(strCount.c_str()));
    while (!text.empty()) values->emplace_back(TakeLine(text));
    if (static_cast<std::int64_t>(values->size()) != nCount) values->clear();
}

std::int32_t CTANClientInterProcess::GetUpdateCount() {
    return static_cast<std::int32_t>(AskForNumber("print(GetUpdateCount())\n"));
}

std::int64_t CTANClientInterProcess::GetTANProcessID() {
    return AskForNumber("print(GetProcessID())\n");
}

void CTANClientInterProcess::PrintToTavarin(const char* text) {
    std::string strRequest = std::string("print(\"") + text + "\")";
    std::string strReply;
    SendCommand(strRequest, strReply);
}

int CTANClientInterProcess::ReceiveMessage() {
    return 0;
}

void CTANClientInterProcess::TidyUp() {}

int CTANClientInterProcess::FindHostForCommand() {
    m_fKeepMessages = false;
    return GetCurrentTANHost();
}

bool CTANClientInterProcess::SendCommand(std::string& script, std::string& reply) {
    const int id = FindHostForCommand();
    if (id <= 0) return false;
    return SendTANMessage(id, script, reply, kWaitForEver) == kExchangeDone;
}

std::int64_t CTANClientInterProcess::AskForNumber(const char* szScript) {
    std::string strRequest = szScript;
    std::string strReply;
    return SendCommand(strRequest, strReply) ? ParseInteger(strReply.c_str()) : 0;
}
