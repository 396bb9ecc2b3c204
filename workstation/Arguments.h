#pragma once

#include <optional>
#include <string>
#include <vector>

/// What a workstation and its user do with a plug-in, one after the other.
enum class StepKind {
    PlugIn,       ///< the later steps go to the plug-in named by the text
    Capture,      ///< hand over a take: a file, or the name of a built-in one, at a position
    Guide,        ///< press Guide in the APT view
    Dub,          ///< press Dub in the APT view
    AutoSwitch,   ///< turn the APT view's automatic switch "on" or "off"
    Track,        ///< choose the track at a position in the Link view
    Render,       ///< have the host render its selected region
    Export,       ///< fetch the host's selected region into a file; empty: leave it where it is
    Print,        ///< have the host print a text
    UpdateCount,  ///< ask for the host's update count
    Wait,         ///< let so many seconds go by
    Screenshot,   ///< write a picture of the window to a PNG file
    Picture,      ///< write a picture of the plug-in's view to a PNG file
    Quit
};

struct CStep {
    StepKind kind;
    std::string strText;
    double dNumber = 0;
};

struct CArguments {
    std::string strView = "apt";  ///< "link", "apt", "doubler" or "all"
    bool fGallery = false;        ///< show all controls instead of a plug-in
    std::string strBundle;        ///< path of the bundle
    std::string strGallery;       ///< path of the bundle with the gallery
    std::string strScheme;        ///< the colours to show: a palette or a file; empty: Designer
    std::string strSchemeBase = "designer";  ///< what they are laid over
    std::string strCaptures;                 ///< directory for captured files; empty: a new one
    bool fForce = false;                     ///< what is written may replace a file
    std::vector<CStep> steps;                ///< in the order of the command line
};

/// Reads a command line. Nothing comes back when the program has to end at once, with the status
/// that is then in `*pnStatus`: after the help, or after a complaint on standard error.
std::optional<CArguments> ReadArguments(int argc, char** argv, int* pnStatus);
