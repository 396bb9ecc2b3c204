#include "workstation/Takes.h"

#include <filesystem>
#include <stdexcept>

#include "workstation/AudioClip.h"

namespace fs = std::filesystem;

CTakes::CTakes(std::string const& strDirectory)
    : m_strDirectory(strDirectory), m_fTemporary(strDirectory.empty()) {
    if (m_fTemporary) m_strDirectory = CDiskPath::MakeTemporaryDirectory().GetFullPathString();
    std::error_code error;
    fs::create_directories(m_strDirectory, error);
    if (!fs::is_directory(m_strDirectory, error)) {
        throw std::runtime_error("no directory for captures: " + m_strDirectory);
    }
    m_strDirectory = fs::absolute(m_strDirectory).string();
}

CTakes::~CTakes() {
    std::error_code ignored;
    if (m_fTemporary) fs::remove_all(m_strDirectory, ignored);
}

std::string CTakes::Record(std::string const& strTake) {
    const std::string strName =
        IsBuiltInTake(strTake) ? strTake + ".wav" : fs::path(strTake).filename().string();
    fs::path file;
    do {
        file = fs::path(m_strDirectory) / (std::to_string(++m_nTakes) + " " + strName);
    } while (fs::exists(file));
    if (IsBuiltInTake(strTake)) {
        WriteBuiltInTake(strTake, file.string());
        return file.string();
    }
    std::error_code error;
    if (!fs::copy_file(strTake, file, error)) {
        throw std::runtime_error(strTake + ": " + error.message());
    }
    return file.string();
}
