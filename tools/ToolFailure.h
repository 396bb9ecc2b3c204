#pragma once

#include <stdexcept>
#include <string>

/// What a command ends with.
enum ExitStatus {
    exitDone = 0,
    exitNegative = 1,  ///< The answer is no: data are damaged, differ or cannot be converted.
    exitTrouble = 2,   ///< The command could not do its work: a file or an argument is at fault.
};

/// Why a command cannot be done, and what the user can do about it. Thrown by whatever a command
/// calls; the program's main function reports it.
class CToolFailure : public std::runtime_error {
public:
    CToolFailure(ExitStatus status, std::string const& strError, std::string strAdvice = "")
        : std::runtime_error(strError), m_status(status), m_strAdvice(std::move(strAdvice)) {}

    ExitStatus Status() const { return m_status; }

    /// May be empty, where the error says it.
    std::string const& Advice() const { return m_strAdvice; }

    /// Prints "<program>: <error>" to standard error, and the advice below.
    void Report(std::string const& strProgram) const;

private:
    ExitStatus m_status;
    std::string m_strAdvice;
};
