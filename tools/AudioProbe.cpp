#include "tools/AudioProbe.h"

#include <sndfile.h>

#include <memory>
#include <stdexcept>

CAudioLength ProbeAudio(std::string const& strPath) {
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, decltype(&sf_close)> file(
        sf_open(strPath.c_str(), SFM_READ, &info), &sf_close);
    if (!file) throw std::runtime_error("cannot read \"" + strPath + "\": " + sf_strerror(nullptr));
    return {info.frames, info.samplerate, info.channels};
}
