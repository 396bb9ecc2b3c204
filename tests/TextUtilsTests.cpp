#include "utils/TextUtils.h"

#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

std::string Decimal64(std::int64_t value, int base = 10) {
    std::array<char, 21> buffer;
    ltoa(value, buffer.data(), base);
    return buffer.data();
}

std::string Decimal32(std::int32_t value) {
    std::array<char, 12> buffer;
    itoa(value, buffer.data(), 10);
    return buffer.data();
}

// A length-prefixed string with all the room that one can need.
using PString = std::array<unsigned char, 256>;

PString P(std::string const& text) {
    PString string{};
    string[0] = static_cast<unsigned char>(text.size());
    std::memcpy(string.data() + 1, text.data(), text.size());
    return string;
}

std::string Text(PString const& string) {
    return {reinterpret_cast<const char*>(string.data()) + 1, string[0]};
}

struct Contains {
    bool found;
    std::int32_t position;
};

Contains Search(std::string const& string, std::string const& part) {
    std::int32_t position = -7;
    const bool found = PStringContains(P(string).data(), P(part).data(), &position);
    return {found, position};
}

std::string Substitute(const char* token, const char* text, const char* replacement) {
    char* buffer = new char[std::strlen(text) + 1];
    std::strcpy(buffer, text);
    const std::unique_ptr<char[]> result(substituteToken(token, buffer, replacement));
    return result.get();
}

TEST(NumberText, WritesNegativeNumbersAndIgnoresTheBase) {
    EXPECT_EQ("-120", Decimal64(-120, 16));
    EXPECT_EQ("255", Decimal64(255, 2));
    EXPECT_EQ("0", Decimal32(0));
    EXPECT_EQ("-7", Decimal32(-7));
}

TEST(NumberText, WritesTheExtremes) {
    EXPECT_EQ("-9223372036854775808", Decimal64(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ("9223372036854775807", Decimal64(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ("-2147483648", Decimal32(std::numeric_limits<std::int32_t>::min()));
    EXPECT_EQ("2147483647", Decimal32(std::numeric_limits<std::int32_t>::max()));
}

TEST(CaselessCompare, OrdersLikeTheFoldedTexts) {
    EXPECT_EQ(-1, strcmpi("abc", "ABD"));
    EXPECT_EQ(1, strcmpi("ABD", "abc"));
    EXPECT_EQ(0, strcmpi("aZ", "Az"));
    EXPECT_EQ(0, strcmpi("", ""));
}

TEST(CaselessCompare, PutsTheLongerTextAfterItsBeginning) {
    EXPECT_EQ(1, strcmpi("abc", "AB"));
    EXPECT_EQ(-1, strcmpi("AB", "abc"));
    EXPECT_EQ(-1, strcmpi("", "a"));
    EXPECT_EQ(1, strcmpi("a", ""));
}

TEST(CaselessCompare, PutsHighBytesBelowPlainCharactersButAboveNothing) {
    EXPECT_EQ(-1, strcmpi("\xE9", "a"));
    EXPECT_EQ(1, strcmpi("a", "\xE9"));
    EXPECT_EQ(-1, strcmpi("\x80", "\x01"));
    EXPECT_EQ(-1, strcmpi("\x80", "\xFF"));
    EXPECT_EQ(1, strcmpi("\x80", ""));
}

TEST(CaselessCompare, LeavesHighBytesAlone) {
    // 0xC9 and 0xE9 are one letter in two cases in Latin-1.
    EXPECT_EQ(-1, strcmpi("\xC9", "\xE9"));
    EXPECT_EQ(-1, strcmpi("[", "{"));
    EXPECT_EQ(1, strcmpi("a", "@"));
}

TEST(BoundedCopy, StopsBeforeTheSize) {
    std::array<char, 8> buffer;
    buffer.fill('#');
    lstrcpyn(buffer.data(), "hello", 3);
    EXPECT_STREQ("he", buffer.data());
    EXPECT_EQ('#', buffer[3]);
}

TEST(BoundedCopy, StopsAtTheEndOfTheSource) {
    std::array<char, 8> buffer;
    buffer.fill('#');
    lstrcpyn(buffer.data(), "hi", 8);
    EXPECT_STREQ("hi", buffer.data());
    EXPECT_EQ('#', buffer[3]);
}

TEST(BoundedCopy, WritesTheTerminatorAloneForSizesBelowTwo) {
    for (const std::int32_t size : {1, 0, -1, std::numeric_limits<std::int32_t>::min()}) {
        std::array<char, 2> buffer{'#', '#'};
        lstrcpyn(buffer.data(), "hello", size);
        EXPECT_EQ('\0', buffer[0]) << size;
        EXPECT_EQ('#', buffer[1]) << size;
    }
}

TEST(Truncation, LeavesOneCharacterFewerThanAsked) {
    char text[] = "abcdef";
    EXPECT_EQ(6, StringTruncate(text, 4));
    EXPECT_STREQ("abc", text);
}

TEST(Truncation, LeavesATextThatFits) {
    char text[] = "abcd";
    EXPECT_EQ(4, StringTruncate(text, 4));
    EXPECT_STREQ("abcd", text);
    EXPECT_EQ(4, StringTruncate(text, 400));
    EXPECT_STREQ("abcd", text);
}

TEST(Truncation, NeverWritesBeforeTheText) {
    for (const std::int32_t n : {1, 0, -1, std::numeric_limits<std::int32_t>::min()}) {
        char guarded[] = "#abc";
        EXPECT_EQ(3, StringTruncate(guarded + 1, n));
        EXPECT_STREQ("#", guarded) << n;
    }
}

TEST(TokenSubstitution, ReplacesEveryOccurrence) {
    EXPECT_EQ("aXYZbXYZ", Substitute("%n", "a%nb%n", "XYZ"));
    EXPECT_EQ("aXbX", Substitute("%n", "a%nb%n", "X"));
    EXPECT_EQ("ab", Substitute("%n", "a%nb%n", ""));
    EXPECT_EQ("aXYb", Substitute("%n", "a%nb", "XY"));
}

TEST(TokenSubstitution, SearchesFromTheStartAgain) {
    // Taking "ab" out of "aabb" makes another "ab".
    EXPECT_EQ("", Substitute("ab", "aabb", ""));
}

TEST(TokenSubstitution, WorksInPlaceUnlessTheTextGrows) {
    char* text = new char[6];
    std::strcpy(text, "a%nb");
    EXPECT_EQ(text, substituteToken("%n", text, "XY"));
    EXPECT_EQ(text, substituteToken("missing", text, "longer than the token"));
    EXPECT_STREQ("aXYb", text);
    char* longer = substituteToken("XY", text, "12345");
    EXPECT_STREQ("a12345b", longer);
    delete[] longer;
}

TEST(TokenSubstitution, GrowsFarBeyondTheText) {
    const std::string replacement(5000, 'x');
    EXPECT_EQ(3 * replacement.size(), Substitute("%", "%%%", replacement.c_str()).size());
}

TEST(TokenSubstitutionDeathTest, StopsWhenItWouldNeverEnd) {
    char text[] = "token";
    EXPECT_DEATH(substituteToken("k", text, "kk"), "strstr\\(replacement, token\\) == nullptr");
    EXPECT_DEATH(substituteToken("", text, "x"), "strstr\\(replacement, token\\) == nullptr");
}

TEST(LengthPrefixed, ConvertsToATerminatedText) {
    std::array<char, 256> text;
    text.fill('#');
    PtoCcpy(text.data(), P("abc").data());
    EXPECT_STREQ("abc", text.data());
    EXPECT_EQ('#', text[4]);
    PtoCcpy(text.data(), P(std::string(255, 'x')).data());
    EXPECT_EQ(std::string(255, 'x'), text.data());
}

TEST(PascalText, BecomesAZeroTerminatedOneInPlace) {
    PString text = P("abcdef");
    PtoCcpy(reinterpret_cast<char*>(text.data()), text.data());
    EXPECT_STREQ("abcdef", reinterpret_cast<const char*>(text.data()));
}

TEST(LengthPrefixed, TakesAtMost254CharactersOfAText) {
    PString string;
    EXPECT_EQ(254, CtoPcpy(string.data(), std::string(300, 'x').c_str()));
    EXPECT_EQ(254, string[0]);
    EXPECT_EQ(254, CtoPcpy(string.data(), std::string(254, 'x').c_str()));
    EXPECT_EQ(253, CtoPcpy(string.data(), std::string(253, 'y').c_str()));
    EXPECT_EQ(std::string(253, 'y'), Text(string));
    EXPECT_EQ(0, CtoPcpy(string.data(), ""));
    EXPECT_EQ(0, string[0]);
}

TEST(LengthPrefixed, ComparesWithAText) {
    EXPECT_EQ(0, PtoCcmp(P("abc").data(), "abc"));
    EXPECT_LT(PtoCcmp(P("abc").data(), "abd"), 0);
    EXPECT_GT(PtoCcmp(P("\xE9").data(), "a"), 0);
    EXPECT_LT(PtoCcmp(P("").data(), "a"), 0);
    EXPECT_EQ(0, PtoCcmp(P(std::string("ab\0c", 4)).data(), "ab"));
}

TEST(LengthPrefixed, CopiesWholeStrings) {
    PString copy{};
    pstrcpy(copy.data(), P("abc").data());
    EXPECT_EQ("abc", Text(copy));
    pstrcpy(copy.data(), P(std::string(255, 'x')).data());
    EXPECT_EQ(std::string(255, 'x'), Text(copy));
}

TEST(LengthPrefixed, CopiesBeginnings) {
    PString copy = P("#####");
    pstrcpyn(copy.data(), P("abc").data(), 2);
    EXPECT_EQ("ab", Text(copy));
    EXPECT_EQ('#', copy[3]);
    pstrcpyn(copy.data(), P("abc").data(), 9);
    EXPECT_EQ("abc", Text(copy));
    pstrcpyn(copy.data(), P("xyz").data(), 0);
    EXPECT_EQ(0, copy[0]);
    EXPECT_EQ('a', copy[1]);
    pstrcpyn(copy.data(), P("xyz").data(), -1);
    EXPECT_EQ(0, copy[0]);
}

TEST(LengthPrefixed, AppendsWhatFits) {
    PString string = P(std::string(200, 'a'));
    EXPECT_EQ(55, pstrcat(string.data(), P(std::string(100, 'b')).data()));
    EXPECT_EQ(255, string[0]);
    EXPECT_EQ(std::string(200, 'a') + std::string(55, 'b'), Text(string));
    EXPECT_EQ(0, pstrcat(string.data(), P("c").data()));

    PString exact = P(std::string(155, 'a'));
    EXPECT_EQ(100, pstrcat(exact.data(), P(std::string(100, 'b')).data()));
    EXPECT_EQ(255, exact[0]);

    PString small = P("ab");
    EXPECT_EQ(2, pstrcat(small.data(), P("cd").data()));
    EXPECT_EQ("abcd", Text(small));
}

TEST(LengthPrefixed, ComparesUnsignedBytesThenLengths) {
    EXPECT_EQ(0, pstrcmp(P("abc").data(), P("abc").data()));
    EXPECT_EQ(-1, pstrcmp(P("abc").data(), P("abd").data()));
    EXPECT_EQ(1, pstrcmp(P("\xE9").data(), P("a").data()));
    EXPECT_EQ(1, pstrcmp(P("abc").data(), P("ab").data()));
    EXPECT_EQ(-1, pstrcmp(P("").data(), P("a").data()));
    EXPECT_EQ(0, pstrcmp(P("").data(), P("").data()));
    EXPECT_EQ(1, pstrcmp(P("a").data(), P("A").data()));
}

TEST(LengthPrefixed, ComparesFoldedBytesSigned) {
    EXPECT_EQ(0, pstrcmpi(P("aBc").data(), P("AbC").data()));
    EXPECT_EQ(-1, pstrcmpi(P("\xE9").data(), P("a").data()));
    EXPECT_EQ(-1, pstrcmpi(P("\xC9").data(), P("\xE9").data()));
    EXPECT_EQ(1, pstrcmpi(P("ABC").data(), P("ab").data()));
    EXPECT_EQ(-1, pstrcmpi(P("AB").data(), P("abc").data()));
}

TEST(LengthPrefixed, FindsEndingsInAnyCase) {
    EXPECT_TRUE(PStringEndCompare(P("take.WAV").data(), P(".wav").data()));
    EXPECT_TRUE(PStringEndCompare(P("wav").data(), P("WAV").data()));
    EXPECT_TRUE(PStringEndCompare(P("take").data(), P("").data()));
    EXPECT_TRUE(PStringEndCompare(P("").data(), P("").data()));
    EXPECT_FALSE(PStringEndCompare(P("wav").data(), P(".wav").data()));
    EXPECT_FALSE(PStringEndCompare(P("take.aif").data(), P(".wav").data()));
    EXPECT_FALSE(PStringEndCompare(P("\xC9").data(), P("\xE9").data()));
}

TEST(LengthPrefixed, TruncatesToTheVeryLength) {
    PString string = P("abcdef");
    EXPECT_EQ(6, PStringTruncate(string.data(), 4));
    EXPECT_EQ("abcd", Text(string));
    EXPECT_EQ(4, PStringTruncate(string.data(), 4));
    EXPECT_EQ(4, PStringTruncate(string.data(), 300));
    EXPECT_EQ("abcd", Text(string));
    EXPECT_EQ(4, PStringTruncate(string.data(), -1));
    EXPECT_EQ(0, string[0]);
}

TEST(LengthPrefixedSearch, FindsAPartAndItsPosition) {
    EXPECT_TRUE(Search("abcd", "bc").found);
    EXPECT_EQ(2, Search("abcd", "bc").position);
    EXPECT_EQ(1, Search("abab", "ab").position);
    EXPECT_EQ(1, Search("abc", "").position);
    EXPECT_FALSE(Search("abcd", "BC").found);
    EXPECT_TRUE(PStringContains(P("abcd").data(), P("bc").data(), nullptr));
}

TEST(LengthPrefixedSearch, NeverFindsAPartAtTheVeryEnd) {
    EXPECT_FALSE(Search("abc", "c").found);
    EXPECT_EQ(0, Search("abc", "c").position);
    EXPECT_FALSE(Search("abcd", "cd").found);
}

TEST(LengthPrefixedSearch, NeverFindsAStringInItsEqual) {
    EXPECT_FALSE(Search("abc", "abc").found);
    EXPECT_EQ(0, Search("abc", "abc").position);
    EXPECT_FALSE(Search("", "").found);
    EXPECT_EQ(0, Search("", "").position);
}

TEST(LengthPrefixedSearch, LeavesThePositionWhenThePartIsLonger) {
    EXPECT_FALSE(Search("ab", "abc").found);
    EXPECT_EQ(-7, Search("ab", "abc").position);
}

}  // namespace
