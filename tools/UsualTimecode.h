#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// \file
/// Time code as people count it. The link's own functions (`utils/SMPTE.h`) count otherwise in
/// places; who types or reads a time code means this.

/// A frame rate as people mean it.
struct CFrameRate {
    double dPerSecond;  ///< exact: 30000/1001 for 29.97
    int nLabels;        ///< how many frames the label counts in a second, 30 for 29.97; 0: no label
    int nDropped;       ///< labels that drop-frame leaves out in most minutes; 0: no drop-frame
};

/// The rate that somebody means who writes `dTyped`, which is positive: 29.97 is 30000/1001, and so
/// on. A rate that is neither whole nor of that family has no labels.
CFrameRate UsualFrameRate(double dTyped);

/// The fields of a time code, none of them negative.
struct CTimeLabel {
    std::int64_t nHours, nMinutes, nSeconds, nFrames;
};

/// Whether a clock of this rate, which has labels, ever shows the label.
bool LabelExists(CFrameRate const& rate, bool fDrop, CTimeLabel const& label);

/// The number of the frame, from 0, that has the label. One that no clock shows is counted on from
/// those that are, as 00:00:60:00 is a minute.
std::int64_t FrameOfLabel(CFrameRate const& rate, bool fDrop, CTimeLabel const& label);

/// "01:00:00:00", with ";" before the frames when they are counted with drop-frame and "-" in front
/// of a frame before 0.
std::string LabelOfFrame(CFrameRate const& rate, bool fDrop, std::int64_t nFrame);

/// The frame that lasts at a sample.
std::int64_t FrameAtSample(CFrameRate const& rate, double dSampleRate, double dSample);

/// Where a frame begins, in samples.
double SampleOfFrame(CFrameRate const& rate, double dSampleRate, std::int64_t nFrame);
