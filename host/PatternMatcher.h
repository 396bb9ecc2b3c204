#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// A search pattern in the notation of Lua's string library, taken apart once.
///
/// Items: a character, `.`, a class such as `%a`, a set such as `[^%s_]`, each with an optional
/// `*`, `+`, `-` or `?`; captures `( )` and position captures `()`; `%1` to `%9`; `%bxy`;
/// `%f[set]`;
/// `^` at the front and `$` at the end.
class CPattern {
public:
    static constexpr std::size_t kMaxLength = 8192;
    static constexpr std::size_t kMaxCaptures = 32;

    enum class ItemKind {
        Single,
        Open,
        PositionCapture,
        Close,
        BackReference,
        Balance,
        Frontier,
        End
    };
    enum class Repeat { Once, Greedy, GreedyOnce, Lazy, Optional };
    using CSet = std::bitset<256>;

    struct CItem {
        ItemKind m_Kind = ItemKind::Single;
        Repeat m_Repeat = Repeat::Once;
        CSet m_Set{};                ///< Single, Frontier
        std::size_t m_nCapture = 0;  ///< Open, PositionCapture, Close, BackReference
        unsigned char m_chOpen = 0;  ///< Balance
        unsigned char m_chClose = 0;
    };

    /// Takes a pattern apart. With `fAnchors` false a `^` at the front is an ordinary character.
    /// Throws `std::invalid_argument` for a malformed one.
    CPattern(std::string_view pattern, bool fAnchors);

    std::vector<CItem> const& Items() const { return m_Items; }
    bool Anchored() const { return m_fAnchored; }
    std::size_t CaptureCount() const { return m_nCaptures; }

private:
    void Parse(std::string_view pattern);
    void ParseEscape(std::string_view pattern, std::size_t& nAt);
    void ParseSingle(std::string_view pattern, std::size_t& nAt);
    void OpenCapture(std::string_view pattern, std::size_t& nAt);
    void CloseCapture();

    std::vector<CItem> m_Items;
    std::vector<std::size_t> m_Open;
    std::array<bool, kMaxCaptures> m_Closed{};
    std::size_t m_nCaptures = 0;
    bool m_fAnchored = false;
};

/// What a search found; offsets count from 0.
struct CMatch {
    struct CCapture {
        std::size_t m_nStart = 0;
        std::size_t m_nLength = 0;
        bool m_fPosition = false;  ///< stands for the place, not for a text
    };

    std::size_t m_nStart = 0;
    std::size_t m_nEnd = 0;  ///< one past the last character
    std::size_t m_nCaptures = 0;
    std::array<CCapture, CPattern::kMaxCaptures> m_Captures;
};

/// Asked every few thousand steps of a search; false ends the search.
using CSearchAllowed = bool (*)(void* pContext);

/// How a search ended.
enum class SearchResult { Found, NotFound, Stopped, TooComplex };

/// Looks for the first match that starts at `nFrom` or later and does not end at `nNotEnd` (an
/// offset beyond the text excludes nothing). However badly pattern and text go together, the
/// search asks `pAllowed` often enough to be ended within milliseconds, and its depth is bounded.
SearchResult SearchPattern(CPattern const& pattern, std::string_view text, std::size_t nFrom,
                           std::size_t nNotEnd, CMatch& match, CSearchAllowed pAllowed,
                           void* pContext);

/// Looks for a text as it stands, under the same rules.
SearchResult SearchPlain(std::string_view wanted, std::string_view text, std::size_t nFrom,
                         CMatch& match, CSearchAllowed pAllowed, void* pContext);
