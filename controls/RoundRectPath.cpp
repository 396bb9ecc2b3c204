#include "controls/RoundRectPath.h"

void AddRoundRect(CGContextRef context, float left, float top, float right, float bottom, float r) {
    CGContextMoveToPoint(context, left + r, top);
    CGContextAddArcToPoint(context, left, top, left, top + r, r);
    CGContextAddLineToPoint(context, left, bottom - r);
    CGContextAddArcToPoint(context, left, bottom, left + r, bottom, r);
    CGContextAddLineToPoint(context, right - r, bottom);
    CGContextAddArcToPoint(context, right, bottom, right, bottom - r, r);
    CGContextAddLineToPoint(context, right, top + r);
    CGContextAddArcToPoint(context, right, top, right - r, top, r);
    CGContextAddLineToPoint(context, left + r, top);
    CGContextClosePath(context);
}
