#pragma once

#include <map>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/AudioDirectory.h"
#include "host/AudioFile.h"
#include "host/HostValue.h"
#include "host/Journal.h"
#include "host/Session.h"
#include "host/WorkNotice.h"

/// A call that a script got wrong; the text says what was expected.
class CHostFunctionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What the host functions work on. Lives as long as the host; used by one thread.
struct CHostContext {
    CSession& m_Session;
    CAudioDirectory& m_Directory;

    /// The document that the running script has selected; cleared before each script.
    std::optional<DocumentKind> m_Document{};

    /// Says how far the function that runs has come; long work calls the checkpoint.
    CWorkNotice m_Work{};
    CCheckpoint m_Checkpoint = [this] { m_Work.Tick(); };

    /// Files in the audio directory by region: the last render and the last export. A repeated
    /// render or export of a region replaces its file.
    std::map<CSessionId, std::string> m_Renders{};
    std::map<CSessionId, std::string> m_Exports{};

    /// What scripts have done to the session.
    CJournal m_Journal{};

    /// Files made by processes; one goes when no region uses it any more.
    std::set<std::string> m_Results{};
};

/// The arguments of one call, with checked access. Positions count from 0; texts of errors count
/// from 1, as scripts do.
class CHostArguments {
public:
    CHostArguments(char const* pszFunction, std::vector<CHostValue> const& values)
        : m_pszFunction(pszFunction), m_Values(values) {}

    std::size_t Count() const { return m_Values.size(); }
    /// A number with a whole value, also when the script wrote it as "3.0".
    std::int64_t Integer(std::size_t n) const;
    /// Any number.
    double Number(std::size_t n) const;
    std::string const& Text(std::size_t n) const;
    CHostTable const& Table(std::size_t n) const;
    /// A whole number from a named field of a table.
    std::int64_t Field(CHostTable const& table, char const* pszField) const;
    /// An element of a list that must be a table itself.
    CHostTable const& Element(CHostTable const& table, std::size_t n) const;
    /// Ends the call with a text about one argument.
    [[noreturn]] void Fail(std::size_t n, std::string const& strExpected) const;

private:
    CHostValue const& At(std::size_t n) const;

    char const* m_pszFunction;
    std::vector<CHostValue> const& m_Values;
};

/// One function that scripts can call.
struct CHostFunction {
    char const* pszName;
    CHostValue (*pFunction)(CHostContext& context, CHostArguments const& arguments);
};

/// Every host function, in the order of the documentation.
///
/// All work on the document that the script selected first, and fail without one, except the two
/// that select, `GetSampleRate`, `GetUpdateCount`, `GetProcessID`, the two of the journal and the
/// two `IsNull…` tests. They throw `CHostFunctionError`, `CSessionError`, `CAudioFileError` or
/// `std::system_error`.
std::span<CHostFunction const> HostFunctions();
