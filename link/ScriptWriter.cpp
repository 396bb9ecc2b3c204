#include "link/ScriptWriter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

std::int64_t TruncateToSamples(double dSamples) noexcept {
    constexpr double kBeyondLargest = 9223372036854775808.0;  // 2^63
    if (std::isnan(dSamples)) return 0;
    if (dSamples >= kBeyondLargest) return std::numeric_limits<std::int64_t>::max();
    if (dSamples < -kBeyondLargest) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(dSamples);
}

CScriptWriter& CScriptWriter::operator<<(std::string_view text) {
    m_strText.append(text);
    return *this;
}

CScriptWriter& CScriptWriter::operator<<(int nValue) {
    return *this << std::int64_t{nValue};
}

CScriptWriter& CScriptWriter::operator<<(std::int64_t lValue) {
    m_strText += std::to_string(lValue);
    return *this;
}

CScriptWriter& CScriptWriter::operator<<(double dValue) {
    constexpr double kLargest = std::numeric_limits<double>::max();
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << (std::isnan(dValue) ? 0.0 : std::clamp(dValue, -kLargest, kLargest));
    m_strText += stream.str();
    return *this;
}
