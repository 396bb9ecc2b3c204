#pragma once

#include <iosfwd>
#include <memory>
#include <string>

#include "tools/BlockDocument.h"

/// Parameter blocks as JSON, losslessly.
///
/// The document is an object with "format" ("session" or "bare"), "id" and "name" (sessions) and
/// "parameters": objects with "type", "name" and "value", or "parameters" for a block. The types
/// are string, int, double, uint64, fileId, block, bool, float, int64 and, for an entry whose type
/// is not known, unknown. Text that is no UTF-8 stands as {"hex": "..."}; numbers that JSON lacks
/// as "inf",
/// "-inf", "nan" or "nan:<bits in hexadecimal>"; a file identity as two numbers.

void WriteJson(std::ostream& out, CBlockDocument const& document);

/// One parameter of such a document, with what it holds, and a line end.
void WriteJsonEntry(std::ostream& out, CParameter const& parameter);

/// Reads what WriteJson writes. Entries of unknown type are left out: no image can hold them.
/// Returns an empty text, or what is wrong and where.
std::string ReadJson(std::string const& text, CBlockDocument& document);

/// A parameter without a name from a type and a value as they stand in such a document, the text of
/// a string without quotation marks. Throws std::runtime_error when the value is none of that type,
/// or the type is none of a single value.
std::unique_ptr<CParameter> ParameterFromText(std::string const& type, std::string const& text);
