#pragma once

#import <AppKit/AppKit.h>
#include <CoreGraphics/CoreGraphics.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "colours/ComponentCode.h"

/// One pixel of what was drawn, its channels from 0 to 255.
struct CPixel {
    int nRed = 0;
    int nGreen = 0;
    int nBlue = 0;

    friend bool operator==(CPixel, CPixel) = default;
    friend std::ostream& operator<<(std::ostream& out, CPixel pixel) {
        return out << "(" << pixel.nRed << ", " << pixel.nGreen << ", " << pixel.nBlue << ")";
    }
};

/// Whether no channel differs by more than `nTolerance`.
bool IsNear(CPixel a, CPixel b, int nTolerance = 3);

/// A pixel of a colour with channels from 0 to 1.
CPixel Colour(double dRed, double dGreen, double dBlue);

/// What a view shows. Rows are counted from the top, whether the view is flipped or not.
class CPicture {
public:
    explicit CPicture(NSBitmapImageRep* image) : m_image([image retain]) {}
    CPicture(CPicture const& other) : m_image([other.m_image retain]) {}
    CPicture& operator=(CPicture const&) = delete;
    ~CPicture() { [m_image release]; }

    CPixel At(int nColumn, int nRow) const;
    /// Whether all pixels of a part are near a colour.
    bool IsAll(CPixel colour, NSRect part) const;
    /// The smallest rectangle around the pixels for which something holds; empty when there is
    /// none.
    NSRect Extent(std::function<bool(CPixel)> const& holds) const;

private:
    NSBitmapImageRep* m_image;
};

/// Draws in a real context: a view in a window on the display, filled with kBackground. Each test
/// begins with an empty process-wide scheme and the flat style.
class CDrawingTest : public testing::Test {
protected:
    static constexpr int kWidth = 160;
    static constexpr int kHeight = 80;
    static const CPixel kBackground;

    /// Codes for colours of the tests' own.
    static constexpr CComponentCode kPlain{9, 1};
    static constexpr CComponentCode kOther{9, 2};
    static constexpr CComponentCode kGradient{9, 3};
    static constexpr CComponentCode kMissing{9, 4};

    static void SetUpTestSuite();
    void SetUp() override;
    void TearDown() override;

    /// Gives a code a plain colour.
    static void AddPlain(CComponentCode code, double dRed, double dGreen, double dBlue,
                         double dAlpha = 1.0);
    /// Gives a code a gradient from black at 0 to white at 1, or another.
    static void AddRamp(CComponentCode code);
    static void AddRamp(CComponentCode code, CPixel first, CPixel last);

    /// What the canvas shows after `draw`, which gets the context of a view of the given kind.
    CPicture Draw(bool fFlipped, std::function<void(CGContextRef)> const& draw);

    /// The view that Draw draws in, for what wants one.
    NSView* Canvas(bool fFlipped) const { return fFlipped ? m_flipped : m_upright; }

private:
    NSAutoreleasePool* m_pool = nil;
    NSWindow* m_window = nil;
    NSView* m_flipped = nil;
    NSView* m_upright = nil;
};

/// Whether a colour lies about `dPart` of the way from black to white.
testing::AssertionResult IsGrey(CPixel pixel, double dPart, double dTolerance = 0.03);
