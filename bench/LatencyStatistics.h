#pragma once

#include <algorithm>
#include <vector>

/// Percentiles of a series of durations, in microseconds.
class CLatencyStatistics {
public:
    void Add(double dMicroseconds) { m_samples.push_back(dMicroseconds); }

    /// The value below which `dPercent` of the samples lie; 0 without samples.
    double Percentile(double dPercent) const {
        if (m_samples.empty()) return 0;
        std::vector<double> sorted(m_samples);
        std::sort(sorted.begin(), sorted.end());
        const auto nLast = static_cast<double>(sorted.size() - 1);
        return sorted[static_cast<std::size_t>(nLast * dPercent / 100 + 0.5)];
    }

private:
    std::vector<double> m_samples;
};
