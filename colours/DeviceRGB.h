#pragma once

#include <CoreGraphics/CoreGraphics.h>

/// The device's colour space while in scope, to pass wherever a colour space is asked for.
class CDeviceRGB {
public:
    CDeviceRGB() : m_space(CGColorSpaceCreateDeviceRGB()) {}
    CDeviceRGB(CDeviceRGB const&) = delete;
    CDeviceRGB& operator=(CDeviceRGB const&) = delete;
    ~CDeviceRGB() { CGColorSpaceRelease(m_space); }

    operator CGColorSpaceRef() const { return m_space; }

private:
    CGColorSpaceRef m_space;
};
