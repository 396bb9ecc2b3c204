#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>

/// Says how far long work of the host has come, about once a second. Used by one thread.
class CWorkNotice {
public:
    using Listener = std::function<void(std::string const& text)>;

    void SetListener(Listener listener) { m_Listener = std::move(listener); }

    /// Work of this name begins. Nothing is said of what ends within a second.
    void Begin(char const* pszWhat) noexcept;
    /// How many samples are going to be read, about.
    void Expect(std::int64_t lSamples) noexcept { m_lExpected = lSamples; }
    /// So many of them have been.
    void Advance(std::int64_t lSamples);
    /// The work goes on.
    void Tick();

private:
    using Clock = std::chrono::steady_clock;

    Listener m_Listener;
    char const* m_pszWhat = "";
    std::int64_t m_lExpected = 0;
    std::int64_t m_lDone = 0;
    Clock::time_point m_Start{};  ///< none before the first sign of work
    Clock::time_point m_Next{};
};
