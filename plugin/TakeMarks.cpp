#include "plugin/TakeMarks.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "plugin/PlugInState.h"

namespace {

constexpr char szSuffix[] = ".take";

// A workstation may have given the file another name or another place.
bool IsSame(CTake const& first, CTake const& second) {
    return first.lPosition == second.lPosition && first.lFrames == second.lFrames;
}

}  // namespace

void MarkTake(std::int32_t nKind, CTake const& take) {
    CPlugInState state;
    state.nKind = nKind;
    state.takes = {take};
    const std::string strMark = take.strFile + szSuffix;
    const std::string strNew = strMark + ".new";
    std::ofstream file(strNew, std::ios::binary);
    file << SaveState(state);
    file.close();
    std::error_code ignored;
    // A full disk must not put half a mark in the place of a whole one.
    if (file) {
        std::filesystem::rename(strNew, strMark, ignored);
    } else {
        std::filesystem::remove(strNew, ignored);
    }
}

void UnmarkTake(std::string const& strFile) {
    std::error_code ignored;
    std::filesystem::remove(strFile + szSuffix, ignored);
}

std::vector<CTake> MarkedTakes(std::int32_t nKind, std::string const& strDirectory) {
    std::vector<CTake> takes;
    std::error_code error;
    for (auto const& entry : std::filesystem::directory_iterator(strDirectory, error)) {
        if (entry.path().extension() != szSuffix) continue;
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string strImage((std::istreambuf_iterator<char>(file)), {});
        CPlugInState state;
        std::string strReason;
        if (!LoadState(strImage, nKind, &state, &strReason) || state.takes.size() != 1) continue;
        CTake& take = state.takes.front();
        take.strFile = std::filesystem::path(entry.path()).replace_extension().string();
        if (std::filesystem::exists(take.strFile, error)) takes.push_back(take);
    }
    std::sort(takes.begin(), takes.end(), [](CTake const& first, CTake const& second) {
        return first.strFile < second.strFile;
    });
    return takes;
}

void BringUpToDate(std::vector<CTake>& takes, std::vector<CTake> const& marked) {
    for (CTake const& mark : marked) {
        const auto known = std::find_if(takes.begin(), takes.end(),
                                        [&mark](CTake const& take) { return IsSame(take, mark); });
        if (known == takes.end()) {
            if (!mark.fHandled) takes.push_back(mark);
        } else if (mark.fHandled) {
            known->fHandled = true;
            known->nTrack = mark.nTrack;
        }
    }
}
