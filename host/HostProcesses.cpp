#include "host/HostProcesses.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <utility>

#include "host/Alignment.h"
#include "host/Doubling.h"
#include "host/TrackSound.h"

namespace {

DocumentKind Document(CHostContext const& context) {
    return context.m_Document.value();
}

/// A file of the audio directory that goes again unless it is kept.
class CResultFile {
public:
    explicit CResultFile(std::string strPath) : m_strPath(std::move(strPath)) {}
    ~CResultFile() {
        if (!m_fKeep) std::remove(m_strPath.c_str());
    }
    CResultFile(CResultFile const&) = delete;
    CResultFile& operator=(CResultFile const&) = delete;

    std::string const& Path() const { return m_strPath; }
    void Keep() { m_fKeep = true; }

private:
    std::string m_strPath;
    bool m_fKeep = false;
};

CTrackSound InputSound(CHostContext& context, CProcessInput const& input) {
    return {context.m_Session.Track(Document(context), input.m_idTrack), input.m_lStart,
            input.m_lEnd, context.m_Session.SampleRate(),
            [&context](std::int64_t lSamples) { context.m_Work.Advance(lSamples); }};
}

/// The sound that a process makes from its inputs, on its way into a file.
class CProcessSound {
public:
    CProcessSound(CHostContext& context, CProcess const& process)
        : m_Context(context), m_First(InputSound(context, process.m_Inputs.at(0))) {
        if (process.m_Kind == ProcessKind::APT)
            m_Dub.emplace(InputSound(context, process.m_Inputs.at(1)));
    }

    std::size_t Channels() const { return m_Dub ? m_Dub->Channels() : m_First.Channels(); }

    /// About as many bytes as the file will have.
    std::int64_t Bytes() const {
        return m_First.Frames() * static_cast<std::int64_t>(Channels() * sizeof(float));
    }

    /// Writes the file; the number of its samples.
    std::int64_t WriteTo(std::string const& strPath) {
        CAudioWriter writer(strPath, m_First.SampleRate(), static_cast<int>(Channels()),
                            SampleFormat::Float32);
        std::int64_t lFrames = 0;
        Make([&](CAudio const& block) {
            writer.Write(block);
            lFrames += block.Frames();
        });
        writer.Finish();
        return lFrames;
    }

private:
    void Make(CSoundSink const& sink) {
        if (!m_Dub) {
            m_Context.m_Work.Expect(m_First.Frames());
            return MakeDouble(m_First, {}, sink, m_Context.m_Checkpoint);
        }
        // The guide is listened to once, and the dub once before it is written.
        m_Context.m_Work.Expect(2 * m_First.Frames() + m_Dub->Frames());
        AlignDub(m_First, *m_Dub, sink, m_Context.m_Checkpoint);
    }

    CHostContext& m_Context;
    CTrackSound m_First;
    std::optional<CTrackSound> m_Dub;
};

CRegion ResultRegion(CSession const& session, std::string const& strFile, std::int64_t lPosition,
                     std::int64_t lFrames, std::size_t nChannels) {
    CRegion region;
    region.m_strFile = strFile;
    region.m_nFileRate = session.SampleRate();
    region.m_lFilePosition = lPosition;
    region.m_lEnd = lFrames;
    for (std::size_t n = 0; n < nChannels; ++n) region.m_Channels.push_back(static_cast<int>(n));
    return region;
}

}  // namespace

CSessionId CarryOutProcess(CHostContext& context, CProcess process) {
    CSession& session = context.m_Session;
    DocumentKind const kind = Document(context);
    session.Track(kind, process.m_idOutputTrack);
    CProcessSound sound(context, process);

    std::string const strStem = std::string(ProcessKindName(process.m_Kind)) + "_" +
                                std::to_string(session.Data().m_idNext);
    CResultFile file(context.m_Directory.NewFile(strStem, sound.Bytes()));
    std::int64_t const lFrames = sound.WriteTo(file.Path());

    CSession changed = session;
    process.m_idRegion =
        changed.AddRegion(kind, process.m_idOutputTrack,
                          ResultRegion(session, file.Path(), process.m_Inputs.front().m_lStart,
                                       lFrames, sound.Channels()));
    for (CProcessInput const& input : process.m_Inputs) {
        CTrack const& track = changed.Track(kind, input.m_idTrack);
        if (!track.m_MarkerTracks.empty())
            changed.AddMarkerArea(kind, track.m_MarkerTracks.front().m_idMarkerTrack,
                                  input.m_lStart, input.m_lEnd);
    }
    CSessionId const idProcess = changed.AddProcess(kind, std::move(process));
    context.m_Results.insert(file.Path());
    session = std::move(changed);
    file.Keep();
    return idProcess;
}
