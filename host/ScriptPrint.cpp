#include <exception>
#include <lua.hpp>
#include <string_view>

#include "host/ScriptFunctions.h"
#include "host/ScriptRun.h"

namespace {

bool AppendPrinted(CScriptRun& run, std::string_view text) noexcept try {
    if (text.size() > run.m_Limits.m_nReplyBytes - run.m_strPrinted.size()) return false;
    run.m_strPrinted += text;
    return true;
} catch (std::exception const&) {
    return false;
}

void Print(lua_State* pState, std::string_view text) {
    if (AppendPrinted(RunOf(pState), text)) return;
    RaiseScriptError(pState, "the script printed more than a reply can hold");
}

}  // namespace

int ScriptPrint(lua_State* pState) {
    int const nCount = lua_gettop(pState);
    for (int n = 1; n <= nCount; ++n) {
        std::size_t nLength = 0;
        char const* pText = luaL_tolstring(pState, n, &nLength);
        if (n > 1) Print(pState, "\t");
        Print(pState, {pText, nLength});
        lua_pop(pState, 1);
    }
    Print(pState, "\n");
    return 0;
}
