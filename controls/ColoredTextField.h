#pragma once

#import <AppKit/AppKit.h>

/// A text view whose selection and caret are in the colours of the process-wide scheme. They are
/// set on the field editor that the window keeps for it.
@interface ColoredTextField : NSTextView

/// NO when AppKit refuses; the colours are set otherwise.
- (BOOL)becomeFirstResponder;

/// Logs a line and sets the colours again. AppKit's own handling is left out.
- (void)textDidEndEditing:(NSNotification*)notification;

/// Sets the selection's background to ccSelectedTextBackground and the caret to ccLabelText. What
/// the scheme lacks is not set.
- (void)setSelectedColor;

@end
