#include <gtest/gtest.h>

#include <string>

#include "tests/HostFixture.h"

/// Scripts that try to get out, to stay for ever or to take everything.
class CScriptSandboxTest : public CHostFixture {
protected:
    /// Runs a script that would never end, with a short limit.
    CScriptResult RunEndless(std::string const& strScript) {
        CScriptLimits limits;
        limits.m_Time = std::chrono::milliseconds(150);
        Restart(limits);
        return Run(strScript);
    }

    void ExpectStopped(std::string const& strScript) {
        CScriptResult const result = RunEndless(strScript);
        EXPECT_NE(result.strError.find("stopped: the script ran longer than 150 ms"),
                  std::string::npos)
            << strScript << "\n"
            << result.strError;
        EXPECT_EQ(result.strPrinted.find("escaped"), std::string::npos) << strScript;
    }
};

TEST_F(CScriptSandboxTest, TheWorldHoldsExactlyWhatItShould) {
    EXPECT_EQ(Printed(R"(
        local names = {}
        for name in pairs(_G) do
            if not name:find('^[A-Z]%l') then names[#names + 1] = name end
        end
        table.sort(names)
        print(table.concat(names, ' ')))"),
              "_G _VERSION assert error getmetatable ipairs math next pairs pcall print rawequal "
              "rawget rawlen rawset select setmetatable string table tonumber tostring type "
              "xpcall\n");
    for (auto const& [strLibrary, strNames] :
         {std::pair<std::string, std::string>{
              "string",
              "byte char find format gmatch gsub len lower match pack packsize rep "
              "reverse sub unpack upper\n"},
          {"table", "concat insert move pack remove sort unpack\n"}})
        EXPECT_EQ(Printed("local names = {} for name in pairs(" + strLibrary +
                          ") do names[#names + 1] = name end table.sort(names) "
                          "print(table.concat(names, ' '))"),
                  strNames);
}

TEST_F(CScriptSandboxTest, NothingReachesFilesProcessesOrBytecode) {
    for (char const* pszName :
         {"io", "os", "package", "require", "load", "loadstring", "loadfile", "dofile", "debug",
          "collectgarbage", "coroutine", "utf8", "warn", "string.dump", "string.pack_", "module"})
        EXPECT_EQ(Printed(std::string("print(") + pszName + ")"), "nil\n") << pszName;
}

TEST_F(CScriptSandboxTest, BinaryChunksAreRefused) {
    EXPECT_NE(Error("\x1bLua\x54").find("binary chunk"), std::string::npos);
    EXPECT_NE(Error(std::string("\x1b") + "junk\xff").find("binary chunk"), std::string::npos);
}

TEST_F(CScriptSandboxTest, JunkIsAnErrorAndNoMore) {
    std::string strJunk;
    for (int n = 0; n < 5000; ++n) strJunk += static_cast<char>((n * 7919) >> 3);
    Error(strJunk);
    Error(std::string("print(1)\0print(2)", 17));
    EXPECT_EQ(Printed("print('alive')"), "alive\n");
}

TEST_F(CScriptSandboxTest, TheMetatableOfTextsCannotBeHadOrChanged) {
    EXPECT_EQ(Printed("print(getmetatable(''))"), "protected\n");
    EXPECT_NE(Error("getmetatable('').__index.x = 1"), "");
    EXPECT_NE(Error("setmetatable('', {})").find("table expected"), std::string::npos);
}

TEST_F(CScriptSandboxTest, AChangedStringTableDoesNotOutliveItsScript) {
    Printed("function string.upper() return 'changed' end");
    EXPECT_EQ(Printed("print(('a'):upper())"), "A\n");
}

TEST_F(CScriptSandboxTest, WhateverAScriptDidTheNextFindsTheWorldAsItWas) {
    std::string const strList =
        "local seen, lines = {}, {} local function list(t, path) "
        "if seen[t] then return end seen[t] = true "
        "for k, v in pairs(t) do lines[#lines + 1] = path .. tostring(k) .. ' ' .. tostring(v) "
        "if type(v) == 'table' then list(v, path .. k .. '.') end end end "
        "list(_G, '') lines[#lines + 1] = tostring(getmetatable(_G)) "
        "table.sort(lines) print(table.concat(lines, ', '))";
    std::string const strWorld = Printed(strList);
    for (char const* pszScript :
         {"for name in pairs(_G) do _G[name] = nil end", "for k in pairs(math) do math[k] = {} end",
          "string.x = _G table.x = string", "setmetatable(_G, {__index = print})",
          "setmetatable(_G, {__metatable = 1, __newindex = error}) setmetatable(string, _G)",
          "local function f() return 1 + f() end x = f()",
          "x = {} for n = 1, 1e9 do x[n] = {n} end", "x = ('x'):rep(60 << 20) error(x, 0)",
          "x = 'x' error(setmetatable({}, {__tostring = error}))", "x = = 1",
          "for n = 1, 100000 do _G['k' .. n] = n end for n = 1, 100000 do _G['k' .. n] = nil "
          "end"}) {
        Run(pszScript);
        EXPECT_EQ(Printed(strList), strWorld) << pszScript;
    }
    RunEndless("x = {} while true do x[#x + 1] = {} end");
    EXPECT_EQ(Printed("print(x, #('x'):rep(20 << 20))"), "nil\t20971520\n");
}

TEST_F(CScriptSandboxTest, RandomNumbersDifferFromScriptToScript) {
    std::string const strScript = "print(math.random(0), math.random(0), math.random(0))";
    EXPECT_NE(Printed(strScript), Printed(strScript));
}

TEST_F(CScriptSandboxTest, AnEndlessLoopIsStopped) {
    CScriptResult const result = RunEndless("print('so far')\nwhile true do end");
    EXPECT_EQ(result.strPrinted, "so far\n");
    EXPECT_EQ(result.strError, "script:2: stopped: the script ran longer than 150 ms");
    ExpectStopped("::again:: goto again");
    ExpectStopped("repeat until false");
    ExpectStopped("for n = 1, math.huge do end");
    ExpectStopped("for n = math.mininteger, math.maxinteger do end");
    ExpectStopped("local function f() return f() end f()");
    ExpectStopped("local t = {} while true do t[1], t[2] = t[2], t[1] end");
}

TEST_F(CScriptSandboxTest, AProtectedCallDoesNotCatchTheStop) {
    ExpectStopped("pcall(function() while true do end end) print('escaped')");
    ExpectStopped("while true do pcall(function() while true do end end) end");
    ExpectStopped("xpcall(function() while true do end end, print) print('escaped')");
    ExpectStopped(
        "local function again() return pcall(again) end "
        "while true do xpcall(again, function() while true do pcall(again) end end) end");
    ExpectStopped("pcall(pcall, pcall, function() while true do end end) print('escaped')");
    ExpectStopped("pcall(error) pcall(string.rep) while true do pcall(pcall) end");
}

TEST_F(CScriptSandboxTest, AMessageHandlerThatNeverEndsIsStopped) {
    ExpectStopped("xpcall(error, function() while true do end end) print('escaped')");
    ExpectStopped("xpcall(function() while true do end end, function() while true do end end)");
}

TEST_F(CScriptSandboxTest, MetamethodsThatNeverEndAreStopped) {
    ExpectStopped(
        "local t = setmetatable({}, {__index = function(t, k) return t[k + 1] and 1 end}) "
        "while true do pcall(function() return t[1] end) end");
    ExpectStopped(
        "local t = setmetatable({}, {__len = function() return 2^62 // 1 | 0 end, "
        "__newindex = function() end}) table.insert(t, 1, 1)");
    ExpectStopped(
        "local t = setmetatable({}, {__tostring = function() while true do end end}) "
        "print(t)");
    ExpectStopped(
        "local t = setmetatable({}, {__eq = function() while true do end end}) "
        "return t == setmetatable({}, getmetatable(t))");
}

TEST_F(CScriptSandboxTest, FinalizersAreRefused) {
    EXPECT_NE(Error("setmetatable({}, {__gc = function() end})").find("__gc"), std::string::npos);
    EXPECT_EQ(Printed("local mt = {} local t = setmetatable({}, mt) mt.__gc = print t = nil "
                      "for n = 1, 100000 do t = {n} end print('end')"),
              "end\n");
    EXPECT_EQ(Printed("local mt = {} local t = setmetatable({}, mt) mt.__gc = print "
                      "print(pcall(setmetatable, t, mt))")
                  .rfind("false", 0),
              0u);
}

TEST_F(CScriptSandboxTest, CloseHandlersThatNeverEndAreStopped) {
    ExpectStopped(
        "local x <close> = setmetatable({}, {__close = function() while true do end end}) "
        "while true do end");
    ExpectStopped(
        "pcall(function() local x <close> = setmetatable({}, {__close = function() while "
        "true do end end}) error('x') end) print('escaped')");
}

TEST_F(CScriptSandboxTest, MetatablesOtherwiseWorkAsUsual) {
    EXPECT_EQ(Printed(R"(
        local Point = {}
        Point.__index = Point
        Point.__add = function(a, b) return Point.new(a.x + b.x) end
        function Point.new(x) return setmetatable({x = x}, Point) end
        function Point:get() return self.x end
        local p = Point.new(2) + Point.new(3)
        print(p:get(), getmetatable(p) == Point)
        setmetatable(p, nil)
        print(getmetatable(p), pcall(p.get))
        local q = setmetatable({}, {__metatable = 'locked'})
        print(getmetatable(q), (pcall(setmetatable, q, {})))
        )")
                  .substr(0, 7),
              "5\ttrue\n");
    EXPECT_EQ(Printed("local q = setmetatable({}, {__metatable = 'locked'}) "
                      "print(getmetatable(q), (pcall(setmetatable, q, {})))"),
              "locked\tfalse\n");
}

TEST_F(CScriptSandboxTest, MemoryIsBounded) {
    for (char const* pszScript :
         {"local t = {} for n = 1, 1e9 do t[n] = {n} end",
          "local s = 'x' while true do s = s .. s end", "local s = string.rep('x', 1 << 40)",
          "local s = string.rep('x', 60 << 20) .. string.rep('y', 60 << 20)",
          "local t = {} for n = 1, 64 do t[n] = string.rep('x', 2 << 20) .. n end",
          "local t = {string.rep('x', 30 << 20)} t[2] = t[1] t[3] = t[1] return table.concat(t)",
          "local s = string.rep('x', 10 << 20) return s:gsub('x', string.rep('y', 100))",
          "return string.format(string.rep('%s', 100), table.unpack(table.pack(string.rep("
          "string.rep('x', 1 << 20), 1)), 1, 1))",
          "return string.pack('c2000000000', '')"}) {
        CScriptResult const result = Run(pszScript);
        bool const fMemory = result.strError.find("not enough memory") != std::string::npos;
        bool const fRefused = result.strError.find("too large") != std::string::npos ||
                              result.strError.find("bad argument") != std::string::npos;
        EXPECT_TRUE(fMemory || fRefused) << pszScript << "\n" << result.strError;
    }
}

TEST_F(CScriptSandboxTest, AFullMemoryDoesNotDefeatTheStop) {
    ExpectStopped(
        "local t = {} pcall(function() while true do t[#t + 1] = ('x'):rep(65536) .. #t end "
        "end) while true do pcall(string.rep, 'x', 1 << 20) end");
}

TEST_F(CScriptSandboxTest, CollidingKeysDoNotDefeatTheStop) {
    ExpectStopped(
        "while true do local t, k = {}, (1 << 15) - 1 "
        "for n = 1, (1 << 14) + 1 do t[n * k] = true end end");
}

TEST_F(CScriptSandboxTest, DeepRecursionIsAnError) {
    EXPECT_NE(Error("local function f(n) return 1 + f(n + 1) end f(1)"), "");
    EXPECT_NE(Error("local function f() return pcall(f) and error('x') or error('y') end f()"), "");
    EXPECT_NE(Error("local t = setmetatable({}, {__index = function(t, k) return t[k] end}) "
                    "return t.x"),
              "");
    EXPECT_NE(
        Error("local t t = setmetatable({}, {__tostring = function() return tostring(t) end}) "
              "print(t)"),
        "");
    EXPECT_NE(Error("return " + std::string(100000, '(') + "1"), "");
    EXPECT_NE(Error(std::string(100000, '{')), "");
    EXPECT_NE(Error("return " + std::string(100000, '~') + "1"), "");
    EXPECT_NE(Error("local f f = function(a) return ('x'):gsub('x', f) end f()"), "");
    EXPECT_EQ(Printed("print('alive')"), "alive\n");
}

TEST_F(CScriptSandboxTest, HugePrintsAreBoundedAndKeepTheirFront) {
    CScriptLimits limits;
    limits.m_nReplyBytes = 10000;
    Restart(limits);
    CScriptResult const result = Run("while true do print('0123456789') end");
    EXPECT_NE(result.strError.find("more than a reply can hold"), std::string::npos);
    EXPECT_LE(result.strPrinted.size(), 10000u);
    EXPECT_GE(result.strPrinted.size(), 9980u);
    CScriptResult const caught = Run("while pcall(print, ('x'):rep(999)) do end print('end')");
    EXPECT_LE(caught.strPrinted.size(), 10000u);
}

TEST_F(CScriptSandboxTest, PrintingInAnEndlessProtectedLoopIsStopped) {
    ExpectStopped("while true do pcall(print, ('x'):rep(100000)) end");
}

TEST_F(CScriptSandboxTest, LibraryFunctionsThatLoopInsideAreStopped) {
    EXPECT_NE(Error("return table.unpack({}, 1, 1 << 40)").find("too many results"),
              std::string::npos);
    EXPECT_NE(Error("return table.unpack({}, math.mininteger, math.maxinteger)"), "");
    ExpectStopped("for n = 1, 1 << 62 do select('#', n) end");
    ExpectStopped("local s = ('x'):rep(20 << 20) while true do s:upper() end");
    ExpectStopped("local a, b = ('x'):rep(20 << 20), ('x'):rep(20 << 20) while a == b do end");
}

TEST_F(CScriptSandboxTest, SortEndsWhateverTheOrderFunctionAnswers) {
    EXPECT_EQ(Printed("local t = {} for n = 1, 500 do t[n] = n end "
                      "pcall(table.sort, t, function() return true end) "
                      "pcall(table.sort, t, function() return false end) "
                      "pcall(table.sort, t, function() return math.random(2) == 1 end) print(#t)"),
              "500\n");
    ExpectStopped("table.sort({3, 2, 1}, function() while true do end end)");
    EXPECT_NE(Error("table.sort(setmetatable({}, {__len = function() return 1 << 62 end}))"), "");
}

TEST_F(CScriptSandboxTest, AReplacementFunctionThatNeverEndsIsStopped) {
    ExpectStopped("('x'):gsub('x', function() while true do end end)");
    ExpectStopped("while true do pcall(string.gsub, 'x', 'x', error) end");
}

TEST_F(CScriptSandboxTest, AFileNameCanRunCodeButNotGetOut) {
    std::string const strName = "x.wav\") print(\"inside\") print(io, os, load, \"";
    EXPECT_EQ(Printed("local name = (\"" + strName + "\")"), "inside\nnil\tnil\tnil\t\n");
}

TEST_F(CScriptSandboxTest, HostFunctionsRefuseOddArguments) {
    for (char const* pszCall :
         {"GetTrackID(print)", "GetTrackID({})", "GetTrackID(0/0)", "GetTrackID(1e300)",
          "GetTrackID(1.5)", "GetTrackID()", "GetTrackID('0')", "GetTrackID(math.mininteger)",
          "GetTrackName(-1)", "MoveDisplayToPosition(1/0)", "MoveDisplayToPosition(0/0)",
          "CreateProcess('APT', 'PT', {{{{{{}}}}}}, {})",
          "CreateProcess('APT', 'PT', setmetatable({}, {__index = error}), {})",
          "local t = {} t[1] = t CreateProcess('APT', 'PT', t, t)",
          "local t = {} for n = 1, 10000 do t[n] = n end CreateProcess('APT', 'PT', t, t)",
          "AddAudioRegion(GetTrackID(0), ('x'):rep(1 << 20), true, false, 0, 0, 1)",
          "AddAudioRegion(GetTrackID(0), 'a\\0b', true, false, 0, 0, 1)",
          "GetTrackCount(table.unpack({}, 1, 100))"})
        ErrorInDocument(pszCall);
    EXPECT_EQ(Printed("print('alive')"), "alive\n");
}

TEST_F(CScriptSandboxTest, StoppedScriptsLeaveTheHostWorking) {
    ExpectStopped("while true do end");
    EXPECT_EQ(Printed("print('alive')"), "alive\n");
}
