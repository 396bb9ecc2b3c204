#include "host/PatternMatcher.h"

#include <gtest/gtest.h>

#include <lua.hpp>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>

#include "tests/HostFixture.h"

namespace {

bool Always(void*) {
    return true;
}

SearchResult Find(std::string const& strPattern, std::string const& strText, CMatch& match,
                  std::size_t nFrom = 0) {
    return SearchPattern(CPattern(strPattern, true), strText, nFrom, strText.size() + 1, match,
                         Always, nullptr);
}

std::string Whole(std::string const& strPattern, std::string const& strText) {
    CMatch match;
    if (Find(strPattern, strText, match) != SearchResult::Found) return "none";
    return strText.substr(match.m_nStart, match.m_nEnd - match.m_nStart);
}

}  // namespace

TEST(CPatternMatcherTest, FindsWhatThePatternDescribes) {
    EXPECT_EQ(Whole("l+", "hello"), "ll");
    EXPECT_EQ(Whole("^l", "hello"), "none");
    EXPECT_EQ(Whole("o$", "hello"), "o");
    EXPECT_EQ(Whole("%d+%.?%d*", "is 3.14."), "3.14");
    EXPECT_EQ(Whole("<.->", "<a><b>"), "<a>");
    EXPECT_EQ(Whole("<.*>", "<a><b>"), "<a><b>");
    EXPECT_EQ(Whole("%b()", "f(a(b)c)d)"), "(a(b)c)");
    EXPECT_EQ(Whole("%f[%a]%a+", "12 word"), "word");
    EXPECT_EQ(Whole("(%a)%1", "abccd"), "cc");
    EXPECT_EQ(Whole("[^%s,]+", "  a,b"), "a");
    EXPECT_EQ(Whole("[]]", "a]"), "]");
    EXPECT_EQ(Whole("[a%-z]+", "b-a"), "-a");
    EXPECT_EQ(Whole("", "abc"), "");
}

TEST(CPatternMatcherTest, MalformedPatternsAreRefused) {
    for (char const* pszPattern : {"%", "[", "[a", "[^", "[%", "(", "(a", ")", "a)", "%1", "(%1)",
                                   "%b", "%bx", "%f", "%fa", "%0", "()%2"})
        EXPECT_THROW(CPattern(pszPattern, true), std::invalid_argument) << pszPattern;
    std::string strMany;
    for (int n = 0; n < 33; ++n) strMany += "()";
    EXPECT_THROW(CPattern(strMany, true), std::invalid_argument);
    EXPECT_THROW(CPattern(std::string(9000, 'a'), true), std::invalid_argument);
}

TEST(CPatternMatcherTest, ASearchEndsWhenItIsNoLongerAllowed) {
    int nQuestions = 0;
    auto const twice = [](void* pCount) { return ++*static_cast<int*>(pCount) < 3; };
    CMatch match;
    std::string const strText(1000, 'a');
    EXPECT_EQ(
        SearchPattern(CPattern(".-.-.-.-.-b", true), strText, 0, 2000, match, twice, &nQuestions),
        SearchResult::Stopped);
    EXPECT_EQ(nQuestions, 3);
    nQuestions = 0;
    std::string const strLong(1000000, 'a');
    EXPECT_EQ(SearchPlain(std::string(500000, 'a') + "b", strLong, 0, match, twice, &nQuestions),
              SearchResult::Stopped);
    EXPECT_EQ(nQuestions, 3);
}

TEST(CPatternMatcherTest, ManyChoicesInARowAreTooComplex) {
    CMatch match;
    std::string strPattern;
    for (int n = 0; n < 300; ++n) strPattern += "a*";
    EXPECT_EQ(Find(strPattern + "b", std::string(500, 'a'), match), SearchResult::TooComplex);
}

/// The sandbox's text functions against those of the plain interpreter.
class CPatternComparisonTest : public CHostFixture {
protected:
    /// What a script prints in the plain interpreter, without any sandbox.
    static std::string Plain(std::string const& strScript) {
        std::unique_ptr<lua_State, decltype(&lua_close)> state(luaL_newstate(), &lua_close);
        luaL_openlibs(state.get());
        std::string const strCollect =
            "local out = {} local function print(...) local t = table.pack(...) "
            "for n = 1, t.n do t[n] = tostring(t[n]) end "
            "out[#out + 1] = table.concat(t, '\\t') .. '\\n' end " +
            strScript + " return table.concat(out)";
        if (luaL_dostring(state.get(), strCollect.c_str()) != LUA_OK)
            return std::string("error: ") + lua_tostring(state.get(), -1);
        return lua_tostring(state.get(), -1);
    }
};

TEST_F(CPatternComparisonTest, TextFunctionsGiveWhatThePlainInterpreterGives) {
    for (
        char const* pszScript :
        {"print(('hello world'):find('o', 6), ('hello'):find('xyz'), ('a.b'):find('.', 1, true))",
         "print(('hello'):find(''), ('hello'):find('', 6), ('hello'):find('', 7))",
         "print(('hello'):find('l', -2), ('hello'):find('h', -100), ('a'):find('a', 0))",
         "print(('key = value'):match('^(%w+)%s*=%s*(%w+)$'), ('abc'):match('()b()'))",
         "print(('  trim  '):match('^%s*(.-)%s*$') .. '|')",
         "for w in ('one two  three'):gmatch('%a+') do print(w) end",
         "for k, v in ('a=1, b=2'):gmatch('(%w+)=(%w+)') do print(k, v) end",
         "for a in ('abc'):gmatch('') do print(a) end",
         "for a in ('aXbX'):gmatch('X?') do print('[' .. a .. ']') end",
         "for a in ('^a^a'):gmatch('^a') do print(a) end",
         "for a in ('abcd'):gmatch('%a', 3) do print(a) end",
         "for a in ('abcd'):gmatch('%a', -1) do print(a) end",
         "print(('hello'):gsub('l', 'L'))",
         "print(('hello'):gsub('l', 'L', 1))",
         "print(('hello'):gsub('l', 'L', 0))",
         "print(('hello'):gsub('', '-'))",
         "print(('hello world'):gsub('o', '%0%0'))",
         "print(('hello world'):gsub('(%w+) (%w+)', '%2 %1'))",
         "print(('hello'):gsub('%w', '%%%1'))",
         "print(('abc'):gsub('%w', {a = 'x', b = false, c = 3}))",
         "print(('abc'):gsub('(b)()', function(a, n) return a .. n end))",
         "print(('abc'):gsub('%w', function(c) if c ~= 'b' then return end return 7 end))",
         "print(('abc abc'):gsub('^abc', 'x'))",
         "print(('abc'):gsub('%w-', 'x'))",
         "print(('abc'):gsub('%w*', 'x'))",
         "print(('a b c'):gsub(' ?', '_'))",
         "print(('x'):rep(3), ('x'):rep(0), ('x'):rep(-1), ('ab'):rep(3, ','), (''):rep(5, '-'))",
         "print(pcall(string.gsub, 'x', 'x', '%2') == false)",
         "print(table.concat({1, 2, 'x'}, ', '), table.concat({}, 'x'), table.concat({1, 2, 3}, "
         "'-', 2, 3))",
         "print(table.unpack({1, 2, 3}, 2), table.unpack({}, 1, 2))",
         "local t = {1, 2, 3} table.insert(t, 4) table.insert(t, 1, 0) print(table.concat(t, ' '))",
         "local t = {1, 2, 3} print(table.remove(t), table.remove(t, 1), #t, table.remove({}), #t)",
         "local t = {1, 2, 3} print(table.remove(t, 4), #t, pcall(table.remove, t, 6) == false)",
         "local t = table.move({1, 2, 3}, 1, 3, 2) print(table.concat(t, ' '))",
         "local t = table.move({1, 2, 3}, 2, 3, 1) print(table.concat(t, ' '))",
         "local t = table.move({1, 2, 3}, 1, 3, 3, {9, 9}) print(table.concat(t, ' '))",
         "local t = {5, 2, 8, 1, 9, 3} table.sort(t) print(table.concat(t, ' '))",
         "local t = {5, 2, 8, 1} table.sort(t, function(a, b) return a > b end) "
         "print(table.concat(t, ' '))",
         "local t = {'b', 'a', 'C'} table.sort(t) print(table.concat(t, ' '))",
         "print(table.pack(1, nil, 3).n, select('#', table.unpack({n = 3}, 1, 3)))",
         "print(pcall(error, {}) == false, select('#', pcall(function() return 1, nil, nil end)))",
         "print(xpcall(function(a) return a end, print, 5))",
         "print(xpcall(error, function(m) return 'handled ' .. m end, 'x'))"})
        EXPECT_EQ(Printed(pszScript), Plain(pszScript)) << pszScript;
}

TEST_F(CPatternComparisonTest, RandomPatternsGiveWhatThePlainInterpreterGives) {
    static constexpr char const* kItems[] = {"a",  "b",     ".",  "%a",   "%d",     "[ab]", "[^a]",
                                             "%s", "[a-c]", "()", "%b()", "%f[%a]", "%1",   "%W"};
    static constexpr char const* kRepeats[] = {"", "", "", "*", "+", "-", "?"};
    static constexpr char const* kLetters[] = {"a", "b", "c", "1", " ", "(", ")"};
    std::mt19937 random(7);
    auto const pick = [&](auto const& list) { return list[random() % std::size(list)]; };
    for (int n = 0; n < 3000; ++n) {
        std::string strPattern = random() % 8 == 0 ? "^" : "";
        bool const fCapture = random() % 2 == 0;
        if (fCapture) strPattern += std::string("(") + pick(kItems) + pick(kRepeats) + ")";
        for (unsigned k = random() % 4; k > 0; --k) {
            std::string const strItem = pick(kItems);
            if (strItem == "%1" && !fCapture) continue;
            strPattern += strItem + pick(kRepeats);
        }
        if (random() % 8 == 0) strPattern += "$";
        std::string strText;
        for (unsigned k = random() % 12; k > 0; --k) strText += pick(kLetters);
        std::string const strCall = "'" + strText + "', '" + strPattern + "'";
        std::string const strScript = "print(pcall(string.find, " + strCall +
                                      ")) print(pcall(string.gsub, " + strCall +
                                      ", '<%0>')) local s = '' pcall(function() for a, b in "
                                      "string.gmatch(" +
                                      strCall +
                                      ") do s = s .. '[' .. tostring(a) .. "
                                      "tostring(b) .. ']' end end) print(s)";
        std::string const strExpected = Plain(strScript);
        if (strExpected.find("false") != std::string::npos) {
            EXPECT_NE(Printed(strScript).find("false"), std::string::npos) << strCall;
            continue;
        }
        ASSERT_EQ(Printed(strScript), strExpected) << strCall;
    }
}
