#include "tools/InputOutput.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>

#include "platform/Utf8.h"
#include "tools/ToolFailure.h"

namespace {

bool IsControl(std::string const& text, std::size_t at, std::size_t length) {
    const auto first = static_cast<unsigned char>(text[at]);
    if (length == 1) return first < 0x20 || first == 0x7F;
    // U+0080 to U+009F steer a terminal too.
    return length == 2 && first == 0xC2 && static_cast<unsigned char>(text[at + 1]) < 0xA0;
}

void AppendEscaped(std::string& out, std::string const& text, std::size_t at, std::size_t length) {
    for (std::size_t i = at; i < at + length; ++i) {
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned char>(text[i]));
        out += escape;
    }
}

std::string SystemError() {
    return std::strerror(errno);
}

// A new file beside `path`, gone unless it is moved into place.
class CFileBeside {
public:
    explicit CFileBeside(std::string const& path) : m_strPath(path), m_strBeside(path + ".XXXXXX") {
        const int descriptor = mkstemp(m_strBeside.data());
        if (descriptor >= 0) m_pStream = fdopen(descriptor, "wb");
    }
    CFileBeside(CFileBeside const&) = delete;
    CFileBeside& operator=(CFileBeside const&) = delete;
    ~CFileBeside() {
        if (m_pStream != nullptr) std::fclose(m_pStream);
        if (!m_fMoved) std::remove(m_strBeside.c_str());
    }

    bool Write(std::string const& bytes) {
        return m_pStream != nullptr &&
               std::fwrite(bytes.data(), 1, bytes.size(), m_pStream) == bytes.size();
    }

    bool MoveIntoPlace() {
        const int closed = std::fclose(m_pStream);
        m_pStream = nullptr;
        if (closed != 0) return false;
        GiveUsualPermissions();
        m_fMoved = std::rename(m_strBeside.c_str(), m_strPath.c_str()) == 0;
        return m_fMoved;
    }

private:
    // A temporary file is its owner's alone; the result gets the permissions of the file it
    // replaces, or those that a new file usually has.
    void GiveUsualPermissions() const {
        namespace fs = std::filesystem;
        std::error_code missing;
        const fs::file_status old = fs::status(m_strPath, missing);
        const fs::perms usual = fs::perms::owner_read | fs::perms::owner_write |
                                fs::perms::group_read | fs::perms::others_read;
        std::error_code ignored;
        fs::permissions(m_strBeside, fs::is_regular_file(old) ? old.permissions() : usual, ignored);
    }

    std::string m_strPath;
    std::string m_strBeside;
    std::FILE* m_pStream = nullptr;
    bool m_fMoved = false;
};

// Something that is there and no file, such as a pipe, is written to where it is.
bool TakesNoReplacement(std::string const& path) {
    std::error_code none;
    const std::filesystem::file_status old = std::filesystem::status(path, none);
    return std::filesystem::exists(old) && !std::filesystem::is_regular_file(old);
}

bool WriteInPlace(std::string const& path, std::string const& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush();
    return file.good();
}

bool WriteBeside(std::string const& path, std::string const& bytes) {
    CFileBeside file(path);
    return file.Write(bytes) && file.MoveIntoPlace();
}

}  // namespace

std::string ReadInput(std::string const& path) {
    if (path == "-") return {std::istreambuf_iterator<char>(std::cin), {}};
    if (std::filesystem::is_directory(path))
        throw CToolFailure(exitTrouble, Quoted(path) + " is a directory; name a file in it");
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw CToolFailure(exitTrouble, "cannot open " + Quoted(path) + ": " + SystemError() +
                                            "; check the path and its permissions");
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    if (file.bad())
        throw CToolFailure(exitTrouble, "cannot read " + Quoted(path) + ": " + SystemError());
    return bytes;
}

void WriteOutput(std::string const& path, std::string const& bytes) {
    if (path == "-") {
        std::cout.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush();
        if (!std::cout)
            throw CToolFailure(exitTrouble, "cannot write to standard output; is it still open?");
        return;
    }
    const bool written =
        TakesNoReplacement(path) ? WriteInPlace(path, bytes) : WriteBeside(path, bytes);
    if (!written)
        throw CToolFailure(exitTrouble, "cannot write " + Quoted(path) + ": " + SystemError() +
                                            "; check the path, its permissions and the space left");
}

std::string Quoted(std::string const& text) {
    std::string quoted = "\"";
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = Utf8CharacterLength(std::string_view(text).substr(at));
        if (length == 0 || IsControl(text, at, length))
            AppendEscaped(quoted, text, at, std::max<std::size_t>(length, 1));
        else if (text[at] == '"' || text[at] == '\\')
            quoted.append("\\").append(1, text[at]);
        else
            quoted.append(text, at, length);
        at += std::max<std::size_t>(length, 1);
    }
    return quoted + '"';
}
