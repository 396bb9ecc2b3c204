#include "colours/SchemeRules.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <iterator>

#include "colours/ColourRamp.h"
#include "colours/ComponentCodeTable.h"
#include "colours/ComponentCodes.h"
#include "colours/Palettes.h"
#include "colours/RuleMeasure.h"

namespace {

constexpr double kText = 4.5;
constexpr double kEdge = 3.0;
constexpr double kStates = 4.0;
constexpr double kStripes = 1.5;      // alternating backgrounds only need a hint
constexpr double kTrackGroups = 6.0;  // seen far from each other, and small

/// A number with one decimal, in every locale.
std::string OneDecimal(double value) {
    char digits[32];
    const auto end =
        std::to_chars(std::begin(digits), std::end(digits), value, std::chars_format::fixed, 1);
    return {digits, end.ptr};
}

/// A row of the table. Contrast holds for every one of `codes` on every one of `backgrounds`;
/// `distinct` rows have no backgrounds and hold for every two of `codes`.
struct CRuleRow {
    RuleKind kind;
    std::initializer_list<CComponentCode> codes;
    std::initializer_list<CComponentCode> backgrounds;
    CComponentCode backdrop;
    double dMinimum;
};

constexpr auto readable = RuleKind::readable;
constexpr auto visible = RuleKind::visible;
constexpr auto distinct = RuleKind::distinct;

// clang-format off
constexpr CRuleRow kRows[] = {
    // Text on its background.
    {readable, {ccControlText}, {ccButtonFace, ccButtonFaceActive, ccProcessControlBtnFaceUp,
     ccProcessControlBtnFaceDown, ccTransportBtnFaceUp, ccTransportBtnFaceDown,
     ccPopupSliderControlDisplayed, ccPopupSliderControlHidden, ccMorlandProjectButton,
     ccMorlandProjectGreyButton}, ccWindowBackground, kText},
    {readable, {ccControlOnText}, {ccButtonFaceActive, ccTransportBtnFaceDown,
     ccProcessControlBtnFaceDown, ccMorlandProjectButtonHighlighted}, ccWindowBackground, kText},
    {readable, {ccLabelText}, {ccWindowBackground, ccProcessPopupBackground, ccTrackInfoBackground,
     ccTrackInfoBackgroundSelected, ccSelectedTextBackground}, ccWindowBackground, kText},
    {readable, {ccLabelText}, {ccAutomationEditLabelBackground, ccMorlandEditLabelBackground,
     ccVolumeEditLabelBackground}, ccTrackBackground, kText},
    {readable, {ccLabelTextEditing}, {ccTextEditorLightBackground}, ccWindowBackground, kText},
    {readable, {ccTimeAxisText}, {ccWindowBackground, ccPlaybackAreaBackground,
     ccMarkersBackground}, ccWindowBackground, kText},
    {readable, {ccTextEditorForeground}, {ccTextEditorBackground, ccSelectedTextBackground},
     ccWindowBackground, kText},
    {readable, {ccTextEditorLightForeground}, {ccTextEditorLightBackground,
     ccTextEditorSelectedTextLightBackground}, ccWindowBackground, kText},
    {readable, {ccWordText}, {ccWordEven, ccWordOdd, ccWordSelectedEven, ccWordSelectedOdd},
     ccWindowBackground, kText},
    {readable, {ccWordEditorText}, {ccWordEditorBackground}, ccWindowBackground, kText},
    {readable, {ccProcessPopupTitle}, {ccProcessPopupTitleBackground,
     ccSelectedProcessPopupTitleBackground}, ccWindowBackground, kText},
    {readable, {ccMuteBtnText}, {ccMuteBtnOnFaceUp, ccMuteBtnOnFaceDown, ccMuteBtnOffFaceUp,
     ccMuteBtnOffFaceDown, ccSoloBtnOnFaceUp, ccSoloBtnOnFaceDown}, ccWindowBackground, kText},
    {readable, {ccToolBoxTitle}, {ccToolBox}, ccWindowBackground, kText},
    {readable, {ccAudioLabel}, {ccTrackBackground, ccTrackOddLayerBackground,
     ccTrackEvenLayerBackground, ccSelectedAudioBackground}, ccTrackBackground, kText},
    {readable, {ccAudioMissingLabel}, {ccAudioMissing}, ccTrackBackground, kText},
    {readable, {ccAudioEstimatedLabel}, {ccAudioEstimated}, ccTrackBackground, kText},

    // Edges and indicators on what surrounds them. What is disabled may fade.
    {visible, {ccWindowTopLeftBorder, ccWindowBottomRightBorder, ccTracksBorder, ccSeparatorLine,
     ccButtonBorder, ccButtonBorderActive, ccTransportBtnBorderUp, ccTransportBtnBorderDown,
     ccCheckBoxBorderUnChecked, ccCheckBoxBorderDownUnChecked, ccCheckBoxBorderChecked,
     ccCheckBoxBorderDownChecked, ccDisclosureArrowEnabled, ccDisclosureArrowButtonDown,
     ccTextEditorBackgroundBorder, ccTextEditorLightBackgroundBorder,
     ccPopupSliderControlDisplayedBorder, ccPopupSliderControlHiddenBorder, ccSliderEdge,
     ccSliderTopEdge, ccSliderTickMarks, ccSliderIndicatorHighlight, ccSliderIndicatorNormal},
     {ccWindowBackground}, ccWindowBackground, kEdge},
    {visible, {ccProcessControlBtnBorderUp, ccProcessControlBtnBorderDown,
     ccProcessDisclosureDisplayedBorder, ccProcessDisclosureNotDisplayedBorder},
     {ccProcessPopupBackground}, ccProcessPopupBackground, kEdge},
    {visible, {ccMuteBtnOnBorderUp, ccMuteBtnOnBorderDown, ccMuteBtnOffBorderUp,
     ccMuteBtnOffBorderDown, ccMoveTrackAbove, ccMoveTrackBelow, ccTrackGroup1, ccTrackGroup2,
     ccTrackGroup3, ccTrackGroup4, ccTrackGroup5, ccTrackGroup6, ccTrackGroup7, ccTrackGroup8,
     ccTrackGroup9, ccTrackGroup10, ccTrackGroup11, ccTrackGroup12, ccTrackGroup13, ccTrackGroup14},
     {ccTrackInfoBackground}, ccTrackInfoBackground, kEdge},
    {visible, {ccCheckBoxCheckMark}, {ccCheckBoxFaceChecked, ccCheckBoxFaceDownChecked},
     ccCheckBoxFaceChecked, kEdge},
    {visible, {ccScrollerThumbFace, ccScrollerThumbBorder}, {ccScrollerSlotFace},
     ccScrollerSlotFace, kEdge},
    {visible, {ccPopupSliderTrack, ccPopupSliderAltMark, ccPopupSliderThumbSelected,
     ccPopupSliderThumbNotSelected}, {ccPopupSliderBackground}, ccPopupSliderBackground, kEdge},
    {visible, {ccSimpleSliderTrack, ccSimpleSliderAltMark, ccSimpleSliderThumbSelected,
     ccSimpleSliderThumbNotSelected}, {ccSimpleSliderBackground}, ccSimpleSliderBackground, kEdge},
    {visible, {ccDCSimpleSliderTrack, ccDCSimpleSliderAltMark, ccDCSimpleSliderThumbSelected,
     ccDCSimpleSliderThumbNotSelected}, {ccDCSimpleSliderBackground}, ccDCSimpleSliderBackground,
     kEdge},
    {visible, {ccCaretBackground}, {ccTextEditorBackground, ccTextEditorLightBackground},
     ccTextEditorBackground, kEdge},
    {visible, {ccMarkersBorder, ccMarkerEnabled}, {ccMarkersBackground}, ccMarkersBackground,
     kEdge},
    {visible, {ccPlaybackAreaEnabled, ccPlaybackAreaEndEnabled, ccPlaybackAreaPermanentEnabled,
     ccPlaybackAreaPermanentEndEnabled}, {ccPlaybackAreaBackground}, ccPlaybackAreaBackground,
     kEdge},
    {visible, {ccWordDisplayBreak, ccWordDragOverlayEdge}, {ccWordEven, ccWordOdd}, ccWordEven,
     kEdge},
    {visible, {ccUnselectedRegionSelectedAudio, ccUnselectedRegionUnselectedAudio,
     ccSelectedRegionSelectedAudio, ccSelectedRegionSuppressedSelectedAudio,
     ccSelectedRegionUnselectedAudio, ccRegionEdge, ccPlayhead, ccNeedsRender,
     ccPlaybackAreaOverlayEdge, ccMarkerTrackToTrackDragEnabled, ccProcessInputEdgeSelected,
     ccProcessInputEdgeUnselected, ccXYLockOnOverlay, ccXYLockOffOverlay, ccOverlapDepth1,
     ccOverlapDepth2, ccOverlapDepth3, ccBar, ccDataSetSelectionBox, ccAutomationEditConnectingLine,
     ccAutomationEditControlPoint, ccAutomationEditSelectedPoint, ccVolumeConnectingLine,
     ccVolumeControlPoint, ccVolumeSelectedPoint, ccVolumeGroupConnectingLine,
     ccVolumeGroupControlPoint, ccVolumeGroupSelectedPoint, ccMorlandGainEditConnectingLine,
     ccMorlandGainEditControlPoint, ccMorlandGainEditSelectedPoint,
     ccMorlandTargetGainEditConnectingLine, ccMorlandTargetGainEditControlPoint,
     ccMorlandTargetGainEditSelectedPoint, ccMorlandTargetGainEditGroupConnectingLine,
     ccMorlandTargetGainEditGroupControlPoint, ccMorlandTargetGainSibilanceEditGroupConnectingLine,
     ccMorlandTransientConnectingLine, ccMorlandTransientControlPoint,
     ccMorlandTransientSelectedPoint, ccMorlandSelectedPath, ccMorlandUnselectedPath,
     ccMorlandGuideSelectedFilterHandle, ccMorlandGuideUnselectedFilterHandle,
     ccMorlandDubSelectedFilterHandle, ccMorlandDubUnselectedFilterHandle}, {ccTrackBackground},
     ccTrackBackground, kEdge},
    {visible, {ccUnselectedRegionSelectedAudio, ccSelectedRegionSelectedAudio,
     ccSelectedRegionSuppressedSelectedAudio, ccSelectedRegionUnselectedAudio, ccPlayhead},
     {ccSelectedAudioBackground}, ccSelectedAudioBackground, kEdge},
    {visible, {ccMorlandPitchMarkerPitched, ccMorlandPitchMarkerUnpitched,
     ccMorlandPitchEditConnectingLine, ccMorlandPitchEditControlPoint,
     ccMorlandPitchEditSelectedPoint, ccMorlandPitchEditSibilant,
     ccMorlandTargetPitchEditConnectingLine, ccMorlandTargetPitchEditControlPoint,
     ccMorlandTargetPitchEditSelectedPoint, ccMorlandTargetPitchEditGroupConnectingLine,
     ccMorlandTargetPitchEditGroupControlPoint, ccMorlandTargetPitchSibilant,
     ccMorlandTargetPitchSelectedSibilant, ccMorlandPitchLimit, ccMorlandPitchLimitSelected,
     ccMorlandTargetPitchAverageValue, ccMorlandTargetPitchAverageValueSelected,
     ccTransitionPitchEditGroupConnectingLine, ccTransitionPitchEditGroupControlPoint,
     ccTransitionPitchEditSelectedPoint}, {ccMorlandSemitonesWhite, ccMorlandSemitonesBlack},
     ccMorlandSemitonesWhite, kEdge},

    // States of one thing, and neighbours.
    {distinct, {ccTrackGroup1, ccTrackGroup2, ccTrackGroup3, ccTrackGroup4, ccTrackGroup5,
     ccTrackGroup6, ccTrackGroup7, ccTrackGroup8, ccTrackGroup9, ccTrackGroup10, ccTrackGroup11,
     ccTrackGroup12, ccTrackGroup13, ccTrackGroup14}, {}, ccTrackBackground, kTrackGroups},
    {distinct, {ccUnselectedRegionSelectedAudio, ccUnselectedRegionUnselectedAudio,
     ccSelectedRegionSelectedAudio, ccSelectedRegionSuppressedSelectedAudio,
     ccSelectedRegionUnselectedAudio}, {}, ccTrackBackground, kStates},
    {distinct, {ccOverlapDepth1, ccOverlapDepth2, ccOverlapDepth3}, {}, ccTrackBackground, kStates},
    {distinct, {ccPopupSliderThumbSelected, ccPopupSliderThumbNotSelected,
     ccPopupSliderThumbDisabled}, {}, ccWindowBackground, kStates},
    {distinct, {ccSimpleSliderThumbSelected, ccSimpleSliderThumbNotSelected,
     ccSimpleSliderThumbDisabled}, {}, ccWindowBackground, kStates},
    {distinct, {ccDCSimpleSliderThumbSelected, ccDCSimpleSliderThumbNotSelected,
     ccDCSimpleSliderThumbDisabled}, {}, ccWindowBackground, kStates},
    {distinct, {ccButtonFace, ccButtonFaceActive}, {}, ccWindowBackground, kStates},
    {distinct, {ccButtonBorder, ccButtonBorderActive}, {}, ccWindowBackground, kStates},
    {distinct, {ccProcessControlBtnFaceUp, ccProcessControlBtnFaceDown}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccProcessControlBtnBorderUp, ccProcessControlBtnBorderDown}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccTransportBtnFaceUp, ccTransportBtnFaceDown}, {}, ccWindowBackground, kStates},
    {distinct, {ccTransportBtnBorderUp, ccTransportBtnBorderDown}, {}, ccWindowBackground, kStates},
    {distinct, {ccControlText, ccControlTextDisabled}, {}, ccWindowBackground, kStates},
    {distinct, {ccCheckBoxFaceUnChecked, ccCheckBoxFaceChecked}, {}, ccWindowBackground, kStates},
    {distinct, {ccCheckBoxFaceDownUnChecked, ccCheckBoxFaceDownChecked}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccCheckBoxFaceUnChecked, ccCheckBoxFaceDownUnChecked}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccCheckBoxFaceChecked, ccCheckBoxFaceDownChecked}, {}, ccWindowBackground, kStates},
    {distinct, {ccCheckBoxFaceDisabled, ccCheckBoxFaceChecked}, {}, ccWindowBackground, kStates},
    {distinct, {ccCheckBoxBorderUnChecked, ccCheckBoxBorderChecked}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccCheckBoxBorderDownUnChecked, ccCheckBoxBorderDownChecked}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccCheckBoxBorderUnChecked, ccCheckBoxBorderDownUnChecked}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccCheckBoxBorderChecked, ccCheckBoxBorderDownChecked}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccCheckBoxBorderDisabled, ccCheckBoxBorderChecked}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccCheckBoxBorderDisabled, ccCheckBoxBorderUnChecked}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccDisclosureArrowEnabled, ccDisclosureArrowDisabled}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccDisclosureArrowEnabled, ccDisclosureArrowButtonDown}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccMuteBtnOnFaceUp, ccMuteBtnOffFaceUp}, {}, ccWindowBackground, kStates},
    {distinct, {ccMuteBtnOnBorderUp, ccMuteBtnOffBorderUp}, {}, ccWindowBackground, kStates},
    {distinct, {ccMuteBtnOnFaceUp, ccSoloBtnOnFaceUp}, {}, ccWindowBackground, kStates},
    {distinct, {ccMuteBtnOffFaceUp, ccSoloBtnOnFaceUp}, {}, ccWindowBackground, kStates},
    {distinct, {ccMuteBtnOnFaceDown, ccMuteBtnOffFaceDown}, {}, ccWindowBackground, kStates},
    {distinct, {ccMuteBtnOnBorderDown, ccMuteBtnOffBorderDown}, {}, ccWindowBackground, kStates},
    {distinct, {ccMuteBtnOnFaceDown, ccSoloBtnOnFaceDown}, {}, ccWindowBackground, kStates},
    {distinct, {ccMuteBtnOffFaceDown, ccSoloBtnOnFaceDown}, {}, ccWindowBackground, kStates},
    {distinct, {ccMuteBtnOnFaceUp, ccMuteBtnOnFaceDown}, {}, ccWindowBackground, kStates},
    {distinct, {ccMuteBtnOffFaceUp, ccMuteBtnOffFaceDown}, {}, ccWindowBackground, kStates},
    {distinct, {ccSoloBtnOnFaceUp, ccSoloBtnOnFaceDown}, {}, ccWindowBackground, kStates},
    {distinct, {ccPopupSliderControlDisplayed, ccPopupSliderControlHidden}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccPopupSliderControlDisplayedBorder, ccPopupSliderControlHiddenBorder}, {},
     ccWindowBackground, kStates},
    {distinct, {ccSliderIndicatorHighlight, ccSliderIndicatorNormal}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccSliderIndicatorNormal, ccSliderIndicatorDisabled}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccScrollerSlotEnds, ccScrollerSlotEndDown}, {}, ccWindowBackground, kStates},
    {distinct, {ccTrackInfoBackground, ccTrackInfoBackgroundSelected}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccProcessPopupTitleBackground, ccSelectedProcessPopupTitleBackground}, {},
     ccWindowBackground, kStates},
    {distinct, {ccProcessDisclosureDisplayedFace, ccProcessDisclosureNotDisplayedFace}, {},
     ccWindowBackground, kStates},
    {distinct, {ccProcessDisclosureDisplayedBorder, ccProcessDisclosureNotDisplayedBorder}, {},
     ccWindowBackground, kStates},
    {distinct, {ccPlaybackAreaEnabled, ccPlaybackAreaDisabled}, {}, ccWindowBackground, kStates},
    {distinct, {ccPlaybackAreaPermanentEnabled, ccPlaybackAreaPermanentDisabled}, {},
     ccWindowBackground, kStates},
    {distinct, {ccPlaybackAreaEnabled, ccPlaybackAreaPermanentEnabled}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccPlaybackAreaEndEnabled, ccPlaybackAreaEndDisabled}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccPlaybackAreaPermanentEndEnabled, ccPlaybackAreaPermanentEndDisabled}, {},
     ccWindowBackground, kStates},
    {distinct, {ccPlaybackAreaEndEnabled, ccPlaybackAreaPermanentEndEnabled}, {},
     ccWindowBackground, kStates},
    {distinct, {ccPlaybackAreaEnabled, ccPlaybackAreaEndEnabled}, {}, ccWindowBackground, kStates},
    {distinct, {ccPlaybackAreaPermanentEnabled, ccPlaybackAreaPermanentEndEnabled}, {},
     ccWindowBackground, kStates},
    {distinct, {ccMarkerEnabled, ccMarkerDisabled}, {}, ccWindowBackground, kStates},
    {distinct, {ccMarkerTrackToTrackDragEnabled, ccMarkerTrackToTrackDragDisabled}, {},
     ccTrackBackground, kStates},
    {distinct, {ccXYLockOnOverlay, ccXYLockOffOverlay}, {}, ccTrackBackground, kStates},
    {distinct, {ccWordEven, ccWordSelectedEven}, {}, ccWindowBackground, kStates},
    {distinct, {ccWordOdd, ccWordSelectedOdd}, {}, ccWindowBackground, kStates},
    {distinct, {ccWordEven, ccWordOdd}, {}, ccWindowBackground, kStripes},
    {distinct, {ccWordSelectedEven, ccWordSelectedOdd}, {}, ccWindowBackground, kStripes},
    {distinct, {ccTrackOddLayerBackground, ccTrackEvenLayerBackground}, {}, ccTrackBackground,
     kStripes},
    {distinct, {ccTrackBackground, ccSelectedAudioBackground}, {}, ccTrackBackground, kStates},
    {distinct, {ccTrackBackground, ccDataNotLoaded}, {}, ccTrackBackground, kStates},
    {distinct, {ccMorlandSemitonesWhite, ccMorlandSemitonesBlack}, {}, ccTrackBackground, kStripes},
    {distinct, {ccBar, ccBeat}, {}, ccTrackBackground, kStates},
    {distinct, {ccProcessInputSelected, ccProcessInputUnselected}, {}, ccTrackBackground, kStates},
    {distinct, {ccProcessInputEdgeSelected, ccProcessInputEdgeUnselected}, {}, ccTrackBackground,
     kStates},
    {distinct, {ccAutomationEditControlPoint, ccAutomationEditSelectedPoint}, {}, ccTrackBackground,
     kStates},
    {distinct, {ccAutomationEditConnectingLine, ccAutomationEditControlPoint}, {},
     ccTrackBackground, kStates},
    {distinct, {ccVolumeControlPoint, ccVolumeSelectedPoint}, {}, ccTrackBackground, kStates},
    {distinct, {ccVolumeConnectingLine, ccVolumeControlPoint}, {}, ccTrackBackground, kStates},
    {distinct, {ccVolumeGroupControlPoint, ccVolumeGroupSelectedPoint}, {}, ccTrackBackground,
     kStates},
    {distinct, {ccVolumeGroupConnectingLine, ccVolumeGroupControlPoint}, {}, ccTrackBackground,
     kStates},
    {distinct, {ccMorlandPitchEditControlPoint, ccMorlandPitchEditSelectedPoint}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandPitchEditConnectingLine, ccMorlandPitchEditControlPoint}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandTargetPitchEditControlPoint, ccMorlandTargetPitchEditSelectedPoint}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandTargetPitchEditConnectingLine, ccMorlandTargetPitchEditControlPoint}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandGainEditControlPoint, ccMorlandGainEditSelectedPoint}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandGainEditConnectingLine, ccMorlandGainEditControlPoint}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandTargetGainEditControlPoint, ccMorlandTargetGainEditSelectedPoint}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandTargetGainEditConnectingLine, ccMorlandTargetGainEditControlPoint}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandTransientControlPoint, ccMorlandTransientSelectedPoint}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandTransientConnectingLine, ccMorlandTransientControlPoint}, {},
     ccTrackBackground, kStates},
    {distinct, {ccTransitionPitchEditGroupControlPoint, ccTransitionPitchEditSelectedPoint}, {},
     ccTrackBackground, kStates},
    {distinct, {ccAutomationEditPointGroup, ccAutomationEditPointSelectedGroup}, {},
     ccTrackBackground, kStates},
    {distinct, {ccVolumePointGroup, ccVolumePointSelectedGroup}, {}, ccTrackBackground, kStates},
    {distinct, {ccMorlandTargetPitchEditPointGroup, ccMorlandTargetPitchEditPointSelectedGroup}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandTargetGainEditPointGroup, ccMorlandTargetGainEditPointSelectedGroup}, {},
     ccTrackBackground, kStates},
    {distinct, {ccTransitionPitchEditPointGroup, ccTransitionPitchEditPointSelectedGroup}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandPitchEditConnectingLine, ccMorlandTargetPitchEditConnectingLine}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandGainEditConnectingLine, ccMorlandTargetGainEditConnectingLine}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandPitchMarkerPitched, ccMorlandPitchMarkerUnpitched}, {}, ccTrackBackground,
     kStates},
    {distinct, {ccMorlandSelectedPath, ccMorlandUnselectedPath}, {}, ccTrackBackground, kStates},
    {distinct, {ccMorlandPitchLimit, ccMorlandPitchLimitSelected}, {}, ccTrackBackground, kStates},
    {distinct, {ccMorlandTargetPitchAverageValue, ccMorlandTargetPitchAverageValueSelected}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandTargetPitchSibilant, ccMorlandTargetPitchSelectedSibilant}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandPitchEditSibilant, ccMorlandTargetPitchSibilant}, {}, ccTrackBackground,
     kStates},
    {distinct, {ccMorlandGuideSelectedFilterHandle, ccMorlandDubSelectedFilterHandle}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandGuideUnselectedFilterHandle, ccMorlandDubUnselectedFilterHandle}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandGuideSelectedFilterHandle, ccMorlandGuideUnselectedFilterHandle}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandGuideSelectedFilter0, ccMorlandGuideSelectedFilter1}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandGuideSelectedFilter0, ccMorlandGuideUnselectedFilter}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandDubSelectedFilterHandle, ccMorlandDubUnselectedFilterHandle}, {},
     ccTrackBackground, kStates},
    {distinct, {ccMorlandDubSelectedFilter0, ccMorlandDubSelectedFilter1}, {}, ccTrackBackground,
     kStates},
    {distinct, {ccMorlandDubSelectedFilter0, ccMorlandDubUnselectedFilter}, {}, ccTrackBackground,
     kStates},
    {distinct, {ccMorlandProjectButton, ccMorlandProjectButtonHighlighted}, {}, ccWindowBackground,
     kStates},
    {distinct, {ccMorlandProjectButton, ccMorlandProjectGreyButton}, {}, ccWindowBackground,
     kStates},
};
// clang-format on

/// Colours that are prescribed and clash, and one that is missing by prescription.
struct CGivenPair {
    CComponentCode first;
    CComponentCode second;
    std::span<const CPaletteEntry> (*palette)();
};
constexpr CGivenPair kGivenPairs[] = {
    {ccLabelText, ccSelectedTextBackground, DesignerPalette},
    {ccButtonBorder, ccWindowBackground, DesignerPalette},
    {ccControlText, ccButtonFace, EngineerPalette},
    {ccControlText, ccButtonFaceActive, EngineerPalette},
};

void AppendEveryTwo(CRuleRow const& row, std::vector<CSchemeRule>& rules) {
    for (auto first = row.codes.begin(); first != row.codes.end(); ++first) {
        for (auto second = std::next(first); second != row.codes.end(); ++second) {
            rules.push_back({row.kind, *first, *second, row.backdrop, row.dMinimum});
        }
    }
}

std::vector<CSchemeRule> ExpandRows() {
    std::vector<CSchemeRule> rules;
    for (CRuleRow const& row : kRows) {
        if (row.kind == RuleKind::distinct) AppendEveryTwo(row, rules);
        for (CComponentCode background : row.backgrounds) {
            for (CComponentCode code : row.codes) {
                rules.push_back({row.kind, code, background, row.backdrop, row.dMinimum});
            }
        }
    }
    return rules;
}

// What a palette has no row for is to be missing.
bool IsStillGiven(CComponentCode code, CGivenPair const& pair, CComponentsColors const& scheme) {
    const auto palette = pair.palette();
    const auto row = std::ranges::find(palette, code, &CPaletteEntry::code);
    CComponentColour const* colour = scheme.Find(code);
    if (row == palette.end() || colour == nullptr) return row == palette.end() && !colour;
    return CColourRamp(*colour).IsLike(CColourRamp(*row));
}

bool IsGiven(CSchemeRule const& rule, CComponentsColors const& scheme) {
    return std::ranges::any_of(kGivenPairs, [&](CGivenPair const& pair) {
        return pair.first == rule.first && pair.second == rule.second &&
               IsStillGiven(pair.first, pair, scheme) && IsStillGiven(pair.second, pair, scheme);
    });
}

CJudgement Judge(CSchemeRule const& rule, CComponentsColors const& scheme) {
    const auto measure = CRuleMeasure::Of(rule, scheme);
    if (!measure) return {rule, 0.0, Verdict::absent};
    const double dMeasured = measure->Measure();
    const Verdict fault = IsGiven(rule, scheme) ? Verdict::given : Verdict::broken;
    return {rule, dMeasured, dMeasured >= rule.dMinimum ? Verdict::kept : fault,
            measure->IsFaceMissing()};
}

}  // namespace

std::vector<CSchemeRule> const& SchemeRules() {
    static const std::vector<CSchemeRule> rules = ExpandRows();
    return rules;
}

std::vector<CJudgement> JudgeScheme(CComponentsColors const& scheme) {
    std::vector<CJudgement> judgements;
    judgements.reserve(SchemeRules().size());
    for (CSchemeRule const& rule : SchemeRules()) judgements.push_back(Judge(rule, scheme));
    return judgements;
}

std::string Describe(CJudgement const& judgement) {
    CSchemeRule const& rule = judgement.rule;
    const bool fDistinct = rule.kind == RuleKind::distinct;
    std::string text(ComponentCodeName(rule.first));
    text.append(fDistinct ? " and " : " on ");
    if (judgement.fFaceMissing)
        text.append(ComponentCodeName(rule.backdrop)).append(", without a ");
    text.append(ComponentCodeName(rule.second));
    text.append(fDistinct ? ": distance " : ": contrast ");
    text.append(OneDecimal(judgement.dMeasured)).append(", at least ");
    return text.append(OneDecimal(rule.dMinimum));
}
