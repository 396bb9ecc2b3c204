#include "tools/TimecodeCommands.h"

#include <CLI/CLI.hpp>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <locale>
#include <memory>
#include <sstream>
#include <string_view>

#include "tools/InputOutput.h"
#include "tools/ToolFailure.h"
#include "utils/SMPTE.h"

namespace {

struct CTimecodeOptions {
    std::string strPosition;
    std::string strSampleRate = "48000";
    std::string strFrameRate = "25";
    bool fDropFrame = false;
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
                               " is no positive number; write it as 29.97 or 30000/1001");
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
                                   "in 01:02:03:04");
        if (end == std::string_view::npos) break;
        rest.remove_prefix(end + 1);
    }
    if (count != fields.size() - 1)
        throw CToolFailure(exitTrouble,
                           "the time code " + Quoted(text) +
                               " does not have four fields; write hours:minutes:seconds:frames");
    return {fields[0], fields[1], fields[2], fields[3], 0};
}

// What the user wrote, in samples: a time code has colons, frames end in "f".
double ReadPosition(std::string const& text, CRates const& rates) {
    if (text.find_first_of(":;") != std::string::npos) {
        const SMPTETimeCode code = ReadTimeCode(text);
        return SMPTEToSamples(rates.dSampleRate, rates.dFrameRate, rates.fDropFrame, 0, &code);
    }
    const std::string_view digits = text;
    std::int64_t frames = 0;
    if (!text.empty() && text.back() == 'f' &&
        ReadNumber(digits.substr(0, digits.size() - 1), frames))
        return PTFramesToSamples(rates.dSampleRate, rates.dFrameRate, frames);
    double samples = 0;
    if (!ReadNumber(digits, samples) || !std::isfinite(samples))
        throw CToolFailure(exitTrouble,
                           "the position " + Quoted(text) +
                               " is neither samples (96000), frames (50f) nor a time code "
                               "(00:00:02:00)");
    return samples;
}

std::string Number(double number) {
    std::array<char, 400> text;
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed).ptr;
    return {text.data(), end};
}

void Convert(CTimecodeOptions const& options) {
    const CRates rates{ReadRate("sample rate", options.strSampleRate),
                       ReadRate("frame rate", options.strFrameRate), options.fDropFrame};
    const double samples = ReadPosition(options.strPosition, rates);
    // A position between two samples is first reached by the later one.
    const double whole = std::ceil(samples);
    SMPTETimeCode code{};
    SampleToSMPTE(rates.dSampleRate, rates.dFrameRate, rates.fDropFrame, 0, whole, &code);
    char text[64];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d%c%02d", code.nHours, code.nMinutes,
                  code.nSeconds, rates.fDropFrame ? ';' : ':', code.nFrames);
    std::cout << "samples   " << Number(samples) << "\nframes    "
              << SamplesToFrames(rates.dSampleRate, rates.dFrameRate, rates.fDropFrame, whole)
              << "\ntimecode  " << text << '\n';
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
    timecode->callback([options] { Convert(*options); });
}
