#pragma once

#include <cstddef>
#include <cstdint>

/// \file
/// What a plug-in tells its view, and where the view writes its answers: notification ids and
/// their records. Plain C++, because the plug-in's own module includes it too.
///
/// The records cross a module boundary: little-endian, natural alignment of 64-bit x86. "in" is
/// written by the plug-in, "out" by the view before the notification returns. Positions and lengths
/// are in samples. A record of any other size stops the process.

/// The longest path a record can carry, its terminating zero included.
inline constexpr std::size_t kRecordPathSize = 2048;

/// An id from its four characters, the first in the most significant byte.
constexpr std::int32_t NotificationId(const char (&characters)[5]) {
    std::int32_t nId = 0;
    for (int nIndex = 0; nIndex < 4; ++nIndex) nId = nId * 256 + characters[nIndex];
    return nId;
}

/// A capture has been analysed and written to a file; the record is a paramPostAnalyze.
inline constexpr std::int32_t notifyPostAnalyze = NotificationId("TAAS");
/// The plug-in wants the host's selected region as a file; the record is a
/// paramExportSelectedRegion.
inline constexpr std::int32_t notifyExportSelectedRegion = NotificationId("TAEP");
/// The host is to print a text; the record is that text, zero-terminated and of any length.
inline constexpr std::int32_t notifyPrint = NotificationId("TAPT");
/// The plug-in wants the host to render its selected region; the record is a
/// paramRenderSelectedRegion.
inline constexpr std::int32_t notifyRenderSelectedRegion = NotificationId("TASR");
/// The plug-in asks for the host's update count; the record is a paramUpdateCount.
inline constexpr std::int32_t notifyUpdateCount = NotificationId("TAUP");

/// The record of notifyPostAnalyze.
struct paramPostAnalyze {
    char szFilePath[kRecordPathSize];  ///< in: full path of the captured file, zero-terminated
    double dFilePosition;              ///< in: timeline position of the file's first sample
    unsigned char unread1[8];          ///< the plug-in's own
    double dRegionStart;               ///< in: start of the region, from the file's start
    double dRegionEnd;                 ///< in: end of the region, from the file's start
    unsigned char unread2[8];          ///< the plug-in's own
};

/// The record of notifyExportSelectedRegion.
struct paramExportSelectedRegion {
    std::int32_t nSampleRate;          ///< in: the workstation's sample rate in Hz
    std::int32_t padding;              ///< not used
    char szFilePath[kRecordPathSize];  ///< out: full path of the exported file; only on success
    bool fResult;                      ///< out: whether a file was exported
    unsigned char padding2[7];         ///< not used
};

/// The record of notifyRenderSelectedRegion.
struct paramRenderSelectedRegion {
    std::int32_t nSampleRate;  ///< in: the workstation's sample rate in Hz; -1: do not compare it
    std::int64_t lStart;       ///< out: start of the rendered region; only on success
    std::int64_t lEnd;         ///< out: end of the rendered region; only on success
    bool fResult;              ///< out: whether a region was rendered
};

/// The record of notifyUpdateCount.
struct paramUpdateCount {
    std::int64_t lUpdateCount;  ///< out: the host's update count
};

static_assert(notifyPostAnalyze == 0x54414153 && notifyExportSelectedRegion == 0x54414550 &&
              notifyPrint == 0x54415054 && notifyRenderSelectedRegion == 0x54415352 &&
              notifyUpdateCount == 0x54415550);

static_assert(sizeof(paramPostAnalyze) == 2088);
static_assert(offsetof(paramPostAnalyze, szFilePath) == 0);
static_assert(offsetof(paramPostAnalyze, dFilePosition) == 2048);
static_assert(offsetof(paramPostAnalyze, unread1) == 2056);
static_assert(offsetof(paramPostAnalyze, dRegionStart) == 2064);
static_assert(offsetof(paramPostAnalyze, dRegionEnd) == 2072);
static_assert(offsetof(paramPostAnalyze, unread2) == 2080);

static_assert(sizeof(paramExportSelectedRegion) == 2064);
static_assert(offsetof(paramExportSelectedRegion, nSampleRate) == 0);
static_assert(offsetof(paramExportSelectedRegion, szFilePath) == 8);
static_assert(offsetof(paramExportSelectedRegion, fResult) == 2056);

static_assert(sizeof(paramRenderSelectedRegion) == 32);
static_assert(offsetof(paramRenderSelectedRegion, nSampleRate) == 0);
static_assert(offsetof(paramRenderSelectedRegion, lStart) == 8);
static_assert(offsetof(paramRenderSelectedRegion, lEnd) == 16);
static_assert(offsetof(paramRenderSelectedRegion, fResult) == 24);

static_assert(sizeof(paramUpdateCount) == 8);
static_assert(offsetof(paramUpdateCount, lUpdateCount) == 0);
static_assert(sizeof(bool) == 1);
