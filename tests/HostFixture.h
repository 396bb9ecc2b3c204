#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "host/AudioFile.h"
#include "host/ScriptEngine.h"
#include "host/Session.h"
#include "tests/TemporaryDirectory.h"

/// A session with the tracks Guide, Dub and Out in both documents, and an engine over it.
class CHostFixture : public testing::Test {
protected:
    CHostFixture() { Restart({}); }

    void Restart(CScriptLimits const& limits, std::int64_t lAudioBytes = std::int64_t{4} << 30) {
        m_pEngine.reset();
        m_pEngine = std::make_unique<CScriptEngine>(
            m_Session, CScriptEngineOptions{limits, m_Directory.Path() + "/audio", lAudioBytes});
    }

    CScriptResult Run(std::string const& strScript) { return m_pEngine->Run(strScript); }

    /// What a script prints; it must not fail.
    std::string Printed(std::string const& strScript) {
        CScriptResult const result = Run(strScript);
        EXPECT_EQ(result.strError, "") << strScript.substr(0, 200);
        return result.strPrinted;
    }

    /// What a script fails with.
    std::string Error(std::string const& strScript) {
        CScriptResult const result = Run(strScript);
        EXPECT_NE(result.strError, "") << strScript.substr(0, 200);
        return result.strError;
    }

    /// The same for a script that works on the script document.
    std::string PrintedInDocument(std::string const& strScript) {
        return Printed("assert(SelectScriptDocument()) " + strScript);
    }
    std::string ErrorInDocument(std::string const& strScript) {
        return Error("assert(SelectScriptDocument()) " + strScript);
    }

    std::string WriteFile(std::string const& strName, CAudio const& audio) {
        std::string const strPath = m_Directory.Path() + "/" + strName;
        WriteAudioFile(strPath, audio);
        return strPath;
    }

    CTemporaryDirectory m_Directory;
    CSession m_Session{{"Guide", "Dub", "Out"}, 48000};
    std::unique_ptr<CScriptEngine> m_pEngine;
};
