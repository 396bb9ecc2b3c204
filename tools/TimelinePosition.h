#pragma once

#include <string>

/// A place on a session's timeline as a person writes it: samples, as in "48000", or seconds, as in
/// "2.5s".
struct CTimelinePosition {
    double dNumber = 0;
    bool fSeconds = false;

    /// In samples of a session of this rate. The rate does not matter to samples.
    double Samples(int nSampleRate) const { return fSeconds ? dNumber * nSampleRate : dNumber; }
};

/// Ends the command with a `CToolFailure` that names the option when the text is no such place, or
/// one that no timeline has.
CTimelinePosition ReadTimelinePosition(std::string const& strOption, std::string const& strText);
