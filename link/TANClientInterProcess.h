#pragma once

#include <cstdint>
#include <string>
#include <vector>

class CFileName;
class CMessageSegment;

/// Talks to the running Tavarin Pro host application: finds it through the shared directory
/// segment, sends it scripts through its message segment and reads what they printed.
///
/// One object serves one view on that view's thread; it has no lock of its own. It owns no handle
/// between two calls: every operation opens, maps, uses, unmaps and closes the segments it needs,
/// so the host may come and go at any time. Many clients in any number of processes may talk to
/// one host at once.
///
/// Nothing here throws for a host that is missing, closed, slow or wrong. Results are status
/// numbers or bools, and the public texts say the rest to the user. Running out of memory passes
/// through as the standard exception, with every shared lock given back.
///
/// Commands take `fAudioSuite` first: true makes the host's AudioSuite document current, false its
/// script document. Track numbers are positions in the host's track list, from 0. Time values are
/// in samples; those that come as doubles are truncated toward zero before they are sent, to the
/// nearest 64-bit limit when out of range, NaN to 0. Numbers sent and read never depend on a
/// locale.
///
/// Blocking: the host check waits up to 1 second for the directory lock; an exchange up to three
/// times its time-out, and beyond that only for a word that a dead or halted host holds. Every
/// command but the track list waits without limit for the host.
class CTANClientInterProcess {
public:
    /// True keeps the two message texts over the next exchange, which otherwise clears them.
    bool m_fKeepMessages = false;
    /// The directory's update counter as `NeedsUpdate` last saw it; -1 when unknown.
    std::int32_t m_nUpdateCount = -1;
    /// The last error or information for the user, UTF-8; empty when there is none.
    std::string m_strLastError;
    /// What the user can do about it; empty when there is nothing to say.
    std::string m_strAdvice;
    /// Start, end and sample rate of the last rendered region.
    std::string m_strRegionInfo;
    /// The last exported file.
    std::string m_strFileInfo;

    /// Needs no host.
    CTANClientInterProcess() = default;
    ~CTANClientInterProcess() = default;
    CTANClientInterProcess(CTANClientInterProcess const&) = delete;
    CTANClientInterProcess& operator=(CTANClientInterProcess const&) = delete;

    /// The id of the host whose session is selected: greater than 0, or 0 when a host runs with no
    /// session selected, or -1 when there is no usable host. No host is usable when the directory
    /// is missing or shorter than its record, its lock is not free within 1 second, or its
    /// heartbeat is 1 second old or older. Changes no text.
    int GetCurrentIdFromMainDirectory();

    /// The same id, with the message texts set to match it: cleared for a usable host with a
    /// session, telling the user what is missing otherwise.
    int GetCurrentTANHost();

    /// True when the directory's update counter differs from the last one seen, or the directory
    /// is missing or too short.
    bool NeedsUpdate();

    /// The name of host `id`'s message segment.
    std::string GetNameOfHost(int id);

    /// Sends a script to host `id` and takes what it printed into `reply`.
    ///
    /// \param id       the host, as GetCurrentTANHost answers it
    /// \param request  ends at its first NUL; cut silently at the host's capacity less one byte.
    /// \param reply    set on success only.
    /// \param timeoutMs  for each of the three waits in turn: for other clients, for the exchange,
    ///                 for the reply. -1 waits for ever; any other negative value does not wait.
    /// \return 0 on success (also when the script failed: its error is then `m_strLastError`),
    ///         121 on time-out (the host may still run the script later), -1 when the host takes no
    ///         requests, 22 when its segment's layout is not believable, or the operating system's
    ///         error number when the segment cannot be opened or mapped (2: not there).
    int SendTANMessage(int id, std::string& request, std::string& reply, int timeoutMs);

    /// Splits a reply into its lines, at most 4095 characters each, a longer line into pieces. The
    /// first is a count and not a value; when it disagrees with the number of values, there are
    /// none. A line ends with any carriage returns and one line feed, in any order.
    void SplitResult(std::string& reply, std::vector<std::string>* values);

    /// The host's own update counter, or 0.
    std::int32_t GetUpdateCount();
    /// The host application's process id, or 0.
    std::int64_t GetTANProcessID();
    /// Makes the host print `text` in its console or log. The text stands unescaped between double
    /// quotes in the script.
    void PrintToTavarin(const char* text);

    /// Kept for callers of old: an exchange leaves nothing to receive. Returns 0.
    int ReceiveMessage();
    /// Kept for callers of old: an exchange leaves nothing to tidy.
    void TidyUp();

    /// Appends the host's track names to `tracks`.
    /// \return -1 without a host; 0 otherwise, also when the exchange failed (see the texts).
    int ListTracksWithTimeout(bool fAudioSuite, std::vector<std::string>* tracks, int timeoutMs);

    /// Asks whether the host already has this audio on the track; true sets the texts that tell the
    /// user so, and keeps them over the next exchange. The times are those of `SendFile`.
    bool CheckDuplicateRegion(bool fAudioSuite, int idTrack, CFileName* file, double first,
                              double second, double third);

    /// Adds an audio file as a region on a track and moves the host's display there.
    ///
    /// \param fAudioSuite  which document
    /// \param idTrack  which track
    /// \param file    the audio file, by its full path
    /// \param first   timeline position of the file's first sample
    /// \param second  start of the region, from the file's start
    /// \param third   end of the region, from the file's start
    /// \param channelMask  bit n set: use channel n; 0 or less: no choice of channels
    /// \return -1 without a host, else the status of the exchange.
    int SendFile(bool fAudioSuite, int idTrack, CFileName* file, double first, double second,
                 double third, int channelMask);

    /// Has the host export its selected region (in the AudioSuite document: the region of the
    /// process that was created last). True when `exportedFile` was set.
    bool ExportSelectedRegion(bool fAudioSuite, int unused, CFileName* exportedFile);

    /// Has the host render that region in place. True when `start` and `end` were set. A host
    /// sample rate other than `sessionRate` leaves a warning in `m_strLastError`; -1 compares
    /// nothing.
    bool RenderSelectedRegion(bool fAudioSuite, int sessionRate, std::int64_t* start,
                              std::int64_t* end);

    /// Has the host align a dub with a guide onto a third track. True when the exchange succeeded.
    bool CreateAPT(bool fAudioSuite, int guideTrack, std::int64_t guideStart, std::int64_t guideEnd,
                   int dubTrack, std::int64_t dubStart, std::int64_t dubEnd, int alignedTrack);

    /// Has the host double a voice onto a second track. True when the exchange succeeded.
    bool CreateDoubler(bool fAudioSuite, int inputTrack, std::int64_t start, std::int64_t end,
                       int unused, int outputTrack);

    /// Deletes a track's marker areas and regions.
    void ClearTrack(bool fAudioSuite, int track);

    /// The host's link offset, in the host's own unit; 0.0 when it cannot be read.
    double GetLinkSMPTEOffset(bool fAudioSuite);

private:
    int FindHostForCommand();
    int Exchange(CMessageSegment& segment, std::string const& request, std::string& reply,
                 int timeoutMs);
    std::int64_t AskForNumber(const char* szScript);
    bool SendCommand(std::string& script, std::string& reply);
    void ReportReason(std::string const& code);
};

/// The text with every backslash doubled and nothing else changed, as paths stand in scripts.
std::string EscapeBackstroke(std::string const& text);
