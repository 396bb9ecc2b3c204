#pragma once

#include <string>

/// What a command of the program ends with.
enum ExitStatus {
    exitDone = 0,
    exitNegative = 1,  ///< The answer is no: data are damaged, differ or cannot be converted.
    exitTrouble = 2,   ///< The command could not do its work: a file or an argument is at fault.
};

/// Ends the command: prints "tavarin: <message>" to standard error and throws CLI::RuntimeError
/// with the status. The message says what to do next.
[[noreturn]] void Fail(ExitStatus status, std::string const& message);

/// The bytes of a file, or of standard input for "-". Ends the command when there are none to be
/// had.
std::string ReadInput(std::string const& path);

/// Writes a file, or to standard output for "-". The file appears whole or not at all: it is
/// written beside its place and moved there. Ends the command on failure.
void WriteOutput(std::string const& path, std::string const& bytes);

/// The text in double quotes, safe for a terminal: control characters and bytes that are no UTF-8
/// stand as \xNN.
std::string Quoted(std::string const& text);
