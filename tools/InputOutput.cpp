#include "tools/InputOutput.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

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

}  // namespace

std::string ReadInput(std::string const& path) {
    if (path == "-") return {std::istreambuf_iterator<char>(std::cin), {}};
    std::error_code none;
    if (std::filesystem::is_directory(path, none))
        throw CToolFailure(exitTrouble, Quoted(path) + " is a directory; name a file in it", "",
                           "unreadable");
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw CToolFailure(exitTrouble, "cannot open " + Quoted(path) + ": " + SystemError(),
                           "Check the path and its permissions.", "unreadable");
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    if (file.bad())
        throw CToolFailure(exitTrouble, "cannot read " + Quoted(path) + ": " + SystemError(), "",
                           "unreadable");
    return bytes;
}

void WriteOutput(std::string const& path, std::string const& bytes, Replace replace) {
    if (path == "-") {
        std::cout.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        RequireOutput();
        return;
    }
    RequireRoomFor(path, replace);
    if (TakesNoReplacement(path)) {
        if (WriteInPlace(path, bytes)) return;
        throw CToolFailure(exitTrouble, "cannot write " + Quoted(path) + ": " + SystemError(),
                           "Check the path, its permissions and the space left.", "unwritable");
    }
    CNewFile file(path);
    file.Write(bytes);
    file.Keep();
}

void RequireOutput() {
    errno = 0;
    std::cout.flush();
    const bool fWritten = std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout.good();
    if (fWritten) return;
    throw CToolFailure(
        exitTrouble,
        "cannot write to standard output" + (errno != 0 ? ": " + SystemError() : std::string()), "",
        "unwritable");
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
