#include "tools/BlockPath.h"

#include <charconv>
#include <span>
#include <string_view>

#include "tools/InputOutput.h"
#include "tools/ToolFailure.h"
#include "utils/ParameterTree.h"

namespace {

class CPathReader {
public:
    explicit CPathReader(std::string const& strPath) : m_strPath(strPath), m_rest(strPath) {}

    std::vector<CBlockStep> Read() {
        std::vector<CBlockStep> steps;
        Take('/');
        do {
            CBlockStep step;
            step.strName = Take('"') ? ReadQuoted() : ReadPlain();
            if (Take('[')) step.nPlace = ReadPlace();
            steps.push_back(std::move(step));
        } while (Take('/'));
        if (!m_rest.empty()) Fail();
        return steps;
    }

private:
    [[noreturn]] void Fail() const {
        throw CToolFailure(exitTrouble, Quoted(m_strPath) + " is no path to an entry",
                           "Write names with / between them, as in Take/Name or Code[1]/Mod.",
                           "usage");
    }

    bool Take(char c) {
        if (!m_rest.starts_with(c)) return false;
        m_rest.remove_prefix(1);
        return true;
    }

    char Next() {
        if (m_rest.empty()) Fail();
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        return c;
    }

    std::string ReadPlain() {
        const std::string_view name = m_rest.substr(0, m_rest.find_first_of("/[\""));
        if (name.empty()) Fail();
        m_rest.remove_prefix(name.size());
        return std::string(name);
    }

    std::string ReadQuoted() {
        std::string strName;
        for (char c = Next(); c != '"'; c = Next()) strName += c == '\\' ? ReadEscape() : c;
        return strName;
    }

    char ReadEscape() {
        if (!Take('x')) return Next();
        unsigned nByte = 0;
        const std::string_view digits = m_rest.substr(0, 2);
        const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), nByte, 16);
        if (digits.size() != 2 || read.ptr != digits.data() + 2) Fail();
        m_rest.remove_prefix(2);
        return static_cast<char>(nByte);
    }

    std::size_t ReadPlace() {
        std::size_t nPlace = 0;
        const auto read = std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), nPlace);
        if (read.ec != std::errc()) Fail();
        m_rest.remove_prefix(static_cast<std::size_t>(read.ptr - m_rest.data()));
        if (!Take(']')) Fail();
        return nPlace;
    }

    std::string const& m_strPath;
    std::string_view m_rest;
};

CParameter* FindIn(CParameterBlock const& block, CBlockStep const& step) {
    std::size_t nPlace = 0;
    CParameterRange range(block);
    while (CParameter* const pParameter = range.Next())
        if (pParameter->name == step.strName && nPlace++ == step.nPlace) return pParameter;
    return nullptr;
}

}  // namespace

std::vector<CBlockStep> ReadBlockPath(std::string const& strPath) {
    return CPathReader(strPath).Read();
}

CParameterBlock* FindBlockOf(CParameterBlock& root, std::vector<CBlockStep> const& steps) {
    CParameterBlock* pBlock = &root;
    for (CBlockStep const& step : std::span(steps).first(steps.size() - 1)) {
        pBlock = AsBlock(FindIn(*pBlock, step));
        if (pBlock == nullptr) return nullptr;
    }
    return pBlock;
}

CParameter* FindEntry(CParameterBlock& root, std::vector<CBlockStep> const& steps) {
    CParameterBlock const* const pBlock = FindBlockOf(root, steps);
    return pBlock == nullptr ? nullptr : FindIn(*pBlock, steps.back());
}
