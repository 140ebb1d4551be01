#include "display/display_dialog.h"

#include "display/color_map.h"
#include "display/display_pipeline.h"
#include "display/lookup_table.h"
#include "display/unit_list.h"
#include "platform/dialog.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "resources/help_contexts.h"
#include "resources/ids.h"
#include "state/display_state_write.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"
#include "ui/status.h"

namespace kelvo {

namespace {

constexpr int kBrightnessText = 1240;
constexpr int kBrightnessBar = 1242;
constexpr int kContrastText = 1244;
constexpr int kContrastBar = 1246;
constexpr int kReset = 1248;
constexpr int kBarBox = 1250;
constexpr int kTempScaleBox = 1252;
constexpr int kHistogramBox = 1254;

struct Levels {
    std::int32_t contrast = 0;
    std::int32_t brightness = 0;
};

// What the controls show until OK stores it.
struct Choices {
    std::int32_t color = kNormalGray;
    std::int32_t scale = kLinearScale;
    std::int32_t histogram = 0;
    Levels levels;
};

Choices choices;
Levels levelsAtOpening;  // for Cancel, and to tell at OK what changed
std::int32_t tempScaleAtOpening = 0;

void WriteDisplayKey(const char* key, std::int32_t value)
{
    WritePrivateProfileString("Display", key, Format("%d", value), IniFilePath);
}

void ApplyLevels()
{
    BuildDisplayLut(choices.levels.contrast, choices.levels.brightness);
}

void ShowLevels(HWND dialog)
{
    SetScrollPos(dialog, kBrightnessBar, choices.levels.brightness);
    SetScrollPos(dialog, kContrastBar, choices.levels.contrast);
    SetDlgItemText(dialog, kBrightnessText, Format("%d", choices.levels.brightness));
    SetDlgItemText(dialog, kContrastText, Format("%d", choices.levels.contrast));
}

void ShowRadios(HWND dialog, std::int32_t color, std::int32_t scale)
{
    CheckRadioButton(dialog, kNormalGray, kNormalColor, color);
    CheckRadioButton(dialog, kLinearScale, kLogScale, scale);
}

void ShowChoices(HWND dialog, bool barShown)
{
    ShowRadios(dialog, choices.color, choices.scale);
    CheckDlgButton(dialog, kBarBox, barShown);
    CheckDlgButton(dialog, kTempScaleBox, TempScale != 0);
    CheckDlgButton(dialog, kHistogramBox, choices.histogram != 0);
    ShowLevels(dialog);
}

void Open(HWND dialog)
{
    levelsAtOpening = {Contrast, Brightness};
    tempScaleAtOpening = TempScale;
    choices = {ImageColor, GrayScale, TempHisto, levelsAtOpening};
    if (TempScale == 1) write::display.GrayColorBar = 1;

    SetScrollRange(dialog, kBrightnessBar, kMinBrightness, kMaxBrightness);
    SetScrollRange(dialog, kContrastBar, kMinContrast, kMaxContrast);
    ShowChoices(dialog, GrayColorBar != 0);
    ShowUnits(dialog);
    ApplyLevels();
    CentreDialog(dialog);
    DockDialog(dialog);  // beside the picture that it changes
    StatusString(kDisplaySetupHint, kLeftAligned);
}

void PickColor(HWND /*dialog*/, int id)
{
    choices.color = id;
    SetColorMap(id);
    ApplyLevels();  // the map alone draws nothing
}

void PickScale(HWND /*dialog*/, int id)
{
    choices.scale = id;
    SetGrayScale(id);
    ApplyLevels();
}

void ClickBar(HWND dialog)
{
    ToggleColorBar();
    CheckDlgButton(dialog, kTempScaleBox, TempScale != 0);
}

void ClickTempScale(HWND dialog)
{
    write::display.TempScale = IsDlgButtonChecked(dialog, kTempScaleBox) ? 1 : 0;
    if (TempScale && !GrayColorBar) {
        ToggleColorBar();
        CheckDlgButton(dialog, kBarBox, true);
    } else {
        DrawTempScale(TempScale);
    }
}

// The histogram beside the picture never turns on.
void ClickHistogram(HWND dialog)
{
    CheckDlgButton(dialog, kHistogramBox, false);
    choices.histogram = 0;
    write::display.TempHisto = 0;
}

void Reset(HWND dialog)
{
    choices = {kNormalGray, kLinearScale, 0, {ResetContrast, ResetBrightness}};
    write::display.TempScale = 0;
    ShowChoices(dialog, true);
    FocusDlgItem(dialog, kContrastBar);
    SetColorMap(choices.color);
    SetGrayScale(choices.scale);
    ApplyLevels();
}

template <typename Setting>
void Keep(const char* key, Setting& setting, std::int32_t inForce, std::int32_t choice)
{
    if (inForce == choice) return;
    setting = static_cast<Setting>(choice);
    WriteDisplayKey(key, choice);
}

void Close(HWND dialog, int result)
{
    StatusString(kIdleHint, kLeftAligned);
    EndDialog(dialog, result);
}

void Accept(HWND dialog)
{
    Keep("ImageColor", write::display.ImageColor, ImageColor, choices.color);
    Keep("GrayScale", write::display.GrayScale, GrayScale, choices.scale);
    Keep("GrayColorBar", write::display.GrayColorBar, GrayColorBar, IsDlgButtonChecked(dialog, kBarBox) ? 1 : 0);
    Keep("TempHisto", write::display.TempHisto, TempHisto, choices.histogram);
    // The table took both on the way: what they were at opening tells whether they changed.
    Keep("Contrast", write::display.Contrast, levelsAtOpening.contrast, choices.levels.contrast);
    Keep("Brightness", write::display.Brightness, levelsAtOpening.brightness, choices.levels.brightness);
    Close(dialog, 1);
}

void Cancel(HWND dialog)
{
    write::display.TempScale = tempScaleAtOpening;
    ShowRadios(dialog, ImageColor, GrayScale);
    SetColorMap(ImageColor);
    SetGrayScale(GrayScale);
    BuildDisplayLut(levelsAtOpening.contrast, levelsAtOpening.brightness);
    Close(dialog, 0);
}

void ScrollBrightness(HWND dialog, int /*bar*/, int position)
{
    choices.levels.brightness = position;
    ShowLevels(dialog);
    ApplyLevels();
}

void ScrollContrast(HWND dialog, int /*bar*/, int position)
{
    choices.levels.contrast = position;
    ShowLevels(dialog);
    ApplyLevels();
}

void PickUnit(HWND dialog)
{
    TakeUnit(dialog);
}

// The picture keeps what it shows until its table is made again; the settings stay as they were.
void CloseWindow(HWND dialog)
{
    write::display.Contrast = levelsAtOpening.contrast;
    write::display.Brightness = levelsAtOpening.brightness;
    write::display.TempScale = tempScaleAtOpening;
    EndDialog(dialog, 0);
}

constexpr DialogEntry kEntries[] = {
    OnScroll(kBrightnessBar, ScrollBrightness),
    OnScroll(kContrastBar, ScrollContrast),
    {kLinearScale, PickScale},
    {kLogScale, PickScale},
    {kNormalGray, PickColor},
    {kInvertedGray, PickColor},
    {kNormalColor, PickColor},
    {kBarBox, ClickBar},
    {kTempScaleBox, ClickTempScale},
    {kHistogramBox, ClickHistogram},
    {kUnitList, PickUnit, kSelectionChanged},
    {kReset, Reset},
    {kIdOk, Accept},
    {kIdCancel, Cancel},
};
constexpr DialogFrame kFrame{.name = "DISPLAY",
                             .procedure = fnDISPLAYDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpDisplaySetup,
                             .closed = CloseWindow,
                             .cantOpenResult = -1};

}  // namespace

int DisplayDialog(HWND window)
{
    return RunDialog(kFrame, window);
}

LRESULT fnDISPLAYDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

void ToggleColorBar()
{
    write::display.GrayColorBar = GrayColorBar ? 0 : 1;
    WriteDisplayKey("GrayColorBar", GrayColorBar);
    if (!GrayColorBar || !TempScale) write::display.TempScale = 0;
}

}  // namespace kelvo
