#pragma once

#include <string>

#include "FileIO/FileName.h"

/// Where a workstation keeps what it records. A view deletes a capture that the host has already,
/// so that every capture is a file of its own. The others stay: the host's session refers to them.
class CTakes {
public:
    /// Keeps captures in a directory, or, when it is empty, in a new one among those of the
    /// plug-ins. A directory that was made here and is empty at the end goes with this object.
    /// Throws `std::runtime_error` when there is none to be had.
    explicit CTakes(std::string const& strDirectory);
    ~CTakes();
    CTakes(CTakes const&) = delete;
    CTakes& operator=(CTakes const&) = delete;

    /// A new file with the audio of a sound file or of a built-in take, and its path. Throws
    /// `std::runtime_error` when there is no such audio.
    std::string Record(std::string const& strTake);

private:
    std::string m_strDirectory;
    bool m_fOwn;
    int m_nTakes = 0;
};
