#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <new>
#include <utility>

#include "FileIO/FileName.h"
#include "tests/FailingAllocation.h"
#include "tests/TemporaryDirectory.h"
#include "utils/ParameterBlock.h"

namespace {

using Ids = std::vector<const char*>;
using Image = std::vector<unsigned char>;

const std::string longText(100, 't');

// Names and texts that need memory of their own, two levels of blocks and enough entries for every
// list to grow.
CParameterBlock Sample() {
    CParameterBlock inner;
    inner.AddParameter("a name that is too long to stand in its string", 1);
    inner.AddParameter("Text", longText.c_str());
    CParameterBlock outer;
    outer.AddParameter("Inner", &inner);
    outer.AddParameter("Inner", &inner);
    CParameterBlock block;
    block.name = "the name of the outermost block is long as well";
    for (int i = 0; i < 20; ++i) block.AddParameter("Number", i);
    block.AddParameter("Outer", &outer);
    return block;
}

struct CReleaseData {
    void operator()(CFMutableDataRef data) const { CFRelease(data); }
};

std::unique_ptr<std::remove_pointer_t<CFMutableDataRef>, CReleaseData> NewData() {
    return std::unique_ptr<std::remove_pointer_t<CFMutableDataRef>, CReleaseData>(
        CFDataCreateMutable(kCFAllocatorDefault, 0));
}

Image Saved(CParameterBlock block) {
    const auto data = NewData();
    const unsigned long length = block.SaveBinarySessionToMemory("XY", data.get());
    unsigned char const* bytes = CFDataGetBytePtr(data.get());
    return {bytes, bytes + length};
}

// Runs `work` with its first allocation failing, then with its second and so on, until none fails;
// `afterFailure` sees what each failure left. Nothing that `work` made may remain.
void FailEveryAllocation(
    std::function<void()> const& work, std::function<void()> const& afterFailure = [] {}) {
    constexpr long manyAllocations = 100000;
    for (long number = 0; number < manyAllocations; ++number) {
        const long before = CFailingAllocation::Live();
        bool failed;
        {
            const CFailingAllocation failing(number);
            work();
            failed = failing.HasFailed();
        }
        ASSERT_EQ(before, CFailingAllocation::Live()) << "allocation " << number;
        if (!failed) {
            EXPECT_GT(number, 0) << "nothing was allocated";
            return;
        }
        afterFailure();
        if (testing::Test::HasFailure()) return;
    }
    FAIL() << "allocations without end";
}

// The same for what throws when memory runs out.
void FailEveryAllocationThrowing(std::function<void()> const& work) {
    bool threw = false;
    FailEveryAllocation(
        [&] {
            try {
                work();
            } catch (std::bad_alloc const&) {
                threw = true;
            }
        },
        [&] { EXPECT_TRUE(std::exchange(threw, false)); });
}

TEST(OutOfMemory, FailsALoadFromMemory) {
    const Image image = Saved(Sample());
    const Ids ids{"XY"};
    int status = 0;
    FailEveryAllocation(
        [&] {
            CParameterBlock block;
            status = block.LoadBinarySessionFromMemory(&ids, image.data(),
                                                       static_cast<unsigned int>(image.size()));
        },
        [&] { EXPECT_EQ(2033, status); });
    EXPECT_EQ(0, status);
}

TEST(OutOfMemory, FailsALoadOfABareImageAndKeepsWhatWasRead) {
    unsigned long size = 0;
    const CParameterBlock sample = Sample();
    const std::unique_ptr<unsigned char[]> image(sample.CreateBlock(&size));
    long consumed = 0;
    std::size_t left = 0;
    FailEveryAllocation(
        [&] {
            CParameterBlock block;
            consumed = block.LoadBlock(nullptr, size, image.get());
            left = block.parameters.size();
            EXPECT_EQ(static_cast<long>(left),
                      std::count_if(block.parameters.begin(), block.parameters.end(),
                                    [](auto* p) { return p != nullptr; }));
        },
        [&] {
            EXPECT_EQ(-1, consumed);
            EXPECT_LE(left, 20u);
        });
    EXPECT_EQ(static_cast<long>(size), consumed);
}

TEST(OutOfMemory, FailsALoadThroughTheBaseClass) {
    CParameterBlock sample = Sample();
    Image image(sample.GetSize());
    sample.Save(0, image.data());
    unsigned long consumed = 0;
    FailEveryAllocation(
        [&] {
            CParameterBlock block;
            consumed = block.Load(nullptr, image.size(), image.data());
        },
        [&] { EXPECT_EQ(~0UL, consumed); });
    EXPECT_EQ(image.size(), consumed);
}

TEST(OutOfMemory, FailsASaveToMemoryAndLeavesTheDataAndTheTokens) {
    CParameterBlock block = Sample();
    constexpr std::uint32_t oldToken = 77;
    for (CParameter* parameter : block.parameters) parameter->token = oldToken;
    unsigned long length = 0;
    std::size_t dataLength = 0;
    FailEveryAllocation(
        [&] {
            bool made = false;
            try {
                const auto data = NewData();
                made = true;
                CFDataSetLength(data.get(), 0);
                length = block.SaveBinarySessionToMemory("XY", data.get());
                dataLength = static_cast<std::size_t>(CFDataGetLength(data.get()));
            } catch (std::bad_alloc const&) {
                EXPECT_FALSE(made) << "saving let the exception out";
            }
        },
        [&] {
            EXPECT_EQ(0u, length);
            EXPECT_EQ(0u, dataLength);
            for (CParameter const* parameter : block.parameters)
                EXPECT_EQ(oldToken, parameter->token);
        });
    EXPECT_EQ(length + 32, dataLength);
}

TEST(OutOfMemory, FailsAFileAndLeavesTheOldOne) {
    const CTemporaryDirectory directory;
    const std::string path = directory.Write("one.session", "old");
    const CFileName file(&path);
    CParameterBlock block = Sample();
    int status = 0;
    FailEveryAllocation([&] { status = block.SaveBinarySession("XY", &file); },
                        [&] {
                            EXPECT_EQ(2035, status);
                            EXPECT_EQ("old", directory.Read("one.session"));
                        });
    EXPECT_EQ(0, status);
    const Ids ids{"XY"};
    FailEveryAllocation(
        [&] {
            CParameterBlock loaded;
            status = loaded.LoadBinarySession(&ids, &file);
        },
        [&] { EXPECT_TRUE(status == 2035 || status == 2033) << status; });
    EXPECT_EQ(0, status);
}

TEST(OutOfMemory, ThrowsOutOfCopiesAndLeavesTheTarget) {
    const CParameterBlock source = Sample();
    FailEveryAllocationThrowing([&] { const CParameterBlock copy(source); });
    FailEveryAllocationThrowing(
        [&] { const CParameterBlock copy("another name for the copy", &source); });
    CParameterBlock target;
    target.AddParameter("A", 1);
    const CParameterBlock before(target);
    for (long number = 0;; ++number) {
        bool failed;
        {
            const CFailingAllocation failing(number);
            try {
                target.CopyParameters(&source);
            } catch (std::bad_alloc const&) {
            }
            failed = failing.HasFailed();
        }
        if (!failed) break;
        ASSERT_TRUE(target == before) << number;
    }
    EXPECT_EQ(source.parameters.size(), target.parameters.size());
}

TEST(OutOfMemory, ThrowsOutOfAddingAndLeavesTheBlock) {
    FailEveryAllocationThrowing([] {
        CParameterBlock block;
        block.AddParameter("a name that is too long to stand in its string", longText.c_str());
    });
    CParameterBlock block;
    int payload = 0;
    CBinaryBlock binary(&payload, nullptr, nullptr);
    binary.AddRef();
    for (long number = 0; number < 2; ++number) {
        const CFailingAllocation failing(number);
        EXPECT_THROW(block.AddParameter("B", &binary), std::bad_alloc);
        EXPECT_EQ(1, binary.m_nReferenceCount);
        EXPECT_TRUE(block.parameters.empty());
    }
}

TEST(OutOfMemory, DoesNotTakeABinaryBlockThatNobodyHeld) {
    int freed = 0;
    const auto count = [](void* counter) { ++*static_cast<int*>(counter); };
    auto binary = std::make_unique<CBinaryBlock>(&freed, count, nullptr);
    CParameterBlock block;
    for (long number = 0;; ++number) {
        const CFailingAllocation failing(number);
        try {
            block.AddParameter("a name that is too long to stand in its string", binary.get());
        } catch (std::bad_alloc const&) {
        }
        if (!failing.HasFailed()) break;
        ASSERT_EQ(0, freed) << number;
        ASSERT_EQ(0, binary->m_nReferenceCount) << number;
    }
    static_cast<void>(binary.release());
    block.Clear();
    EXPECT_EQ(1, freed);
}

TEST(OutOfMemory, ThrowsOutOfMeasuringComparingAndBareImages) {
    const CParameterBlock block = Sample(), other = Sample();
    FailEveryAllocationThrowing([&] { EXPECT_GT(block.GetSize(), 0u); });
    FailEveryAllocationThrowing([&] { EXPECT_TRUE(block == other); });
    FailEveryAllocationThrowing([&] {
        unsigned long size = 0;
        const std::unique_ptr<unsigned char[]> image(block.CreateBlock(&size));
    });
}

TEST(SessionMemory, IsTheImagePlusLittleWhenItIsSaved) {
    CParameterBlock block;
    const std::string text(10000, 't');
    for (int i = 0; i < 200; ++i) block.AddParameter("Text", text.c_str());
    const auto data = NewData();
    const CFailingAllocation watch;
    const unsigned long length = block.SaveBinarySessionToMemory("XY", data.get());
    EXPECT_EQ(1, watch.AtLeast(length / 20));
    EXPECT_LT(watch.Bytes(), length + length / 20);
}

// Notes where it was told to save itself.
struct CNotingParameter : CIntParameter {
    using CIntParameter::CIntParameter;

    unsigned long Save(unsigned long available, unsigned char* out) const override {
        places.push_back(out);
        return CIntParameter::Save(available, out);
    }

    static inline std::vector<unsigned char*> places;
};

TEST(SessionMemory, IsWrittenOnceAndWhereItStays) {
    CNotingParameter::places.clear();
    CParameterBlock block;
    block.parameters.push_back(new CNotingParameter("First", 1));
    for (int i = 0; i < 20000; ++i) block.AddParameter("Between", i);
    block.parameters.push_back(new CNotingParameter("Last", 2));
    const auto data = NewData();
    const unsigned long length = block.SaveBinarySessionToMemory("XY", data.get());
    unsigned char const* const image = CFDataGetBytePtr(data.get());
    ASSERT_EQ(2u, CNotingParameter::places.size());
    EXPECT_EQ(image + length - 5, CNotingParameter::places[1]);
    EXPECT_GT(CNotingParameter::places[0], image);
    EXPECT_LT(CNotingParameter::places[0], image + 100);
}

TEST(SessionMemory, IsASmallMultipleOfATableOfEmptyNames) {
    constexpr std::size_t names = 1000000;
    Image image(15 + names + 1 + 4);
    image[0] = 'X';
    image[1] = 'Y';
    for (int byte = 0; byte < 4; ++byte)
        image[7 + byte] = image[11 + byte] = static_cast<unsigned char>(names >> byte * 8);
    const Ids ids{"XY"};
    CParameterBlock block;
    const CFailingAllocation watch;
    EXPECT_EQ(0, block.LoadBinarySessionFromMemory(&ids, image.data(),
                                                   static_cast<unsigned int>(image.size())));
    EXPECT_LT(watch.Bytes(), names * 5);
}

// A class with something polymorphic in front of the parameter.
struct CNeighbour {
    virtual ~CNeighbour() = default;
    std::string strText = longText;
};

struct CSecondBase : CNeighbour, CIntParameter {
    using CIntParameter::operator=;
};

struct alignas(256) CWideParameter : CIntParameter {
    using CIntParameter::CIntParameter;
};

TEST(DerivedParameter, MayHaveAnotherBaseInFront) {
    const long before = CFailingAllocation::Live();
    {
        CParameterBlock block;
        for (int i = 0; i < 3; ++i) block.parameters.push_back(new CSecondBase);
        block.AddParameter("A", 1);
        block.Clear();
        EXPECT_TRUE(block.parameters.empty());
    }
    EXPECT_EQ(before, CFailingAllocation::Live());
}

TEST(DerivedParameter, GetsTheAlignmentThatItAsksFor) {
    CParameterBlock block;
    for (int i = 0; i < 10; ++i) {
        auto* const wide = new CWideParameter("W", i);
        EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(wide) % 256);
        block.parameters.push_back(wide);
    }
}

}  // namespace
