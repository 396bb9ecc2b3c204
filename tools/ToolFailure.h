#pragma once

#include <stdexcept>
#include <string>

/// What a command ends with. The pages of the manual have the same table.
enum ExitStatus {
    exitDone = 0,
    exitNegative = 1,      ///< The answer is no.
    exitTrouble = 2,       ///< The command could not do its work.
    exitInconclusive = 3,  ///< There is no answer.
};

/// Why a command cannot be done, and what the user can do about it. Thrown by whatever a command
/// calls; the program's main function reports it.
class CToolFailure : public std::runtime_error {
public:
    /// `szCode` is a name that programs can rely on; the manual lists them.
    CToolFailure(ExitStatus status, std::string const& strError, std::string strAdvice = "",
                 const char* szCode = nullptr)
        : std::runtime_error(strError),
          m_status(status),
          m_strAdvice(std::move(strAdvice)),
          m_szCode(szCode) {}

    ExitStatus Status() const { return m_status; }

    /// May be empty, where the error says it.
    std::string const& Advice() const { return m_strAdvice; }

    /// "no" or "trouble" where nothing more exact was said.
    std::string Code() const;

    /// Prints "<program>: <error>" to standard error, and the advice below; or, as JSON, an object
    /// with code, error and advice.
    void Report(std::string const& strProgram, bool fJson = false) const;

private:
    ExitStatus m_status;
    std::string m_strAdvice;
    const char* m_szCode;
};
