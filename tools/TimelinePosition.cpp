#include "tools/TimelinePosition.h"

#include <array>
#include <charconv>
#include <cmath>
#include <locale>
#include <sstream>

#include "tools/InputOutput.h"
#include "tools/ToolFailure.h"

namespace {

[[noreturn]] void Refuse(std::string const& strError, std::string const& strAdvice = "") {
    throw CToolFailure(exitTrouble, strError, strAdvice, "usage");
}

// In seconds, counted from the start of the timeline.
double ReadTimeCode(std::string const& strOption, std::string const& strText,
                    std::string const& strFrameRate) {
    const CFrameRate rate = UsualFrameRate(ReadRate("frame rate", strFrameRate));
    const CTimeLabel label = ReadTimeLabel(strText);
    const bool fDrop = strText.find(';') != std::string::npos;
    if (fDrop && rate.nDropped == 0)
        Refuse(strOption + " " + Quoted(strText) + " is drop-frame, which " + strFrameRate +
                   " frames per second do not have",
               "Say --fps 29.97 or write : before the frames.");
    if (!LabelExists(rate, fDrop, label))
        Refuse(strOption + " " + Quoted(strText) + " is shown by no clock at " + strFrameRate +
                   " frames per second",
               "Say with --fps how many there are.");
    return static_cast<double>(FrameOfLabel(rate, fDrop, label)) / rate.dPerSecond;
}

}  // namespace

// Not every C++ library has std::from_chars for these.
bool ReadNumber(std::string_view text, double& number) {
    if (text.empty() || text.find_first_not_of("0123456789.eE+-") != std::string_view::npos) {
        return false;
    }
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    return text.front() != '+' && stream >> number && stream.eof();
}

bool ReadNumber(std::string_view text, std::int64_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

double ReadRate(const char* szWhat, std::string const& strText) {
    const std::size_t slash = strText.find('/');
    const std::string_view whole = strText;
    double numerator = 0, denominator = 1;
    const bool read =
        ReadNumber(whole.substr(0, slash), numerator) &&
        (slash == std::string::npos || ReadNumber(whole.substr(slash + 1), denominator));
    const double rate = numerator / denominator;
    if (!read || !std::isfinite(rate) || rate <= 0)
        Refuse(std::string("the ") + szWhat + " " + Quoted(strText) +
               " is no positive number; write it as 29.97 or 30000/1001");
    return rate;
}

CTimeLabel ReadTimeLabel(std::string const& strText) {
    constexpr std::array<std::int64_t, 4> largest{24, 60, 60, 32767};
    std::array<std::int64_t, 4> fields{};
    std::string_view rest = strText;
    std::size_t count = 0;
    for (; count < fields.size(); ++count) {
        const std::size_t end = rest.find_first_of(":;");
        std::int64_t& field = fields[count];
        if (!ReadNumber(rest.substr(0, end), field) || field < 0 || field > largest[count])
            Refuse("the time code " + Quoted(strText) +
                   " is out of range; at most 24 hours, 60 minutes, 60 seconds, as in "
                   "01:02:03:04");
        if (end == std::string_view::npos) break;
        rest.remove_prefix(end + 1);
    }
    if (count != fields.size() - 1)
        Refuse("the time code " + Quoted(strText) +
               " does not have four fields; write hours:minutes:seconds:frames");
    return {fields[0], fields[1], fields[2], fields[3]};
}

CTimelinePosition ReadTimelinePosition(std::string const& strOption, std::string const& strText,
                                       std::string const& strFrameRate) {
    if (strText.find_first_of(":;") != std::string::npos)
        return {ReadTimeCode(strOption, strText, strFrameRate), true};
    constexpr double kFarthest = 9.0e15;
    CTimelinePosition position;
    position.fSeconds = strText.ends_with('s');
    const std::string_view number = strText;
    if (ReadNumber(number.substr(0, number.size() - position.fSeconds), position.dNumber) &&
        std::abs(position.dNumber) <= kFarthest)
        return position;
    Refuse(strOption + " " + Quoted(strText) + " is no place on a timeline",
           "Write samples, as in 48000, seconds, as in 2.5s, or a time code, as in 01:00:00:00.");
}
