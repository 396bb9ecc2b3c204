#include "host/HostFunctions.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <set>

#include "host/TrackSound.h"
#include "tests/HostFixture.h"
#include "tests/LinkScripts.h"
#include "tests/TestAudio.h"

namespace fs = std::filesystem;

class CHostFunctionTest : public CHostFixture, public testing::WithParamInterface<bool> {
protected:
    bool AudioSuite() const { return GetParam(); }
    DocumentKind Kind() const {
        return AudioSuite() ? DocumentKind::AudioSuite : DocumentKind::Script;
    }
    CDocument const& Document() const { return m_Session.Document(Kind()); }
    CTrack const& Track(std::int64_t nTrack) const { return m_Session.TrackAt(Kind(), nTrack); }
    std::string Opened(std::string const& strScript) {
        return "assert(" + LinkScripts::Select(AudioSuite()) + "()) " + strScript;
    }

    std::string Send(int nTrack, std::string const& strFile, std::int64_t lPosition,
                     std::int64_t lStart, std::int64_t lEnd, std::string const& strChannels = "") {
        return Run(LinkScripts::SendFile(AudioSuite(), nTrack, strFile, lPosition, lStart, lEnd,
                                         std::to_string(lPosition + lStart), strChannels))
            .strError;
    }

    std::string Duplicate(int nTrack, std::string const& strFile, std::int64_t lPosition,
                          std::int64_t lStart, std::int64_t lEnd) {
        return Printed(
            LinkScripts::CheckDuplicate(AudioSuite(), nTrack, strFile, lPosition, lStart, lEnd));
    }

    /// Guide on track 0 at 10000, a late dub on track 1 at 20000, each 48000 samples.
    void SendPhrases(std::int64_t lShift) {
        EXPECT_EQ(Send(0, WriteFile("guide.wav", TestAudio::Phrase(48000)), 10000, 0, 48000), "");
        EXPECT_EQ(Send(1, WriteFile("dub.wav", TestAudio::Phrase(48000, lShift)), 20000, 0, 48000),
                  "");
    }

    std::vector<std::string> HostFiles() const {
        std::set<std::string> names;
        for (auto const& entry : fs::directory_iterator(m_pEngine->AudioDirectory().Path()))
            names.insert(entry.path().filename().string());
        return {names.begin(), names.end()};
    }
};

INSTANTIATE_TEST_SUITE_P(Documents, CHostFunctionTest, testing::Bool(),
                         [](auto const& info) { return info.param ? "AudioSuite" : "Script"; });

TEST_P(CHostFunctionTest, TheTrackListIsPrintedAsCountStatusAndNames) {
    EXPECT_EQ(Printed(LinkScripts::ListTracks(AudioSuite())), "4\n1\nGuide\nDub\nOut\n");
}

TEST_P(CHostFunctionTest, ADocumentWithoutTracksListsNone) {
    m_Session = CSession({}, 48000);
    EXPECT_EQ(Printed(LinkScripts::ListTracks(AudioSuite())), "1\n1\n");
}

TEST_P(CHostFunctionTest, WithoutASelectedSessionNoDocumentCanBeSelected) {
    m_Session.SetSelected(false);
    EXPECT_EQ(Printed(LinkScripts::ListTracks(AudioSuite())), "1\n0\n");
    EXPECT_EQ(Printed(LinkScripts::Export(AudioSuite())), "1\n0\n");
    EXPECT_EQ(Printed(LinkScripts::Render(AudioSuite())), "1\n0\n");
    EXPECT_EQ(Printed(LinkScripts::LinkOffset(AudioSuite())), "");
}

TEST_P(CHostFunctionTest, TrackNumbersOutsideNameTheNumberAndTheCount) {
    EXPECT_NE(Error(Opened("GetTrackID(3)")).find("no track number 3: the document has 3 tracks"),
              std::string::npos);
    EXPECT_NE(Error(Opened("GetTrackID(-1)")).find("no track number -1"), std::string::npos);
}

TEST_P(CHostFunctionTest, AWholeNumberWithAFractionPartOfZeroIsAccepted) {
    EXPECT_EQ(Printed(Opened("print(GetTrackID(1.0) == GetTrackID(1))")), "true\n");
}

TEST_P(CHostFunctionTest, ACaptureBecomesASelectedRegionAtItsPlace) {
    std::string const strFile = WriteFile("take.wav", TestAudio::Phrase(48000));
    std::uint32_t const nBefore = m_Session.UpdateCount();
    EXPECT_EQ(Send(1, strFile, 1000, 200, 20000), "");
    ASSERT_EQ(Track(1).m_Regions.size(), 1u);
    CRegion const& region = Track(1).m_Regions.front();
    EXPECT_EQ(region.Start(), 1200);
    EXPECT_EQ(region.End(), 21000);
    EXPECT_EQ(region.m_strFile, strFile);
    EXPECT_EQ(region.m_Channels, std::vector<int>{0});
    EXPECT_EQ(Document().m_idSelectedRegion, region.m_idRegion);
    EXPECT_EQ(Document().m_dDisplayPosition, 1200.0);
    EXPECT_GT(m_Session.UpdateCount(), nBefore);
}

TEST_P(CHostFunctionTest, ACaptureReachesOneDocumentOnly) {
    EXPECT_EQ(Send(0, WriteFile("a.wav", TestAudio::Phrase(1000)), 0, 0, 1000), "");
    DocumentKind const other = AudioSuite() ? DocumentKind::Script : DocumentKind::AudioSuite;
    for (CTrack const& track : m_Session.Document(other).m_Tracks)
        EXPECT_TRUE(track.m_Regions.empty());
}

TEST_P(CHostFunctionTest, TheDisplayMovesToAPositionWrittenWithAnExponent) {
    Printed(Opened("MoveDisplayToPosition(1.23457e+06)"));
    EXPECT_EQ(Document().m_dDisplayPosition, 1234570.0);
}

TEST_P(CHostFunctionTest, AnEndBehindTheFileIsTakenBackToIt) {
    EXPECT_EQ(Send(0, WriteFile("a.wav", TestAudio::Phrase(1000)), 0, 100, 5000), "");
    EXPECT_EQ(Track(0).m_Regions.front().m_lEnd, 1000);
}

TEST_P(CHostFunctionTest, ImpossibleExtentsAreRefused) {
    std::string const strFile = WriteFile("a.wav", TestAudio::Phrase(1000));
    EXPECT_NE(Send(0, strFile, 0, 500, 500).find("end 500 does not lie behind the start 500"),
              std::string::npos);
    EXPECT_NE(Send(0, strFile, 0, 600, 500), "");
    EXPECT_NE(Send(0, strFile, 0, -1, 500).find("starts at -1"), std::string::npos);
    EXPECT_NE(Send(0, strFile, 0, 1000, 2000).find("has 1000 samples"), std::string::npos);
    EXPECT_NE(Send(0, strFile, INT64_MAX, 0, 1000).find("outside the timeline"), std::string::npos);
    EXPECT_NE(Send(0, strFile, INT64_MIN + 1, 0, 1000), "");
    EXPECT_NE(Send(0, strFile, 0, 0, INT64_MAX), "");
    EXPECT_TRUE(Track(0).m_Regions.empty());
}

TEST_P(CHostFunctionTest, ARegionMayLieBeforeTheTimelinesStart) {
    EXPECT_EQ(Send(0, WriteFile("a.wav", TestAudio::Phrase(1000)), -48000, 0, 1000), "");
    EXPECT_EQ(Track(0).m_Regions.front().Start(), -48000);
}

TEST_P(CHostFunctionTest, AMissingFileIsAnErrorThatNamesIt) {
    std::string const strFile = m_Directory.Path() + "/none.wav";
    EXPECT_NE(Send(0, strFile, 0, 0, 10).find(strFile), std::string::npos);
    EXPECT_NE(Error(LinkScripts::CheckDuplicate(AudioSuite(), 0, strFile, 0, 0, 10)).find(strFile),
              std::string::npos);
    EXPECT_TRUE(Track(0).m_Regions.empty());
}

TEST_P(CHostFunctionTest, WhatIsNoAudioFileIsRefused) {
    std::string const strText = m_Directory.Path() + "/text.wav";
    { std::unique_ptr<FILE, decltype(&fclose)> file(fopen(strText.c_str(), "w"), fclose); }
    std::string const strPipe = m_Directory.Path() + "/pipe.wav";
    ASSERT_EQ(mkfifo(strPipe.c_str(), 0600), 0);
    EXPECT_NE(Send(0, strText, 0, 0, 10).find("not readable as audio"), std::string::npos);
    EXPECT_NE(Send(0, strPipe, 0, 0, 10).find("not a regular file"), std::string::npos);
    EXPECT_NE(Send(0, m_Directory.Path(), 0, 0, 10).find("not a regular file"), std::string::npos);
    EXPECT_NE(Send(0, "/dev/zero", 0, 0, 10).find("not a regular file"), std::string::npos);
}

TEST_P(CHostFunctionTest, ChannelsCanBeChosen) {
    CAudio audio = TestAudio::Phrase(1000, 0, 140.0, 3);
    EXPECT_EQ(Send(0, WriteFile("a.wav", audio), 0, 0, 1000, "{0,2}"), "");
    EXPECT_EQ(Track(0).m_Regions.front().m_Channels, (std::vector<int>{0, 2}));
    EXPECT_NE(Send(0, m_Directory.Path() + "/a.wav", 0, 0, 1000, "{3}").find("it has 3"),
              std::string::npos);
    EXPECT_NE(Send(0, m_Directory.Path() + "/a.wav", 0, 0, 1000, "{1,1}").find("twice"),
              std::string::npos);
    EXPECT_NE(Send(0, m_Directory.Path() + "/a.wav", 0, 0, 1000, "{}").find("empty"),
              std::string::npos);
}

TEST_P(CHostFunctionTest, AnotherSampleRateIsAcceptedAndKept) {
    EXPECT_EQ(Send(0, WriteFile("a.wav", TestAudio::Silence(1000, 1, 44100)), 0, 0, 1000), "");
    EXPECT_EQ(Track(0).m_Regions.front().m_nFileRate, 44100);
}

TEST_P(CHostFunctionTest, AFileOfAnotherSampleRateLiesAsLongAsItSounds) {
    CAudio audio = TestAudio::Silence(22050, 1, 22050);
    TestAudio::AddBurst(audio, 0, 22050, 220.0, 0.5);
    std::string const strFile = WriteFile("speech.wav", audio);
    EXPECT_EQ(Send(0, strFile, 1000, 0, 22050), "");
    EXPECT_EQ(Track(0).m_Regions.front().Start(), 1000);
    EXPECT_EQ(Track(0).m_Regions.front().End(), 49000);
    EXPECT_EQ(Duplicate(0, strFile, 1000, 0, 22050), "1\n");

    CAudio expected = TestAudio::Silence(48000);
    TestAudio::AddBurst(expected, 0, 48000, 220.0, 0.5);
    std::string strMade = Printed(Opened("print(ExportRegion(GetSelectedRegionID()))"));
    strMade.pop_back();
    CAudioFile made(strMade);
    EXPECT_EQ(made.Info().m_nSampleRate, 48000);
    EXPECT_EQ(made.Info().m_lFrames, 48000);
    CAudio const heard = made.Read(0, 48000, {0});
    EXPECT_GT(TestAudio::Correlation(expected.m_Channels[0], heard.m_Channels[0]), 0.9999);
    Printed(LinkScripts::CreateDoubler(AudioSuite(), 1000, 49000));
    CAudioFile doubled(Document().FindRegion(Document().m_idSelectedRegion)->m_strFile);
    EXPECT_GE(doubled.Info().m_lFrames, 48000);
    EXPECT_EQ(doubled.Info().m_nSampleRate, 48000);
}

TEST_P(CHostFunctionTest, TheSameAudioAtTheSamePlaceIsADuplicate) {
    CAudio const audio = TestAudio::Phrase(48000);
    std::string const strFirst = WriteFile("first.wav", audio);
    std::string const strSame = WriteFile("same.wav", audio);
    EXPECT_EQ(Duplicate(0, strFirst, 1000, 0, 48000), "0\n");
    EXPECT_EQ(Send(0, strFirst, 1000, 0, 48000), "");
    EXPECT_EQ(Duplicate(0, strSame, 1000, 0, 48000), "1\n");
    EXPECT_EQ(Duplicate(0, strSame, 1000, 0, 99999), "1\n") << "the end is taken back to the file";
    EXPECT_EQ(Duplicate(0, strSame, 1001, 0, 48000), "0\n") << "another place";
    EXPECT_EQ(Duplicate(1, strSame, 1000, 0, 48000), "0\n") << "another track";
    EXPECT_EQ(Duplicate(0, strSame, 1000, 0, 47999), "0\n") << "another length";
}

TEST_P(CHostFunctionTest, ACaptureOfWhichChannelsWereChosenIsADuplicateWhenItComesAgain) {
    CAudio audio = TestAudio::Phrase(1000, 0, 140.0, 3);
    audio.m_Channels[1][500] += 0.25f;
    EXPECT_EQ(Send(0, WriteFile("first.wav", audio), 0, 0, 1000, "{0,2}"), "");
    EXPECT_EQ(Duplicate(0, WriteFile("again.wav", audio), 0, 0, 1000), "1\n");
    audio.m_Channels[1][500] += 0.25f;
    EXPECT_EQ(Duplicate(0, WriteFile("other.wav", audio), 0, 0, 1000), "0\n")
        << "another sound in a channel that is not used";
    audio.m_Channels.pop_back();
    EXPECT_EQ(Duplicate(0, WriteFile("fewer.wav", audio), 0, 0, 1000), "0\n") << "fewer channels";
}

TEST_P(CHostFunctionTest, OneDifferentSampleIsNoDuplicate) {
    CAudio audio = TestAudio::Phrase(48000);
    EXPECT_EQ(Send(0, WriteFile("a.wav", audio), 0, 0, 48000), "");
    audio.m_Channels[0][40000] += 0.001f;
    EXPECT_EQ(Duplicate(0, WriteFile("b.wav", audio), 0, 0, 48000), "0\n");
}

TEST_P(CHostFunctionTest, TheSameStretchOfALongerFileIsADuplicate) {
    CAudio const audio = TestAudio::Phrase(48000);
    EXPECT_EQ(Send(0, WriteFile("a.wav", audio), 0, 4000, 20000), "");
    CAudio part = TestAudio::Silence(20000);
    std::copy_n(audio.m_Channels[0].begin() + 4000, 16000, part.m_Channels[0].begin());
    EXPECT_EQ(Duplicate(0, WriteFile("part.wav", part), 4000, 0, 16000), "1\n");
}

TEST_P(CHostFunctionTest, ARegionWhoseFileHasGoneIsNoDuplicate) {
    CAudio const audio = TestAudio::Phrase(1000);
    std::string const strFile = WriteFile("a.wav", audio);
    EXPECT_EQ(Send(0, strFile, 0, 0, 1000), "");
    fs::remove(strFile);
    EXPECT_EQ(Duplicate(0, WriteFile("b.wav", audio), 0, 0, 1000), "0\n");
}

TEST_P(CHostFunctionTest, NothingToFetchGivesAReasonCode) {
    std::string const strReason = AudioSuite() ? "1\n2\n" : "1\n1\n";
    EXPECT_EQ(Printed(LinkScripts::Export(AudioSuite())), strReason);
    EXPECT_EQ(Printed(LinkScripts::Render(AudioSuite())), strReason);
}

TEST_P(CHostFunctionTest, AnAPTProcessPutsTheAlignedDubAtTheGuide) {
    SendPhrases(3700);
    std::uint32_t const nBefore = m_Session.UpdateCount();
    EXPECT_EQ(Printed(LinkScripts::CreateAPT(AudioSuite(), 10000, 58000, 20000, 68000)), "");
    ASSERT_EQ(Track(2).m_Regions.size(), 1u);
    CRegion const& result = Track(2).m_Regions.front();
    EXPECT_EQ(result.Start(), 10000);
    EXPECT_EQ(result.End(), 58000);
    EXPECT_GT(m_Session.UpdateCount(), nBefore);
    EXPECT_EQ(Document().m_idSelectedRegion, result.m_idRegion);
    EXPECT_EQ(Document().m_Processes.size(), 1u);
    EXPECT_EQ(Document().m_idLastProcess, Document().m_Processes.front().m_idProcess);

    CAudio const aligned = CAudioFile(result.m_strFile).Read(0, 48000, {0});
    CAudio const expected = TestAudio::Phrase(48000);
    EXPECT_GT(TestAudio::Correlation(expected.m_Channels[0], aligned.m_Channels[0]), 0.98);
}

TEST_P(CHostFunctionTest, AProcessMarksTheRangesItRead) {
    SendPhrases(0);
    Printed(LinkScripts::CreateAPT(AudioSuite(), 10000, 58000, 20000, 68000));
    ASSERT_EQ(Track(0).m_MarkerTracks.at(0).m_Areas.size(), 1u);
    ASSERT_EQ(Track(1).m_MarkerTracks.at(0).m_Areas.size(), 1u);
    EXPECT_EQ(Track(1).m_MarkerTracks.at(0).m_Areas.front().m_lStart, 20000);
    EXPECT_EQ(Track(1).m_MarkerTracks.at(0).m_Areas.front().m_lEnd, 68000);
    EXPECT_TRUE(Track(2).m_MarkerTracks.at(0).m_Areas.empty());
}

TEST_P(CHostFunctionTest, ADoublerProcessPutsADifferentVoiceBesideTheInput) {
    CAudio const voice = TestAudio::Phrase(48000, 0, 140.0, 2);
    EXPECT_EQ(Send(0, WriteFile("voice.wav", voice), 5000, 0, 48000), "");
    EXPECT_EQ(Printed(LinkScripts::CreateDoubler(AudioSuite(), 5000, 53000)), "");
    ASSERT_EQ(Track(2).m_Regions.size(), 1u);
    CRegion const& result = Track(2).m_Regions.front();
    EXPECT_EQ(result.Start(), 5000);
    EXPECT_GT(result.Length(), 48000);
    CAudio const doubled = CAudioFile(result.m_strFile).Read(0, 48000, {0, 1});
    EXPECT_GT(TestAudio::Power(doubled.m_Channels[0]), 0.3 * TestAudio::Power(voice.m_Channels[0]));
    EXPECT_GT(TestAudio::Power(doubled.m_Channels[1]), 0.3 * TestAudio::Power(voice.m_Channels[1]));
    EXPECT_NE(doubled.m_Channels, voice.m_Channels);
}

TEST_P(CHostFunctionTest, ARenderedProcessReportsRateAndExtent) {
    SendPhrases(0);
    Printed(LinkScripts::CreateAPT(AudioSuite(), 10000, 58000, 20000, 68000));
    EXPECT_EQ(Printed(LinkScripts::Render(AudioSuite())), "4\n0\n48000\n10000\n58000\n");
    CSessionId const idRegion = Document().m_idSelectedRegion;
    EXPECT_TRUE(fs::exists(m_pEngine->AudioDirectory().Path() + "/Render_" +
                           std::to_string(idRegion) + ".wav"));
}

TEST_P(CHostFunctionTest, AnExportedRegionHoldsTheRegionsSamples) {
    CAudio const audio = TestAudio::Phrase(48000);
    EXPECT_EQ(Send(0, WriteFile("a.wav", audio), 1000, 4000, 20000), "");
    std::string const strFile = Printed(Opened("print(ExportRegion(GetSelectedRegionID()))"));
    CAudioFile file(strFile.substr(0, strFile.size() - 1));
    EXPECT_EQ(file.Info().m_lFrames, 16000);
    std::vector<float> const expected(audio.m_Channels[0].begin() + 4000,
                                      audio.m_Channels[0].begin() + 20000);
    EXPECT_EQ(file.Read(0, 16000, {0}).m_Channels[0], expected);
}

TEST_P(CHostFunctionTest, TheExportScriptPrintsTheFile) {
    SendPhrases(0);
    Printed(LinkScripts::CreateDoubler(AudioSuite(), 10000, 58000));
    std::string const strReply = Printed(LinkScripts::Export(AudioSuite()));
    ASSERT_EQ(strReply.rfind("2\n0\n/", 0), 0u) << strReply;
    EXPECT_TRUE(fs::exists(strReply.substr(4, strReply.size() - 5)));
}

TEST_P(CHostFunctionTest, ExportingTwiceKeepsOneFile) {
    EXPECT_EQ(Send(0, WriteFile("a.wav", TestAudio::Phrase(1000)), 0, 0, 1000), "");
    std::string const strScript = Opened("print(ExportRegion(GetSelectedRegionID()))");
    EXPECT_EQ(Printed(strScript), Printed(strScript));
    EXPECT_EQ(HostFiles().size(), 1u);
}

TEST_P(CHostFunctionTest, FilesOfAnEarlierHostAreNotOverwritten) {
    EXPECT_EQ(Send(0, WriteFile("a.wav", TestAudio::Phrase(1000)), 0, 0, 1000), "");
    std::string const strScript = Opened("print(ExportRegion(GetSelectedRegionID()))");
    std::string const strFirst = Printed(strScript);
    Restart({});
    EXPECT_NE(Printed(strScript), strFirst);
    EXPECT_EQ(HostFiles().size(), 2u);
}

TEST_P(CHostFunctionTest, AFileThatHasGoneCannotBeExported) {
    std::string const strFile = WriteFile("a.wav", TestAudio::Phrase(1000));
    EXPECT_EQ(Send(0, strFile, 0, 0, 1000), "");
    fs::remove(strFile);
    EXPECT_NE(Error(LinkScripts::Export(false) + Opened("ExportRegion(GetSelectedRegionID())"))
                  .find(strFile),
              std::string::npos);
    EXPECT_TRUE(HostFiles().empty());
}

TEST_P(CHostFunctionTest, AFileThatHasBecomeShorterIsAnErrorNotSilence) {
    EXPECT_EQ(Send(0, WriteFile("a.wav", TestAudio::Phrase(48000)), 0, 0, 48000), "");
    WriteFile("a.wav", TestAudio::Phrase(1000));
    for (std::string const& strScript : {Opened("ExportRegion(GetSelectedRegionID())"),
                                         Opened("RegionRender(GetSelectedRegionID())"),
                                         LinkScripts::CreateDoubler(AudioSuite(), 0, 48000)})
        EXPECT_NE(Error(strScript).find("has become shorter"), std::string::npos) << strScript;
    EXPECT_TRUE(HostFiles().empty());
}

TEST_P(CHostFunctionTest, AFullAudioDirectoryIsAnError) {
    Restart({}, 5000);
    EXPECT_EQ(Send(0, WriteFile("a.wav", TestAudio::Phrase(1000)), 0, 0, 1000), "");
    Printed(Opened("ExportRegion(GetSelectedRegionID())"));
    EXPECT_NE(Error(Opened("RegionRender(GetSelectedRegionID())")).find("reached its limit"),
              std::string::npos);
    EXPECT_EQ(HostFiles().size(), 1u);
}

TEST_P(CHostFunctionTest, ProcessesWithoutAudioOrWithBadInputsChangeNothing) {
    SendPhrases(0);
    std::uint32_t const nBefore = m_Session.UpdateCount();
    EXPECT_NE(Error(LinkScripts::CreateAPT(AudioSuite(), 100000, 200000, 20000, 68000))
                  .find("\"Guide\" has no audio from 100000 to 200000"),
              std::string::npos);
    EXPECT_NE(
        Error(LinkScripts::CreateAPT(AudioSuite(), 10000, 58000, 90000, 91000)).find("\"Dub\""),
        std::string::npos);
    Error(LinkScripts::CreateAPT(AudioSuite(), 58000, 10000, 20000, 68000));
    Error(LinkScripts::CreateAPT(AudioSuite(), INT64_MIN + 1, INT64_MAX, 20000, 68000));
    Error(LinkScripts::CreateDoubler(AudioSuite(), -900'000'000'000'000, 900'000'000'000'000));
    for (char const* pszCall :
         {"CreateProcess('Tripler', 'PT', {}, {})", "CreateProcess('APT', 'XX', {}, {})",
          "CreateProcess('APT', 'PT', {}, {})", "CreateProcess('APT', 'PT', {1, 2}, {{}})",
          "CreateProcess('Doubler', 'PT', {{}}, {{}})",
          "CreateProcess('Doubler', 'PT', {{IOType=2, Track=1, Start=0, "
          "End=1}}, {{Track=1}})",
          "CreateProcess('Doubler', 'PT', {{IOType=1, Track=999, Start=0, "
          "End=1}}, {{Track=1}})",
          "CreateProcess('Doubler', 'PT', {{IOType=1, Track=GetTrackID(0), "
          "Start=10000, End=58000}}, {{Track=999}})",
          "CreateProcess('APT', 'PT')", "CreateProcess()"})
        Error(Opened(pszCall));
    EXPECT_EQ(m_Session.UpdateCount(), nBefore);
    EXPECT_TRUE(HostFiles().empty());
}

TEST_P(CHostFunctionTest, AProcessMixesTheRegionsOfItsRange) {
    CAudio const audio = TestAudio::Phrase(48000);
    std::string const strFile = WriteFile("a.wav", audio);
    EXPECT_EQ(Send(0, strFile, 0, 0, 48000), "");
    EXPECT_EQ(Send(0, strFile, 0, 0, 48000), "");
    std::int64_t lRead = 0;
    CTrackSound sound(Track(0), -1000, 49000, 48000, [&](std::int64_t l) { lRead += l; });
    ASSERT_EQ(sound.Frames(), 50000);
    CAudio const mix = sound.Read(0, 50000);
    EXPECT_EQ(lRead, 50000);
    EXPECT_FLOAT_EQ(mix.m_Channels[0][1000 + 22000], 2.0f * audio.m_Channels[0][22000]);
    EXPECT_EQ(mix.m_Channels[0][500], 0.0f);
}

TEST_P(CHostFunctionTest, ATrackOfTenThousandRegionsAndMarksIsClearedByOneScript) {
    CSessionId const idMarkers = Track(0).m_MarkerTracks[0].m_idMarkerTrack;
    for (std::int64_t l = 0; l < 10000; ++l) {
        m_Session.AddRegion(Kind(), Track(0).m_idTrack,
                            {.m_strFile = "/x.wav",
                             .m_nFileRate = 48000,
                             .m_lFilePosition = l * 7919 % 10000,
                             .m_lEnd = 1,
                             .m_Channels = {0}});
        m_Session.AddMarkerArea(Kind(), idMarkers, l, l + 1);
    }
    EXPECT_EQ(Printed(LinkScripts::ClearTrack(AudioSuite(), 0)), "");
    EXPECT_TRUE(Track(0).m_Regions.empty());
    EXPECT_TRUE(Track(0).m_MarkerTracks[0].m_Areas.empty());
}

TEST_P(CHostFunctionTest, ClearingATrackRemovesRegionsMarksAndResultFiles) {
    SendPhrases(0);
    Printed(LinkScripts::CreateAPT(AudioSuite(), 10000, 58000, 20000, 68000));
    Printed(LinkScripts::Render(AudioSuite()));
    for (int nTrack : {0, 1, 2})
        EXPECT_EQ(Printed(LinkScripts::ClearTrack(AudioSuite(), nTrack)), "");
    for (CTrack const& track : Document().m_Tracks) {
        EXPECT_TRUE(track.m_Regions.empty());
        EXPECT_TRUE(track.m_MarkerTracks.at(0).m_Areas.empty());
    }
    EXPECT_EQ(Document().m_idSelectedRegion, kNullId);
    EXPECT_TRUE(HostFiles().empty());
    EXPECT_TRUE(fs::exists(m_Directory.Path() + "/guide.wav")) << "a client's file is not touched";
}

TEST_P(CHostFunctionTest, AnExportOutlivesItsRegion) {
    EXPECT_EQ(Send(0, WriteFile("a.wav", TestAudio::Phrase(1000)), 0, 0, 1000), "");
    std::string const strFile = Printed(Opened("print(ExportRegion(GetSelectedRegionID()))"));
    Printed(LinkScripts::ClearTrack(AudioSuite(), 0));
    EXPECT_TRUE(fs::exists(strFile.substr(0, strFile.size() - 1)));
}

TEST_P(CHostFunctionTest, AProcessWithoutItsResultSelectsNoRegion) {
    SendPhrases(0);
    Printed(LinkScripts::CreateDoubler(AudioSuite(), 10000, 58000));
    Printed(LinkScripts::ClearTrack(AudioSuite(), 2));
    EXPECT_EQ(Printed(LinkScripts::Render(AudioSuite())), "1\n1\n");
}

TEST_P(CHostFunctionTest, SelectingAProcessSelectsItsResult) {
    SendPhrases(0);
    Printed(LinkScripts::CreateDoubler(AudioSuite(), 10000, 58000));
    CSessionId const idResult = Document().m_idSelectedRegion;
    EXPECT_EQ(Send(0, m_Directory.Path() + "/guide.wav", 0, 0, 100), "");
    EXPECT_NE(Document().m_idSelectedRegion, idResult);
    EXPECT_EQ(
        Printed(Opened("SelectProcess(FindLastProcessCreated()) print(GetSelectedRegionID())")),
        std::to_string(idResult) + "\n");
}

TEST_P(CHostFunctionTest, NullIdsAreToldFromOthersByNumbers) {
    EXPECT_EQ(Printed(Opened("print(IsNullProcessID(FindLastProcessCreated()), "
                             "IsNullRegionID(GetSelectedRegionID()), IsNullRegionID(5))")),
              "1\t1\t0\n");
}

TEST_P(CHostFunctionTest, UnknownIdsAreNamed) {
    for (char const* pszCall :
         {"GetTrackName(777)", "RegionRender(777)", "ExportRegion(777)",
          "GetRegionStartPosition(777)", "GetRegionEndPosition(777)", "SelectProcess(777)",
          "GetMarkerTrackID(777, 0)", "CountMarkerAreas(777)", "GetMarkerAreaID(777, 0)",
          "DeleteMarkerArea(777)", "GetRegionCount(777)", "GetRegionID(777, 0)",
          "DeleteRegion(777)"})
        EXPECT_NE(Error(Opened(pszCall)).find("777"), std::string::npos) << pszCall;
    for (char const* pszCall :
         {"GetRegionID(GetTrackID(0), 0)", "GetMarkerTrackID(GetTrackID(0), 1)",
          "GetMarkerAreaID(GetMarkerTrackID(GetTrackID(0), 0), 0)"})
        EXPECT_NE(Error(Opened(pszCall)).find("there is no"), std::string::npos) << pszCall;
}

TEST_P(CHostFunctionTest, RegionsAreCountedInTimelineOrder) {
    std::string const strFile = WriteFile("a.wav", TestAudio::Phrase(1000));
    EXPECT_EQ(Send(0, strFile, 5000, 0, 1000), "");
    EXPECT_EQ(Send(0, strFile, 100, 0, 1000), "");
    EXPECT_EQ(Printed(Opened("local t = GetTrackID(0) print(GetRegionCount(t), "
                             "GetRegionStartPosition(GetRegionID(t, 0)), "
                             "GetRegionEndPosition(GetRegionID(t, 1)))")),
              "2\t100\t6000\n");
}

TEST_P(CHostFunctionTest, TheLinkOffsetIsPrinted) {
    EXPECT_EQ(Printed(LinkScripts::LinkOffset(AudioSuite())), "0\n");
    m_Session.SetLinkSMPTEOffset(3600.5);
    EXPECT_EQ(Printed(LinkScripts::LinkOffset(AudioSuite())), "3600.5\n");
    m_Session.SetLinkSMPTEOffset(3600.0);
    EXPECT_EQ(Printed(LinkScripts::LinkOffset(AudioSuite())), "3600\n");
}

TEST_P(CHostFunctionTest, AFileNameWithABackslashOrQuoteEscapedReachesTheHost) {
    std::string const strFile = WriteFile("back\\slash 'ä'.wav", TestAudio::Phrase(1000));
    std::string strEscaped = strFile;
    strEscaped.replace(strEscaped.find('\\'), 1, "\\\\");
    EXPECT_EQ(Send(0, strEscaped, 0, 0, 1000), "");
    EXPECT_EQ(Track(0).m_Regions.front().m_strFile, strFile);
}

using CHostFunctionFixture = CHostFixture;

TEST_F(CHostFunctionFixture, FunctionsThatNeedADocumentSaySo) {
    for (char const* pszCall :
         {"GetTrackCount()", "GetTrackID(0)", "FindLastProcessCreated()", "GetSelectedRegionID()",
          "MoveDisplayToPosition(0)", "GetLinkSMPTEOffset()"})
        EXPECT_NE(Error(pszCall).find("no document is selected"), std::string::npos) << pszCall;
}

TEST_F(CHostFunctionFixture, ASelectionDoesNotReachTheNextScript) {
    PrintedInDocument("print(GetTrackCount())");
    Error("print(GetTrackCount())");
}

TEST_F(CHostFunctionFixture, CountersAndIdsNeedNoDocument) {
    EXPECT_EQ(Printed("print(GetUpdateCount())\n"), std::to_string(m_Session.UpdateCount()) + "\n");
    EXPECT_EQ(Printed("print(GetProcessID())\n"), std::to_string(getpid()) + "\n");
    EXPECT_EQ(Printed("print(GetSampleRate())"), "48000\n");
}

TEST_F(CHostFunctionFixture, HostErrorsNameTheScriptsLine) {
    EXPECT_EQ(Error("SelectScriptDocument()\n\nGetTrackID('x')"),
              "script:3: bad argument #1 to 'GetTrackID' (a whole number expected, got a text)");
}

TEST_F(CHostFunctionFixture, HostErrorsCanBeCaught) {
    EXPECT_EQ(
        PrintedInDocument("print(pcall(GetTrackID, 9))").rfind("false\tscript:1: there is no", 0),
        0u);
}

TEST_F(CHostFunctionFixture, ASoundIsTheSameWhereverReadingBegins) {
    std::string const strFile = WriteFile("long.wav", TestAudio::Phrase(300'000));
    PrintedInDocument("AddAudioRegion(GetTrackID(0), \"" + strFile +
                      "\", true, false, 2000000, 0, 300000) "
                      "AddAudioRegion(GetTrackID(0), \"" +
                      strFile + "\", true, false, 2100000, 0, 300000)");
    CTrack const& track = m_Session.TrackAt(DocumentKind::Script, 0);
    auto const ignore = [](std::int64_t) {};
    CTrackSound whole(track, 0, 2'500'000, 48000, ignore);
    CAudio const all = whole.Read(0, 2'500'000);
    CTrackSound parts(track, 0, 2'500'000, 48000, ignore);
    for (std::int64_t lStart : {2'090'000, 1'900'000, 2'399'000, -500, 0, 2'499'000}) {
        CAudio const part = parts.Read(lStart, 3000);
        for (std::int64_t l = 0; l < 3000; ++l) {
            bool const fInside = lStart + l >= 0 && lStart + l < 2'500'000;
            float const expected =
                fInside ? all.m_Channels[0][static_cast<std::size_t>(lStart + l)] : 0.0f;
            ASSERT_EQ(part.m_Channels[0][static_cast<std::size_t>(l)], expected) << lStart + l;
        }
    }
}
