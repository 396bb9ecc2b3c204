#include "tools/AudioProbe.h"

#include <sndfile.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <stdexcept>
#include <system_error>

CAudioLength ProbeAudio(std::string const& strPath) {
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, decltype(&sf_close)> file(
        sf_open(strPath.c_str(), SFM_READ, &info), &sf_close);
    if (!file)
        throw std::runtime_error("cannot read \"" + strPath + "\": " +
                                 (access(strPath.c_str(), R_OK) == 0
                                      ? "it is no sound that this program knows"
                                      : std::generic_category().message(errno)));
    return {info.frames, info.samplerate, info.channels};
}
