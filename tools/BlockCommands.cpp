#include "tools/BlockCommands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <memory>
#include <stdexcept>

#include "tools/BlockByteMap.h"
#include "tools/BlockDiff.h"
#include "tools/BlockDocument.h"
#include "tools/BlockJson.h"
#include "tools/BlockPath.h"
#include "tools/BlockText.h"
#include "tools/InputOutput.h"
#include "tools/ToolFailure.h"
#include "tools/WaitNotice.h"
#include "utils/ParameterTree.h"

namespace {

struct CDumpOptions {
    CBlockForm form;
    std::string strFile;
    bool fJson = false;
    bool fBytes = false;
};

struct CPackOptions {
    std::string strFile = "-";
    std::string strOutput;
    bool fForce = false;
};

struct CDiffOptions {
    CBlockForm form;
    std::string strFirst, strSecond;
};

void AddFormOptions(CLI::App& command, CBlockForm& form) {
    auto* bare = command.add_flag("--bare", form.fBare, "The file is a bare image: no header");
    command
        .add_option_function<std::string>(
            "--id",
            [&form](std::string const& id) {
                form.fIdGiven = true;
                form.strId = id;
            },
            "The format identifier (default: the file's bytes up to the first zero byte)")
        ->excludes(bare);
}

// A million parameters take seconds.
class CBlockNotice : public CWaitNotice {
public:
    explicit CBlockNotice(std::string const& strFile)
        : CWaitNotice("working on " + Quoted(strFile)) {}

    // The notice must not stand among what is printed to the same terminal.
    void MakeRoom() {
        if (isatty(STDOUT_FILENO)) End();
    }
};

void Dump(CDumpOptions const& options) {
    const std::string image = ReadInput(options.strFile);
    CBlockNotice notice(options.strFile);
    if (options.fBytes) {
        notice.MakeRoom();
        const std::string id =
            options.form.fBare ? "" : IdentifierOf(options.form, image, options.strFile);
        const std::string fault =
            WriteByteMap(std::cout, image, options.form.fBare ? nullptr : &id);
        if (!fault.empty())
            throw CToolFailure(exitNegative,
                               Quoted(options.strFile) + " is not one whole image: " + fault, "",
                               "damaged");
        return;
    }
    CBlockDocument document;
    const std::string fault = LoadImage(options.form, image, options.strFile, document);
    notice.MakeRoom();
    if (options.fJson)
        WriteJson(std::cout, document);
    else
        WriteTree(std::cout, document);
    if (!fault.empty())
        throw CToolFailure(exitNegative, Quoted(options.strFile) + ": " + fault, "", "damaged");
}

void Pack(CPackOptions const& options) {
    const std::string text = ReadInput(options.strFile);
    const CBlockNotice notice(options.strFile);
    CBlockDocument document;
    const std::string fault = ReadJson(text, document);
    if (!fault.empty())
        throw CToolFailure(
            exitTrouble,
            Quoted(options.strFile) +
                " is not a block in JSON as `tavarin block dump --json` writes it: " + fault,
            "", "damaged");
    WriteOutput(options.strOutput, MakeImage(document),
                options.fForce ? Replace::Yes : Replace::No);
}

void LoadWhole(CBlockForm const& form, std::string const& image, std::string const& path,
               CBlockDocument& document) {
    const std::string fault = LoadImage(form, image, path, document);
    if (!fault.empty())
        throw CToolFailure(exitTrouble, Quoted(path) + ": " + fault,
                           "`tavarin block dump` shows it.", "damaged");
}

void Diff(CDiffOptions const& options) {
    const std::string firstImage = ReadInput(options.strFirst);
    const std::string secondImage = ReadInput(options.strSecond);
    CBlockNotice notice(options.strFirst);
    CBlockDocument first, second;
    LoadWhole(options.form, firstImage, options.strFirst, first);
    LoadWhole(options.form, secondImage, options.strSecond, second);
    notice.MakeRoom();
    if (!WriteDiff(std::cout, first, second)) throw CLI::RuntimeError(exitNegative);
}

struct CGetOptions {
    CBlockForm form;
    std::string strFile, strPath;
    bool fJson = false;
};

CParameter& RequireEntry(CBlockDocument& document, std::vector<CBlockStep> const& steps,
                         std::string const& strFile, std::string const& strPath,
                         ExitStatus status) {
    if (CParameter* const pEntry = FindEntry(document.block, steps)) return *pEntry;
    throw CToolFailure(status, Quoted(strFile) + " has no entry " + Quoted(strPath),
                       "`tavarin block dump` lists them.",
                       status == exitNegative ? nullptr : "usage");
}

void Get(CGetOptions const& options) {
    const std::vector<CBlockStep> steps = ReadBlockPath(options.strPath);
    CBlockDocument document;
    LoadWhole(options.form, ReadInput(options.strFile), options.strFile, document);
    CParameter const& entry =
        RequireEntry(document, steps, options.strFile, options.strPath, exitNegative);
    if (options.fJson)
        WriteJsonEntry(std::cout, entry);
    else if (entry.type == tagBlock)
        WriteEntries(std::cout, static_cast<CParameterBlock const&>(entry));
    else if (entry.type == tagString)
        std::cout << static_cast<CStringParameter const&>(entry).value << '\n';
    else
        std::cout << ValueText(entry) << '\n';
}

struct CSetOptions {
    CBlockForm form;
    std::string strFile, strPath, strValue, strType, strOutput;
    bool fForce = false;
};

std::unique_ptr<CParameter> MakeValue(std::string const& strType, std::string const& strValue) {
    try {
        return ParameterFromText(strType, strValue);
    } catch (std::runtime_error const& fault) {
        throw CToolFailure(
            exitTrouble,
            Quoted(strValue) + " cannot be a value of type " + strType + ": " + fault.what(), "",
            "usage");
    }
}

// What nobody can read would be lost without a word.
void RequireKnownEntries(CParameterBlock const& root, std::string const& strFile) {
    const auto holdsUnknown = [](CParameterBlock const& block) {
        return std::find(block.parameters.begin(), block.parameters.end(), nullptr) !=
               block.parameters.end();
    };
    bool fUnknown = holdsUnknown(root);
    VisitTree(root, [&](CParameter& parameter) {
        CParameterBlock const* const pBlock = AsBlock(&parameter);
        fUnknown = fUnknown || (pBlock != nullptr && holdsUnknown(*pBlock));
    });
    if (fUnknown)
        throw CToolFailure(exitTrouble,
                           Quoted(strFile) + " holds entries of unknown type, which would be lost",
                           "", "damaged");
}

void PutValue(CBlockDocument& document, CSetOptions const& options) {
    const std::vector<CBlockStep> steps = ReadBlockPath(options.strPath);
    CParameterBlock* const pBlock = FindBlockOf(document.block, steps);
    const bool fAdd = !options.strType.empty() && pBlock != nullptr &&
                      FindEntry(document.block, steps) == nullptr && steps.back().nPlace == 0;
    if (fAdd) {
        std::unique_ptr<CParameter> made = MakeValue(options.strType, options.strValue);
        made->name = steps.back().strName;
        pBlock->parameters.push_back(made.get());
        made.release();
        return;
    }
    CParameter& entry =
        RequireEntry(document, steps, options.strFile, options.strPath, exitTrouble);
    const std::string strType = TypeWord(&entry);
    if (!options.strType.empty() && options.strType != strType)
        throw CToolFailure(exitTrouble,
                           Quoted(options.strPath) + " has the type " + strType + " already", "",
                           "usage");
    const std::unique_ptr<CParameter> made = MakeValue(strType, options.strValue);
    made->name = entry.name;
    entry = *made;
}

void Set(CSetOptions const& options) {
    const std::string strOutput = options.strOutput.empty() ? options.strFile : options.strOutput;
    const Replace replace = options.fForce ? Replace::Yes : Replace::No;
    CBlockDocument document;
    LoadWhole(options.form, ReadInput(options.strFile), options.strFile, document);
    RequireKnownEntries(document.block, options.strFile);
    PutValue(document, options);
    WriteOutput(strOutput, MakeImage(document), replace);
}

void AddGet(CLI::App& block) {
    auto options = std::make_shared<CGetOptions>();
    CLI::App* get = block.add_subcommand("get", "Print one value of a file");
    get->add_option("FILE", options->strFile, "A session file or image; - for standard input")
        ->required();
    get->add_option("PATH", options->strPath, "Names with / between them: Take/Name, Code[1]/Mod")
        ->required();
    AddFormOptions(*get, options->form);
    get->add_flag("--json", options->fJson, "As JSON, with its type and name");
    get->callback([options] { Get(*options); });
}

void AddSet(CLI::App& block) {
    auto options = std::make_shared<CSetOptions>();
    CLI::App* set = block.add_subcommand("set", "Change one value of a file, or add one");
    set->add_option("FILE", options->strFile, "A session file or image; - for standard input")
        ->required();
    set->add_option("PATH", options->strPath, "Names with / between them: Take/Name, Code[1]/Mod")
        ->required();
    set->add_option("VALUE", options->strValue, "The value, as `get` prints it")->required();
    AddFormOptions(*set, options->form);
    set->add_option("--type", options->strType,
                    "Add an entry of this type if there is none at the path")
        ->check(CLI::IsMember({"string", "int", "int64", "uint64", "double", "float", "bool"}));
    set->add_option("-o,--output", options->strOutput,
                    "The file to make, - for standard output (default: FILE itself)");
    set->add_flag("--force", options->fForce, "Replace the file if it is there");
    set->callback([options] { Set(*options); });
}

void AddDump(CLI::App& block) {
    auto options = std::make_shared<CDumpOptions>();
    CLI::App* dump = block.add_subcommand("dump", "Show the parameters of a file");
    dump->add_option("FILE", options->strFile, "A session file or image; - for standard input")
        ->required();
    AddFormOptions(*dump, options->form);
    auto* json = dump->add_flag("--json", options->fJson, "As JSON, which `pack` turns back");
    dump->add_flag("--bytes", options->fBytes, "As a map of the bytes and what they mean")
        ->excludes(json);
    dump->callback([options] { Dump(*options); });
}

void AddPack(CLI::App& block) {
    auto options = std::make_shared<CPackOptions>();
    CLI::App* pack = block.add_subcommand("pack", "Make a file from what `dump --json` shows");
    pack->add_option("JSON", options->strFile, "The JSON file (default: standard input)");
    pack->add_option("-o,--output", options->strOutput, "The file to make; - for standard output")
        ->required();
    pack->add_flag("--force", options->fForce, "Replace the file if it is there");
    pack->callback([options] { Pack(*options); });
}

void AddDiff(CLI::App& block) {
    auto options = std::make_shared<CDiffOptions>();
    CLI::App* diff = block.add_subcommand(
        "diff", "Show how two files differ; the exit status is 1 when they do, else 0");
    diff->add_option("A", options->strFirst, "The first file")->required();
    diff->add_option("B", options->strSecond, "The second file")->required();
    AddFormOptions(*diff, options->form);
    diff->callback([options] { Diff(*options); });
}

}  // namespace

void AddBlockCommands(CLI::App& app) {
    CLI::App* block = app.add_subcommand("block", "Show, make, compare and change session files");
    block->require_subcommand(1);
    AddDump(*block);
    AddPack(*block);
    AddDiff(*block);
    AddGet(*block);
    AddSet(*block);
}
