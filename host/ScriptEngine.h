#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>

#include "host/AudioDirectory.h"
#include "host/HostFunctions.h"
#include "host/ScriptClock.h"
#include "host/ScriptWorld.h"
#include "host/Session.h"

/// What came of a script.
struct CScriptResult {
    std::string strPrinted;  ///< everything printed, also by a script that failed; may hold NULs
    std::string strError;    ///< "script:3: what went wrong"; empty for a script that succeeded
};

/// How much a script may take.
struct CScriptLimits {
    std::size_t m_nMemoryBytes = std::size_t{64} << 20;   ///< interpreter memory
    std::chrono::milliseconds m_Time{10000};              ///< running, host functions not counted
    std::size_t m_nReplyBytes = std::size_t{4} << 20;     ///< printed text
    std::size_t m_nScriptBytes = std::size_t{256} << 10;  ///< the script itself
};

struct CScriptEngineOptions {
    CScriptLimits m_Limits;
    /// Where renders, exports and results of processes go; empty for a private directory that is
    /// removed with the engine.
    std::string m_strAudioDirectory;
    /// Largest sum of the sizes of the files there, in bytes.
    std::int64_t m_lAudioBytes = std::int64_t{64} << 30;
    /// Told about once a second how far a host function has come that takes long.
    CWorkNotice::Listener m_WorkListener{};
};

/// Runs scripts in the host's script language, Lua 5.4, against a session.
///
/// Each script finds the interpreter as the first one found it, so nothing that one does to its own
/// world reaches the next. It finds the host functions, `print` (which fills the reply) and those
/// functions of Lua's base, string, table and math libraries that cannot reach files, processes,
/// the environment, bytecode or the interpreter's own workings. What differs from plain Lua: `__gc`
/// is refused, and the handler of `xpcall` is called after the failed call has been left.
///
/// A script that runs too long is stopped and cannot catch that; what the host does for it is not
/// counted. A single step of the interpreter that takes for ever cannot be stopped: `IsStuck`
/// tells. Used by one thread, except for `IsStuck`; the session must outlive the engine.
class CScriptEngine {
public:
    /// Throws `std::system_error` when the audio directory cannot be made.
    explicit CScriptEngine(CSession& session, CScriptEngineOptions const& options = {});
    CScriptEngine(CScriptEngine const&) = delete;
    CScriptEngine& operator=(CScriptEngine const&) = delete;

    /// Runs a script to its end. Never throws for anything that the script does.
    CScriptResult Run(std::string const& strScript);

    /// Whether a script has run for twice its time, so that nothing can stop it any more. It will
    /// not touch the session again. Any thread.
    bool IsStuck() const noexcept { return m_Clock.IsStuck(); }

    CAudioDirectory const& AudioDirectory() const { return m_Directory; }
    void RemovePrivateDirectory() noexcept { m_Directory.RemoveIfPrivate(); }

private:
    CScriptLimits m_Limits;
    CAudioDirectory m_Directory;
    CHostContext m_Context;
    CScriptClock m_Clock;
    CScriptWorld m_World;
    std::mt19937_64 m_Chance{std::random_device()()};
};
