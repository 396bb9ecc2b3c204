#include "host/SessionFile.h"

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

#include "host/AtomicFile.h"
#include "platform/Utf8.h"

using nlohmann::json;

namespace {

constexpr char const* kFormat = "tavarin-host-session";
constexpr int kVersion = 1;
constexpr std::uintmax_t kMaxFileBytes = std::uintmax_t{64} << 20;
constexpr int kMaxDepth = 32;

constexpr std::pair<DocumentKind, char const*> kDocumentNames[] = {
    {DocumentKind::Script, "script"}, {DocumentKind::AudioSuite, "audioSuite"}};

[[noreturn]] void Malformed(std::string const& strReason) {
    throw CSessionFileError(strReason);
}

json const& Member(json const& object, char const* pszName) {
    if (!object.is_object()) Malformed(std::string("no object around \"") + pszName + "\"");
    auto const member = object.find(pszName);
    if (member == object.end()) Malformed(std::string("\"") + pszName + "\" is missing");
    return *member;
}

std::int64_t Integer(json const& object, char const* pszName) {
    json const& value = Member(object, pszName);
    bool const fTooLarge =
        value.is_number_unsigned() &&
        value.get<std::uint64_t>() > std::uint64_t{std::numeric_limits<std::int64_t>::max()};
    if (!value.is_number_integer() || fTooLarge)
        Malformed(std::string("\"") + pszName + "\" is not a whole number");
    return value.get<std::int64_t>();
}

template <typename T>
T IntegerOf(json const& object, char const* pszName) {
    std::int64_t const lValue = Integer(object, pszName);
    if (!std::in_range<T>(lValue))
        Malformed(std::string("\"") + pszName + "\" is out of range: " + std::to_string(lValue));
    return static_cast<T>(lValue);
}

double Number(json const& object, char const* pszName) {
    json const& value = Member(object, pszName);
    if (!value.is_number()) Malformed(std::string("\"") + pszName + "\" is not a number");
    return value.get<double>();
}

std::string Text(json const& object, char const* pszName) {
    json const& value = Member(object, pszName);
    if (!value.is_string()) Malformed(std::string("\"") + pszName + "\" is not a text");
    return value.get<std::string>();
}

json const& List(json const& object, char const* pszName) {
    json const& value = Member(object, pszName);
    if (!value.is_array()) Malformed(std::string("\"") + pszName + "\" is not a list");
    return value;
}

std::string FromHex(std::string const& strHex) {
    if (strHex.size() % 2 != 0) Malformed("\"fileHex\" has an odd number of digits");
    std::string strBytes;
    for (std::size_t n = 0; n < strHex.size(); n += 2) {
        std::string const strDigits = strHex.substr(n, 2);
        if (strDigits.find_first_not_of("0123456789abcdef") != std::string::npos)
            Malformed("\"fileHex\" holds something that is no digit");
        strBytes += static_cast<char>(std::stoi(strDigits, nullptr, 16));
    }
    return strBytes;
}

CRegion ReadRegion(json const& value) {
    CRegion region;
    region.m_idRegion = Integer(value, "id");
    region.m_strFile =
        value.contains("fileHex") ? FromHex(Text(value, "fileHex")) : Text(value, "file");
    region.m_nFileRate = IntegerOf<int>(value, "fileRate");
    region.m_lFilePosition = Integer(value, "filePosition");
    region.m_lStart = Integer(value, "start");
    region.m_lEnd = Integer(value, "end");
    for (json const& channel : List(value, "channels")) {
        if (!channel.is_number_unsigned() || channel.get<std::uint64_t>() > 1023)
            Malformed("\"channels\" holds something that is no channel");
        region.m_Channels.push_back(channel.get<int>());
    }
    return region;
}

CMarkerTrack ReadMarkerTrack(json const& value) {
    CMarkerTrack markers;
    markers.m_idMarkerTrack = Integer(value, "id");
    for (json const& area : List(value, "areas"))
        markers.m_Areas.push_back(
            {Integer(area, "id"), Integer(area, "start"), Integer(area, "end")});
    return markers;
}

CTrack ReadTrack(json const& value) {
    CTrack track;
    track.m_idTrack = Integer(value, "id");
    track.m_strName = Text(value, "name");
    for (json const& region : List(value, "regions")) track.m_Regions.push_back(ReadRegion(region));
    for (json const& markers : List(value, "markerTracks"))
        track.m_MarkerTracks.push_back(ReadMarkerTrack(markers));
    return track;
}

CProcess ReadProcess(json const& value) {
    CProcess process;
    process.m_idProcess = Integer(value, "id");
    std::string const strKind = Text(value, "kind");
    if (strKind == ProcessKindName(ProcessKind::Doubler))
        process.m_Kind = ProcessKind::Doubler;
    else if (strKind != ProcessKindName(ProcessKind::APT))
        Malformed("the process kind \"" + strKind + "\" is not known");
    for (json const& input : List(value, "inputs"))
        process.m_Inputs.push_back({IntegerOf<int>(input, "ioType"), Integer(input, "track"),
                                    Integer(input, "start"), Integer(input, "end")});
    process.m_idOutputTrack = Integer(value, "outputTrack");
    process.m_idRegion = Integer(value, "region");
    return process;
}

CDocument ReadDocument(json const& value) {
    CDocument document;
    json const& tracks = List(value, "tracks");
    // A list that grows would copy the regions of every track in it.
    document.m_Tracks.reserve(tracks.size());
    for (json const& track : tracks) document.m_Tracks.push_back(ReadTrack(track));
    for (json const& process : List(value, "processes"))
        document.m_Processes.push_back(ReadProcess(process));
    document.m_idSelectedRegion = Integer(value, "selectedRegion");
    document.m_idSelectedProcess = Integer(value, "selectedProcess");
    document.m_idLastProcess = Integer(value, "lastProcess");
    document.m_dDisplayPosition = Number(value, "displayPosition");
    return document;
}

CSessionData ReadSession(json const& root) {
    if (Text(root, "format") != kFormat) Malformed("it is not a session of this host");
    if (std::int64_t const lVersion = Integer(root, "version"); lVersion != kVersion)
        Malformed("it has the format version " + std::to_string(lVersion) + ", not 1");
    CSessionData data;
    data.m_nSampleRate = IntegerOf<int>(root, "sampleRate");
    data.m_dLinkSMPTEOffset = Number(root, "linkSMPTEOffset");
    data.m_nUpdateCount = IntegerOf<std::uint32_t>(root, "updateCount");
    data.m_idNext = Integer(root, "nextId");
    json const& documents = Member(root, "documents");
    for (auto const& [kind, pszName] : kDocumentNames)
        data.m_Documents[static_cast<std::size_t>(kind)] = ReadDocument(Member(documents, pszName));
    return data;
}

std::string ReadFile(std::string const& strPath) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(strPath, error))
        Malformed(error ? error.message() : "it is not a regular file");
    if (std::filesystem::file_size(strPath, error) > kMaxFileBytes)
        Malformed("it is larger than 64 MiB");
    std::ifstream file(strPath, std::ios::binary);
    std::string strText{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file) Malformed("it cannot be read");
    return strText;
}

// Before the parser takes memory for every level. The parser could be asked at every level itself,
// but then looks at all of a list again for each of its elements.
void RequireShallow(std::string const& strText) {
    int nDepth = 0;
    bool fText = false;
    for (std::size_t n = 0; n < strText.size(); ++n) {
        char const ch = strText[n];
        if (fText && ch == '\\')
            ++n;
        else if (ch == '"')
            fText = !fText;
        else if (!fText && (ch == '[' || ch == '{') && ++nDepth > kMaxDepth)
            Malformed("it is nested too deeply");
        else if (!fText && (ch == ']' || ch == '}'))
            --nDepth;
    }
}

json Parse(std::string const& strText) {
    RequireShallow(strText);
    try {
        return json::parse(strText);
    } catch (json::parse_error const& error) {
        Malformed("it is no JSON from byte " + std::to_string(error.byte) + " on");
    }
}

std::string ToHex(std::string const& strBytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string strHex;
    for (unsigned char ch : strBytes) {
        strHex += kDigits[ch >> 4];
        strHex += kDigits[ch & 15];
    }
    return strHex;
}

json Written(CRegion const& region) {
    json value{{"id", region.m_idRegion},  {"fileRate", region.m_nFileRate},
               {"start", region.m_lStart}, {"filePosition", region.m_lFilePosition},
               {"end", region.m_lEnd},     {"channels", region.m_Channels}};
    if (IsUtf8(region.m_strFile))
        value["file"] = region.m_strFile;
    else
        value["fileHex"] = ToHex(region.m_strFile);
    return value;
}

json Written(CMarkerTrack const& markers) {
    json areas = json::array();
    for (CMarkerArea const& area : markers.m_Areas)
        areas.push_back({{"id", area.m_idArea}, {"start", area.m_lStart}, {"end", area.m_lEnd}});
    return {{"id", markers.m_idMarkerTrack}, {"areas", std::move(areas)}};
}

json Written(CTrack const& track) {
    json regions = json::array();
    for (CRegion const& region : track.m_Regions) regions.push_back(Written(region));
    json markerTracks = json::array();
    for (CMarkerTrack const& markers : track.m_MarkerTracks)
        markerTracks.push_back(Written(markers));
    return {{"id", track.m_idTrack},
            {"name", track.m_strName},
            {"regions", std::move(regions)},
            {"markerTracks", std::move(markerTracks)}};
}

json Written(CProcess const& process) {
    json inputs = json::array();
    for (CProcessInput const& input : process.m_Inputs)
        inputs.push_back({{"ioType", input.m_nIOType},
                          {"track", input.m_idTrack},
                          {"start", input.m_lStart},
                          {"end", input.m_lEnd}});
    return {{"id", process.m_idProcess},
            {"kind", ProcessKindName(process.m_Kind)},
            {"inputs", std::move(inputs)},
            {"outputTrack", process.m_idOutputTrack},
            {"region", process.m_idRegion}};
}

json Written(CDocument const& document) {
    json tracks = json::array();
    for (CTrack const& track : document.m_Tracks) tracks.push_back(Written(track));
    json processes = json::array();
    for (CProcess const& process : document.m_Processes) processes.push_back(Written(process));
    return {{"tracks", std::move(tracks)},
            {"processes", std::move(processes)},
            {"selectedRegion", document.m_idSelectedRegion},
            {"selectedProcess", document.m_idSelectedProcess},
            {"lastProcess", document.m_idLastProcess},
            {"displayPosition", document.m_dDisplayPosition}};
}

json Written(CSessionData const& data) {
    json documents = json::object();
    for (auto const& [kind, pszName] : kDocumentNames)
        documents[pszName] = Written(data.m_Documents[static_cast<std::size_t>(kind)]);
    return {{"format", kFormat},
            {"version", kVersion},
            {"sampleRate", data.m_nSampleRate},
            {"linkSMPTEOffset", data.m_dLinkSMPTEOffset},
            {"updateCount", data.m_nUpdateCount},
            {"nextId", data.m_idNext},
            {"documents", std::move(documents)}};
}

}  // namespace

CSession LoadSession(std::string const& strPath) {
    try {
        return CSession(ReadSession(Parse(ReadFile(strPath))));
    } catch (json::exception const&) {
        throw CSessionFileError("cannot load the session \"" + strPath +
                                "\": it is not laid out as a session file is");
    } catch (std::exception const& error) {
        throw CSessionFileError("cannot load the session \"" + strPath + "\": " + error.what());
    }
}

void SaveSession(CSession const& session, std::string const& strPath) {
    try {
        WriteFileAtomically(strPath, Written(session.Data()).dump(1, '\t') + "\n");
    } catch (std::exception const& error) {
        throw CSessionFileError("cannot save the session \"" + strPath + "\": " + error.what());
    }
}
