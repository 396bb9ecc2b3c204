#include "utils/NameTable.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

// Eight-byte names that the table's multiplying hash throws into one slot: the steps of the hash
// taken backwards from values that agree in their upper half.
std::vector<std::string> CollidingNames(std::uint32_t count) {
    constexpr std::uint64_t multiplier = 0x9E3779B97F4A7C15;
    std::uint64_t inverse = multiplier;
    for (int i = 0; i < 6; ++i) inverse *= 2 - multiplier * inverse;
    std::vector<std::string> names;
    for (std::uint64_t low = 1; low <= count; ++low) {
        const std::uint64_t folded = (std::uint64_t{0x12345678} << 32 | low << 8) * inverse;
        const std::uint64_t product = folded ^ folded >> 32;
        const std::uint64_t word = product * inverse ^ 8;
        names.emplace_back(8, '\0');
        std::memcpy(names.back().data(), &word, 8);
    }
    return names;
}

void ExpectCounted(std::vector<std::string> const& texts, int times) {
    CNameTable table;
    for (int i = 0; i < times; ++i)
        for (std::size_t n = 0; n < texts.size(); ++n) ASSERT_EQ(n, table.Add(texts[n]));
    ASSERT_EQ(texts.size(), table.Names().size());
    for (std::size_t n = 0; n < texts.size(); ++n) {
        EXPECT_EQ(texts[n], table.Names()[n].text);
        EXPECT_EQ(static_cast<std::uint32_t>(times), table.Names()[n].nCount);
    }
}

TEST(NameTable, NumbersNamesAsTheyCome) {
    CNameTable table;
    EXPECT_EQ(0u, table.Add("Red"));
    EXPECT_EQ(1u, table.Add("Green"));
    EXPECT_EQ(0u, table.Add("Red"));
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
    ExpectCounted(CollidingNames(20000), 3);
}

TEST(NameTable, CopesWithCollidingNamesWhileItGrows) {
    std::vector<std::string> texts = CollidingNames(500);
    for (int i = 0; i < 5000; ++i) texts.push_back("name " + std::to_string(i));
    ExpectCounted(texts, 2);
}

}  // namespace
