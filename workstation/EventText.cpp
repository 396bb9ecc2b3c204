#include "workstation/EventText.h"

#include <cstdio>
#include <filesystem>
#include <stdexcept>

std::string LengthText(std::int64_t lSamples, int nSampleRate) {
    if (nSampleRate < 1) return std::to_string(lSamples) + " samples";
    char text[40];
    std::snprintf(text, sizeof text, "%.2f s", static_cast<double>(lSamples) / nSampleRate);
    return text;
}

std::string SpanText(double dStart, double dEnd, int nSampleRate) {
    const auto lStart = static_cast<std::int64_t>(dStart);
    const auto lEnd = static_cast<std::int64_t>(dEnd);
    return std::to_string(lStart) + " to " + std::to_string(lEnd) + " (" +
           LengthText(lEnd - lStart, nSampleRate) + ")";
}

void RequireRoom(std::string const& strFile, bool fForce) {
    std::error_code ignored;
    if (fForce || !std::filesystem::is_regular_file(strFile, ignored)) return;
    throw std::runtime_error("\"" + strFile + "\" is there already; --force replaces it");
}
