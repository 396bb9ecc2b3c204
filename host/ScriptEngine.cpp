#include "host/ScriptEngine.h"

#include <algorithm>
#include <lua.hpp>

#include "host/ScriptRun.h"
#include "platform/ThreadLocale.h"

namespace {

constexpr std::size_t kMaxErrorBytes = 8192;
std::string const kPrefix = std::string(kChunkName + 1) + ": ";

std::string TimeText(std::chrono::milliseconds time) {
    if (time.count() % 1000 == 0) return std::to_string(time.count() / 1000) + " s";
    return std::to_string(time.count()) + " ms";
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
    m_Context.m_Work.SetListener(options.m_WorkListener);
}

CScriptResult CScriptEngine::Run(std::string const& strScript) {
    if (strScript.size() > m_Limits.m_nScriptBytes)
        return {{},
                kPrefix + "the script is longer than " + std::to_string(m_Limits.m_nScriptBytes) +
                    " bytes"};
    CPlainThreadLocale const plainLocale;
    CScriptRun run{.m_Limits = m_Limits, .m_Context = m_Context, .m_Clock = m_Clock};
    m_Context.m_Document.reset();

    struct CVisit {
        ~CVisit() { m_World.PutBack(); }
        CScriptWorld& m_World;
    } const visit{m_World};
    lua_State* const pState = m_World.Enter(run, m_Limits.m_nMemoryBytes, m_Chance());
    m_Clock.Start(m_Limits.m_Time);
    int nStatus = luaL_loadbufferx(pState, strScript.data(), strScript.size(), kChunkName, "t");
    if (nStatus == LUA_OK) nStatus = lua_pcall(pState, 0, 0, 0);
    m_Clock.Stop();
    m_World.LiftLimit();

    CScriptResult result;
    result.strPrinted = std::move(run.m_strPrinted);
    if (run.m_fTimeOver)
        result.strError = TimeOverText(run);
    else if (nStatus != LUA_OK)
        result.strError = Readable(ErrorText(pState, nStatus));
    return result;
}
