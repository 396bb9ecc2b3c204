#include "tools/scheme/SchemeSource.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "FileIO/FileName.h"
#include "colours/DefaultColours.h"
#include "colours/SchemeFile.h"
#include "tools/scheme/SchemeDiff.h"
#include "tools/scheme/SchemeJson.h"
#include "tools/scheme/ToolFailure.h"

namespace {

const std::string szSourceAdvice =
    "Give 'designer', 'engineer', a scheme file or a JSON file made with 'tavarin-scheme export'.";

bool LooksLikeJson(std::string const& text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    return first != std::string::npos && text[first] == '{';
}

CFileName FileNamed(std::string const& path) {
    return CFileName(std::filesystem::absolute(path).c_str());
}

void ReadSchemeFile(std::string const& file, CComponentsColors& scheme) {
    switch (LoadSchemeFile(scheme, FileNamed(file))) {
        case sessionDone:
            return;
        case sessionHeaderFailed:
            throw CToolFailure(file + " is not a colour scheme", szSourceAdvice);
        case sessionBodyFailed:
            throw CToolFailure(file + " is damaged: not all of its colours can be read",
                               "Make it again with 'tavarin-scheme import'.");
        default:
            throw CToolFailure(file + " cannot be read", szSourceAdvice);
    }
}

}  // namespace

std::string ReadText(std::string const& strFile) {
    std::ostringstream text;
    if (strFile == "-") {
        text << std::cin.rdbuf();
        return text.str();
    }
    std::ifstream file(strFile, std::ios::binary);
    if (!file || std::filesystem::is_directory(strFile)) {
        throw CToolFailure(strFile + " cannot be read", szSourceAdvice);
    }
    text << file.rdbuf();
    return text.str();
}

void WriteText(std::string const& strFile, std::string const& strText) {
    if (strFile == "-") {
        std::cout << strText << std::flush;
        if (std::cout) return;
        throw CToolFailure("standard output cannot be written", "Name a file with --output.");
    }
    std::ofstream file(strFile, std::ios::binary);
    file << strText << std::flush;
    if (file) return;
    throw CToolFailure(strFile + " cannot be written",
                       "Name a file in a directory that exists and that you may write to.");
}

void WriteSchemeFile(std::string const& strFile, CComponentsColors const& scheme) {
    const std::string strPart = strFile + ".part";
    CComponentsColors written;
    std::error_code failure;
    const bool fWritten = SaveSchemeFile(scheme, FileNamed(strPart)) == sessionDone &&
                          LoadSchemeFile(written, FileNamed(strPart)) == sessionDone &&
                          DiffSchemes(scheme, written).empty();
    if (fWritten) std::filesystem::rename(strPart, strFile, failure);
    if (fWritten && !failure) return;
    std::filesystem::remove(strPart, failure);
    throw CToolFailure(strFile + " cannot be written",
                       "Name a file in a directory that exists, that you may write to and that "
                       "has room.");
}

void ReadScheme(std::string const& strSource, CComponentsColors& scheme) {
    if (strSource == "designer") return AppCreateDefaultColoursDesigner(&scheme);
    if (strSource == "engineer") return AppCreateDefaultColoursEngineer(&scheme);
    const std::string text = ReadText(strSource);
    if (text.empty()) throw CToolFailure(strSource + " is empty", szSourceAdvice);
    if (LooksLikeJson(text)) return SchemeFromJson(text, scheme);
    ReadSchemeFile(strSource, scheme);
}
