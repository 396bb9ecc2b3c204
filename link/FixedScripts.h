#pragma once

#include <string_view>

/// \file
/// The scripts that are sent as they stand, one variant for each kind of host document.
///
/// Their exact wording, blanks and tabs included, is part of the link: host applications are known
/// to receive just these texts.

/// One script in its two variants.
struct FixedScript {
    std::string_view strAudioSuite;  ///< makes the host's AudioSuite document current first
    std::string_view strScript;      ///< makes the host's script document current first

    /// The variant for the document that `fAudioSuite` chooses.
    constexpr std::string_view For(bool fAudioSuite) const {
        return fAudioSuite ? strAudioSuite : strScript;
    }
};

/// Prints a count line, the value 1 and every track name; or the count 1 and the value 0.
inline constexpr FixedScript szListTracks{
    "if(SelectAudioSuiteDocument(true)) then\n"
    "\tnTracks = GetTrackCount()\n"
    "\tprint(nTracks+1)\n"
    "\tprint(1)\n"
    "\tfor nTrack = 0,nTracks-1 do\n"
    "\t\tidTrack = GetTrackID(nTrack)\n"
    "\t\tprint(GetTrackName(idTrack, true))\n"
    "\tend\n"
    "else\n"
    "\tprint(1)\n"
    "\tprint(0)\n"
    "end\n",

    "if(SelectScriptDocument(true)) then\n"
    "\tnTracks = GetTrackCount()\n"
    "\tprint(nTracks+1)\n"
    "\tprint(1)\n"
    "\tfor nTrack = 0,nTracks-1 do\n"
    "\t\tidTrack = GetTrackID(nTrack)\n"
    "\t\tprint(GetTrackName(idTrack, true))\n"
    "\tend\n"
    "else\n"
    "\tprint(1)\n"
    "\tprint(0)\n"
    "end\n"};

/// Prints 0 and the exported file's path, or one reason code (0 no session, 1 no region, 2 no
/// process).
inline constexpr FixedScript szExportSelectedRegion{
    "if(SelectAudioSuiteDocument()) then\n"
    "   idProcess = FindLastProcessCreated()\n"
    "   if IsNullProcessID(idProcess) == 0 then\n"
    "        SelectProcess(idProcess)\n"
    "       idRegion = GetSelectedRegionID()\n"
    "       if IsNullRegionID(idRegion) == 0 then\n"
    "           strFile = ExportRegion(idRegion)\n"
    "           print(2)\n"
    "           print(0)\n"
    "           print(strFile)\n"
    "       else\n"
    "           print(1)\n"
    "           print(1)\n"
    "       end\n"
    "   else\n"
    "       print(1)\n"
    "       print(2)\n"
    "   end\n"
    "else\n"
    "\tprint(1)\n"
    "\tprint(0)\n"
    "end\n",

    "if(SelectScriptDocument()) then\n"
    "\tidRegion = GetSelectedRegionID()\n"
    "\tif IsNullRegionID(idRegion) == 0 then\n"
    "\t\tstrFile = ExportRegion(idRegion)\n"
    "\t\tprint(2)\n"
    "\t\tprint(0)\n"
    "\t\tprint(strFile)\n"
    "\telse\n"
    "\t\tprint(1)\n"
    "\t\tprint(1)\n"
    "\tend\n"
    "else\n"
    "\tprint(1)\n"
    "\tprint(0)\n"
    "end\n"};

/// Prints 0, the host's sample rate and the rendered region's start and end, or one reason code as
/// above.
inline constexpr FixedScript szRenderSelectedRegion{
    "if(SelectAudioSuiteDocument()) then\n"
    "   idProcess = FindLastProcessCreated()\n"
    "   if IsNullProcessID(idProcess) == 0 then\n"
    "        SelectProcess(idProcess)\n"
    "       idRegion = GetSelectedRegionID()\n"
    "       if IsNullRegionID(idRegion) == 0 then\n"
    "           dSampleRate = GetSampleRate()\n"
    "           RegionRender(idRegion)\n"
    "           dStart = GetRegionStartPosition(idRegion)\n"
    "           dEnd = GetRegionEndPosition(idRegion)\n"
    "           print(4)\n"
    "           print('0')\n"
    "           print(dSampleRate)\n"
    "           print(dStart)\n"
    "           print(dEnd)\n"
    "       else\n"
    "           print(1)\n"
    "           print(1)\n"
    "       end\n"
    "   else\n"
    "       print(1)\n"
    "       print(2)\n"
    "   end\n"
    "else\n"
    "\tprint(1)\n"
    "\tprint(0)\n"
    "end\n",

    "if(SelectScriptDocument()) then\n"
    "\tidRegion = GetSelectedRegionID()\n"
    "\tif IsNullRegionID(idRegion) == 0 then\n"
    "\t\tdSampleRate = GetSampleRate()\n"
    "\t\tRegionRender(idRegion)\n"
    "\t\tdStart = GetRegionStartPosition(idRegion)\n"
    "\t\tdEnd = GetRegionEndPosition(idRegion)\n"
    "\t\tprint(4)\n"
    "\t\tprint('0')\n"
    "\t\tprint(dSampleRate)\n"
    "\t\tprint(dStart)\n"
    "\t\tprint(dEnd)\n"
    "\telse\n"
    "\t\tprint(1)\n"
    "\t\tprint(1)\n"
    "\tend\n"
    "else\n"
    "\tprint(1)\n"
    "\tprint(0)\n"
    "end\n"};

static_assert(szListTracks.strAudioSuite.size() == 226);
static_assert(szListTracks.strScript.size() == 222);
static_assert(szExportSelectedRegion.strAudioSuite.size() == 486);
static_assert(szExportSelectedRegion.strScript.size() == 241);
static_assert(szRenderSelectedRegion.strAudioSuite.size() == 673);
static_assert(szRenderSelectedRegion.strScript.size() == 383);
