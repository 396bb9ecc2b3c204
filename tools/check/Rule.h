#pragma once

#include <span>
#include <string>

class CCheckedHost;

/// What became of a rule.
enum class Verdict { Pass, Fail, NotTried };

/// A verdict and what it rests on, in a few words for a person.
struct Finding {
    Verdict verdict;
    std::string strSeen;
};

inline Finding Passed(std::string strSeen) {
    return {Verdict::Pass, std::move(strSeen)};
}
inline Finding Failed(std::string strSeen) {
    return {Verdict::Fail, std::move(strSeen)};
}
inline Finding NotTried(std::string strWhy) {
    return {Verdict::NotTried, std::move(strWhy)};
}
inline Finding PassedIf(bool fGood, std::string strSeen) {
    return {fGood ? Verdict::Pass : Verdict::Fail, std::move(strSeen)};
}

/// Headings of docs/link-protocol.md, as a link to them is written.
namespace Place {
inline constexpr char szOwners[] = "who-owns-what";
inline constexpr char szDirectory[] = "the-directory-segment";
inline constexpr char szMessages[] = "the-message-segment";
inline constexpr char szExchange[] = "one-exchange";
inline constexpr char szWords[] = "lock-words-and-conditions";
inline constexpr char szCommands[] = "the-commands";
}  // namespace Place

/// One thing that a host must do, and how to find out.
struct Rule {
    const char* szName;   ///< short and fixed, for scripts that read the report
    const char* szRule;   ///< a sentence that is true of a good host
    const char* szNeeds;  ///< the rule that must have passed before this one is tried, or null
    Finding (*pTry)(CCheckedHost& host);
    const char* szCause;  ///< why a host breaks it, most likely
    const char* szPlace;  ///< what the protocol says about it: a heading of docs/link-protocol.md
};

/// Rules in the order in which they are tried.
struct RuleGroup {
    const char* szTitle;
    std::span<const Rule> rules;
};

/// How a host is found: the directory segment.
std::span<const Rule> DiscoveryRules();
/// How its message segment is made.
std::span<const Rule> SegmentRules();
/// How requests are answered.
std::span<const Rule> ExchangeRules();
/// What the client's commands bring about, on tracks that are empty before and afterwards.
std::span<const Rule> CommandRules();
