#include "plugin/PlugInState.h"

#include <gtest/gtest.h>

#include "plugin/TakeBook.h"

namespace {

CPlugInState SomeState() {
    CPlugInState state;
    state.nKind = 1;
    state.strCaptureDirectory = "/somewhere/Captures/2024_01_02/Audio_abcdef";
    state.nTrack = 7;
    state.takes = {{"/somewhere/T\xc3\xa4ke_0001.wav", 48000, 96000, TakeEnd::Stopped, 0, true},
                   {"/somewhere/Take_0002.wav", -5, 1, TakeEnd::Overflow, -1, false}};
    state.strReturnedFile = "/somewhere/Return_0001.wav";
    state.lReturnedPosition = 9007199254740993;
    return state;
}

TEST(PlugInState, ComesBackAsItWas) {
    for (CPlugInState const& state : {SomeState(), CPlugInState{}}) {
        CPlugInState loaded;
        std::string strReason;
        ASSERT_TRUE(LoadState(SaveState(state), state.nKind, &loaded, &strReason)) << strReason;
        EXPECT_EQ(loaded, state);
        EXPECT_TRUE(strReason.empty());
    }
}

TEST(PlugInState, IsASessionImageOfParameterBlocks) {
    const std::string strImage = SaveState(SomeState());
    EXPECT_NE(strImage.find("Tavarin plug-in 1"), std::string::npos);
    EXPECT_NE(strImage.find("Capture directory"), std::string::npos);
}

TEST(PlugInState, RefusesEveryDamagedByteAndEveryShorterImage) {
    const std::string strImage = SaveState(SomeState());
    const CPlugInState before = {9, "kept", 3, {}, "", 0};
    for (std::size_t nByte = 0; nByte < strImage.size(); ++nByte) {
        std::string strDamaged = strImage;
        strDamaged[nByte] = static_cast<char>(strDamaged[nByte] ^ 0x10);
        CPlugInState loaded = before;
        std::string strReason;
        ASSERT_FALSE(LoadState(strDamaged, 1, &loaded, &strReason)) << nByte;
        ASSERT_EQ(loaded, before);
        ASSERT_FALSE(strReason.empty());
        ASSERT_FALSE(LoadState(strImage.substr(0, nByte), 1, &loaded, &strReason)) << nByte;
    }
}

TEST(PlugInState, RefusesThatOfAnotherPlugIn) {
    CPlugInState loaded;
    std::string strReason;
    EXPECT_FALSE(LoadState(SaveState(SomeState()), 2, &loaded, &strReason));
    EXPECT_NE(strReason.find("another plug-in"), std::string::npos);
}

CTake Take(std::string const& strFile) {
    CTake take;
    take.strFile = strFile;
    return take;
}

TEST(TakeBook, HandsTakesOutOneByOneInTheirOrder) {
    CTakeBook book(0);
    EXPECT_FALSE(book.Pick());
    book.Add(Take("a"));
    book.Add(Take("b"));
    ASSERT_EQ(book.Pick()->strFile, "a");
    EXPECT_FALSE(book.Pick());
    book.PutBack();
    ASSERT_EQ(book.Pick()->strFile, "a");
    book.Handled(3);
    EXPECT_EQ(book.LastOn(3)->strFile, "a");
    EXPECT_TRUE(book.IsWaiting());
    ASSERT_EQ(book.Pick()->strFile, "b");
    book.Handled(-1);
    EXPECT_FALSE(book.IsWaiting());
    EXPECT_EQ(book.Last()->strFile, "b");
}

TEST(TakeBook, ForgetsOldTakesButNoneThatWaits) {
    CTakeBook book(0);
    for (int nTake = 0; nTake < 100; ++nTake) book.Add(Take(std::to_string(nTake)));
    EXPECT_EQ(book.State().takes.size(), 100U);
    for (int nTake = 0; nTake < 100; ++nTake) {
        ASSERT_EQ(book.Pick()->strFile, std::to_string(nTake));
        book.Handled(0);
    }
    EXPECT_EQ(book.State().takes.size(), kRememberedTakes);
    EXPECT_EQ(book.Last()->strFile, "99");
}

}  // namespace
