#pragma once

#include <cstdint>
#include <string>

/// The four characters of a notification id.
std::string NotificationName(std::int32_t nType);

/// A notification's record in one line, field by field, as it is at this moment.
std::string RecordText(std::int32_t nType, void const* pRecord);
