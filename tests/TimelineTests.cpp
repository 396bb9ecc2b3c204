#include "host/Timeline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "host/TimeScale.h"
#include "host/XmlText.h"
#include "platform/Utf8.h"
#include "tests/HostFixture.h"
#include "tests/LinkScripts.h"
#include "tests/TestAudio.h"

namespace fs = std::filesystem;

class CTimelineTest : public CHostFixture {
protected:
    void Send(int nTrack, std::string const& strFile, std::int64_t lPosition) {
        Printed(LinkScripts::SendFile(false, nTrack, strFile, lPosition, 0, 48000,
                                      std::to_string(lPosition)));
    }

    static int Count(std::string const& strText, std::string const& strPart) {
        int nCount = 0;
        for (auto n = strText.find(strPart); n != std::string::npos;
             n = strText.find(strPart, n + 1))
            ++nCount;
        return nCount;
    }

    /// Every element that is opened is closed, in order, and no text leaves markup behind.
    static bool WellFormed(std::string const& strSvg) {
        std::vector<std::string> open;
        for (auto n = strSvg.find('<'); n != std::string::npos; n = strSvg.find('<', n + 1)) {
            auto const nEnd = strSvg.find('>', n);
            if (nEnd == std::string::npos) return false;
            std::string const strTag = strSvg.substr(n + 1, nEnd - n - 1);
            if (strTag.find('<') != std::string::npos) return false;
            if (strTag.starts_with("?") || strTag.ends_with("/")) continue;
            if (!strTag.starts_with("/")) {
                open.push_back(strTag.substr(0, strTag.find(' ')));
                continue;
            }
            if (open.empty() || open.back() != strTag.substr(1)) return false;
            open.pop_back();
        }
        return open.empty();
    }
};

TEST_F(CTimelineTest, AnEmptySessionIsAPicture) {
    EXPECT_TRUE(WellFormed(RenderTimeline(CSession())));
    std::string const strSvg = RenderTimeline(m_Session);
    EXPECT_TRUE(WellFormed(strSvg));
    EXPECT_EQ(Count(strSvg, ">Guide</text>"), 2);
    EXPECT_NE(strSvg.find("Script document"), std::string::npos);
    EXPECT_NE(strSvg.find("AudioSuite document"), std::string::npos);
}

TEST_F(CTimelineTest, RegionsProcessesAndTheDisplayAreShown) {
    Send(0, WriteFile("guide.wav", TestAudio::Phrase(48000)), 0);
    Send(1, WriteFile("dub.wav", TestAudio::Phrase(48000, 3000)), 48000);
    std::string const strBefore = RenderTimeline(m_Session);
    Printed(LinkScripts::CreateAPT(false, 0, 48000, 48000, 96000));
    std::string const strSvg = RenderTimeline(m_Session);
    EXPECT_TRUE(WellFormed(strSvg));
    EXPECT_NE(strSvg.find("guide.wav"), std::string::npos);
    EXPECT_NE(strSvg.find("APT: Guide + Dub → Out"), std::string::npos);
    EXPECT_NE(strSvg.find("display at 0:00.000"), std::string::npos);
    EXPECT_EQ(Count(strSvg, "fill-opacity=\"0.85\""), 3) << "one waveform each";
    EXPECT_EQ(Count(strBefore, "fill-opacity=\"0.85\""), 2);
}

TEST_F(CTimelineTest, NamesAreEscaped) {
    Send(0, WriteFile("a<b>&'ü.wav", TestAudio::Phrase(48000)), 0);
    m_Session.AddTrack(DocumentKind::Script, "<script>\"&");
    std::string const strSvg = RenderTimeline(m_Session);
    EXPECT_TRUE(WellFormed(strSvg));
    EXPECT_NE(strSvg.find("a&lt;b&gt;&amp;&apos;ü.wav"), std::string::npos);
    EXPECT_NE(strSvg.find("&lt;script&gt;"), std::string::npos);
}

TEST_F(CTimelineTest, BytesThatAreNoTextAreReplaced) {
    EXPECT_EQ(XmlText("a\xff\x01z"), "a\xEF\xBF\xBD\xEF\xBF\xBDz");
    EXPECT_EQ(XmlText("\xC0\xAF\xED\xA0\x80").find('\xC0'), std::string::npos);
    EXPECT_EQ(XmlText("\xEF\xBF\xBF"), "\xEF\xBF\xBD");
    EXPECT_TRUE(IsUtf8("aé€😀"));
    for (char const* pszText : {"\x80", "\xC3", "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80",
                                "\xF4\x90\x80\x80", "\xF0\x80\x80\x80", "\xF8\x88\x80\x80\x80"})
        EXPECT_FALSE(IsUtf8(pszText));
}

TEST_F(CTimelineTest, WaveformsAreReadOncePerRegion) {
    std::string const strFile = WriteFile("a.wav", TestAudio::Phrase(48000));
    Send(0, strFile, 0);
    CPeakCache peaks;
    std::string const strFirst = RenderTimeline(m_Session, peaks);
    fs::remove(strFile);
    EXPECT_EQ(RenderTimeline(m_Session, peaks), strFirst);
    EXPECT_NE(RenderTimeline(m_Session), strFirst) << "without the cache the waveform is missing";
    EXPECT_TRUE(WellFormed(RenderTimeline(m_Session)));
}

TEST_F(CTimelineTest, PeaksFollowTheSamples) {
    CAudio audio = TestAudio::Silence(48000);
    std::fill(audio.m_Channels[0].begin() + 24000, audio.m_Channels[0].end(), -0.5f);
    Send(0, WriteFile("a.wav", audio), 0);
    CPeakCache cache;
    auto const& peaks = cache.Peaks(m_Session.TrackAt(DocumentKind::Script, 0).m_Regions[0]);
    ASSERT_EQ(peaks.size(), CPeakCache::kSlices);
    EXPECT_EQ(peaks[10].m_Low, 0.0f);
    EXPECT_EQ(peaks[1000].m_Low, -0.5f);
    EXPECT_EQ(peaks[1000].m_High, 0.0f);
}

TEST_F(CTimelineTest, FarPositionsAndTinyRegionsStayInThePicture) {
    std::string const strFile = WriteFile("a.wav", TestAudio::Silence(3));
    Printed(LinkScripts::SendFile(false, 0, strFile, -900'000'000'000'000, 0, 1, "-9e14"));
    Printed(LinkScripts::SendFile(false, 1, strFile, 900'000'000'000'000, 0, 2, "9e14"));
    std::string const strSvg = RenderTimeline(m_Session);
    EXPECT_TRUE(WellFormed(strSvg));
    EXPECT_LT(strSvg.size(), 100000u);
    EXPECT_EQ(strSvg.find("nan"), std::string::npos);
    EXPECT_EQ(strSvg.find("inf"), std::string::npos);
}

TEST_F(CTimelineTest, ThePictureIsReplacedAsOneStep) {
    CPeakCache peaks;
    std::string const strPath = m_Directory.Path() + "/timeline.svg";
    WriteTimeline(m_Session, peaks, strPath);
    WriteTimeline(m_Session, peaks, strPath);
    EXPECT_EQ(fs::file_size(strPath), RenderTimeline(m_Session).size());
    EXPECT_THROW(WriteTimeline(m_Session, peaks, m_Directory.Path() + "/none/x.svg"),
                 std::system_error);
}

TEST_F(CTimelineTest, TimesAreWrittenForPeople) {
    EXPECT_EQ(TimeText(0.0, 0), "0:00");
    EXPECT_EQ(TimeText(65.0, 0), "1:05");
    EXPECT_EQ(TimeText(3600.0 * 2 + 61.5, 1), "2:01:01.5");
    EXPECT_EQ(TimeText(-2.25, 3), "-0:02.250");
    EXPECT_EQ(TimeText(-0.0001, 3), "0:00.000");
    EXPECT_EQ(TimeText(59.9999, 3), "1:00.000");
    EXPECT_EQ(NumberText(1.50, 2), "1.5");
    EXPECT_EQ(NumberText(-0.001, 2), "0");
    EXPECT_EQ(NumberText(100.0, 0), "100");
}
