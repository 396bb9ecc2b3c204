#include "colours/DefaultColours.h"

#include <memory>

#include "colours/DeviceRGB.h"
#include "colours/Palettes.h"

namespace {

std::unique_ptr<CComponentColour> MakeColour(CPaletteEntry const& row, CGColorSpaceRef space) {
    if (row.kind == PaletteKind::plain) {
        CPaletteStop const& colour = *row.stops.begin();
        return std::make_unique<CComponentColour>(row.code, row.nClass, row.szName, colour.dRed,
                                                  colour.dGreen, colour.dBlue, colour.dAlpha,
                                                  space);
    }
    auto gradient = std::make_unique<CGradientFill>(row.code, row.nClass, row.szName);
    for (CPaletteStop const& stop : row.stops) {
        gradient->AddColor(stop.dPosition, stop.dRed, stop.dGreen, stop.dBlue, stop.dAlpha, space,
                           1.0);
    }
    gradient->Create(space);
    return gradient;
}

void Fill(CComponentsColors& scheme, std::span<const CPaletteEntry> palette) {
    scheme.Clear();
    const CDeviceRGB space;
    for (CPaletteEntry const& row : palette) scheme.Add(MakeColour(row, space).release());
}

}  // namespace

void AppCreateDefaultColoursDesigner(CComponentsColors* scheme) {
    Fill(*scheme, DesignerPalette());
}

void AppCreateDefaultColoursEngineer(CComponentsColors* scheme) {
    Fill(*scheme, EngineerPalette());
}
