#include "host/AudioDirectory.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

std::string MakePrivateDirectory() {
    std::error_code error;
    fs::path const parent = fs::temp_directory_path(error);
    if (error) {
        char const* const pszParent = std::getenv("TMPDIR");
        throw std::system_error(error, std::string("the host has no temporary directory ") +
                                           (pszParent ? pszParent : "/tmp") + " for its audio");
    }
    std::string strPath = (parent / "tavarin-host-XXXXXX").string();
    if (mkdtemp(strPath.data())) return strPath;
    throw std::system_error(errno, std::generic_category(),
                            "the host cannot make its audio directory " + strPath);
}

std::int64_t UsedBytes(std::string const& strDirectory) {
    std::int64_t lSum = 0;
    std::error_code error;
    for (fs::directory_entry const& entry : fs::directory_iterator(strDirectory))
        if (entry.is_regular_file(error))
            if (auto const nSize = entry.file_size(error); !error)
                lSum += static_cast<std::int64_t>(nSize);
    return lSum;
}

}  // namespace

CAudioDirectory::CAudioDirectory(std::string const& strPath) : m_fRemove(strPath.empty()) {
    if (m_fRemove) {
        m_strPath = MakePrivateDirectory();
        return;
    }
    fs::path path = fs::absolute(strPath).lexically_normal();
    if (!path.has_filename()) path = path.parent_path();
    m_strPath = path.string();
    fs::create_directories(m_strPath);
}

CAudioDirectory::~CAudioDirectory() {
    RemoveIfPrivate();
}

void CAudioDirectory::RemoveIfPrivate() noexcept {
    if (!m_fRemove) return;
    std::error_code ignored;
    fs::remove_all(m_strPath, ignored);
}

std::string CAudioDirectory::NewFile(std::string const& strStem, std::int64_t lBytes) const {
    if (UsedBytes(m_strPath) > m_lLimit - lBytes)
        throw std::system_error(
            ENOSPC, std::generic_category(),
            "the host's audio directory " + m_strPath + " has reached its limit");
    std::string strFile = m_strPath + "/" + strStem + ".wav";
    for (int n = 2; fs::exists(fs::symlink_status(strFile)); ++n)
        strFile = m_strPath + "/" + strStem + "-" + std::to_string(n) + ".wav";
    return strFile;
}
