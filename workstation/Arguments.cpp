#include "workstation/Arguments.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <map>
#include <memory>

#include "platform/FileSystem.h"
#include "tools/HelpFormatter.h"

namespace {

constexpr int kExitUsage = 2;

struct COption {
    const char* szName;
    StepKind kind;
    const char* szValue;  ///< null: none
    const char* szHelp;
};

constexpr COption kOptions[] = {
    {"--plug-in", StepKind::PlugIn, "link|apt|doubler", "the later steps go to this plug-in"},
    {"--capture", StepKind::Capture, "FILE@POSITION",
     "hand over a take (a sound file, or guide, or dub) that begins at a sample of the timeline"},
    {"--guide", StepKind::Guide, nullptr, "press Guide in the APT view"},
    {"--dub", StepKind::Dub, nullptr, "press Dub in the APT view"},
    {"--auto-switch", StepKind::AutoSwitch, "on|off", "turn the APT view's automatic switch"},
    {"--track", StepKind::Track, "NUMBER", "choose a track in the Link view, from 0"},
    {"--render", StepKind::Render, nullptr, "have the host render its selected region"},
    {"--export", StepKind::Export, "FILE", "fetch the host's selected region into a new file"},
    {"--print", StepKind::Print, "TEXT", "have the host print a text"},
    {"--update-count", StepKind::UpdateCount, nullptr, "ask for the host's update count"},
    {"--wait", StepKind::Wait, "SECONDS", "let some time go by"},
    {"--screenshot", StepKind::Screenshot, "FILE.png", "write a picture of the window"},
    {"--picture", StepKind::Picture, "FILE.png", "write a picture of the plug-in's view"},
    {"--quit", StepKind::Quit, nullptr,
     "end, with status 1 if a step was not done or a take waits"},
};

double ToNumber(std::string const& strText, std::string const& strOption) {
    double dNumber = 0;
    if (!CLI::detail::lexical_cast(strText, dNumber)) {
        throw CLI::ValidationError(strOption, "\"" + strText + "\" is not a number");
    }
    return dNumber;
}

CStep MakeStep(COption const& option, std::string const& strValue) {
    const std::string strName = option.szName;
    CStep step{option.kind, strValue, 0};
    if (option.kind == StepKind::Wait || option.kind == StepKind::Track) {
        step.dNumber = ToNumber(strValue, strName);
    }
    if (option.kind == StepKind::AutoSwitch && strValue != "on" && strValue != "off") {
        throw CLI::ValidationError(strName, "is on or off");
    }
    if (option.kind == StepKind::Capture) {
        const std::size_t nAt = strValue.rfind('@');
        if (nAt == std::string::npos) return step;
        step.strText = strValue.substr(0, nAt);
        step.dNumber = ToNumber(strValue.substr(nAt + 1), strName);
    }
    return step;
}

// Each option's values in turn, in the order in which the command line names the options.
std::vector<CStep> ReadSteps(CLI::App const& app,
                             std::map<CLI::Option const*, COption const*> const& known) {
    std::map<CLI::Option const*, std::size_t> taken;
    std::vector<CStep> steps;
    for (CLI::Option const* pOption : app.parse_order()) {
        const auto found = known.find(pOption);
        if (found == known.end()) continue;
        const std::size_t nTaken = taken[pOption]++;
        const bool fHasValue = found->second->szValue != nullptr;
        steps.push_back(
            MakeStep(*found->second, fHasValue ? pOption->results().at(nTaken) : std::string()));
    }
    return steps;
}

// A bundle that was built with this program, or installed with it.
std::string OwnBundle(const char* szProgram, const char* szBundle) {
    namespace fs = std::filesystem;
    const std::string strProgram = FileSystem::ProgramPath();
    const fs::path directory = fs::path(strProgram.empty() ? szProgram : strProgram).parent_path();
    const fs::path built = directory.parent_path() / szBundle;
    std::error_code ignored;
    if (fs::is_directory(built, ignored)) return built.string();
    return (directory / TAVARIN_INSTALLED_BUNDLES / szBundle).lexically_normal().string();
}

}  // namespace

std::optional<CArguments> ReadArguments(int argc, char** argv, int* pnStatus) {
    CLI::App app{
        "Plays an audio workstation and its link plug-in: shows the plug-in's view and sends it "
        "what a workstation sends. Steps are taken in the order given; without --quit the window "
        "stays."};
    app.name("tavarin-workstation");
    app.formatter(std::make_shared<CHelpFormatter>());
    CArguments arguments;
    arguments.strBundle = OwnBundle(argv[0], "TavarinProLink.bundle");
    arguments.strGallery = OwnBundle(argv[0], "TavarinGallery.bundle");
    app.set_version_flag("--version", TAVARIN_VERSION);
    app.add_option("--view", arguments.strView, "the plug-in to show, or all three")
        ->check(CLI::IsMember({"link", "apt", "doubler", "all"}))
        ->capture_default_str();
    app.add_flag("--gallery", arguments.fGallery,
                 "show every control in every state instead of a plug-in");
    app.add_option("--bundle", arguments.strBundle, "path of TavarinProLink.bundle")
        ->check(CLI::ExistingDirectory);
    app.add_option("--scheme", arguments.strScheme,
                   "show these colours, as they are at any time: designer, engineer, a scheme file "
                   "or a JSON file")
        ->type_name("FILE");
    app.add_option("--over", arguments.strSchemeBase, "lay the scheme over this one")
        ->type_name("FILE")
        ->capture_default_str();
    app.add_option("--captures", arguments.strCaptures,
                   "keep captured files in this directory (default: a new one among those of the "
                   "plug-ins)");
    app.add_flag("--force", arguments.fForce,
                 "let --export, --screenshot and --picture replace a file");
    std::map<CLI::Option const*, COption const*> known;
    for (COption const& option : kOptions) {
        CLI::Option* pOption = nullptr;
        if (option.szValue) {
            pOption = app.add_option(option.szName)
                          ->description(option.szHelp)
                          ->type_name(option.szValue)
                          ->expected(1)
                          ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
        } else {
            pOption = app.add_flag(option.szName)->description(option.szHelp);
        }
        known[pOption->group("Steps")] = &option;
    }
    try {
        app.parse(argc, argv);
        arguments.steps = ReadSteps(app, known);
    } catch (CLI::ParseError const& usage) {
        *pnStatus = app.exit(usage) == 0 ? 0 : kExitUsage;
        return std::nullopt;
    }
    return arguments;
}
