#pragma once

#include <cstdint>
#include <string>

#include "link/FixedScripts.h"

/// The scripts that link clients send: the fixed ones themselves, the composed ones as a host sees
/// them.
namespace LinkScripts {

inline std::string Select(bool fAudioSuite) {
    return fAudioSuite ? "SelectAudioSuiteDocument" : "SelectScriptDocument";
}

inline std::string ListTracks(bool fAudioSuite) {
    return std::string(szListTracks.For(fAudioSuite));
}

inline std::string Export(bool fAudioSuite) {
    return std::string(szExportSelectedRegion.For(fAudioSuite));
}

inline std::string Render(bool fAudioSuite) {
    return std::string(szRenderSelectedRegion.For(fAudioSuite));
}

inline std::string CheckDuplicate(bool fAudioSuite, int nTrack, std::string const& strFile,
                                  std::int64_t lPosition, std::int64_t lStart, std::int64_t lEnd) {
    return "if " + Select(fAudioSuite) + "(true) then\nidTrack = GetTrackID(" +
           std::to_string(nTrack) + ")\nnDuplicate = CheckForDuplicateRegion(idTrack, \"" +
           strFile + "\"," + std::to_string(lPosition) + "," + std::to_string(lStart) + "," +
           std::to_string(lEnd) + ")\nprint(nDuplicate)\nend\n";
}

inline std::string SendFile(bool fAudioSuite, int nTrack, std::string const& strFile,
                            std::int64_t lPosition, std::int64_t lStart, std::int64_t lEnd,
                            std::string const& strDisplay, std::string const& strChannels = "") {
    return "if " + Select(fAudioSuite) + "() then\nidTrack = GetTrackID(" + std::to_string(nTrack) +
           ")\nAddAudioRegion(idTrack, \"" + strFile + "\", true, false, " +
           std::to_string(lPosition) + "," + std::to_string(lStart) + "," + std::to_string(lEnd) +
           (strChannels.empty() ? "" : ",1," + strChannels) + ")\nMoveDisplayToPosition(" +
           strDisplay + ")\nend\n";
}

inline std::string CreateAPT(bool fAudioSuite, std::int64_t lGuideStart, std::int64_t lGuideEnd,
                             std::int64_t lDubStart, std::int64_t lDubEnd) {
    return "if " + Select(fAudioSuite) +
           "() then\nidGuide = GetTrackID(0)\nidDub = GetTrackID(1)\nidAligned = GetTrackID(2)\n"
           "Guide = { IOType=1, Track=idGuide, Start=" +
           std::to_string(lGuideStart) + ", End=" + std::to_string(lGuideEnd) +
           "}\nDub = { IOType=2, Track=idDub, Start=" + std::to_string(lDubStart) +
           ", End=" + std::to_string(lDubEnd) +
           "}\nInputs = { Guide, Dub }\nAligned = { Track=idAligned }\nOutputs = { Aligned }\n"
           "idProcess = CreateProcess(\"APT\", \"PT\", Inputs, Outputs)\nMoveDisplayToPosition(" +
           std::to_string(lGuideStart) + ")\nend\n";
}

inline std::string CreateDoubler(bool fAudioSuite, std::int64_t lStart, std::int64_t lEnd) {
    return "if " + Select(fAudioSuite) +
           "() then\nidInput = GetTrackID(0)\nidOutput = GetTrackID(2)\n"
           "Input = { IOType=1, Track=idInput, Start=" +
           std::to_string(lStart) + ", End=" + std::to_string(lEnd) +
           "}\nInputs = { Input }\nOutput = { Track=idOutput }\nOutputs = { Output }\n"
           "idProcess = CreateProcess(\"Doubler\", \"PT\", Inputs, Outputs)\n"
           "MoveDisplayToPosition(" +
           std::to_string(lStart) + ")\nend\n";
}

inline std::string ClearTrack(bool fAudioSuite, int nTrack) {
    return "if " + Select(fAudioSuite) + "() then\nidTrack = GetTrackID(" + std::to_string(nTrack) +
           ")\nidMarker = GetMarkerTrackID(idTrack, 0)\nwhile CountMarkerAreas(idMarker) > 0 do\n"
           "idSrcArea = GetMarkerAreaID(idMarker, 0)\nDeleteMarkerArea(idSrcArea)\nend\n"
           "while GetRegionCount(idTrack) > 0 do\nidRegion = GetRegionID(idTrack, 0)\n"
           "DeleteRegion(idRegion)\nend\nend\n";
}

inline std::string LinkOffset(bool fAudioSuite) {
    return "if " + Select(fAudioSuite) + "(true) then\nprint(GetLinkSMPTEOffset())\nend\n";
}

}  // namespace LinkScripts
