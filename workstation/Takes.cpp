#include "workstation/Takes.h"

#include <filesystem>
#include <stdexcept>

#include "plugin/CaptureDirectory.h"
#include "workstation/AudioClip.h"

namespace fs = std::filesystem;

namespace {

std::string MakeDirectoryAmongThePlugIns() {
    const std::string strHome = CaptureHome();
    return CDiskPath(&strHome).CreateUniqueSubDirectory("Captures").GetFullPathString();
}

}  // namespace

CTakes::CTakes(std::string const& strDirectory)
    : m_strDirectory(strDirectory), m_fOwn(strDirectory.empty()) {
    if (m_fOwn) m_strDirectory = MakeDirectoryAmongThePlugIns();
    std::error_code error;
    fs::create_directories(m_strDirectory, error);
    if (!fs::is_directory(m_strDirectory, error)) {
        throw std::runtime_error("no directory for captures: " + m_strDirectory);
    }
    m_strDirectory = fs::absolute(m_strDirectory).string();
}

CTakes::~CTakes() {
    std::error_code ignored;
    if (m_fOwn) fs::remove(m_strDirectory, ignored);
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
