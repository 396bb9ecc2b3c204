#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "link/TANClientInterProcess.h"
#include "tools/WaitNotice.h"

/// What every `tavarin link` command is given on its command line.
struct CLinkOptions {
    bool m_fJson = false;
    bool m_fAudioSuite = false;
};

/// One command's conversation with the host, ending the command with the client's own texts when
/// something goes wrong.
class CLinkSession {
public:
    explicit CLinkSession(CLinkOptions const& options) : m_options(options) {}

    CTANClientInterProcess& Client() { return m_client; }
    bool IsAudioSuite() const { return m_options.m_fAudioSuite; }

    /// Ends the command unless a host with a selected session runs. Returns the host's id.
    int RequireHost();

    /// The host's track names; ends the command when they cannot be read.
    std::vector<std::string> Tracks();

    /// Runs a script and returns what it printed; ends the command when the exchange or the script
    /// failed.
    std::string Run(std::string script, int nTimeoutMs = -1);

    /// Ends the command with the client's error and advice; `strWhat` stands in where the client
    /// has nothing to say.
    [[noreturn]] void Fail(std::string const& strWhat);

    /// Ends the command when the client holds an error text, as after a script that failed.
    void RequireNoError();

    /// The sample rate of the host's session in Hz; ends the command when the host does not say.
    int SampleRate();

    /// Prints a warning.
    void Warn(std::string const& strText);

    /// Prints `strText`, or `json` when the user asked for it.
    void Print(std::string const& strText, nlohmann::json const& json);

private:
    CLinkOptions const& m_options;
    CWaitNotice m_notice{"waiting for the host"};
    CTANClientInterProcess m_client;
};
