#include "utils/ParameterBlock.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <typeinfo>

namespace {

struct CIdleProgress : CProgress {
    bool Progress(unsigned long) override { return false; }
};

void Increment(void* counter) {
    ++*static_cast<int*>(counter);
}

// A block with one parameter of every type that has an image, and a nested block.
CParameterBlock Sample() {
    CParameterBlock nested;
    nested.AddParameter("Mod", 1);
    nested.AddParameter("CompID", 42);
    CParameterBlock block;
    block.AddParameter("Text", "value");
    block.AddParameter("Int", -3);
    block.AddParameter("Double", 0.5);
    block.AddParameter("UInt64", 5ULL);
    block.AddParameter("SInt64", -5LL);
    block.AddParameter("Bool", true);
    block.AddParameter("Float", 1.5f);
    block.AddParameter("Code", &nested);
    return block;
}

// A block in which `depth` blocks nest, built from the outside in.
std::unique_ptr<CParameterBlock> Nested(int depth) {
    auto outer = std::make_unique<CParameterBlock>();
    const CParameterBlock empty;
    CParameterBlock* inner = outer.get();
    for (int i = 0; i < depth; ++i) {
        inner->AddParameter("Level", i);
        inner->AddParameter("Deeper", &empty);
        EXPECT_TRUE(inner->FindParameter("Deeper", &inner));
    }
    return outer;
}

TEST(Block, IsEmptyWhenMade) {
    const CParameterBlock block;
    EXPECT_TRUE(block.parameters.empty());
    EXPECT_EQ("", block.name);
    EXPECT_EQ(noToken, block.token);
    EXPECT_EQ(nullptr, block.progress);
    EXPECT_EQ(0u, block.progressTotal);
    EXPECT_EQ("Block", block.GetString());
}

TEST(Block, AppendsInOrder) {
    const CParameterBlock block = Sample();
    ASSERT_EQ(8u, block.parameters.size());
    EXPECT_EQ("Text", block.parameters.front()->name);
    EXPECT_EQ("Code", block.parameters.back()->name);
    EXPECT_EQ(6u, block.parameters.back()->type);
}

TEST(Block, KeepsBothOfTwoEqualNames) {
    CParameterBlock block;
    block.AddParameter("A", 1);
    block.AddParameter("A", 2);
    EXPECT_EQ(2u, block.parameters.size());
    int found = 0;
    EXPECT_TRUE(block.FindParameter("A", &found, 0));
    EXPECT_EQ(1, found);
}

TEST(Block, FindsEveryTypeOfValue) {
    CParameterBlock block = Sample();
    block.AddParameter("Id", KEL::FileIdType{1, 2});
    std::string text;
    EXPECT_TRUE(block.FindParameter("Text", &text, nullptr));
    EXPECT_EQ("value", text);
    int number = 0;
    EXPECT_TRUE(block.FindParameter("Int", &number, 7));
    EXPECT_EQ(-3, number);
    double real = 0;
    EXPECT_TRUE(block.FindParameter("Double", &real, 7.0));
    EXPECT_EQ(0.5, real);
    unsigned long long unsignedLong = 0;
    EXPECT_TRUE(block.FindParameter("UInt64", &unsignedLong, 7));
    EXPECT_EQ(5u, unsignedLong);
    long long signedLong = 0;
    EXPECT_TRUE(block.FindParameter("SInt64", &signedLong, 7));
    EXPECT_EQ(-5, signedLong);
    bool flag = false;
    EXPECT_TRUE(block.FindParameter("Bool", &flag, false));
    EXPECT_TRUE(flag);
    float single = 0;
    EXPECT_TRUE(block.FindParameter("Float", &single, 7.0f));
    EXPECT_EQ(1.5f, single);
    KEL::FileIdType id;
    EXPECT_TRUE(block.FindParameter("Id", &id));
    EXPECT_EQ((KEL::FileIdType{1, 2}), id);
    CParameterBlock* nested = nullptr;
    EXPECT_TRUE(block.FindParameter("Code", &nested));
    EXPECT_EQ(block.parameters[7], nested);
}

TEST(Block, FallsBackWhenNothingIsFound) {
    const CParameterBlock block;
    std::string text = "old";
    EXPECT_FALSE(block.FindParameter("X", &text, nullptr));
    EXPECT_EQ("old", text);
    EXPECT_FALSE(block.FindParameter("X", &text, "fallback"));
    EXPECT_EQ("fallback", text);
    int number = 0;
    EXPECT_FALSE(block.FindParameter("X", &number, 7));
    EXPECT_EQ(7, number);
    double real = 0;
    EXPECT_FALSE(block.FindParameter("X", &real, 7.5));
    EXPECT_EQ(7.5, real);
    unsigned long long unsignedLong = 0;
    EXPECT_FALSE(block.FindParameter("X", &unsignedLong, 7));
    EXPECT_EQ(7u, unsignedLong);
    long long signedLong = 0;
    EXPECT_FALSE(block.FindParameter("X", &signedLong, -7));
    EXPECT_EQ(-7, signedLong);
    bool flag = false;
    EXPECT_FALSE(block.FindParameter("X", &flag, true));
    EXPECT_TRUE(flag);
    float single = 0;
    EXPECT_FALSE(block.FindParameter("X", &single, 7.5f));
    EXPECT_EQ(7.5f, single);
    KEL::FileIdType id{1, 2};
    EXPECT_FALSE(block.FindParameter("X", &id));
    EXPECT_EQ(KEL::FileIdType(), id);
    CBinaryBlock other(nullptr, nullptr, nullptr);
    CBinaryBlock* binary = &other;
    EXPECT_FALSE(block.FindParameter("X", &binary));
    EXPECT_EQ(nullptr, binary);
    CParameterBlock parent;
    CParameterBlock* nested = &parent;
    EXPECT_FALSE(block.FindParameter("X", &nested));
    EXPECT_EQ(nullptr, nested);
}

TEST(Block, PassesOverTheSameNameOfAnotherType) {
    CParameterBlock block;
    block.AddParameter("Code", "text");
    int number = 0;
    EXPECT_FALSE(block.FindParameter("Code", &number, 7));
    EXPECT_EQ(7, number);
    block.AddParameter("Code", 3);
    EXPECT_TRUE(block.FindParameter("Code", &number, 7));
    EXPECT_EQ(3, number);
    EXPECT_FALSE(block.FindParameter("code", &number, 7));
}

TEST(Block, TakesANullNameAsTheEmptyOne) {
    CParameterBlock block;
    block.AddParameter(nullptr, 3);
    int number = 0;
    EXPECT_TRUE(block.FindParameter("", &number, 7));
    EXPECT_TRUE(block.FindParameter(nullptr, &number, 7));
    EXPECT_EQ(3, number);
}

TEST(Block, TellsWhetherBoolsAndIntsExist) {
    const CParameterBlock block = Sample();
    EXPECT_TRUE(block.CheckBoolParameter("Bool"));
    EXPECT_FALSE(block.CheckBoolParameter("Int"));
    EXPECT_TRUE(block.CheckIntParameter("Int"));
    EXPECT_FALSE(block.CheckIntParameter("Bool"));
    EXPECT_FALSE(block.CheckIntParameter("Mod"));
}

TEST(Block, WalksTheBlocksOfOneName) {
    CParameterBlock block;
    const CParameterBlock empty;
    block.AddParameter("Comp", 1);
    block.AddParameter("Comp", &empty);
    block.AddParameter("Other", &empty);
    block.AddParameter("Comp", &empty);
    CParameterBlock* found = nullptr;
    CParameterBlock::position where{};
    ASSERT_TRUE(block.FindFirstParameter("Comp", &found, &where));
    EXPECT_EQ(block.parameters[1], found);
    ASSERT_TRUE(block.FindNextParameter("Comp", &found, &where));
    EXPECT_EQ(block.parameters[3], found);
    const CParameterBlock::position last = where;
    EXPECT_FALSE(block.FindNextParameter("Comp", &found, &where));
    EXPECT_EQ(block.parameters[3], found);
    EXPECT_EQ(last, where);
    EXPECT_FALSE(block.FindFirstParameter("Missing", &found, &where));
    EXPECT_EQ(block.parameters[3], found);
    EXPECT_EQ(last, where);
}

TEST(Block, SharesBinaryBlocks) {
    int freed = 0;
    auto* binary = new CBinaryBlock(&freed, Increment, nullptr);
    {
        CParameterBlock block;
        block.AddParameter("B", binary);
        EXPECT_EQ(1, binary->m_nReferenceCount);
        CBinaryBlock* found = nullptr;
        EXPECT_TRUE(block.FindParameter("B", &found));
        EXPECT_EQ(binary, found);
        EXPECT_EQ(1, binary->m_nReferenceCount);
        const CParameterBlock copy(block);
        EXPECT_EQ(2, binary->m_nReferenceCount);
        EXPECT_FALSE(copy == block);
        EXPECT_FALSE(block == block);
    }
    EXPECT_EQ(1, freed);
}

TEST(Block, ClearsItself) {
    CParameterBlock block = Sample();
    block.parameters.push_back(nullptr);
    block.Clear();
    EXPECT_TRUE(block.parameters.empty());
    block.Clear();
    block.AddParameter("A", 1);
    EXPECT_EQ(1u, block.parameters.size());
}

TEST(BlockCopy, IsDeep) {
    CParameterBlock original = Sample();
    CParameterBlock copy(original);
    EXPECT_TRUE(copy == original);
    CParameterBlock* nested = nullptr;
    ASSERT_TRUE(original.FindParameter("Code", &nested));
    nested->Clear();
    EXPECT_FALSE(copy == original);
}

TEST(BlockCopy, KeepsNameAndTokenButNotProgress) {
    CIdleProgress progress;
    CParameterBlock original(&progress, 5);
    original.name = "Top";
    original.token = 3;
    const CParameterBlock fromPointer(static_cast<CParameter const*>(&original));
    const CParameterBlock fromReference(original);
    for (CParameterBlock const* copy : {&fromPointer, &fromReference}) {
        EXPECT_EQ("Top", copy->name);
        EXPECT_EQ(3u, copy->token);
        EXPECT_EQ(nullptr, copy->progress);
        EXPECT_EQ(0u, copy->progressTotal);
    }
}

TEST(BlockCopy, UnderAnotherNameHasNoToken) {
    CParameterBlock original = Sample();
    original.name = "Top";
    original.token = 3;
    const CParameterBlock copy("Other", &original);
    EXPECT_EQ("Other", copy.name);
    EXPECT_EQ(noToken, copy.token);
    EXPECT_EQ(8u, copy.parameters.size());
    EXPECT_EQ("", CParameterBlock(nullptr, &original).name);
}

TEST(BlockCopy, KeepsTheTokensOfNestedBlocksOnly) {
    CParameterBlock original = Sample();
    for (CParameter* parameter : original.parameters) parameter->token = 4;
    CParameterBlock copy;
    copy.CopyParameters(&original);
    ASSERT_EQ(8u, copy.parameters.size());
    for (CParameter* parameter : copy.parameters)
        EXPECT_EQ(parameter->type == 6 ? 4u : noToken, parameter->token);
    CParameterBlock parent;
    parent.AddParameter("Child", &original);
    EXPECT_EQ(noToken, parent.parameters[0]->token);
}

TEST(BlockCopyDeathTest, NeedsABlock) {
    CIntParameter number("X", 1);
    EXPECT_DEATH(CParameterBlock(static_cast<CParameter*>(&number)), "source->type == Class::tag");
}

TEST(BlockAssignment, KeepsNameAndToken) {
    CParameterBlock source = Sample();
    source.name = "Source";
    source.token = 1;
    CParameterBlock target;
    target.name = "Target";
    target.token = 2;
    target = source;
    EXPECT_EQ("Target", target.name);
    EXPECT_EQ(2u, target.token);
    EXPECT_EQ(8u, target.parameters.size());
}

TEST(BlockAssignment, ThroughTheBaseTakesTheName) {
    CParameterBlock source = Sample();
    source.name = "Source";
    source.token = 1;
    CParameterBlock target;
    target.token = 2;
    CParameter& base = target;
    base = source;
    EXPECT_EQ("Source", target.name);
    EXPECT_EQ(2u, target.token);
    EXPECT_TRUE(target == source);
    CIntParameter number("X", 1);
    EXPECT_THROW(base = number, std::bad_cast);
    EXPECT_EQ("Source", target.name);
    EXPECT_EQ(8u, target.parameters.size());
}

TEST(BlockAssignment, MayTakeFromItself) {
    CParameterBlock block = Sample();
    const CParameterBlock before(block);
    CParameterBlock& same = block;
    block = same;
    EXPECT_TRUE(block == before);
    CParameterBlock* nested = nullptr;
    ASSERT_TRUE(block.FindParameter("Code", &nested));
    block = *nested;
    ASSERT_EQ(2u, block.parameters.size());
    EXPECT_EQ("Mod", block.parameters[0]->name);
}

TEST(BlockAssignment, MayAddABlockToItself) {
    CParameterBlock block = Sample();
    block.AddParameter("Self", &block);
    ASSERT_EQ(9u, block.parameters.size());
    CParameterBlock* self = nullptr;
    ASSERT_TRUE(block.FindParameter("Self", &self));
    EXPECT_EQ(8u, self->parameters.size());
}

TEST(BlockEquality, NeedsTheSameParametersInTheSameOrder) {
    CParameterBlock left, right;
    left.AddParameter("A", 1);
    left.AddParameter("B", 2);
    right.AddParameter("B", 2);
    right.AddParameter("A", 1);
    EXPECT_FALSE(left == right);
    right.AddParameter("B", 2);
    EXPECT_FALSE(left == right);
    EXPECT_FALSE(right == left);
    EXPECT_TRUE(CParameterBlock() == CParameterBlock());
}

TEST(BlockEquality, NeedsTheSameName) {
    CParameterBlock left, right;
    left.name = "A";
    EXPECT_FALSE(left == right);
    EXPECT_FALSE(left == CIntParameter("A", 1));
    right.name = "A";
    EXPECT_TRUE(left == right);
    right.token = 4;
    right.progressTotal = 3;
    EXPECT_TRUE(left == right);
}

TEST(BlockEquality, LooksIntoNestedBlocks) {
    CParameterBlock left = Sample(), right = Sample();
    EXPECT_TRUE(left == right);
    CParameterBlock* nested = nullptr;
    ASSERT_TRUE(right.FindParameter("Code", &nested));
    static_cast<CIntParameter*>(nested->parameters[1])->value = 43;
    EXPECT_FALSE(left == right);
    static_cast<CIntParameter*>(nested->parameters[1])->value = 42;
    EXPECT_TRUE(left == right);
    nested->name = "Edoc";
    EXPECT_FALSE(left == right);
}

TEST(NullEntries, ArePassedOverByEverything) {
    CParameterBlock plain = Sample(), block = Sample();
    block.parameters.insert(block.parameters.begin(), nullptr);
    block.parameters.insert(block.parameters.begin() + 4, nullptr);
    block.parameters.push_back(nullptr);

    EXPECT_TRUE(block == plain);
    EXPECT_TRUE(plain == block);
    EXPECT_EQ(plain.GetSize(), block.GetSize());
    std::vector<unsigned char> expected(plain.GetSize()), saved(block.GetSize());
    EXPECT_EQ(plain.Save(0, expected.data()), block.Save(0, saved.data()));
    EXPECT_EQ(expected, saved);

    int number = 0;
    EXPECT_TRUE(block.FindParameter("Int", &number, 0));
    CParameterBlock* nested = nullptr;
    CParameterBlock::position where{};
    EXPECT_TRUE(block.FindFirstParameter("Code", &nested, &where));
    EXPECT_FALSE(block.FindNextParameter("Code", &nested, &where));
    EXPECT_FALSE(block.CheckIntParameter("Missing"));

    const CParameterBlock copy(block);
    EXPECT_EQ(8u, copy.parameters.size());
    std::map<std::string, int> counts;
    block.TokenizeNames(counts);
    EXPECT_EQ(10u, counts.size());
    block.SetTokens(counts);
    EXPECT_EQ(1u, block.parameters[1]->token);
}

TEST(DeepNesting, NeedsNoCallStack) {
    constexpr int depth = 100000;
    const std::unique_ptr<CParameterBlock> block = Nested(depth);
    // Each level: two tags, two names, a number and a count.
    EXPECT_EQ(4u + 4 + depth * (4u + 9 + 4 + 4 + 10 + 4), block->GetSize());
    const CParameterBlock copy(*block);
    EXPECT_TRUE(copy == *block);
    CParameterBlock other;
    other.CopyParameters(&copy);
    std::map<std::string, int> counts;
    other.TokenizeNames(counts);
    EXPECT_EQ(depth, counts["Level"]);
    EXPECT_EQ(depth, counts["Deeper"]);
    other.SetTokens({{"Level", 1}, {"Deeper", 2}});
    EXPECT_EQ(4u + 4 + depth * (4u + 1 + 4 + 4 + 1 + 4), other.GetSize());
}

TEST(DeepNesting, FreesEveryLevelOfAWideTree) {
    int freed = 0;
    {
        CParameterBlock block;
        for (int level = 0; level < 6; ++level) {
            const CParameterBlock inner(block);
            block.AddParameter("B", new CBinaryBlock(&freed, Increment, nullptr));
            for (int i = 0; i < 3; ++i) block.AddParameter("Inner", &inner);
            block.parameters.push_back(nullptr);
        }
    }
    EXPECT_EQ(6, freed);
}

TEST(ParameterMemory, IsFreedInAnyOrderAndOnAnyThread) {
    CParameterBlock block = Sample();
    for (int i = 0; i < 2000; ++i) block.AddParameter("More", i);
    auto copy = std::make_unique<CParameterBlock>(block);
    std::vector<CParameter*> taken;
    for (std::size_t i = 0; i < copy->parameters.size(); i += 2)
        taken.push_back(std::exchange(copy->parameters[i], nullptr));
    std::thread other([moved = std::move(copy)] { moved->Clear(); });
    for (CParameter* parameter : taken) delete parameter;
    other.join();
}

TEST(ParameterMemory, OfAListStaysWithItsBlock) {
    CParameterBlock inner, outer;
    inner.AddParameter("A", 1);
    inner.AddParameter("B", 2);
    outer.AddParameter("Inner", &inner);
    auto copy = std::make_unique<CParameterBlock>(outer);
    CParameterBlock* copied = nullptr;
    ASSERT_TRUE(copy->FindParameter("Inner", &copied));
    // Moving and swapping copy: the entries may stand beside their block, which may go first.
    CParameterList moved = std::move(copied->parameters), swapped;
    ASSERT_EQ(moved, copied->parameters);
    for (int i = 0; i < 100; ++i) copied->AddParameter("More", i);
    copied->parameters.shrink_to_fit();
    EXPECT_EQ(99, static_cast<CIntParameter*>(copied->parameters.back())->value);
    std::swap(moved, swapped);
    const std::vector<CParameter*> expected(copied->parameters.begin(),
                                            copied->parameters.begin() + 2);
    copy.reset();
    EXPECT_TRUE(moved.empty());
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), swapped.begin(), swapped.end()));
}

TEST(ParameterMemory, IsKeptByTheLastParameterAlone) {
    auto block = std::make_unique<CParameterBlock>(Sample());
    auto copy = std::make_unique<CParameterBlock>(*block);
    const std::unique_ptr<CParameter> kept(std::exchange(copy->parameters[1], nullptr));
    copy.reset();
    block.reset();
    EXPECT_EQ("Int", kept->name);
    EXPECT_EQ("-3", kept->GetString());
}

}  // namespace
