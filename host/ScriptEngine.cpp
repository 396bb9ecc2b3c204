#include "host/ScriptEngine.h"

#include <algorithm>
#include <lua.hpp>
#include <memory>
#include <string_view>

#include "host/ScriptRun.h"
#include "host/ScriptSandbox.h"
#include "platform/ThreadLocale.h"

namespace {

constexpr std::size_t kMaxErrorBytes = 8192;
std::string const kPrefix = std::string(kChunkName + 1) + ": ";

using CInterpreter = std::unique_ptr<lua_State, decltype(&lua_close)>;

std::string TimeText(std::chrono::milliseconds time) {
    if (time.count() % 1000 == 0) return std::to_string(time.count() / 1000) + " s";
    return std::to_string(time.count()) + " ms";
}

/// Loads and runs the script at the address in argument 1; called under protection.
int LoadAndRun(lua_State* pState) {
    auto const& script = *static_cast<std::string const*>(lua_touserdata(pState, 1));
    BuildSandbox(pState);
    if (luaL_loadbufferx(pState, script.data(), script.size(), kChunkName, "t") != LUA_OK)
        return lua_error(pState);
    CheckScriptTime(pState);
    lua_call(pState, 0, 0);
    return 0;
}

/// The error value on top of the stack as text, without calling anything of the script's.
std::string ErrorText(lua_State* pState, int nStatus) {
    if (nStatus == LUA_ERRMEM) return kPrefix + "not enough memory";
    std::size_t nLength = 0;
    int const nType = lua_type(pState, -1);
    if (nType != LUA_TSTRING && nType != LUA_TNUMBER)
        return kPrefix + "error without a text (a " + lua_typename(pState, nType) + " value)";
    char const* pText = lua_tolstring(pState, -1, &nLength);
    if (!pText || nLength == 0) return kPrefix + "error without a text";
    return {pText, std::min(nLength, kMaxErrorBytes)};
}

std::string TimeOverText(CScriptRun const& run) {
    std::string const strPlace = std::string(kChunkName + 1) + ":";
    std::string const strLine =
        run.m_nTimeOverLine > 0 ? std::to_string(run.m_nTimeOverLine) + ":" : "";
    return strPlace + strLine + " stopped: the script ran longer than " +
           TimeText(run.m_Limits.m_Time);
}

/// A NUL would hide the rest of the text from whoever reads it as a C string.
std::string Readable(std::string strText) {
    std::replace(strText.begin(), strText.end(), '\0', '?');
    return strText;
}

}  // namespace

CScriptEngine::CScriptEngine(CSession& session, CScriptEngineOptions const& options)
    : m_Limits(options.m_Limits),
      m_Directory(options.m_strAudioDirectory),
      m_Context{.m_Session = session, .m_Directory = m_Directory} {
    m_Directory.SetLimit(options.m_lAudioBytes);
}

CScriptResult CScriptEngine::Run(std::string const& strScript) {
    if (strScript.size() > m_Limits.m_nScriptBytes)
        return {{},
                kPrefix + "the script is longer than " + std::to_string(m_Limits.m_nScriptBytes) +
                    " bytes"};
    CPlainThreadLocale const plainLocale;
    CScriptRun run(m_Limits, m_Context);
    m_Context.m_Document.reset();
    m_Context.m_Checkpoint = [&run] {
        if (run.TimeOver()) throw CScriptTimeOver();
    };

    CInterpreter const interpreter(lua_newstate(AllocateForScript, &run), &lua_close);
    if (!interpreter) return {{}, kPrefix + "not enough memory"};
    lua_State* pState = interpreter.get();
    SetRun(pState, run);
    lua_pushcfunction(pState, LoadAndRun);
    lua_pushlightuserdata(pState, const_cast<std::string*>(&strScript));
    int const nStatus = lua_pcall(pState, 1, 0, 0);

    m_Context.m_Checkpoint = {};
    CScriptResult result;
    result.strPrinted = std::move(run.m_strPrinted);
    if (run.m_fTimeOver)
        result.strError = TimeOverText(run);
    else if (nStatus != LUA_OK)
        result.strError = Readable(ErrorText(pState, nStatus));
    return result;
}
