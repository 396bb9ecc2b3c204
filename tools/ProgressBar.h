#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

/// How far something has come, as in "[=====     ]": twenty places between the brackets.
inline std::string ProgressBar(std::size_t nDone, std::size_t nAll) {
    constexpr std::size_t kPlaces = 20;
    const std::size_t nFilled = nAll == 0 ? kPlaces : std::min(nDone, nAll) * kPlaces / nAll;
    return "[" + std::string(nFilled, '=') + std::string(kPlaces - nFilled, ' ') + "]";
}
