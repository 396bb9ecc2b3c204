#include <lua.hpp>

#include "host/ScriptFunctions.h"
#include "host/ScriptRun.h"

int ScriptSetMetatable(lua_State* pState) {
    luaL_checktype(pState, 1, LUA_TTABLE);
    int const nType = lua_type(pState, 2);
    luaL_argexpected(pState, nType == LUA_TNIL || nType == LUA_TTABLE, 2, "nil or table");
    if (luaL_getmetafield(pState, 1, "__metatable") != LUA_TNIL)
        RaiseScriptError(pState, "cannot change a protected metatable");
    lua_settop(pState, 2);
    if (nType == LUA_TTABLE) {
        lua_pushliteral(pState, "__gc");
        if (lua_rawget(pState, 2) != LUA_TNIL)
            RaiseScriptError(pState, "'__gc' is not available to scripts");
        lua_pop(pState, 1);
    }
    lua_setmetatable(pState, 1);
    return 1;
}
