#pragma once

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

/// A series of measurements of one kind.
class CSamples {
public:
    void Add(double dValue) { m_values.push_back(dValue); }
    std::size_t Count() const { return m_values.size(); }

    /// The value below which that part (0 to 1) of the samples lies; 0 without samples.
    double Quantile(double dPart) const {
        if (m_values.empty()) return 0;
        std::vector<double> sorted(m_values);
        std::sort(sorted.begin(), sorted.end());
        const auto nLast = static_cast<double>(sorted.size() - 1);
        return sorted[static_cast<std::size_t>(nLast * dPart + 0.5)];
    }

    /// `count` + 1 quantiles, the smallest sample and the greatest included.
    std::vector<double> Quantiles(int nCount) const {
        std::vector<double> sorted(m_values);
        std::sort(sorted.begin(), sorted.end());
        std::vector<double> quantiles;
        for (int i = 0; i <= nCount && !sorted.empty(); ++i)
            quantiles.push_back(sorted[(sorted.size() - 1) * static_cast<std::size_t>(i) /
                                       static_cast<std::size_t>(nCount)]);
        return quantiles;
    }

private:
    std::vector<double> m_values;
};

/// Prints results for scripts/bench to read, one JSON object a line: what was done, by whom, in
/// which unit, how often, and the quantiles in steps of half a percent.
inline void PrintSeries(std::string const& work, std::string const& contender, const char* szUnit,
                        CSamples const& samples) {
    std::printf(R"({"work": "%s", "contender": "%s", "unit": "%s", "count": %zu, "quantiles": [)",
                work.c_str(), contender.c_str(), szUnit, samples.Count());
    const char* szSeparator = "";
    for (double dValue : samples.Quantiles(200)) {
        std::printf("%s%.4g", szSeparator, dValue);
        szSeparator = ", ";
    }
    std::printf("]}\n");
    std::fflush(stdout);
}

/// The same for something measured once.
inline void PrintValue(std::string const& work, std::string const& contender, const char* szUnit,
                       double dValue) {
    CSamples samples;
    samples.Add(dValue);
    PrintSeries(work, contender, szUnit, samples);
}
