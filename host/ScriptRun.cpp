#include "host/ScriptRun.h"

#include <cstdlib>
#include <cstring>
#include <lua.hpp>

namespace {

/// Putting colliding keys into a growing table takes time with the square of their number in one
/// step that nothing interrupts; tables stay below the size where that is felt.
constexpr std::size_t kTableNodeSize = 24;
constexpr std::size_t kMaxTableNodes = std::size_t{1} << 15;

constexpr std::size_t kLargeBlock = 4096;
constexpr int kInstructionsPerCheck = 100;

/// A new block that belongs to no object and has the size of 2^n table nodes is a table's hash
/// part.
bool IsOversizeTable(void const* pBlock, std::size_t nKind, std::size_t nSize) {
    if (pBlock || nKind != 0 || nSize % kTableNodeSize != 0) return false;
    std::size_t const nNodes = nSize / kTableNodeSize;
    return nNodes > kMaxTableNodes && (nNodes & (nNodes - 1)) == 0;
}

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

void* AllocateForScript(void* pRun, void* pBlock, std::size_t nOldSize, std::size_t nNewSize) {
    CScriptRun& run = *static_cast<CScriptRun*>(pRun);
    std::size_t const nOld = pBlock ? nOldSize : 0;
    if (nNewSize == 0) {
        std::free(pBlock);
        run.m_nMemoryUsed -= nOld;
        return nullptr;
    }
    if (nNewSize > nOld) {
        if (nNewSize - nOld > run.m_Limits.m_nMemoryBytes - run.m_nMemoryUsed) return nullptr;
        if (IsOversizeTable(pBlock, nOldSize, nNewSize)) return nullptr;
        if (nNewSize >= kLargeBlock && run.TimeOver()) return nullptr;
    }
    void* pNew = std::realloc(pBlock, nNewSize);
    if (pNew) run.m_nMemoryUsed += nNewSize - nOld;
    return pNew;
}

CScriptRun& RunOf(lua_State* pState) {
    return **static_cast<CScriptRun**>(lua_getextraspace(pState));
}

void SetRun(lua_State* pState, CScriptRun& run) {
    *static_cast<CScriptRun**>(lua_getextraspace(pState)) = &run;
    lua_sethook(pState, OnInstructionCount, LUA_MASKCOUNT, kInstructionsPerCheck);
}

void CheckScriptTime(lua_State* pState) {
    CScriptRun& run = RunOf(pState);
    if (!run.TimeOver()) return;
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

std::string_view ScriptTextArgument(lua_State* pState, int nIndex) {
    std::size_t nLength = 0;
    char const* pText = luaL_checklstring(pState, nIndex, &nLength);
    return {pText, nLength};
}
