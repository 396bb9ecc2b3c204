#import "controls/ColoredTextField.h"

#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"

@implementation ColoredTextField

- (BOOL)becomeFirstResponder {
    if (![super becomeFirstResponder]) return NO;
    [self setSelectedColor];
    return YES;
}

- (void)textDidEndEditing:(NSNotification*)notification {
    NSLog(@"ColoredTextField:textDidEndEditing");
    [self setSelectedColor];
}

- (void)setSelectedColor {
    NSTextView* editor = (NSTextView*)[[self window] fieldEditor:YES forObject:self];
    NSColor* background = gAppColours.FindNSColor(ccSelectedTextBackground);
    // Without a colour the list ends at once.
    [editor
        setSelectedTextAttributes:[NSDictionary
                                      dictionaryWithObjectsAndKeys:background,
                                                                   NSBackgroundColorAttributeName,
                                                                   nil]];
    NSColor* caret = gAppColours.FindNSColor(ccLabelText);
    if (caret != nil) [editor setInsertionPointColor:caret];
}

@end
