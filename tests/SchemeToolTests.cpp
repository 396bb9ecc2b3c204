#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <string>

#include "tests/ScopedEnvironment.h"
#include "tests/TemporaryDirectory.h"

namespace {

class SchemeToolTests : public testing::Test {
protected:
    struct CResult {
        int nStatus;
        std::string strOutput;  ///< standard output and standard error
    };

    CResult Run(std::string const& arguments) const {
        const std::string command = "cd '" + m_directory.Path() + "' && '" +
                                    TAVARIN_SCHEME_PROGRAM + "' " + arguments + " 2>&1 </dev/null";
        std::FILE* pipe = popen(command.c_str(), "r");
        std::string output;
        char buffer[4096];
        while (const std::size_t size = std::fread(buffer, 1, sizeof buffer, pipe)) {
            output.append(buffer, size);
        }
        const int nStatus = pclose(pipe);
        return {WEXITSTATUS(nStatus), output};
    }

    CTemporaryDirectory m_directory;
    // What AppKit keeps until a process ends is no leak of the program's.
    CScopedEnvironment m_leaks{"ASAN_OPTIONS", "detect_leaks=0"};
};

TEST_F(SchemeToolTests, ThePalettesPassTheirCheck) {
    const CResult designer = Run("check designer");
    EXPECT_EQ(designer.nStatus, 0);
    EXPECT_NE(designer.strOutput.find("0 broken"), std::string::npos);
    EXPECT_EQ(Run("check engineer").nStatus, 0);
}

TEST_F(SchemeToolTests, AnUnreadableSchemeFailsTheCheckAndIsNamed) {
    m_directory.Write("bad.json", R"({"format": "TavarinColourScheme", "colours": [
        {"component": "ccLabelText", "name": "Label text", "colour": [0.2, 0.2, 0.2, 1]}]})");
    EXPECT_EQ(Run("check bad.json").nStatus, 0) << "alone it has nothing to be read on";
    const CResult result = Run("check bad.json --over designer");
    EXPECT_EQ(result.nStatus, 1);
    EXPECT_NE(result.strOutput.find("BROKEN ccLabelText on ccWindowBackground"), std::string::npos);
}

TEST_F(SchemeToolTests, AllRulesAreListedOnRequest) {
    const CResult result = Run("check designer --all");
    EXPECT_EQ(result.nStatus, 0);
    EXPECT_NE(result.strOutput.find("kept   ccLabelText on ccWindowBackground"), std::string::npos);
    EXPECT_NE(result.strOutput.find("given  ccLabelText on ccSelectedTextBackground"),
              std::string::npos);
}

TEST_F(SchemeToolTests, ASchemeGoesToJsonAndBack) {
    ASSERT_EQ(Run("export designer -o designer.json").nStatus, 0);
    ASSERT_EQ(Run("import designer.json -o designer.scheme").nStatus, 0);
    const CResult same = Run("diff designer designer.scheme");
    EXPECT_EQ(same.nStatus, 0);
    EXPECT_EQ(same.strOutput, "");
    EXPECT_EQ(Run("export designer.scheme").strOutput, m_directory.Read("designer.json"));
    EXPECT_FALSE(m_directory.Has("designer.scheme.part"));
}

TEST_F(SchemeToolTests, AWholeSchemeIsWrittenAsHexOnRequest) {
    ASSERT_EQ(Run("export designer --hex -o hex.json").nStatus, 0);
    EXPECT_EQ(m_directory.Read("hex.json").find("\"colour\":["), std::string::npos);
    const CResult same = Run("diff designer hex.json");
    EXPECT_EQ(same.nStatus, 0) << same.strOutput;
}

TEST_F(SchemeToolTests, DifferencesSetTheStatus) {
    const CResult result = Run("diff designer engineer");
    EXPECT_EQ(result.nStatus, 1);
    EXPECT_NE(result.strOutput.find("~ ccLabelText: #c1c1c1 -> #58585a"), std::string::npos);
    EXPECT_NE(result.strOutput.find("- ccTrackGroup14: #999999"), std::string::npos);
    EXPECT_NE(result.strOutput.find("+ ccMorlandProjectButton: "), std::string::npos);
}

TEST_F(SchemeToolTests, APictureIsDrawn) {
    ASSERT_EQ(Run("show engineer --output engineer.svg").nStatus, 0);
    const std::string picture = m_directory.Read("engineer.svg");
    EXPECT_EQ(picture.substr(0, 4), "<svg");
    EXPECT_EQ(picture.substr(picture.size() - 7), "</svg>\n");
}

TEST_F(SchemeToolTests, ThePictureTellsValuesAndWhatChanged) {
    m_directory.Write("mine.json", R"({"format": "TavarinColourScheme", "colours": [
        {"component": "ccBar", "name": "Bar", "colour": "#0f0d1a"}]})");
    ASSERT_EQ(Run("show mine.json --over designer -o mine.svg").nStatus, 0);
    const std::string picture = m_directory.Read("mine.svg");
    EXPECT_NE(picture.find(">mine.json (1 changed)<"), std::string::npos);
    EXPECT_NE(picture.find("-&gt; #0f0d1a<"), std::string::npos) << "what it was, and what it is";
    EXPECT_EQ(picture.find("class=\"changed\""), picture.rfind("class=\"changed\""));
    EXPECT_NE(picture.find("class=\"changed\""), std::string::npos);
    EXPECT_NE(picture.find(">0 #727272, 1 #282828<"), std::string::npos) << "a gradient's stops";
    const std::string plain = Run("show designer").strOutput;
    EXPECT_EQ(plain.find("changed"), std::string::npos);
    EXPECT_NE(plain.find(">#c1c1c1<"), std::string::npos) << "label text";
}

TEST_F(SchemeToolTests, ACheckProposesAColourThatKeepsTheRule) {
    const auto scheme = [](std::string const& colour) {
        return R"({"format": "TavarinColourScheme", "colours": [
            {"component": "ccSeparatorLine", "name": "Line", "colour": ")" +
               colour + R"("}]})";
    };
    m_directory.Write("bad.json", scheme("#333333"));
    const std::string strBroken = Run("check bad.json --over designer").strOutput;
    const std::string strTry = "; try ccSeparatorLine #";
    const std::size_t nTry = strBroken.find(strTry);
    ASSERT_NE(nTry, std::string::npos) << strBroken;
    m_directory.Write("good.json", scheme(strBroken.substr(nTry + strTry.size() - 1, 7)));
    const CResult result = Run("check good.json --over designer");
    EXPECT_EQ(result.nStatus, 0) << result.strOutput;
}

TEST_F(SchemeToolTests, ACheckTellsWhichFaultsAPaletteIsPrescribed) {
    const CResult result = Run("check engineer");
    EXPECT_NE(result.strOutput.find("given  ccControlText on ccWindowBackground, without a "
                                    "ccButtonFaceActive: contrast 1.3, at least 4.5; the palette "
                                    "is prescribed so\n"),
              std::string::npos)
        << result.strOutput;
}

TEST_F(SchemeToolTests, WhatIsNoSchemeIsExplained) {
    m_directory.Write("empty", "");
    m_directory.Write("text", "some text");
    m_directory.Write("cut", std::string("TavarinColourScheme\0\x64\0\0\0", 24));
    m_directory.Write("bad.json", "{ no JSON");
    const std::pair<const char*, const char*> cases[] = {
        {"absent", "\"absent\" is no palette and no file"},
        {"empty", "\"empty\" is empty"},
        {"text", "\"text\" is not a colour scheme"},
        {"cut", "\"cut\" is not a colour scheme"},
        {".", "\".\" is a directory"},
        {"bad.json", "the text is not JSON"},
    };
    for (auto const& [source, error] : cases) {
        const CResult result = Run(std::string("export ") + source);
        EXPECT_EQ(result.nStatus, 2) << source;
        EXPECT_EQ(result.strOutput.find(std::string("tavarin-scheme: ") + error), 0u)
            << result.strOutput;
    }
}

TEST_F(SchemeToolTests, AnOutputThatCannotBeWrittenIsExplained) {
    for (const char* command :
         {"export designer -o none/x", "show designer -o none/x", "import designer -o none/x"}) {
        const CResult result = Run(command);
        EXPECT_EQ(result.nStatus, 2) << command;
        EXPECT_NE(result.strOutput.find("cannot write \"none/x\""), std::string::npos);
    }
}

TEST_F(SchemeToolTests, AWrongCommandLineHasAStatusOfItsOwn) {
    for (const char* arguments : {"", "paint", "check", "diff designer", "import designer"}) {
        EXPECT_EQ(Run(arguments).nStatus, 2) << arguments;
    }
    EXPECT_EQ(Run("--help").nStatus, 0);
}

}  // namespace
