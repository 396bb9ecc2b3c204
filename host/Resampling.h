#pragma once

#include <cstdint>
#include <memory>

#include "host/AudioFile.h"
#include "host/Session.h"

/// \file
/// Files whose sample rate is not the session's. A region lies in a session as long as it sounds,
/// so its start and end are counted at the session's rate; its file is read at its own.

/// Where a sample of a file lies at the session's rate, both counted from the file's start: rounded
/// down, and at the nearest limit when it does not fit 64 bits.
std::int64_t ToSessionSamples(std::int64_t lFileSample, int nFileRate, int nSessionRate);

/// The way back: the sample from which `ToSessionSamples` gives this place, where there is one;
/// otherwise the next one.
std::int64_t ToFileSamples(std::int64_t lSessionSample, int nFileRate, int nSessionRate);

/// The stretch of its file that a region uses.
CAudioRange FileRange(CRegion const& region, int nSessionRate);

/// Reads the sound of a region at the session's rate, from one place on and onwards.
///
/// The place is counted from the file's start, at the session's rate. What is read does not depend
/// on where reading began, but for the last bits. Used by one thread.
class CRegionReader {
public:
    /// Throws `CAudioFileError` when the file cannot be read, is shorter than the region needs, or
    /// has a rate that is more than 256 times the session's or less than a 256th of it.
    CRegionReader(CRegion const& region, int nSessionRate, std::int64_t lFrom);
    ~CRegionReader();
    CRegionReader(CRegionReader const&) = delete;
    CRegionReader& operator=(CRegionReader const&) = delete;

    /// The next samples of the region's channels. What lies outside the file is silence. Throws
    /// `CAudioFileError`.
    CAudio Read(std::int64_t lFrames);

private:
    struct CState;
    std::unique_ptr<CState> m_pState;
};

/// Writes a region's sound into a WAV file of 32-bit floats at the session's rate, block by block.
/// Throws `CAudioFileError`.
void WriteRegionSound(CRegion const& region, int nSessionRate, std::string const& strTarget,
                      CCheckpoint const& checkpoint = {});
