#include "host/PatternMatcher.h"

#include <cctype>
#include <cstring>
#include <stdexcept>

namespace {

constexpr std::size_t kStepsPerQuestion = 4096;
constexpr int kMaxDepth = 200;

[[noreturn]] void Malformed(char const* pszReason) {
    throw std::invalid_argument(pszReason);
}

/// The characters of a class letter such as the `a` of `%a`; any other character is itself.
CPattern::CSet ClassSet(unsigned char chClass) {
    struct CClass {
        char chLetter;
        int (*pTest)(int);
    };
    static constexpr CClass kClasses[] = {
        {'a', std::isalpha}, {'c', std::iscntrl}, {'d', std::isdigit}, {'g', std::isgraph},
        {'l', std::islower}, {'p', std::ispunct}, {'s', std::isspace}, {'u', std::isupper},
        {'w', std::isalnum}, {'x', std::isxdigit}};
    CPattern::CSet set;
    for (CClass const& entry : kClasses) {
        if (std::tolower(chClass) != entry.chLetter) continue;
        for (int ch = 0; ch < 256; ++ch) set[static_cast<std::size_t>(ch)] = entry.pTest(ch) != 0;
        return std::isupper(chClass) ? ~set : set;
    }
    set.set(chClass);
    return set;
}

/// Reads the set that starts at the `[` and leaves the place behind its `]`.
CPattern::CSet ReadSet(std::string_view pattern, std::size_t& nAt) {
    auto need = [&](std::size_t n) {
        if (n >= pattern.size()) Malformed("malformed pattern (missing ']')");
        return static_cast<unsigned char>(pattern[n]);
    };
    CPattern::CSet set;
    bool const fInverted = need(++nAt) == '^';
    if (fInverted) ++nAt;
    for (bool fFirst = true; fFirst || need(nAt) != ']'; fFirst = false) {
        unsigned char const ch = need(nAt);
        if (ch == '%') {
            set |= ClassSet(need(nAt + 1));
            nAt += 2;
            continue;
        }
        bool const fRange =
            nAt + 2 < pattern.size() && pattern[nAt + 1] == '-' && pattern[nAt + 2] != ']';
        unsigned char const chLast = fRange ? need(nAt + 2) : ch;
        for (unsigned n = ch; n <= chLast; ++n) set.set(n);
        nAt += fRange ? 3 : 1;
    }
    ++nAt;
    return fInverted ? ~set : set;
}

CPattern::Repeat ReadRepeat(std::string_view pattern, std::size_t& nAt) {
    if (nAt >= pattern.size()) return CPattern::Repeat::Once;
    ++nAt;
    switch (pattern[nAt - 1]) {
        case '*':
            return CPattern::Repeat::Greedy;
        case '+':
            return CPattern::Repeat::GreedyOnce;
        case '-':
            return CPattern::Repeat::Lazy;
        case '?':
            return CPattern::Repeat::Optional;
        default:
            break;
    }
    --nAt;
    return CPattern::Repeat::Once;
}

}  // namespace

CPattern::CPattern(std::string_view pattern, bool fAnchors) {
    if (pattern.size() > kMaxLength) Malformed("pattern too long");
    m_fAnchored = fAnchors && pattern.starts_with('^');
    Parse(pattern.substr(m_fAnchored ? 1 : 0));
    if (!m_Open.empty()) Malformed("unfinished capture");
}

void CPattern::Parse(std::string_view pattern) {
    for (std::size_t nAt = 0; nAt < pattern.size();) {
        if (pattern[nAt] == '(') {
            OpenCapture(pattern, nAt);
        } else if (pattern[nAt] == ')') {
            CloseCapture();
            ++nAt;
        } else if (pattern[nAt] == '$' && nAt + 1 == pattern.size()) {
            m_Items.push_back({.m_Kind = ItemKind::End});
            ++nAt;
        } else if (pattern[nAt] == '%') {
            ParseEscape(pattern, nAt);
        } else {
            ParseSingle(pattern, nAt);
        }
    }
}

void CPattern::OpenCapture(std::string_view pattern, std::size_t& nAt) {
    if (m_nCaptures == kMaxCaptures) Malformed("too many captures");
    bool const fPosition = pattern.substr(nAt).starts_with("()");
    std::size_t const nCapture = m_nCaptures++;
    m_Items.push_back(
        {.m_Kind = fPosition ? ItemKind::PositionCapture : ItemKind::Open, .m_nCapture = nCapture});
    m_Closed[nCapture] = fPosition;
    if (!fPosition) m_Open.push_back(nCapture);
    nAt += fPosition ? 2 : 1;
}

void CPattern::CloseCapture() {
    if (m_Open.empty()) Malformed("invalid pattern capture");
    m_Items.push_back({.m_Kind = ItemKind::Close, .m_nCapture = m_Open.back()});
    m_Closed[m_Open.back()] = true;
    m_Open.pop_back();
}

void CPattern::ParseEscape(std::string_view pattern, std::size_t& nAt) {
    if (nAt + 1 >= pattern.size()) Malformed("malformed pattern (ends with '%')");
    char const ch = pattern[nAt + 1];
    if (ch == 'b') {
        if (nAt + 3 >= pattern.size()) Malformed("missing arguments to '%b'");
        m_Items.push_back({.m_Kind = ItemKind::Balance,
                           .m_chOpen = static_cast<unsigned char>(pattern[nAt + 2]),
                           .m_chClose = static_cast<unsigned char>(pattern[nAt + 3])});
        nAt += 4;
    } else if (ch == 'f') {
        nAt += 2;
        if (nAt >= pattern.size() || pattern[nAt] != '[')
            Malformed("missing '[' after '%f' in pattern");
        m_Items.push_back({.m_Kind = ItemKind::Frontier, .m_Set = ReadSet(pattern, nAt)});
    } else if (ch >= '0' && ch <= '9') {
        auto const nCapture = static_cast<std::size_t>(ch - '1');
        if (ch == '0' || nCapture >= m_nCaptures || !m_Closed[nCapture])
            Malformed("invalid capture index in pattern");
        m_Items.push_back({.m_Kind = ItemKind::BackReference, .m_nCapture = nCapture});
        nAt += 2;
    } else {
        ParseSingle(pattern, nAt);
    }
}

void CPattern::ParseSingle(std::string_view pattern, std::size_t& nAt) {
    CItem item;
    if (pattern[nAt] == '[') {
        item.m_Set = ReadSet(pattern, nAt);
    } else if (pattern[nAt] == '%') {
        item.m_Set = ClassSet(static_cast<unsigned char>(pattern[nAt + 1]));
        nAt += 2;
    } else if (pattern[nAt] == '.') {
        item.m_Set.set();
        ++nAt;
    } else {
        item.m_Set.set(static_cast<unsigned char>(pattern[nAt]));
        ++nAt;
    }
    item.m_Repeat = ReadRepeat(pattern, nAt);
    m_Items.push_back(item);
}

namespace {

/// One search: walks items and text together and goes back where a repeat can take less or more.
class CSearch {
public:
    CSearch(CPattern const& pattern, std::string_view text, std::size_t nNotEnd, CMatch& match,
            CSearchAllowed pAllowed, void* pContext)
        : m_Items(pattern.Items()),
          m_Text(text),
          m_nNotEnd(nNotEnd),
          m_Match(match),
          m_pAllowed(pAllowed),
          m_pContext(pContext) {
        m_Match.m_nCaptures = pattern.CaptureCount();
    }

    SearchResult Run(std::size_t nFrom, bool fAnchored) {
        for (std::size_t nStart = nFrom; nStart <= m_Text.size(); ++nStart) {
            if (Step() && Match(0, nStart, 0) && m_Match.m_nEnd != m_nNotEnd) {
                m_Match.m_nStart = nStart;
                return SearchResult::Found;
            }
            if (fAnchored || m_Result != SearchResult::NotFound) break;
        }
        return m_Result;
    }

private:
    /// Counts work; false once the search has to end.
    bool Step(std::size_t nSteps = 1) {
        m_nSteps += nSteps;
        if (m_nSteps >= kStepsPerQuestion) {
            m_nSteps = 0;
            if (!m_pAllowed(m_pContext)) m_Result = SearchResult::Stopped;
        }
        return m_Result == SearchResult::NotFound;
    }

    bool Fits(CPattern::CItem const& item, std::size_t nAt) {
        return nAt < m_Text.size() && item.m_Set[static_cast<unsigned char>(m_Text[nAt])];
    }

    /// Whether the items from `nItem` on match at `nAt`. Recursion only where there is a choice.
    bool Match(std::size_t nItem, std::size_t nAt, int nDepth) {
        if (nDepth > kMaxDepth) {
            m_Result = SearchResult::TooComplex;
            return false;
        }
        for (; nItem < m_Items.size(); ++nItem) {
            CPattern::CItem const& item = m_Items[nItem];
            if (!Step()) return false;
            if (item.m_Kind == CPattern::ItemKind::Single &&
                item.m_Repeat != CPattern::Repeat::Once)
                return MatchRepeat(nItem, nAt, nDepth);
            if (!MatchOne(item, nAt)) return false;
        }
        m_Match.m_nEnd = nAt;
        return true;
    }

    /// An item that matches in one way only; moves `nAt` behind what it matched.
    bool MatchOne(CPattern::CItem const& item, std::size_t& nAt) {
        switch (item.m_Kind) {
            case CPattern::ItemKind::Single:
                return Fits(item, nAt) && ++nAt != 0;
            case CPattern::ItemKind::Open:
                m_Starts[item.m_nCapture] = nAt;
                return true;
            case CPattern::ItemKind::PositionCapture:
                m_Match.m_Captures[item.m_nCapture] = {nAt, 0, true};
                return true;
            case CPattern::ItemKind::Close: {
                std::size_t const nStart = m_Starts[item.m_nCapture];
                m_Match.m_Captures[item.m_nCapture] = {nStart, nAt - nStart, false};
                return true;
            }
            case CPattern::ItemKind::BackReference:
                return MatchAgain(m_Match.m_Captures[item.m_nCapture], nAt);
            case CPattern::ItemKind::Balance:
                return MatchBalance(item, nAt);
            case CPattern::ItemKind::Frontier:
                return AtFrontier(item, nAt);
            case CPattern::ItemKind::End:
                return nAt == m_Text.size();
        }
        return false;
    }

    bool MatchAgain(CMatch::CCapture const& capture, std::size_t& nAt) {
        if (capture.m_fPosition) return false;
        std::size_t const nLength = capture.m_nLength;
        if (m_Text.size() - nAt < nLength || !Step(nLength / 16)) return false;
        if (m_Text.substr(capture.m_nStart, nLength) != m_Text.substr(nAt, nLength)) return false;
        nAt += nLength;
        return true;
    }

    bool MatchBalance(CPattern::CItem const& item, std::size_t& nAt) {
        auto const character = [&](std::size_t n) { return static_cast<unsigned char>(m_Text[n]); };
        if (nAt >= m_Text.size() || character(nAt) != item.m_chOpen) return false;
        std::size_t nOpen = 1;
        for (std::size_t n = nAt + 1; n < m_Text.size(); ++n) {
            if (!Step()) return false;
            if (character(n) == item.m_chClose) {
                if (--nOpen > 0) continue;
                nAt = n + 1;
                return true;
            }
            if (character(n) == item.m_chOpen) ++nOpen;
        }
        return false;
    }

    /// Both ends of the text count as a character with the code 0.
    bool AtFrontier(CPattern::CItem const& item, std::size_t nAt) const {
        auto const code = [&](std::size_t n) {
            return n < m_Text.size() ? static_cast<unsigned char>(m_Text[n]) : 0u;
        };
        bool const fBefore = item.m_Set[nAt == 0 ? 0u : code(nAt - 1)];
        return !fBefore && item.m_Set[code(nAt)];
    }

    bool MatchRepeat(std::size_t nItem, std::size_t nAt, int nDepth) {
        CPattern::CItem const& item = m_Items[nItem];
        bool const fLazy = item.m_Repeat == CPattern::Repeat::Lazy;
        if (fLazy) return MatchLazy(nItem, nAt, nDepth);
        std::size_t const nLeast = item.m_Repeat == CPattern::Repeat::GreedyOnce ? 1 : 0;
        std::size_t const nMost =
            item.m_Repeat == CPattern::Repeat::Optional ? 1 : m_Text.size() - nAt;
        std::size_t nTaken = 0;
        while (nTaken < nMost && Fits(item, nAt + nTaken) && Step()) ++nTaken;
        for (std::size_t n = nTaken + 1; n-- > nLeast;) {
            if (!Step()) return false;
            if (Match(nItem + 1, nAt + n, nDepth + 1)) return true;
        }
        return false;
    }

    bool MatchLazy(std::size_t nItem, std::size_t nAt, int nDepth) {
        for (; Step(); ++nAt) {
            if (Match(nItem + 1, nAt, nDepth + 1)) return true;
            if (!Fits(m_Items[nItem], nAt)) return false;
        }
        return false;
    }

    std::vector<CPattern::CItem> const& m_Items;
    std::string_view m_Text;
    std::size_t m_nNotEnd;
    CMatch& m_Match;
    CSearchAllowed m_pAllowed;
    void* m_pContext;
    std::array<std::size_t, CPattern::kMaxCaptures> m_Starts{};
    std::size_t m_nSteps = 0;
    SearchResult m_Result = SearchResult::NotFound;
};

}  // namespace

SearchResult SearchPattern(CPattern const& pattern, std::string_view text, std::size_t nFrom,
                           std::size_t nNotEnd, CMatch& match, CSearchAllowed pAllowed,
                           void* pContext) {
    return CSearch(pattern, text, nNotEnd, match, pAllowed, pContext)
        .Run(nFrom, pattern.Anchored());
}

SearchResult SearchPlain(std::string_view wanted, std::string_view text, std::size_t nFrom,
                         CMatch& match, CSearchAllowed pAllowed, void* pContext) {
    match.m_nCaptures = 0;
    std::size_t nSteps = 0;
    for (std::size_t nAt = nFrom; nAt <= text.size() && text.size() - nAt >= wanted.size(); ++nAt) {
        if (!wanted.empty()) {
            std::size_t const nLast = text.size() - wanted.size() + 1;
            auto const* pHit =
                static_cast<char const*>(std::memchr(text.data() + nAt, wanted[0], nLast - nAt));
            if (!pHit) return SearchResult::NotFound;
            nAt = static_cast<std::size_t>(pHit - text.data());
        }
        if (text.substr(nAt, wanted.size()) == wanted) {
            match.m_nStart = nAt;
            match.m_nEnd = nAt + wanted.size();
            return SearchResult::Found;
        }
        nSteps += 1 + wanted.size() / 16;
        if (nSteps < kStepsPerQuestion) continue;
        nSteps = 0;
        if (!pAllowed(pContext)) return SearchResult::Stopped;
    }
    return SearchResult::NotFound;
}
