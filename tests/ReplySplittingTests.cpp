#include <gtest/gtest.h>

#include <clocale>

#include "link/TANClientInterProcess.h"

namespace {

using Values = std::vector<std::string>;

Values Split(std::string reply) {
    CTANClientInterProcess client;
    Values values{"left over"};
    client.SplitResult(reply, &values);
    return values;
}

TEST(ReplySplitting, CountLineIsNotAValue) {
    EXPECT_EQ(Split("2\nA\nB\n"), (Values{"A", "B"}));
}

TEST(ReplySplitting, LastLineNeedsNoLineEnd) {
    EXPECT_EQ(Split("2\nA\nB"), (Values{"A", "B"}));
}

TEST(ReplySplitting, WrongCountGivesNoValues) {
    EXPECT_EQ(Split("3\nA\nB\n"), Values{});
    EXPECT_EQ(Split("1\nA\nB\n"), Values{});
    EXPECT_EQ(Split("abc\nA\n"), Values{});
    EXPECT_EQ(Split("-1\nA\n"), Values{});
}

TEST(ReplySplitting, RepliesWithoutValuesAreNoError) {
    EXPECT_EQ(Split("0\n"), Values{});
    EXPECT_EQ(Split("abc\n"), Values{});
    EXPECT_EQ(Split("5"), Values{});
    EXPECT_EQ(Split(""), Values{});
    EXPECT_EQ(Split("\n"), Values{});
}

TEST(ReplySplitting, CarriageReturnsAndLineFeedsEndALineInAnyOrder) {
    EXPECT_EQ(Split("2\r\nA\r\nB\r\n"), (Values{"A", "B"}));
    EXPECT_EQ(Split("2\n\rA\n\rB\n\r"), (Values{"A", "B"}));
    EXPECT_EQ(Split("2\r\r\n\rA\rB"), (Values{"A", "B"}));
}

TEST(ReplySplitting, EmptyLineIsAnEmptyValue) {
    EXPECT_EQ(Split("3\nA\n\nB\n"), (Values{"A", "", "B"}));
    EXPECT_EQ(Split("3\r\nA\r\n\r\nB"), (Values{"A", "", "B"}));
    EXPECT_EQ(Split("2\r\nA\r\n\r\nB"), Values{});
    EXPECT_EQ(Split("1\n\n"), Values{""});
}

TEST(ReplySplitting, LongLineIsCutIntoPieces) {
    const Values values = Split("2\n" + std::string(5000, 'x') + "\n");
    ASSERT_EQ(values.size(), 2u);
    EXPECT_EQ(values[0], std::string(4095, 'x'));
    EXPECT_EQ(values[1], std::string(905, 'x'));
}

TEST(ReplySplitting, LineOfExactlyTheLimitIsOneValue) {
    EXPECT_EQ(Split("2\n" + std::string(4095, 'x') + "\nB\n"),
              (Values{std::string(4095, 'x'), "B"}));
    EXPECT_EQ(Split("3\n" + std::string(4096, 'x') + "\nB\n"),
              (Values{std::string(4095, 'x'), "x", "B"}));
}

TEST(ReplySplitting, LimitHoldsForTheCountLineToo) {
    const std::string strZeros(4094, '0');
    EXPECT_EQ(Split(strZeros + "2A\nB\n"), (Values{"A", "B"}));
    EXPECT_EQ(Split(strZeros + "1\nA\n"), Values{"A"});
}

TEST(ReplySplitting, ReadsOnlyLeadingDigitsOfTheCount) {
    EXPECT_EQ(Split(" +2 tracks\nA\nB\n"), (Values{"A", "B"}));
    EXPECT_EQ(Split("2.9\nA\nB\n"), (Values{"A", "B"}));
}

TEST(ReplySplitting, CountIsKeptIn32Bits) {
    EXPECT_EQ(Split("4294967298\nA\nB\n"), (Values{"A", "B"}));
}

TEST(ReplySplitting, StopsAtANul) {
    EXPECT_EQ(Split(std::string("1\nA\0B\n", 6)), Values{"A"});
}

TEST(ReplySplitting, MegabytesOfLineEndsStayWithinBounds) {
    EXPECT_EQ(Split(std::string(4 << 20, '\n')), Values{});
    EXPECT_EQ(Split(std::string(4 << 20, '\r')), Values{});
}

}  // namespace
