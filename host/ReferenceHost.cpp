#include "host/ReferenceHost.h"

#include <cstdlib>
#include <future>
#include <random>
#include <thread>
#include <utility>

#include "host/Farewell.h"

namespace {

constexpr std::chrono::milliseconds kBetweenLooks{100};

// A client takes another number for another state, so a host must not show one that an earlier host
// has shown. Chance sees to that without anything to remember: of a thousand million starts, one
// shows the number that a client has. What is counted from there stays a positive 32-bit number.
std::uint32_t FirstUpdateCount() {
    std::random_device chance;
    return std::uniform_int_distribution<std::uint32_t>(1, std::uint32_t{1} << 30)(chance);
}

}  // namespace

CReferenceHost::CReferenceHost(CSession session, CReferenceHostOptions options)
    : m_Options(std::move(options)),
      m_Session(std::move(session)),
      m_Engine(m_Session, m_Options.m_Engine) {
    m_Session.CountFrom(FirstUpdateCount());
    m_Server.emplace(
        m_Options.m_nId, m_Session.Selected(),
        [this](std::string const& strScript) { return Answer(strScript); }, m_Session.UpdateCount(),
        m_Options.m_pLock ? m_Options.m_pLock : std::make_shared<CHostLock>());
}

// A stuck script keeps the mutex for ever, and touches nothing any more.
std::unique_lock<std::timed_mutex> CReferenceHost::WaitForScript() const {
    std::unique_lock guard(m_Mutex, std::defer_lock);
    while (!guard.try_lock_for(kBetweenLooks) && !IsStuck()) {
    }
    return guard;
}

void CReferenceHost::SelectSession(bool fSelected) {
    const auto guard = WaitForScript();
    m_Session.SetSelected(fSelected);
    if (!m_Server) return;
    m_Server->SelectSession(fSelected);
    m_Server->SetUpdateCount(m_Session.UpdateCount());
}

bool CReferenceHost::Close() {
    std::packaged_task<void()> close([this] { m_Server.reset(); });
    const std::future<void> closed = close.get_future();
    std::thread(std::move(close)).detach();
    while (closed.wait_for(kBetweenLooks) == std::future_status::timeout) {
        if (IsStuck()) return false;
    }
    return true;
}

void CReferenceHost::Abandon(int nExitStatus) {
    SendAwayFromLeftover(m_Options.m_nId);
    m_Engine.RemovePrivateDirectory();
    std::_Exit(nExitStatus);
}

CSession CReferenceHost::Snapshot() const {
    const auto guard = WaitForScript();
    return m_Session;
}

std::uint32_t CReferenceHost::UpdateCount() const {
    const auto guard = WaitForScript();
    return m_Session.UpdateCount();
}

CServerReply CReferenceHost::Answer(std::string const& strScript) {
    using Clock = std::chrono::steady_clock;
    const std::lock_guard guard(m_Mutex);
    const Clock::time_point start = Clock::now();
    CHostExchange exchange{strScript, m_Engine.Run(strScript), {}};
    exchange.m_Duration =
        std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
    if (m_Options.m_Observer) m_Options.m_Observer(exchange);
    return {std::move(exchange.m_Result.strPrinted), std::move(exchange.m_Result.strError),
            m_Session.UpdateCount()};
}
