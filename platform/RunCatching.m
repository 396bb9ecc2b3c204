#import <Foundation/Foundation.h>

// Plain Objective-C on purpose: what GCC 12 compiles of `@catch` with a class in Objective-C++
// crashes when something is thrown.
void RunCatching(void (*action)(void* context), void (*caught)(void* context, char const* szText),
                 void* context);

void RunCatching(void (*action)(void* context), void (*caught)(void* context, char const* szText),
                 void* context) {
    @try {
        action(context);
    } @catch (NSException* exception) {
        NSString* text = [exception reason] == nil ? [exception name] : [exception reason];
        char const* szText = [text UTF8String];
        caught(context, szText == NULL ? "" : szText);
    }
}
