#pragma once

#include <cstdint>
#include <string>

/// The directory in which the host keeps the sound that it makes itself.
///
/// Without a given path a private one (mode 0700) is made under the temporary directory and
/// removed with the object, contents included. A given directory is made when it is missing and
/// stays. The files in it may not
/// take more than a limit, 64 GiB unless set. Used by one thread.
class CAudioDirectory {
public:
    /// Throws `std::system_error` when the directory cannot be made.
    explicit CAudioDirectory(std::string const& strPath = {});
    ~CAudioDirectory();
    CAudioDirectory(CAudioDirectory const&) = delete;
    CAudioDirectory& operator=(CAudioDirectory const&) = delete;

    /// Does now what the end of a private directory's object does.
    void RemoveIfPrivate() noexcept;

    /// Full path, without a separator at the end.
    std::string const& Path() const { return m_strPath; }

    /// Full path of a file that does not exist yet, named after the stem ("APT_7": "APT_7.wav",
    /// or "APT_7-2.wav" when that is taken), with room for so many bytes. Throws
    /// `std::system_error` (no space) when the directory would grow beyond its limit.
    std::string NewFile(std::string const& strStem, std::int64_t lBytes) const;

    /// Largest sum of the sizes of all files, in bytes.
    void SetLimit(std::int64_t lBytes) { m_lLimit = lBytes; }

private:
    std::string m_strPath;
    bool m_fRemove = false;
    std::int64_t m_lLimit = std::int64_t{64} << 30;
};
