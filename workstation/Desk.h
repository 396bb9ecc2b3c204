#pragma once

#import <AppKit/AppKit.h>

/// The content of the workstation's window: panels of one size, as many beside each other as there
/// is room for, and the log below. Where the panels do not fit, they scroll.
@interface TavarinWorkstation_Desk : NSView {
    NSArray* m_panels;
    NSScrollView* m_scroll;
    NSView* m_log;
}

/// The size that shows so many columns of so many panels, and a log of some lines.
+ (NSSize)SizeForPanels:(NSUInteger)nPanels columns:(NSUInteger)nColumns;

/// The least size that is of any use.
+ (NSSize)LeastSize;

- (id)initWithPanels:(NSArray*)panels log:(NSView*)log size:(NSSize)size;

@end

/// The size of a panel: that of a plug-in's view.
NSSize PanelSize();
