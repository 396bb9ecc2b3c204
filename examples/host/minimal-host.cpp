// A minimal host application: the link is answered in full, and three kinds of script are known.
// It runs until SIGINT or SIGTERM. One thread does all, so an answer must not take long: the
// heartbeat rests meanwhile, and so do the clients that have a time-out.

#include <unistd.h>

#include <boost/interprocess/mapped_region.hpp>
#include <boost/interprocess/shared_memory_object.hpp>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "link/FixedScripts.h"
#include "link/LinkClock.h"
#include "link/SharedSegments.h"
#include "link/WordProtocol.h"

namespace {

using namespace boost::interprocess;

constexpr int kHostId = 1;
constexpr int kSegmentSize = 65536;
constexpr int kErrorOffset = 64, kErrorSize = 960;
constexpr int kBufferOffset = 1024, kCapacity = 16384;
constexpr std::int64_t kHeartbeatPeriod = kMicrosecondsPerSecond / 5;

volatile std::sig_atomic_t g_fStop = 0;

// A segment that this host makes, private to the user, and removes.
class CSegment {
public:
    CSegment(std::string name, offset_t nSize) : m_strName(std::move(name)) {
        shared_memory_object::remove(m_strName.c_str());
        shared_memory_object object(create_only, m_strName.c_str(), read_write, permissions(0600));
        object.truncate(nSize);
        m_region = mapped_region(object, read_write);
    }
    ~CSegment() { shared_memory_object::remove(m_strName.c_str()); }

    char* Bytes() const { return static_cast<char*>(m_region.get_address()); }
    template <typename Record>
    Record& As() const {
        return *static_cast<Record*>(m_region.get_address());
    }

private:
    std::string m_strName;
    mapped_region m_region;
};

bool AnotherHostRuns() {
    try {
        const shared_memory_object object(open_only, szDirectorySegment, read_only);
        const mapped_region region(object, read_only);
        const auto* const pDirectory = static_cast<const DirectoryRecord*>(region.get_address());
        return region.get_size() >= sizeof(DirectoryRecord) &&
               !IsHeartbeatStale(pDirectory->lHeartbeat, LinkTimeNow());
    } catch (interprocess_exception const&) {
        return false;
    }
}

struct Answer {
    std::string strReply;
    std::string strError;
};

// Takes `strStart` off the front of a text, if it is there.
bool Skip(std::string_view& strText, std::string_view strStart) {
    if (!strText.starts_with(strStart)) return false;
    strText.remove_prefix(strStart.size());
    return true;
}

// Knows the track lists and scripts of prints. Your host has a script language here.
Answer Run(std::string_view strScript) {
    if (strScript == szListTracks.strAudioSuite || strScript == szListTracks.strScript) {
        return {"4\n1\nGuide\nDub\nAligned\n", ""};
    }
    Answer answer;
    while (true) {
        strScript.remove_prefix(std::min(strScript.find_first_not_of(" \n"), strScript.size()));
        if (strScript.empty()) return answer;
        if (Skip(strScript, "print(GetUpdateCount())")) {
            answer.strReply += "1\n";
        } else if (Skip(strScript, "print(GetProcessID())")) {
            answer.strReply += std::to_string(getpid()) + "\n";
        } else if (Skip(strScript, "print(\"") && strScript.find("\")") != strScript.npos) {
            const std::size_t nLength = strScript.find("\")");
            answer.strReply.append(strScript.substr(0, nLength)) += "\n";
            strScript.remove_prefix(nLength + 2);
        } else {
            answer.strError = "this host does not know that script";
            return answer;
        }
    }
}

// Called with the exchange mutex held.
void AnswerRequest(CSegment const& segment) {
    auto& message = segment.As<MessageRecord>();
    char* const pBuffer = segment.Bytes() + kBufferOffset;
    const Answer answer = Run({pBuffer, strnlen(pBuffer, kCapacity)});
    std::snprintf(pBuffer, kSegmentSize - kBufferOffset, "%s", answer.strReply.c_str());
    std::snprintf(segment.Bytes() + kErrorOffset, kErrorSize, "%s", answer.strError.c_str());
    message.fPending = 0;
    NotifyOne(&message.replyCondition);
}

void Announce(DirectoryRecord& directory, int nHost) {
    const CWordLock lock(&directory.nLock, LinkTimeNow() + kHeartbeatPeriod);
    directory.nCurrentHost = nHost;
    directory.lHeartbeat = LinkTimeNow();
}

}  // namespace

int main() {
    if (AnotherHostRuns()) return std::fprintf(stderr, "another host is running\n"), 1;
    for (const int nSignal : {SIGINT, SIGTERM}) std::signal(nSignal, [](int) { g_fStop = 1; });

    const CSegment messages(szHostSegmentPrefix + std::to_string(kHostId), kSegmentSize);
    auto& message = messages.As<MessageRecord>();
    message.nRequestCapacity = kCapacity;
    message.nBufferOffset = kBufferOffset;
    message.nErrorOffset = kErrorOffset;
    const CSegment directory(szDirectorySegment, sizeof(DirectoryRecord));

    AcquireWord(&message.nExchangeMutex, kNoDeadline);
    while (!g_fStop) {
        Announce(directory.As<DirectoryRecord>(), kHostId);
        const bool fNotified = WaitOnCondition(&message.requestCondition, &message.nExchangeMutex,
                                               LinkTimeNow() + kHeartbeatPeriod);
        if (fNotified && message.fPending) AnswerRequest(messages);
    }
    message.fClosed = 1;
    ReleaseWord(&message.nExchangeMutex);
}
