#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "link/FixedScripts.h"
#include "link/LinkClock.h"
#include "link/MessageSegment.h"
#include "tools/check/CheckedHost.h"
#include "tools/check/Rule.h"
#include "tools/check/SegmentFacts.h"

namespace {

// Others may be talking to the host; then a second is enough for a look between two exchanges.
constexpr int kLooks = 1000;

MessageRecord* Record(CMappedSegment const& segment) {
    return reinterpret_cast<MessageRecord*>(segment.Bytes());
}

std::uint32_t Read(std::uint32_t& nWord) {
    return __atomic_load_n(&nWord, __ATOMIC_ACQUIRE);
}

Finding Exists(CCheckedHost& host) {
    const std::size_t nSize = host.MapMessages().Size();
    return Passed(host.Client().GetNameOfHost(host.Id()) + ", " + std::to_string(nSize) + " bytes");
}

Finding IsPrivate(CCheckedHost& host) {
    return PrivateToItsOwner(host.MapMessages());
}

Finding IsLaidOut(CCheckedHost& host) {
    const CMappedSegment segment = host.MapMessages();
    if (segment.Size() < sizeof(MessageRecord)) return Failed("it is shorter than the record");
    const MessageRecord record = *Record(segment);
    const std::string strSeen = "capacity " + std::to_string(record.nRequestCapacity) +
                                ", buffer at " + std::to_string(record.nBufferOffset) +
                                ", error text at " + std::to_string(record.nErrorOffset);
    return PassedIf(CMessageSegment(segment.Bytes(), segment.Size()).IsUsable(), strSeen);
}

Finding HoldsTheScripts(CCheckedHost& host) {
    const CMappedSegment segment = host.MapMessages();
    const std::size_t nNeeded = szRenderSelectedRegion.strAudioSuite.size() + 1;
    const auto nCapacity = static_cast<std::size_t>(Record(segment)->nRequestCapacity);
    return PassedIf(nCapacity >= nNeeded, std::to_string(nCapacity) + " bytes for " +
                                              std::to_string(nNeeded) + ", paths not counted");
}

Finding KeepsTextsApart(CCheckedHost& host) {
    const CMappedSegment segment = host.MapMessages();
    const MessageRecord record = *Record(segment);
    const bool fInside = record.nErrorOffset >= record.nBufferOffset &&
                         record.nErrorOffset < record.nBufferOffset + record.nRequestCapacity;
    return PassedIf(!fInside, fInside ? "the error text lies inside the buffer" : "apart");
}

std::string DescribeRest(MessageRecord& record) {
    std::string strBusy;
    const auto note = [&strBusy](bool fBusy, const char* szWhat) {
        if (fBusy) strBusy += (strBusy.empty() ? "" : ", ") + std::string(szWhat);
    };
    note(Read(record.nRequestLock) != 0, "request lock held");
    note(record.fPending != 0, "pending flag set");
    note(record.fClosed != 0, "closed flag set");
    note(Read(record.replyCondition.nWaiterCount) != 0, "somebody waits for a reply");
    note(Read(record.requestCondition.nEnterLock) != 0, "request condition's enter lock held");
    note(Read(record.replyCondition.nEnterLock) != 0, "reply condition's enter lock held");
    return strBusy;
}

Finding IsAtRest(CCheckedHost& host) {
    const CMappedSegment segment = host.MapMessages();
    std::string strBusy;
    for (int nLook = 0; nLook < kLooks; ++nLook) {
        strBusy = DescribeRest(*Record(segment));
        if (strBusy.empty()) return Passed("locks free, flags clear");
        usleep(1000);
    }
    return Failed(strBusy);
}

Finding Waits(CCheckedHost& host) {
    const CMappedSegment segment = host.MapMessages();
    std::uint32_t nWaiters = 0;
    for (int nLook = 0; nLook < kLooks && nWaiters == 0; ++nLook) {
        nWaiters = Read(Record(segment)->requestCondition.nWaiterCount);
        usleep(1000);
    }
    return PassedIf(nWaiters == 1, "number of waiters: " + std::to_string(nWaiters));
}

constexpr Rule kRules[] = {
    {"segment-exists", "the host's message segment exists", "host-id", Exists,
     "the id is announced before the segment is there, or its name is not TAN_Host_ and the id in "
     "decimal",
     Place::szMessages},
    {"segment-private", "nobody but its owner can open it", "segment-exists", IsPrivate,
     "it is made with the mode that the umask leaves, instead of 0600", Place::szOwners},
    {"segment-layout", "capacity and both offsets lie inside it", "segment-exists", IsLaidOut,
     "the capacity is not positive, or an offset points into the record or outside the segment",
     Place::szMessages},
    {"segment-capacity", "every fixed script fits", "segment-layout", HoldsTheScripts,
     "the request buffer is too small for the longest script and a path", Place::szMessages},
    {"segment-texts", "error text and buffer lie apart", "segment-layout", KeepsTextsApart,
     "the error text has no place of its own", Place::szMessages},
    {"segment-rest", "between exchanges nothing is held or set", "segment-layout", IsAtRest,
     "a word or flag is left over from an earlier exchange, or the memory was not cleared",
     Place::szExchange},
    {"host-waits", "one waiter waits for requests", "segment-layout", Waits,
     "no thread waits on the request condition, or more than one does", Place::szWords},
};

}  // namespace

Finding PrivateToItsOwner(CMappedSegment const& segment) {
    struct stat facts {};
    if (fstat(segment.Descriptor(), &facts) != 0) return NotTried("its mode cannot be read");
    const unsigned int nMode = facts.st_mode & 0777U;
    char text[64];
    std::snprintf(text, sizeof text, "mode %04o, owner %u", nMode,
                  static_cast<unsigned int>(facts.st_uid));
    return PassedIf((nMode & 0077U) == 0 && facts.st_uid == geteuid(), text);
}

std::span<const Rule> SegmentRules() {
    return kRules;
}
