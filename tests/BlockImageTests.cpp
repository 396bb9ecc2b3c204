#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "tests/ByteText.h"
#include "utils/ParameterBlock.h"

namespace {

using Names = std::vector<std::string>;

std::vector<unsigned char> Image(CParameterBlock const& block) {
    unsigned long size = 0;
    const std::unique_ptr<unsigned char[]> image(block.CreateBlock(&size));
    return {image.get(), image.get() + size};
}

// Loads from an exact copy on the heap, so that a sanitizer sees the smallest step too far.
long LoadImage(CParameterBlock& block, std::vector<unsigned char> const& image,
               Names const* names = nullptr) {
    const std::unique_ptr<unsigned char[]> copy(new unsigned char[image.size()]);
    std::copy(image.begin(), image.end(), copy.get());
    return block.LoadBlock(names, image.size(), copy.get());
}

void Append(std::vector<unsigned char>& image, std::string_view hex, int times = 1) {
    const std::vector<unsigned char> bytes = Bytes(hex);
    for (int i = 0; i < times; ++i) image.insert(image.end(), bytes.begin(), bytes.end());
}

CParameterBlock Sample() {
    CParameterBlock code;
    code.AddParameter("Mod", 1);
    code.AddParameter("CompID", 42);
    CParameterBlock colour;
    colour.AddParameter("Code", &code);
    colour.AddParameter("R", 0.25);
    CParameterBlock block;
    block.AddParameter("Name", "Gap between audio channels");
    block.AddParameter("Position", 0.5f);
    block.AddParameter("Color", &colour);
    block.AddParameter("Color", &colour);
    block.AddParameter("UInt64", 5ULL);
    block.AddParameter("SInt64", -5LL);
    block.AddParameter("Bool", true);
    return block;
}

TEST(BlockImage, OfAnEmptyBlockIsItsCount) {
    EXPECT_EQ(Bytes("00 00 00 00"), Image(CParameterBlock()));
    CParameterBlock block;
    block.AddParameter("A", 1);
    EXPECT_EQ(4, LoadImage(block, Bytes("00 00 00 00")));
    EXPECT_TRUE(block.parameters.empty());
}

TEST(BlockImage, HasTagNameAndValueOfEachParameter) {
    CParameterBlock block;
    block.name = "NotPartOfTheImage";
    block.AddParameter("A", 5);
    EXPECT_EQ(Bytes("01000000 02000000 01000000 41 05000000"), Image(block));
}

TEST(BlockImage, NestsBlocks) {
    CParameterBlock inner;
    inner.AddParameter("B", true);
    CParameterBlock block;
    block.AddParameter("A", &inner);
    block.AddParameter("C", false);
    EXPECT_EQ(Bytes("02000000"
                    "06000000 01000000 41 01000000"
                    "07000000 01000000 42 01"
                    "07000000 01000000 43 00"),
              Image(block));
}

TEST(BlockImage, WritesTokensWhereTheyStand) {
    CParameterBlock block;
    block.AddParameter("A", 5);
    block.SetTokens({{"A", 300}});
    EXPECT_EQ(Bytes("01000000 02000000 FF2C0100 05000000"), Image(block));
}

TEST(BlockImage, CountsOnlyWhatItWrites) {
    CParameterBlock block;
    block.parameters.push_back(nullptr);
    block.AddParameter("A", 5);
    block.parameters.push_back(nullptr);
    EXPECT_EQ(Bytes("01000000 02000000 01000000 41 05000000"), Image(block));
}

TEST(BlockImage, ComesBackAsItWas) {
    const CParameterBlock block = Sample();
    const std::vector<unsigned char> image = Image(block);
    CParameterBlock loaded;
    EXPECT_EQ(static_cast<long>(image.size()), LoadImage(loaded, image));
    EXPECT_TRUE(loaded == block);
    EXPECT_EQ(image, Image(loaded));
}

TEST(BlockImage, IncludesTheNameWhenABlockSavesItself) {
    CParameterBlock block;
    block.name = "N";
    block.AddParameter("A", 5);
    std::vector<unsigned char> bytes(block.GetSize());
    EXPECT_EQ(22u, block.Save(0, bytes.data()));
    EXPECT_EQ(Bytes("01000000 4E 01000000 02000000 01000000 41 05000000"), bytes);
    CParameterBlock loaded;
    EXPECT_EQ(22u, loaded.Load(nullptr, bytes.size(), bytes.data()));
    EXPECT_TRUE(loaded == block);
}

TEST(BlockImage, ReadsAsNothingWithoutACount) {
    for (std::size_t size = 0; size < 4; ++size) {
        CParameterBlock block;
        block.AddParameter("A", 1);
        EXPECT_EQ(0, LoadImage(block, std::vector<unsigned char>(size, 1)));
        EXPECT_TRUE(block.parameters.empty());
    }
    CParameterBlock block;
    EXPECT_EQ(0, block.LoadBlock(nullptr, 0, nullptr));
}

TEST(BlockImage, HasNoEntriesForANegativeCount) {
    CParameterBlock block;
    EXPECT_EQ(4, LoadImage(block, Bytes("FFFFFFFF 02000000 00000000 05000000")));
    EXPECT_TRUE(block.parameters.empty());
    EXPECT_EQ(4, LoadImage(block, Bytes("00000080 02000000 00000000 05000000")));
    EXPECT_TRUE(block.parameters.empty());
}

TEST(BlockImage, LeavesBytesBehindTheLastEntry) {
    CParameterBlock block;
    EXPECT_EQ(16, LoadImage(block, Bytes("01000000 02000000 00000000 05000000 FFFF")));
    EXPECT_EQ(1u, block.parameters.size());
}

TEST(BlockImage, MarksAnUnknownTypeWithANullEntry) {
    CParameterBlock block;
    EXPECT_EQ(20, LoadImage(block, Bytes("02000000 0B000000 02000000 00000000 05000000")));
    ASSERT_EQ(2u, block.parameters.size());
    EXPECT_EQ(nullptr, block.parameters[0]);
    EXPECT_EQ("5", block.parameters[1]->GetString());
    EXPECT_EQ(12, LoadImage(block, Bytes("02000000 00000000 FFFFFFFF")));
    EXPECT_EQ((CParameterList{nullptr, nullptr}), block.parameters);
}

TEST(BlockImage, DefaultsAValueThatIsCutOff) {
    CParameterBlock block;
    EXPECT_EQ(13, LoadImage(block, Bytes("01000000 02000000 01000000 41 050000")));
    ASSERT_EQ(1u, block.parameters.size());
    EXPECT_EQ("A", block.parameters[0]->name);
    EXPECT_EQ("0", block.parameters[0]->GetString());
}

TEST(BlockImage, FailsBeforeATagThatIsCutOffAndKeepsWhatWasRead) {
    CParameterBlock block;
    EXPECT_EQ(-1, LoadImage(block, Bytes("02000000 02000000 00000000 05000000 020000")));
    ASSERT_EQ(1u, block.parameters.size());
    EXPECT_EQ("5", block.parameters[0]->GetString());
    EXPECT_EQ(-1, LoadImage(block, Bytes("01000000")));
    EXPECT_TRUE(block.parameters.empty());
}

TEST(BlockImage, FailsAsAWholeWhenANestedBlockFails) {
    // An int, then a block that claims two entries and has one.
    CParameterBlock block;
    EXPECT_EQ(-1, LoadImage(block, Bytes("03000000 02000000 00000000 05000000"
                                         "06000000 00000000 02000000"
                                         "02000000 00000000 06000000")));
    ASSERT_EQ(1u, block.parameters.size());
    EXPECT_EQ("5", block.parameters[0]->GetString());
    const std::vector<unsigned char> nested = Bytes("00000000 01000000");
    EXPECT_EQ(~0UL, block.Load(nullptr, nested.size(), nested.data()));
}

TEST(BlockImage, RefusesBinaryBlocks) {
    CParameterBlock block;
    EXPECT_EQ(-1, LoadImage(block, Bytes("02000000 02000000 00000000 05000000"
                                         "0A000000 00000000 00000000 00000000")));
    EXPECT_EQ(1u, block.parameters.size());
}

TEST(BlockImage, ReadsAFileIdentityButCannotSaveIt) {
    CParameterBlock block;
    EXPECT_EQ(28, LoadImage(block, Bytes("01000000 05000000 00000000"
                                         "0100000000000000 0200000000000000")));
    EXPECT_EQ(28u - 0 + 4, block.GetSize());
    EXPECT_DEATH(Image(block), "Assertion failed: false, .*utils/ParameterBlock");
}

TEST(BlockImageDeathTest, ABinaryBlockCannotBeMeasured) {
    int value = 0;
    CParameterBlock block;
    block.AddParameter("B", new CBinaryBlock(&value, nullptr, nullptr));
    EXPECT_DEATH(block.GetSize(), "Assertion failed: false, .*utils/ParameterBlock");
    EXPECT_DEATH(Image(block), "Assertion failed: false, .*utils/ParameterBlock");
}

TEST(BlockImageDamage, AnyTruncationHasADefinedResult) {
    const std::vector<unsigned char> image = Image(Sample());
    for (std::size_t size = 0; size < image.size(); ++size) {
        CParameterBlock block;
        const long consumed =
            LoadImage(block, std::vector<unsigned char>(image.begin(), image.begin() + size));
        EXPECT_TRUE(consumed == -1 || consumed <= static_cast<long>(size)) << size;
        EXPECT_LE(block.parameters.size(), 7u);
        const CParameterBlock copy(block);
        EXPECT_TRUE(copy == block);
    }
}

TEST(BlockImageDamage, AnyChangedByteHasADefinedResult) {
    const std::vector<unsigned char> image = Image(Sample());
    for (std::size_t at = 0; at < image.size(); ++at)
        for (int change = 1; change < 256; ++change) {
            std::vector<unsigned char> damaged = image;
            damaged[at] ^= static_cast<unsigned char>(change);
            CParameterBlock block;
            const long consumed = LoadImage(block, damaged);
            ASSERT_TRUE(consumed == -1 || consumed <= static_cast<long>(damaged.size()));
        }
}

TEST(BlockImageDamage, HugeCountsAndLengthsAreOnlyNumbers) {
    CParameterBlock block;
    EXPECT_EQ(-1, LoadImage(block, Bytes("FFFFFF7F 02000000 00000000 05000000")));
    EXPECT_EQ(1u, block.parameters.size());
    EXPECT_EQ(-1, LoadImage(block, Bytes("FFFFFF7F 06000000 00000000 FFFFFF7F")));
    EXPECT_TRUE(block.parameters.empty());
    EXPECT_EQ(16, LoadImage(block, Bytes("01000000 01000000 FFFFFFFF FFFFFFFF")));
    EXPECT_EQ(16, LoadImage(block, Bytes("01000000 01000000 00000000 FEFFFFFF")));
    EXPECT_EQ(1u, block.parameters.size());
}

TEST(BlockImageDamage, NullEntriesTakeTwoWordsEach) {
    constexpr int entries = 250000;
    std::vector<unsigned char> image = Bytes("FFFFFF7F");
    Append(image, "00000000", entries);
    CParameterBlock block;
    EXPECT_EQ(-1, LoadImage(block, image));
    EXPECT_EQ(std::size_t{entries}, block.parameters.size());
    EXPECT_LE(block.parameters.capacity(), std::size_t{entries} * 2);
    EXPECT_EQ(8u, block.GetSize());
}

TEST(BlockImageDamage, ALongNameDoesNotUnfoldWithoutEnd) {
    // Every entry asks for a name of 64 MiB: sixteen of them are a gibibyte, which is the bound.
    const Names names{"", std::string(std::size_t{1} << 26, 'n')};
    std::vector<unsigned char> image = Bytes("A0860100");
    Append(image, "07000000 01 01", 20);
    CParameterBlock block;
    EXPECT_EQ(-1, LoadImage(block, image, &names));
    EXPECT_EQ(16u, block.parameters.size());
    block.Clear();
    image = Bytes("A0860100");
    Append(image, "06000000 01 00000000", 20);
    EXPECT_EQ(-1, LoadImage(block, image, &names));
    EXPECT_EQ(16u, block.parameters.size());
}

TEST(DeepImage, LoadsAndSavesWhatNestsAMillionDeep) {
    constexpr int depth = 1000000;
    std::vector<unsigned char> image = Bytes("01000000");
    Append(image, "06000000 00000000 01000000", depth - 1);
    Append(image, "06000000 00000000 00000000");
    CParameterBlock block;
    EXPECT_EQ(static_cast<long>(image.size()), LoadImage(block, image));
    EXPECT_EQ(image, Image(block));
    CParameterBlock again;
    EXPECT_EQ(static_cast<long>(image.size()), LoadImage(again, image));
    EXPECT_TRUE(again == block);
}

TEST(DeepImage, FailsAsAWholeWhenItsEndIsMissing) {
    std::vector<unsigned char> image = Bytes("01000000");
    Append(image, "06000000 00000000 02000000", 100000);
    CParameterBlock block;
    EXPECT_EQ(-1, LoadImage(block, image));
    EXPECT_TRUE(block.parameters.empty());
}

// Notes what it is told and stops the load on the given call.
struct CNotingProgress : CProgress {
    bool Progress(unsigned long done) override {
        calls.push_back(done);
        return calls.size() == stopAt;
    }

    std::vector<unsigned long> calls;
    std::size_t stopAt = 0;
};

struct CThrowingProgress : CProgress {
    bool Progress(unsigned long) override { throw 1; }
};

// Three blocks of one flag each; each takes 12 + 9 bytes behind the count.
std::vector<unsigned char> ThreeBlocks() {
    std::vector<unsigned char> image = Bytes("03000000");
    Append(image, "06000000 00000000 01000000  07000000 00000000 01", 3);
    return image;
}

TEST(LoadProgress, IsToldAfterEachNestedBlock) {
    const std::vector<unsigned char> image = ThreeBlocks();
    CNotingProgress progress;
    CParameterBlock block(&progress, image.size());
    EXPECT_EQ(67, LoadImage(block, image));
    EXPECT_EQ((std::vector<unsigned long>{25, 46, 67}), progress.calls);
}

TEST(LoadProgress, ReachesEveryLevel) {
    CParameterBlock inner;
    CParameterBlock middle;
    middle.AddParameter("", &inner);
    CParameterBlock outer;
    outer.AddParameter("", &middle);
    CNotingProgress progress;
    CParameterBlock block(&progress, 1000);
    EXPECT_EQ(28, LoadImage(block, Image(outer)));
    EXPECT_EQ((std::vector<unsigned long>{1000, 1000}), progress.calls);
    auto* loaded = static_cast<CParameterBlock*>(block.parameters[0]);
    EXPECT_EQ(&progress, loaded->progress);
    EXPECT_EQ(1000u, loaded->progressTotal);
}

TEST(LoadProgress, IsNotToldWithoutATotal) {
    CNotingProgress progress;
    CParameterBlock block(&progress, 0);
    EXPECT_EQ(67, LoadImage(block, ThreeBlocks()));
    EXPECT_TRUE(progress.calls.empty());
    CParameterBlock silent(nullptr, 67);
    EXPECT_EQ(67, LoadImage(silent, ThreeBlocks()));
}

TEST(LoadProgress, CancelsTheLoadAndKeepsWhatWasRead) {
    CNotingProgress progress;
    progress.stopAt = 2;
    CParameterBlock block(&progress, 67);
    EXPECT_EQ(-1, LoadImage(block, ThreeBlocks()));
    EXPECT_EQ(1u, block.parameters.size());
    EXPECT_EQ(2u, progress.calls.size());
}

// Does something to the block that is being loaded, on every call.
struct CMeddlingProgress : CProgress {
    bool Progress(unsigned long) override {
        meddle();
        return false;
    }

    std::function<void()> meddle;
};

TEST(LoadProgress, SeesOnlyWhatIsFinished) {
    CMeddlingProgress progress;
    CParameterBlock block(&progress, 67);
    std::vector<std::size_t> sizes;
    progress.meddle = [&] {
        sizes.push_back(block.parameters.size());
        for (CParameter const* parameter : block.parameters) {
            ASSERT_NE(nullptr, parameter);
            EXPECT_EQ(1u, static_cast<CParameterBlock const*>(parameter)->parameters.size());
        }
    };
    EXPECT_EQ(67, LoadImage(block, ThreeBlocks()));
    EXPECT_EQ((std::vector<std::size_t>{0, 1, 2}), sizes);
}

TEST(LoadProgress, MayAddToTheBlock) {
    CMeddlingProgress progress;
    CParameterBlock block(&progress, 67);
    progress.meddle = [&] { block.AddParameter("Seen", 1); };
    EXPECT_EQ(67, LoadImage(block, ThreeBlocks()));
    ASSERT_EQ(6u, block.parameters.size());
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_EQ(i % 2 == 0 ? tagInt : tagBlock, block.parameters[i]->type);
}

TEST(LoadProgress, MayClearTheBlock) {
    CMeddlingProgress progress;
    CParameterBlock block(&progress, 67);
    progress.meddle = [&] { block.Clear(); };
    EXPECT_EQ(67, LoadImage(block, ThreeBlocks()));
    ASSERT_EQ(1u, block.parameters.size());
    EXPECT_EQ(tagBlock, block.parameters[0]->type);
}

TEST(LoadProgress, MayThrow) {
    CThrowingProgress progress;
    CParameterBlock block(&progress, 67);
    EXPECT_THROW(LoadImage(block, ThreeBlocks()), int);
    EXPECT_LE(block.parameters.size(), 1u);
}

}  // namespace
