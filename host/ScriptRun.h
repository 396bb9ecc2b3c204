#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/HostFunctions.h"
#include "host/HostValue.h"
#include "host/PatternMatcher.h"
#include "host/ScriptEngine.h"

struct lua_State;

/// Thrown through a host function, never through the interpreter, when the time is over.
struct CScriptTimeOver {};

/// Everything that belongs to one script while it runs.
///
/// The interpreter leaves a C function that raises an error by a jump, without running destructors.
/// Functions that it calls therefore keep nothing on the stack that has one: their texts and lists
/// live here.
struct CScriptRun {
    CScriptRun(CScriptLimits const& limits, CHostContext& context)
        : m_Limits(limits),
          m_Context(context),
          m_Deadline(std::chrono::steady_clock::now() + limits.m_Time) {}

    CScriptLimits const& m_Limits;
    CHostContext& m_Context;
    std::chrono::steady_clock::time_point const m_Deadline;
    std::size_t m_nMemoryUsed = 0;

    std::string m_strPrinted;
    bool m_fTimeOver = false;
    int m_nTimeOverLine = 0;  ///< where the script was stopped; 0 unknown

    std::vector<CHostValue> m_Arguments;
    CHostValue m_Result;
    std::string m_strError;

    std::optional<CPattern> m_Pattern;  ///< the last pattern used, taken apart
    std::string m_strPattern;
    bool m_fPatternAnchors = false;

    /// Whether the time is over, now or noticed earlier.
    bool TimeOver() noexcept {
        if (!m_fTimeOver) m_fTimeOver = std::chrono::steady_clock::now() >= m_Deadline;
        return m_fTimeOver;
    }
};

/// The interpreter's memory: a `lua_Alloc` whose context is the run. Refuses to go beyond the limit
/// and, so that no single step of the interpreter takes long, tables of a great many keys, and
/// large blocks once the time is over.
void* AllocateForScript(void* pRun, void* pBlock, std::size_t nOldSize, std::size_t nNewSize);

/// The run that an interpreter belongs to.
CScriptRun& RunOf(lua_State* pState);
void SetRun(lua_State* pState, CScriptRun& run);

/// Ends the script with an error that it cannot catch when its time is over.
void CheckScriptTime(lua_State* pState);

/// Raises an error with the script's current line in front.
[[noreturn]] void RaiseScriptError(lua_State* pState, char const* pszText);

/// Raises the error whose text a helper left in the run; none there means no memory for a text.
[[noreturn]] void RaiseReason(lua_State* pState);

/// A text argument, or an error.
std::string_view ScriptTextArgument(lua_State* pState, int nIndex);

/// The name that a script has in error texts.
inline constexpr char const* kChunkName = "=script";
