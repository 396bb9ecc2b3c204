#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "link/SharedSegments.h"
#include "link/TANClientInterProcess.h"
#include "platform/Assertion.h"

namespace {

constexpr std::size_t kLargestSegment = std::size_t{1} << 16;
constexpr std::size_t kDirections = 6;
constexpr std::size_t kBytesPerLie = 6;
// Longer than every wait with a deadline of a client whose time-outs are at most 3 milliseconds.
constexpr std::chrono::milliseconds kLongestLying{20};

/// What the input begins with.
struct Directions {
    std::uint16_t nSize;         ///< of the segment
    std::uint8_t nTimeoutMs;     ///< of the client, in its low bits
    std::uint8_t nLies;          ///< how many writes the host makes during the exchange
    std::uint16_t nRequestSize;  ///< of the request
};
static_assert(sizeof(Directions) == kDirections);

/// A message segment of a host whose id is this process's, so that no real one is met.
class CLyingSegment {
public:
    CLyingSegment(std::size_t nSize, std::uint8_t const* pContents, std::size_t nContents)
        : m_strName("/" + CTANClientInterProcess().GetNameOfHost(getpid())), m_nSize(nSize) {
        const int nFile = shm_open(m_strName.c_str(), O_CREAT | O_TRUNC | O_RDWR, 0600);
        TAVARIN_REQUIRE(nFile >= 0 && ftruncate(nFile, static_cast<off_t>(nSize)) == 0);
        if (nSize > 0) {
            void* const pMapped =
                mmap(nullptr, nSize, PROT_READ | PROT_WRITE, MAP_SHARED, nFile, 0);
            TAVARIN_REQUIRE(pMapped != MAP_FAILED);
            m_pBytes = static_cast<std::uint8_t*>(pMapped);
        }
        close(nFile);
        for (std::size_t nByte = 0; nContents > 0 && nByte < nSize; ++nByte) {
            m_pBytes[nByte] = pContents[nByte % nContents];
        }
    }
    ~CLyingSegment() {
        if (m_pBytes) munmap(m_pBytes, m_nSize);
        shm_unlink(m_strName.c_str());
    }
    CLyingSegment(CLyingSegment const&) = delete;
    CLyingSegment& operator=(CLyingSegment const&) = delete;

    // Writes a word, mostly into the record, where the flags and words are.
    void Lie(std::uint8_t const* pLie) const {
        std::uint16_t nPlace = 0;
        std::uint32_t nValue = 0;
        std::memcpy(&nPlace, pLie, sizeof(nPlace));
        std::memcpy(&nValue, pLie + sizeof(nPlace), sizeof(nValue));
        const bool fAnywhere = (nPlace & 0x8000) != 0;
        const std::size_t nOffset = (fAnywhere ? nPlace * 2u : nPlace % 64u) & ~std::size_t{3};
        if (nOffset + sizeof(nValue) > m_nSize) return;
        __atomic_store_n(reinterpret_cast<std::uint32_t*>(m_pBytes + nOffset), nValue,
                         __ATOMIC_RELAXED);
    }

    // Frees every word for which the protocol lets a client wait without a deadline.
    void OpenEveryDoor() const {
        if (m_nSize < sizeof(MessageRecord)) return;
        auto* const pRecord = reinterpret_cast<MessageRecord*>(m_pBytes);
        for (std::uint32_t* const pWord :
             {&pRecord->requestCondition.nWaiterCount, &pRecord->requestCondition.nCommand,
              &pRecord->requestCondition.nEnterLock, &pRecord->replyCondition.nEnterLock,
              &pRecord->nExchangeMutex}) {
            __atomic_store_n(pWord, 0, __ATOMIC_SEQ_CST);
        }
        __atomic_store_n(&pRecord->replyCondition.nCommand, kCommandNotifyOne, __ATOMIC_SEQ_CST);
    }

private:
    std::string m_strName;
    std::size_t m_nSize;
    std::uint8_t* m_pBytes = nullptr;
};

}  // namespace

// One exchange with a segment of any size and contents, whose host changes words meanwhile, and
// in the end lets its client go.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    if (size < kDirections) return 0;
    Directions directions{};
    std::memcpy(&directions, data, kDirections);
    std::uint8_t const* const pLies = data + kDirections;
    const std::size_t nRest = size - kDirections;
    const std::size_t nLies = std::min<std::size_t>(directions.nLies, nRest / kBytesPerLie);
    const CLyingSegment segment(directions.nSize % (kLargestSegment + 1),
                                pLies + nLies * kBytesPerLie, nRest - nLies * kBytesPerLie);

    std::atomic<bool> fDone = false;
    std::thread host([&] {
        const auto end = std::chrono::steady_clock::now() + kLongestLying;
        while (!fDone && std::chrono::steady_clock::now() < end) {
            for (std::size_t nLie = 0; nLie < nLies; ++nLie) {
                segment.Lie(pLies + nLie * kBytesPerLie);
            }
            std::this_thread::yield();
        }
        for (; !fDone; std::this_thread::yield()) segment.OpenEveryDoor();
    });
    CTANClientInterProcess client;
    std::string strRequest(directions.nRequestSize, 'r');
    std::string strReply;
    const int nStatus =
        client.SendTANMessage(getpid(), strRequest, strReply, directions.nTimeoutMs % 4);
    fDone = true;
    host.join();

    TAVARIN_REQUIRE(nStatus == 0 || nStatus == 121 || nStatus == -1 || nStatus == 22);
    TAVARIN_REQUIRE(strReply.size() <= kLargestSegment);
    TAVARIN_REQUIRE(client.m_strLastError.size() <= kLargestSegment);
    std::vector<std::string> values;
    client.SplitResult(strReply, &values);
    TAVARIN_REQUIRE(values.size() <= strReply.size());
    return 0;
}
