#include "badpixel/geometry_dialog.h"

#include "badpixel/bad_pixel_state.h"
#include "badpixel/geometry_dialog_list.h"
#include "badpixel/geometry_dialog_mark.h"
#include "badpixel/pair_under_pointer.h"
#include "calib/orientation.h"
#include "calib/report_file.h"
#include "config/frame_rate_table.h"
#include "display/display_pipeline.h"
#include "pixel/bad_pixels.h"
#include "pixel/coefficient_lists.h"
#include "pixel/decommutation.h"
#include "pixel/unsaved_set.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "resources/help_contexts.h"
#include "state/cal_settings_write.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/head_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"
#include "ui/status.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr int kFlipHorizontalBox = 1300;
constexpr int kFlipVerticalBox = 1302;
constexpr int kRotateBox = 1304;
constexpr int kReplaceBox = 1306;
constexpr int kBadList = 1308;
constexpr int kRemove = 1310;
constexpr int kPairEdit = 1312;
constexpr int kAdd = 1314;
constexpr int kFileText = 1460;
constexpr int kFirstCamera = 1600;
constexpr int kSecondCamera = 1602;
constexpr int kSet = 1604;
constexpr int kCommit = 1606;  // no control of its own: what Set and Ok have in common
constexpr int kDescriptionText = 1608;
constexpr int kFindEdit = 20210;
constexpr int kClassText = 20211;
constexpr std::size_t kPairCharacters = 11;
constexpr std::array kListControls{kFindEdit, kBadList, kRemove, kPairEdit, kAdd};
// In the current directory.
const std::string kScratchFile = "BADDET.TMP";

// A flag's check box, its key in section Display, the flag in force, and the copy that the dialog works on.
struct Flag {
    int box;
    const char* key;
    std::int32_t* inForce;
    std::int32_t copy;
};
std::array<Flag, 4> flags{{{kFlipHorizontalBox, "MirrorVert", &write::display.MirrorVert, 0},
                           {kFlipVerticalBox, "MirrorHoriz", &write::display.MirrorHoriz, 0},
                           {kRotateBox, "RotateCCW", &write::display.RotateCCW, 0},
                           {kReplaceBox, "SubstBadPixels", &write::display.SubstBadPixels, 0}}};

bool settingsChanged = false;  // since the table was last set; outlives the dialog while the camera is on
bool listDirty = false;
bool listDisabled = true;
int selectedLine = 0;  // remembered between openings
std::vector<PixelPair> listed;
// What the set tells of its detectors, for the class of a line; image order before orientation, empty where it tells
// nothing.
struct KnownDetectors {
    BadDetMap withoutGain;
    std::vector<std::uint8_t> classes;  // of the set's report: the place in names + 1, 0 for good
    std::vector<BadDetectorClass> names;
};
KnownDetectors known;

// For Cancel: all that the dialog may change, as it was when it opened.
struct AtOpening {
    BadPixelState badPixels;
    std::vector<KeptProfileKey> keys;
    bool settingsChanged = false;
    int selectedLine = 0;
};
AtOpening atOpening;

std::vector<PixelPair> scratchLines;  // what the last edit put into the scratch file, or was to
bool scratchStands = false;           // the scratch file holds them

bool IsCalibrated()
{
    return CalType != 0;
}

void NoteChange()
{
    if (CameraOn) settingsChanged = true;
}

void Tell(std::string_view text)
{
    MessageBox(hWndMain, text, kMessageCaption);
}

void MarkListed(std::size_t line)
{
    if (line >= listed.size()) return;
    MarkPixel(DisplayedPlace(listed[line], OrientationInForce(), ActiveConfig));
}

// Which detectors the set has no gain for, image order before orientation; empty where its gains can't be read.
BadDetMap DetectorsWithoutGain()
{
    std::vector<float> gains(DecomList.size());
    const std::span<std::uint8_t> bytes(reinterpret_cast<std::uint8_t*>(gains.data()), gains.size() * sizeof(float));
    const std::optional<DecomTable> table = BuildDecomList(ActiveConfig, FrameRateRowAt(IndexFrameRate).ReadoutShift);
    if (!table || table->size() != gains.size()) return {};
    if (ReadList(CalSettings.GainFile, bytes, gains.size()) != ListRead::kComplete) return {};
    BadDetMap marks(gains.size());
    IdentifyBadDet(marks, gains, *table, ActiveConfig);
    return marks;
}

KnownDetectors WhatTheSetTells()
{
    KnownDetectors told{.withoutGain = DetectorsWithoutGain(), .classes = {}, .names = {}};
    if (std::optional<StoredReport> stored = ReadReport(CalSettings.CalFile)) {
        told.classes = MapBeforeOrientation(stored->map);
        told.names = std::move(stored->map.classes);
    }
    return told;
}

// The report's name for it, where that knows the pair as bad; otherwise what the gains tell.
std::string ClassOf(const PixelPair& pair)
{
    if (pair.row < 0 || pair.column < 0 || pair.column >= ActiveConfig.Hroi) return {};
    const auto index = static_cast<std::size_t>(std::int64_t{pair.row} * ActiveConfig.Hroi + pair.column);
    const std::size_t entry = index < known.classes.size() ? known.classes[index] : 0U;
    if (entry != 0 && entry <= known.names.size()) return known.names[entry - 1].name;
    if (index >= known.withoutGain.size()) return {};
    return known.withoutGain[index] ? "the calibration has no gain for it" : "bad by the list alone: it has a gain";
}

void ShowClass(HWND dialog)
{
    WarnDlgItem(dialog, kClassText, false);
    const auto line = static_cast<std::size_t>(selectedLine);
    const std::string text = line < listed.size() ? ClassOf(listed[line]) : std::string();
    if (text.empty()) {
        SetDlgItemText(dialog, kClassText, {});
        return;
    }
    SetDlgItemText(dialog, kClassText, Format("%d,%d: ", listed[line].row, listed[line].column) + text);
}

void MarkSelected()
{
    if (!listDisabled) MarkListed(static_cast<std::size_t>(selectedLine));
}

void ShowFlags(HWND dialog)
{
    for (Flag& flag : flags) {
        flag.copy = *flag.inForce;
        CheckDlgButton(dialog, flag.box, flag.copy != 0);
    }
}

void ShowCameras(HWND dialog)
{
    SetDlgItemText(dialog, kDescriptionText, ActiveConfig.Description);
    CheckRadioButton(dialog, kFirstCamera, kSecondCamera, kFirstCamera);
    EnableDlgItem(dialog, kSecondCamera, ActiveConfig.DualCamera != 0);
}

void SelectLine(HWND dialog, int line)
{
    selectedLine = std::clamp(line, 0, std::max(static_cast<int>(listed.size()) - 1, 0));
    if (!listed.empty()) ListSelect(dialog, kBadList, selectedLine);
    ShowClass(dialog);
}

void ShowList(HWND dialog)
{
    ListClear(dialog, kBadList);
    for (const PixelPair& pair : listed) ListAdd(dialog, kBadList, PixelPairText(pair));
    SelectLine(dialog, selectedLine);
}

void TakeList(HWND dialog, EditableBadList list)
{
    listDisabled = list.isTooLong;
    SetDlgItemText(dialog, kFileText, "Bad det file: " + CalSettings.BadDetFile);
    listed = std::move(list.pairs);
    known = listed.empty() ? KnownDetectors() : WhatTheSetTells();
    ShowList(dialog);
    MarkListed(0);
}

// False where the operator doesn't go on without the list.
bool OpenList(HWND dialog)
{
    if (!IsCalibrated() || CalSettings.BadDetFile.empty() || SetWithoutFiles()) return true;
    if (std::optional<EditableBadList> list = ReadEditableBadList(CalSettings.BadDetFile, ActiveConfig)) {
        TakeList(dialog, std::move(*list));
        return true;
    }
    const Button answer = MessageBox(
        dialog,
        "Unable to open Bad detector file:\n" + CalSettings.BadDetFile + "\nSetting Bad detector filename to NULL",
        kMessageCaption, BoxIcon::kExclamation, BoxButtons::kOkCancel);
    if (answer == Button::kOk) {
        write::calSet.CalSettings.BadDetFile.clear();
        return true;
    }
    Tell("Can not continue with invalid\nbad detector filename");
    return false;
}

void MakeScratchFile()
{
    if (CopyFileTo(CalSettings.BadDetFile, kScratchFile, false)) return;
    Tell("Could not save file: " + kScratchFile);
}

void OfferList(HWND dialog)
{
    FocusDlgItem(dialog, IsCalibrated() ? kReplaceBox : kFlipVerticalBox);
    if (listDisabled) {
        for (const int id : kListControls) EnableDlgItem(dialog, id, false);
    } else if (IsCalibrated()) {
        MakeScratchFile();
    }
}

bool SetHasFile()
{
    return IsCalibrated() && !CalSettings.CalFile.empty() && !SetWithoutFiles();
}

std::vector<KeptProfileKey> KeepKeys()
{
    std::vector<KeptProfileKey> keys;
    for (const Flag& flag : flags) {
        keys.push_back(KeepProfileKey("Display", flag.key, IniFilePath));
        if (SetHasFile()) keys.push_back(KeepProfileKey("Display", flag.key, CalSettings.CalFile));
    }
    return keys;
}

void Open(HWND dialog)
{
    StatusString(kImageSetupHint, kLeftAligned);
    if (!CameraOn) settingsChanged = false;
    atOpening = {TakeBadPixelState(), KeepKeys(), settingsChanged, selectedLine};
    listDirty = false;
    listDisabled = true;
    listed.clear();
    ShowFlags(dialog);
    ShowCameras(dialog);
    if (!OpenList(dialog)) {
        StatusString(kIdleHint, kLeftAligned);
        EndDialog(dialog, 0);
        return;
    }
    OfferList(dialog);
    CentreDialog(dialog);
    DockDialog(dialog);  // beside the picture that it marks
}

void TakeFlag(HWND dialog, int box)
{
    for (Flag& flag : flags) {
        if (flag.box == box) flag.copy = IsDlgButtonChecked(dialog, box) ? 1 : 0;
    }
    if (box != kReplaceBox || IsCalibrated()) NoteChange();
}

void WriteScratchFile()
{
    scratchStands = ReplaceFile(kScratchFile, BadListText(scratchLines));
    if (!scratchStands) Tell("Could not save file: " + kScratchFile);
}

void KeepEdit(std::vector<PixelPair> lines)
{
    scratchLines = std::move(lines);
    WriteScratchFile();
}

void RemoveSelected(HWND dialog)
{
    if (listDisabled) return;
    listDirty = true;
    NoteChange();
    if (std::cmp_less(selectedLine, listed.size())) {
        listed.erase(listed.begin() + selectedLine);
        ListDelete(dialog, kBadList, selectedLine);
        SelectLine(dialog, selectedLine - 1);
    }
    KeepEdit(listed);
}

void TellRange(const char* side, std::int32_t count)
{
    Tell(Format("Valid input range\n0 >= %s >= %3lld", side, count - 1LL));
}

// The pair that the operator typed, where it lies on the array; otherwise he is told what would.
std::optional<PixelPair> TypedPair(HWND dialog)
{
    constexpr PixelPair kNoPair{.row = -1, .column = -1};
    const std::string text = GetDlgItemText(dialog, kPairEdit).substr(0, kPairCharacters);
    const PixelPair pair = ScanPixelPair(text).value_or(kNoPair);
    const bool rowFits = pair.row >= 0 && pair.row < ActiveConfig.Vactive;
    const bool columnFits = pair.column >= 0 && pair.column < ActiveConfig.Hactive;
    if (!rowFits) TellRange("Row", ActiveConfig.Vactive);
    if (!columnFits) TellRange("Column", ActiveConfig.Hactive);
    if (!rowFits || !columnFits) return std::nullopt;
    return pair;
}

void AddTyped(HWND dialog)
{
    if (listDisabled) return;
    listDirty = true;
    NoteChange();
    const std::optional<PixelPair> pair = TypedPair(dialog);
    std::optional<ListWithPair> longer;
    if (pair) longer = InsertPair(listed, *pair);
    if (!pair || !longer) {
        KeepEdit(listed);
        return;
    }
    KeepEdit(std::move(longer->fileLines));
    listed = std::move(longer->lines);
    const int place = static_cast<int>(longer->place);
    ListInsert(dialog, kBadList, place, PixelPairText(*pair));
    SelectLine(dialog, place);
    MarkSelected();
}

void WriteFlags(const std::string& file)
{
    for (const Flag& flag : flags) WritePrivateProfileString("Display", flag.key, Format("%d", flag.copy), file);
}

// An edited list that can't be put in its place keeps its scratch file, and is tried again at the next commit; so is
// one whose scratch file couldn't be written.
bool CommitList()
{
    if (listDisabled || !listDirty) return true;
    if (!scratchStands) WriteScratchFile();
    if (!scratchStands) return false;
    if (!CopyFileTo(kScratchFile, CalSettings.BadDetFile, false)) {
        Tell("Could not save file: " + CalSettings.BadDetFile);
        return false;
    }
    listDirty = false;
    return true;
}

void Commit()
{
    for (const Flag& flag : flags) *flag.inForce = flag.copy;
    WriteFlags(IniFilePath);
    if (SetHasFile()) WriteFlags(CalSettings.CalFile);
    if (CommitList()) DeleteFileNamed(kScratchFile);
}

void Set()
{
    Commit();
    RebuildTable(ActiveConfig);
    StatusString(kImageSetupHint, kLeftAligned);
    settingsChanged = false;
    MarkSelected();
}

void Close(HWND dialog)
{
    const bool asks = settingsChanged && CameraOn;
    if (asks && MessageBox(dialog, "Settings were changed\nDo you want to SET changes?", kMessageCaption,
                           BoxIcon::kExclamation, BoxButtons::kYesNo) == Button::kYes) {
        Set();
    } else {
        Commit();
    }
    StatusString(kIdleHint, kLeftAligned);
    EndDialog(dialog, 1);
}

// Also what "Set" has done. Where a file can't be put back the dialog stays, and all is as it was.
void Cancel(HWND dialog)
{
    if (!PutBackBadPixelState(atOpening.badPixels)) return;
    PutBackProfileKeys(atOpening.keys);
    settingsChanged = atOpening.settingsChanged;
    selectedLine = atOpening.selectedLine;
    DeleteFileNamed(kScratchFile);
    StatusString(kIdleHint, kLeftAligned);
    EndDialog(dialog, 0);
}

void PickLine(HWND dialog)
{
    selectedLine = std::max(ListSelection(dialog, kBadList), 0);
    ShowClass(dialog);
    MarkSelected();
}

// The field that searches stands as it was typed where it still leads to the line.
void ClearSearchUnlessItLeadsTo(HWND dialog, std::size_t line)
{
    const std::string typed = GetDlgItemText(dialog, kFindEdit);
    if (!typed.empty() && FindPair(listed, typed) != line) SetDlgItemText(dialog, kFindEdit, {});
}

void WarnOfPress(HWND dialog, const std::string& text)
{
    SetDlgItemText(dialog, kClassText, text);
    WarnDlgItem(dialog, kClassText, true);
}

void ChoosePair(HWND dialog, const PairAtPixel& pair)
{
    ClearSearchUnlessItLeadsTo(dialog, pair.line);
    SelectLine(dialog, static_cast<int>(pair.line));
    MarkSelected();
    std::string text = GetDlgItemText(dialog, kClassText);
    if (text.empty()) text = Format("%d,%d", listed[pair.line].row, listed[pair.line].column);
    if (pair.answers) text += Format(" (%d,%d answers for it)", pair.answers->y, pair.answers->x);
    SetDlgItemText(dialog, kClassText, text);
}

// The operator presses on the picture: the pair there is chosen.
void PickOnPicture(HWND dialog, Point place)
{
    if (listDisabled) {
        WarnOfPress(dialog, "There is no list to choose from");
        return;
    }
    const Rect picture = PicturePoints();
    const bool isOnPicture =
        place.x >= picture.left && place.x < picture.right && place.y >= picture.top && place.y < picture.bottom;
    const Point pixel = PixelUnder(place);
    std::optional<PairAtPixel> pair;
    if (isOnPicture) {
        pair = PairNear(pixel, listed, PlacesShown(OrientationInForce(), ActiveConfig), DecomList, ActiveConfig);
    }
    if (pair) {
        ChoosePair(dialog, *pair);
    } else {
        WarnOfPress(dialog, isOnPicture ? Format("No pair of the list at %d,%d of the picture", pixel.y, pixel.x)
                                        : std::string("There is no picture there"));
    }
}

void Find(HWND dialog)
{
    const std::string typed = GetDlgItemText(dialog, kFindEdit);
    const std::optional<std::size_t> line = FindPair(listed, typed);
    if (line) {
        SelectLine(dialog, static_cast<int>(*line));
        MarkSelected();
    } else if (!typed.empty()) {
        SetDlgItemText(dialog, kClassText, typed + " isn't in the list");
        WarnDlgItem(dialog, kClassText, true);
    } else {
        ShowClass(dialog);
    }
}

constexpr DialogEntry kEntries[] = {
    {kFlipHorizontalBox, TakeFlag},
    {kFlipVerticalBox, TakeFlag},
    {kRotateBox, TakeFlag},
    {kReplaceBox, TakeFlag},
    {kFindEdit, Find, kEditChanged},
    {kBadList, PickLine, kSelectionChanged},
    {kRemove, RemoveSelected},
    {kAdd, AddTyped},
    {kSet, [](HWND /*dialog*/) { Set(); }},
    {kCommit, [](HWND /*dialog*/) { Commit(); }},
    {kIdOk, Close},
    {kIdCancel, Cancel},
};
constexpr DialogFrame kFrame{.name = "GEOMETRY",
                             .procedure = fnGEOMETRYDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpImageSetup,
                             .closed = Close,
                             .picturePressed = PickOnPicture};

}  // namespace

int GeometryDialog(HWND window)
{
    const int result = RunDialog(kFrame, window);
    RemoveMark();
    return result;
}

LRESULT fnGEOMETRYDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

void ResetGeometryDialog()
{
    for (Flag& flag : flags) flag.copy = 0;
    settingsChanged = false;
    listDirty = false;
    listDisabled = true;
    selectedLine = 0;
    listed.clear();
    known = {};
    scratchLines.clear();
    scratchStands = false;
    atOpening = {};
}

}  // namespace kelvo
