#include "host/ScriptSandbox.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <lua.hpp>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

#include "host/ScriptPrelude.h"
#include "host/ScriptRun.h"
#include "platform/Assertion.h"

// Every function here is called by the interpreter: nothing with a destructor may live on its
// stack when it raises an error (see CScriptRun).

namespace {

constexpr int c_nMaxArguments = 32;
constexpr int c_nMaxTableDepth = 4;
constexpr std::size_t c_nMaxCopiedValues = 4096;
constexpr std::size_t c_nMaxCopiedText = std::size_t{64} << 10;
constexpr lua_Integer c_nMaxUnpacked = 100000;
constexpr lua_Integer c_nElementsPerCheck = 4096;

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

/// Raises the reason that a helper left in the run; one without memory for a text left none.
[[noreturn]] void RaiseReason(lua_State* pState, CScriptRun const& run) {
    RaiseScriptError(pState, run.m_strError.empty() ? "not enough memory" : run.m_strError.c_str());
}

// --- print

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

int PrintArguments(lua_State* pState) {
    CheckScriptTime(pState);
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

// --- setmetatable

enum class MetaValue { Any, Function, FunctionOrTable };

struct CMetaField {
    std::string_view name;
    MetaValue allowed;
};

/// What a metatable may hold. `__gc` runs where no limit reaches; tables with `__mode` can take the
/// collector hours; a `__call` that is no function can chain for ever.
constexpr CMetaField c_MetaFields[] = {
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
    for (CMetaField const& field : c_MetaFields) {
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

int SetMetatable(lua_State* pState) {
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

// --- text

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

std::string_view TextArgument(lua_State* pState, int nIndex) {
    std::size_t nLength = 0;
    char const* pText = luaL_checklstring(pState, nIndex, &nLength);
    return {pText, nLength};
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
    if (!pPattern) RaiseReason(pState, run);
    return Found(pState,
                 SearchPattern(*pPattern, text, nFrom, nNotEnd, match, SearchAllowed, &run));
}

int PushCaptures(lua_State* pState, std::string_view text, CMatch const& match) {
    luaL_checkstack(pState, static_cast<int>(CPattern::c_nMaxCaptures), "too many captures");
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

int Find(lua_State* pState) {
    CheckScriptTime(pState);
    std::string_view const text = TextArgument(pState, 1);
    std::string_view const pattern = TextArgument(pState, 2);
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

int Match(lua_State* pState) {
    CheckScriptTime(pState);
    std::string_view const text = TextArgument(pState, 1);
    std::string_view const pattern = TextArgument(pState, 2);
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

/// scan(text, pattern, from, last, anchors): the next match at `from` or later that does not end
/// just before `last`. Returns its first place, the place behind it and its captures, or nothing.
int Scan(lua_State* pState) {
    CheckScriptTime(pState);
    std::string_view const text = TextArgument(pState, 1);
    std::string_view const pattern = TextArgument(pState, 2);
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

int Repeat(lua_State* pState) {
    CheckScriptTime(pState);
    std::string_view const text = TextArgument(pState, 1);
    lua_Integer const nCount = luaL_checkinteger(pState, 2);
    std::string_view const separator =
        lua_isnoneornil(pState, 3) ? std::string_view() : TextArgument(pState, 3);
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

// --- tables

int Concatenate(lua_State* pState) {
    CheckScriptTime(pState);
    luaL_checktype(pState, 1, LUA_TTABLE);
    std::string_view const separator =
        lua_isnoneornil(pState, 2) ? std::string_view() : TextArgument(pState, 2);
    lua_Integer const nFirst = luaL_optinteger(pState, 3, 1);
    lua_Integer const nLast =
        luaL_optinteger(pState, 4, static_cast<lua_Integer>(lua_rawlen(pState, 1)));
    luaL_Buffer buffer;
    luaL_buffinit(pState, &buffer);
    for (lua_Integer n = nFirst; n <= nLast; ++n) {
        if (n % c_nElementsPerCheck == 0) CheckScriptTime(pState);
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

int Unpack(lua_State* pState) {
    CheckScriptTime(pState);
    luaL_checktype(pState, 1, LUA_TTABLE);
    lua_Integer const nFirst = luaL_optinteger(pState, 2, 1);
    lua_Integer const nLast =
        luaL_optinteger(pState, 3, static_cast<lua_Integer>(lua_rawlen(pState, 1)));
    if (nFirst > nLast) return 0;
    auto const nCount = static_cast<lua_Unsigned>(nLast) - static_cast<lua_Unsigned>(nFirst) + 1;
    if (nCount == 0 || nCount > static_cast<lua_Unsigned>(c_nMaxUnpacked) ||
        !lua_checkstack(pState, static_cast<int>(nCount)))
        RaiseScriptError(pState, "too many results to unpack");
    for (lua_Unsigned n = 0; n < nCount; ++n)
        lua_rawgeti(pState, 1, nFirst + static_cast<lua_Integer>(n));
    return static_cast<int>(nCount);
}

// --- host functions

/// Copies the arguments of a call out of the interpreter. Uses only calls that raise no error.
class CArgumentCopy {
public:
    explicit CArgumentCopy(lua_State* pState) : m_pState(pState) {}

    CHostValue Value(int nIndex, int nDepth) {
        if (++m_nCopied > c_nMaxCopiedValues)
            throw CHostFunctionError("too many values in one call");
        switch (lua_type(m_pState, nIndex)) {
            case LUA_TNIL:
                return {};
            case LUA_TBOOLEAN:
                return lua_toboolean(m_pState, nIndex) != 0;
            case LUA_TNUMBER:
                if (lua_isinteger(m_pState, nIndex))
                    return static_cast<std::int64_t>(lua_tointeger(m_pState, nIndex));
                return static_cast<double>(lua_tonumber(m_pState, nIndex));
            case LUA_TSTRING:
                return Text(nIndex);
            case LUA_TTABLE:
                return Table(nIndex, nDepth);
            default:
                throw CHostFunctionError("a function cannot be handed to the host");
        }
    }

private:
    std::string Text(int nIndex) const {
        std::size_t nLength = 0;
        char const* pText = lua_tolstring(m_pState, nIndex, &nLength);
        if (nLength > c_nMaxCopiedText) throw CHostFunctionError("a text is too long for the host");
        return {pText, nLength};
    }

    CHostTable Table(int nIndex, int nDepth) {
        if (nDepth >= c_nMaxTableDepth || !lua_checkstack(m_pState, 4))
            throw CHostFunctionError("tables are nested too deeply for the host");
        CHostTable table;
        auto const nLength = static_cast<lua_Integer>(lua_rawlen(m_pState, nIndex));
        for (lua_Integer n = 1; n <= nLength; ++n) {
            lua_rawgeti(m_pState, nIndex, n);
            table.m_List.push_back(Value(lua_gettop(m_pState), nDepth + 1));
            lua_pop(m_pState, 1);
        }
        lua_pushnil(m_pState);
        while (lua_next(m_pState, nIndex)) {
            if (++m_nCopied > c_nMaxCopiedValues)
                throw CHostFunctionError("too many values in one call");
            int const nTop = lua_gettop(m_pState);
            if (lua_type(m_pState, nTop - 1) == LUA_TSTRING)
                table.m_Fields[Text(nTop - 1)] = Value(nTop, nDepth + 1);
            lua_pop(m_pState, 1);
        }
        return table;
    }

    lua_State* m_pState;
    std::size_t m_nCopied = 0;
};

/// Calls a host function; false leaves the reason in the run.
bool CallHost(lua_State* pState, CScriptRun& run, CHostFunction const& function) noexcept try {
    run.m_Arguments.clear();
    run.m_Result = {};
    int const nCount = lua_gettop(pState);
    if (nCount > c_nMaxArguments) throw CHostFunctionError("too many arguments for the host");
    CArgumentCopy copy(pState);
    for (int n = 1; n <= nCount; ++n) run.m_Arguments.push_back(copy.Value(n, 0));
    run.m_Result = function.pFunction(run.m_Context, {function.pszName, run.m_Arguments});
    return true;
} catch (CScriptTimeOver const&) {
    run.m_strError = "the time is over";
    return false;
} catch (std::bad_alloc const&) {
    run.m_strError.clear();
    return false;
} catch (std::exception const& error) {
    run.m_strError = error.what();
    return false;
}

int PushResult(lua_State* pState, CHostValue const& result) {
    if (auto const* pTruth = std::get_if<bool>(&result))
        lua_pushboolean(pState, *pTruth);
    else if (auto const* pInteger = std::get_if<std::int64_t>(&result))
        lua_pushinteger(pState, *pInteger);
    else if (auto const* pNumber = std::get_if<double>(&result))
        lua_pushnumber(pState, *pNumber);
    else if (auto const* pText = std::get_if<std::string>(&result))
        lua_pushlstring(pState, pText->data(), pText->size());
    else
        return 0;
    return 1;
}

int CallHostFunction(lua_State* pState) {
    CheckScriptTime(pState);
    CScriptRun& run = RunOf(pState);
    auto const* pFunction =
        static_cast<CHostFunction const*>(lua_touserdata(pState, lua_upvalueindex(1)));
    bool const fDone = CallHost(pState, run, *pFunction);
    CheckScriptTime(pState);
    if (!fDone) RaiseReason(pState, run);
    return PushResult(pState, run.m_Result);
}

// --- the world of a script

constexpr char const* c_BaseFunctions[] = {"assert", "error",    "getmetatable", "ipairs", "next",
                                           "pairs",  "rawequal", "rawget",       "rawlen", "rawset",
                                           "select", "tonumber", "tostring",     "type"};
constexpr char const* c_StringFunctions[] = {"byte",  "char",   "format",   "len",
                                             "lower", "pack",   "packsize", "reverse",
                                             "sub",   "unpack", "upper"};
constexpr char const* c_MathFunctions[] = {
    "abs",        "acos", "asin", "atan", "ceil",      "cos",  "deg", "exp",
    "floor",      "fmod", "log",  "max",  "min",       "modf", "rad", "random",
    "randomseed", "sin",  "sqrt", "tan",  "tointeger", "type", "ult"};
constexpr char const* c_MathValues[] = {"pi", "huge", "maxinteger", "mininteger"};
constexpr char const* c_NativeBase[] = {"pcall", "select", "tonumber", "tostring", "type"};

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

void SetFunction(lua_State* pState, int nTarget, char const* pszName, lua_CFunction pFunction) {
    lua_pushcfunction(pState, pFunction);
    lua_setfield(pState, nTarget, pszName);
}

int AppendBytes(lua_State*, void const* pBytes, std::size_t nCount, void* pTarget) noexcept try {
    static_cast<std::string*>(pTarget)->append(static_cast<char const*>(pBytes), nCount);
    return 0;
} catch (std::exception const&) {
    return 1;
}

/// The prelude, compiled once for the process; empty when there was no memory for it.
std::string const& CompiledPrelude() {
    static std::string const c_strCode = [] {
        std::string strCode;
        std::unique_ptr<lua_State, decltype(&lua_close)> const compiler(luaL_newstate(),
                                                                        &lua_close);
        bool const fLoaded =
            compiler && luaL_loadbufferx(compiler.get(), c_ScriptPrelude.data(),
                                         c_ScriptPrelude.size(), "=prelude", "t") == LUA_OK;
        if (!fLoaded || lua_dump(compiler.get(), AppendBytes, &strCode, 1) != 0) strCode.clear();
        return strCode;
    }();
    return c_strCode;
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

}  // namespace

void BuildSandbox(lua_State* pState) {
    luaL_checkstack(pState, 20, nullptr);
    luaL_requiref(pState, LUA_GNAME, luaopen_base, 0);
    int const nBaseLibrary = lua_gettop(pState);
    luaL_requiref(pState, LUA_STRLIBNAME, luaopen_string, 0);
    luaL_requiref(pState, LUA_MATHLIBNAME, luaopen_math, 0);

    lua_newtable(pState);
    int const nGlobals = lua_gettop(pState);
    lua_newtable(pState);
    int const nString = nGlobals + 1;
    lua_newtable(pState);
    int const nTable = nGlobals + 2;
    lua_newtable(pState);
    int const nMath = nGlobals + 3;
    lua_newtable(pState);
    int const nNative = nGlobals + 4;

    CopyGuarded(pState, nBaseLibrary, nGlobals, c_BaseFunctions);
    CopyGuarded(pState, nBaseLibrary + 1, nString, c_StringFunctions);
    CopyPlain(pState, nBaseLibrary + 2, nMath, c_MathFunctions);
    CopyPlain(pState, nBaseLibrary + 2, nMath, c_MathValues);
    CopyPlain(pState, nBaseLibrary, nNative, c_NativeBase);

    SetFunction(pState, nGlobals, "print", PrintArguments);
    SetFunction(pState, nGlobals, "setmetatable", SetMetatable);
    SetFunction(pState, nString, "find", Find);
    SetFunction(pState, nString, "match", Match);
    SetFunction(pState, nString, "rep", Repeat);
    SetFunction(pState, nTable, "concat", Concatenate);
    SetFunction(pState, nTable, "unpack", Unpack);
    SetFunction(pState, nNative, "check", Check);
    SetFunction(pState, nNative, "raise", Raise);
    SetFunction(pState, nNative, "scan", Scan);
    SetFunction(pState, nNative, "find", Find);
    SetFunction(pState, nNative, "concat", Concatenate);
    constexpr char const* c_SubOnly[] = {"sub"};
    constexpr char const* c_IntegerValues[] = {"tointeger", "maxinteger"};
    CopyPlain(pState, nBaseLibrary + 1, nNative, c_SubOnly);
    CopyPlain(pState, nBaseLibrary + 2, nNative, c_IntegerValues);

    for (CHostFunction const& function : HostFunctions()) {
        lua_pushlightuserdata(pState, const_cast<CHostFunction*>(&function));
        lua_pushcclosure(pState, CallHostFunction, 1);
        lua_setfield(pState, nGlobals, function.pszName);
    }

    ProtectTexts(pState, nString);
    lua_pushvalue(pState, nGlobals);
    lua_setfield(pState, nGlobals, LUA_GNAME);
    lua_pushliteral(pState, LUA_VERSION);
    lua_setfield(pState, nGlobals, "_VERSION");
    for (auto [nIndex, pszName] :
         {std::pair{nString, "string"}, {nTable, "table"}, {nMath, "math"}}) {
        lua_pushvalue(pState, nIndex);
        lua_setfield(pState, nGlobals, pszName);
    }

    std::string const& strPrelude = CompiledPrelude();
    if (luaL_loadbufferx(pState, strPrelude.data(), strPrelude.size(), "=prelude", "b") != LUA_OK)
        lua_error(pState);
    lua_pushvalue(pState, nGlobals);
    lua_pushvalue(pState, nNative);
    lua_call(pState, 2, 0);

    lua_pushvalue(pState, nGlobals);
    lua_rawseti(pState, LUA_REGISTRYINDEX, LUA_RIDX_GLOBALS);
    lua_settop(pState, 0);
}
