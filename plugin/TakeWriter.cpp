#include "plugin/TakeWriter.h"

#include <algorithm>

#include "plugin/WaveHeader.h"

namespace {

constexpr std::size_t kFramesAtOnce = 16384;

}  // namespace

CTakeWriter::CTakeWriter(CCaptureRing& ring, CCaptureDirectory& directory, int nSampleRate)
    : m_Ring(ring),
      m_Directory(directory),
      m_nSampleRate(nSampleRate),
      m_Interleaved(kFramesAtOnce * ring.Channels()) {}

void CTakeWriter::Service(std::vector<CTake>& finished) {
    for (;;) {
        if (const std::optional<CTakeMark> mark = m_Ring.NextMark()) {
            Follow(*mark, finished);
            continue;
        }
        const std::size_t nFrames = m_Ring.Read(m_Interleaved);
        if (nFrames == 0) return;
        Write(nFrames);
    }
}

std::uint32_t CTakeWriter::Abandon(std::vector<CTake>& finished) {
    Finish(TakeEnd::Stopped, finished);
    return m_nTake;
}

void CTakeWriter::Follow(CTakeMark const& mark, std::vector<CTake>& finished) {
    switch (mark.change) {
        case TakeChange::Begin:
            Begin(mark);
            break;
        case TakeChange::Gap:
            WriteSilence(mark.lGap);
            break;
        case TakeChange::End:
            Finish(mark.end, finished);
            break;
    }
}

void CTakeWriter::WriteSilence(std::int64_t lFrames) {
    std::fill(m_Interleaved.begin(), m_Interleaved.end(), 0.0F);
    while (lFrames > 0) {
        const auto nFrames =
            static_cast<std::size_t>(std::min<std::int64_t>(lFrames, kFramesAtOnce));
        Write(nFrames);
        lFrames -= static_cast<std::int64_t>(nFrames);
    }
}

void CTakeWriter::Begin(CTakeMark const& mark) {
    m_nTake = mark.nTake;
    m_Take.emplace();
    m_Take->lPosition = mark.lPosition;
    if (!Open()) m_nFailedTake = m_nTake;
}

bool CTakeWriter::Open() {
    m_Take->strFile = m_Directory.NewFile("Take");
    if (m_Take->strFile.empty()) return false;
    SF_INFO format{};
    format.samplerate = m_nSampleRate;
    format.channels = m_Ring.Channels();
    format.format = SF_FORMAT_RF64 | SF_FORMAT_FLOAT;
    m_pFile.reset(sf_open(m_Take->strFile.c_str(), SFM_WRITE, &format));
    if (!m_pFile) return false;
    sf_command(m_pFile.get(), SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
    // It carries the time of writing, which would make two equal takes differ.
    sf_command(m_pFile.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    return true;
}

void CTakeWriter::Write(std::size_t nFrames) {
    if (m_nFailedTake == m_nTake || !m_pFile) return;
    const auto lFrames = static_cast<sf_count_t>(nFrames);
    const sf_count_t lWritten = sf_writef_float(m_pFile.get(), m_Interleaved.data(), lFrames);
    m_Take->lFrames += lWritten;
    if (lWritten != lFrames) m_nFailedTake = m_nTake;
}

void CTakeWriter::Finish(TakeEnd end, std::vector<CTake>& finished) {
    if (!m_Take) return;
    m_pFile.reset();
    // It replaces bytes that are there, for which a full disk has room.
    WritePlainFloatHeader(m_Take->strFile);
    m_Take->end = m_nFailedTake == m_nTake ? TakeEnd::DiskFailed : end;
    finished.push_back(*m_Take);
    m_Take.reset();
}
