// Every script that the client sends parses in a real Lua interpreter.

#include <gtest/gtest.h>

#include <lua.hpp>
#include <memory>

#include "FileIO/FileName.h"
#include "PeerHost.h"
#include "link/TANClientInterProcess.h"

namespace {

// The interpreter's complaint about a script; empty when it parses.
std::string SyntaxError(std::string const& script) {
    const std::unique_ptr<lua_State, decltype(&lua_close)> state(luaL_newstate(), &lua_close);
    if (luaL_loadbufferx(state.get(), script.data(), script.size(), "script", "t") == LUA_OK) {
        return "";
    }
    return lua_tostring(state.get(), -1);
}

void SendEveryScript(CTANClientInterProcess& client, bool fAudioSuite) {
    std::vector<std::string> tracks;
    std::int64_t lStart = 0, lEnd = 0;
    CFileName file("/takes/C:\\a\\b.wav");
    CFileName exported;
    client.ListTracksWithTimeout(fAudioSuite, &tracks, 1000);
    client.CheckDuplicateRegion(fAudioSuite, 0, &file, 1e18, -0.5, 2e6);
    client.SendFile(fAudioSuite, 0, &file, 1e18, -0.5, 2e6, 0);
    client.SendFile(fAudioSuite, 0, &file, -1234567.0, 0.25, 3, 0x7FFFFFFF);
    client.ExportSelectedRegion(fAudioSuite, 0, &exported);
    client.RenderSelectedRegion(fAudioSuite, 48000, &lStart, &lEnd);
    client.CreateAPT(fAudioSuite, 0, -1, INT64_MAX, 1, INT64_MIN + 1, 0, 2);
    client.CreateDoubler(fAudioSuite, 0, -1, INT64_MAX, 1, 1);
    client.ClearTrack(fAudioSuite, 0);
    client.GetLinkSMPTEOffset(fAudioSuite);
}

TEST(ScriptSyntax, EveryScriptParses) {
    CPeerHost host;
    CTANClientInterProcess client;
    SendEveryScript(client, false);
    SendEveryScript(client, true);
    client.GetUpdateCount();
    client.GetTANProcessID();
    client.PrintToTavarin("a text");
    const std::vector<std::string> scripts = host.Requests();
    EXPECT_EQ(scripts.size(), 23u);
    for (std::string const& strScript : scripts) EXPECT_EQ(SyntaxError(strScript), "") << strScript;
}

TEST(ScriptSyntax, BrokenScriptIsNoticed) {
    EXPECT_NE(SyntaxError("if then\n"), "");
}

}  // namespace
