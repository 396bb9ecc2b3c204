#pragma once

#import <AppKit/AppKit.h>

#include <string>
#include <vector>

/// A text that was drawn in a rectangle.
struct CTextCall {
    std::string strText;
    NSRect rect;
    NSFont* font;
    NSColor* colour;
    NSTextAlignment alignment;
    NSLineBreakMode lineBreakMode;
};

/// An image that was drawn in a rectangle.
struct CImageCall {
    NSImage* image;
    NSRect rect;
    NSRect source;
    NSCompositingOperation operation;
    double dOpacity;
};

/// While in scope, texts and images are written down on their way to AppKit, which draws them all
/// the same. One at a time.
class CDrawingCalls {
public:
    CDrawingCalls();
    ~CDrawingCalls();
    CDrawingCalls(CDrawingCalls const&) = delete;
    CDrawingCalls& operator=(CDrawingCalls const&) = delete;

    std::vector<CTextCall> m_texts;
    std::vector<CImageCall> m_images;
};
