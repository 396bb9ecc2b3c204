#include "tools/ToolFailure.h"

#include <iostream>

void CToolFailure::Report(std::string const& strProgram) const {
    std::cout.flush();
    std::cerr << strProgram << ": " << what() << '\n';
    if (m_strAdvice.empty()) return;
    std::cerr << std::string(strProgram.size() + 2, ' ') << m_strAdvice << '\n';
}
