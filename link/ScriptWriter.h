#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The sample position that a script gets for a time value: truncated toward zero, the nearest
/// 64-bit limit when it lies outside, 0 for a NaN.
std::int64_t TruncateToSamples(double dSamples) noexcept;

/// Composes a script piece by piece. Numbers never depend on the locale.
class CScriptWriter {
public:
    /// Text as it is.
    CScriptWriter& operator<<(std::string_view text);
    /// An integer in decimal.
    CScriptWriter& operator<<(int nValue);
    CScriptWriter& operator<<(std::int64_t lValue);
    /// A number with six significant digits, in fixed or scientific form, whichever the standard
    /// streams choose. An infinity is written as the largest finite number, a NaN as 0.
    CScriptWriter& operator<<(double dValue);

    /// What was written so far.
    std::string& Text() noexcept { return m_strText; }

private:
    std::string m_strText;
};
