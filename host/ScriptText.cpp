#include <algorithm>
#include <exception>
#include <lua.hpp>
#include <stdexcept>
#include <string_view>

#include "host/PatternMatcher.h"
#include "host/ScriptFunctions.h"
#include "host/ScriptRun.h"

namespace {

bool SearchAllowed(void* pRun) {
    return !static_cast<CScriptRun*>(pRun)->TimeOver();
}

/// The pattern taken apart, kept from the last call when it is the same; null when malformed.
CPattern const* PreparePattern(CScriptRun& run, std::string_view pattern, bool fAnchors) noexcept
    try {
    if (run.m_Pattern && run.m_fPatternAnchors == fAnchors && run.m_strPattern == pattern)
        return &*run.m_Pattern;
    run.m_Pattern.reset();
    run.m_Pattern.emplace(pattern, fAnchors);
    run.m_strPattern = pattern;
    run.m_fPatternAnchors = fAnchors;
    return &*run.m_Pattern;
} catch (std::invalid_argument const& malformed) {
    run.m_Pattern.reset();
    run.m_strError = malformed.what();
    return nullptr;
} catch (std::exception const&) {
    run.m_Pattern.reset();
    run.m_strError.clear();
    return nullptr;
}

bool Found(lua_State* pState, SearchResult result) {
    if (result == SearchResult::Found) return true;
    if (result == SearchResult::TooComplex) RaiseScriptError(pState, "pattern too complex");
    CheckScriptTime(pState);
    return false;
}

bool Search(lua_State* pState, std::string_view text, std::string_view pattern, std::size_t nFrom,
            std::size_t nNotEnd, bool fAnchors, CMatch& match) {
    CScriptRun& run = RunOf(pState);
    CPattern const* pPattern = PreparePattern(run, pattern, fAnchors);
    if (!pPattern) RaiseReason(pState);
    return Found(pState,
                 SearchPattern(*pPattern, text, nFrom, nNotEnd, match, SearchAllowed, &run));
}

int PushCaptures(lua_State* pState, std::string_view text, CMatch const& match) {
    luaL_checkstack(pState, static_cast<int>(CPattern::kMaxCaptures), "too many captures");
    for (std::size_t n = 0; n < match.m_nCaptures; ++n) {
        CMatch::CCapture const& capture = match.m_Captures[n];
        if (capture.m_fPosition)
            lua_pushinteger(pState, static_cast<lua_Integer>(capture.m_nStart) + 1);
        else
            lua_pushlstring(pState, text.data() + capture.m_nStart, capture.m_nLength);
    }
    return static_cast<int>(match.m_nCaptures);
}

/// The offset that an optional start argument means: from 1, negative from the end.
std::size_t StartArgument(lua_State* pState, int nIndex, std::size_t nLength) {
    lua_Integer const nStart = luaL_optinteger(pState, nIndex, 1);
    auto const nSigned = static_cast<lua_Integer>(nLength);
    if (nStart > 0) return static_cast<std::size_t>(nStart) - 1;
    if (nStart == 0 || nStart < -nSigned) return 0;
    return static_cast<std::size_t>(nSigned + nStart);
}

}  // namespace

int ScriptFind(lua_State* pState) {
    CheckScriptTime(pState);
    std::string_view const text = ScriptTextArgument(pState, 1);
    std::string_view const pattern = ScriptTextArgument(pState, 2);
    std::size_t const nFrom = StartArgument(pState, 3, text.size());
    bool const fPlain =
        lua_toboolean(pState, 4) || pattern.find_first_of("^$*+?.([%-") == std::string_view::npos;
    CMatch match;
    bool fFound = false;
    if (nFrom > text.size())
        fFound = false;
    else if (fPlain)
        fFound =
            Found(pState, SearchPlain(pattern, text, nFrom, match, SearchAllowed, &RunOf(pState)));
    else
        fFound = Search(pState, text, pattern, nFrom, text.size() + 1, true, match);
    if (!fFound) {
        lua_pushnil(pState);
        return 1;
    }
    lua_pushinteger(pState, static_cast<lua_Integer>(match.m_nStart) + 1);
    lua_pushinteger(pState, static_cast<lua_Integer>(match.m_nEnd));
    return 2 + PushCaptures(pState, text, match);
}

int ScriptMatch(lua_State* pState) {
    CheckScriptTime(pState);
    std::string_view const text = ScriptTextArgument(pState, 1);
    std::string_view const pattern = ScriptTextArgument(pState, 2);
    std::size_t const nFrom = StartArgument(pState, 3, text.size());
    CMatch match;
    if (nFrom > text.size() ||
        !Search(pState, text, pattern, nFrom, text.size() + 1, true, match)) {
        lua_pushnil(pState);
        return 1;
    }
    if (match.m_nCaptures > 0) return PushCaptures(pState, text, match);
    lua_pushlstring(pState, text.data() + match.m_nStart, match.m_nEnd - match.m_nStart);
    return 1;
}

int ScriptScan(lua_State* pState) {
    CheckScriptTime(pState);
    std::string_view const text = ScriptTextArgument(pState, 1);
    std::string_view const pattern = ScriptTextArgument(pState, 2);
    auto const nFrom = static_cast<std::size_t>(luaL_checkinteger(pState, 3)) - 1;
    auto const nNotEnd = static_cast<std::size_t>(luaL_checkinteger(pState, 4)) - 1;
    CMatch match;
    if (nFrom > text.size() ||
        !Search(pState, text, pattern, nFrom, nNotEnd, lua_toboolean(pState, 5) != 0, match))
        return 0;
    lua_pushinteger(pState, static_cast<lua_Integer>(match.m_nStart) + 1);
    lua_pushinteger(pState, static_cast<lua_Integer>(match.m_nEnd) + 1);
    return 2 + PushCaptures(pState, text, match);
}

int ScriptRepeat(lua_State* pState) {
    CheckScriptTime(pState);
    std::string_view const text = ScriptTextArgument(pState, 1);
    lua_Integer const nCount = luaL_checkinteger(pState, 2);
    std::string_view const separator =
        lua_isnoneornil(pState, 3) ? std::string_view() : ScriptTextArgument(pState, 3);
    std::size_t const nStep = text.size() + separator.size();
    if (nCount <= 0 || nStep == 0) {
        lua_pushliteral(pState, "");
        return 1;
    }
    std::size_t const nLimit = RunOf(pState).m_Limits.m_nMemoryBytes;
    if (static_cast<std::size_t>(nCount) > nLimit / nStep)
        RaiseScriptError(pState, "resulting string too large");
    std::size_t const nLength = static_cast<std::size_t>(nCount) * nStep - separator.size();
    luaL_Buffer buffer;
    char* pOut = luaL_buffinitsize(pState, &buffer, nLength);
    for (lua_Integer n = 0; n < nCount; ++n) {
        pOut = std::copy(text.begin(), text.end(), pOut);
        if (n + 1 < nCount) pOut = std::copy(separator.begin(), separator.end(), pOut);
    }
    luaL_pushresultsize(&buffer, nLength);
    return 1;
}
