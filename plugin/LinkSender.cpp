#include "plugin/LinkSender.h"

#include <chrono>

#include "FileIO/FileName.h"
#include "link/TANClientInterProcess.h"
#include "plugin/GuideText.h"
#include "plugin/TakeMarks.h"
#include "tools/DeadHostWatch.h"

namespace {

constexpr std::chrono::seconds kPatienceAtEnd{2};

// The tracks of the AudioSuite document.
constexpr int kGuideTrack = 0;
constexpr int kDubTrack = 1;
constexpr int kAlignedTrack = 2;
constexpr int kInputTrack = 0;
constexpr int kDoubledTrack = 1;

std::int64_t End(CTake const& take) {
    return take.lPosition + take.lFrames;
}

// What follows a take in each kind of plug-in.
void Process(CTANClientInterProcess& client, CLinkJob const& job) {
    if (job.kind == PlugInKind::Doubler) {
        client.ClearTrack(true, kDoubledTrack);
        client.CreateDoubler(true, kInputTrack, job.take->lPosition, End(*job.take), 1,
                             kDoubledTrack);
    }
    if (job.kind == PlugInKind::APT && job.nTrack == kDubTrack) {
        client.ClearTrack(true, kAlignedTrack);
        client.CreateAPT(true, kGuideTrack, job.guide->lPosition, End(*job.guide), kDubTrack,
                         job.take->lPosition, End(*job.take), kAlignedTrack);
    }
}

CLinkOutcome HandOver(CTANClientInterProcess& client, CLinkJob const& job) {
    const bool fAudioSuite = job.kind != PlugInKind::Link;
    const std::int32_t nTrack = job.kind == PlugInKind::Doubler ? kInputTrack : job.nTrack;
    CFileName file(&job.take->strFile);
    const auto dPosition = static_cast<double>(job.take->lPosition);
    const auto dEnd = static_cast<double>(job.take->lFrames);
    if (fAudioSuite) client.ClearTrack(true, nTrack);
    if (client.CheckDuplicateRegion(fAudioSuite, nTrack, &file, dPosition, 0, dEnd)) {
        file.FileDelete();
        if (job.take->fMayBeThere) return {PlugInResult::HandedOver, "", nTrack, {}, 0};
        return {PlugInResult::Duplicate, client.m_strLastError, -1, {}, 0};
    }
    constexpr int kEveryChannel = 0;
    if (client.SendFile(fAudioSuite, nTrack, &file, dPosition, 0, dEnd, kEveryChannel) != 0) {
        return {PlugInResult::NoHost, client.m_strLastError, -1, {}, 0, TakeFate::Unknown};
    }
    if (!client.m_strLastError.empty()) {
        return {PlugInResult::HostRefused, client.m_strLastError, -1, {}, 0};
    }
    const std::string strWhy =
        WhyNotAligned(job.kind, nTrack, job.guide, *job.take, job.nSampleRate);
    // What was aligned before stays then.
    if (!strWhy.empty()) {
        return {PlugInResult::NotAligned, "The host has the take. " + strWhy, nTrack, {}, 0};
    }
    Process(client, job);
    const bool fDone = client.m_strLastError.empty();
    return {fDone ? PlugInResult::HandedOver : PlugInResult::HostRefused,
            client.m_strLastError,
            nTrack,
            {},
            0};
}

CLinkOutcome Fetch(CTANClientInterProcess& client, CLinkJob const& job) {
    const bool fAudioSuite = job.kind != PlugInKind::Link;
    CLinkOutcome outcome;
    outcome.lPosition = job.lPosition;
    outcome.result = PlugInResult::ReturnRefused;
    std::int64_t lEnd = 0;
    CFileName file;
    const bool fFetched =
        (job.mode == ReturnMode::Export ||
         client.RenderSelectedRegion(fAudioSuite, job.nSampleRate, &outcome.lPosition, &lEnd)) &&
        client.ExportSelectedRegion(fAudioSuite, job.nSampleRate, &file);
    outcome.strText = client.m_strLastError;
    if (!fFetched) return outcome;
    outcome.result = PlugInResult::Returned;
    outcome.strFile = file.GetFullPathString();
    return outcome;
}

}  // namespace

CLinkOutcome CarryOut(CLinkJob const& job) {
    CTANClientInterProcess client;
    if (client.GetCurrentTANHost() < 1) {
        return {PlugInResult::NoHost, client.m_strLastError, -1, {}, 0};
    }
    return job.take ? HandOver(client, job) : Fetch(client, job);
}

void WatchForDeadHosts() {
    // Never destroyed: that would wait until a host is proven dead, or not.
    static CDeadHostWatch* const pWatch = std::make_unique<CDeadHostWatch>().release();
    (void)pWatch;
}

void CarryOutAlone(std::vector<CLinkJob> jobs) {
    std::thread([jobs = std::move(jobs)]() mutable {
        for (CLinkJob& job : jobs) {
            const CLinkOutcome outcome = CarryOut(job);
            if (outcome.result == PlugInResult::NoHost) return;
            // Nobody is left to be told: whoever opens the directory next tries again and hears it.
            if (outcome.nTrack < 0 && outcome.result != PlugInResult::Duplicate) continue;
            job.take->nTrack = outcome.nTrack;
            job.take->fHandled = true;
            MarkTake(static_cast<std::int32_t>(job.kind), *job.take);
        }
    }).detach();
}

struct CLinkSender::CDesk {
    std::mutex lock;
    std::condition_variable changed;
    std::optional<CLinkJob> job;
    std::optional<CLinkOutcome> outcome;
    bool fQuit = false;
    bool fEnded = false;

    void Serve() {
        std::unique_lock guard(lock);
        while (!fQuit) {
            if (!job) {
                changed.wait(guard);
                continue;
            }
            const CLinkJob current = *job;
            guard.unlock();
            CLinkOutcome done = CarryOut(current);
            guard.lock();
            job.reset();
            outcome = std::move(done);
        }
        fEnded = true;
        changed.notify_all();
    }
};

CLinkSender::~CLinkSender() {
    if (!m_pDesk) return;
    bool fEnded = false;
    {
        std::unique_lock guard(m_pDesk->lock);
        m_pDesk->fQuit = true;
        m_pDesk->changed.notify_all();
        fEnded =
            m_pDesk->changed.wait_for(guard, kPatienceAtEnd, [this] { return m_pDesk->fEnded; });
    }
    if (fEnded) {
        m_Thread.join();
    } else {
        m_Thread.detach();
    }
}

bool CLinkSender::IsIdle() const {
    return !m_fBusy;
}

void CLinkSender::Start(CLinkJob const& job) {
    WatchForDeadHosts();
    m_fBusy = true;
    if (!m_pDesk) {
        m_pDesk = std::make_shared<CDesk>();
        m_Thread = std::thread([desk = m_pDesk] { desk->Serve(); });
    }
    const std::lock_guard guard(m_pDesk->lock);
    m_pDesk->job = job;
    m_pDesk->changed.notify_all();
}

std::optional<CLinkOutcome> CLinkSender::TakeOutcome() {
    if (!m_fBusy) return std::nullopt;
    const std::lock_guard guard(m_pDesk->lock);
    std::optional<CLinkOutcome> outcome = std::move(m_pDesk->outcome);
    m_pDesk->outcome.reset();
    m_fBusy = !outcome;
    return outcome;
}
