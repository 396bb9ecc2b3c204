#include <lua.hpp>
#include <string_view>

#include "host/ScriptFunctions.h"
#include "host/ScriptRun.h"

namespace {

constexpr lua_Integer kMaxUnpacked = 100000;
constexpr lua_Integer kElementsPerCheck = 4096;

enum class MetaValue { Any, Function, FunctionOrTable };

struct CMetaField {
    std::string_view name;
    MetaValue allowed;
};

/// What a metatable may hold. `__gc` runs where no limit reaches; tables with `__mode` can take the
/// collector hours; a `__call` that is no function can chain for ever.
constexpr CMetaField kMetaFields[] = {
    {"__index", MetaValue::FunctionOrTable},
    {"__newindex", MetaValue::FunctionOrTable},
    {"__call", MetaValue::Function},
    {"__tostring", MetaValue::Function},
    {"__name", MetaValue::Any},
    {"__metatable", MetaValue::Any},
    {"__pairs", MetaValue::Function},
    {"__len", MetaValue::Function},
    {"__eq", MetaValue::Function},
    {"__lt", MetaValue::Function},
    {"__le", MetaValue::Function},
    {"__concat", MetaValue::Function},
    {"__unm", MetaValue::Function},
    {"__add", MetaValue::Function},
    {"__sub", MetaValue::Function},
    {"__mul", MetaValue::Function},
    {"__div", MetaValue::Function},
    {"__mod", MetaValue::Function},
    {"__pow", MetaValue::Function},
    {"__idiv", MetaValue::Function},
    {"__band", MetaValue::Function},
    {"__bor", MetaValue::Function},
    {"__bxor", MetaValue::Function},
    {"__bnot", MetaValue::Function},
    {"__shl", MetaValue::Function},
    {"__shr", MetaValue::Function},
};

bool AllowedMetaField(std::string_view name, int nType) {
    for (CMetaField const& field : kMetaFields) {
        if (field.name != name) continue;
        if (field.allowed == MetaValue::Any || nType == LUA_TFUNCTION) return true;
        return field.allowed == MetaValue::FunctionOrTable && nType == LUA_TTABLE;
    }
    return false;
}

/// Pushes a copy of what the interpreter may see of the metatable at index 2. The copy keeps the
/// script's own table for `getmetatable`, and marks with its first element one that is protected.
void PushCheckedMetatable(lua_State* pState) {
    lua_createtable(pState, 1, 4);
    int const nCopy = lua_gettop(pState);
    lua_pushnil(pState);
    while (lua_next(pState, 2)) {
        std::size_t nLength = 0;
        char const* pName =
            lua_type(pState, -2) == LUA_TSTRING ? lua_tolstring(pState, -2, &nLength) : nullptr;
        std::string_view const name{pName ? pName : "", nLength};
        if (name.starts_with("__")) {
            if (!AllowedMetaField(name, lua_type(pState, -1)))
                RaiseScriptError(pState, lua_pushfstring(pState,
                                                         "'%s' with this value is not "
                                                         "available to scripts",
                                                         pName));
            lua_pushvalue(pState, -2);
            lua_pushvalue(pState, -2);
            lua_rawset(pState, nCopy);
        }
        lua_pop(pState, 1);
    }
    lua_pushliteral(pState, "__metatable");
    bool const fProtected = lua_rawget(pState, nCopy) != LUA_TNIL;
    lua_pop(pState, 1);
    lua_pushboolean(pState, fProtected);
    lua_rawseti(pState, nCopy, 1);
    if (fProtected) return;
    lua_pushliteral(pState, "__metatable");
    lua_pushvalue(pState, 2);
    lua_rawset(pState, nCopy);
}

}  // namespace

int ScriptSetMetatable(lua_State* pState) {
    CheckScriptTime(pState);
    luaL_checktype(pState, 1, LUA_TTABLE);
    int const nType = lua_type(pState, 2);
    luaL_argexpected(pState, nType == LUA_TNIL || nType == LUA_TTABLE, 2, "nil or table");
    if (lua_getmetatable(pState, 1)) {
        lua_rawgeti(pState, -1, 1);
        if (lua_toboolean(pState, -1))
            RaiseScriptError(pState, "cannot change a protected metatable");
        lua_pop(pState, 2);
    }
    lua_settop(pState, 2);
    if (nType == LUA_TTABLE)
        PushCheckedMetatable(pState);
    else
        lua_pushnil(pState);
    lua_setmetatable(pState, 1);
    lua_settop(pState, 1);
    return 1;
}

int ScriptConcatenate(lua_State* pState) {
    CheckScriptTime(pState);
    luaL_checktype(pState, 1, LUA_TTABLE);
    std::string_view const separator =
        lua_isnoneornil(pState, 2) ? std::string_view() : ScriptTextArgument(pState, 2);
    lua_Integer const nFirst = luaL_optinteger(pState, 3, 1);
    lua_Integer const nLast =
        luaL_optinteger(pState, 4, static_cast<lua_Integer>(lua_rawlen(pState, 1)));
    luaL_Buffer buffer;
    luaL_buffinit(pState, &buffer);
    for (lua_Integer n = nFirst; n <= nLast; ++n) {
        if (n % kElementsPerCheck == 0) CheckScriptTime(pState);
        int const nType = lua_rawgeti(pState, 1, n);
        if (nType != LUA_TSTRING && nType != LUA_TNUMBER)
            RaiseScriptError(pState, lua_pushfstring(pState,
                                                     "invalid value (at index %I) in table for "
                                                     "'concat'",
                                                     static_cast<LUAI_UACINT>(n)));
        luaL_addvalue(&buffer);
        if (n == nLast) break;
        luaL_addlstring(&buffer, separator.data(), separator.size());
    }
    luaL_pushresult(&buffer);
    return 1;
}

int ScriptUnpack(lua_State* pState) {
    CheckScriptTime(pState);
    luaL_checktype(pState, 1, LUA_TTABLE);
    lua_Integer const nFirst = luaL_optinteger(pState, 2, 1);
    lua_Integer const nLast =
        luaL_optinteger(pState, 3, static_cast<lua_Integer>(lua_rawlen(pState, 1)));
    if (nFirst > nLast) return 0;
    auto const nCount = static_cast<lua_Unsigned>(nLast) - static_cast<lua_Unsigned>(nFirst) + 1;
    if (nCount == 0 || nCount > static_cast<lua_Unsigned>(kMaxUnpacked) ||
        !lua_checkstack(pState, static_cast<int>(nCount)))
        RaiseScriptError(pState, "too many results to unpack");
    for (lua_Unsigned n = 0; n < nCount; ++n)
        lua_rawgeti(pState, 1, nFirst + static_cast<lua_Integer>(n));
    return static_cast<int>(nCount);
}
