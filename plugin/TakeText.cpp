#include "plugin/TakeText.h"

#include <cstdio>

std::string TakeLength(CTake const& take, int nSampleRate) {
    char szText[32];
    std::snprintf(szText, sizeof(szText), "%lld.%01lld s",
                  static_cast<long long>(take.lFrames / nSampleRate),
                  static_cast<long long>(take.lFrames % nSampleRate * 10 / nSampleRate));
    return szText;
}

PlugInResult HandedOverResult(CTake const& take) {
    if (take.end == TakeEnd::Overflow) return PlugInResult::Overflow;
    return take.end == TakeEnd::DiskFailed ? PlugInResult::DiskFailed : PlugInResult::HandedOver;
}

std::string HandedOverText(CTake const& take, int nSampleRate) {
    if (take.end == TakeEnd::Stopped) {
        return take.fReplaces ? "The host has the take, in place of another plug-in's."
                              : "The host has the take.";
    }
    const bool fSlow = take.end == TakeEnd::Overflow;
    return "The host has " + TakeLength(take, nSampleRate) + " of the take: the disk " +
           (fSlow ? "did not keep up." : "is full or cannot be written.");
}
