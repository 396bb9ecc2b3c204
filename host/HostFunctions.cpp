#include "host/HostFunctions.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <numeric>
#include <system_error>
#include <utility>

#include "host/HostProcesses.h"
#include "host/Resampling.h"

namespace {

char const* KindName(CHostValue const& value) {
    static constexpr char const* kNames[] = {"nothing",  "a truth value", "a number",
                                             "a number", "a text",        "a table"};
    return kNames[value.index()];
}

/// The whole number in a value, if there is one.
std::optional<std::int64_t> WholeNumber(CHostValue const& value) {
    if (auto const* pInteger = std::get_if<std::int64_t>(&value)) return *pInteger;
    auto const* pNumber = std::get_if<double>(&value);
    if (!pNumber || std::floor(*pNumber) != *pNumber || std::abs(*pNumber) > 9.0e15) return {};
    return static_cast<std::int64_t>(*pNumber);
}

}  // namespace

void CHostArguments::Fail(std::size_t n, std::string const& strExpected) const {
    std::string const strGot = KindName(At(n));
    throw CHostFunctionError("bad argument #" + std::to_string(n + 1) + " to '" + m_pszFunction +
                             "' (" + strExpected + " expected, got " + strGot + ")");
}

CHostValue const& CHostArguments::At(std::size_t n) const {
    static CHostValue const kNothing;
    return n < m_Values.size() ? m_Values[n] : kNothing;
}

std::int64_t CHostArguments::Integer(std::size_t n) const {
    if (auto const integer = WholeNumber(At(n))) return *integer;
    Fail(n, "a whole number");
}

double CHostArguments::Number(std::size_t n) const {
    if (auto const* pInteger = std::get_if<std::int64_t>(&At(n)))
        return static_cast<double>(*pInteger);
    if (auto const* pNumber = std::get_if<double>(&At(n))) return *pNumber;
    Fail(n, "a number");
}

std::string const& CHostArguments::Text(std::size_t n) const {
    if (auto const* pText = std::get_if<std::string>(&At(n))) return *pText;
    Fail(n, "a text");
}

CHostTable const& CHostArguments::Table(std::size_t n) const {
    if (auto const* pTable = std::get_if<CHostTable>(&At(n))) return *pTable;
    Fail(n, "a table");
}

std::int64_t CHostArguments::Field(CHostTable const& table, char const* pszField) const {
    auto const field = table.m_Fields.find(pszField);
    auto const number = field == table.m_Fields.end() ? std::nullopt : WholeNumber(field->second);
    if (number) return *number;
    throw CHostFunctionError(std::string("a table given to '") + m_pszFunction +
                             "' needs a field " + pszField + " with a whole number");
}

CHostTable const& CHostArguments::Element(CHostTable const& table, std::size_t n) const {
    if (n < table.m_List.size())
        if (auto const* pTable = std::get_if<CHostTable>(&table.m_List[n])) return *pTable;
    throw CHostFunctionError(std::string("a list given to '") + m_pszFunction +
                             "' holds something that is not a table");
}

namespace {

DocumentKind Current(CHostContext const& context) {
    if (context.m_Document) return *context.m_Document;
    throw CHostFunctionError(
        "no document is selected: call SelectScriptDocument() or SelectAudioSuiteDocument() first");
}

CDocument const& Document(CHostContext const& context) {
    return context.m_Session.Document(Current(context));
}

CTrack const& TrackArgument(CHostContext const& context, CHostArguments const& arguments,
                            std::size_t n) {
    return context.m_Session.Track(Current(context), arguments.Integer(n));
}

CRegion const& RegionArgument(CHostContext const& context, CHostArguments const& arguments) {
    return context.m_Session.Region(Current(context), arguments.Integer(0));
}

CMarkerTrack const& MarkerTrackArgument(CHostContext const& context,
                                        CHostArguments const& arguments) {
    return context.m_Session.MarkerTrack(Current(context), arguments.Integer(0));
}

template <typename List>
auto const& ElementAt(List const& elements, std::int64_t n, char const* pszWhat) {
    if (n >= 0 && static_cast<std::uint64_t>(n) < elements.size())
        return elements[static_cast<std::size_t>(n)];
    throw CHostFunctionError("there is no " + std::string(pszWhat) + " number " +
                             std::to_string(n) + ": there are " + std::to_string(elements.size()) +
                             ", counted from 0");
}

CHostValue Count(std::size_t nCount) {
    return static_cast<std::int64_t>(nCount);
}

/// Whole values go to scripts as integers, so that they print without a fraction.
CHostValue NumberValue(double dNumber) {
    if (auto const integer = WholeNumber(dNumber)) return *integer;
    return dNumber;
}

CHostValue Select(CHostContext& context, DocumentKind kind) {
    if (!context.m_Session.Selected()) return false;
    context.m_Document = kind;
    return true;
}

CHostValue SelectAudioSuiteDocument(CHostContext& context, CHostArguments const&) {
    return Select(context, DocumentKind::AudioSuite);
}

CHostValue SelectScriptDocument(CHostContext& context, CHostArguments const&) {
    return Select(context, DocumentKind::Script);
}

CHostValue GetTrackCount(CHostContext& context, CHostArguments const&) {
    return Count(Document(context).m_Tracks.size());
}

CHostValue GetTrackID(CHostContext& context, CHostArguments const& arguments) {
    return context.m_Session.TrackAt(Current(context), arguments.Integer(0)).m_idTrack;
}

CHostValue GetTrackName(CHostContext& context, CHostArguments const& arguments) {
    return TrackArgument(context, arguments, 0).m_strName;
}

/// A region as the arguments (file, position, start, end) starting at `n` describe it, all channels
/// used. Start and end are samples of the file, which is opened; an end beyond the file is taken
/// back to the file's end.
CRegion DescribedRegion(CHostContext const& context, CHostArguments const& arguments,
                        std::size_t nFile, std::size_t nNumbers, CAudioFileInfo& info) {
    CRegion region;
    std::string const& strFile = arguments.Text(nFile);
    info = ProbeAudioFile(strFile);
    region.m_strFile = std::filesystem::absolute(strFile).string();
    region.m_nFileRate = info.m_nSampleRate;
    region.m_lFilePosition = arguments.Integer(nNumbers);
    std::int64_t const lStart = arguments.Integer(nNumbers + 1);
    std::int64_t const lEnd = arguments.Integer(nNumbers + 2);
    CheckTimelinePosition(region.m_lFilePosition);
    CheckTimelineRange(lStart, lEnd);
    if (lStart < 0)
        throw CHostFunctionError("the region starts at " + std::to_string(lStart) +
                                 ", before its file");
    if (lStart >= info.m_lFrames)
        throw CHostFunctionError("the region starts at " + std::to_string(lStart) + ", but \"" +
                                 strFile + "\" has " + std::to_string(info.m_lFrames) + " samples");
    int const nSessionRate = context.m_Session.SampleRate();
    region.m_lStart = ToSessionSamples(lStart, info.m_nSampleRate, nSessionRate);
    region.m_lEnd =
        ToSessionSamples(std::min(lEnd, info.m_lFrames), info.m_nSampleRate, nSessionRate);
    for (int n = 0; n < info.m_nChannels; ++n) region.m_Channels.push_back(n);
    return region;
}

std::vector<int> ListedChannels(CHostTable const& list, CAudioFileInfo const& info) {
    std::vector<int> channels;
    for (CHostValue const& value : list.m_List) {
        auto const number = WholeNumber(value);
        if (!number || *number < 0 || *number >= info.m_nChannels)
            throw CHostFunctionError(
                "the channel list names a channel that the file does not have: "
                "it has " +
                std::to_string(info.m_nChannels) + ", counted from 0");
        auto const nChannel = static_cast<int>(*number);
        if (std::find(channels.begin(), channels.end(), nChannel) != channels.end())
            throw CHostFunctionError("the channel list names channel " + std::to_string(nChannel) +
                                     " twice");
        channels.push_back(nChannel);
    }
    if (channels.empty()) throw CHostFunctionError("the channel list is empty");
    return channels;
}

/// The stretch of a region's file with all its channels, also those that the region does not use.
CAudioRange AllAudioOf(CRegion const& region, int nSessionRate) {
    CAudioRange range = FileRange(region, nSessionRate);
    range.m_Channels.resize(static_cast<std::size_t>(ProbeAudioFile(region.m_strFile).m_nChannels));
    std::iota(range.m_Channels.begin(), range.m_Channels.end(), 0);
    return range;
}

/// A region holds the sound of a capture, or comes from a capture with the same sound of which it
/// uses some channels: who asks does not say yet which ones are wanted. An older one whose file has
/// gone does not count.
bool SameSound(CHostContext const& context, CRegion const& candidate, CRegion const& present) {
    try {
        int const nRate = context.m_Session.SampleRate();
        CAudioRange const capture = FileRange(candidate, nRate);
        return SameAudio(capture, FileRange(present, nRate), context.m_Checkpoint) ||
               SameAudio(capture, AllAudioOf(present, nRate), context.m_Checkpoint);
    } catch (CAudioFileError const&) {
        return false;
    }
}

CHostValue CheckForDuplicateRegion(CHostContext& context, CHostArguments const& arguments) {
    CTrack const& track = TrackArgument(context, arguments, 0);
    CAudioFileInfo info;
    CRegion const candidate = DescribedRegion(context, arguments, 1, 2, info);
    auto const fEarlier = [](CRegion const& region, std::int64_t lStart) {
        return region.Start() < lStart;
    };
    auto region = std::lower_bound(track.m_Regions.begin(), track.m_Regions.end(),
                                   candidate.Start(), fEarlier);
    for (; region != track.m_Regions.end() && region->Start() == candidate.Start(); ++region)
        if (region->End() == candidate.End() && SameSound(context, candidate, *region))
            return std::int64_t{1};
    return std::int64_t{0};
}

/// "Dub (script document)".
std::string TrackText(CHostContext const& context, CRegion const& region) {
    CDocument const& document = Document(context);
    std::size_t const nTrack = document.m_RegionPlaces.at(region.m_idRegion).m_nTrack;
    return document.m_Tracks[nTrack].m_strName + (Current(context) == DocumentKind::AudioSuite
                                                      ? " (AudioSuite document)"
                                                      : " (script document)");
}

/// The same with where the region lies.
std::string PlaceText(CHostContext const& context, CSessionId idRegion) {
    CRegion const& region = context.m_Session.Region(Current(context), idRegion);
    return TrackText(context, region) + ", " + std::to_string(region.Start()) + " to " +
           std::to_string(region.End());
}

CHostValue AddAudioRegion(CHostContext& context, CHostArguments const& arguments) {
    CSessionId const idTrack = TrackArgument(context, arguments, 0).m_idTrack;
    CAudioFileInfo info;
    CRegion region = DescribedRegion(context, arguments, 1, 4, info);
    if (arguments.Count() > 8) region.m_Channels = ListedChannels(arguments.Table(8), info);
    std::string const strName = std::filesystem::path(region.m_strFile).filename().string();
    CSessionId const idRegion =
        context.m_Session.AddRegion(Current(context), idTrack, std::move(region));
    context.m_Journal.Note("captured " + strName + " onto " + PlaceText(context, idRegion));
    return idRegion;
}

CHostValue MoveDisplayToPosition(CHostContext& context, CHostArguments const& arguments) {
    context.m_Session.MoveDisplayToPosition(Current(context), arguments.Number(0));
    return {};
}

CHostValue FindLastProcessCreated(CHostContext& context, CHostArguments const&) {
    return Document(context).m_idLastProcess;
}

CHostValue IsNullID(CHostContext&, CHostArguments const& arguments) {
    return std::int64_t{arguments.Integer(0) == kNullId ? 1 : 0};
}

CHostValue SelectProcess(CHostContext& context, CHostArguments const& arguments) {
    context.m_Session.SelectProcess(Current(context), arguments.Integer(0));
    return {};
}

CHostValue GetSelectedRegionID(CHostContext& context, CHostArguments const&) {
    return Document(context).m_idSelectedRegion;
}

/// Writes a region's sound into the audio directory and returns the file; a file that the region
/// already has there is replaced.
std::string WriteRegion(CHostContext& context, CRegion const& region, char const* pszStem,
                        std::map<CSessionId, std::string>& files) {
    std::int64_t const lBytes =
        region.Length() * static_cast<std::int64_t>(region.m_Channels.size()) * 4;
    std::string const strNew =
        context.m_Directory.NewFile(pszStem + ("_" + std::to_string(region.m_idRegion)), lBytes);
    auto const known = files.find(region.m_idRegion);
    std::string strFile = known == files.end() ? strNew : known->second;
    WriteRegionSound(region, context.m_Session.SampleRate(), strFile, context.m_Checkpoint);
    files[region.m_idRegion] = strFile;
    return strFile;
}

CHostValue ExportRegion(CHostContext& context, CHostArguments const& arguments) {
    CRegion const& region = RegionArgument(context, arguments);
    std::string strFile = WriteRegion(context, region, "Export", context.m_Exports);
    context.m_Journal.Note("exported " + PlaceText(context, region.m_idRegion) + " into " +
                           strFile);
    return strFile;
}

CHostValue RegionRender(CHostContext& context, CHostArguments const& arguments) {
    CRegion const& region = RegionArgument(context, arguments);
    std::string strFile = WriteRegion(context, region, "Render", context.m_Renders);
    context.m_Journal.Note("rendered " + PlaceText(context, region.m_idRegion));
    return strFile;
}

CHostValue GetSampleRate(CHostContext& context, CHostArguments const&) {
    return std::int64_t{context.m_Session.SampleRate()};
}

CHostValue GetRegionStartPosition(CHostContext& context, CHostArguments const& arguments) {
    return RegionArgument(context, arguments).Start();
}

CHostValue GetRegionEndPosition(CHostContext& context, CHostArguments const& arguments) {
    return RegionArgument(context, arguments).End();
}

/// What a process kind expects: the IOType of each input, in order.
struct CProcessShape {
    ProcessKind kind;
    std::vector<int> IOTypes;
};

CProcessShape const& ShapeOf(std::string const& strKind) {
    static std::vector<CProcessShape> const kShapes{{ProcessKind::APT, {1, 2}},
                                                    {ProcessKind::Doubler, {1}}};
    for (CProcessShape const& shape : kShapes)
        if (strKind == ProcessKindName(shape.kind)) return shape;
    throw CHostFunctionError("there is no process \"" + strKind +
                             "\": the host knows \"APT\" and \"Doubler\"");
}

CHostValue CreateProcess(CHostContext& context, CHostArguments const& arguments) {
    CProcessShape const& shape = ShapeOf(arguments.Text(0));
    if (arguments.Text(1) != "PT")
        throw CHostFunctionError("a process of the type \"" + arguments.Text(1) +
                                 "\" is not known: the host knows \"PT\"");
    CHostTable const& inputs = arguments.Table(2);
    CHostTable const& outputs = arguments.Table(3);
    if (inputs.m_List.size() != shape.IOTypes.size() || outputs.m_List.size() != 1)
        throw CHostFunctionError(std::string(ProcessKindName(shape.kind)) + " takes " +
                                 std::to_string(shape.IOTypes.size()) + " input(s) and 1 output");
    CProcess process;
    process.m_Kind = shape.kind;
    for (std::size_t n = 0; n < shape.IOTypes.size(); ++n) {
        CHostTable const& input = arguments.Element(inputs, n);
        std::int64_t const nIOType = arguments.Field(input, "IOType");
        if (nIOType != shape.IOTypes[n])
            throw CHostFunctionError("input " + std::to_string(n + 1) + " needs IOType " +
                                     std::to_string(shape.IOTypes[n]) + ", not " +
                                     std::to_string(nIOType));
        process.m_Inputs.push_back({shape.IOTypes[n], arguments.Field(input, "Track"),
                                    arguments.Field(input, "Start"),
                                    arguments.Field(input, "End")});
        CheckTimelineRange(process.m_Inputs.back().m_lStart, process.m_Inputs.back().m_lEnd);
    }
    process.m_idOutputTrack = arguments.Field(arguments.Element(outputs, 0), "Track");
    Current(context);
    CSessionId const idProcess = CarryOutProcess(context, std::move(process));
    CProcess const& done = context.m_Session.Process(Current(context), idProcess);
    context.m_Journal.Note(std::string(ProcessKindName(shape.kind)) + " process done, result on " +
                           PlaceText(context, done.m_idRegion));
    return idProcess;
}

CHostValue GetMarkerTrackID(CHostContext& context, CHostArguments const& arguments) {
    CTrack const& track = TrackArgument(context, arguments, 0);
    return ElementAt(track.m_MarkerTracks, arguments.Integer(1), "marker track").m_idMarkerTrack;
}

CHostValue CountMarkerAreas(CHostContext& context, CHostArguments const& arguments) {
    return Count(MarkerTrackArgument(context, arguments).m_Areas.size());
}

CHostValue GetMarkerAreaID(CHostContext& context, CHostArguments const& arguments) {
    CMarkerTrack const& markers = MarkerTrackArgument(context, arguments);
    return ElementAt(markers.m_Areas, arguments.Integer(1), "marker area").m_idArea;
}

CHostValue DeleteMarkerArea(CHostContext& context, CHostArguments const& arguments) {
    context.m_Session.DeleteMarkerArea(Current(context), arguments.Integer(0));
    return {};
}

CHostValue GetRegionCount(CHostContext& context, CHostArguments const& arguments) {
    return Count(TrackArgument(context, arguments, 0).m_Regions.size());
}

CHostValue GetRegionID(CHostContext& context, CHostArguments const& arguments) {
    CTrack const& track = TrackArgument(context, arguments, 0);
    return ElementAt(track.m_Regions, arguments.Integer(1), "region").m_idRegion;
}

bool FileInUse(CSession const& session, std::string const& strFile) {
    for (DocumentKind kind : kDocumentKinds)
        for (CTrack const& track : session.Document(kind).m_Tracks)
            for (CRegion const& region : track.m_Regions)
                if (region.m_strFile == strFile) return true;
    return false;
}

/// What the host made for a region goes with it. An export stays: a client may be reading it.
CHostValue DeleteRegion(CHostContext& context, CHostArguments const& arguments) {
    CSessionId const idRegion = arguments.Integer(0);
    std::string strFile = RegionArgument(context, arguments).m_strFile;
    std::string const strTrack = TrackText(context, RegionArgument(context, arguments));
    context.m_Session.DeleteRegion(Current(context), idRegion);
    context.m_Journal.NoteOnce("removed regions from " + strTrack);
    if (auto const render = context.m_Renders.extract(idRegion))
        std::remove(render.mapped().c_str());
    context.m_Exports.erase(idRegion);
    if (context.m_Results.contains(strFile) && !FileInUse(context.m_Session, strFile)) {
        std::remove(strFile.c_str());
        context.m_Results.erase(strFile);
    }
    return {};
}

CHostValue GetLinkSMPTEOffset(CHostContext& context, CHostArguments const&) {
    Current(context);
    return NumberValue(context.m_Session.LinkSMPTEOffset());
}

CHostValue GetUpdateCount(CHostContext& context, CHostArguments const&) {
    return std::int64_t{context.m_Session.UpdateCount()};
}

CHostValue GetProcessID(CHostContext&, CHostArguments const&) {
    return static_cast<std::int64_t>(getpid());
}

CHostValue GetEventCount(CHostContext& context, CHostArguments const&) {
    return Count(context.m_Journal.Count());
}

CHostValue GetEvent(CHostContext& context, CHostArguments const& arguments) {
    return context.m_Journal.At(static_cast<std::size_t>(arguments.Integer(0)));
}

constexpr CHostFunction kFunctions[] = {
    {"SelectAudioSuiteDocument", SelectAudioSuiteDocument},
    {"SelectScriptDocument", SelectScriptDocument},
    {"GetTrackCount", GetTrackCount},
    {"GetTrackID", GetTrackID},
    {"GetTrackName", GetTrackName},
    {"CheckForDuplicateRegion", CheckForDuplicateRegion},
    {"AddAudioRegion", AddAudioRegion},
    {"MoveDisplayToPosition", MoveDisplayToPosition},
    {"FindLastProcessCreated", FindLastProcessCreated},
    {"IsNullProcessID", IsNullID},
    {"SelectProcess", SelectProcess},
    {"GetSelectedRegionID", GetSelectedRegionID},
    {"IsNullRegionID", IsNullID},
    {"ExportRegion", ExportRegion},
    {"GetSampleRate", GetSampleRate},
    {"RegionRender", RegionRender},
    {"GetRegionStartPosition", GetRegionStartPosition},
    {"GetRegionEndPosition", GetRegionEndPosition},
    {"CreateProcess", CreateProcess},
    {"GetMarkerTrackID", GetMarkerTrackID},
    {"CountMarkerAreas", CountMarkerAreas},
    {"GetMarkerAreaID", GetMarkerAreaID},
    {"DeleteMarkerArea", DeleteMarkerArea},
    {"GetRegionCount", GetRegionCount},
    {"GetRegionID", GetRegionID},
    {"DeleteRegion", DeleteRegion},
    {"GetLinkSMPTEOffset", GetLinkSMPTEOffset},
    {"GetUpdateCount", GetUpdateCount},
    {"GetProcessID", GetProcessID},
    {"GetEventCount", GetEventCount},
    {"GetEvent", GetEvent},
};

}  // namespace

std::span<CHostFunction const> HostFunctions() {
    return kFunctions;
}
