#include "resources/menu.h"

#include "resources/ids.h"

#include <algorithm>
#include <iterator>

namespace kelvo {

namespace {

using Kind = MenuEntry::Kind;

constexpr MenuEntry Top(std::string_view text)
{
    return {.kind = Kind::kTop, .id = 0, .text = text};
}
constexpr MenuEntry Item(int id, std::string_view text, std::string_view icon = {})
{
    return {.kind = Kind::kItem, .id = id, .text = text, .icon = icon};
}
constexpr MenuEntry Check(int id, std::string_view text)
{
    return {.kind = Kind::kItem, .id = id, .text = text, .icon = {}, .checkable = true};
}
constexpr MenuEntry kLine{.kind = Kind::kSeparator, .id = 0, .text = {}};
constexpr MenuEntry kRecent{.kind = Kind::kRecentFiles, .id = 0, .text = {}};

constexpr MenuEntry kMenu[] = {
    Top("&File"),
    Item(kCmdHostRamCapture, "&Host RAM capture...\tShift+F3"),
    kLine,
    Item(kCmdSaveImage, "&Save image...\tF3", "save"),
    Item(kCmdLoadImage, "&Load image...\tF6", "load"),
    kLine,
    Item(kCmdNameSequenceForSaving, "&Name sequence for saving...\tF4"),
    Item(kCmdSaveSequence, "S&ave sequence\tF5"),
    Item(kCmdContinuousSave, "&Continous save sequence..."),
    Item(kCmdTriggeredSave, "&Bio-Rad save..."),
    kLine,
    Item(kCmdNameSequenceToLoad, "Na&me sequence to load...\tShift+F4", "sequence"),
    Item(kCmdLoadNext, "L&oad next\tF7", "next"),
    Item(kCmdLoadLast, "Loa&d last\tShift+F7", "previous"),
    kLine,
    Item(kCmdSaveBitmap, "Save &bitmap image..."),
    Item(kCmdSaveTiff8, "Save 8-bit TIFF image..."),
    Item(kCmdSaveTiff16, "Save 16-bit TIFF image..."),
    kLine,
    Item(kCmdPrintBitmap, "&Print bitmap image...\tShift+PrintScrn", "print"),
    Item(kCmdPrinterSetup, "P&rinter setup..."),
    kLine,
    kRecent,
    kLine,
    Item(kCmdExit, "E&xit\tCtrl+Q", "exit"),

    Top("&Setup"),
    Item(kCmdDisplaySetup, "&Display setup...\tCtrl+D", "display"),
    Item(kCmdVideoSetup, "&Video setup...\tCtrl+V", "oscilloscope"),
    Item(kCmdImageSetup, "&Image setup...\tCtrl+I"),
    Item(kCmdConfiguration, "&Configuration..."),
    kLine,
    Item(kCmdTurnOn, "&Turn Vantir on "),

    Top("&Calibration"),
    Item(kCmdNewCalibration, "&New...\tCtrl+C"),
    Item(kCmdUpdateCalibration, "&Update..."),
    Item(kCmdSaveCalibration, "&Save..."),
    Item(kCmdLoadCalibration, "&Load previous..."),
    kLine,
    Item(kCmdApplyCalibration, "&Apply to data..."),
    Item(kCmdViewStatistics, "&View statistics..."),

    Top("&Image"),
    Item(kCmdFreeze, "&Freeze frame\tF2", "freeze"),
    Check(kCmdReplaceBadPixels, "&Replace bad pixels\tF9"),
    kLine,
    Check(kCmdNormalGray, "&Normal gray"),
    Check(kCmdInvertedGray, "&Inverted gray"),
    Check(kCmdNormalColor, "Normal &color"),
    kLine,
    Check(kCmdImageCursor, "&Image cursor\tF8"),

    Top("&Analysis"),
    Item(kCmdHistogram, "&Histogram...\tShift+F8", "histogram"),
    Item(kCmdLinePlot, "&Line plot..."),
    Item(kCmdImageMath, "&Image math..."),

    Top("&View"),
    Item(kCmdViewGoToFrame, "&Go to frame...\tCtrl+G"),
    Item(kCmdViewPlay, "&Play\tCtrl+P", "play"),
    Item(kCmdViewStop, "&Stop\tCtrl+.", "stop"),
    kLine,
    Item(kCmdViewCopyPicture, "&Copy picture\tCtrl+Shift+C", "copy"),
    Item(kCmdViewFitContrast, "&Fit contrast\tCtrl+F", "contrast"),
    kLine,
    Check(kCmdViewFrameAccount, "Frame &account"),
    Check(kCmdViewColorScale, "Colour &scale"),
    Check(kCmdViewSaturation, "Sat&uration overlay"),
    kLine,
    Item(kCmdBench, "Simulated &bench..."),

    Top("&Help"),
    Item(kCmdHelpContents, "&Contents", "help"),
    Item(kCmdHelpSearch, "&Search\tF1"),
    Item(kCmdHelpKeys, "&Keys help"),
    Item(kCmdHelpOnHelp, "&Help for help"),
    kLine,
    Item(kCmdDesktopTutorial, "Windows &Tutorial"),
    Item(kCmdKelvoTutorial, "&Kelvo Tutorial"),
    kLine,
    Item(kCmdAbout, "&About", "about"),
};

constexpr Accelerator kAccelerators[] = {
    {"Shift+F3", kCmdHostRamCapture},
    {"F3", kCmdSaveImage},
    {"F6", kCmdLoadImage},
    {"F4", kCmdNameSequenceForSaving},
    {"F5", kCmdSaveSequence},
    {"Shift+F4", kCmdNameSequenceToLoad},
    {"F7", kCmdLoadNext},
    {"Shift+F7", kCmdLoadLast},
    {"Shift+PrintScrn", kCmdPrintBitmap},
    {"Ctrl+Q", kCmdExit},
    {"Ctrl+D", kCmdDisplaySetup},
    {"Ctrl+V", kCmdVideoSetup},
    {"Ctrl+I", kCmdImageSetup},
    {"Ctrl+C", kCmdNewCalibration},
    {"F2", kCmdFreeze},
    {"F9", kCmdReplaceBadPixels},
    {"F8", kCmdImageCursor},
    {"F10", kCmdTrackball},
    {"F11", kCmdNextColorMap},
    {"Shift+F8", kCmdHistogram},
    {"F1", kCmdHelpSearch},
    {"+", 200},
    {"-", 201},
    {"Right", 202},
    {"Left", 203},
    {"Up", 204},
    {"Down", 205},
    {"Home", 206},
    {"End", 207},
    {"PgUp", 208},
    {"PgDn", 209},
    {"Shift+Right", 210},
    {"Shift+Left", 211},
    {"Shift+Up", 212},
    {"Shift+Down", 213},
    {"Shift+End", 214},
    {"Shift+Home", 215},
    {"Shift+PgUp", 216},
    {"Shift+PgDn", 217},
    {"Ctrl+G", kCmdViewGoToFrame},
    {"Ctrl+P", kCmdViewPlay},
    {"Ctrl+.", kCmdViewStop},
    {"Ctrl+Shift+C", kCmdViewCopyPicture},
    {"Ctrl+F", kCmdViewFitContrast},
};

struct HelpRow {
    int command;
    int context;
};
constexpr HelpRow kHelp[] = {
    {103, 256}, {106, 257}, {107, 258},  {108, 259},   {109, 260},   {110, 264},   {113, 265},   {114, 266},
    {115, 267}, {119, 268}, {120, 288},  {121, 289},   {122, 290},   {123, 291},   {130, 320},   {131, 321},
    {132, 322}, {133, 323}, {135, 324},  {140, 352},   {141, 353},   {143, 354},   {144, 354},   {145, 354},
    {146, 358}, {147, 358}, {124, 1048}, {149, 361},   {150, 362},   {151, 363},   {160, 369},   {161, 370},
    {162, 372}, {164, 375}, {169, 41},   {21, 512},    {22, 513},    {190, 769},   {191, 768},   {192, 770},
    {193, 772}, {195, 771}, {196, 773},  {2006, 2007}, {2007, 2008}, {2008, 2009}, {2009, 2010},
};

}  // namespace

std::span<const MenuEntry> MainMenu()
{
    return kMenu;
}

std::span<const Accelerator> MainAccelerators()
{
    return kAccelerators;
}

int HelpContextOf(int command)
{
    const auto* const row = std::ranges::find(kHelp, command, &HelpRow::command);
    return row == std::end(kHelp) ? 0 : row->context;
}

}  // namespace kelvo
