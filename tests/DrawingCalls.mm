#import "DrawingCalls.h"

#import <objc/runtime.h>

namespace {

using DrawText = void (*)(id, SEL, NSRect, NSDictionary*);
using DrawImage = void (*)(id, SEL, NSRect, NSRect, NSCompositingOperation, CGFloat);

CDrawingCalls* pCalls = nullptr;
DrawText drawText = nullptr;
DrawImage drawImage = nullptr;

void NoteText(id text, SEL selector, NSRect rect, NSDictionary* attributes) {
    NSParagraphStyle* style = [attributes objectForKey:NSParagraphStyleAttributeName];
    pCalls->m_texts.push_back({[text UTF8String],
                               rect,
                               [attributes objectForKey:NSFontAttributeName],
                               [attributes objectForKey:NSForegroundColorAttributeName],
                               [style alignment],
                               [style lineBreakMode]});
    drawText(text, selector, rect, attributes);
}

void NoteImage(id image, SEL selector, NSRect rect, NSRect source, NSCompositingOperation operation,
               CGFloat opacity) {
    pCalls->m_images.push_back({image, rect, source, operation, opacity});
    drawImage(image, selector, rect, source, operation, opacity);
}

Method TextMethod() {
    return class_getInstanceMethod([NSString class], @selector(drawInRect:withAttributes:));
}

Method ImageMethod() {
    return class_getInstanceMethod([NSImage class], @selector(drawInRect:
                                                                fromRect:operation:fraction:));
}

// By way of a type that a compiler takes for any function's.
template <typename To, typename From>
To As(From function) {
    return reinterpret_cast<To>(reinterpret_cast<void (*)()>(function));
}

}  // namespace

CDrawingCalls::CDrawingCalls() {
    pCalls = this;
    drawText = As<DrawText>(method_setImplementation(TextMethod(), As<IMP>(NoteText)));
    drawImage = As<DrawImage>(method_setImplementation(ImageMethod(), As<IMP>(NoteImage)));
}

CDrawingCalls::~CDrawingCalls() {
    method_setImplementation(TextMethod(), As<IMP>(drawText));
    method_setImplementation(ImageMethod(), As<IMP>(drawImage));
    pCalls = nullptr;
}
