#include "tools/NewFile.h"

#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <system_error>

#include "tools/InputOutput.h"
#include "tools/ToolFailure.h"

namespace {

namespace fs = std::filesystem;

bool PersonAgrees(std::string const& strPath) {
    if (!isatty(STDIN_FILENO) || !isatty(STDERR_FILENO)) return false;
    std::cerr << Quoted(strPath) << " is there already. Replace it? [y/N] ";
    std::string strAnswer;
    return std::getline(std::cin, strAnswer) && (strAnswer == "y" || strAnswer == "yes");
}

}  // namespace

void RequireRoomFor(std::string const& strPath, Replace replace) {
    std::error_code none;
    if (replace == Replace::Yes || !fs::is_regular_file(strPath, none)) return;
    if (PersonAgrees(strPath)) return;
    throw CToolFailure(exitTrouble, Quoted(strPath) + " is there already",
                       "Say --force to replace it, or give another name.", "exists");
}

template <typename Work>
void CNewFile::Do(Work work) try {
    work();
} catch (std::system_error const& failure) {
    throw CToolFailure(exitTrouble,
                       "cannot write " + Quoted(m_strPath) + ": " + failure.code().message(),
                       "Check the path, its permissions and the space left.", "unwritable");
}

CNewFile::CNewFile(std::string const& strPath) : m_strPath(strPath) {
    Do([this] { m_file.emplace(m_strPath); });
}

void CNewFile::Write(std::string const& bytes) {
    Do([&] { m_file->Write(bytes); });
}

void CNewFile::Keep() {
    Do([this] { m_file->Keep(); });
}
