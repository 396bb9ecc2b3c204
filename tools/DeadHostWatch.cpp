#include "tools/DeadHostWatch.h"

#include <boost/interprocess/exceptions.hpp>
#include <chrono>
#include <cstdint>
#include <optional>

#include "link/LinkClock.h"
#include "link/MappedSegment.h"
#include "link/SharedSegments.h"
#include "tools/LinkRescue.h"

namespace {

constexpr std::chrono::seconds kBetweenLooks{1};

// A host that has not been heard of for a second, by its last words.
struct CSilentHost {
    std::int32_t nHost;
    std::int64_t lHeartbeat;
    bool operator==(CSilentHost const&) const = default;
};

// Without the lock, which a dead host may hold: a torn number is looked at again.
std::optional<CSilentHost> FindSilentHost() {
    try {
        const CMappedSegment directory(szDirectorySegment);
        if (directory.Size() < sizeof(DirectoryRecord)) return std::nullopt;
        auto const& record = *reinterpret_cast<DirectoryRecord const*>(directory.Bytes());
        const CSilentHost host{record.nCurrentHost, record.lHeartbeat};
        const bool fSilent = IsHeartbeatStale(host.lHeartbeat, LinkTimeNow());
        return fSilent && host.nHost > 0 ? std::optional(host) : std::nullopt;
    } catch (boost::interprocess::interprocess_exception const&) {
        return std::nullopt;
    }
}

}  // namespace

CDeadHostWatch::CDeadHostWatch() : m_thread([this] { Watch(); }) {}

CDeadHostWatch::~CDeadHostWatch() {
    {
        const std::lock_guard guard(m_lock);
        m_fQuit = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void CDeadHostWatch::Watch() {
    std::optional<CSilentHost> sentAway;
    std::unique_lock guard(m_lock);
    while (!m_changed.wait_for(guard, kBetweenLooks, [this] { return m_fQuit; })) {
        guard.unlock();
        const std::optional<CSilentHost> host = FindSilentHost();
        // Where it is not proven it is tried again: a host that is halted may yet die.
        if (host && host != sentAway && RescueFromDeadHost(host->nHost).fDone) {
            sentAway = host;
            ++m_nFound;
        }
        guard.lock();
    }
}
