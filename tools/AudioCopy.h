#pragma once

#include <string>

/// Ends the command with a `CToolFailure` unless a sound file can be written under this name: it
/// ends in .wav, .flac or .ogg, or is "-", for standard output.
void RequireAudioTarget(std::string const& strTarget);

/// Copies a sound file to a target, in the format that the target's name ends in; to standard
/// output as it is. The file appears whole or not at all, and replaces one that is there. Throws
/// `CToolFailure` when not every sample has arrived.
void CopyAudio(std::string const& strSource, std::string const& strTarget);
