#pragma once

#include <string>
#include <vector>

#include "host/HostFunctions.h"
#include "host/HostValue.h"
#include "host/ScriptClock.h"
#include "host/ScriptEngine.h"

struct lua_State;

/// Thrown by a host function that is called when the time is over; never through the interpreter.
struct CScriptTimeOver {};

/// Everything that belongs to one script while it runs.
///
/// The interpreter leaves a C function that raises an error by a jump, without running destructors.
/// Functions that it calls therefore keep nothing on the stack that has one: their texts and lists
/// live here.
struct CScriptRun {
    CScriptLimits const& m_Limits;
    CHostContext& m_Context;
    CScriptClock& m_Clock;

    std::string m_strPrinted{};
    bool m_fTimeOver = false;
    int m_nTimeOverLine = 0;  ///< where the script was stopped; 0 unknown

    std::vector<CHostValue> m_Arguments{};
    CHostValue m_Result{};
    std::string m_strError{};
};

/// The run that an interpreter belongs to.
CScriptRun& RunOf(lua_State* pState);
void SetRun(lua_State* pState, CScriptRun& run);

/// Ends the script with an error that it cannot catch when its time is over.
void CheckScriptTime(lua_State* pState);

/// Raises an error with the script's current line in front.
[[noreturn]] void RaiseScriptError(lua_State* pState, char const* pszText);

/// Raises the error whose text a helper left in the run; none there means no memory for a text.
[[noreturn]] void RaiseReason(lua_State* pState);

/// The name that a script has in error texts.
inline constexpr char const* kChunkName = "=script";
