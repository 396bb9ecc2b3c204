#include "tools/HelpFormatter.h"

#include <sstream>

namespace {

constexpr std::size_t kColumns = 80;

// Breaks a line at its blanks. What goes on below an indented one stands where descriptions begin.
void WriteWrapped(std::ostream& out, std::string strLine, std::size_t nDescription) {
    const std::string strIndent(strLine.starts_with(' ') ? nDescription : 0, ' ');
    while (strLine.size() > kColumns) {
        const std::size_t nBreak = strLine.rfind(' ', kColumns);
        const std::size_t nFirst = strLine.find_first_not_of(' ');
        if (nBreak == std::string::npos || nBreak <= nFirst) break;
        out << strLine.substr(0, strLine.find_last_not_of(' ', nBreak) + 1) << '\n';
        strLine = strIndent + strLine.substr(nBreak + 1);
    }
    out << strLine << '\n';
}

}  // namespace

std::string CHelpFormatter::make_help(CLI::App const* pApp, std::string strName,
                                      CLI::AppFormatMode mode) const {
    std::istringstream lines(Formatter::make_help(pApp, std::move(strName), mode));
    std::ostringstream out;
    for (std::string strLine; std::getline(lines, strLine);)
        WriteWrapped(out, std::move(strLine), get_column_width());
    return out.str();
}
