#pragma once

#include <future>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "link/TANClientInterProcess.h"
#include "tools/HostWatch.h"
#include "tools/LinkContents.h"
#include "tools/WaitNotice.h"

/// What every `tavarin link` command is given on its command line.
struct CLinkOptions {
    bool m_fJson = false;
    bool m_fAudioSuite = false;
    std::optional<double> m_dTimeout;   ///< seconds
    std::string m_strFrameRate = "25";  ///< of time code, as the user writes it
};

/// How long a command waits unless the user says it.
enum class Patience {
    Short,  ///< five seconds, for those that only ask
    Long    ///< for ever, for those that work
};

/// One command's conversation with the host, ending the command with the client's own texts when
/// something goes wrong.
class CLinkSession {
public:
    CLinkSession(CLinkOptions const& options, Patience patience);

    CTANClientInterProcess& Client() { return m_client; }
    bool IsAudioSuite() const { return m_options.m_fAudioSuite; }
    std::string const& FrameRate() const { return m_options.m_strFrameRate; }

    /// Ends the command unless a host with a selected session runs. Returns the host's id.
    int RequireHost();

    /// The host's track names; ends the command when they cannot be read.
    std::vector<std::string> Tracks();

    /// The number of the track that a person calls by its number or name; ends the command when
    /// there is none, or more than one of that name.
    int TrackNumber(std::string const& strTrack);

    /// What a script begins with that works on the chosen document: a call that answers whether it
    /// is there.
    std::string SelectDocument() const {
        return IsAudioSuite() ? "SelectAudioSuiteDocument()" : "SelectScriptDocument()";
    }

    /// Runs a script and returns what it printed; ends the command when the exchange or the script
    /// failed.
    std::string Run(std::string script);

    /// What the chosen document holds; no value when the host cannot tell.
    std::optional<CLinkContents> Contents();

    /// Carries out a command of the client, on a thread of its own, and answers what it answers.
    /// Where it makes no sense to wait for the host any longer, the program ends here and now: the
    /// client cannot be called back.
    template <typename Command>
    auto Do(Command command) {
        std::packaged_task<decltype(command())()> task(std::move(command));
        auto answer = task.get_future();
        std::thread worker(std::move(task));
        Await([&answer](std::chrono::milliseconds time) {
            return answer.wait_for(time) == std::future_status::ready;
        });
        worker.join();
        return answer.get();
    }

    /// Ends the command with the client's error and advice; `strWhat` stands in where the client
    /// has nothing to say.
    [[noreturn]] void Fail(std::string const& strWhat);

    /// From now on the user's own script runs: errors name their place in it.
    void ShowPlacesInScript() { m_fUsersScript = true; }

    /// Ends the command when the client holds an error text, as after a script that failed.
    void RequireNoError();

    /// The sample rate of the host's session in Hz; ends the command when the host does not say.
    int SampleRate();

    /// Prints a warning.
    void Warn(std::string const& strText);

    /// Prints `strText`, or `json` when the user asked for it.
    void Print(std::string const& strText, nlohmann::json const& json);

private:
    void Await(std::function<bool(std::chrono::milliseconds)> const& isDone);

    CLinkOptions const& m_options;
    CHostWatch m_watch;
    bool m_fUsersScript = false;
    CWaitNotice m_notice{""};  ///< speaks while the host is waited for
    CTANClientInterProcess m_client;
};
