#pragma once

#include <regex>
#include <string>
#include <vector>

/// What a script asks of the host in a few words, so that a test can name an order of scripts. "AS"
/// and "S" stand for the AudioSuite and the script document; a script of another form stays as it
/// is.
inline std::string SummarizeScript(std::string const& strScript) {
    struct CForm {
        const char* szPattern;
        const char* szSummary;
    };
    static const CForm forms[] = {
        {R"(GetTrackCount\(\)[^]*GetTrackName)", "list"},
        {R"(GetTrackID\((-?\d+)\)[^]*GetMarkerTrackID[^]*DeleteRegion)", "clear $1"},
        {R"re(GetTrackID\((-?\d+)\)[^]*CheckForDuplicateRegion\(idTrack, "([^]*)",([-\d,]+)\))re",
         "duplicate $1 $2 $3"},
        {R"re(GetTrackID\((-?\d+)\)[^]*AddAudioRegion\(idTrack, "([^]*)", true, false, ([^)]*)\))re",
         "add $1 $2 $3"},
        {R"re(idGuide = GetTrackID\((\d+)\)\nidDub = GetTrackID\((\d+)\)\nidAligned = GetTrackID\((\d+)\)[^]*Guide = .*Start=(-?\d+), End=(-?\d+)[^]*Dub = .*Start=(-?\d+), End=(-?\d+)[^]*CreateProcess\("APT")re",
         "apt $1 $4..$5 $2 $6..$7 > $3"},
        {R"re(idInput = GetTrackID\((\d+)\)\nidOutput = GetTrackID\((\d+)\)[^]*Start=(-?\d+), End=(-?\d+)[^]*CreateProcess\("Doubler")re",
         "doubler $1 $3..$4 > $2"},
        {"ExportRegion", "export"},
        {"RegionRender", "render"},
    };
    const bool fAudioSuite = strScript.find("SelectAudioSuiteDocument") != std::string::npos;
    const std::string strDocument = fAudioSuite ? "AS " : "S ";
    for (CForm const& form : forms) {
        std::smatch match;
        if (std::regex_search(strScript, match, std::regex(form.szPattern))) {
            return strDocument + match.format(form.szSummary);
        }
    }
    return strScript;
}
