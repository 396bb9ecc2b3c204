#pragma once

#include <memory>
#include <string>

#include "utils/ParameterBlock.h"

/// \file
/// Building saved schemes. Internal to the colour scheme.

/// Appends an empty nested block and answers it. Filling it in place saves the deep copy that
/// CParameterBlock::AddParameter makes.
inline CParameterBlock& AppendBlock(CParameterBlock& parent, const char* name) {
    auto nested = std::make_unique<CParameterBlock>();
    nested->name = name;
    CParameterBlock& block = *nested;
    parent.parameters.push_back(nested.get());
    nested.release();
    return block;
}

/// Appends a text that may hold zero bytes.
inline void AppendText(CParameterBlock& parent, const char* name, std::string const& text) {
    auto parameter = std::make_unique<CStringParameter>();
    parameter->name = name;
    parameter->value = text;
    parent.parameters.push_back(parameter.get());
    parameter.release();
}
