#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/Session.h"

/// Maps timeline positions of a session to horizontal places of a picture.
class CTimeScale {
public:
    /// Covers everything in both documents with a little room at each end; ten seconds for an empty
    /// session.
    CTimeScale(CSession const& session, double dLeft, double dWidth);

    /// The place of a position in samples, kept within the picture.
    double At(double dPosition) const;
    double Left() const { return m_dLeft; }
    double Right() const { return m_dLeft + m_dWidth; }

    /// A line of the ruler.
    struct CTick {
        double m_dPlace;
        std::string m_strLabel;  ///< as "1:05" or "0:02.250"
    };
    std::vector<CTick> Ticks() const;

private:
    double m_dLeft;
    double m_dWidth;
    double m_dRate;
    double m_dFirst;  ///< seconds
    double m_dLast;
};

/// A time in seconds as "[-][h:]m:ss" with so many decimals of a second.
std::string TimeText(double dSeconds, int nDecimals);

/// A number with at most so many decimals, without zeros at its end, independent of the locale.
std::string NumberText(double dNumber, int nDecimals);
