#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tools/UsualTimecode.h"

/// Reads a plain decimal number, whatever the locale. False when the text is anything else.
bool ReadNumber(std::string_view text, double& number);
bool ReadNumber(std::string_view text, std::int64_t& number);

/// A number above 0 or a fraction such as 30000/1001. Ends the command with a `CToolFailure` that
/// names `szWhat` when the text is neither.
double ReadRate(const char* szWhat, std::string const& strText);

/// The four fields of a time code, at most 24 hours, 60 minutes and 60 seconds. Ends the command
/// when the text has no such fields.
CTimeLabel ReadTimeLabel(std::string const& strText);

/// A place on a session's timeline as a person writes it: samples, as in "48000", seconds, as in
/// "2.5s", or a time code, as in "01:00:00:00" (with ";" before the frames: drop-frame).
struct CTimelinePosition {
    double dNumber = 0;
    bool fSeconds = false;

    /// In samples of a session of this rate. The rate does not matter to samples.
    double Samples(int nSampleRate) const { return fSeconds ? dNumber * nSampleRate : dNumber; }
};

/// Ends the command with a `CToolFailure` that names the option when the text is no such place, or
/// one that no timeline has. `strFrameRate` is that of a time code.
CTimelinePosition ReadTimelinePosition(std::string const& strOption, std::string const& strText,
                                       std::string const& strFrameRate);
