#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "colours/SchemeProposal.h"
#include "colours/SchemeRules.h"
#include "tools/InputOutput.h"
#include "tools/ToolFailure.h"
#include "tools/ToolMain.h"
#include "tools/scheme/SchemeDiff.h"
#include "tools/scheme/SchemeJson.h"
#include "tools/scheme/SchemePicture.h"
#include "tools/scheme/SchemeSource.h"
#include "tools/scheme/SchemeText.h"

namespace {

constexpr const char* szSourceHelp =
    "'designer', 'engineer', a scheme file or a JSON file made by 'export'";

struct CSource {
    std::string strName;
    std::string strBase;

    void AddTo(CLI::App& command) {
        command.add_option("scheme", strName, szSourceHelp)->required();
        command.add_option("--over", strBase, "lay the scheme over this one first");
    }

    void Read(CComponentsColors& scheme) const {
        if (!strBase.empty()) ReadScheme(strBase, scheme);
        ReadScheme(strName, scheme);
    }
};

struct CArguments {
    CSource source;
    std::string strSecond;
    std::string strOutput = "-";
    bool fAll = false;
    bool fHex = false;
    bool fForce = false;

    Replace MayReplace() const { return fForce ? Replace::Yes : Replace::No; }
};

using Arguments = std::shared_ptr<CArguments>;

void AddForce(CLI::App& command, Arguments const& arguments) {
    command.add_flag("--force", arguments->fForce, "replace the file if it is there");
}

void AddOutput(CLI::App& command, Arguments const& arguments) {
    command.add_option("-o,--output", arguments->strOutput,
                       "file to write (default: - , the terminal)");
    AddForce(command, arguments);
}

void AddShow(CLI::App& app) {
    auto arguments = std::make_shared<CArguments>();
    CLI::App* command = app.add_subcommand("show", "draw a picture of a whole scheme (SVG)");
    arguments->source.AddTo(*command);
    AddOutput(*command, arguments);
    command->callback([arguments] {
        CComponentsColors base;
        CComponentsColors scheme;
        CSource const& source = arguments->source;
        source.Read(scheme);
        if (!source.strBase.empty()) ReadScheme(source.strBase, base);
        WriteOutput(arguments->strOutput,
                    DrawScheme(scheme, source.strName, source.strBase.empty() ? nullptr : &base),
                    arguments->MayReplace());
    });
}

void AddExport(CLI::App& app) {
    auto arguments = std::make_shared<CArguments>();
    CLI::App* command = app.add_subcommand("export", "write a scheme as JSON");
    arguments->source.AddTo(*command);
    command->add_flag("--hex", arguments->fHex,
                      "write every colour as #rrggbb, to the nearest 255th");
    AddOutput(*command, arguments);
    command->callback([arguments] {
        CComponentsColors scheme;
        arguments->source.Read(scheme);
        const Channels channels = arguments->fHex ? Channels::Rounded : Channels::Exact;
        WriteOutput(arguments->strOutput, SchemeToJson(scheme, channels), arguments->MayReplace());
    });
}

void AddImport(CLI::App& app) {
    auto arguments = std::make_shared<CArguments>();
    CLI::App* command = app.add_subcommand("import", "make a scheme file from JSON");
    arguments->source.AddTo(*command);
    command->add_option("-o,--output", arguments->strOutput, "scheme file to write")->required();
    AddForce(*command, arguments);
    command->callback([arguments] {
        CComponentsColors scheme;
        arguments->source.Read(scheme);
        RequireRoomFor(arguments->strOutput, arguments->MayReplace());
        WriteSchemeFile(arguments->strOutput, scheme);
    });
}

void AddDiff(CLI::App& app) {
    auto arguments = std::make_shared<CArguments>();
    CLI::App* command = app.add_subcommand(
        "diff", "compare two schemes: exit status 0 when they are alike, else 1");
    command->add_option("first", arguments->source.strName, szSourceHelp)->required();
    command->add_option("second", arguments->strSecond, szSourceHelp)->required();
    command->callback([arguments] {
        CComponentsColors first;
        CComponentsColors second;
        arguments->source.Read(first);
        ReadScheme(arguments->strSecond, second);
        const auto lines = DiffSchemes(first, second);
        for (std::string const& line : lines) std::cout << line << '\n';
        if (!lines.empty()) throw CLI::RuntimeError(exitNegative);
    });
}

const char* VerdictText(Verdict verdict) {
    switch (verdict) {
        case Verdict::kept:
            return "kept  ";
        case Verdict::broken:
            return "BROKEN";
        case Verdict::given:
            return "given ";
        case Verdict::absent:
            return "absent";
    }
    return "";
}

// What would mend it, as far as one colour can.
std::string Advice(CJudgement const& judgement, CComponentsColors const& scheme) {
    if (judgement.verdict == Verdict::given) return "; the palette is prescribed so";
    if (judgement.verdict != Verdict::broken) return "";
    const auto proposal = ProposeColour(judgement.rule, scheme);
    if (!proposal) return "; no one colour keeps this";
    return "; try " + CodeText(proposal->code) + ' ' + ExactHexText(proposal->rgba) +
           (proposal->fPlain ? "" : " instead of its gradient") +
           (proposal->fAlone ? ", which breaks another rule" : "");
}

void AddCheck(CLI::App& app) {
    auto arguments = std::make_shared<CArguments>();
    CLI::App* command = app.add_subcommand(
        "check", "judge whether text is readable, edges are visible and states differ");
    arguments->source.AddTo(*command);
    command->add_flag("--all", arguments->fAll,
                      "list every rule, not only those that are not kept");
    command->callback([arguments] {
        CComponentsColors scheme;
        arguments->source.Read(scheme);
        std::size_t nJudged = 0;
        std::size_t nBroken = 0;
        for (CJudgement const& judgement : JudgeScheme(scheme)) {
            nJudged += judgement.verdict != Verdict::absent;
            nBroken += judgement.verdict == Verdict::broken;
            const bool fFault =
                judgement.verdict == Verdict::broken || judgement.verdict == Verdict::given;
            if (arguments->fAll || fFault) {
                std::cout << VerdictText(judgement.verdict) << ' ' << Describe(judgement)
                          << Advice(judgement, scheme) << '\n';
            }
        }
        std::cout << nJudged << " rules judged, " << nBroken << " broken\n";
        if (nBroken != 0) throw CLI::RuntimeError(exitNegative);
    });
}

}  // namespace

int main(int argc, char** argv) {
    return RunTool("tavarin-scheme", argc, argv, [](CLI::App& app) {
        app.description("Colour schemes: pictures, JSON, differences and judgement.");
        AddShow(app);
        AddExport(app);
        AddImport(app);
        AddDiff(app);
        AddCheck(app);
    });
}
