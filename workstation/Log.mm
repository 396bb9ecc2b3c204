#import "workstation/Log.h"

#import "Source/PanelDrawing.h"
#include "colours/ComponentCodes.h"
#import "workstation/Widgets.h"

namespace {

constexpr CGFloat kLogSize = 11;
constexpr CGFloat kInset = 8;

}  // namespace

@implementation TavarinWorkstation_Log

- (id)init {
    self = [super init];
    if (self == nil) return nil;
    m_scroll = [MakeScrollView(NSMakeRect(0, 0, 100, 100)) retain];
    const NSSize size = [m_scroll contentSize];
    m_text =
        [[[NSTextView alloc] initWithFrame:NSMakeRect(0, 0, size.width, size.height)] autorelease];
    [m_text setEditable:NO];
    [m_text setVerticallyResizable:YES];
    [m_text setHorizontallyResizable:NO];
    [m_text setMaxSize:NSMakeSize(1e6, 1e6)];
    [m_text setAutoresizingMask:NSViewWidthSizable];
    [[m_text textContainer] setWidthTracksTextView:YES];
    [m_text setTextContainerInset:NSMakeSize(kInset, kInset)];
    [m_scroll setDocumentView:m_text];
    [self Colour];
    return self;
}

- (void)dealloc {
    [m_scroll release];
    [super dealloc];
}

- (NSView*)View {
    return m_scroll;
}

- (void)Add:(std::string const&)strLine {
    const NSRect seen = [m_scroll documentVisibleRect];
    const bool fAtEnd = NSMaxY(seen) >= NSMaxY([m_text bounds]) - kLogSize;
    NSDictionary* attributes = [NSDictionary
        dictionaryWithObjectsAndKeys:[NSFont systemFontOfSize:kLogSize], NSFontAttributeName,
                                     PanelColour(ccTextEditorForeground),
                                     NSForegroundColorAttributeName, nil];
    NSString* text = [Text(strLine) stringByAppendingString:@"\n"];
    NSAttributedString* line = [[[NSAttributedString alloc] initWithString:text
                                                                attributes:attributes] autorelease];
    [[m_text textStorage] appendAttributedString:line];
    if (fAtEnd) [m_text scrollRangeToVisible:NSMakeRange([[m_text string] length], 0)];
}

- (void)Colour {
    [m_text setTextColor:PanelColour(ccTextEditorForeground)];
    [m_text setBackgroundColor:PanelColour(ccTextEditorBackground)];
}

@end
