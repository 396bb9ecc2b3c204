#include "host/ScriptSandbox.h"

#include <exception>
#include <lua.hpp>
#include <memory>
#include <string>
#include <utility>

#include "host/HostFunctions.h"
#include "host/ScriptFunctions.h"
#include "host/ScriptPrelude.h"
#include "host/ScriptRun.h"
#include "platform/Assertion.h"

namespace {

/// Calls a function of the standard library, time permitting.
int CallGuarded(lua_State* pState) {
    CheckScriptTime(pState);
    return lua_tocfunction(pState, lua_upvalueindex(1))(pState);
}

int Check(lua_State* pState) {
    CheckScriptTime(pState);
    return 0;
}

int Raise(lua_State* pState) {
    RaiseScriptError(pState, luaL_checkstring(pState, 1));
}

constexpr char const* kBaseFunctions[] = {"assert", "error",    "getmetatable", "ipairs", "next",
                                          "pairs",  "rawequal", "rawget",       "rawlen", "rawset",
                                          "select", "tonumber", "tostring",     "type"};
constexpr char const* kStringFunctions[] = {"byte",  "char",   "format",   "len",
                                            "lower", "pack",   "packsize", "reverse",
                                            "sub",   "unpack", "upper"};
constexpr char const* kMathFunctions[] = {
    "abs",        "acos", "asin", "atan", "ceil",      "cos",  "deg", "exp",
    "floor",      "fmod", "log",  "max",  "min",       "modf", "rad", "random",
    "randomseed", "sin",  "sqrt", "tan",  "tointeger", "type", "ult"};
constexpr char const* kMathValues[] = {"pi", "huge", "maxinteger", "mininteger"};
constexpr char const* kNativeBase[] = {"pcall", "select", "tonumber", "tostring", "type"};
constexpr char const* kNativeString[] = {"sub"};
constexpr char const* kNativeMath[] = {"tointeger", "maxinteger"};

/// For each name: target[name] = a guarded form of library[name]. Both are absolute indices. The
/// function must have no values of its own, for it is called without them.
template <std::size_t N>
void CopyGuarded(lua_State* pState, int nLibrary, int nTarget, char const* const (&names)[N]) {
    for (char const* pszName : names) {
        lua_getfield(pState, nLibrary, pszName);
        TAVARIN_REQUIRE(lua_iscfunction(pState, -1) && !lua_getupvalue(pState, -1, 1));
        lua_pushcclosure(pState, CallGuarded, 1);
        lua_setfield(pState, nTarget, pszName);
    }
}

template <std::size_t N>
void CopyPlain(lua_State* pState, int nLibrary, int nTarget, char const* const (&names)[N]) {
    for (char const* pszName : names) {
        lua_getfield(pState, nLibrary, pszName);
        lua_setfield(pState, nTarget, pszName);
    }
}

int AppendBytes(lua_State*, void const* pBytes, std::size_t nCount, void* pTarget) noexcept try {
    static_cast<std::string*>(pTarget)->append(static_cast<char const*>(pBytes), nCount);
    return 0;
} catch (std::exception const&) {
    return 1;
}

/// The prelude, compiled once for the process; empty when there was no memory for it.
std::string const& CompiledPrelude() {
    static std::string const kCode = [] {
        std::string strCode;
        std::unique_ptr<lua_State, decltype(&lua_close)> const compiler(luaL_newstate(),
                                                                        &lua_close);
        bool const fLoaded =
            compiler && luaL_loadbufferx(compiler.get(), kScriptPrelude.data(),
                                         kScriptPrelude.size(), "=prelude", "t") == LUA_OK;
        if (!fLoaded || lua_dump(compiler.get(), AppendBytes, &strCode, 1) != 0) strCode.clear();
        return strCode;
    }();
    return kCode;
}

/// All texts share one metatable; it finds the script's own string table and cannot be had.
void ProtectTexts(lua_State* pState, int nString) {
    lua_pushliteral(pState, "");
    lua_getmetatable(pState, -1);
    lua_pushvalue(pState, nString);
    lua_setfield(pState, -2, "__index");
    lua_pushliteral(pState, "protected");
    lua_setfield(pState, -2, "__metatable");
    lua_pop(pState, 2);
}

/// Where the tables of a world being built lie on the interpreter's stack.
enum Place { BaseLibrary = 1, StringLibrary, MathLibrary, Globals, String, Table, Math, Native };

void OpenPlaces(lua_State* pState) {
    luaL_checkstack(pState, 20, nullptr);
    luaL_requiref(pState, LUA_GNAME, luaopen_base, 0);
    luaL_requiref(pState, LUA_STRLIBNAME, luaopen_string, 0);
    luaL_requiref(pState, LUA_MATHLIBNAME, luaopen_math, 0);
    for (int nPlace = Globals; nPlace <= Native; ++nPlace) lua_newtable(pState);
}

void AddLibraryFunctions(lua_State* pState) {
    CopyGuarded(pState, BaseLibrary, Globals, kBaseFunctions);
    CopyGuarded(pState, StringLibrary, String, kStringFunctions);
    CopyPlain(pState, MathLibrary, Math, kMathFunctions);
    CopyPlain(pState, MathLibrary, Math, kMathValues);
    CopyPlain(pState, BaseLibrary, Native, kNativeBase);
    CopyPlain(pState, StringLibrary, Native, kNativeString);
    CopyPlain(pState, MathLibrary, Native, kNativeMath);
}

void AddOwnFunctions(lua_State* pState) {
    struct COwnFunction {
        Place place;
        char const* pszName;
        lua_CFunction pFunction;
    };
    static constexpr COwnFunction kOwnFunctions[] = {
        {Globals, "print", ScriptPrint}, {Globals, "setmetatable", ScriptSetMetatable},
        {String, "find", ScriptFind},    {String, "match", ScriptMatch},
        {String, "rep", ScriptRepeat},   {Table, "concat", ScriptConcatenate},
        {Table, "unpack", ScriptUnpack}, {Native, "check", Check},
        {Native, "raise", Raise},        {Native, "scan", ScriptScan},
        {Native, "find", ScriptFind},    {Native, "concat", ScriptConcatenate},
    };
    for (COwnFunction const& own : kOwnFunctions) {
        lua_pushcfunction(pState, own.pFunction);
        lua_setfield(pState, own.place, own.pszName);
    }
    for (CHostFunction const& function : HostFunctions()) {
        lua_pushlightuserdata(pState, const_cast<CHostFunction*>(&function));
        lua_pushcclosure(pState, ScriptCallHost, 1);
        lua_setfield(pState, Globals, function.pszName);
    }
}

void NameTables(lua_State* pState) {
    for (auto const& [place, pszName] :
         {std::pair{Globals, LUA_GNAME}, {String, "string"}, {Table, "table"}, {Math, "math"}}) {
        lua_pushvalue(pState, place);
        lua_setfield(pState, Globals, pszName);
    }
    lua_pushliteral(pState, LUA_VERSION);
    lua_setfield(pState, Globals, "_VERSION");
}

void RunPrelude(lua_State* pState) {
    std::string const& strPrelude = CompiledPrelude();
    if (luaL_loadbufferx(pState, strPrelude.data(), strPrelude.size(), "=prelude", "b") != LUA_OK)
        lua_error(pState);
    lua_pushvalue(pState, Globals);
    lua_pushvalue(pState, Native);
    lua_call(pState, 2, 0);
}

}  // namespace

void BuildSandbox(lua_State* pState) {
    lua_settop(pState, 0);
    OpenPlaces(pState);
    AddLibraryFunctions(pState);
    AddOwnFunctions(pState);
    ProtectTexts(pState, String);
    NameTables(pState);
    RunPrelude(pState);
    lua_pushvalue(pState, Globals);
    lua_rawseti(pState, LUA_REGISTRYINDEX, LUA_RIDX_GLOBALS);
    lua_settop(pState, 0);
}
