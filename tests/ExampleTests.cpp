// The examples that people begin with, run as they are told to run them.

#include <gtest/gtest.h>

#include <filesystem>

#include "ChildProcess.h"
#include "ScopedEnvironment.h"
#include "TemporaryDirectory.h"

namespace {

TEST(SchemeExample, MakesASchemeAndItsPicture) {
    CTemporaryDirectory directory;
    const CScopedEnvironment program("TAVARIN_SCHEME", TAVARIN_SCHEME_PROGRAM);
    // What AppKit keeps until a process ends is no leak of the program's.
    const CScopedEnvironment leaks("ASAN_OPTIONS", "detect_leaks=0");
    CChildProcess example({"/bin/sh", TAVARIN_EXAMPLES "/scheme/make-dusk", directory.Path()},
                          directory.File("out"), directory.File("err"));
    ASSERT_EQ(example.Wait(), 0) << directory.Read("err");
    EXPECT_TRUE(directory.Has("dusk.scheme"));
    EXPECT_NE(directory.Read("dusk.svg").find("<svg"), std::string::npos);
    EXPECT_NE(directory.Read("out").find("ccTrackBackground: #111111 -> #0f0d1a"),
              std::string::npos)
        << directory.Read("out");
}

}  // namespace
