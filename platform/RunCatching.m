#import <Foundation/Foundation.h>

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
