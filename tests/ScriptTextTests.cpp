#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <locale>

#include "link/ScriptWriter.h"
#include "link/TANClientInterProcess.h"
#include "platform/NumberText.h"

namespace {

struct CommaPunctuation : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

// A workstation that has set a locale with a decimal comma, as far as this machine has one.
class CDecimalCommaLocale {
public:
    CDecimalCommaLocale()
        : m_previous(std::locale::global(std::locale(std::locale(), new CommaPunctuation))) {
        for (const char* szName : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8"}) {
            if (std::setlocale(LC_NUMERIC, szName)) break;
        }
    }
    ~CDecimalCommaLocale() {
        std::locale::global(m_previous);
        std::setlocale(LC_NUMERIC, "C");
    }

private:
    std::locale m_previous;
};

template <typename T>
std::string Written(T value) {
    CScriptWriter script;
    script << value;
    return script.Text();
}

TEST(ScriptText, NumbersAreWrittenAsTheStandardStreamsDo) {
    EXPECT_EQ(Written(-48000), "-48000");
    EXPECT_EQ(Written(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(Written(10.5), "10.5");
    EXPECT_EQ(Written(48000.0), "48000");
    EXPECT_EQ(Written(999999.0), "999999");
    EXPECT_EQ(Written(1234567.0), "1.23457e+06");
    EXPECT_EQ(Written(0.00001), "1e-05");
}

TEST(ScriptText, NumbersDoNotDependOnTheLocale) {
    const CDecimalCommaLocale locale;
    EXPECT_EQ(Written(10.5), "10.5");
    EXPECT_EQ(Written(123456), "123456");
    EXPECT_EQ(Written(std::int64_t{1234567}), "1234567");
    EXPECT_EQ(Written(1234567.0), "1.23457e+06");
    EXPECT_EQ(CTANClientInterProcess().GetNameOfHost(12345), "TAN_Host_12345");
    EXPECT_EQ(ParseDouble("3600.5\n"), 3600.5);
    EXPECT_EQ(ParseInteger("48000.9"), 48000);
}

TEST(ScriptText, NumbersThatAreNotFiniteAreWrittenAsFiniteOnes) {
    EXPECT_EQ(Written(std::numeric_limits<double>::infinity()), "1.79769e+308");
    EXPECT_EQ(Written(-std::numeric_limits<double>::infinity()), "-1.79769e+308");
    EXPECT_EQ(Written(std::numeric_limits<double>::quiet_NaN()), "0");
}

TEST(ScriptText, SamplesAreTruncatedTowardZero) {
    EXPECT_EQ(TruncateToSamples(10.9), 10);
    EXPECT_EQ(TruncateToSamples(-10.9), -10);
    EXPECT_EQ(TruncateToSamples(0.0), 0);
    EXPECT_EQ(TruncateToSamples(9007199254740993.0), 9007199254740992);
}

TEST(ScriptText, SamplesOutOfRangeTakeTheNearestLimit) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(TruncateToSamples(9223372036854775808.0), INT64_MAX);
    EXPECT_EQ(TruncateToSamples(9223372036854774784.0), 9223372036854774784);
    EXPECT_EQ(TruncateToSamples(-9223372036854775808.0), INT64_MIN);
    EXPECT_EQ(TruncateToSamples(-1e300), INT64_MIN);
    EXPECT_EQ(TruncateToSamples(kInfinity), INT64_MAX);
    EXPECT_EQ(TruncateToSamples(-kInfinity), INT64_MIN);
    EXPECT_EQ(TruncateToSamples(std::nan("")), 0);
}

TEST(ScriptText, IntegersAreReadUpToTheFirstOtherCharacter) {
    EXPECT_EQ(ParseInteger("48000.0"), 48000);
    EXPECT_EQ(ParseInteger(" \t\n-7x"), -7);
    EXPECT_EQ(ParseInteger("+9"), 9);
    EXPECT_EQ(ParseInteger("x9"), 0);
    EXPECT_EQ(ParseInteger(""), 0);
    EXPECT_EQ(ParseInteger("99999999999999999999"), INT64_MAX);
    EXPECT_EQ(ParseInteger("-99999999999999999999"), INT64_MIN);
}

TEST(ScriptText, DoublesAreReadUpToTheFirstOtherCharacter) {
    EXPECT_EQ(ParseDouble("3600.5\n"), 3600.5);
    EXPECT_EQ(ParseDouble("-1e3,5"), -1000.0);
    EXPECT_EQ(ParseDouble("none"), 0.0);
    EXPECT_EQ(ParseDouble(""), 0.0);
}

TEST(ScriptText, BackslashesAreDoubledAndNothingElseIs) {
    EXPECT_EQ(EscapeBackstroke("C:\\a\\b.wav"), "C:\\\\a\\\\b.wav");
    EXPECT_EQ(EscapeBackstroke("\\\\"), "\\\\\\\\");
    EXPECT_EQ(EscapeBackstroke("a\"b'c"), "a\"b'c");
    EXPECT_EQ(EscapeBackstroke(""), "");
}

}  // namespace
