#pragma once

class CComponentsColors;

/// Replaces all colours of a scheme by those of a default palette. Not while another thread reads
/// the scheme.

/// Dark greys with coloured accents: 254 entries.
void AppCreateDefaultColoursDesigner(CComponentsColors* scheme);

/// Light greys: 141 entries.
void AppCreateDefaultColoursEngineer(CComponentsColors* scheme);
