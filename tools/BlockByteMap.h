#pragma once

#include <iosfwd>
#include <string>

/// Prints every field of an image in order: its offset, its bytes and what they mean.
///
/// `id` is the identifier that a session image begins with, or null for a bare image. The map ends
/// where the image ends or no longer makes sense, and says so; it reads the bytes on its own,
/// without the container, so that one can be held against the other. Returns an empty text when it
/// came to the end, or else why not.
std::string WriteByteMap(std::ostream& out, std::string const& image, std::string const* id);
