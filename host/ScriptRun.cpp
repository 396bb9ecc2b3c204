#include "host/ScriptRun.h"

#include <cstdlib>
#include <cstring>
#include <lua.hpp>

namespace {

constexpr int kInstructionsPerCheck = 1000;

/// The line of the innermost function of the script itself, 0 when there is none.
int ScriptLine(lua_State* pState) {
    lua_Debug where{};
    for (int nLevel = 0; nLevel < 64 && lua_getstack(pState, nLevel, &where); ++nLevel) {
        lua_getinfo(pState, "Sl", &where);
        if (where.currentline > 0 && std::strcmp(where.source, kChunkName) == 0)
            return where.currentline;
    }
    return 0;
}

void OnInstructionCount(lua_State* pState, lua_Debug*) {
    CheckScriptTime(pState);
}

}  // namespace

CScriptRun& RunOf(lua_State* pState) {
    return **static_cast<CScriptRun**>(lua_getextraspace(pState));
}

void SetRun(lua_State* pState, CScriptRun& run) {
    *static_cast<CScriptRun**>(lua_getextraspace(pState)) = &run;
    lua_sethook(pState, OnInstructionCount, LUA_MASKCOUNT, kInstructionsPerCheck);
}

void CheckScriptTime(lua_State* pState) {
    CScriptRun& run = RunOf(pState);
    run.m_fTimeOver = run.m_fTimeOver || run.m_Clock.IsOver();
    if (!run.m_fTimeOver) return;
    if (run.m_nTimeOverLine == 0) run.m_nTimeOverLine = ScriptLine(pState);
    lua_sethook(pState, OnInstructionCount, LUA_MASKCOUNT, 1);
    lua_pushlightuserdata(pState, &run);
    lua_error(pState);
}

void RaiseScriptError(lua_State* pState, char const* pszText) {
    int const nLine = ScriptLine(pState);
    if (nLine > 0)
        lua_pushfstring(pState, "%s:%d: %s", kChunkName + 1, nLine, pszText);
    else
        lua_pushfstring(pState, "%s: %s", kChunkName + 1, pszText);
    lua_error(pState);
    std::abort();
}

void RaiseReason(lua_State* pState) {
    std::string const& strReason = RunOf(pState).m_strError;
    RaiseScriptError(pState, strReason.empty() ? "not enough memory" : strReason.c_str());
}
