#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <vector>

#include "host/Session.h"

namespace {

CRegion MakeRegion(std::int64_t lPosition, std::int64_t lStart = 0, std::int64_t lEnd = 100) {
    CRegion region;
    region.m_strFile = "/audio/take.wav";
    region.m_nFileRate = 48000;
    region.m_lFilePosition = lPosition;
    region.m_lStart = lStart;
    region.m_lEnd = lEnd;
    region.m_Channels = {0};
    return region;
}

constexpr DocumentKind kScript = DocumentKind::Script;

class CHostSessionTest : public testing::Test {
protected:
    CSessionId Track(std::int64_t nTrack) const {
        return m_Session.TrackAt(kScript, nTrack).m_idTrack;
    }

    CProcess MakeProcess(CSessionId idRegion) const {
        CProcess process;
        process.m_Inputs = {{1, Track(0), 0, 100}};
        process.m_idOutputTrack = Track(1);
        process.m_idRegion = idRegion;
        return process;
    }

    CSession m_Session{{"One", "Two"}, 44100};
};

}  // namespace

TEST_F(CHostSessionTest, BothDocumentsStartWithTheGivenTracks) {
    for (DocumentKind kind : kDocumentKinds) {
        ASSERT_EQ(m_Session.Document(kind).m_Tracks.size(), 2u);
        EXPECT_EQ(m_Session.Document(kind).m_Tracks[1].m_strName, "Two");
        EXPECT_EQ(m_Session.Document(kind).m_Tracks[1].m_MarkerTracks.size(), 1u);
        EXPECT_EQ(m_Session.Document(kind).m_idSelectedRegion, kNullId);
        EXPECT_EQ(m_Session.Document(kind).m_idLastProcess, kNullId);
    }
    EXPECT_EQ(m_Session.SampleRate(), 44100);
}

TEST_F(CHostSessionTest, IdsAreUniqueAndNeverNull) {
    std::set<CSessionId> ids;
    for (DocumentKind kind : kDocumentKinds)
        for (CTrack const& track : m_Session.Document(kind).m_Tracks) {
            ids.insert(track.m_idTrack);
            ids.insert(track.m_MarkerTracks.front().m_idMarkerTrack);
        }
    EXPECT_EQ(ids.size(), 8u);
    EXPECT_FALSE(ids.contains(kNullId));
    EXPECT_FALSE(ids.contains(m_Session.AddRegion(kScript, Track(0), MakeRegion(0))));
}

TEST_F(CHostSessionTest, RegionsStayInTimelineOrder) {
    for (std::int64_t lPosition : {500, 100, 300})
        m_Session.AddRegion(kScript, Track(0), MakeRegion(lPosition));
    auto const& regions = m_Session.Track(kScript, Track(0)).m_Regions;
    EXPECT_EQ(regions[0].Start(), 100);
    EXPECT_EQ(regions[1].Start(), 300);
    EXPECT_EQ(regions[2].Start(), 500);
}

TEST_F(CHostSessionTest, RegionsAreFoundWhateverWasAddedAndDeleted) {
    std::mt19937 random(5);
    std::map<CSessionId, std::int64_t> starts;
    for (int n = 0; n < 3000; ++n) {
        if (random() % 3 > 0 || starts.empty()) {
            auto const lStart = static_cast<std::int64_t>(random() % 50);
            starts[m_Session.AddRegion(kScript, Track(random() % 2), MakeRegion(lStart))] = lStart;
        } else {
            auto const gone = std::next(starts.begin(), random() % starts.size());
            m_Session.DeleteRegion(kScript, gone->first);
            EXPECT_EQ(m_Session.Document(kScript).FindRegion(gone->first), nullptr);
            starts.erase(gone);
        }
    }
    CSession const loaded(m_Session.Data());
    for (CSession const* pSession : std::initializer_list<CSession const*>{&m_Session, &loaded}) {
        std::size_t nCount = 0;
        for (CTrack const& track : pSession->Document(kScript).m_Tracks)
            nCount += track.m_Regions.size();
        EXPECT_EQ(nCount, starts.size());
        for (auto const& [idRegion, lStart] : starts) {
            CRegion const& region = pSession->Region(kScript, idRegion);
            EXPECT_EQ(region.m_idRegion, idRegion);
            EXPECT_EQ(region.Start(), lStart);
        }
    }
}

TEST_F(CHostSessionTest, AreasAreFoundWhateverWasAddedAndDeleted) {
    CSessionId const idMarkers = m_Session.TrackAt(kScript, 1).m_MarkerTracks[0].m_idMarkerTrack;
    std::vector<CSessionId> ids;
    for (int n = 0; n < 100; ++n)
        ids.push_back(m_Session.AddMarkerArea(kScript, idMarkers, n, n + 1));
    for (std::size_t n : {50, 0, 99}) m_Session.DeleteMarkerArea(kScript, ids[n]);
    EXPECT_THROW(m_Session.DeleteMarkerArea(kScript, ids[50]), CSessionError);
    auto const& areas = m_Session.MarkerTrack(kScript, idMarkers).m_Areas;
    EXPECT_EQ(areas.size(), 97u);
    EXPECT_EQ(areas.front().m_idArea, ids[1]);
    EXPECT_EQ(areas.back().m_idArea, ids[98]);
}

TEST_F(CHostSessionTest, ExtentsFollowFromPositionAndStretch) {
    CRegion const region = MakeRegion(1000, 50, 80);
    EXPECT_EQ(region.Start(), 1050);
    EXPECT_EQ(region.End(), 1080);
    EXPECT_EQ(region.Length(), 30);
}

TEST_F(CHostSessionTest, ADeletedRegionIsNoLongerSelectedNorAResult) {
    CSessionId const idRegion = m_Session.AddRegion(kScript, Track(1), MakeRegion(0));
    CSessionId const idProcess = m_Session.AddProcess(kScript, MakeProcess(idRegion));
    EXPECT_EQ(m_Session.Document(kScript).m_idSelectedRegion, idRegion);
    m_Session.DeleteRegion(kScript, idRegion);
    EXPECT_EQ(m_Session.Document(kScript).m_idSelectedRegion, kNullId);
    EXPECT_EQ(m_Session.Process(kScript, idProcess).m_idRegion, kNullId);
    EXPECT_EQ(m_Session.Document(kScript).m_idLastProcess, idProcess);
    m_Session.SelectProcess(kScript, idProcess);
    EXPECT_EQ(m_Session.Document(kScript).m_idSelectedRegion, kNullId);
}

TEST_F(CHostSessionTest, DeletingAnotherRegionKeepsTheSelection) {
    CSessionId const idOther = m_Session.AddRegion(kScript, Track(0), MakeRegion(0));
    CSessionId const idRegion = m_Session.AddRegion(kScript, Track(0), MakeRegion(0));
    m_Session.DeleteRegion(kScript, idOther);
    EXPECT_EQ(m_Session.Document(kScript).m_idSelectedRegion, idRegion);
}

TEST_F(CHostSessionTest, EveryChangeRaisesTheUpdateCounter) {
    std::uint32_t nLast = m_Session.UpdateCount();
    auto const raised = [&] {
        bool const fRaised = m_Session.UpdateCount() > nLast;
        nLast = m_Session.UpdateCount();
        return fRaised;
    };
    CSessionId const idRegion = m_Session.AddRegion(kScript, Track(0), MakeRegion(0));
    EXPECT_TRUE(raised());
    CSessionId const idProcess = m_Session.AddProcess(kScript, MakeProcess(idRegion));
    EXPECT_TRUE(raised());
    m_Session.SelectRegion(kScript, kNullId);
    EXPECT_TRUE(raised());
    m_Session.SelectProcess(kScript, idProcess);
    EXPECT_TRUE(raised());
    CSessionId const idMarkers = m_Session.TrackAt(kScript, 0).m_MarkerTracks[0].m_idMarkerTrack;
    CSessionId const idArea = m_Session.AddMarkerArea(kScript, idMarkers, 0, 10);
    EXPECT_TRUE(raised());
    m_Session.DeleteMarkerArea(kScript, idArea);
    EXPECT_TRUE(raised());
    m_Session.MoveDisplayToPosition(kScript, 5.0);
    EXPECT_TRUE(raised());
    m_Session.DeleteRegion(kScript, idRegion);
    EXPECT_TRUE(raised());
    m_Session.AddTrack(kScript, "Three");
    EXPECT_TRUE(raised());
    m_Session.SetSelected(false);
    EXPECT_TRUE(raised());
    m_Session.SetSampleRate(96000);
    EXPECT_TRUE(raised());
    m_Session.SetLinkSMPTEOffset(1.5);
    EXPECT_TRUE(raised());
}

TEST_F(CHostSessionTest, WhatChangesNothingLeavesTheUpdateCounter) {
    m_Session.MoveDisplayToPosition(kScript, 5.0);
    std::uint32_t const nBefore = m_Session.UpdateCount();
    m_Session.MoveDisplayToPosition(kScript, 5.0);
    m_Session.SetSelected(true);
    m_Session.SetSampleRate(44100);
    m_Session.SelectRegion(kScript, kNullId);
    m_Session.SelectProcess(kScript, kNullId);
    EXPECT_EQ(m_Session.UpdateCount(), nBefore);
}

TEST_F(CHostSessionTest, UnknownIdsAndImpossibleNumbersAreRefusedWithoutAChange) {
    std::uint32_t const nBefore = m_Session.UpdateCount();
    double const dNaN = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THROW(m_Session.Track(kScript, 99), CSessionError);
    EXPECT_THROW(m_Session.Track(DocumentKind::AudioSuite, Track(0)), CSessionError);
    EXPECT_THROW(m_Session.TrackAt(kScript, 2), CSessionError);
    EXPECT_THROW(m_Session.AddRegion(kScript, 99, MakeRegion(0)), CSessionError);
    EXPECT_THROW(m_Session.AddRegion(kScript, Track(0), MakeRegion(0, 10, 10)), CSessionError);
    EXPECT_THROW(m_Session.AddRegion(kScript, Track(0), MakeRegion(0, -1, 10)), CSessionError);
    EXPECT_THROW(m_Session.AddRegion(kScript, Track(0), MakeRegion(INT64_MAX)), CSessionError);
    EXPECT_THROW(m_Session.AddRegion(kScript, Track(0), MakeRegion(0, 0, INT64_MAX)),
                 CSessionError);
    EXPECT_THROW(m_Session.AddRegion(kScript, Track(0), CRegion{}), CSessionError);
    EXPECT_THROW(m_Session.DeleteRegion(kScript, kNullId), CSessionError);
    EXPECT_THROW(m_Session.SelectRegion(kScript, 99), CSessionError);
    EXPECT_THROW(m_Session.SelectProcess(kScript, 99), CSessionError);
    EXPECT_THROW(m_Session.AddProcess(kScript, CProcess{}), CSessionError);
    EXPECT_THROW(m_Session.AddProcess(kScript, MakeProcess(99)), CSessionError);
    EXPECT_THROW(m_Session.AddMarkerArea(kScript, 99, 0, 1), CSessionError);
    EXPECT_THROW(m_Session.DeleteMarkerArea(kScript, 99), CSessionError);
    EXPECT_THROW(m_Session.MoveDisplayToPosition(kScript, dNaN), CSessionError);
    EXPECT_THROW(m_Session.MoveDisplayToPosition(kScript, 1e300), CSessionError);
    EXPECT_THROW(m_Session.SetSampleRate(0), CSessionError);
    EXPECT_THROW(m_Session.SetLinkSMPTEOffset(dNaN), CSessionError);
    EXPECT_THROW(CSession({"One"}, -1), CSessionError);
    EXPECT_EQ(m_Session.UpdateCount(), nBefore);
}

TEST_F(CHostSessionTest, TrackNamesAreOneLineOfText) {
    for (std::string const& strName : {std::string(), std::string("a\nb"), std::string("a\0b", 3),
                                       std::string(256, 'x'), std::string("\xff")})
        EXPECT_THROW(m_Session.AddTrack(kScript, strName), CSessionError);
    m_Session.AddTrack(kScript, "Gesang – 合唱 <1>");
}

TEST_F(CHostSessionTest, ADocumentHoldsALimitedNumberOfTracks) {
    for (std::size_t n = 2; n < CSession::kMaxTracks; ++n) m_Session.AddTrack(kScript, "t");
    EXPECT_THROW(m_Session.AddTrack(kScript, "t"), CSessionError);
}

TEST_F(CHostSessionTest, DataThatContradictsItselfIsRefused) {
    CSessionData const good = m_Session.Data();
    EXPECT_NO_THROW(CSession{good});
    auto const refused = [&](auto const& damage) {
        CSessionData data = good;
        damage(data);
        EXPECT_THROW(CSession{std::move(data)}, CSessionError);
    };
    refused([](CSessionData& data) { data.m_idNext = 2; });
    refused([](CSessionData& data) { data.m_idNext = 0; });
    refused([](CSessionData& data) { data.m_nSampleRate = 0; });
    refused([](CSessionData& data) { data.m_Documents[0].m_idSelectedRegion = 5; });
    refused([](CSessionData& data) { data.m_Documents[0].m_idLastProcess = 5; });
    refused([](CSessionData& data) { data.m_Documents[1].m_Tracks[0].m_idTrack = 1; });
    refused([](CSessionData& data) { data.m_Documents[0].m_Tracks[0].m_idTrack = 0; });
    refused([](CSessionData& data) { data.m_Documents[0].m_Tracks[0].m_strName = "\n"; });
    refused([](CSessionData& data) { data.m_Documents[0].m_Tracks[0].m_Regions.push_back({}); });
    refused([](CSessionData& data) { data.m_Documents[0].m_Processes.push_back({}); });
    refused([](CSessionData& data) { data.m_Documents[0].m_dDisplayPosition = INFINITY; });
}
