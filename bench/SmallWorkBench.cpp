#include <benchmark/benchmark.h>

#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "bench/AllocationCounter.h"
#include "link/TANClientInterProcess.h"
#include "utils/SMPTE.h"

// Small work that a view does often: splitting a reply, and turning positions into time codes and
// back.

namespace {

// Counts what the heap is asked for, per round of a benchmark.
class CAllocationCount {
public:
    explicit CAllocationCount(benchmark::State& state)
        : m_state(state), m_lBefore(CountAllocations()) {}
    ~CAllocationCount() {
        m_state.counters["allocations"] = static_cast<double>(CountAllocations() - m_lBefore) /
                                          static_cast<double>(m_state.iterations());
    }

private:
    benchmark::State& m_state;
    long m_lBefore;
};

constexpr int kNames = 10'000;

std::string TrackList() {
    std::string reply = std::to_string(kNames) + "\n";
    for (int i = 0; i < kNames; ++i) reply += "Dialogue track " + std::to_string(i) + "\n";
    return reply;
}

void SplitReply(benchmark::State& state) {
    CTANClientInterProcess client;
    std::string reply = TrackList();
    std::vector<std::string> values;
    for (auto _ : state) {
        client.SplitResult(reply, &values);
        benchmark::DoNotOptimize(values.data());
    }
    if (values.size() != kNames) state.SkipWithError("not every name was split off");
}

// One pass by line feeds alone, each name appended as a text of its own.
void SplitByView(benchmark::State& state) {
    const std::string reply = TrackList();
    std::vector<std::string> values;
    for (auto _ : state) {
        values.clear();
        std::string_view rest = reply;
        rest.remove_prefix(rest.find('\n') + 1);
        while (!rest.empty()) {
            const std::size_t end = rest.find('\n');
            values.emplace_back(rest.substr(0, end));
            rest.remove_prefix(end + 1);
        }
        benchmark::DoNotOptimize(values.data());
    }
    if (values.size() != kNames) state.SkipWithError("not every name was split off");
}

constexpr int kPositions = 1000;

// Neither loop knows the rates beforehand.
struct CRates {
    CRates() {
        benchmark::DoNotOptimize(dSample);
        benchmark::DoNotOptimize(dFrame);
    }

    double dSample = 48'000;
    double dFrame = 25;
};

double PositionOf(int nNumber) {
    return nNumber * 123'457.0;
}

void TimeCodeAndBack(benchmark::State& state) {
    const CRates rates;
    const CAllocationCount count(state);
    for (auto _ : state) {
        double dSum = 0;
        for (int i = 0; i < kPositions; ++i) {
            SMPTETimeCode code;
            SampleToSMPTE(rates.dSample, rates.dFrame, 0, 0, PositionOf(i), &code);
            dSum += SMPTEToSamples(rates.dSample, rates.dFrame, 0, 0, &code);
        }
        benchmark::DoNotOptimize(dSum);
    }
}

bool IsNtsc(double dFrameRate) {
    const auto lCode = static_cast<std::int64_t>(std::ceil(1000.0 * dFrameRate));
    return lCode >= 29970 && lCode <= 29999;
}

// The formulas as they stand for non-drop time codes, with no guard for what does not fit.
SMPTETimeCode PlainCode(CRates const& rates, double dPosition) {
    auto lPosition = static_cast<std::uint64_t>(dPosition);
    if (IsNtsc(rates.dFrame))
        lPosition = static_cast<std::uint64_t>(static_cast<double>(lPosition) * 1000.0 / 1001.0);
    const auto lSeconds =
        static_cast<std::uint64_t>(static_cast<double>(lPosition) / rates.dSample);
    const auto lInSecond = static_cast<std::uint64_t>(
        static_cast<double>(lPosition) - static_cast<double>(lSeconds) * rates.dSample);
    const auto lWholeRate = static_cast<std::uint64_t>(rates.dFrame);
    const double dFrames = static_cast<double>(lWholeRate * lInSecond) / rates.dSample;
    return {static_cast<std::int16_t>(lSeconds / 3600),
            static_cast<std::int16_t>(lSeconds % 3600 / 60),
            static_cast<std::int16_t>(lSeconds % 3600 % 60),
            static_cast<std::int16_t>(static_cast<std::uint64_t>(dFrames)), 0};
}

double PlainPosition(CRates const& rates, SMPTETimeCode const& code) {
    const bool fNtsc = IsNtsc(rates.dFrame);
    const int nSeconds = (code.nHours * 60 + code.nMinutes) * 60 + code.nSeconds;
    const double dFrames = code.nFrames + (fNtsc ? 30.0 : rates.dFrame) * nSeconds;
    return dFrames * rates.dSample /
           (fNtsc ? 30000.0 / 1001.0 : std::ceil(1000.0 * rates.dFrame) / 1000.0);
}

void TimeCodeByFormula(benchmark::State& state) {
    const CRates rates;
    const CAllocationCount count(state);
    for (auto _ : state) {
        double dSum = 0;
        for (int i = 0; i < kPositions; ++i)
            dSum += PlainPosition(rates, PlainCode(rates, PositionOf(i)));
        benchmark::DoNotOptimize(dSum);
    }
}

BENCHMARK(SplitReply);
BENCHMARK(SplitByView);
BENCHMARK(TimeCodeAndBack);
BENCHMARK(TimeCodeByFormula);

}  // namespace

BENCHMARK_MAIN();
