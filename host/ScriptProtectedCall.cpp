#include <lua.hpp>

#include "host/ScriptFunctions.h"

int ScriptProtectedCall(lua_State* pState) {
    luaL_checktype(pState, 2, LUA_TFUNCTION);
    lua_pushvalue(pState, 1);
    lua_copy(pState, 2, 1);
    lua_replace(pState, 2);
    // Now the handler lies below the function and its arguments.
    if (lua_pcall(pState, lua_gettop(pState) - 2, LUA_MULTRET, 0) == LUA_OK) {
        lua_pushboolean(pState, 1);
        lua_replace(pState, 1);
    } else {
        lua_pcall(pState, 1, LUA_MULTRET, 0);
        lua_pushboolean(pState, 0);
        lua_insert(pState, 1);
    }
    return lua_gettop(pState);
}
