#include "tools/scheme/SchemeSource.h"

#include <filesystem>

#include "FileIO/FileName.h"
#include "colours/DefaultColours.h"
#include "colours/SchemeFile.h"
#include "tools/InputOutput.h"
#include "tools/ToolFailure.h"
#include "tools/scheme/SchemeDiff.h"
#include "tools/scheme/SchemeJson.h"

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
            throw CToolFailure(exitTrouble, Quoted(file) + " is not a colour scheme",
                               szSourceAdvice);
        case sessionBodyFailed:
            throw CToolFailure(exitTrouble,
                               Quoted(file) + " is damaged: not all of its colours can be read",
                               "Make it again with 'tavarin-scheme import'.");
        default:
            throw CToolFailure(exitTrouble, Quoted(file) + " cannot be read", szSourceAdvice);
    }
}

}  // namespace

void WriteSchemeFile(std::string const& strFile, CComponentsColors const& scheme) {
    const std::string strPart = strFile + ".part";
    CComponentsColors written;
    std::error_code failure;
    const bool fWritten = SaveSchemeFile(scheme, FileNamed(strPart)) == sessionDone &&
                          LoadSchemeFile(written, FileNamed(strPart)) == sessionDone &&
                          DiffSchemes(scheme, written).empty();
    if (fWritten) {
        const std::string bytes = ReadInput(strPart);
        std::filesystem::remove(strPart, failure);
        return WriteOutput(strFile, bytes, Replace::Yes);
    }
    std::filesystem::remove(strPart, failure);
    throw CToolFailure(exitTrouble, "cannot write " + Quoted(strFile),
                       "Name a file in a directory that exists, that you may write to and that "
                       "has room.",
                       "unwritable");
}

void ReadScheme(std::string const& strSource, CComponentsColors& scheme) {
    if (strSource == "designer") return AppCreateDefaultColoursDesigner(&scheme);
    if (strSource == "engineer") return AppCreateDefaultColoursEngineer(&scheme);
    std::error_code none;
    if (strSource != "-" && !std::filesystem::exists(strSource, none)) {
        throw CToolFailure(exitTrouble, Quoted(strSource) + " is no palette and no file",
                           szSourceAdvice);
    }
    const std::string text = ReadInput(strSource);
    if (text.empty())
        throw CToolFailure(exitTrouble, Quoted(strSource) + " is empty", szSourceAdvice);
    if (LooksLikeJson(text)) return SchemeFromJson(text, scheme);
    ReadSchemeFile(strSource, scheme);
}
