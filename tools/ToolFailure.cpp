#include "tools/ToolFailure.h"

#include <iostream>
#include <nlohmann/json.hpp>

std::string CToolFailure::Code() const {
    if (m_szCode != nullptr) return m_szCode;
    return m_status == exitNegative ? "no" : "trouble";
}

void CToolFailure::Report(std::string const& strProgram, bool fJson) const {
    std::cout.flush();
    if (fJson) {
        const nlohmann::json failure{{"code", Code()}, {"error", what()}, {"advice", m_strAdvice}};
        std::cerr << failure.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
        return;
    }
    std::cerr << strProgram << ": " << what() << '\n';
    if (m_strAdvice.empty()) return;
    std::cerr << std::string(strProgram.size() + 2, ' ') << m_strAdvice << '\n';
}
