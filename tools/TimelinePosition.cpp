#include "tools/TimelinePosition.h"

#include <cmath>
#include <locale>
#include <sstream>

#include "tools/InputOutput.h"
#include "tools/ToolFailure.h"

CTimelinePosition ReadTimelinePosition(std::string const& strOption, std::string const& strText) {
    constexpr double kFarthest = 9.0e15;
    CTimelinePosition position;
    position.fSeconds = strText.ends_with('s');
    const std::string strNumber = strText.substr(0, strText.size() - position.fSeconds);
    std::istringstream stream(strNumber);
    stream.imbue(std::locale::classic());
    const bool fPlain = strNumber.find_first_not_of("0123456789.eE+-") == std::string::npos;
    if (fPlain && stream >> position.dNumber && stream.eof() &&
        std::abs(position.dNumber) <= kFarthest) {
        return position;
    }
    throw CToolFailure(exitTrouble,
                       strOption + " " + Quoted(strText) + " is no place on a timeline",
                       "Write samples, as in 48000, or seconds, as in 2.5s.", "usage");
}
