#pragma once

#include <sndfile.h>

#include <memory>
#include <optional>
#include <vector>

#include "plugin/CaptureDirectory.h"
#include "plugin/CaptureRing.h"
#include "plugin/Take.h"

/// Writes what comes out of a ring into WAV files of 32-bit floats, one per take, so that a file
/// holds exactly the samples that went in. Belongs to the disk thread.
///
/// A file beyond 4 GiB becomes an RF64 file. A disk that fails ends the take; what was written
/// until then stays and is a whole file.
class CTakeWriter {
public:
    CTakeWriter(CCaptureRing& ring, CCaptureDirectory& directory, int nSampleRate);

    /// Writes all that waits in the ring, and appends the takes that ended by that.
    void Service(std::vector<CTake>& finished);

    /// Ends the take under way as far as it goes; what the ring still brings of it is dropped. Its
    /// number.
    std::uint32_t Abandon(std::vector<CTake>& finished);

    /// The number of the last take that the disk failed; 0: none.
    std::uint32_t FailedTake() const { return m_nFailedTake; }

private:
    struct CCloseSound {
        void operator()(SNDFILE* file) const { sf_close(file); }
    };

    void Follow(CTakeMark const& mark, std::vector<CTake>& finished);
    void WriteSilence(std::int64_t lFrames);
    void Begin(CTakeMark const& mark);
    void Write(std::size_t nFrames);
    bool Open();
    void Finish(TakeEnd end, std::vector<CTake>& finished);

    CCaptureRing& m_Ring;
    CCaptureDirectory& m_Directory;
    int m_nSampleRate;
    std::vector<float> m_Interleaved;
    std::unique_ptr<SNDFILE, CCloseSound> m_pFile;
    std::optional<CTake> m_Take;
    std::uint32_t m_nTake = 0;
    std::uint32_t m_nFailedTake = 0;
};
