#pragma once

#include <mutex>
#include <string>

/// Where the directories of all plug-ins are made: below the first of TAVARIN_CAPTURES,
/// XDG_DATA_HOME and HOME that is set.
std::string CaptureHome();

/// The directory that one plug-in writes its takes and returned files into. It is made when the
/// first file is, with a name that nothing else has. Any thread but the audio thread.
class CCaptureDirectory {
public:
    /// The directory's path; empty when there is none yet.
    std::string Path() const;

    /// Goes on with a directory of an earlier session. One that has gone is replaced by a new one.
    void Use(std::string const& strPath);

    /// Makes an empty file "<stem>_<number>.wav" under a number that is free, and gives its full
    /// path. Empty when that is not possible.
    std::string NewFile(const char* szStem);

    /// Gives a file another name beside the one that it has: either may be deleted without the
    /// other. Its full path; empty when that is not possible.
    static std::string SecondName(std::string const& strFile);

private:
    bool Make();

    mutable std::mutex m_Lock;
    std::string m_strPath;
};
