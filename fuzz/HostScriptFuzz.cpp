#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "host/ScriptEngine.h"
#include "host/Session.h"
#include "platform/Assertion.h"

namespace {

// A single step of these can take for ever, and the host then ends by design.
constexpr std::string_view endlessSteps[] = {"find", "match",  "gsub",   "concat",
                                             "move", "insert", "__call", "__mode"};

bool MayTakeForEver(std::string const& strScript) {
    return std::any_of(
        std::begin(endlessSteps), std::end(endlessSteps),
        [&](std::string_view name) { return strScript.find(name) != std::string::npos; });
}

}  // namespace

// A script of any bytes, run by the reference host's engine under small limits.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static const CSession fresh({"Guide", "Dub", "Out"}, 48000);
    static CSession session = fresh;
    static CScriptEngine engine(session, [] {
        CScriptEngineOptions options;
        options.m_Limits.m_nMemoryBytes = std::size_t{4} << 20;
        options.m_Limits.m_Time = std::chrono::milliseconds(20);
        options.m_Limits.m_nReplyBytes = std::size_t{64} << 10;
        options.m_lAudioBytes = std::int64_t{1} << 20;
        return options;
    }());
    session = fresh;
    const std::string strScript(reinterpret_cast<char const*>(data), size);
    if (MayTakeForEver(strScript)) return 0;
    const CScriptResult result = engine.Run(strScript);
    TAVARIN_REQUIRE(result.strPrinted.size() <= std::size_t{64} << 10);
    // Whatever one script did, the next finds the world as it should be, unless a busy machine
    // gives it no time.
    const CScriptResult next = engine.Run("print(type(print), io, os, load, ('x'):rep(3))");
    TAVARIN_REQUIRE(next.strPrinted == "function\tnil\tnil\tnil\txxx\n" ||
                    next.strError.find("stopped: ") != std::string::npos);
    return 0;
}
