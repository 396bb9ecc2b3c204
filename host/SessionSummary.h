#pragma once

#include <string>

#include "host/Session.h"

/// What a session holds, as lines for a person to read: for each document that holds something its
/// tracks with their regions, and its processes. Ends with a line feed.
std::string DescribeSession(CSession const& session);
