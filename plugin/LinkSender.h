#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "plugin/PlugInAccess.h"
#include "plugin/Take.h"

/// What the plug-in says to the host by itself when it has no window: a take to hand over or, with
/// none, the selected region to fetch.
struct CLinkJob {
    PlugInKind kind = PlugInKind::Link;
    std::optional<CTake> take;
    std::optional<CTake> guide;  ///< of an APT plug-in: the guide that the host has, if it has one
    std::int32_t nTrack = 0;     ///< the track that the take is for
    ReturnMode mode = ReturnMode::RenderAndExport;
    int nSampleRate = 0;
    std::int64_t lPosition = 0;  ///< where a file goes whose place the host does not tell
};

/// What became of a job.
struct CLinkOutcome {
    PlugInResult result = PlugInResult::Ready;
    std::string strText;
    std::int32_t nTrack = -1;  ///< of a take: the track that has it now
    std::string strFile;       ///< of a fetch: the exported file
    std::int64_t lPosition = 0;
    TakeFate fate = TakeFate::NotThere;  ///< of a take that no host has taken
};

/// Carries out jobs, one at a time, on a thread of its own: link commands wait for the host without
/// limit, and neither the audio nor the disk may wait with them.
class CLinkSender {
public:
    CLinkSender() = default;

    /// Waits a moment for a job under way, and then leaves the thread to itself: a host that hangs
    /// must not hang the workstation. The module has to stay loaded.
    ~CLinkSender();
    CLinkSender(CLinkSender const&) = delete;
    CLinkSender& operator=(CLinkSender const&) = delete;

    /// Whether no job is under way and no outcome waits.
    bool IsIdle() const;

    /// Starts a job. Only while idle.
    void Start(CLinkJob const& job);

    /// The outcome of the last job, once.
    std::optional<CLinkOutcome> TakeOutcome();

private:
    struct CDesk;
    std::shared_ptr<CDesk> m_pDesk;
    std::thread m_Thread;
    bool m_fBusy = false;
};

/// From now on whoever waits in this process, or in another, for a host that is proven dead is sent
/// away. To be called as often as one likes; never ends.
void WatchForDeadHosts();

/// Carries out jobs one after the other on a thread that belongs to nobody, and marks the takes of
/// which a host was told. Ends at the first job for which there is no host.
void CarryOutAlone(std::vector<CLinkJob> jobs);

/// Carries out one job on the calling thread.
CLinkOutcome CarryOut(CLinkJob const& job);
