#include "host/ScriptEngine.h"

#include <gtest/gtest.h>

#include <clocale>
#include <filesystem>

#include "tests/HostFixture.h"

using CScriptEngineTest = CHostFixture;

TEST_F(CScriptEngineTest, PrintedTextIsTheReply) {
    EXPECT_EQ(Printed("print('a') print('b')"), "a\nb\n");
}

TEST_F(CScriptEngineTest, PrintSeparatesItsArgumentsByTabs) {
    EXPECT_EQ(Printed("print(1, 'two', nil, true)"), "1\ttwo\tnil\ttrue\n");
}

TEST_F(CScriptEngineTest, PrintWithoutArgumentsPrintsAnEmptyLine) {
    EXPECT_EQ(Printed("print()"), "\n");
}

TEST_F(CScriptEngineTest, PrintUsesAValuesOwnText) {
    EXPECT_EQ(Printed("print(setmetatable({}, {__tostring = function() return 'me' end}))"),
              "me\n");
}

TEST_F(CScriptEngineTest, IntegersPrintWithoutAFraction) {
    EXPECT_EQ(Printed("print(48000, 2^53 // 1 | 0, 1.5)"), "48000\t9007199254740992\t1.5\n");
}

TEST_F(CScriptEngineTest, AnEmptyScriptPrintsNothing) {
    EXPECT_EQ(Printed(""), "");
}

TEST_F(CScriptEngineTest, AnErrorKeepsWhatWasPrintedBefore) {
    CScriptResult const result = Run("print('before')\nerror('oops')\nprint('after')");
    EXPECT_EQ(result.strPrinted, "before\n");
    EXPECT_EQ(result.strError, "script:2: oops");
}

TEST_F(CScriptEngineTest, ASyntaxErrorNamesItsLine) {
    EXPECT_EQ(Error("x = 1\ny = = 2\n").rfind("script:2: ", 0), 0u);
}

TEST_F(CScriptEngineTest, ErrorsWithoutATextAreNamedByTheirType) {
    EXPECT_EQ(Error("error({})"), "script: error without a text (a table value)");
    EXPECT_EQ(Error("error()"), "script: error without a text (a nil value)");
    EXPECT_EQ(Error("error('', 0)"), "script: error without a text");
}

TEST_F(CScriptEngineTest, AnErrorValuesOwnTextIsNotCalledFor) {
    EXPECT_EQ(Error("error(setmetatable({}, {__tostring = function() while true do end end}))"),
              "script: error without a text (a table value)");
}

TEST_F(CScriptEngineTest, ErrorTextsAreBounded) {
    EXPECT_EQ(Error("error(string.rep('e', 100000), 0)").size(), 8192u);
}

TEST_F(CScriptEngineTest, AZeroByteDoesNotHideTheRestOfAnErrorText) {
    EXPECT_EQ(Error("error('a\\0b', 0)"), "a?b");
}

TEST_F(CScriptEngineTest, PrintedTextMayHoldZeroBytes) {
    EXPECT_EQ(Printed("print('a\\0b')"), std::string("a\0b\n", 4));
}

TEST_F(CScriptEngineTest, EachScriptStartsWithAFreshWorld) {
    Printed("x = 1 string.upper = nil print = nil");
    EXPECT_EQ(Printed("print(x, ('a'):upper())"), "nil\tA\n");
}

TEST_F(CScriptEngineTest, WhatAScriptDoesToTheSessionStays) {
    PrintedInDocument("MoveDisplayToPosition(1200)");
    EXPECT_EQ(m_Session.Document(DocumentKind::Script).m_dDisplayPosition, 1200.0);
}

TEST_F(CScriptEngineTest, NumbersDoNotFollowTheLocale) {
    std::string const strOld = std::setlocale(LC_ALL, nullptr);
    for (char const* pszLocale : {"de_DE.UTF-8", "fr_FR.UTF-8", "C.UTF-8"})
        if (std::setlocale(LC_ALL, pszLocale)) break;
    EXPECT_EQ(Printed("print(1.5, 3600.5 .. '', tostring(0.25), ('%.2f'):format(1.5), 2.5)"),
              "1.5\t3600.5\t0.25\t1.50\t2.5\n");
    std::setlocale(LC_ALL, strOld.c_str());
}

TEST_F(CScriptEngineTest, AScriptThatIsTooLongIsRefused) {
    CScriptLimits limits;
    limits.m_nScriptBytes = 20;
    Restart(limits);
    EXPECT_EQ(Printed("print(1)"), "1\n");
    EXPECT_EQ(Error("print(1)             "), "script: the script is longer than 20 bytes");
}

TEST_F(CScriptEngineTest, TheAudioDirectoryIsPrivateAndGoesWithTheEngine) {
    namespace fs = std::filesystem;
    std::string strPath;
    {
        CScriptEngine engine(m_Session);
        strPath = engine.AudioDirectory().Path();
        EXPECT_EQ(fs::status(strPath).permissions(), fs::perms::owner_all);
    }
    EXPECT_FALSE(fs::exists(strPath));
}

TEST_F(CScriptEngineTest, ANamedAudioDirectoryStays) {
    std::string const strPath = m_Directory.Path() + "/kept/deep/";
    { CScriptEngine engine(m_Session, {{}, strPath}); }
    EXPECT_TRUE(std::filesystem::is_directory(strPath));
}
