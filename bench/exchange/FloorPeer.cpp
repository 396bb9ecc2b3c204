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

constexpr char szDirectory[] = "/tavarin_bench_directory";
constexpr char szMessage[] = "/tavarin_bench_message";
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

[[noreturn]] void RunHost(CServerManner const& manner) {
    PlaceServer(manner.placement);
    const CMapping mapping(szMessage);
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
    explicit CFloorPeer(CServerManner const& manner)
        : m_segments(), m_host([&] { RunHost(manner); }) {}

    void Call() override {
        int id = 0;
        {
            const CMapping mapping(szDirectory);
            auto& directory = *reinterpret_cast<DirectoryRecord*>(mapping.pBytes);
            AwaitSwap(&directory.nLock, 0, 1);
            timespec now{};
            clock_gettime(CLOCK_REALTIME, &now);
            if (now.tv_sec > directory.lHeartbeat) id = directory.nCurrentHost;
            Swap(&directory.nLock, 1, 0);
        }
        Check(id == 1, "the floor has no host");

        const CMapping mapping(szMessage);
        auto& record = *reinterpret_cast<MessageRecord*>(mapping.pBytes);
        char* const pBuffer = mapping.pBytes + MessageLayout::kBufferOffset;
        AwaitSwap(&record.nRequestLock, 0, 1);
        AwaitSwap(&record.nExchangeMutex, 0, 1);
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
    struct CSegments {
        CSegments() {
            Create(szDirectory, sizeof(DirectoryRecord));
            Create(szMessage, MessageLayout::kSegmentSize);
            const CMapping mapping(szDirectory);
            reinterpret_cast<DirectoryRecord*>(mapping.pBytes)->nCurrentHost = 1;
        }
        ~CSegments() {
            shm_unlink(szDirectory);
            shm_unlink(szMessage);
        }
    };

    CSegments m_segments;
    CChild m_host;
    std::string m_strReply;
};

}  // namespace

std::unique_ptr<CExchangePeer> MakeFloorPeer(CServerManner const& manner) {
    return std::make_unique<CFloorPeer>(manner);
}
