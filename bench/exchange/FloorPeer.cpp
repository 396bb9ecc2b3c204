#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cstring>

#include "bench/exchange/ExchangePeer.h"
#include "host/HostSegments.h"
#include "link/SharedSegments.h"
#include "platform/WordWait.h"

// The words of the link's protocol and its system calls with nothing around them: what no client
// and no host can be faster than.

namespace {

// What the client does for a lock word that it shares with other clients: it looks as often as it
// can or, as the protocol says, every 2 milliseconds.
enum class ELocking { Eager, Paced };

struct CSegmentNames {
    const char* szDirectory;
    const char* szMessage;
};

constexpr CSegmentNames NamesFor(ELocking locking) {
    if (locking == ELocking::Eager) return {"/tavarin_bench_directory", "/tavarin_bench_message"};
    return {"/tavarin_bench_directory_paced", "/tavarin_bench_message_paced"};
}

constexpr int kLooksBeforeSleep = 20'000;
constexpr int kLooksBeforeYield = 200;

struct CMapping {
    explicit CMapping(const char* szName) : nFile(shm_open(szName, O_RDWR, 0600)) {
        struct stat status {};
        Check(nFile >= 0 && fstat(nFile, &status) == 0, "no segment for the floor");
        nSize = static_cast<std::size_t>(status.st_size);
        pBytes =
            static_cast<char*>(mmap(nullptr, nSize, PROT_READ | PROT_WRITE, MAP_SHARED, nFile, 0));
        Check(pBytes != MAP_FAILED, "no mapping for the floor");
    }
    CMapping(CMapping const&) = delete;
    CMapping& operator=(CMapping const&) = delete;
    ~CMapping() {
        munmap(pBytes, nSize);
        close(nFile);
    }

    int nFile;
    std::size_t nSize = 0;
    char* pBytes;
};

void Create(const char* szName, std::size_t nSize) {
    const int nFile = shm_open(szName, O_RDWR | O_CREAT | O_TRUNC, 0600);
    Check(nFile >= 0 && ftruncate(nFile, static_cast<off_t>(nSize)) == 0, "no segment to make");
    close(nFile);
}

bool Swap(std::uint32_t* pWord, std::uint32_t nFrom, std::uint32_t nTo) {
    return __atomic_compare_exchange_n(pWord, &nFrom, nTo, false, __ATOMIC_SEQ_CST,
                                       __ATOMIC_SEQ_CST);
}

// Looks until the word can be swapped. `pSleepers` tells the other side to wake this one.
void AwaitSwap(std::uint32_t* pWord, std::uint32_t nFrom, std::uint32_t nTo,
               std::uint32_t* pSleepers = nullptr) {
    for (int nLook = 1;; ++nLook) {
        if (__atomic_load_n(pWord, __ATOMIC_RELAXED) == nFrom && Swap(pWord, nFrom, nTo)) return;
        if (nLook % kLooksBeforeYield == 0)
            sched_yield();
        else
            RelaxProcessor();
        if (pSleepers == nullptr || nLook < kLooksBeforeSleep) continue;
        __atomic_store_n(pSleepers, 1, __ATOMIC_SEQ_CST);
        SleepOnWord(pWord, nTo, 100'000);
        __atomic_store_n(pSleepers, 0, __ATOMIC_SEQ_CST);
    }
}

void Lock(std::uint32_t* pWord, ELocking locking) {
    if (locking == ELocking::Eager) return AwaitSwap(pWord, 0, 1);
    while (!Swap(pWord, 0, 1)) SleepUs(2000);
}

void Notify(ConditionWords& condition, std::uint32_t* pMutex, std::uint32_t* pSleepers) {
    AwaitSwap(&condition.nEnterLock, 0, 1);
    const bool fWaiter = __atomic_load_n(&condition.nWaiterCount, __ATOMIC_SEQ_CST) > 0;
    if (pMutex != nullptr) Swap(pMutex, 1, 0);
    if (!fWaiter) {
        Swap(&condition.nEnterLock, 1, 0);
        return;
    }
    AwaitSwap(&condition.nCommand, kCommandSleep, kCommandNotifyOne);
    if (pSleepers != nullptr && __atomic_load_n(pSleepers, __ATOMIC_SEQ_CST) != 0)
        WakeWord(&condition.nCommand);
}

void Wait(ConditionWords& condition, std::uint32_t* pMutex, std::uint32_t* pSleepers) {
    AwaitSwap(&condition.nEnterLock, 0, 1);
    __atomic_add_fetch(&condition.nWaiterCount, 1, __ATOMIC_SEQ_CST);
    Swap(pMutex, 1, 0);
    Swap(&condition.nEnterLock, 1, 0);
    AwaitSwap(&condition.nCommand, kCommandNotifyOne, kCommandSleep, pSleepers);
    __atomic_sub_fetch(&condition.nWaiterCount, 1, __ATOMIC_SEQ_CST);
    Swap(&condition.nEnterLock, 1, 0);
    AwaitSwap(pMutex, 0, 1);
}

[[noreturn]] void RunHost(CServerManner const& manner, CSegmentNames const& names) {
    PlaceServer(manner.placement);
    const CMapping mapping(names.szMessage);
    auto& record = *reinterpret_cast<MessageRecord*>(mapping.pBytes);
    char request[MessageLayout::kRequestCapacity];
    AwaitSwap(&record.nExchangeMutex, 0, 1);
    for (;;) {
        while (__atomic_load_n(&record.fPending, __ATOMIC_SEQ_CST) == 0)
            Wait(record.requestCondition, &record.nExchangeMutex, &record.nReserved0);
        char* const pBuffer = mapping.pBytes + MessageLayout::kBufferOffset;
        std::memcpy(request, pBuffer, strnlen(pBuffer, MessageLayout::kRequestCapacity));
        Work(manner);
        std::memset(pBuffer, 'r', kReplySize);
        pBuffer[kReplySize] = '\0';
        mapping.pBytes[MessageLayout::kErrorOffset] = '\0';
        __atomic_store_n(&record.fPending, 0, __ATOMIC_SEQ_CST);
        Notify(record.replyCondition, &record.nExchangeMutex, nullptr);
        AwaitSwap(&record.nExchangeMutex, 0, 1);
    }
}

class CFloorPeer : public CExchangePeer {
public:
    CFloorPeer(CServerManner const& manner, ELocking locking)
        : m_locking(locking),
          m_segments(NamesFor(locking)),
          m_host([&] { RunHost(manner, m_segments.Names()); }) {}

    void Call() override {
        int id = 0;
        {
            const CMapping mapping(m_segments.Names().szDirectory);
            auto& directory = *reinterpret_cast<DirectoryRecord*>(mapping.pBytes);
            Lock(&directory.nLock, m_locking);
            timespec now{};
            clock_gettime(CLOCK_REALTIME, &now);
            if (now.tv_sec > directory.lHeartbeat) id = directory.nCurrentHost;
            Swap(&directory.nLock, 1, 0);
        }
        Check(id == 1, "the floor has no host");

        const CMapping mapping(m_segments.Names().szMessage);
        auto& record = *reinterpret_cast<MessageRecord*>(mapping.pBytes);
        char* const pBuffer = mapping.pBytes + MessageLayout::kBufferOffset;
        Lock(&record.nRequestLock, m_locking);
        Lock(&record.nExchangeMutex, m_locking);
        std::memset(pBuffer, 'q', kRequestSize);
        std::memset(pBuffer + kRequestSize, 0, MessageLayout::kRequestCapacity - kRequestSize);
        Notify(record.requestCondition, nullptr, &record.nReserved0);
        __atomic_store_n(&record.fPending, 1, __ATOMIC_SEQ_CST);
        Wait(record.replyCondition, &record.nExchangeMutex, nullptr);
        m_strReply.assign(pBuffer, strnlen(pBuffer, MessageLayout::kReplySize));
        Check(m_strReply.size() == kReplySize, "the floor gave a wrong reply");
        Check(mapping.pBytes[MessageLayout::kErrorOffset] == '\0', "the floor gave an error");
        Swap(&record.nExchangeMutex, 1, 0);
        Swap(&record.nRequestLock, 1, 0);
    }

private:
    class CSegments {
    public:
        explicit CSegments(CSegmentNames const& names) : m_names(names) {
            Create(names.szDirectory, sizeof(DirectoryRecord));
            Create(names.szMessage, MessageLayout::kSegmentSize);
            const CMapping mapping(names.szDirectory);
            reinterpret_cast<DirectoryRecord*>(mapping.pBytes)->nCurrentHost = 1;
        }
        ~CSegments() {
            shm_unlink(m_names.szDirectory);
            shm_unlink(m_names.szMessage);
        }
        CSegments(CSegments const&) = delete;
        CSegments& operator=(CSegments const&) = delete;

        CSegmentNames const& Names() const { return m_names; }

    private:
        const CSegmentNames m_names;
    };

    const ELocking m_locking;
    CSegments m_segments;
    CChild m_host;
    std::string m_strReply;
};

}  // namespace

std::unique_ptr<CExchangePeer> MakeFloorPeer(CServerManner const& manner) {
    return std::make_unique<CFloorPeer>(manner, ELocking::Eager);
}

std::unique_ptr<CExchangePeer> MakePacedFloorPeer(CServerManner const& manner) {
    return std::make_unique<CFloorPeer>(manner, ELocking::Paced);
}
