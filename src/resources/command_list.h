// The commands: the one list from which menu, accelerators, help contexts and the help's page on keys are made, in the
// menu's order. The shell's table of handlers is held against it when it is compiled.
//
// A new command is a number in ids.h, a row here, and a handler in shell/commands.cpp.
#pragma once

#include "resources/help_contexts.h"
#include "resources/ids.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace kelvo {

struct CommandRow {
    enum class Kind {
        kTop,          // a menu of the menu bar
        kItem,         // an item of it
        kCheck,        // an item that can be checked
        kRadio,        // an item of which one is checked among those that follow each other
        kSeparator,    //
        kSubmenu,      // a menu beside an item of it, up to kSubmenuEnd
        kSubmenuEnd,   //
        kList,         // the place of lines that come and go, such as the files last opened; id: of the first
        kWithoutItem,  // a command that keys, pointer or other commands give
        kKeyAlone,     // a key or a turn of the mouse that is no command: only the page on keys tells of it
        kHeading,      // what the page on keys puts above the rows that have no item
        kHelpAlone,    // no command any more: only the help knows the number
    };
    Kind kind = Kind::kItem;
    int id = 0;
    std::string_view text = {};  // of the item: '&' before its letter, the name of its key behind a tab; of a row
                                 // without an item: what the page on keys says of it
    int help = 0;                // help context; 0: "Help not available for this Menu item."
    std::string_view icon = {};  // name of an icon in the resources
    std::string_view key = {};   // of a row without an item
    bool needsBoard = false;     // grey while something records: the board is then the recording's
};

constexpr bool HasItem(const CommandRow& row)
{
    using enum CommandRow::Kind;
    return row.kind == kItem || row.kind == kCheck || row.kind == kRadio;
}

// What the main window answers to by itself, rows alone: user modules and recent files have ranges of numbers.
constexpr bool IsCommand(const CommandRow& row)
{
    return HasItem(row) || row.kind == CommandRow::Kind::kWithoutItem;
}

// The name of the command's key; empty where it has none.
constexpr std::string_view KeyOf(const CommandRow& row)
{
    if (!IsCommand(row)) return {};
    if (!HasItem(row)) return row.key;
    const std::size_t tab = row.text.find('\t');
    return tab == std::string_view::npos ? std::string_view() : row.text.substr(tab + 1);
}

// The makers of rows below.
namespace rows {

using Kind = CommandRow::Kind;

constexpr CommandRow Top(std::string_view text)
{
    return {.kind = Kind::kTop, .text = text};
}
constexpr CommandRow Item(int id, std::string_view text, int help = 0, std::string_view icon = {})
{
    return {.kind = Kind::kItem, .id = id, .text = text, .help = help, .icon = icon};
}
constexpr CommandRow Check(int id, std::string_view text, int help = 0)
{
    return {.kind = Kind::kCheck, .id = id, .text = text, .help = help};
}
constexpr CommandRow Radio(int id, std::string_view text, int help = 0)
{
    return {.kind = Kind::kRadio, .id = id, .text = text, .help = help};
}
constexpr CommandRow WithoutItem(int id, std::string_view key, std::string_view text, int help = 0)
{
    return {.kind = Kind::kWithoutItem, .id = id, .text = text, .help = help, .key = key};
}
constexpr CommandRow KeyAlone(std::string_view key, std::string_view text, int help = 0)
{
    return {.kind = Kind::kKeyAlone, .text = text, .help = help, .key = key};
}
constexpr CommandRow Heading(std::string_view text)
{
    return {.kind = Kind::kHeading, .text = text};
}
constexpr CommandRow HelpAlone(int id, int help)
{
    return {.kind = Kind::kHelpAlone, .id = id, .help = help};
}
// A command that takes frames for itself, or changes what the frames are.
constexpr CommandRow Board(CommandRow row)
{
    row.needsBoard = true;
    return row;
}
inline constexpr CommandRow kLine{.kind = Kind::kSeparator};
constexpr CommandRow Submenu(std::string_view text)
{
    return {.kind = Kind::kSubmenu, .text = text};
}
constexpr CommandRow List(int firstId)
{
    return {.kind = Kind::kList, .id = firstId};
}
inline constexpr CommandRow kSubmenuEnd{.kind = Kind::kSubmenuEnd};

inline constexpr CommandRow kAll[] = {
    Top("&File"),
    Board(Item(kCmdHostRamCapture, "&Host RAM capture...\tShift+F3", kHelpHostRamCapture)),
    kLine,
    Board(Item(kCmdSaveImage, "&Save image...\tF3", kHelpSaveImage, "save")),
    Item(kCmdLoadImage, "&Load image...\tF6", kHelpLoadImage, "load"),
    kLine,
    Item(kCmdNameSequenceForSaving, "&Name sequence for saving...\tF4", kHelpNameSequenceForSaving),
    Board(Item(kCmdSaveSequence, "S&ave sequence\tF5", kHelpSaveSequence)),
    Board(Item(kCmdContinuousSave, "&Continous save sequence...", kHelpContinuousSave)),
    Board(Item(kCmdTriggeredSave, "&Bio-Rad save...")),
    kLine,
    Item(kCmdRecorder, "R&ecord...\tCtrl+R", kHelpRecorder, "record"),
    Item(kCmdRecorderTrigger, "&Trigger the recorder\tCtrl+T", kHelpRecorder),
    Item(kCmdRecorderMark, "Mar&k the recording\tCtrl+M", kHelpRecorder),
    kLine,
    Item(kCmdNameSequenceToLoad, "Na&me sequence to load...\tShift+F4", kHelpNameSequenceToLoad, "sequence"),
    Item(kCmdLoadNext, "L&oad next\tF7", kHelpLoadNext, "next"),
    Item(kCmdLoadLast, "Loa&d last\tShift+F7", kHelpLoadLast, "previous"),
    kLine,
    Board(Item(kCmdSaveBitmap, "Save &bitmap image...")),
    Board(Item(kCmdSaveTiff8, "Save 8-bit TIFF image...")),
    Board(Item(kCmdSaveTiff16, "Save 16-bit TIFF image...")),
    Board(Item(kCmdExport, "Export...\tCtrl+E", kHelpExport)),
    kLine,
    Board(Item(kCmdPrintBitmap, "&Print bitmap image...\tShift+PrintScrn", 0, "print")),
    Item(kCmdPrinterSetup, "P&rinter setup..."),
    kLine,
    List(kCmdRecentFirst),
    kLine,
    Item(kCmdExit, "E&xit\tCtrl+Q", kHelpExit, "exit"),

    Top("&Setup"),
    Item(kCmdDisplaySetup, "&Display setup...\tCtrl+D", kHelpDisplaySetup, "display"),
    Board(Item(kCmdVideoSetup, "&Video setup...\tCtrl+V", kHelpVideoSetup, "oscilloscope")),
    Item(kCmdImageSetup, "&Image setup...\tCtrl+I", kHelpImageSetup),
    Board(Item(kCmdConfiguration, "&Configuration...", kHelpConfiguration)),
    Board(Item(kCmdCameras, "Ca&meras...", kHelpCameras)),
    kLine,
    Board(Item(kCmdTurnOn, "&Turn Vantir on ", kHelpTurnOn)),

    Top("&Calibration"),
    Board(Item(kCmdNewCalibration, "&New...\tCtrl+C", kHelpNewCalibration)),
    Board(Item(kCmdUpdateCalibration, "&Update...", kHelpUpdateCalibration)),
    Item(kCmdSaveCalibration, "&Save...", kHelpSaveCalibration),
    Board(Item(kCmdLoadCalibration, "&Load previous...", kHelpLoadCalibration)),
    kLine,
    Item(kCmdApplyCalibration, "&Apply to data..."),
    Item(kCmdViewStatistics, "&View statistics...", kHelpViewStatistics),
    Item(kCmdCalibrationReport, "&Report...", kHelpCalibrationReport),
    kLine,
    Board(Item(kCmdVoltageCalibration, "V&oltage...", kHelpVoltageCalibration)),

    Top("&Image"),
    Item(kCmdFreeze, "&Freeze frame\tF2", kHelpFreeze, "freeze"),
    Check(kCmdReplaceBadPixels, "&Replace bad pixels\tF9", kHelpReplaceBadPixels),
    kLine,
    Radio(kCmdNormalGray, "&Normal gray", kHelpColorMaps),
    Radio(kCmdInvertedGray, "&Inverted gray", kHelpColorMaps),
    Radio(kCmdNormalColor, "Normal &color", kHelpColorMaps),
    kLine,
    Check(kCmdImageCursor, "&Image cursor\tF8", kHelpImageCursor),
    kLine,
    Item(kCmdUndo, "&Undo\tCtrl+Z", kHelpUndo, "undo"),
    Item(kCmdRedo, "R&edo\tCtrl+Shift+Z", kHelpUndo, "redo"),

    Top("&Analysis"),
    Item(kCmdHistogram, "&Histogram...\tShift+F8", kHelpHistogram, "histogram"),
    Item(kCmdLinePlot, "&Line plot...", kHelpLinePlot),
    Item(kCmdTraces, "&Traces...", kHelpTraces),
    Item(kCmdNoise, "&Noise...", kHelpNoise),
    Board(Item(kCmdImageMath, "&Image math...", kHelpImageMath)),
    kLine,
    Submenu("&Scripts"),
    Item(kCmdScriptWindow, "Script &window", kHelpScripts),
    Item(kCmdScriptStop, "S&top the script", kHelpScripts),
    Check(kCmdScriptRecord, "&Record...", kHelpScripts),
    kLine,
    List(kCmdScriptFirst),
    kSubmenuEnd,

    Top("&View"),
    Item(kCmdViewGoToFrame, "&Go to frame...\tCtrl+G"),
    Item(kCmdViewPlay, "&Play\tCtrl+P", kHelpPlaying, "play"),
    Item(kCmdViewStop, "&Stop\tCtrl+.", kHelpPlaying, "stop"),
    Item(kCmdViewPlayOrStop, "P&lay or stop\tSpace", kHelpPlaying),
    Check(kCmdViewBackwards, "Pla&y backwards\tCtrl+B", kHelpPlaying),
    Check(kCmdViewLoop, "L&oop\tCtrl+L", kHelpPlaying),
    Item(kCmdViewFaster, "Fas&ter\tCtrl+Up", kHelpPlaying),
    Item(kCmdViewSlower, "Slo&wer\tCtrl+Down", kHelpPlaying),
    Item(kCmdViewGaps, "Gaps a&nd marks...\tCtrl+Shift+G", kHelpRecorded),
    kLine,
    Item(kCmdViewFit, "F&it\tCtrl+0", kHelpViewMenu),
    Item(kCmdViewOneToOne, "&1:1\tCtrl+1", kHelpViewMenu),
    Item(kCmdViewCentre, "C&entre\tCtrl+5", kHelpViewMenu),
    kLine,
    Item(kCmdViewCopyPicture, "&Copy picture\tCtrl+Shift+C", 0, "copy"),
    Item(kCmdViewFitContrast, "&Fit contrast\tCtrl+F", 0, "contrast"),
    Check(kCmdViewKeepFitted, "&Keep fitted", kHelpViewMenu),
    Item(kCmdDifference, "&Difference...", kHelpDifference),
    kLine,
    Item(kCmdViewRegions, "&Regions...\tCtrl+Shift+R", kHelpRegions),
    kLine,
    Check(kCmdViewFrameAccount, "Frame &account", kHelpFrameAccount),
    Check(kCmdViewColorScale, "Colo&ur scale", kHelpColorScale),
    Check(kCmdViewSaturation, "Saturation o&verlay", kHelpSaturation),
    kLine,
    Submenu("The&me"),
    Radio(kCmdThemeDesktop, "&Desktop's theme", kHelpViewMenu),
    Radio(kCmdThemeLight, "Lig&ht theme", kHelpViewMenu),
    Radio(kCmdThemeDark, "Dark the&me", kHelpViewMenu),
    kSubmenuEnd,
    kLine,
    Item(kCmdBench, "Simulated &bench...", kHelpBench),

    Top("&USER"),
    Item(kCmdNoUserFunction, "(&none)"),

    Top("&Help"),
    Item(kCmdHelpContents, "&Contents", kHelpContents, "help"),
    Item(kCmdHelpSearch, "&Search\tF1", kHelpSearch),
    Item(kCmdHelpKeys, "&Keys help", kHelpKeys),
    Item(kCmdHelpOnHelp, "&Help for help", kHelpOnHelp),
    kLine,
    Item(kCmdDesktopTutorial, "Windows &Tutorial"),
    Item(kCmdKelvoTutorial, "&Kelvo Tutorial", kHelpTutorial),
    kLine,
    Item(kCmdSupportFiles, "Save support &files...", kHelpSupport),
    Item(kCmdAbout, "&About", kHelpAbout, "about"),

    WithoutItem(kCmdDialogHelp, {}, {}, kHelpOfDialogs),
    Heading("The picture"),
    WithoutItem(kCmdTrackball, "F10",
                "Trackball mode on and off: the pointer moves brightness and contrast; Esc ends it too"),
    WithoutItem(kCmdNextColorMap, "F11", "Next color map"),
    Heading("Zoom and pan"),
    WithoutItem(kCmdZoomIn, "+", "Zoom in by one step, up to 16"),
    WithoutItem(kCmdZoomOut, "-", "Zoom out by one step, down to 1"),
    WithoutItem(kCmdPanRight, "Right", "Pan right by one pixel"),
    WithoutItem(kCmdPanLeft, "Left", "Pan left by one pixel"),
    WithoutItem(kCmdPanUp, "Up", "Pan up by one line"),
    WithoutItem(kCmdPanDown, "Down", "Pan down by one line"),
    WithoutItem(kCmdPanPageRight, "Home", "Pan right by a sixteenth of the frame"),
    WithoutItem(kCmdPanPageLeft, "End", "Pan left by a sixteenth of the frame"),
    WithoutItem(kCmdPanPageUp, "PgUp", "Pan up by a sixteenth of the frame"),
    WithoutItem(kCmdPanPageDown, "PgDn", "Pan down by a sixteenth of the frame"),
    Heading("Place of the picture in the window"),
    WithoutItem(kCmdOffsetRight, "Shift+Right", "Move the picture right by 4"),
    WithoutItem(kCmdOffsetLeft, "Shift+Left", "Move the picture left by 4"),
    WithoutItem(kCmdOffsetUp, "Shift+Up", "Move the picture up by 1"),
    WithoutItem(kCmdOffsetDown, "Shift+Down", "Move the picture down by 1"),
    WithoutItem(kCmdOffsetPageRight, "Shift+End", "Move the picture right by a sixteenth of the frame"),
    WithoutItem(kCmdOffsetPageLeft, "Shift+Home", "Move the picture left by a sixteenth of the frame"),
    WithoutItem(kCmdOffsetPageUp, "Shift+PgUp", "Move the picture up by a sixteenth of the frame"),
    WithoutItem(kCmdOffsetPageDown, "Shift+PgDn", "Move the picture down by a sixteenth of the frame"),
    Heading("Regions, while their window is open"),
    WithoutItem(kCmdRegionRemove, "Del", "Remove the selected region", kHelpRegions),
    WithoutItem(kCmdRegionWider, "Ctrl+Right", "Make the selected region wider by one pixel", kHelpRegions),
    WithoutItem(kCmdRegionNarrower, "Ctrl+Left", "Make the selected region narrower by one pixel", kHelpRegions),
    KeyAlone("Ctrl+Down, Ctrl+Up", "Make it higher or lower by one pixel", kHelpRegions),
    KeyAlone("Arrows, Shift+Arrows", "Move it by one pixel, or by ten", kHelpRegions),
    Heading("The control panel"),
    KeyAlone("Tab, Shift+Tab", "To the next control of the panel, and back", kHelpPanel),
    KeyAlone("Space, in the panel", "Press the control that has the focus", kHelpPanel),
    Heading("The mouse, over the picture"),
    KeyAlone("Left button", "Image cursor on and off", kHelpImageCursor),
    KeyAlone("Double click", "Save image", kHelpSaveImage),
    KeyAlone("Right button", "Trackball mode on and off"),
    KeyAlone("Middle button", "Drag the picture"),
    KeyAlone("Wheel", "Zoom in and out about the pointer"),

    HelpAlone(21, kHelpOlder512),
    HelpAlone(22, kHelpOlder513),
    HelpAlone(146, kHelpOlder358),
    HelpAlone(147, kHelpOlder358),
    HelpAlone(149, kHelpOlder361),
    HelpAlone(150, kHelpOlder362),
    HelpAlone(164, kHelpOlder375),
};

}  // namespace rows

inline constexpr const auto& kCommandList = rows::kAll;

// The row of a number; the list's end for a number without one.
constexpr const CommandRow* CommandRowOf(int id)
{
    return std::ranges::find_if(kCommandList, [id](const CommandRow& row) { return row.id == id && id != 0; });
}

// What a user-written function does nobody knows.
constexpr bool NeedsBoard(int id)
{
    if (kCmdUserFirst <= id && id <= kCmdUserLast) return true;
    const CommandRow* const row = CommandRowOf(id);
    return row != std::end(kCommandList) && row->needsBoard;
}

}  // namespace kelvo
