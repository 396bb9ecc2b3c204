#pragma once

#include <cstddef>
#include <deque>
#include <string>

/// What has happened to a session since the host began: the last events, numbered from 0, each one
/// line with the time of day in front. Used by one thread.
class CJournal {
public:
    /// Notes something that is done. Control characters in the text become blanks.
    void Note(std::string strText);

    /// The same, unless it is what happened last.
    void NoteOnce(std::string const& strText);

    /// How many events there have been.
    std::size_t Count() const noexcept { return m_nCount; }

    /// An event; empty for one that is too old to be kept, or has not happened.
    std::string At(std::size_t nEvent) const;

private:
    static constexpr std::size_t kKept = 1000;

    std::size_t m_nCount = 0;
    std::string m_strLast;  ///< as it was given
    std::deque<std::string> m_Events;
};
