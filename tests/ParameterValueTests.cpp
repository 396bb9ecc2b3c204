#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <locale>
#include <memory>
#include <typeinfo>

#include "tests/ByteText.h"
#include "utils/ParameterBlock.h"

namespace {

using Names = std::vector<std::string>;

std::vector<unsigned char> Saved(CParameter const& parameter) {
    std::vector<unsigned char> bytes(parameter.GetSize());
    EXPECT_EQ(bytes.size(), parameter.Save(0, bytes.data()));
    return bytes;
}

template <typename Parameter>
unsigned long LoadFrom(Parameter& parameter, std::vector<unsigned char> const& bytes,
                       Names const* names = nullptr) {
    // An exact copy on the heap lets a sanitizer see the smallest step too far.
    const std::unique_ptr<unsigned char[]> copy(new unsigned char[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), copy.get());
    return parameter.Load(names, bytes.size(), copy.get());
}

template <typename Parameter>
Parameter Reloaded(Parameter const& parameter) {
    Parameter copy;
    EXPECT_EQ(parameter.GetSize(), LoadFrom(copy, Saved(parameter)));
    return copy;
}

struct CCommaNumbers : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
    std::string do_truename() const override { return "wahr"; }
};

TEST(ParameterName, StandsInlineWithoutAToken) {
    const CIntParameter type("Type", 3);
    EXPECT_EQ(12u, type.GetSize());
    EXPECT_EQ(Bytes("04 00 00 00 54 79 70 65 03 00 00 00"), Saved(type));
    EXPECT_EQ(Bytes("00 00 00 00 03 00 00 00"), Saved(CIntParameter("", 3)));
}

TEST(ParameterName, ShrinksToItsToken) {
    CIntParameter type("Type", 3);
    type.token = 7;
    EXPECT_EQ(Bytes("07 03 00 00 00"), Saved(type));
    type.token = 300;
    EXPECT_EQ(Bytes("FF 2C 01 00 03 00 00 00"), Saved(type));
}

TEST(ParameterName, TakesFourBytesFromToken255On) {
    CBoolParameter flag("F", true);
    flag.token = 254;
    EXPECT_EQ(Bytes("FE 01"), Saved(flag));
    flag.token = 255;
    EXPECT_EQ(Bytes("FF FF 00 00 01"), Saved(flag));
    EXPECT_EQ(4u, flag.GetSizeOfName());
    flag.token = 0x12345678;
    EXPECT_EQ(Bytes("FF 78 56 34 01"), Saved(flag));
    flag.token = 0;
    EXPECT_EQ(Bytes("00 01"), Saved(flag));
}

TEST(ParameterName, IsFoundInTheTable) {
    const Names names{"", "A", "B"};
    CIntParameter number;
    EXPECT_EQ(5u, LoadFrom(number, Bytes("02 05 00 00 00"), &names));
    EXPECT_EQ("B", number.name);
    EXPECT_EQ(2u, number.token);
    EXPECT_EQ(5, number.value);
    EXPECT_EQ(8u, LoadFrom(number, Bytes("FF 01 00 00 06 00 00 00"), &names));
    EXPECT_EQ("A", number.name);
    EXPECT_EQ(1u, number.token);
}

TEST(ParameterName, IsEmptyForATokenBeyondTheTable) {
    const Names names{"", "A"};
    CIntParameter number("Old", 1);
    EXPECT_EQ(5u, LoadFrom(number, Bytes("02 05 00 00 00"), &names));
    EXPECT_EQ("", number.name);
    EXPECT_EQ(2u, number.token);
    EXPECT_EQ(8u, LoadFrom(number, Bytes("FF FF FF FF 05 00 00 00"), &names));
    EXPECT_EQ("", number.name);
    EXPECT_EQ(0xFFFFFFu, number.token);
}

TEST(ParameterName, KeepsTheTokenWhenALongOneIsCutOff) {
    const Names names{"", "A"};
    CIntParameter number("Old", 1);
    number.token = 1;
    EXPECT_EQ(0u, LoadFrom(number, Bytes("FF 01 00"), &names));
    EXPECT_EQ(1u, number.token);
    EXPECT_EQ("A", number.name);
    EXPECT_EQ(1, number.value);
}

TEST(ParameterName, StaysWhenNothingIsThere) {
    const Names names{"", "A"};
    CIntParameter number("Old", 1);
    EXPECT_EQ(0u, LoadFrom(number, {}, &names));
    EXPECT_EQ("Old", number.name);
    EXPECT_EQ(noToken, number.token);
    EXPECT_EQ(0u, LoadFrom(number, Bytes("01 00 00")));
    EXPECT_EQ("Old", number.name);
}

TEST(ParameterName, StaysWhenItsLengthIsZeroOrTooLarge) {
    CIntParameter number("Old", 1);
    number.token = 9;
    EXPECT_EQ(8u, LoadFrom(number, Bytes("00 00 00 00 05 00 00 00")));
    EXPECT_EQ("Old", number.name);
    EXPECT_EQ(5, number.value);
    EXPECT_EQ(9u, number.token);
    EXPECT_EQ(8u, LoadFrom(number, Bytes("05 00 00 00 41 42 43 44")));
    EXPECT_EQ("Old", number.name);
    EXPECT_EQ(0x44434241, number.value);
    EXPECT_EQ(8u, LoadFrom(number, Bytes("FF FF FF FF 41 42 43 44")));
    EXPECT_EQ("Old", number.name);
}

TEST(ParameterName, CountsInAMapUnlessEmpty) {
    std::map<std::string, int> counts;
    CIntParameter("A", 1).AddNameToMap(counts);
    CIntParameter("A", 2).AddNameToMap(counts);
    CIntParameter("", 3).AddNameToMap(counts);
    EXPECT_EQ((std::map<std::string, int>{{"A", 2}}), counts);
}

TEST(ParameterName, TakesItsTokenFromAMap) {
    const std::map<std::string, int> tokens{{"", 5}, {"A", 3}};
    CIntParameter known("A", 1), unknown("B", 1), unnamed("", 1);
    for (CParameter* parameter : {&known, &unknown, &unnamed})
        parameter->UpdateTokenFromMap(tokens);
    EXPECT_EQ(3u, known.token);
    EXPECT_EQ(0u, unknown.token);
    EXPECT_EQ(0u, unnamed.token);
}

TEST(ParameterValue, HasItsTagAndDefault) {
    EXPECT_EQ(1u, CStringParameter().type);
    EXPECT_EQ("", CStringParameter().value);
    EXPECT_EQ(2u, CIntParameter().type);
    EXPECT_EQ(0, CIntParameter().value);
    EXPECT_EQ(3u, CDoubleParameter().type);
    EXPECT_EQ(0.0, CDoubleParameter().value);
    EXPECT_EQ(4u, CUInt64Parameter().type);
    EXPECT_EQ(0u, CUInt64Parameter().value);
    EXPECT_EQ(5u, CFileIdTypeParameter().type);
    EXPECT_EQ(~std::uint64_t{0}, CFileIdTypeParameter().value.first);
    EXPECT_EQ(~std::uint64_t{0}, CFileIdTypeParameter().value.second);
    EXPECT_EQ(6u, CParameterBlock().type);
    EXPECT_EQ(7u, CBoolParameter().type);
    EXPECT_FALSE(CBoolParameter().value);
    EXPECT_EQ(8u, CFloatParameter().type);
    EXPECT_EQ(0.0f, CFloatParameter().value);
    EXPECT_EQ(9u, CSInt64Parameter().type);
    EXPECT_EQ(0, CSInt64Parameter().value);
    EXPECT_EQ(10u, CBinaryBlockParameter().type);
    EXPECT_EQ(nullptr, CBinaryBlockParameter().block);
    EXPECT_EQ("", CIntParameter().name);
    EXPECT_EQ(noToken, CIntParameter().token);
}

TEST(ParameterValue, TakesNullTextsAsEmpty) {
    EXPECT_EQ("", CIntParameter(nullptr, 1).name);
    EXPECT_EQ("", CStringParameter(nullptr, nullptr).name);
    EXPECT_EQ("", CStringParameter("N", nullptr).value);
}

TEST(ParameterValue, HasItsBytes) {
    EXPECT_EQ(Bytes("00000000 03000000 616263"), Saved(CStringParameter("", "abc")));
    EXPECT_EQ(Bytes("00000000 FEFFFFFF"), Saved(CIntParameter("", -2)));
    EXPECT_EQ(Bytes("00000000 000000000000F03F"), Saved(CDoubleParameter("", 1.0)));
    EXPECT_EQ(Bytes("00000000 0807060504030201"), Saved(CUInt64Parameter("", 0x0102030405060708)));
    EXPECT_EQ(Bytes("00000000 01"), Saved(CBoolParameter("", true)));
    EXPECT_EQ(Bytes("00000000 0000003F"), Saved(CFloatParameter("", 0.5f)));
    EXPECT_EQ(Bytes("00000000 FFFFFFFFFFFFFFFF"), Saved(CSInt64Parameter("", -1)));
}

TEST(ParameterValue, ComesBackAsItWas) {
    EXPECT_EQ("a\xFF z", Reloaded(CStringParameter("N", "a\xFF z")).value);
    EXPECT_EQ(INT32_MIN, Reloaded(CIntParameter("N", INT32_MIN)).value);
    EXPECT_EQ(-0.1, Reloaded(CDoubleParameter("N", -0.1)).value);
    EXPECT_EQ(~0ULL, Reloaded(CUInt64Parameter("N", ~0ULL)).value);
    EXPECT_TRUE(Reloaded(CBoolParameter("N", true)).value);
    EXPECT_EQ(0.1f, Reloaded(CFloatParameter("N", 0.1f)).value);
    EXPECT_EQ(INT64_MIN, Reloaded(CSInt64Parameter("N", INT64_MIN)).value);
    EXPECT_EQ("N", Reloaded(CSInt64Parameter("N", 1)).name);
}

TEST(ParameterValue, ReadsAFileIdentity) {
    CFileIdTypeParameter id;
    EXPECT_EQ(20u, id.GetSize());
    EXPECT_EQ(20u, LoadFrom(id, Bytes("00000000 0100000000000000 0200000000000000")));
    EXPECT_EQ(1u, id.value.first);
    EXPECT_EQ(2u, id.value.second);
}

TEST(ParameterValue, StaysWhenItIsCutOff) {
    CDoubleParameter number("N", 2.5);
    EXPECT_EQ(5u, LoadFrom(number, Bytes("01000000 4D")));
    EXPECT_EQ("M", number.name);
    EXPECT_EQ(2.5, number.value);
    EXPECT_EQ(5u, LoadFrom(number, Bytes("01000000 4D 000000000000F0")));
    EXPECT_EQ(2.5, number.value);
    CFileIdTypeParameter id;
    EXPECT_EQ(4u, LoadFrom(id, Bytes("00000000 0100000000000000 02000000000000")));
    EXPECT_EQ(KEL::FileIdType(), id.value);
    CBoolParameter flag("N", true);
    EXPECT_EQ(4u, LoadFrom(flag, Bytes("00000000")));
    EXPECT_TRUE(flag.value);
}

TEST(ParameterValue, ReadsAnyOtherByteAsTrue) {
    CBoolParameter flag;
    EXPECT_EQ(5u, LoadFrom(flag, Bytes("00000000 02")));
    EXPECT_TRUE(flag.value);
    EXPECT_EQ(Bytes("00000000 01"), Saved(flag));
}

TEST(ParameterValue, EmptiesAStringWhoseLengthLies) {
    CStringParameter text("N", "old");
    EXPECT_EQ(9u, LoadFrom(text, Bytes("01000000 4D 04000000 616263")));
    EXPECT_EQ("M", text.name);
    EXPECT_EQ("", text.value);
    EXPECT_EQ(9u, LoadFrom(text, Bytes("01000000 4D FFFFFFFF 616263")));
    EXPECT_EQ("", text.value);
}

TEST(ParameterValue, EmptiesAStringWhoseLengthIsCutOff) {
    CStringParameter text("N", "old");
    EXPECT_EQ(5u, LoadFrom(text, Bytes("01000000 4D 030000")));
    EXPECT_EQ("", text.value);
    EXPECT_EQ(12u, LoadFrom(text, Bytes("01000000 4D 03000000 616263 64")));
    EXPECT_EQ("abc", text.value);
    EXPECT_EQ(0u, LoadFrom(text, {}));
    EXPECT_EQ("", text.value);
    EXPECT_EQ("M", text.name);
}

TEST(ParameterValue, LoadsFromEveryTruncationWithinItsBounds) {
    const Names names{"", "A"};
    for (Names const* table : {static_cast<Names const*>(nullptr), &names})
        for (std::size_t size = 0; size < 24; ++size)
            for (unsigned char fill : {0x00, 0x01, 0x7F, 0xFF}) {
                const std::vector<unsigned char> bytes(size, fill);
                CStringParameter text;
                CIntParameter number;
                CDoubleParameter real;
                CFileIdTypeParameter id;
                CBoolParameter flag;
                CParameterBlock block;
                EXPECT_LE(LoadFrom(text, bytes, table), size);
                EXPECT_LE(LoadFrom(number, bytes, table), size);
                EXPECT_LE(LoadFrom(real, bytes, table), size);
                EXPECT_LE(LoadFrom(id, bytes, table), size);
                EXPECT_LE(LoadFrom(flag, bytes, table), size);
                const unsigned long consumed = LoadFrom(block, bytes, table);
                EXPECT_TRUE(consumed <= size || consumed == ~0UL);
            }
}

TEST(ParameterText, IsTheValue) {
    EXPECT_EQ("abc", CStringParameter("N", "abc").GetString());
    EXPECT_EQ("-2147483648", CIntParameter("N", INT32_MIN).GetString());
    EXPECT_EQ("18446744073709551615", CUInt64Parameter("N", ~0ULL).GetString());
    EXPECT_EQ("-9223372036854775808", CSInt64Parameter("N", INT64_MIN).GetString());
    EXPECT_EQ("0.5", CDoubleParameter("N", 0.5).GetString());
    EXPECT_EQ("1.23457e+06", CDoubleParameter("N", 1234567).GetString());
    EXPECT_EQ("123456", CDoubleParameter("N", 123456).GetString());
    EXPECT_EQ("0.1", CFloatParameter("N", 0.1f).GetString());
    EXPECT_EQ("1e-05", CFloatParameter("N", 0.00001f).GetString());
    EXPECT_EQ("1", CBoolParameter("N", true).GetString());
    EXPECT_EQ("0", CBoolParameter("N", false).GetString());
    EXPECT_EQ("FileID", CFileIdTypeParameter().GetString());
    EXPECT_EQ("Binary Block", CBinaryBlockParameter().GetString());
    EXPECT_EQ("Block", CParameterBlock().GetString());
}

TEST(ParameterText, IsTheSameInEveryLocale) {
    const std::locale old =
        std::locale::global(std::locale(std::locale::classic(), new CCommaNumbers));
    EXPECT_EQ("0.5", CDoubleParameter("N", 0.5).GetString());
    EXPECT_EQ("0.25", CFloatParameter("N", 0.25f).GetString());
    EXPECT_EQ("1234567", CIntParameter("N", 1234567).GetString());
    EXPECT_EQ("1234567", CSInt64Parameter("N", 1234567).GetString());
    EXPECT_EQ("1234567", CUInt64Parameter("N", 1234567).GetString());
    EXPECT_EQ("1", CBoolParameter("N", true).GetString());
    std::locale::global(old);
}

TEST(ParameterText, IsTheSameUnderACommaInTheCLibrary) {
    const std::string old = std::setlocale(LC_ALL, nullptr);
    bool found = false;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE"})
        found = found || std::setlocale(LC_ALL, name) != nullptr;
    EXPECT_EQ("0.5", CDoubleParameter("N", 0.5).GetString());
    std::setlocale(LC_ALL, old.c_str());
    if (!found) GTEST_SKIP() << "no locale with a decimal comma is installed";
}

TEST(ParameterEquality, NeedsTypeNameAndValue) {
    EXPECT_TRUE(CIntParameter("X", 1) == CIntParameter("X", 1));
    EXPECT_FALSE(CIntParameter("X", 1) == CIntParameter("X", 2));
    EXPECT_FALSE(CIntParameter("X", 1) == CIntParameter("x", 1));
    EXPECT_FALSE(CIntParameter("X", 1) == CFloatParameter("X", 1.0f));
    EXPECT_TRUE(CIntParameter("X", 1) != CUInt64Parameter("X", 1));
    EXPECT_TRUE(CStringParameter("X", "a") == CStringParameter("X", "a"));
    EXPECT_FALSE(CStringParameter("X", "a") == CStringParameter("X", "A"));
    EXPECT_TRUE(CBoolParameter("X", true) == CBoolParameter("X", true));
    EXPECT_TRUE(CFileIdTypeParameter("X", {1, 2}) == CFileIdTypeParameter("X", {1, 2}));
    EXPECT_FALSE(CFileIdTypeParameter("X", {1, 2}) == CFileIdTypeParameter("X", {1, 3}));
}

TEST(ParameterEquality, IgnoresTokens) {
    CIntParameter left("X", 1), right("X", 1);
    left.token = 1;
    EXPECT_TRUE(left == right);
}

TEST(ParameterEquality, ComparesFloatingNumbersAsNumbers) {
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(CDoubleParameter("X", 0.0) == CDoubleParameter("X", -0.0));
    EXPECT_TRUE(CFloatParameter("X", 0.0f) == CFloatParameter("X", -0.0f));
    const CDoubleParameter nan("X", notANumber);
    EXPECT_FALSE(nan == nan);
    const CFloatParameter floatNan("X", static_cast<float>(notANumber));
    EXPECT_FALSE(floatNan == floatNan);
}

TEST(ParameterCopy, TakesNameAndValueButNoToken) {
    CIntParameter number("X", 1);
    number.token = 5;
    CParameter* source = &number;
    const CIntParameter fromPointer(source);
    const CIntParameter fromReference(number);
    for (CIntParameter const& copy : {fromPointer, fromReference}) {
        EXPECT_EQ("X", copy.name);
        EXPECT_EQ(1, copy.value);
        EXPECT_EQ(noToken, copy.token);
    }
    CStringParameter text("S", "abc");
    text.token = 6;
    EXPECT_EQ(noToken, CStringParameter(text).token);
    EXPECT_EQ("abc", CStringParameter(&text).value);
    CStringParameter moved(std::move(text));
    EXPECT_EQ(noToken, moved.token);
}

TEST(ParameterCopyDeathTest, StopsForAnotherClass) {
    CBoolParameter flag("X", true);
    EXPECT_DEATH(CIntParameter(static_cast<CParameter*>(&flag)), "source->type == Class::tag");
}

TEST(ParameterAssignment, KeepsTheToken) {
    CIntParameter source("X", 1), target("Y", 2);
    source.token = 5;
    target.token = 6;
    target = source;
    EXPECT_EQ("X", target.name);
    EXPECT_EQ(1, target.value);
    EXPECT_EQ(6u, target.token);

    CIntParameter other("Z", 3);
    CParameter& base = target;
    base = other;
    EXPECT_EQ("Z", target.name);
    EXPECT_EQ(3, target.value);
    EXPECT_EQ(6u, target.token);

    CStringParameter text("T", "old");
    text.token = 4;
    text = CStringParameter("U", "new");
    EXPECT_EQ("new", text.value);
    EXPECT_EQ(4u, text.token);
}

TEST(ParameterAssignment, RefusesAnotherClass) {
    CIntParameter number("X", 1);
    CBoolParameter flag("Y", true);
    CStringParameter text("Z", "text");
    CParameterBlock block;
    CBinaryBlockParameter binary;
    CParameter* const all[] = {&number, &flag, &text, &block, &binary};
    for (CParameter* target : all)
        for (CParameter* source : all) {
            if (target != source) {
                EXPECT_THROW(*target = *source, std::bad_cast);
            }
        }
    EXPECT_THROW(number = flag, std::bad_cast);
    EXPECT_EQ("X", number.name);
    EXPECT_EQ(1, number.value);
}

TEST(UnsupportedDeathTest, SavingAFileIdentityStops) {
    unsigned char out[64];
    EXPECT_DEATH(CFileIdTypeParameter("X", {1, 2}).Save(64, out),
                 "Assertion failed: false, .*utils/ParameterBlock");
}

TEST(UnsupportedDeathTest, ABinaryBlockHasNoBytes) {
    unsigned char out[64] = {};
    CBinaryBlockParameter parameter;
    EXPECT_DEATH(parameter.GetSize(), "Assertion failed: false, .*utils/ParameterBlock");
    EXPECT_DEATH(parameter.Save(64, out), "Assertion failed: false, .*utils/ParameterBlock");
    EXPECT_DEATH(parameter.Load(nullptr, 64, out),
                 "Assertion failed: false, .*utils/ParameterBlock");
}

// Counts the payloads that are freed and copied.
struct CPayload {
    int* freed;
    int* copied;
};

void FreePayload(void* payload) {
    auto* data = static_cast<CPayload*>(payload);
    ++*data->freed;
    delete data;
}

void* CopyPayload(void* payload) {
    auto* data = static_cast<CPayload*>(payload);
    ++*data->copied;
    return new CPayload(*data);
}

class BinaryBlock : public testing::Test {
protected:
    CBinaryBlock* Make() {
        return new CBinaryBlock(new CPayload{&freed, &copied}, FreePayload, CopyPayload);
    }

    int freed = 0;
    int copied = 0;
};

TEST_F(BinaryBlock, LivesAsLongAsAHolder) {
    CBinaryBlock* block = Make();
    EXPECT_EQ(0, block->m_nReferenceCount);
    {
        CBinaryBlockParameter first("B", block);
        EXPECT_EQ(1, block->m_nReferenceCount);
        {
            CBinaryBlockParameter second(&first);
            const CBinaryBlockParameter third(second);
            EXPECT_EQ(3, block->m_nReferenceCount);
            EXPECT_EQ("B", third.name);
            EXPECT_EQ(block, third.block);
        }
        EXPECT_EQ(1, block->m_nReferenceCount);
        EXPECT_EQ(0, freed);
    }
    EXPECT_EQ(1, freed);
}

TEST_F(BinaryBlock, CopiesItsPayload) {
    const std::unique_ptr<CBinaryBlock> block(Make());
    block->m_nReferenceCount = 3;
    const std::unique_ptr<CBinaryBlock> copy(block->Copy());
    EXPECT_EQ(0, copy->m_nReferenceCount);
    EXPECT_NE(block->data, copy->data);
    EXPECT_EQ(1, copied);
    EXPECT_EQ(block->freeFunction, copy->freeFunction);
    EXPECT_EQ(block->copyFunction, copy->copyFunction);
}

TEST_F(BinaryBlock, HasNoCopyWithoutPayloadOrFunction) {
    EXPECT_EQ(nullptr, CBinaryBlock(nullptr, FreePayload, CopyPayload).Copy());
    int value = 0;
    EXPECT_EQ(nullptr, CBinaryBlock(&value, nullptr, nullptr).Copy());
}

TEST_F(BinaryBlock, MayHoldNothing) {
    CBinaryBlockParameter empty;
    const CBinaryBlockParameter copy(&empty);
    EXPECT_EQ(nullptr, copy.block);
    CBinaryBlockParameter target("T", Make());
    target = empty;
    EXPECT_EQ(nullptr, target.block);
    EXPECT_EQ(1, freed);
}

TEST_F(BinaryBlock, AssignmentDestroysWhatWasHeldAndCopies) {
    CBinaryBlock* sourceBlock = Make();
    CBinaryBlockParameter source("S", sourceBlock);
    CBinaryBlockParameter target("T", Make());
    target.token = 9;
    CParameter& base = target;
    base = source;
    EXPECT_EQ(1, freed);
    EXPECT_EQ(1, copied);
    EXPECT_NE(sourceBlock, target.block);
    EXPECT_EQ(0, target.block->m_nReferenceCount);
    EXPECT_EQ(1, sourceBlock->m_nReferenceCount);
    EXPECT_EQ("S", target.name);
    EXPECT_EQ(9u, target.token);
    target.block->AddRef();
}

TEST_F(BinaryBlock, AssignmentDestroysBeforeItCopies) {
    // The payload of both counts the same events: the copy must find the other one freed.
    struct CEvents {
        static std::string& Text() {
            static std::string text;
            return text;
        }
        static void Free(void*) { Text() += "free "; }
        static void* Copy(void* payload) {
            Text() += "copy ";
            return payload;
        }
    };
    CEvents::Text().clear();
    int payload = 0;
    {
        CBinaryBlockParameter source("S", new CBinaryBlock(&payload, nullptr, CEvents::Copy));
        CBinaryBlockParameter target("T", new CBinaryBlock(&payload, CEvents::Free, nullptr));
        target = source;
        target.block->AddRef();
    }
    EXPECT_EQ("free copy ", CEvents::Text());
}

TEST_F(BinaryBlock, SurvivesAssignmentToItself) {
    CBinaryBlockParameter parameter("S", Make());
    CParameter& base = parameter;
    base = parameter;
    EXPECT_EQ(1, freed);
    EXPECT_NE(nullptr, parameter.block);
    parameter.block->AddRef();
}

TEST_F(BinaryBlock, IsNeverEqual) {
    CBinaryBlockParameter first("B", Make());
    const CBinaryBlockParameter second(&first);
    EXPECT_FALSE(first == second);
    EXPECT_FALSE(first == first);
}

TEST(BinaryBlockDeathTest, AnUncountedBlockStopsItsHoldersEnd) {
    int value = 0;
    const auto copy = [](void* payload) { return payload; };
    const auto assignAndLeave = [&] {
        CBinaryBlockParameter source("S", new CBinaryBlock(&value, nullptr, copy));
        CBinaryBlockParameter target;
        target = source;
    };
    EXPECT_DEATH(assignAndLeave(), "m_nReferenceCount >= 0, .*utils/ParameterBlock");
}

TEST(BinaryBlockDeathTest, ReleasingTooOftenStops) {
    CBinaryBlock block(nullptr, nullptr, nullptr);
    EXPECT_DEATH(block.Release(), "m_nReferenceCount >= 0");
}

TEST(BinaryBlockDeathTest, AParameterNeedsABlock) {
    EXPECT_DEATH(CBinaryBlockParameter("B", nullptr), "block != nullptr");
}

TEST(BinaryBlockDeathTest, AnExceptionFromFreeingEndsTheProgram) {
    int value = 0;
    const auto fail = [](void*) { throw 1; };
    EXPECT_DEATH(delete new CBinaryBlock(&value, fail, nullptr), "");
}

}  // namespace
