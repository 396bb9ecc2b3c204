#include "tools/LinkContents.h"

#include "platform/NumberText.h"

std::string ContentsScript(std::string const& strSelect) {
    return "if " + strSelect +
           " then\n"
           "lines = {GetSampleRate(), GetTrackCount()}\n"
           "for nTrack = 0,GetTrackCount()-1 do\n"
           "lines[#lines+1] = GetTrackName(GetTrackID(nTrack), true)\n"
           "end\n"
           "for nTrack = 0,GetTrackCount()-1 do\n"
           "idTrack = GetTrackID(nTrack)\n"
           "for nRegion = 0,GetRegionCount(idTrack)-1 do\n"
           "idRegion = GetRegionID(idTrack, nRegion)\n"
           "lines[#lines+1] = nTrack\n"
           "lines[#lines+1] = GetRegionStartPosition(idRegion)\n"
           "lines[#lines+1] = GetRegionEndPosition(idRegion)\n"
           "end\nend\n"
           "print(#lines)\n"
           "for nLine = 1,#lines do print(lines[nLine]) end\n"
           "end\n";
}

std::optional<CLinkContents> ReadContents(std::vector<std::string> const& lines) {
    if (lines.size() < 2) return std::nullopt;
    const auto number = [&lines](std::size_t n) { return ParseInteger(lines[n].c_str()); };
    CLinkContents contents{static_cast<int>(number(0)), {}, {}};
    const auto nTracks = static_cast<std::size_t>(number(1));
    if (contents.nSampleRate < 1 || nTracks > lines.size() - 2) return std::nullopt;
    const auto first = lines.begin() + 2;
    contents.tracks.assign(first, first + static_cast<std::ptrdiff_t>(nTracks));
    for (std::size_t n = 2 + nTracks; n + 2 < lines.size(); n += 3) {
        const auto nTrack = static_cast<std::size_t>(number(n));
        if (nTrack >= nTracks) return std::nullopt;
        contents.regions.push_back({nTrack, number(n + 1), number(n + 2)});
    }
    return contents;
}
