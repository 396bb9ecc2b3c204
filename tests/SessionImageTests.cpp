#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>

#include "FileIO/FileName.h"
#include "tests/ByteText.h"
#include "tests/TemporaryDirectory.h"
#include "utils/ParameterBlock.h"

namespace {

using Ids = std::vector<const char*>;
using Names = std::vector<std::string>;
using Counts = std::vector<std::pair<std::string, int>>;
using Image = std::vector<unsigned char>;

constexpr unsigned int noHeader = 0xFFFFFFFF;

// Data that is released in the end.
class CData {
public:
    CData() : m_data(CFDataCreateMutable(kCFAllocatorDefault, 0)) {}
    CData(CData const&) = delete;
    CData& operator=(CData const&) = delete;
    ~CData() { CFRelease(m_data); }

    CFMutableDataRef Ref() const { return m_data; }
    std::size_t Length() const { return static_cast<std::size_t>(CFDataGetLength(m_data)); }
    Image Bytes() const {
        const UInt8* bytes = CFDataGetBytePtr(m_data);
        return {bytes, bytes + Length()};
    }

private:
    CFMutableDataRef m_data;
};

Image Saved(CParameterBlock& block, const char* id = "XY") {
    const CData data;
    const unsigned long length = block.SaveBinarySessionToMemory(id, data.Ref());
    EXPECT_EQ(length == 0 ? 0 : length + 32, data.Length());
    Image image = data.Bytes();
    image.resize(length);
    return image;
}

// Loads from an exact copy on the heap, so that a sanitizer sees the smallest step too far.
int Loaded(CParameterBlock& block, Image const& image, Ids const& ids = {"XY"}) {
    const std::unique_ptr<unsigned char[]> copy(new unsigned char[image.size()]);
    std::copy(image.begin(), image.end(), copy.get());
    return block.LoadBinarySessionFromMemory(&ids, copy.get(),
                                             static_cast<unsigned int>(image.size()));
}

unsigned int Header(Image const& image, Names& names, Ids const& ids = {"XY"}) {
    const std::unique_ptr<unsigned char[]> copy(new unsigned char[image.size()]);
    std::copy(image.begin(), image.end(), copy.get());
    return CParameterBlock().LoadHeader(&ids, static_cast<unsigned int>(image.size()), &names,
                                        copy.get());
}

CParameterBlock Sample() {
    CParameterBlock code;
    code.AddParameter("Mod", 1);
    code.AddParameter("CompID", 42);
    CParameterBlock block;
    block.name = "Top";
    block.AddParameter("Name", "Gap between audio channels");
    block.AddParameter("Code", &code);
    block.AddParameter("Code", &code);
    block.AddParameter("", 0.5);
    block.AddParameter("Position", 0.5f);
    return block;
}

// A block with `count` ints, each with a name of its own.
CParameterBlock ManyNames(int count) {
    CParameterBlock block;
    for (int i = 0; i < count; ++i) block.AddParameter(("n" + std::to_string(i)).c_str(), i);
    return block;
}

CParameterBlock OneInt() {
    CParameterBlock block;
    block.AddParameter("A", 5);
    return block;
}

const Image oneIntImage = Bytes(
    "58 59 00 | 64 00 00 00 | 02 00 00 00 | 01 00 00 00 | 41 00 |"
    "00 01 00 00 00 02 00 00 00 01 05 00 00 00");

TEST(SessionImage, HasHeaderNamesAndBody) {
    CParameterBlock block = OneInt();
    const CData data;
    EXPECT_EQ(31u, block.SaveBinarySessionToMemory("XY", data.Ref()));
    EXPECT_EQ(63u, data.Length());
    Image expected = oneIntImage;
    expected.resize(63);
    EXPECT_EQ(expected, data.Bytes());
}

TEST(SessionImage, ComesBackAsItWas) {
    CParameterBlock block = Sample();
    CParameterBlock loaded;
    EXPECT_EQ(0, Loaded(loaded, Saved(block)));
    EXPECT_TRUE(loaded == block);
    EXPECT_EQ("Top", loaded.name);
    EXPECT_EQ(Saved(block), Saved(loaded));
}

TEST(SessionImage, GivesFrequentNamesTheLowestTokens) {
    CParameterBlock block = Sample();
    Names names;
    Header(Saved(block), names);
    EXPECT_EQ((Names{"", "Code", "Mod", "CompID", "Top", "Name", "Position"}), names);
}

TEST(SessionImage, LeavesTheTokensOnTheTree) {
    CParameterBlock block = OneInt();
    block.parameters[0]->token = 77;
    Saved(block);
    EXPECT_EQ(0u, block.token);
    EXPECT_EQ(1u, block.parameters[0]->token);
    unsigned long size = 0;
    const std::unique_ptr<unsigned char[]> bare(block.CreateBlock(&size));
    EXPECT_EQ(Bytes("01000000 02000000 01 05000000"), Image(bare.get(), bare.get() + size));
}

// Whatever tokens a tree carries: its image loads to the same tree, with every name once and the
// most frequent ones first.
void ExpectFaithfulImage(CParameterBlock& block) {
    const Image image = Saved(block);
    CParameterBlock loaded;
    ASSERT_EQ(0, Loaded(loaded, image));
    EXPECT_TRUE(loaded == block);

    std::map<std::string, int> counts;
    block.AddNameToMap(counts);
    block.TokenizeNames(counts);
    Names names;
    ASSERT_NE(noHeader, Header(image, names));
    EXPECT_EQ(counts.size() + 1, names.size());
    EXPECT_EQ(names.size(), std::set<std::string>(names.begin(), names.end()).size());
    for (std::size_t i = 2; i < names.size(); ++i)
        EXPECT_GE(counts[names[i - 1]], counts[names[i]]) << names[i];
}

TEST(SessionImageAgain, IsTheSame) {
    CParameterBlock block = Sample();
    const Image first = Saved(block);
    EXPECT_EQ(first, Saved(block));
    ExpectFaithfulImage(block);
}

TEST(SessionImageAgain, FollowsARenamedParameter) {
    CParameterBlock block = Sample();
    Saved(block);
    block.parameters[0]->name = "Another name";
    ExpectFaithfulImage(block);
    block.parameters[0]->name = "";
    ExpectFaithfulImage(block);
    block.parameters[3]->name = "No longer empty";
    ExpectFaithfulImage(block);
}

TEST(SessionImageAgain, FollowsAddedAndRemovedParameters) {
    CParameterBlock block = Sample();
    Saved(block);
    for (int i = 0; i < 5; ++i) block.AddParameter("New", i);
    ExpectFaithfulImage(block);
    for (int i = 0; i < 5; ++i) {
        delete block.parameters.back();
        block.parameters.pop_back();
    }
    ExpectFaithfulImage(block);
}

TEST(SessionImageAgain, MergesANameThatHasTwoTokens) {
    CParameterBlock block = ManyNames(4);
    Saved(block);
    block.parameters[3]->name = block.parameters[1]->name;
    ExpectFaithfulImage(block);
}

TEST(SessionImageAgain, TellsLongNamesApartThatBeginAndEndAlike) {
    CParameterBlock block;
    block.AddParameter("beginning 1 ending", 1);
    block.AddParameter("beginning 2 ending", 2);
    Saved(block);
    block.parameters[1]->token = block.parameters[0]->token;
    ExpectFaithfulImage(block);
}

TEST(SessionImageAgain, SurvivesTokensThatWereNeverGiven) {
    for (std::uint32_t token : {1u, 6u, 254u, 255u, 1000u, 5000u, 0xFFFFFFu, 0xFFFFFFFEu}) {
        CParameterBlock block = Sample();
        Saved(block);
        block.parameters[4]->token = token;
        ExpectFaithfulImage(block);
        block.parameters[3]->token = token;
        ExpectFaithfulImage(block);
    }
}

TEST(SessionImageAgain, EqualTreesMakeEqualImages) {
    CParameterBlock block;
    for (const char* name : {"A", "B", "C", "B", "A", "D"}) block.AddParameter(name, 1);
    Saved(block);
    std::reverse(block.parameters.begin(), block.parameters.end());
    CParameterBlock fresh(nullptr, &block);
    EXPECT_EQ(Saved(fresh), Saved(block));
    Names names;
    Header(Saved(block), names);
    EXPECT_EQ((Names{"", "A", "B", "D", "C"}), names);
}

TEST(SessionImageAgain, HoldsForALoadedTreeOfManyNames) {
    CParameterBlock block = ManyNames(3000);
    CParameterBlock loaded;
    ASSERT_EQ(0, Loaded(loaded, Saved(block)));
    ExpectFaithfulImage(loaded);
    loaded.AddParameter("n2999", true);
    ExpectFaithfulImage(loaded);
}

TEST(SessionImage, ReplacesWhatTheDataHeld) {
    const CData data;
    CFDataSetLength(data.Ref(), 1000);
    std::fill_n(CFDataGetMutableBytePtr(data.Ref()), 1000, 0xAA);
    CParameterBlock block = OneInt();
    block.SaveBinarySessionToMemory("XY", data.Ref());
    Image expected = oneIntImage;
    expected.resize(63);
    EXPECT_EQ(expected, data.Bytes());
}

TEST(SessionImage, NeedsAName) {
    CParameterBlock inner;
    inner.AddParameter("", 1);
    CParameterBlock block;
    block.AddParameter("", &inner);
    block.AddParameter(nullptr, "text");
    const CData data;
    CFDataSetLength(data.Ref(), 3);
    EXPECT_EQ(0u, block.SaveBinarySessionToMemory("XY", data.Ref()));
    EXPECT_EQ(3u, data.Length());
    EXPECT_EQ(noToken, block.token);
    EXPECT_EQ(noToken, block.parameters[0]->token);
    block.AddParameter("", new CBinaryBlock(&inner, nullptr, nullptr));
    EXPECT_EQ(0u, block.SaveBinarySessionToMemory("XY", data.Ref()));
}

TEST(SessionImage, CountsTheTopBlocksOwnName) {
    CParameterBlock block;
    block.name = "Top";
    EXPECT_EQ(Bytes("5859 00 64000000 04000000 01000000 546F7000 01 00000000"), Saved(block));
}

TEST(SessionImage, EndsANameAtItsZeroByte) {
    CParameterBlock block = OneInt();
    block.parameters[0]->name = std::string("A\0B", 3);
    EXPECT_EQ(oneIntImage, Saved(block));
    EXPECT_EQ(3u, block.parameters[0]->name.size());
    block.parameters[0]->name = std::string("\0B", 2);
    EXPECT_TRUE(Saved(block).empty());
}

TEST(SessionImage, IsNotMadeOfTypesThatNoReaderKnows) {
    struct CUnknown : CIntParameter {
        CUnknown() { const_cast<std::uint32_t&>(type) = 11; }
    };
    CParameterBlock block = OneInt();
    block.parameters.push_back(new CUnknown);
    EXPECT_TRUE(Saved(block).empty());
}

// Says of itself how it is saved, in as many bytes as an int.
struct CLoudParameter : CIntParameter {
    using CIntParameter::CIntParameter;

    unsigned long Save(unsigned long available, unsigned char* out) const override {
        CIntParameter loud(name.c_str(), value * 1000);
        loud.token = token;
        return loud.Save(available, out);
    }
};

// The same for a block: it writes one int more than it has.
struct CLoudBlock : CParameterBlock {
    unsigned long GetSize() const override { return Filled().GetSize(); }
    unsigned long Save(unsigned long available, unsigned char* out) const override {
        return Filled().Save(available, out);
    }
    CParameterBlock Filled() const {
        CParameterBlock block(name.c_str(), this);
        block.token = token;
        for (CParameter* parameter : block.parameters) parameter->token = 0;
        block.AddParameter("", 5);
        block.parameters.back()->token = 0;
        return block;
    }
};

TEST(SessionImageOfDerivedClasses, AsksThemToSaveThemselves) {
    CParameterBlock block;
    block.AddParameter("A", 1);
    block.parameters.push_back(new CLoudParameter("A", 5));
    block.parameters.push_back(new CLoudBlock);
    CParameterBlock loaded;
    ASSERT_EQ(0, Loaded(loaded, Saved(block)));
    ASSERT_EQ(3u, loaded.parameters.size());
    EXPECT_EQ("1", loaded.parameters[0]->GetString());
    EXPECT_EQ("5000", loaded.parameters[1]->GetString());
    auto const* nested = static_cast<CParameterBlock*>(loaded.parameters[2]);
    ASSERT_EQ(1u, nested->parameters.size());
    EXPECT_EQ("5", nested->parameters[0]->GetString());
}

TEST(SessionImageOfDerivedClasses, HasTheSameBytesWhenTheyChangeNothing) {
    struct CQuietParameter : CIntParameter {
        using CIntParameter::CIntParameter;
    };
    CParameterBlock block;
    block.AddParameter("Text", "text");
    block.AddParameter("Int", -3);
    block.AddParameter("Double", 0.5);
    block.AddParameter("UInt64", 5ULL);
    block.AddParameter("SInt64", -5LL);
    block.AddParameter("Bool", true);
    block.AddParameter("Float", 1.5f);
    const CParameterBlock twin(block);
    block.AddParameter("Nested", &twin);
    for (int i = 0; i < 300; ++i) block.AddParameter(("n" + std::to_string(i)).c_str(), i);
    block.parameters.push_back(nullptr);
    CParameterBlock derived(block);
    block.AddParameter("Int", 7);
    derived.parameters.push_back(new CQuietParameter("Int", 7));
    EXPECT_EQ(Saved(block), Saved(derived));
    CParameterBlock loaded;
    ASSERT_EQ(0, Loaded(loaded, Saved(derived)));
    EXPECT_EQ(Saved(block), Saved(loaded));
}

TEST(SessionImage, MayHaveAnEmptyIdentifier) {
    CParameterBlock block = OneInt();
    const Image image = Saved(block, "");
    EXPECT_EQ(29u, image.size());
    EXPECT_EQ(image, Saved(block, nullptr));
    CParameterBlock loaded;
    EXPECT_EQ(0, Loaded(loaded, image, {""}));
    EXPECT_TRUE(loaded == block);
    EXPECT_EQ(0, Loaded(loaded, image, {nullptr}));
}

TEST(SessionImage, SkipsNullEntries) {
    CParameterBlock block = OneInt();
    block.parameters.insert(block.parameters.begin(), nullptr);
    block.parameters.push_back(nullptr);
    EXPECT_EQ(oneIntImage, Saved(block));
}

TEST(SessionImage, ChangesToFourByteTokensAtToken255) {
    // 254 names take one byte each, every further one four. The top block's own name is empty.
    for (const int count : {253, 254, 255, 256, 300}) {
        CParameterBlock block = ManyNames(count);
        const Image image = Saved(block);
        std::size_t names = 0;
        for (int i = 0; i < count; ++i) names += ("n" + std::to_string(i)).size() + 1;
        const int longTokens = std::max(0, count - 254);
        EXPECT_EQ(15 + names + 1 + 4 + count * (4 + 1 + 4) + longTokens * 3, image.size());
        CParameterBlock loaded;
        EXPECT_EQ(0, Loaded(loaded, image));
        EXPECT_TRUE(loaded == block);
    }
}

TEST(SessionImage, HoldsMoreNamesThan16BitsCount) {
    CParameterBlock block = ManyNames(70000);
    CParameterBlock loaded;
    EXPECT_EQ(0, Loaded(loaded, Saved(block)));
    EXPECT_TRUE(loaded == block);
    const auto highest = std::max_element(
        loaded.parameters.begin(), loaded.parameters.end(),
        [](CParameter* left, CParameter* right) { return left->token < right->token; });
    EXPECT_EQ(70000u, (*highest)->token);
}

TEST(SessionImage, AgreesWithTheSingleSteps) {
    CParameterBlock block = Sample();
    const Image image = Saved(block);

    CParameterBlock steps = Sample();
    std::map<std::string, int> map;
    steps.AddNameToMap(map);
    steps.TokenizeNames(map);
    Counts counts(map.begin(), map.end());
    EXPECT_EQ(
        (Counts{{"Code", 2}, {"CompID", 2}, {"Mod", 2}, {"Name", 1}, {"Position", 1}, {"Top", 1}}),
        counts);
    // Among equally frequent names any order does; this is the one in which they occur.
    std::swap(counts[1], counts[2]);
    std::rotate(counts.begin() + 3, counts.begin() + 5, counts.end());
    EXPECT_TRUE(std::is_sorted(counts.begin(), counts.end(), IntCmp));
    for (std::size_t i = 0; i < counts.size(); ++i) map[counts[i].first] = static_cast<int>(i) + 1;
    steps.UpdateTokenFromMap(map);
    steps.SetTokens(map);
    Image bytes(steps.GetSizeOfHeader("XY", &counts) + steps.GetSize());
    const unsigned long header = steps.SaveHeader("XY", 0, &counts, bytes.data());
    EXPECT_EQ(bytes.size(), header + steps.Save(0, bytes.data() + header));
    EXPECT_EQ(image, bytes);
}

TEST(SessionImageDeathTest, CannotHoldFileIdentitiesOrBinaryBlocks) {
    CParameterBlock block = OneInt();
    block.AddParameter("Id", KEL::FileIdType{1, 2});
    EXPECT_DEATH(Saved(block), "Assertion failed: false, .*utils/ParameterBlock");
    CParameterBlock binary = OneInt();
    binary.AddParameter("B", new CBinaryBlock(&block, nullptr, nullptr));
    EXPECT_DEATH(Saved(binary), "Assertion failed: false, .*utils/ParameterBlock");
}

TEST(NameOrder, PutsTheGreaterCountFirst) {
    EXPECT_TRUE(IntCmp({"a", 2}, {"b", 1}));
    EXPECT_FALSE(IntCmp({"a", 1}, {"b", 1}));
    EXPECT_FALSE(IntCmp({"a", -1}, {"b", 1}));
}

TEST(SessionNames, CountAcrossTheTreeWithoutTheTopBlock) {
    std::map<std::string, int> counts;
    Sample().TokenizeNames(counts);
    EXPECT_EQ((std::map<std::string, int>{
                  {"Code", 2}, {"CompID", 2}, {"Mod", 2}, {"Name", 1}, {"Position", 1}}),
              counts);
}

TEST(SessionHeader, MeasuresAndWritesItself) {
    const CParameterBlock block;
    const Counts names{{"A", 1}, {"BC", 1}};
    EXPECT_EQ(15u, block.GetSizeOfHeader("XY", nullptr));
    EXPECT_EQ(20u, block.GetSizeOfHeader("XY", &names));
    Image bytes(20);
    EXPECT_EQ(20u, block.SaveHeader("XY", 0, &names, bytes.data()));
    EXPECT_EQ(Bytes("585900 64000000 05000000 02000000 4100 424300"), bytes);
    EXPECT_EQ(15u, block.SaveHeader("XY", 0, nullptr, bytes.data()));
}

TEST(SessionHeader, AcceptsAnyOfTheIdentifiersInTheirOrder) {
    Names names;
    EXPECT_EQ(17u, Header(oneIntImage, names, {"QQ", "XY"}));
    EXPECT_EQ((Names{"", "A"}), names);
    EXPECT_EQ(noHeader, Header(oneIntImage, names, {"QQ", "xy"}));
    EXPECT_EQ(noHeader, Header(oneIntImage, names, {}));
    EXPECT_EQ(noHeader, CParameterBlock().LoadHeader(nullptr, 31, &names, oneIntImage.data()));
}

TEST(SessionHeader, DoesNotLookAtTheZeroByteAndTheVersion) {
    Image image = oneIntImage;
    image[2] = 'Z';
    image[3] = 99;
    image[6] = 255;
    Names names;
    EXPECT_EQ(17u, Header(image, names));
}

TEST(SessionHeader, GoesOnWithTheNextIdentifierWhenTooLittleIsLeft) {
    // 17 bytes: 12 behind the long identifier, which is one too few, 14 behind the short one.
    const Image image = Bytes("41424344 00000000000000000000000000");
    Names names;
    EXPECT_EQ(noHeader, Header(image, names, {"ABCD"}));
    EXPECT_EQ(15u, Header(image, names, {"ABCD", "AB"}));
    const Image small = Bytes("41 00 64000000 00000000 00000000 00");
    EXPECT_EQ(14u, Header(small, names, {"A"}));
    EXPECT_EQ(noHeader, Header(Image(small.begin(), small.end() - 1), names, {"A"}));
    EXPECT_EQ(14u, Header(Bytes("4142 64000000 00000000 00000000 00"), names, {"AB", "A"}));
}

TEST(SessionHeader, NeedsABodyOfOneByte) {
    Image image = oneIntImage;
    image.resize(17);
    Names names;
    EXPECT_EQ(noHeader, Header(image, names));
    image.resize(18);
    EXPECT_EQ(17u, Header(image, names));
}

TEST(SessionHeader, NeedsExactlyTheNamesItCounts) {
    Names names;
    EXPECT_EQ(noHeader, Header(Bytes("585900 64000000 02000000 02000000 4100 00000000"), names));
    EXPECT_EQ(noHeader, Header(Bytes("585900 64000000 02000000 FFFFFFFF 4100 00000000"), names));
    EXPECT_EQ(noHeader, Header(Bytes("585900 64000000 FFFFFFFF 01000000 4100 00000000"), names));
    EXPECT_EQ(noHeader, Header(Bytes("585900 64000000 00000000 01000000 4100 00000000"), names));
}

TEST(SessionHeader, BeginsTheBodyBehindTheLastNameRead) {
    Names names;
    // The table is four bytes long, but one name is counted.
    EXPECT_EQ(17u, Header(Bytes("585900 64000000 04000000 01000000 4100 4200 00000000"), names));
    EXPECT_EQ((Names{"", "A"}), names);
    EXPECT_EQ(15u, Header(Bytes("585900 64000000 02000000 00000000 4100 00000000"), names));
    EXPECT_EQ((Names{""}), names);
}

TEST(SessionHeader, ReadsEmptyNames) {
    Names names{"old"};
    EXPECT_EQ(18u, Header(Bytes("585900 64000000 03000000 03000000 000000 00"), names));
    EXPECT_EQ((Names{"", "", "", ""}), names);
}

TEST(SessionHeader, EndsANameAtTheEndOfTheTable) {
    // The last name lacks its zero byte: it takes one byte of the body instead.
    Names names;
    EXPECT_EQ(19u, Header(Bytes("585900 64000000 03000000 01000000 414243 44"), names));
    EXPECT_EQ((Names{"", "ABC"}), names);
    CParameterBlock block = OneInt();
    EXPECT_EQ(0, Loaded(block, Bytes("585900 64000000 03000000 01000000 414243 44")));
    EXPECT_TRUE(block.parameters.empty());
}

TEST(SessionLoad, IsDoneAtOnceWithNothingToLoad) {
    CParameterBlock block = OneInt();
    const Ids ids{"XY"};
    EXPECT_EQ(0, block.LoadBinarySessionFromMemory(&ids, nullptr, 5));
    const unsigned char byte = 0;
    EXPECT_EQ(0, block.LoadBinarySessionFromMemory(&ids, &byte, 0));
    EXPECT_EQ(1u, block.parameters.size());
}

TEST(SessionLoad, LeavesTheBlockWhenTheFormatIsUnknown) {
    CParameterBlock block = Sample();
    EXPECT_EQ(7534, Loaded(block, oneIntImage, {"QQ"}));
    EXPECT_TRUE(block == Sample());
    EXPECT_EQ(7534, Loaded(block, Bytes("58")));
    EXPECT_TRUE(block == Sample());
}

TEST(SessionLoad, FailsWithTheBodyAndKeepsWhatWasRead) {
    CParameterBlock block = Sample();
    Image image = oneIntImage;
    image[18] = 2;
    EXPECT_EQ(2033, Loaded(block, image));
    EXPECT_EQ("", block.name);
    ASSERT_EQ(1u, block.parameters.size());
    EXPECT_EQ("A", block.parameters[0]->name);
}

TEST(SessionLoad, RefusesBinaryBlocks) {
    CParameterBlock block;
    Image image = oneIntImage;
    image[22] = 10;
    EXPECT_EQ(2033, Loaded(block, image));
}

TEST(SessionLoad, IsStoppedByItsObserver) {
    struct CStop : CProgress {
        bool Progress(unsigned long) override { return true; }
    } stop;
    CParameterBlock original = Sample();
    const Image image = Saved(original);
    CParameterBlock block(&stop, image.size());
    EXPECT_EQ(2033, Loaded(block, image));
    EXPECT_EQ(1u, block.parameters.size());
}

TEST(SessionLoad, TakesWhateverCouldBeSaved) {
    CParameterBlock block;
    const std::string name(4096, 'n');
    for (int i = 0; i < 5000; ++i) block.AddParameter(name.c_str(), true);
    CParameterBlock loaded;
    EXPECT_EQ(0, Loaded(loaded, Saved(block)));
    EXPECT_TRUE(loaded == block);
}

TEST(SessionLoad, KeepsToTheBoundOfSavingOnWhatNamesUnfoldTo) {
    // Sixteen names of 64 MiB are a gibibyte, which is allowed; one byte more is not. The outermost
    // block's own name does not count.
    const std::string name(std::size_t{1} << 26, 'n');
    Image image;
    {
        CParameterBlock block;
        block.name = "Top";
        for (int i = 0; i < 16; ++i) block.AddParameter(name.c_str(), true);
        image = Saved(block);
        ASSERT_FALSE(image.empty());
        block.AddParameter("n", true);
        EXPECT_TRUE(Saved(block).empty());
    }
    {
        CParameterBlock loaded;
        EXPECT_EQ(0, Loaded(loaded, image));
        EXPECT_EQ(16u, loaded.parameters.size());
    }
    const std::size_t body = image.size() - (1 + 4 + 16 * 6);
    image[body + 1] = 17;
    image.insert(image.end(), {7, 0, 0, 0, image[body], 1});
    CParameterBlock loaded;
    EXPECT_EQ(2033, Loaded(loaded, image));
    EXPECT_EQ(16u, loaded.parameters.size());
}

TEST(SessionLoad, KeepsNamesOfRealisticLength) {
    CParameterBlock block;
    const std::string name(60, 'n');
    for (int i = 0; i < 100000; ++i) block.AddParameter(name.c_str(), true);
    CParameterBlock loaded;
    EXPECT_EQ(0, Loaded(loaded, Saved(block)));
    EXPECT_EQ(100000u, loaded.parameters.size());
}

TEST(SessionDamage, AnyTruncationHasADefinedResult) {
    CParameterBlock original = Sample();
    const Image image = Saved(original);
    for (std::size_t size = 0; size < image.size(); ++size) {
        CParameterBlock block;
        const int status = Loaded(block, Image(image.begin(), image.begin() + size));
        EXPECT_TRUE(status == 0 || status == 2033 || status == 7534) << size;
    }
}

TEST(SessionDamage, AnyChangedByteHasADefinedResult) {
    CParameterBlock original = Sample();
    const Image image = Saved(original);
    for (std::size_t at = 0; at < image.size(); ++at)
        for (int change = 1; change < 256; ++change) {
            Image damaged = image;
            damaged[at] ^= static_cast<unsigned char>(change);
            CParameterBlock block;
            const int status = Loaded(block, damaged);
            ASSERT_TRUE(status == 0 || status == 2033 || status == 7534) << at;
        }
}

TEST(SessionDeep, ComesBackFromAMillionLevels) {
    CParameterBlock block;
    const CParameterBlock empty;
    CParameterBlock* inner = &block;
    for (int i = 0; i < 1000000; ++i) {
        inner->AddParameter("Deeper", &empty);
        ASSERT_TRUE(inner->FindParameter("Deeper", &inner));
    }
    CParameterBlock loaded;
    EXPECT_EQ(0, Loaded(loaded, Saved(block)));
    EXPECT_TRUE(loaded == block);
}

TEST(SessionFile, IsTheImage) {
    const CTemporaryDirectory directory;
    const std::string path = directory.File("one.session");
    const CFileName file(&path);
    CParameterBlock block = OneInt();
    EXPECT_EQ(0, block.SaveBinarySession("XY", &file));
    const std::string bytes = directory.Read("one.session");
    EXPECT_EQ(oneIntImage, Image(bytes.begin(), bytes.end()));

    CParameterBlock loaded;
    const Ids ids{"XY"};
    EXPECT_EQ(0, loaded.LoadBinarySession(&ids, &file));
    EXPECT_TRUE(loaded == block);
}

TEST(SessionFile, ReplacesALongerOne) {
    const CTemporaryDirectory directory;
    const std::string path = directory.Write("one.session", std::string(1000, '#'));
    const CFileName file(&path);
    EXPECT_EQ(0, OneInt().SaveBinarySession("XY", &file));
    EXPECT_EQ(31u, directory.Read("one.session").size());
}

TEST(SessionFile, IsNotTouchedWhenThereIsNothingToSave) {
    const CTemporaryDirectory directory;
    const std::string path = directory.Write("old.session", "old");
    const CFileName file(&path);
    EXPECT_EQ(2035, CParameterBlock().SaveBinarySession("XY", &file));
    EXPECT_EQ("old", directory.Read("old.session"));
}

TEST(SessionFile, IsNotTouchedWhenItCouldNotBeLoaded) {
    const CTemporaryDirectory directory;
    const std::string path = directory.Write("old.session", "old");
    const CFileName file(&path);
    CParameterBlock block;
    const std::string name(std::size_t{1} << 26, 'n');
    for (int i = 0; i < 17; ++i) block.AddParameter(name.c_str(), true);
    EXPECT_EQ(2035, block.SaveBinarySession("XY", &file));
    EXPECT_EQ("old", directory.Read("old.session"));
}

TEST(SessionFile, FailsWhenItCannotBeOpened) {
    const CTemporaryDirectory directory;
    const std::string missing = directory.File("missing/one.session");
    const CFileName file(&missing);
    const CFileName itself(&directory.Path());
    const Ids ids{"XY"};
    CParameterBlock block = OneInt();
    EXPECT_EQ(2035, block.SaveBinarySession("XY", &file));
    EXPECT_EQ(2035, block.SaveBinarySession("XY", &itself));
    EXPECT_EQ(2035, block.LoadBinarySession(&ids, &file));
    EXPECT_EQ(2035, block.LoadBinarySession(&ids, &itself));
    EXPECT_TRUE(block == OneInt());
}

TEST(SessionFile, LoadsNothingWhenItIsEmpty) {
    const CTemporaryDirectory directory;
    const std::string path = directory.Write("empty.session");
    const CFileName file(&path);
    const Ids ids{"XY"};
    CParameterBlock block = OneInt();
    EXPECT_EQ(0, block.LoadBinarySession(&ids, &file));
    EXPECT_TRUE(block == OneInt());
}

TEST(SessionFile, TellsWhatIsWrongWithItsBytes) {
    const CTemporaryDirectory directory;
    const std::string path = directory.Write("other.session", "something else entirely");
    const CFileName file(&path);
    const Ids ids{"XY"};
    CParameterBlock block = OneInt();
    EXPECT_EQ(7534, block.LoadBinarySession(&ids, &file));
    EXPECT_TRUE(block == OneInt());
    directory.Write("other.session", std::string(oneIntImage.begin(), oneIntImage.end() - 8));
    EXPECT_EQ(2033, block.LoadBinarySession(&ids, &file));
}

}  // namespace
