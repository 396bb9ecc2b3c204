#include <exception>
#include <lua.hpp>
#include <new>
#include <string>

#include "host/HostFunctions.h"
#include "host/HostValue.h"
#include "host/ScriptFunctions.h"
#include "host/ScriptRun.h"

namespace {

constexpr int kMaxArguments = 32;
constexpr int kMaxTableDepth = 4;
constexpr std::size_t kMaxCopiedValues = 4096;
constexpr std::size_t kMaxCopiedText = std::size_t{64} << 10;

/// Copies the arguments of a call out of the interpreter. Uses only calls that raise no error.
class CArgumentCopy {
public:
    explicit CArgumentCopy(lua_State* pState) : m_pState(pState) {}

    CHostValue Value(int nIndex, int nDepth) {
        if (++m_nCopied > kMaxCopiedValues) throw CHostFunctionError("too many values in one call");
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
        if (nLength > kMaxCopiedText) throw CHostFunctionError("a text is too long for the host");
        return {pText, nLength};
    }

    CHostTable Table(int nIndex, int nDepth) {
        if (nDepth >= kMaxTableDepth || !lua_checkstack(m_pState, 4))
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
            if (++m_nCopied > kMaxCopiedValues)
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
    CScriptClock::CPause const pause(run.m_Clock);
    if (pause.IsTooLate()) throw CScriptTimeOver();
    run.m_Arguments.clear();
    run.m_Result = {};
    int const nCount = lua_gettop(pState);
    if (nCount > kMaxArguments) throw CHostFunctionError("too many arguments for the host");
    CArgumentCopy copy(pState);
    for (int n = 1; n <= nCount; ++n) run.m_Arguments.push_back(copy.Value(n, 0));
    run.m_Context.m_Work.Begin(function.pszName);
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

}  // namespace

int ScriptCallHost(lua_State* pState) {
    CScriptRun& run = RunOf(pState);
    auto const* pFunction =
        static_cast<CHostFunction const*>(lua_touserdata(pState, lua_upvalueindex(1)));
    if (!CallHost(pState, run, *pFunction)) {
        CheckScriptTime(pState);
        RaiseReason(pState);
    }
    return PushResult(pState, run.m_Result);
}
