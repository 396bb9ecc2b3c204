#include "host/Resampling.h"

#include <soxr.h>

#include <algorithm>
#include <limits>
#include <numeric>

namespace {

constexpr std::int64_t kBlockFrames = 16384;
constexpr int kMaxRatio = 256;
// More than the filter reaches to either side, in samples of the slower rate.
constexpr std::int64_t kFilterReach = 1024;

__extension__ using Wide = __int128;
using CSoxr = std::unique_ptr<struct soxr, decltype(&soxr_delete)>;

std::int64_t Limited(Wide value) {
    constexpr Wide kLimit = std::numeric_limits<std::int64_t>::max();
    return static_cast<std::int64_t>(std::clamp(value, -kLimit, kLimit));
}

Wide QuotientDown(Wide dividend, std::int64_t lDivisor) {
    return dividend / lDivisor - (dividend % lDivisor < 0 ? 1 : 0);
}

CSoxr MakeConverter(CRegion const& region, int nFileRate, int nSessionRate) {
    if (nFileRate / kMaxRatio > nSessionRate || nSessionRate / kMaxRatio > nFileRate)
        throw CAudioFileError("the audio file \"" + region.m_strFile + "\" has a sample rate of " +
                              std::to_string(nFileRate) +
                              " Hz, which cannot be made into the session's " +
                              std::to_string(nSessionRate) + " Hz");
    soxr_error_t pszError = nullptr;
    soxr_io_spec_t const samples = soxr_io_spec(SOXR_FLOAT32_S, SOXR_FLOAT32_S);
    soxr_quality_spec_t const quality = soxr_quality_spec(SOXR_HQ, 0);
    CSoxr pConverter(
        soxr_create(nFileRate, nSessionRate, static_cast<unsigned>(region.m_Channels.size()),
                    &pszError, &samples, &quality, nullptr),
        &soxr_delete);
    if (pszError) throw CAudioFileError(std::string("cannot resample: ") + pszError);
    return pConverter;
}

template <typename Channels>
auto RowsFrom(Channels& channels, std::size_t nFrom) {
    std::vector<decltype(channels.front().data())> rows;
    rows.reserve(channels.size());
    for (auto& channel : channels) rows.push_back(channel.data() + nFrom);
    return rows;
}

}  // namespace

std::int64_t ToSessionSamples(std::int64_t lFileSample, int nFileRate, int nSessionRate) {
    return Limited(QuotientDown(Wide{lFileSample} * nSessionRate, nFileRate));
}

std::int64_t ToFileSamples(std::int64_t lSessionSample, int nFileRate, int nSessionRate) {
    return Limited(-QuotientDown(-Wide{lSessionSample} * nFileRate, nSessionRate));
}

CAudioRange FileRange(CRegion const& region, int nSessionRate) {
    return {region.m_strFile, ToFileSamples(region.m_lStart, region.m_nFileRate, nSessionRate),
            ToFileSamples(region.m_lEnd, region.m_nFileRate, nSessionRate), region.m_Channels};
}

struct CRegionReader::CState {
    CState(CRegion const& region, int nSessionRate)
        : m_File(region.m_strFile), m_Channels(region.m_Channels), m_nSessionRate(nSessionRate) {}

    void ReadInput() {
        m_Input = m_File.Read(m_lFileAt, kBlockFrames, m_Channels);
        m_lFileAt += kBlockFrames;
        m_nTaken = 0;
    }

    CAudio Convert(std::int64_t lFrames) {
        CAudio audio{m_nSessionRate, {}};
        auto const nFrames = static_cast<std::size_t>(lFrames);
        audio.m_Channels.assign(m_Channels.size(), std::vector<float>(nFrames));
        for (std::size_t nDone = 0; nDone < nFrames;) {
            if (m_nTaken == static_cast<std::size_t>(m_Input.Frames())) ReadInput();
            std::size_t nTaken = 0, nGiven = 0;
            auto const input = RowsFrom(m_Input.m_Channels, m_nTaken);
            auto output = RowsFrom(audio.m_Channels, nDone);
            soxr_error_t const pszError =
                soxr_process(m_pConverter.get(), input.data(), kBlockFrames - m_nTaken, &nTaken,
                             output.data(), nFrames - nDone, &nGiven);
            if (pszError) throw CAudioFileError(std::string("cannot resample: ") + pszError);
            m_nTaken += nTaken;
            nDone += nGiven;
        }
        return audio;
    }

    CAudioFile m_File;
    std::vector<int> m_Channels;
    int m_nSessionRate;
    CSoxr m_pConverter{nullptr, &soxr_delete};  // none for a file of the session's rate
    std::int64_t m_lFileAt = 0;
    CAudio m_Input;
    std::size_t m_nTaken = 0;
};

CRegionReader::CRegionReader(CRegion const& region, int nSessionRate, std::int64_t lFrom)
    : m_pState(std::make_unique<CState>(region, nSessionRate)) {
    CState& state = *m_pState;
    // The session says what the file was when it came; that is what its positions belong to.
    int const nFileRate = region.m_nFileRate;
    state.m_File.Require(FileRange(region, nSessionRate).m_lEnd);
    state.m_lFileAt = lFrom;
    if (nFileRate == nSessionRate) return;

    state.m_pConverter = MakeConverter(region, nFileRate, nSessionRate);
    // It begins where a sample of the file and one of the session fall together, far enough in
    // front for the filter to be filled.
    int const nCommon = std::gcd(nFileRate, nSessionRate);
    std::int64_t const lFilePeriod = nFileRate / nCommon;
    std::int64_t const lSessionPeriod = nSessionRate / nCommon;
    std::int64_t const lReach = kFilterReach * std::max(1, nSessionRate / nFileRate);
    std::int64_t const lPeriod = Limited(QuotientDown(lFrom - lReach, lSessionPeriod));
    state.m_lFileAt = lPeriod * lFilePeriod;
    for (std::int64_t lSkip = lFrom - lPeriod * lSessionPeriod; lSkip > 0; lSkip -= kBlockFrames)
        state.Convert(std::min(kBlockFrames, lSkip));
}

CRegionReader::~CRegionReader() = default;

CAudio CRegionReader::Read(std::int64_t lFrames) {
    CState& state = *m_pState;
    if (state.m_pConverter) return state.Convert(lFrames);
    CAudio audio = state.m_File.Read(state.m_lFileAt, lFrames, state.m_Channels);
    state.m_lFileAt += lFrames;
    return audio;
}

void WriteRegionSound(CRegion const& region, int nSessionRate, std::string const& strTarget,
                      CCheckpoint const& checkpoint) {
    CRegionReader reader(region, nSessionRate, region.m_lStart);
    CAudioWriter writer(strTarget, nSessionRate, static_cast<int>(region.m_Channels.size()),
                        SampleFormat::Float32);
    for (std::int64_t lAt = region.m_lStart; lAt < region.m_lEnd; lAt += kBlockFrames) {
        if (checkpoint) checkpoint();
        writer.Write(reader.Read(std::min(kBlockFrames, region.m_lEnd - lAt)));
    }
    writer.Finish();
}
