#include "SoakChart.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace {

constexpr double kWidth = 860, kHeight = 460;
constexpr double kLeft = 60, kRight = 30, kTop = 50, kPanel = 150, kGap = 70;

/// One line of the picture.
struct Series {
    const char* szName;
    const char* szColour;
    double (*valueOf)(SoakSample const& sample);
};

/// One set of axes.
struct Panel {
    const char* szUnit;
    Series first, second;
};

constexpr Panel kPanels[] = {
    {"MB resident",
     {"host", "#1b6ca8", [](SoakSample const& s) { return s.dHostMegabytes; }},
     {"four lasting clients", "#c0392b", [](SoakSample const& s) { return s.dClientMegabytes; }}},
    {"descriptors",
     {"host", "#1b6ca8", [](SoakSample const& s) { return double(s.nHostDescriptors); }},
     {"four lasting clients", "#c0392b",
      [](SoakSample const& s) { return double(s.nClientDescriptors); }}}};

// A round number at or above a value.
double RoundUp(double dValue) {
    const double dStep = std::pow(10, std::floor(std::log10(std::max(dValue, 1.0))));
    return std::ceil(std::max(dValue, 1.0) / dStep) * dStep;
}

class CChart {
public:
    explicit CChart(std::vector<SoakSample> const& samples) : m_samples(samples) {
        m_dEnd = samples.empty() ? 1 : std::max(1.0, samples.back().dSeconds);
    }

    std::string Draw(std::string const& strTitle) {
        m_svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << kWidth << "\" height=\""
              << kHeight << "\" font-family=\"sans-serif\" font-size=\"12\">\n"
              << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
        Text(kLeft, 24, "start", strTitle);
        double dTop = kTop;
        for (Panel const& panel : kPanels) {
            DrawPanel(panel, dTop);
            dTop += kPanel + kGap;
        }
        m_svg << "</svg>\n";
        return m_svg.str();
    }

private:
    double X(double dSeconds) const {
        return kLeft + dSeconds / m_dEnd * (kWidth - kLeft - kRight);
    }

    void Text(double dX, double dY, const char* szAnchor, std::string const& strText,
              const char* szColour = "#222") {
        m_svg << "<text x=\"" << dX << "\" y=\"" << dY << "\" text-anchor=\"" << szAnchor
              << "\" fill=\"" << szColour << "\">" << strText << "</text>\n";
    }

    void DrawPanel(Panel const& panel, double dTop) {
        double dMost = 0;
        for (SoakSample const& sample : m_samples) {
            dMost = std::max({dMost, panel.first.valueOf(sample), panel.second.valueOf(sample)});
        }
        dMost = RoundUp(dMost);
        for (int nLine = 0; nLine <= 4; ++nLine) {
            const double dY = dTop + kPanel * (1 - nLine / 4.0);
            m_svg << "<path d=\"M" << kLeft << ' ' << dY << "H" << kWidth - kRight
                  << "\" stroke=\"#ddd\"/>\n";
            std::ostringstream label;
            label << dMost * nLine / 4;
            Text(kLeft - 6, dY + 4, "end", label.str());
        }
        for (int nMark = 0; nMark <= 5; ++nMark) {
            const double dSeconds = m_dEnd * nMark / 5;
            Text(X(dSeconds), dTop + kPanel + 18, "middle",
                 std::to_string(std::lround(dSeconds)) + " s");
        }
        Text(kLeft, dTop - 8, "start", panel.szUnit);
        Text(kLeft + 120, dTop - 8, "start", panel.first.szName, panel.first.szColour);
        Text(kLeft + 180, dTop - 8, "start", panel.second.szName, panel.second.szColour);
        DrawLine(panel.first, dTop, dMost);
        DrawLine(panel.second, dTop, dMost);
    }

    void DrawLine(Series const& series, double dTop, double dMost) {
        m_svg << "<polyline fill=\"none\" stroke=\"" << series.szColour << "\" points=\"";
        for (SoakSample const& sample : m_samples) {
            m_svg << X(sample.dSeconds) << ','
                  << dTop + kPanel * (1 - series.valueOf(sample) / dMost) << ' ';
        }
        m_svg << "\"/>\n";
    }

    std::vector<SoakSample> const& m_samples;
    double m_dEnd;
    std::ostringstream m_svg;
};

}  // namespace

std::string DrawSoak(std::vector<SoakSample> const& samples, std::string const& strTitle) {
    return CChart(samples).Draw(strTitle);
}
