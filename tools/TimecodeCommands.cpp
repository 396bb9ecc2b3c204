#include "tools/TimecodeCommands.h"

#include <CLI/CLI.hpp>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <locale>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string_view>
#include <vector>

#include "tools/InputOutput.h"
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

template <typename Integer>
bool ReadNumber(std::string_view text, Integer& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

// Not every C++ library has std::from_chars for these.
bool ReadNumber(std::string_view text, double& number) {
    if (text.empty() || text.find_first_not_of("0123456789.eE+-") != std::string_view::npos) {
        return false;
    }
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    return text.front() != '+' && stream >> number && stream.eof();
}

// A number or a fraction such as 30000/1001.
double ReadRate(const char* what, std::string const& text) {
    const std::size_t slash = text.find('/');
    const std::string_view whole = text;
    double numerator = 0, denominator = 1;
    const bool read =
        ReadNumber(whole.substr(0, slash), numerator) &&
        (slash == std::string::npos || ReadNumber(whole.substr(slash + 1), denominator));
    const double rate = numerator / denominator;
    if (!read || !std::isfinite(rate) || rate <= 0)
        throw CToolFailure(exitTrouble,
                           std::string("the ") + what + " " + Quoted(text) +
                               " is no positive number; write it as 29.97 or 30000/1001",
                           "", "usage");
    return rate;
}

SMPTETimeCode ReadTimeCode(std::string const& text) {
    constexpr std::array<std::int16_t, 4> largest{24, 60, 60, 32767};
    std::array<std::int16_t, 4> fields{};
    std::string_view rest = text;
    std::size_t count = 0;
    for (; count < fields.size(); ++count) {
        const std::size_t end = rest.find_first_of(":;");
        std::int16_t& field = fields[count];
        if (!ReadNumber(rest.substr(0, end), field) || field < 0 || field > largest[count])
            throw CToolFailure(exitTrouble,
                               "the time code " + Quoted(text) +
                                   " is out of range; at most 24 hours, 60 minutes, 60 seconds, as "
                                   "in 01:02:03:04",
                               "", "usage");
        if (end == std::string_view::npos) break;
        rest.remove_prefix(end + 1);
    }
    if (count != fields.size() - 1)
        throw CToolFailure(exitTrouble,
                           "the time code " + Quoted(text) +
                               " does not have four fields; write hours:minutes:seconds:frames",
                           "", "usage");
    return {fields[0], fields[1], fields[2], fields[3], 0};
}

// What the user wrote.
struct CPosition {
    double dSamples = 0;  ///< as the link's functions have it
    std::optional<std::int64_t> nFrame;
    std::optional<CTimeLabel> label;
};

// A time code has colons, frames end in "f".
CPosition ReadPosition(std::string const& text, CRates const& rates) {
    if (text.find_first_of(":;") != std::string::npos) {
        const SMPTETimeCode code = ReadTimeCode(text);
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
