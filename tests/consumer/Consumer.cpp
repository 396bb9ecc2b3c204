// Includes every public header of the plain C++ libraries, and calls something of each library.

#include <cstdio>
#include <cstring>

#include "FileIO/FileIO.h"
#include "FileIO/FileName.h"
#include "Source/Notifications.h"
#include "link/LinkClock.h"
#include "link/SharedSegments.h"
#include "link/TANClientInterProcess.h"
#include "link/WordProtocol.h"
#include "utils/ParameterBlock.h"
#include "utils/SMPTE.h"
#include "utils/TextUtils.h"

int main() {
    CTANClientInterProcess client;
    CParameterBlock block;
    block.AddParameter("Track", 3);
    int nTrack = 0;
    const bool fFound = block.FindParameter("Track", &nTrack, 0);
    const CFileName file("/takes/guide.wav");
    char number[21];
    ltoa(PTFramesToSamples(48000, 25, 50) < 0 ? -1 : nTrack, number, 10);
    std::printf("%s %s %s %s\n", client.GetNameOfHost(3).c_str(), file.GetExtension().c_str(),
                number, LinkTimeNow() < kNoDeadline ? "now" : "never");
    return fFound && std::strcmp(number, "3") == 0 ? 0 : 1;
}
