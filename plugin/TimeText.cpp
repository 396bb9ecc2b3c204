#include "plugin/TimeText.h"

#include <cstdio>
#include <cstdlib>

std::string TimeText(std::int64_t lSamples, int nSampleRate) {
    const long long lSeconds = std::llabs(lSamples / nSampleRate);
    const long long lTenths = std::llabs(lSamples % nSampleRate * 10 / nSampleRate);
    char szText[48];
    std::snprintf(szText, sizeof(szText), "%s%lld:%02lld.%lld", lSamples < 0 ? "-" : "",
                  lSeconds / 60, lSeconds % 60, lTenths);
    return szText;
}
