#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "plugin/PlugInAccess.h"

class CPlugInView;

/// What one plug-in does with its view, in small steps: it looks for the host, hands takes over,
/// fetches what is to be returned, and keeps the chosen track. Each turn talks to the host at most
/// once, so that the window waits for one command at a time and no more.
class CSchedule {
public:
    CSchedule(CPlugInAccess& plugIn, CPlugInView& view);

    /// One step.
    void Turn();

private:
    using Clock = std::chrono::steady_clock;

    bool CheckHost();
    bool HandOverTake();
    std::string Prepare(CTake const& take, std::int32_t nTrack);
    void ReportDelivered(CTake const& take, std::string const& strWhyNotAligned);
    bool Fetch();
    void RefuseFetch();
    void FollowTrack();
    void ShowReport();

    CPlugInAccess& m_PlugIn;
    CPlugInView& m_View;
    Clock::time_point m_NextCheck;
    std::int32_t m_nHost = -1;
    std::int32_t m_nWantedTrack;  ///< as chosen in the view or by the workstation
    std::int32_t m_nSeenTrack = -1;
    void const* m_pSeenList = nullptr;
    std::uint64_t m_nSeenReport = 0;
    bool m_fListDue = false;
    bool m_fSaidWaiting = false;
    bool m_fShowsReport = false;  ///< the view shows a text of the plug-in's
    bool m_fExportDue = false;    ///< a region was rendered and is still to be exported
    std::int64_t m_lReturnPosition = 0;
};
