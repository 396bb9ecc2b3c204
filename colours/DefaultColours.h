#pragma once

class CComponentsColors;

/// \file
/// The two palettes. Each replaces all colours of a scheme, which no other thread may be reading.

/// Dark greys with coloured accents: 254 entries.
void AppCreateDefaultColoursDesigner(CComponentsColors* scheme);

/// Light greys: 141 entries.
void AppCreateDefaultColoursEngineer(CComponentsColors* scheme);
