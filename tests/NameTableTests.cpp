#include "utils/NameTable.h"

#include <gtest/gtest.h>

#include <string>
#include <unordered_map>
#include <utility>

namespace {

// Every text once and again, `times` times: the table numbers them from 1 as they come.
void ExpectCounted(CNameTable table, std::vector<std::string> const& texts, int times) {
    for (int i = 0; i < times; ++i)
        for (std::size_t n = 0; n < texts.size(); ++n) ASSERT_EQ(n + 1, table.Add(texts[n]));
    ASSERT_EQ(texts.size() + 1, table.Names().size());
    for (std::size_t n = 0; n < texts.size(); ++n) {
        EXPECT_EQ(texts[n], table.Names()[n + 1].text);
        EXPECT_EQ(static_cast<std::uint32_t>(times), table.Names()[n + 1].nCount);
    }
}

// Two names of one hash, found among many.
std::pair<std::string, std::string> CollidingNames(std::uint64_t seed) {
    std::unordered_map<std::uint32_t, std::string> known;
    for (int i = 0; i < 2000000; ++i) {
        std::string name = "n" + std::to_string(i);
        const auto [found, isNew] = known.try_emplace(CNameTable::Hash(name, seed), name);
        if (!isNew) return {found->second, name};
    }
    return {};
}

TEST(NameTable, NumbersNamesAsTheyCome) {
    CNameTable table;
    EXPECT_EQ(1u, table.Add("Red"));
    EXPECT_EQ(2u, table.Add("Green"));
    EXPECT_EQ(1u, table.Add("Red"));
    ASSERT_EQ(3u, table.Names().size());
    EXPECT_EQ(2u, table.Names()[1].nCount);
    EXPECT_EQ(1u, table.Names()[2].nCount);
}

TEST(NameTable, GivesTheEmptyNameTheFirstPlace) {
    CNameTable table;
    EXPECT_EQ(0u, table.Add(""));
    EXPECT_EQ(1u, table.Add("Red"));
    EXPECT_EQ(0u, table.Add({}));
    EXPECT_EQ(2u, table.Names()[0].nCount);
    EXPECT_EQ("", table.Names()[0].text);
}

TEST(NameTable, EndsANameAtItsZeroByte) {
    CNameTable table;
    EXPECT_EQ(1u, table.Add("Red"));
    EXPECT_EQ(1u, table.Add(std::string_view("Red\0der", 7)));
    EXPECT_EQ(0u, table.Add(std::string_view("\0Red", 4)));
}

TEST(NameTable, TellsNamesOfEveryLengthApart) {
    std::vector<std::string> texts;
    for (std::size_t length = 1; length < 40; ++length)
        for (std::size_t at = 0; at < length; ++at) {
            std::string text(length, 'a');
            text[at] = 'b';
            texts.push_back(text);
        }
    ExpectCounted(CNameTable(), texts, 2);
}

TEST(NameTable, FindsNamesInAnyOrder) {
    CNameTable table;
    const std::vector<std::string> texts{"Red", "Green", "Blue", "Alpha", "Blue", "Red", "Red"};
    for (int i = 0; i < 100; ++i)
        for (std::string const& text : texts) ASSERT_EQ(text, table.Names()[table.Add(text)].text);
    EXPECT_EQ(5u, table.Names().size());
    EXPECT_EQ(300u, table.Names()[1].nCount);
}

TEST(NameTable, GrowsWithItsNames) {
    std::vector<std::string> texts;
    for (int i = 0; i < 100000; ++i) texts.push_back("name " + std::to_string(i));
    ExpectCounted(CNameTable(), texts, 2);
}

TEST(NameTable, TellsNamesOfOneHashApart) {
    const auto [first, second] = CollidingNames(1);
    ASSERT_FALSE(first.empty());
    ASSERT_EQ(CNameTable::Hash(first, 1), CNameTable::Hash(second, 1));
    ExpectCounted(CNameTable(1), {first, second, "another"}, 3);
}

TEST(NameTable, CannotBeFilledWithNamesOfOneHashBeforehand) {
    const auto [first, second] = CollidingNames(1);
    EXPECT_NE(CNameTable::Hash(first, 2), CNameTable::Hash(second, 2));
}

}  // namespace
