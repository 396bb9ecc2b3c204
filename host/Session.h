#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

/// Identity of a track, region, process, marker track or marker area; unique within one session.
using CSessionId = std::int64_t;

/// No object at all.
inline constexpr CSessionId kNullId = 0;

/// Largest magnitude of a timeline position in samples; sums of two stay far from overflow.
inline constexpr std::int64_t kMaxPosition = 1'000'000'000'000'000;

/// What a session refuses: an unknown id, a number out of range, a limit reached. The text is made
/// for a person and names the offending value.
class CSessionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The two documents of a session.
enum class DocumentKind { Script, AudioSuite };

/// Both documents, for loops.
inline constexpr std::array<DocumentKind, 2> kDocumentKinds{DocumentKind::Script,
                                                            DocumentKind::AudioSuite};

/// A stretch of one audio file, placed on the timeline.
struct CRegion {
    CSessionId m_idRegion = kNullId;
    std::string m_strFile;             ///< path of the audio file
    int m_nFileRate = 0;               ///< the file's own sample rate in Hz
    std::int64_t m_lFilePosition = 0;  ///< timeline position of the file's first sample
    std::int64_t m_lStart = 0;         ///< first sample used, in the session's samples from there
    std::int64_t m_lEnd = 0;           ///< one past the last sample used, counted likewise
    std::vector<int> m_Channels;       ///< channels of the file that are used, counted from 0

    /// Timeline position of the region's first sample.
    std::int64_t Start() const { return m_lFilePosition + m_lStart; }
    /// Timeline position just behind the region's last sample.
    std::int64_t End() const { return m_lFilePosition + m_lEnd; }
    /// Length in samples.
    std::int64_t Length() const { return m_lEnd - m_lStart; }
};

/// A marked timeline range [m_lStart, m_lEnd) on a marker track.
struct CMarkerArea {
    CSessionId m_idArea = kNullId;
    std::int64_t m_lStart = 0;
    std::int64_t m_lEnd = 0;
};

/// A lane of marker areas that belongs to a track.
struct CMarkerTrack {
    CSessionId m_idMarkerTrack = kNullId;
    std::deque<CMarkerArea> m_Areas;
};

/// A track: its regions in timeline order, those that start together in order of their ids, and its
/// marker tracks (one for a new track).
struct CTrack {
    CSessionId m_idTrack = kNullId;
    std::string m_strName;
    std::deque<CRegion> m_Regions;
    std::vector<CMarkerTrack> m_MarkerTracks;
};

/// What a process does to its inputs.
enum class ProcessKind { APT, Doubler };

/// The name that scripts and session files use: "APT" or "Doubler".
char const* ProcessKindName(ProcessKind kind);

/// One input of a process: a timeline range of a track.
struct CProcessInput {
    int m_nIOType = 1;  ///< 1 the guide or only input, 2 the dub
    CSessionId m_idTrack = kNullId;
    std::int64_t m_lStart = 0;
    std::int64_t m_lEnd = 0;
};

/// A process that has been carried out.
struct CProcess {
    CSessionId m_idProcess = kNullId;
    ProcessKind m_Kind = ProcessKind::APT;
    std::vector<CProcessInput> m_Inputs;
    CSessionId m_idOutputTrack = kNullId;
    CSessionId m_idRegion = kNullId;  ///< the result; null once that region has been deleted
};

/// One document: its tracks and processes in order of creation, and what is selected.
struct CDocument {
    std::vector<CTrack> m_Tracks;
    std::vector<CProcess> m_Processes;
    CSessionId m_idSelectedRegion = kNullId;
    CSessionId m_idSelectedProcess = kNullId;
    CSessionId m_idLastProcess = kNullId;
    double m_dDisplayPosition = 0.0;  ///< in samples

    /// Where a region is.
    struct CRegionPlace {
        std::size_t m_nTrack;
        std::int64_t m_lStart;
    };

    // Places by id, so that nothing is searched for. The session keeps them.
    std::unordered_map<CSessionId, std::size_t> m_TrackPlaces;
    std::unordered_map<CSessionId, CRegionPlace> m_RegionPlaces;
    std::unordered_map<CSessionId, std::size_t> m_AreaTracks;

    /// Whether there is any region or process.
    bool HoldsSomething() const;
    /// The region with this id, or null.
    CRegion const* FindRegion(CSessionId idRegion) const;
    /// The process with this id, or null.
    CProcess const* FindProcess(CSessionId idProcess) const;
    /// The track with this id, or null.
    CTrack const* FindTrack(CSessionId idTrack) const;
};

/// Everything a session consists of; what a session file holds.
struct CSessionData {
    int m_nSampleRate = 48000;         ///< Hz, 1 to 768000
    double m_dLinkSMPTEOffset = 0.0;   ///< seconds
    bool m_fSelected = true;           ///< false: the host runs without a selected session
    std::uint32_t m_nUpdateCount = 1;  ///< rises with every change; wraps
    CSessionId m_idNext = 1;           ///< the id that the next new object gets
    std::array<CDocument, 2> m_Documents;
};

/// Throws `CSessionError` unless the position is on the timeline.
void CheckTimelinePosition(std::int64_t lPosition);

/// Throws `CSessionError` unless both positions are on the timeline and the end lies behind the
/// start.
void CheckTimelineRange(std::int64_t lStart, std::int64_t lEnd);

/// The host's session: two documents with tracks, regions, marker areas and processes.
///
/// Plain data with operations; it opens no file. Every operation that changes something raises the
/// update counter by one; one that throws `CSessionError` has changed nothing. Used by one thread.
class CSession {
public:
    static constexpr std::size_t kMaxTracks = 1000;
    static constexpr std::size_t kMaxRegions = 20000;      ///< per document
    static constexpr std::size_t kMaxProcesses = 5000;     ///< per document
    static constexpr std::size_t kMaxMarkerAreas = 20000;  ///< per document

    /// An empty session at 48000 Hz.
    CSession() = default;

    /// A session whose two documents each have tracks of these names.
    CSession(std::vector<std::string> const& trackNames, int nSampleRate);

    /// Takes over data, for example from a file. Throws `CSessionError` when it contradicts itself
    /// (an id used twice, a selection that does not exist, a number out of range).
    explicit CSession(CSessionData data);

    CSessionData const& Data() const { return m_Data; }
    CDocument const& Document(DocumentKind kind) const;
    int SampleRate() const { return m_Data.m_nSampleRate; }
    double LinkSMPTEOffset() const { return m_Data.m_dLinkSMPTEOffset; }
    std::uint32_t UpdateCount() const { return m_Data.m_nUpdateCount; }
    /// Lets the update counter go on from another number.
    void CountFrom(std::uint32_t nUpdateCount) { m_Data.m_nUpdateCount = nUpdateCount; }

    /// Whether a session is selected: documents can be selected only then.
    bool Selected() const { return m_Data.m_fSelected; }
    void SetSelected(bool fSelected);

    void SetSampleRate(int nSampleRate);
    void SetLinkSMPTEOffset(double dOffset);

    /// Appends a track with one marker track. Names hold 1 to 255 bytes of UTF-8
    /// and no control character.
    CSessionId AddTrack(DocumentKind kind, std::string const& strName);

    /// The track, region, process, marker track or area with this id; throws for an unknown one.
    CTrack const& Track(DocumentKind kind, CSessionId idTrack) const;
    CRegion const& Region(DocumentKind kind, CSessionId idRegion) const;
    CProcess const& Process(DocumentKind kind, CSessionId idProcess) const;
    CMarkerTrack const& MarkerTrack(DocumentKind kind, CSessionId idMarkerTrack) const;

    /// The track at a position counted from 0; throws naming the position and the track count.
    CTrack const& TrackAt(DocumentKind kind, std::int64_t nTrack) const;

    /// Puts a region on a track (its id is given here), selects it and returns its id.
    CSessionId AddRegion(DocumentKind kind, CSessionId idTrack, CRegion region);

    /// Removes a region; a selection of it, or a process's result, becomes null.
    void DeleteRegion(DocumentKind kind, CSessionId idRegion);

    /// Selects a region, or none for the null id.
    void SelectRegion(DocumentKind kind, CSessionId idRegion);

    /// Registers a process (its id is given here) that becomes the last one created and the
    /// selected one, and selects its result. Returns its id.
    CSessionId AddProcess(DocumentKind kind, CProcess process);

    /// Selects a process together with its result region; the null id selects neither.
    void SelectProcess(DocumentKind kind, CSessionId idProcess);

    /// Marks the range [lStart, lEnd) on a marker track; returns the area's id.
    CSessionId AddMarkerArea(DocumentKind kind, CSessionId idMarkerTrack, std::int64_t lStart,
                             std::int64_t lEnd);
    void DeleteMarkerArea(DocumentKind kind, CSessionId idArea);

    /// Moves the display; the position is finite and within the limits of the timeline.
    void MoveDisplayToPosition(DocumentKind kind, double dPosition);

private:
    CDocument& MutableDocument(DocumentKind kind);
    CTrack& MutableTrack(DocumentKind kind, CSessionId idTrack);
    static void Arrange(CDocument& document);
    CSessionId NewId() { return m_Data.m_idNext++; }
    void Changed() { ++m_Data.m_nUpdateCount; }

    CSessionData m_Data;
};
