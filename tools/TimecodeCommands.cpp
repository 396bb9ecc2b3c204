#include "tools/TimecodeCommands.h"

#include <CLI/CLI.hpp>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <vector>

#include "tools/InputOutput.h"
#include "tools/TimelinePosition.h"
#include "tools/ToolFailure.h"
#include "tools/UsualTimecode.h"
#include "utils/SMPTE.h"

namespace {

using nlohmann::json;

struct CTimecodeOptions {
    std::string strPosition;
    std::string strSampleRate = "48000";
    std::string strFrameRate = "25";
    bool fDropFrame = false;
    bool fJson = false;
};

struct CRates {
    double dSampleRate;
    double dFrameRate;
    bool fDropFrame;
};

// What the user wrote.
struct CPosition {
    double dSamples = 0;  ///< as the link's functions have it
    std::optional<std::int64_t> nFrame;
    std::optional<CTimeLabel> label;
};

// A time code has colons, frames end in "f".
CPosition ReadPosition(std::string const& text, CRates const& rates) {
    if (text.find_first_of(":;") != std::string::npos) {
        const CTimeLabel label = ReadTimeLabel(text);
        const SMPTETimeCode code{
            static_cast<std::int16_t>(label.nHours), static_cast<std::int16_t>(label.nMinutes),
            static_cast<std::int16_t>(label.nSeconds), static_cast<std::int16_t>(label.nFrames), 0};
        return {SMPTEToSamples(rates.dSampleRate, rates.dFrameRate, rates.fDropFrame, 0, &code),
                std::nullopt, CTimeLabel{code.nHours, code.nMinutes, code.nSeconds, code.nFrames}};
    }
    const std::string_view digits = text;
    std::int64_t frames = 0;
    if (!text.empty() && text.back() == 'f' &&
        ReadNumber(digits.substr(0, digits.size() - 1), frames))
        return {PTFramesToSamples(rates.dSampleRate, rates.dFrameRate, frames), frames,
                std::nullopt};
    double samples = 0;
    if (!ReadNumber(digits, samples) || !std::isfinite(samples))
        throw CToolFailure(exitTrouble,
                           "the position " + Quoted(text) +
                               " is neither samples (96000), frames (50f) nor a time code "
                               "(00:00:02:00)",
                           "", "usage");
    return {samples, std::nullopt, std::nullopt};
}

// Beyond, not every sample is a number of its own.
void RequireReach(double dSamples) {
    constexpr double kFarthest = 9.0e15;
    if (std::abs(dSamples) <= kFarthest) return;
    throw CToolFailure(exitTrouble, "the position lies farther out than any sound",
                       "Samples are counted to 9,000,000,000,000,000.", "usage");
}

std::string Number(double number) {
    std::array<char, 64> text;
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed).ptr;
    return {text.data(), end};
}

// One position in three ways to count.
struct CCount {
    double dSamples;
    std::int64_t nFrames;
    std::string strLabel;
};

// A position between two samples is first reached by the later one.
CCount LinkCount(CPosition const& position, CRates const& rates) {
    const double whole = std::ceil(position.dSamples);
    SMPTETimeCode code{};
    SampleToSMPTE(rates.dSampleRate, rates.dFrameRate, rates.fDropFrame, 0, whole, &code);
    char text[64];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d%c%02d", code.nHours, code.nMinutes,
                  code.nSeconds, rates.fDropFrame ? ';' : ':', code.nFrames);
    return {position.dSamples,
            SamplesToFrames(rates.dSampleRate, rates.dFrameRate, rates.fDropFrame, whole), text};
}

CCount UsualCount(CPosition const& position, CRates const& rates, CCount const& link) {
    const CFrameRate rate = UsualFrameRate(rates.dFrameRate);
    if (rate.nLabels == 0) return link;
    const bool fDrop = rates.fDropFrame && rate.nDropped > 0;
    CCount usual = link;
    usual.nFrames = position.label ? FrameOfLabel(rate, fDrop, *position.label)
                    : position.nFrame
                        ? *position.nFrame
                        : FrameAtSample(rate, rates.dSampleRate, std::ceil(position.dSamples));
    if (position.label || position.nFrame)
        usual.dSamples = SampleOfFrame(rate, rates.dSampleRate, usual.nFrames);
    usual.strLabel = LabelOfFrame(rate, fDrop, usual.nFrames);
    return usual;
}

bool IsSamePlace(double dOne, double dOther) {
    return std::abs(dOne - dOther) < 1;
}

bool IsSame(CCount const& one, CCount const& other) {
    return IsSamePlace(one.dSamples, other.dSamples) && one.nFrames == other.nFrames &&
           one.strLabel == other.strLabel;
}

// Why what is printed may not be what was meant; nothing where it is.
std::vector<std::string> Warnings(CTimecodeOptions const& options, CPosition const& position,
                                  CRates const& rates, bool fSame) {
    const CFrameRate rate = UsualFrameRate(rates.dFrameRate);
    std::vector<std::string> warnings;
    if (position.dSamples < 0)
        warnings.emplace_back(
            "the link has no time code before zero: its function counts on from the largest "
            "number");
    if (rates.fDropFrame && rate.nDropped != 2)
        warnings.emplace_back(
            "the link counts drop-frame at 30 frames per second, whatever the rate" +
            std::string(rate.nDropped == 0 ? "; there is none at " + options.strFrameRate : ""));
    if (position.label && rate.nLabels > 0 &&
        !LabelExists(rate, rates.fDropFrame && rate.nDropped > 0, *position.label))
        warnings.push_back("no clock shows " + Quoted(options.strPosition) +
                           " at this rate; it is counted on from those that are shown");
    if (warnings.empty() && !fSame)
        warnings.emplace_back(
            "the link's two functions count by rules of their own here, and do not bring back what "
            "people mean");
    return warnings;
}

json AsJson(CCount const& count) {
    return {{"samples", count.dSamples}, {"frames", count.nFrames}, {"timecode", count.strLabel}};
}

void PrintLine(const char* szName, std::string const& strLink, std::string const& strUsual,
               bool fSame) {
    std::cout << szName << strLink << (fSame ? "" : "  (people count " + strUsual + ")") << '\n';
}

void PrintCounts(CCount const& link, CCount const& usual) {
    PrintLine("samples   ", Number(link.dSamples), Number(usual.dSamples),
              IsSamePlace(link.dSamples, usual.dSamples));
    PrintLine("frames    ", std::to_string(link.nFrames), std::to_string(usual.nFrames),
              link.nFrames == usual.nFrames);
    PrintLine("timecode  ", link.strLabel, usual.strLabel, link.strLabel == usual.strLabel);
}

void Convert(CTimecodeOptions const& options) {
    const CRates rates{ReadRate("sample rate", options.strSampleRate),
                       ReadRate("frame rate", options.strFrameRate), options.fDropFrame};
    const CPosition position = ReadPosition(options.strPosition, rates);
    RequireReach(position.dSamples);
    const CCount link = LinkCount(position, rates);
    const CCount usual = UsualCount(position, rates, link);
    RequireReach(usual.dSamples);
    const std::vector<std::string> warnings =
        Warnings(options, position, rates, IsSame(link, usual));
    if (options.fJson) {
        json all = AsJson(link);
        all["usual"] = AsJson(usual);
        all["warnings"] = warnings;
        std::cout << all.dump(2, ' ', false, json::error_handler_t::replace) << '\n';
        return;
    }
    PrintCounts(link, usual);
    std::cout.flush();
    for (std::string const& warning : warnings) std::cerr << "tavarin: " << warning << '\n';
}

}  // namespace

void AddTimecodeCommands(CLI::App& app) {
    auto options = std::make_shared<CTimecodeOptions>();
    CLI::App* timecode = app.add_subcommand(
        "timecode", "Show a position as samples, frames and SMPTE time code, as the link counts");
    timecode
        ->add_option("POSITION", options->strPosition,
                     "Samples (96000), frames (50f) or a time code (00:00:02:00)")
        ->required();
    timecode->add_option("-r,--rate", options->strSampleRate, "Samples per second")
        ->capture_default_str();
    timecode
        ->add_option("-f,--fps", options->strFrameRate, "Frames per second, as 29.97 or 30000/1001")
        ->capture_default_str();
    timecode->add_flag("-d,--drop", options->fDropFrame, "Drop-frame counting");
    timecode->add_flag("--json", options->fJson, "Print JSON");
    timecode->callback([options] { Convert(*options); });
}
