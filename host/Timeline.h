#pragma once

#include <string>

#include "host/PeakCache.h"
#include "host/Session.h"

/// A picture of the session as an SVG document: the documents that hold something (or both)
/// one above the other, each track a lane with its regions and their waveforms, marked ranges, the
/// processes with what they read and wrote, the display position and a time ruler. Regions whose
/// files cannot be read are drawn without a waveform. The cache keeps the waveforms from one
/// picture to the next.
std::string RenderTimeline(CSession const& session, CPeakCache& peaks);

/// The same with a cache of its own.
std::string RenderTimeline(CSession const& session);

/// Writes the picture, replacing the file as one step. Throws `std::system_error`.
void WriteTimeline(CSession const& session, CPeakCache& peaks, std::string const& strPath);
