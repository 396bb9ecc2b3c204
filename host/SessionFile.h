#pragma once

#include <stdexcept>
#include <string>

#include "host/Session.h"

/// A session file that cannot be read or written; the text names the file and the reason.
class CSessionFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads a session from a JSON file (format "tavarin-host-session", version 1). The audio files
/// that it names are not opened. Throws `CSessionFileError` for a file that is missing, larger than
/// 64 MiB, malformed or contradicts itself.
CSession LoadSession(std::string const& strPath);

/// Writes a session as JSON, replacing the file as one step: after a failure, reported by
/// `CSessionFileError`, the file is what it was before.
void SaveSession(CSession const& session, std::string const& strPath);
