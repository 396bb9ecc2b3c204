#include "host/Resampling.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <numbers>

#include "tests/TemporaryDirectory.h"
#include "tests/TestAudio.h"

namespace {

constexpr int kSessionRate = 48000;
constexpr double kHertz = 440.0;

float Tone(std::int64_t l, int nRate, int nChannel) {
    double const dTurns = kHertz * (nChannel + 1) * static_cast<double>(l) / nRate;
    return static_cast<float>(0.5 * std::sin(2.0 * std::numbers::pi * dTurns));
}

class CResamplingTest : public testing::Test {
protected:
    /// Two channels, the second an octave higher.
    CRegion RegionOf(int nFileRate, std::int64_t lFrames) const {
        CAudio audio = TestAudio::Silence(lFrames, 2, nFileRate);
        for (int nChannel : {0, 1})
            for (std::int64_t l = 0; l < lFrames; ++l)
                audio.m_Channels[static_cast<std::size_t>(nChannel)][static_cast<std::size_t>(l)] =
                    Tone(l, nFileRate, nChannel);
        CRegion region;
        region.m_strFile = m_Directory.File("tone" + std::to_string(nFileRate) + ".wav");
        WriteAudioFile(region.m_strFile, audio);
        region.m_nFileRate = nFileRate;
        region.m_lEnd = ToSessionSamples(lFrames, nFileRate, kSessionRate);
        region.m_Channels = {1, 0};
        return region;
    }

    CTemporaryDirectory m_Directory;
};

constexpr int kFileRates[] = {8000, 22050, 44100, 47999, 96000, 192000};

TEST_F(CResamplingTest, ATonesPitchAndPlaceStay) {
    for (int nFileRate : kFileRates) {
        CRegion const region = RegionOf(nFileRate, nFileRate);
        EXPECT_EQ(region.m_lEnd, kSessionRate);
        CRegionReader reader(region, kSessionRate, 0);
        CAudio const audio = reader.Read(kSessionRate);
        EXPECT_EQ(audio.m_nSampleRate, kSessionRate);
        ASSERT_EQ(audio.m_Channels.size(), 2u);
        // Near its ends the file is a tone that begins and breaks off.
        for (std::int64_t l = 4000; l < kSessionRate - 4000; ++l)
            for (int nRow : {0, 1})
                ASSERT_NEAR(
                    audio.m_Channels[static_cast<std::size_t>(nRow)][static_cast<std::size_t>(l)],
                    Tone(l, kSessionRate, 1 - nRow), 1e-4)
                    << nFileRate << " Hz, sample " << l;
    }
}

TEST_F(CResamplingTest, ItDoesNotMatterWhereReadingBegins) {
    for (int nFileRate : kFileRates) {
        CRegion const region = RegionOf(nFileRate, nFileRate);
        CRegionReader whole(region, kSessionRate, 0);
        CAudio const all = whole.Read(kSessionRate);
        for (std::int64_t lFrom : {-100, 1, 999, 30001}) {
            CRegionReader part(region, kSessionRate, lFrom);
            CAudio const first = part.Read(3);
            CAudio const next = part.Read(5000);
            for (std::int64_t l = std::max<std::int64_t>(lFrom, 0); l < lFrom + 5003; ++l) {
                auto const n = static_cast<std::size_t>(l - lFrom);
                float const sample = n < 3 ? first.m_Channels[0][n] : next.m_Channels[0][n - 3];
                ASSERT_NEAR(sample, all.m_Channels[0][static_cast<std::size_t>(l)], 1e-5)
                    << nFileRate << " Hz from " << lFrom << ", sample " << l;
            }
        }
    }
}

TEST_F(CResamplingTest, BehindTheFileThereIsSilence) {
    CRegion region = RegionOf(22050, 22050);
    CRegionReader reader(region, kSessionRate, 60000);
    CAudio const audio = reader.Read(1000);
    for (float sample : audio.m_Channels[0]) ASSERT_NEAR(sample, 0.0f, 1e-6);
}

TEST_F(CResamplingTest, AFileOfTheSessionsRateIsCopiedExactly) {
    CRegion region = RegionOf(kSessionRate, 40000);
    region.m_lStart = 100;
    region.m_lEnd = 30100;
    std::string const strCopy = m_Directory.File("copy.wav");
    WriteRegionSound(region, kSessionRate, strCopy);
    EXPECT_TRUE(SameAudio({region.m_strFile, 100, 30100, {1}}, {strCopy, 0, 30000, {0}}));
}

TEST_F(CResamplingTest, ACopyThatIsEndedLeavesNothing) {
    std::string const strCopy = m_Directory.File("copy.wav");
    EXPECT_THROW(WriteRegionSound(RegionOf(22050, 22050), kSessionRate, strCopy, [] { throw 1; }),
                 int);
    EXPECT_FALSE(std::filesystem::exists(strCopy));
}

TEST_F(CResamplingTest, AFileThatHasBecomeShorterIsRefused) {
    CRegion const region = RegionOf(22050, 22050);
    RegionOf(22050, 22049);
    EXPECT_THROW(CRegionReader(region, kSessionRate, 0), CAudioFileError);
}

TEST_F(CResamplingTest, ARateThatIsTooFarAwayIsRefusedByName) {
    CRegion const region = RegionOf(100, 100);
    try {
        const CRegionReader reader(region, kSessionRate, 0);
        FAIL() << "it was taken";
    } catch (CAudioFileError const& error) {
        EXPECT_NE(std::string(error.what()).find("100 Hz"), std::string::npos) << error.what();
    }
}

TEST_F(CResamplingTest, AFilesSamplesAreFoundAgainFromTheirPlaceInASession) {
    for (int nFileRate : {1, 8000, 22050, 44100, 48000})
        for (std::int64_t l :
             {std::int64_t{0}, std::int64_t{1}, std::int64_t{72500}, std::int64_t{999'999'999'999}})
            EXPECT_EQ(ToFileSamples(ToSessionSamples(l, nFileRate, 48000), nFileRate, 48000), l);
    EXPECT_EQ(ToSessionSamples(72572, 22050, 48000), 157979);
    EXPECT_EQ(ToSessionSamples(5, 96000, 48000), 2);
    EXPECT_EQ(ToFileSamples(2, 96000, 48000), 4) << "never behind what was used";
    EXPECT_EQ(ToSessionSamples(INT64_MAX, 1, 768000), INT64_MAX);
    EXPECT_EQ(ToSessionSamples(-1, 96000, 48000), -1);
}

}  // namespace
