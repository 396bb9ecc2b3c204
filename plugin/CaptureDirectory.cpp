#include "plugin/CaptureDirectory.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "FileIO/FileName.h"

namespace {

constexpr int kMostFiles = 100000;

}  // namespace

std::string CaptureHome() {
    struct CPlace {
        const char* szVariable;
        const char* szBelow;
    };
    constexpr CPlace kPlaces[] = {
        {"TAVARIN_CAPTURES", ""}, {"XDG_DATA_HOME", "/TavarinLink"}, {"HOME", "/TavarinLink"}};
    for (CPlace const& place : kPlaces) {
        const char* szValue = std::getenv(place.szVariable);
        if (szValue != nullptr && *szValue != 0) return std::string(szValue) + place.szBelow;
    }
    return std::filesystem::temp_directory_path().string();
}

std::string CCaptureDirectory::Path() const {
    const std::lock_guard lock(m_Lock);
    return m_strPath;
}

void CCaptureDirectory::Use(std::string const& strPath) {
    const std::lock_guard lock(m_Lock);
    m_strPath = strPath;
}

std::string CCaptureDirectory::NewFile(const char* szStem) {
    const std::lock_guard lock(m_Lock);
    if (!Make()) return {};
    for (int nNumber = 1; nNumber < kMostFiles; ++nNumber) {
        char szName[64];
        std::snprintf(szName, sizeof(szName), "/%s_%04d.wav", szStem, nNumber);
        const std::string strFile = m_strPath + szName;
        const int nFile = open(strFile.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0644);
        if (nFile >= 0) {
            close(nFile);
            return strFile;
        }
        if (errno != EEXIST) return {};
    }
    return {};
}

bool CCaptureDirectory::Make() {
    std::error_code error;
    if (!m_strPath.empty() && std::filesystem::is_directory(m_strPath, error)) return true;
    const std::string strHome = CaptureHome();
    m_strPath = CDiskPath(&strHome).CreateUniqueSubDirectory("Captures").GetFullPathString();
    return !m_strPath.empty();
}
