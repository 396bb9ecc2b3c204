#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "host/ScriptEngine.h"
#include "host/Session.h"
#include "platform/Assertion.h"

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
    const CScriptResult result = engine.Run(strScript);
    TAVARIN_REQUIRE(result.strPrinted.size() <= std::size_t{64} << 10);
    // Whatever one script did, the next finds the world as it should be, unless a busy machine
    // gives it no time.
    const CScriptResult next = engine.Run("print(type(print), io, os, load, ('x'):rep(3))");
    TAVARIN_REQUIRE(next.strPrinted == "function\tnil\tnil\tnil\txxx\n" ||
                    next.strError.find("stopped: ") != std::string::npos);
    return 0;
}
