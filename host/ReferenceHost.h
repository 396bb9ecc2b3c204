#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "host/LinkServer.h"
#include "host/ScriptEngine.h"
#include "host/Session.h"

/// One request as the host answered it.
struct CHostExchange {
    std::string m_strScript;
    CScriptResult m_Result;
    std::chrono::microseconds m_Duration;
};

struct CReferenceHostOptions {
    int m_nId = 1;  ///< host id, greater than 0
    CScriptEngineOptions m_Engine;
    /// Told of every exchange, on the answering thread, before the client gets its reply.
    std::function<void(CHostExchange const&)> m_Observer;
    /// The right to be the host, when it was taken before; otherwise the host takes it for as long
    /// as it serves.
    std::shared_ptr<const CHostLock> m_pLock;
};

/// A host application for development and tests: a session, the script engine that works on it and
/// the link that clients reach it by. It runs from construction to destruction or to
/// `Close`.
///
/// The public operations are safe on any thread, `Close` once all others are done; they wait while
/// a script runs, unless it is stuck.
class CReferenceHost {
public:
    /// Throws `CHostSegmentError` when another host is running, and what the engine throws when its
    /// audio directory cannot be made.
    CReferenceHost(CSession session, CReferenceHostOptions options);

    /// Selects the session or no session, as a user of the host application would.
    void SelectSession(bool fSelected);

    /// Ends the link: answers the request under way and takes no more. The session stays, and from
    /// then on nothing changes it. False when the script under way is stuck and will never be
    /// answered: the process then has to end with `Abandon`.
    [[nodiscard]] bool Close();

    /// Whether a script runs that nothing can stop any more. It does not touch the session, which
    /// can still be looked at.
    bool IsStuck() const noexcept { return m_Engine.IsStuck(); }

    /// Ends the process at once, because of a stuck script. Who waits for it is sent away, and a
    /// private audio directory is removed.
    [[noreturn]] void Abandon(int nExitStatus);

    /// A copy of the session as it stands between two scripts.
    CSession Snapshot() const;

    /// The session's update counter at that moment.
    std::uint32_t UpdateCount() const;

    /// Where the host writes audio of its own.
    std::string const& AudioDirectory() const { return m_Engine.AudioDirectory().Path(); }

private:
    CServerReply Answer(std::string const& strScript);
    std::unique_lock<std::timed_mutex> WaitForScript() const;

    const CReferenceHostOptions m_Options;
    mutable std::timed_mutex m_Mutex;
    CSession m_Session;
    CScriptEngine m_Engine;
    std::optional<CLinkServer> m_Server;  ///< none once closed
};
