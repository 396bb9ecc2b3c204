#include "utils/NameTable.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

// The words that the table's hash mixes into the two halves of a name.
constexpr std::uint64_t firstSecret = 0x9E3779B97F4A7C15;
constexpr std::size_t nameLength = 16;

// Names of sixteen bytes that the table's multiplying hash throws into one slot: their first half
// makes one of the factors zero.
std::vector<std::string> CollidingNames(std::uint32_t count) {
    constexpr std::uint64_t first = firstSecret ^ nameLength;
    std::vector<std::string> names;
    for (std::uint64_t last = 1; last <= count; ++last) {
        names.emplace_back(nameLength, '\0');
        std::memcpy(names.back().data(), &first, 8);
        std::memcpy(names.back().data() + 8, &last, 8);
    }
    return names;
}

void ExpectCounted(std::vector<std::string> const& texts, int times) {
    CNameTable table;
    for (int i = 0; i < times; ++i)
        for (std::size_t n = 0; n < texts.size(); ++n) ASSERT_EQ(n, table.Add(CNameKey(texts[n])));
    ASSERT_EQ(texts.size(), table.Names().size());
    for (std::size_t n = 0; n < texts.size(); ++n) {
        EXPECT_EQ(texts[n], table.Names()[n].Text());
        EXPECT_EQ(static_cast<std::uint32_t>(times), table.Names()[n].nCount);
    }
}

TEST(NameTable, NumbersNamesAsTheyCome) {
    CNameTable table;
    EXPECT_EQ(0u, table.Add(CNameKey("Red")));
    EXPECT_EQ(1u, table.Add(CNameKey("Green")));
    EXPECT_EQ(0u, table.Add(CNameKey("Red")));
    ASSERT_EQ(2u, table.Names().size());
    EXPECT_EQ(2u, table.Names()[0].nCount);
    EXPECT_EQ(1u, table.Names()[1].nCount);
}

TEST(NameTable, TellsNamesOfEveryLengthApart) {
    std::vector<std::string> texts;
    for (std::size_t length = 0; length < 40; ++length)
        for (std::size_t at = 0; at < length; ++at) {
            std::string text(length, 'a');
            text[at] = 'b';
            texts.push_back(text);
        }
    ExpectCounted(texts, 2);
}

TEST(NameTable, GrowsWithItsNames) {
    std::vector<std::string> texts;
    for (int i = 0; i < 100000; ++i) texts.push_back("name " + std::to_string(i));
    ExpectCounted(texts, 2);
}

TEST(NameTable, CopesWithNamesMadeToCollide) {
    const std::vector<std::string> names = CollidingNames(2);
    ASSERT_EQ(CNameKey(names[0]).Hash(), CNameKey(names[1]).Hash());
    ExpectCounted(CollidingNames(20000), 3);
}

TEST(NameTable, CopesWithCollidingNamesWhileItGrows) {
    std::vector<std::string> texts = CollidingNames(500);
    for (int i = 0; i < 5000; ++i) texts.push_back("name " + std::to_string(i));
    ExpectCounted(texts, 2);
}

}  // namespace
