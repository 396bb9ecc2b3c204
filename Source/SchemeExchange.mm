#import "Source/SchemeExchange.h"

#include "colours/SchemeFile.h"

@implementation TavarinProLink_SchemeExchange

+ (BOOL)UseImage:(NSData*)image {
    const std::string strImage(static_cast<const char*>([image bytes]), [image length]);
    return ReplaceScheme(gAppColours, strImage);
}

@end
