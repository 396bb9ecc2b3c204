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

std::string CCaptureDirectory::SecondName(std::string const& strFile) {
    const std::filesystem::path file(strFile);
    for (int nNumber = 2; nNumber < kMostFiles; ++nNumber) {
        const std::string strName =
            file.stem().string() + "-" + std::to_string(nNumber) + file.extension().string();
        const std::filesystem::path other = file.parent_path() / strName;
        std::error_code error;
        std::filesystem::create_hard_link(file, other, error);
        if (!error) return other.string();
        // Not every disk has files with two names.
        if (error != std::errc::file_exists && std::filesystem::copy_file(file, other, error)) {
            return other.string();
        }
        if (error != std::errc::file_exists) return {};
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
