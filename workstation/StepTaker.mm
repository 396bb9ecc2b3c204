#import "workstation/StepTaker.h"

#include <stdexcept>

#include "colours/SchemeFile.h"
#include "workstation/EventText.h"
#import "workstation/Screenshot.h"

namespace {

constexpr NSTimeInterval kStepsEvery = 0.15;
constexpr NSTimeInterval kLookAtSchemeEvery = 0.3;

}  // namespace

@interface TavarinWorkstation_StepTaker (Private)
- (void)ReadScheme;
@end

@implementation TavarinWorkstation_StepTaker

- (id)initWithArguments:(CArguments const&)arguments {
    self = [super init];
    if (self == nil) return nil;
    m_steps = arguments.steps;
    m_fForce = arguments.fForce;
    if (!arguments.strScheme.empty()) {
        m_scheme = std::make_unique<CSchemeWatch>(arguments.strScheme, arguments.strSchemeBase);
    }
    return self;
}

- (void)UseScheme {
    if (m_scheme && m_scheme->IsDue()) [self ReadScheme];
}

- (void)ReadScheme {
    CComponentsColors scheme;
    m_scheme->Read(scheme);
    const std::string strImage = SchemeImage(scheme);
    NSString* name = [NSString stringWithUTF8String:m_scheme->Name().c_str()];
    [self ShowScheme:[NSData dataWithBytes:strImage.data() length:strImage.size()]
               named:[name lastPathComponent]];
}

- (void)LookAtScheme:(NSTimer*)timer {
    if (!m_scheme->IsDue()) return;
    try {
        [self ReadScheme];
        [self Tell:"the scheme was read again: " + m_scheme->Name()];
    } catch (std::runtime_error const& failure) {
        [self Tell:std::string("the scheme stays as it was: ") + failure.what()];
    }
}

- (void)ShowScheme:(NSData*)image named:(NSString*)name {
}

- (void)Tell:(std::string const&)strLine {
}

- (void)Start {
    if (m_scheme) {
        m_timerScheme = [NSTimer scheduledTimerWithTimeInterval:kLookAtSchemeEvery
                                                         target:self
                                                       selector:@selector(LookAtScheme:)
                                                       userInfo:nil
                                                        repeats:YES];
    }
    [self performSelector:@selector(NextStep:) withObject:nil afterDelay:kStepsEvery];
}

- (void)Finish {
    [m_timerScheme invalidate];
    m_timerScheme = nil;
    [NSObject cancelPreviousPerformRequestsWithTarget:self];
    const std::size_t nLeft = m_steps.size() - m_nNextStep;
    if (nLeft == 0) return;
    m_fFailed = YES;
    [self Tell:"steps that were not taken: " + std::to_string(nLeft)];
}

- (BOOL)HasFailed {
    return m_fFailed;
}

- (BOOL)WritePictureOf:(NSView*)view to:(std::string const&)strFile {
    try {
        RequireRoom(strFile, m_fForce);
    } catch (std::runtime_error const& refusal) {
        [self Tell:std::string("the step failed: ") + refusal.what()];
        return NO;
    }
    if (WriteScreenshot(view, strFile)) return YES;
    [self Tell:"the step failed: cannot write " + strFile];
    return NO;
}

- (BOOL)Take:(CStep const&)step {
    return NO;
}

- (void)NextStep:(id)unused {
    if (m_nNextStep >= m_steps.size()) return;
    CStep const step = m_steps[m_nNextStep++];
    if (step.kind == StepKind::Quit) {
        [NSApp terminate:nil];
        return;
    }
    const bool fWait = step.kind == StepKind::Wait;
    if (!fWait && ![self Take:step]) m_fFailed = YES;
    const NSTimeInterval delay = fWait ? step.dNumber : kStepsEvery;
    [self performSelector:@selector(NextStep:) withObject:nil afterDelay:delay];
}

@end
