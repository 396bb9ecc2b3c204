#import "workstation/StepTaker.h"

namespace {

constexpr NSTimeInterval kStepsEvery = 0.15;

}  // namespace

@implementation TavarinWorkstation_StepTaker

- (id)initWithSteps:(std::vector<CStep> const&)steps {
    self = [super init];
    if (self != nil) m_steps = steps;
    return self;
}

- (void)Start {
    [self performSelector:@selector(NextStep:) withObject:nil afterDelay:kStepsEvery];
}

- (void)Finish {
    [NSObject cancelPreviousPerformRequestsWithTarget:self];
}

- (BOOL)HasFailed {
    return m_fFailed;
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
