// The text view that takes the colours of its selection and caret from the scheme.

#import "controls/ColoredTextField.h"

#import "DrawingFixture.h"
#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"

namespace {

class ColoredTextFields : public CDrawingTest {
protected:
    void SetUp() override {
        CDrawingTest::SetUp();
        AddPlain(ccSelectedTextBackground, 0.3, 0.35, 0.45);
        AddPlain(ccLabelText, 0.7, 0.75, 0.8);
        m_field = [[[ColoredTextField alloc] initWithFrame:NSMakeRect(0, 0, 100, 30)] autorelease];
        [Canvas(true) addSubview:m_field];
    }

    NSTextView* Editor() const {
        return (NSTextView*)[[m_field window] fieldEditor:YES forObject:m_field];
    }

    void ExpectColours() const {
        NSDictionary* attributes = [Editor() selectedTextAttributes];
        EXPECT_EQ([attributes count], 1u);
        EXPECT_EQ([attributes objectForKey:NSBackgroundColorAttributeName],
                  gAppColours.FindNSColor(ccSelectedTextBackground));
        EXPECT_EQ([Editor() insertionPointColor], gAppColours.FindNSColor(ccLabelText));
    }

    void ForgetColours() const {
        [Editor() setSelectedTextAttributes:[NSDictionary dictionary]];
        [Editor() setInsertionPointColor:[NSColor redColor]];
    }

    ColoredTextField* m_field = nil;
};

TEST_F(ColoredTextFields, FocusSetsTheColoursOfTheFieldEditor) {
    ForgetColours();
    EXPECT_TRUE([m_field becomeFirstResponder]);
    ExpectColours();
}

TEST_F(ColoredTextFields, RefusedFocusSetsNothing) {
    ForgetColours();
    [m_field setSelectable:NO];
    EXPECT_FALSE([m_field becomeFirstResponder]);
    EXPECT_EQ([[Editor() selectedTextAttributes] count], 0u);
}

TEST_F(ColoredTextFields, EndOfEditingSetsTheColoursAgainAndLogsOneLine) {
    ForgetColours();
    testing::internal::CaptureStderr();
    [m_field textDidEndEditing:[NSNotification notificationWithName:NSTextDidEndEditingNotification
                                                             object:m_field]];
    const std::string strLog = testing::internal::GetCapturedStderr();
    EXPECT_NE(strLog.find("ColoredTextField:textDidEndEditing\n"), std::string::npos) << strLog;
    EXPECT_EQ(std::count(strLog.begin(), strLog.end(), '\n'), 1) << strLog;
    ExpectColours();
}

TEST_F(ColoredTextFields, ColoursFollowTheScheme) {
    [m_field setSelectedColor];
    gAppColours.UpdateColour(ccLabelText, 1, 0, 0, 1);
    [m_field setSelectedColor];
    ExpectColours();
}

TEST_F(ColoredTextFields, SchemeWithoutTheColoursLeavesTheCaret) {
    gAppColours.Clear();
    ForgetColours();
    [m_field setSelectedColor];
    EXPECT_EQ([[Editor() selectedTextAttributes] count], 0u);
    EXPECT_TRUE([[Editor() insertionPointColor] isEqual:[NSColor redColor]]);
}

TEST_F(ColoredTextFields, WithoutAWindowNothingHappens) {
    [m_field removeFromSuperview];
    [m_field setSelectedColor];
}

}  // namespace
