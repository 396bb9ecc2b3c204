#include "bench/exchange/CommandSteps.h"

#include <array>

#include "bench/exchange/BenchProcess.h"
#include "link/LinkClock.h"
#include "link/MappedSegment.h"
#include "link/MessageSegment.h"
#include "link/TANClientInterProcess.h"
#include "link/WordProtocol.h"

namespace {

constexpr const char* steps[] = {"host check", "open, map and write", "notify and await",
                                 "read, unmap and close"};

// One command taken apart; the times at which its steps begin and the last one ends.
std::array<double, std::size(steps) + 1> RunCommand() {
    std::array<double, std::size(steps) + 1> times{};
    times[0] = NowUs();
    CTANClientInterProcess client;
    const int id = client.GetCurrentTANHost();
    times[1] = NowUs();
    {
        const CMappedSegment mapping(client.GetNameOfHost(id).c_str());
        CMessageSegment segment(mapping.Bytes(), mapping.Size());
        MessageRecord* const pRecord = segment.Record();
        const CWordLock request(&pRecord->nRequestLock, kNoDeadline);
        const CWordLock exchange(&pRecord->nExchangeMutex, kNoDeadline);
        segment.WriteRequest(std::string(200, 'q'));
        times[2] = NowUs();
        NotifyOne(&pRecord->requestCondition);
        segment.SetPending();
        WaitOnCondition(&pRecord->replyCondition, &pRecord->nExchangeMutex, kNoDeadline,
                        kClientPace, &pRecord->requestCondition.nCommand);
        times[3] = NowUs();
        segment.ReadReply();
        segment.ReadError();
    }
    times[4] = NowUs();
    return times;
}

}  // namespace

void MeasureCommandSteps(std::string const& work, int nRounds, double dPauseUs) {
    std::array<CSamples, std::size(steps)> samples;
    for (int nRound = 0; nRound < nRounds; ++nRound) {
        if (dPauseUs > 0) SleepUs(dPauseUs);
        const auto times = RunCommand();
        for (std::size_t i = 0; i < samples.size(); ++i) samples[i].Add(times[i + 1] - times[i]);
    }
    for (std::size_t i = 0; i < samples.size(); ++i) PrintSeries(work, steps[i], "us", samples[i]);
}
