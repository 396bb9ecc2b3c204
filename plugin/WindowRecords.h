#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

/// \file
/// What a plug-in and the program that shows its window say to each other: records of fixed sizes,
/// in the byte order and layout of the machine, over a pair of sockets that keeps their bounds.
/// Both programs come from one build; `kWindowVersion` tells when they do not.
///
/// 1. The plug-in starts the program and sends an `COpenRecord`.
/// 2. Some ten times a second the window sends a `CTurnRecord`, but never a second one before the
///    `CStateRecord` that answers it. So it always has what it shows, neither ever has more than a
///    few records on the way, and a window that is silent for three seconds hangs.
/// 3. In between the window sends what became of the take that it got, and what its user did.
/// 4. The plug-in sends an `CRaiseRecord` when the workstation shows the window again. It closes
/// the
///    socket when the window is to go, and ends the program if that does not suffice.

/// Grows with every change of a record.
inline constexpr std::uint32_t kWindowVersion = 1;

/// The size of the window's contents where a pixel is a pixel: every kind has the same.
inline constexpr int kWindowWidth = 420;
inline constexpr int kWindowHeight = 308;

enum class WindowRecord : std::uint32_t {
    Open,
    Raise,
    State,
    Turn,
    TakeDone,
    Returned,
    Report,
    Control,
    Closed,
};

/// How every record begins.
struct CRecordHead {
    std::uint32_t nVersion = kWindowVersion;
    WindowRecord record;
};

/// UTF-8 that ends with a 0, cut between two characters when it does not fit.
template <std::size_t nSize>
struct CRecordText {
    char szText[nSize];

    void Set(std::string_view strText) {
        std::size_t nLength = strText.size() < nSize ? strText.size() : nSize - 1;
        const auto fWithin = [strText](std::size_t nAt) {
            return nAt < strText.size() &&
                   (static_cast<unsigned char>(strText[nAt]) & 0xC0) == 0x80;
        };
        if (nLength < strText.size()) {
            while (nLength > 0 && fWithin(nLength)) --nLength;
        }
        strText.copy(szText, nLength);
        szText[nLength] = 0;
    }
    /// Also of a record that has no 0 in it.
    std::string Get() const {
        const std::string_view strAll(szText, nSize);
        return std::string(strAll.substr(0, strAll.find('\0')));
    }
};

using CRecordPath = CRecordText<4096>;
using CRecordSentence = CRecordText<1024>;

/// Where a take lies on the timeline, in samples.
struct CExtentRecord {
    std::int64_t lPosition;
    std::int64_t lFrames;  ///< 0: there is none
};

/// Plug-in to window, once: what the window is to be.
struct COpenRecord {
    CRecordHead head{kWindowVersion, WindowRecord::Open};
    std::int32_t nKind;  ///< a PlugInKind
    std::int32_t nSampleRate;
    std::uint32_t nPlace;       ///< how many windows this process opened before
    float scale;                ///< pixels of the screen for one of the window; 0: the screen's own
    std::uint64_t nParent;      ///< the window of the workstation to be shown in; 0: one of its own
    std::int64_t nWorkstation;  ///< the process that started this one
    CExtentRecord known[2];     ///< what the host has on its first two tracks
    CRecordText<256> title;
};

/// Plug-in to window: come to the front.
struct CRaiseRecord {
    CRecordHead head{kWindowVersion, WindowRecord::Raise};
};

/// Plug-in to window, for each turn: all that changes.
struct CStateRecord {
    CRecordHead head{kWindowVersion, WindowRecord::State};
    std::uint64_t nReport;  ///< grows with every report
    std::int32_t nResult;   ///< a PlugInResult
    std::int32_t nTrack;
    std::int32_t nReturn;  ///< a ReturnMode that is wanted, once; -1: none
    std::uint32_t fCapture;
    std::uint32_t fReturn;
    std::uint32_t fExportOnly;
    std::uint32_t fCapturing;
    std::uint32_t fTakeWaits;
    std::int64_t lTakeFrames;  ///< of the take under way
    CExtentRecord last;        ///< the last take of all
    CExtentRecord guide;       ///< that the APT plug-ins of the workstation share
    std::int64_t lGuideAge;    ///< in seconds; -1: not known
    std::uint64_t nTake;       ///< numbers the takes that the window is given; 0: it has none
    CExtentRecord take;
    std::int32_t nTakeEnd;  ///< a TakeEnd
    std::uint32_t fTakeReplaces;
    std::uint32_t fTakeMayBeThere;
    std::uint32_t fHasReturned;
    CRecordPath file;  ///< of the take
    CRecordSentence text;
};

/// Window to plug-in: it lives, and what it could take on now.
struct CTurnRecord {
    CRecordHead head{kWindowVersion, WindowRecord::Turn};
    std::uint32_t fWantsTake;
    std::uint32_t fWantsReturn;
};

/// Window to plug-in: what became of the take that it has.
struct CTakeDoneRecord {
    CRecordHead head{kWindowVersion, WindowRecord::TakeDone};
    std::uint64_t nTake;
    std::int32_t nTrack;     ///< the host has it on this one; -1: it refused it
    std::uint32_t fPutBack;  ///< nobody has it
};

/// Window to plug-in: a file that the host exported.
struct CReturnedRecord {
    CRecordHead head{kWindowVersion, WindowRecord::Returned};
    std::int64_t lPosition;
    CRecordPath file;
};

/// Window to plug-in: a result in words.
struct CReportRecord {
    CRecordHead head{kWindowVersion, WindowRecord::Report};
    std::int32_t nResult;  ///< a PlugInResult
    CRecordSentence text;
};

/// Window to plug-in: the user set a control port.
struct CControlRecord {
    CRecordHead head{kWindowVersion, WindowRecord::Control};
    std::uint32_t nPort;
    float value;
};

/// Window to plug-in: the user closed it.
struct CClosedRecord {
    CRecordHead head{kWindowVersion, WindowRecord::Closed};
};

/// Room for any record.
union CAnyRecord {
    CAnyRecord() : head{0, WindowRecord::Closed} {}
    CRecordHead head;
    COpenRecord open;
    CStateRecord state;
    CTurnRecord turn;
    CTakeDoneRecord takeDone;
    CReturnedRecord returned;
    CReportRecord report;
    CControlRecord control;
};

static_assert(sizeof(CRecordHead) == 8);
static_assert(sizeof(COpenRecord) == 8 + 16 + 16 + 2 * 16 + 256);
static_assert(sizeof(CStateRecord) ==
              8 + 8 + 8 * 4 + 8 + 2 * 16 + 8 + 8 + 16 + 8 + 8 + 4096 + 1024);
static_assert(sizeof(CTurnRecord) == 16);
static_assert(sizeof(CTakeDoneRecord) == 24);
static_assert(sizeof(CReturnedRecord) == 16 + 4096);
static_assert(sizeof(CReportRecord) == 12 + 1024);
static_assert(sizeof(CControlRecord) == 16);
static_assert(std::is_trivially_copyable_v<COpenRecord> &&
              std::is_trivially_copyable_v<CStateRecord>);
