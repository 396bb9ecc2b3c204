#include "tools/scheme/SchemeJson.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "colours/ComponentCodes.h"
#include "colours/DefaultColours.h"
#include "colours/DeviceRGB.h"
#include "tools/ToolFailure.h"
#include "tools/scheme/SchemeDiff.h"
#include "tools/scheme/SchemePicture.h"
#include "tools/scheme/SchemeText.h"

namespace {

using Lines = std::vector<std::string>;

std::string SchemeText(std::string const& colours) {
    return R"({"format": "TavarinColourScheme", "colours": [)" + colours + "]}";
}

std::string ErrorOf(std::string const& text) {
    CComponentsColors scheme;
    try {
        SchemeFromJson(text, scheme);
    } catch (CToolFailure const& failure) {
        EXPECT_TRUE(scheme.Entries().empty());
        EXPECT_FALSE(failure.Advice().empty());
        return failure.what();
    }
    return "";
}

TEST(SchemeJsonTests, BothPalettesSurviveTheWayThroughJson) {
    for (auto* fill : {AppCreateDefaultColoursDesigner, AppCreateDefaultColoursEngineer}) {
        CComponentsColors palette;
        fill(&palette);
        CComponentsColors read;
        SchemeFromJson(SchemeToJson(palette), read);
        EXPECT_EQ(DiffSchemes(palette, read), Lines{});
    }
}

TEST(SchemeJsonTests, AColourIsNamedByComponentOrByCode) {
    CComponentsColors scheme;
    SchemeFromJson(SchemeText(R"({"component": "ccRed", "name": "r", "colour": [1, 0, 0, 1]},
                      {"code": [7, -8], "name": "x", "class": 3,
                       "stops": [{"position": 0.5, "colour": [0, 0.5, 0, 1]}]})"),
                   scheme);
    EXPECT_EQ(scheme.FindRGBA(ccRed)[0], 1.0);
    EXPECT_TRUE(scheme.IsGradient({7, -8}));
    EXPECT_EQ(scheme.Find({7, -8})->m_nClass, 3);
}

TEST(SchemeJsonTests, AColourIsWrittenAndReadAsHexWhereThatIsExact) {
    CComponentsColors scheme;
    SchemeFromJson(SchemeText(R"({"component": "ccRed", "name": "r", "colour": "#FF8000"},
                      {"code": [7, 8], "name": "x", "colour": "#0a0b0c80"},
                      {"code": [7, 9], "name": "y", "colour": [0.1, 0, 0, 1]})"),
                   scheme);
    EXPECT_EQ(scheme.FindRGBA(ccRed)[1], 128 / 255.0);
    EXPECT_EQ(scheme.FindRGBA(ccRed)[3], 1.0);
    const std::string text = SchemeToJson(scheme);
    EXPECT_NE(text.find("\"colour\":\"#ff8000\"}"), std::string::npos) << text;
    EXPECT_NE(text.find("\"colour\":\"#0a0b0c80\"}"), std::string::npos) << text;
    EXPECT_NE(text.find("\"colour\":[0.1,0.0,0.0,1.0]}"), std::string::npos) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2 + 3 + 1) << "a line for each colour";
    for (const char* szHex : {"#ff80", "ff8000", "#ff80g0", "#ff8000 "}) {
        const std::string entry =
            R"({"component": "ccRed", "name": "r", "colour": ")" + std::string(szHex) + "\"}";
        EXPECT_NE(ErrorOf(SchemeText(entry)).find("#rrggbb"), std::string::npos) << szHex;
    }
}

TEST(SchemeJsonTests, NumbersAboveOneAreRefused) {
    for (const char* szChannels : {"[255, 0, 0, 1]", "[1.001, 0, 0, 1]", "[0, -0.1, 0, 1]"}) {
        const std::string entry =
            R"({"component": "ccRed", "name": "r", "colour": )" + std::string(szChannels) + "}";
        EXPECT_NE(ErrorOf(SchemeText(entry)).find("numbers from 0 to 1"), std::string::npos)
            << szChannels;
    }
}

TEST(SchemeJsonTests, ColoursAreLaidOverThoseThatAreThere) {
    CComponentsColors scheme;
    AppCreateDefaultColoursDesigner(&scheme);
    SchemeFromJson(SchemeText(R"({"component": "ccRed", "name": "r", "colour": [0, 0, 0, 1]})"),
                   scheme);
    EXPECT_EQ(scheme.Entries().size(), 254u);
    EXPECT_EQ(scheme.FindRGBA(ccRed)[0], 0.0);
}

TEST(SchemeJsonTests, WhatIsNoSchemeIsRefused) {
    EXPECT_EQ(ErrorOf("{"), "the text is not JSON");
    EXPECT_EQ(ErrorOf(""), "the text is not JSON");
    for (const char* text : {"[]", "{}", "1", R"({"format": 1, "colours": []})",
                             R"({"format": "TavarinColourScheme", "colours": {}})"}) {
        EXPECT_EQ(ErrorOf(text), "the JSON text is no colour scheme") << text;
    }
}

TEST(SchemeJsonTests, WhatIsNoColourIsRefusedWithItsPlace) {
    const std::pair<const char*, const char*> cases[] = {
        {"1", "is not an object"},
        {R"({"name": "", "colour": [0,0,0,1]})", "has no 'code'"},
        {R"({"component": "ccNone", "name": "", "colour": [0,0,0,1]})",
         "names a component that does not exist"},
        {R"({"component": "ccRed", "code": [0, 17], "name": "", "colour": [0,0,0,1]})",
         "has a 'code' that is not that of its 'component'"},
        {R"({"code": [0], "name": "", "colour": [0,0,0,1]})", "needs module and id in 'code'"},
        {R"({"code": [0, 2147483648], "name": "", "colour": [0,0,0,1]})",
         "needs a whole number of 32 bits in 'code'"},
        {R"({"code": [0, 1.5], "name": "", "colour": [0,0,0,1]})",
         "needs a whole number of 32 bits in 'code'"},
        {R"({"code": [0, 18446744073709551615], "name": "", "colour": [0,0,0,1]})",
         "needs a whole number of 32 bits in 'code'"},
        {R"({"component": "ccRed", "colour": [0,0,0,1]})", "has no 'name'"},
        {R"({"component": "ccRed", "name": 1, "colour": [0,0,0,1]})", "needs a text in 'name'"},
        {R"({"component": "ccRed", "name": ""})", "needs either 'colour' or 'stops'"},
        {R"({"component": "ccRed", "name": "", "colour": [0,0,0,1], "stops": []})",
         "needs either 'colour' or 'stops'"},
        {R"({"component": "ccRed", "name": "", "colour": [0,0,1]})",
         "needs red, green, blue and alpha in 'colour'"},
        {R"({"component": "ccRed", "name": "", "colour": [0,0,0,null]})",
         "needs a number in 'colour'"},
        {R"({"component": "ccRed", "name": "", "stops": 1})", "needs a list in 'stops'"},
        {R"({"component": "ccRed", "name": "", "stops": [{"position": 0}]})",
         "needs 'position' and 'colour' in each of its 'stops'"},
        {R"({"component": "ccRed", "name": "", "stops": [{"position": 0, "colour": [0,0,0,1]},
             {"position": 0, "colour": [0,0,0,1]}]})",
         "has two of its 'stops' at one position"},
    };
    const std::string good = R"({"component": "ccBlue", "name": "b", "colour": [0, 0, 1, 1]},)";
    for (auto const& [colour, error] : cases) {
        EXPECT_EQ(ErrorOf(SchemeText(good + colour)),
                  "colour 2 in 'colours' " + std::string(error));
    }
    EXPECT_EQ(ErrorOf(SchemeText(good + R"({"code": [0, 18], "name": "", "colour": [0,0,1,1]})")),
              "colour 2 in 'colours' has a code that stands further up already");
}

TEST(SchemeJsonTests, AChannelThatIsNoNumberCannotBeExported) {
    CComponentsColors scheme;
    AppCreateDefaultColoursDesigner(&scheme);
    scheme.UpdateColour(ccRed, std::numeric_limits<float>::quiet_NaN(), 0, 0, 1);
    EXPECT_THROW(SchemeToJson(scheme), CToolFailure);
}

TEST(SchemeJsonTests, NamesThatAreNoTextDoNotStopAnExport) {
    CComponentsColors scheme;
    scheme.Add(new CComponentColour(ccRed, 4, "a\xff", 1, 0, 0, 1, CDeviceRGB()));
    EXPECT_NE(SchemeToJson(scheme).find("\"a\xEF\xBF\xBD\""), std::string::npos);
}

TEST(SchemeJsonTests, DifferencesAreListedFromTheHighestCodeDown) {
    const CDeviceRGB space;
    CComponentsColors first;
    CComponentsColors second;
    first.Add(new CComponentColour(ccRed, 4, "Test", 1, 0, 0, 1, space));
    second.Add(new CComponentColour(ccRed, 2, "Other", 1, 0, 0, 0.5, space));
    first.Add(new CComponentColour({9, 9}, 0, "", 0, 0, 0, 1, space));
    second.Add(new CComponentColour(ccBlue, 4, "", 0, 0, 1, 1, space));
    first.Add(new CComponentColour(ccBlack, 4, "", 0, 0, 0, 1, space));
    second.Add(new CComponentColour(ccBlack, 4, "", 0.001, 0, 0, 1, space));
    EXPECT_EQ(DiffSchemes(first, second),
              (Lines{"- (9, 9): #000000", "+ ccBlue: #0000ff",
                     "~ ccRed: #ff0000 -> #ff0000 alpha 0.5; name \"Test\" -> \"Other\"; "
                     "class 4 -> 2"}));
}

TEST(SchemeJsonTests, AGradientInPlaceOfAPlainColourIsADifference) {
    const CDeviceRGB space;
    CComponentsColors first;
    CComponentsColors second;
    first.Add(new CComponentColour(ccRed, 4, "", 1, 0, 0, 1, space));
    auto* fill = new CGradientFill(ccRed, 4, "");
    fill->AddColor(0, 1, 0, 0, 1, space, 1.0);
    second.Add(fill);
    EXPECT_EQ(DiffSchemes(first, second), (Lines{"~ ccRed: #ff0000 -> 0 #ff0000"}));
}

TEST(SchemeJsonTests, TextsAreTheSameEverywhere) {
    EXPECT_EQ(NumberText(0.5), "0.5");
    EXPECT_EQ(NumberText(1.0), "1");
    EXPECT_EQ(NumberText(0.12345), "0.123");
    EXPECT_EQ(HexText({0.2, 2.0, -1.0, 0.5}), "#33ff00");
    EXPECT_EQ(CodeText(ccRed), "ccRed");
    EXPECT_EQ(CodeText({5, -6}), "(5, -6)");
    EXPECT_EQ(XmlText("a<b>&\"\x01\xff\xc3\xa9"), "a&lt;b&gt;&amp;&quot;??\xc3\xa9");
}

TEST(SchemeJsonTests, APictureShowsEveryColourOnce) {
    CComponentsColors scheme;
    AppCreateDefaultColoursDesigner(&scheme);
    const std::string picture = DrawScheme(scheme, "<mine>");
    for (auto const& entry : scheme.Entries()) {
        const std::string code = ">" + CodeText(entry.pColour->m_code) + "<";
        const std::size_t place = picture.find(code);
        ASSERT_NE(place, std::string::npos) << code;
        EXPECT_EQ(picture.find(code, place + 1), std::string::npos) << code;
    }
    EXPECT_NE(picture.find("&lt;mine&gt;"), std::string::npos);
    EXPECT_NE(picture.find("Track groups (14)"), std::string::npos);
}

}  // namespace
