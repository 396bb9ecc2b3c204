#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "link/TANClientInterProcess.h"
#include "utils/SMPTE.h"

// Small work that a view does often: splitting a reply, and turning positions into time codes and
// back. Every contender is told what the heap was asked for.

namespace {

std::atomic<long> allocations{0};

// Counts what the heap is asked for, per round of a benchmark.
class CAllocationCount {
public:
    explicit CAllocationCount(benchmark::State& state) : m_state(state), m_lBefore(allocations) {}
    ~CAllocationCount() {
        m_state.counters["allocations"] = static_cast<double>(allocations - m_lBefore) /
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

constexpr double kSampleRate = 48'000;
constexpr double kFrameRate = 25;
constexpr int kPositions = 1000;

double PositionOf(int nNumber) {
    return nNumber * 123'457.0;
}

void TimeCodeAndBack(benchmark::State& state) {
    CAllocationCount count(state);
    for (auto _ : state) {
        double dSum = 0;
        for (int i = 0; i < kPositions; ++i) {
            SMPTETimeCode code;
            SampleToSMPTE(kSampleRate, kFrameRate, 0, 0, PositionOf(i), &code);
            dSum += SMPTEToSamples(kSampleRate, kFrameRate, 0, 0, &code);
        }
        benchmark::DoNotOptimize(dSum);
    }
}

// The same operations in the same order for whole frame rates without drop-frame, nothing else.
double PlainFormula(double dPosition) {
    const auto lPosition = static_cast<std::uint64_t>(dPosition);
    const auto lSeconds = static_cast<std::uint64_t>(static_cast<double>(lPosition) / kSampleRate);
    const auto lInSecond = static_cast<std::uint64_t>(static_cast<double>(lPosition) -
                                                      static_cast<double>(lSeconds) * kSampleRate);
    const auto lWholeRate = static_cast<std::uint64_t>(kFrameRate);
    SMPTETimeCode code{
        static_cast<std::int16_t>(lSeconds / 3600), static_cast<std::int16_t>(lSeconds % 3600 / 60),
        static_cast<std::int16_t>(lSeconds % 3600 % 60),
        static_cast<std::int16_t>(
            static_cast<std::uint64_t>(static_cast<double>(lWholeRate * lInSecond) / kSampleRate)),
        0};
    benchmark::DoNotOptimize(code);
    if (code.nHours > 24 || code.nMinutes > 60 || code.nSeconds > 60) return 0;
    const int nSeconds = (code.nHours * 60 + code.nMinutes) * 60 + code.nSeconds;
    return (code.nFrames + kFrameRate * nSeconds) * kSampleRate / kFrameRate;
}

void TimeCodeByFormula(benchmark::State& state) {
    CAllocationCount count(state);
    for (auto _ : state) {
        double dSum = 0;
        for (int i = 0; i < kPositions; ++i) dSum += PlainFormula(PositionOf(i));
        benchmark::DoNotOptimize(dSum);
    }
}

BENCHMARK(SplitReply);
BENCHMARK(SplitByView);
BENCHMARK(TimeCodeAndBack);
BENCHMARK(TimeCodeByFormula);

}  // namespace

void* operator new(std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

BENCHMARK_MAIN();
