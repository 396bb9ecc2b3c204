#include "host/ScriptWorld.h"

#include <algorithm>
#include <iterator>
#include <lua.hpp>
#include <new>
#include <span>
#include <string_view>

#include "host/HostFunctions.h"
#include "host/ScriptFunctions.h"
#include "host/ScriptRun.h"

namespace {

using CNames = std::span<char const* const>;

// Everything else that the libraries have is taken out again. Missing here is what reaches files
// (dofile, loadfile), compiles code, bytecode too (load), or has to do with the interpreter itself
// (collectgarbage, warn); io, os, package, debug and coroutine are never opened.
constexpr char const* kBase[] = {
    "_G",           "_VERSION", "assert", "error",    "getmetatable", "ipairs", "math",   "next",
    "pairs",        "pcall",    "print",  "rawequal", "rawget",       "rawlen", "rawset", "select",
    "setmetatable", "string",   "table",  "tonumber", "tostring",     "type",   "xpcall"};
constexpr char const* kString[] = {"byte",    "char",  "find",   "format", "gmatch",   "gsub",
                                   "len",     "lower", "match",  "pack",   "packsize", "rep",
                                   "reverse", "sub",   "unpack", "upper"};
constexpr char const* kTable[] = {"concat", "insert", "move", "pack", "remove", "sort", "unpack"};
constexpr char const* kMath[] = {
    "abs",  "acos",   "asin",       "atan", "ceil",       "cos", "deg",        "exp",  "floor",
    "fmod", "huge",   "log",        "max",  "maxinteger", "min", "mininteger", "modf", "pi",
    "rad",  "random", "randomseed", "sin",  "sqrt",       "tan", "tointeger",  "type", "ult"};

struct CLibrary {
    char const* pszName;
    lua_CFunction pOpen;
    CNames allowed;
};

constexpr CLibrary kLibraries[] = {{LUA_STRLIBNAME, luaopen_string, kString},
                                   {LUA_TABLIBNAME, luaopen_table, kTable},
                                   {LUA_MATHLIBNAME, luaopen_math, kMath},
                                   {LUA_GNAME, luaopen_base, kBase}};

/// Empties the table on top of the stack of whatever is not named.
void KeepOnly(lua_State* pState, CNames names) {
    lua_pushnil(pState);
    while (lua_next(pState, -2)) {
        lua_pop(pState, 1);
        std::string_view const name = lua_tostring(pState, -1);
        if (std::find(names.begin(), names.end(), name) != names.end()) continue;
        lua_pushvalue(pState, -1);
        lua_pushnil(pState);
        lua_rawset(pState, -4);
    }
}

void AddOwnFunctions(lua_State* pState) {
    lua_register(pState, "print", ScriptPrint);
    lua_register(pState, "setmetatable", ScriptSetMetatable);
    lua_register(pState, "xpcall", ScriptProtectedCall);
    for (CHostFunction const& function : HostFunctions()) {
        lua_pushlightuserdata(pState, const_cast<CHostFunction*>(&function));
        lua_pushcclosure(pState, ScriptCallHost, 1);
        lua_setglobal(pState, function.pszName);
    }
}

/// All texts share one metatable; it cannot be had.
void ProtectTexts(lua_State* pState) {
    lua_pushliteral(pState, "");
    lua_getmetatable(pState, -1);
    lua_pushliteral(pState, "protected");
    lua_setfield(pState, -2, "__metatable");
    lua_pop(pState, 2);
}

int BuildWorld(lua_State* pState) {
    for (CLibrary const& library : kLibraries) {
        luaL_requiref(pState, library.pszName, library.pOpen, 1);
        KeepOnly(pState, library.allowed);
        lua_pop(pState, 1);
    }
    AddOwnFunctions(pState);
    ProtectTexts(pState);
    lua_gc(pState, LUA_GCCOLLECT);
    return 0;
}

int SeedRandomNumbers(lua_State* pState) {
    lua_getglobal(pState, LUA_MATHLIBNAME);
    lua_getfield(pState, -1, "randomseed");
    lua_pushinteger(pState, lua_tointeger(pState, 1));
    lua_call(pState, 1, 0);
    return 0;
}

}  // namespace

CScriptWorld::CScriptWorld() : m_pState(lua_newstate(CScriptMemory::Allocate, &m_Memory)) {
    if (!m_pState) throw std::bad_alloc();
    lua_pushcfunction(m_pState, BuildWorld);
    if (lua_pcall(m_pState, 0, 0, 0) != LUA_OK) throw std::bad_alloc();
    m_Memory.Keep();
}

lua_State* CScriptWorld::Enter(CScriptRun& run, std::size_t nMemoryBytes, std::size_t nChance) {
    m_Memory.SetLimit(nMemoryBytes);
    SetRun(m_pState, run);
    lua_pushcfunction(m_pState, SeedRandomNumbers);
    lua_pushinteger(m_pState, static_cast<lua_Integer>(nChance));
    lua_pcall(m_pState, 1, 0, 0);
    return m_pState;
}
