#include "host/LinkServer.h"

#include <chrono>
#include <exception>
#include <utility>

#include "host/Farewell.h"
#include "link/LinkClock.h"
#include "link/WordProtocol.h"

namespace {

constexpr std::chrono::milliseconds kHeartbeatPeriod{250};
constexpr std::int64_t kDirectoryLockUs = 100'000;
// Each costs a thread and a segment for as long as somebody in it is halted.
constexpr std::size_t kMostChannels = 8;

}  // namespace

CLinkServer::CLinkServer(int nId, bool fSessionSelected, Handler handler,
                         std::uint32_t nUpdateCount, std::shared_ptr<const CHostLock> pLock)
    : m_nId(nId),
      m_handler(std::move(handler)),
      m_pLock(std::move(pLock)),
      m_fSessionSelected(fSessionSelected) {
    SetUpdateCount(nUpdateCount);
    SendAwayFromLeftover(m_nId);
    m_channels.emplace_back(m_nId, SegmentName::OfTheHost,
                            [this](std::string const& request) { return Answer(request); });
    RefreshDirectory();
    m_keeper = std::thread([this] { KeepUp(); });
}

CLinkServer::~CLinkServer() {
    std::list<CMessageChannel> channels;
    {
        const std::lock_guard guard(m_channelsMutex);
        channels.swap(m_channels);
    }
    channels.clear();
    {
        const std::lock_guard guard(m_mutex);
        m_fStop = true;
    }
    m_wake.notify_one();
    m_keeper.join();
}

void CLinkServer::SelectSession(bool fSelected) {
    {
        const std::lock_guard guard(m_mutex);
        m_fSessionSelected = fSelected;
    }
    RefreshDirectory();
}

void CLinkServer::SetUpdateCount(std::uint32_t nUpdateCount) noexcept {
    __atomic_store_n(&m_directory.Record()->nUpdateCount, nUpdateCount, __ATOMIC_RELEASE);
}

CServerReply CLinkServer::Answer(std::string const& request) {
    const std::lock_guard guard(m_handlerMutex);
    CServerReply reply = m_handler(request);
    SetUpdateCount(reply.nUpdateCount);
    return reply;
}

void CLinkServer::KeepUp() {
    std::unique_lock lock(m_mutex);
    while (!m_wake.wait_for(lock, kHeartbeatPeriod, [this] { return m_fStop; })) {
        lock.unlock();
        RefreshDirectory();
        LookAfterChannels();
        lock.lock();
    }
}

void CLinkServer::RefreshDirectory() noexcept {
    bool fSelected = false;
    {
        const std::lock_guard guard(m_mutex);
        fSelected = m_fSessionSelected;
    }
    DirectoryRecord* const pDirectory = m_directory.Record();
    // Clients hold this lock for two reads. One that keeps it is dead or halted, and then the lock
    // is freed for it: either of the two values may be new or old for a reader, each by itself.
    AcquireWord(&pDirectory->nLock, LinkTimeNow() + kDirectoryLockUs);
    __atomic_store_n(&pDirectory->nCurrentHost, fSelected ? m_nId : 0, __ATOMIC_RELAXED);
    pDirectory->lHeartbeat = LinkTimeNow();
    ReleaseWord(&pDirectory->nLock);
}

void CLinkServer::LookAfterChannels() {
    const std::lock_guard guard(m_channelsMutex);
    if (m_channels.empty()) return;
    m_channels.remove_if([](CMessageChannel const& channel) { return channel.HasEnded(); });
    if (!m_channels.back().IsHeldUp() || m_channels.size() >= kMostChannels) return;
    try {
        CMessageChannel& old = m_channels.back();
        CMessageChannel& fresh =
            m_channels.emplace_back(m_nId, SegmentName::Spare,
                                    [this](std::string const& request) { return Answer(request); });
        if (!fresh.Replace(old)) m_channels.pop_back();
    } catch (std::exception const&) {
        // No memory, segment or thread for one more: those who wait go on waiting, and it is tried
        // again.
    }
}
