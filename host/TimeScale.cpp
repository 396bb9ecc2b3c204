#include "host/TimeScale.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace {

constexpr double kTickSpacing = 96.0;
constexpr double kEmptySeconds = 10.0;

/// Calls the function with the start and end of everything in a session that has a place.
template <typename F>
void ForEachExtent(CSession const& session, F const& use) {
    for (DocumentKind kind : kDocumentKinds) {
        for (CTrack const& track : session.Document(kind).m_Tracks) {
            for (CRegion const& region : track.m_Regions) use(region.Start(), region.End());
            for (CMarkerTrack const& markers : track.m_MarkerTracks)
                for (CMarkerArea const& area : markers.m_Areas) use(area.m_lStart, area.m_lEnd);
        }
    }
}

/// The shortest round step between ruler lines, in seconds, that is not shorter than the least.
double RoundStep(double dLeast) {
    for (double dStep = 0.001; dStep < 1.0; dStep *= 10.0)
        for (double dFactor : {1.0, 2.0, 5.0})
            if (dStep * dFactor >= dLeast) return dStep * dFactor;
    for (double dStep : {1.0, 2.0, 5.0, 10.0, 15.0, 30.0})
        if (dStep >= dLeast) return dStep;
    for (double dStep = 60.0;; dStep *= 10.0)
        for (double dFactor : {1.0, 2.0, 5.0})
            if (dStep * dFactor >= dLeast) return dStep * dFactor;
}

}  // namespace

CTimeScale::CTimeScale(CSession const& session, double dLeft, double dWidth)
    : m_dLeft(dLeft), m_dWidth(dWidth), m_dRate(session.SampleRate()) {
    bool fAny = false;
    std::int64_t lFirst = 0;
    std::int64_t lLast = 0;
    ForEachExtent(session, [&](std::int64_t lStart, std::int64_t lEnd) {
        lFirst = fAny ? std::min(lFirst, lStart) : lStart;
        lLast = fAny ? std::max(lLast, lEnd) : lEnd;
        fAny = true;
    });
    m_dFirst = fAny ? static_cast<double>(lFirst) / m_dRate : 0.0;
    m_dLast = fAny ? static_cast<double>(lLast) / m_dRate : kEmptySeconds;
    double const dRoom = std::max(0.01, (m_dLast - m_dFirst) * 0.02);
    m_dFirst -= dRoom;
    m_dLast += dRoom;
}

double CTimeScale::At(double dPosition) const {
    double const dShare = (dPosition / m_dRate - m_dFirst) / (m_dLast - m_dFirst);
    return m_dLeft + m_dWidth * std::clamp(dShare, 0.0, 1.0);
}

std::vector<CTimeScale::CTick> CTimeScale::Ticks() const {
    double const dStep = RoundStep((m_dLast - m_dFirst) * kTickSpacing / m_dWidth);
    int const nDecimals = dStep >= 1.0 ? 0 : dStep >= 0.1 ? 1 : dStep >= 0.01 ? 2 : 3;
    std::vector<CTick> ticks;
    for (double dTick = std::ceil(m_dFirst / dStep); dTick * dStep <= m_dLast; dTick += 1.0)
        ticks.push_back({At(dTick * dStep * m_dRate), TimeText(dTick * dStep, nDecimals)});
    return ticks;
}

std::string TimeText(double dSeconds, int nDecimals) {
    double const dUnit = std::pow(10.0, nDecimals);
    auto const lUnits = std::llround(std::abs(dSeconds) * dUnit);
    auto const lPerSecond = std::llround(dUnit);
    auto const lWhole = lUnits / lPerSecond;
    auto const padded = [](long long lNumber, int nDigits) {
        std::string const strDigits = std::to_string(lNumber);
        auto const nMissing = nDigits - static_cast<int>(strDigits.size());
        return std::string(static_cast<std::size_t>(std::max(0, nMissing)), '0') + strDigits;
    };
    std::string strText = dSeconds < 0 && lUnits > 0 ? "-" : "";
    if (lWhole >= 3600)
        strText += std::to_string(lWhole / 3600) + ":" + padded(lWhole / 60 % 60, 2);
    else
        strText += std::to_string(lWhole / 60);
    strText += ":" + padded(lWhole % 60, 2);
    if (nDecimals > 0) strText += "." + padded(lUnits % lPerSecond, nDecimals);
    return strText;
}

std::string NumberText(double dNumber, int nDecimals) {
    char szText[400];
    auto const [pEnd, error] =
        std::to_chars(szText, szText + sizeof szText, dNumber, std::chars_format::fixed, nDecimals);
    std::string strText(szText, error == std::errc() ? pEnd : szText);
    if (strText.find('.') == std::string::npos) return strText;
    strText.erase(strText.find_last_not_of('0') + 1);
    if (strText.back() == '.') strText.pop_back();
    return strText == "-0" ? "0" : strText;
}
