#include "regions/region_window.h"

#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/file_dialog.h"
#include "platform/front.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "regions/bad_detectors.h"
#include "regions/region_editing.h"
#include "regions/region_list.h"
#include "regions/region_table.h"
#include "regions/region_view.h"
#include "regions/regions_file.h"
#include "resources/dialog_ids.h"
#include "resources/help_contexts.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"
#include "ui/select_file.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr std::uint32_t kRefreshTimer = 1;
constexpr std::int64_t kRefreshMs = 100;
constexpr int kFields[] = {kRegName, kRegX1, kRegY1, kRegX2, kRegY2, kRegEmissivity, kRegReflected, kRegApply};
constexpr std::string_view kDrawn[] = {"Select and move", "Rectangle", "Ellipse", "Line", "Point"};

HWND hDlgRegions = nullptr;

// What the window shows, so that only what differs is written.
struct Shown {
    std::vector<std::string> lines{};
    std::string head{};
    std::optional<Region> fields{};  // of the region that they belong to
    std::int32_t selected = 0;
};
Shown shown;
bool isFilling = false;  // the table's messages are our own

void Tell(HWND dialog, std::string_view text, bool warns = false)
{
    SetDlgItemText(dialog, kRegMessage, text);
    WarnDlgItem(dialog, kRegMessage, warns);
}

void Refuse(HWND dialog, int field, std::string_view why)
{
    MessageBeep(Sound::kDefault);
    Tell(dialog, why, true);
    FocusDlgItem(dialog, field);
}

// ---- the table

int IndexOf(std::int32_t number)
{
    for (std::size_t i = 0; i < Regions.size(); ++i) {
        if (Regions[i].number == number) return static_cast<int>(i);
    }
    return -1;
}

// Line by line, so that the list stays where it was scrolled to.
void ShowLines(HWND dialog, const std::vector<std::string>& lines)
{
    isFilling = true;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const int index = static_cast<int>(i);
        if (i >= shown.lines.size()) {
            ListAdd(dialog, kRegTable, lines[i]);
        } else if (lines[i] != shown.lines[i]) {
            ListInsert(dialog, kRegTable, index, lines[i]);
            ListDelete(dialog, kRegTable, index + 1);
        }
    }
    for (std::size_t i = shown.lines.size(); i > lines.size(); --i)
        ListDelete(dialog, kRegTable, static_cast<int>(i) - 1);
    shown.lines = lines;
    isFilling = false;
}

// The region that is selected is marked; or, where that one stayed, a line that was chosen without a message: the list
// takes its first line by itself where it gets the keyboard, and then sends none for it.
void FollowSelection(HWND dialog, bool again)
{
    const int chosen = ListSelection(dialog, kRegTable);
    if (std::exchange(shown.selected, SelectedRegion) != SelectedRegion || again) {
        isFilling = true;
        ListSelect(dialog, kRegTable, IndexOf(SelectedRegion));
        isFilling = false;
    } else if (chosen >= 0 && chosen != IndexOf(SelectedRegion)) {
        SelectRegion(Regions[static_cast<std::size_t>(chosen)].number);
        shown.selected = SelectedRegion;
    }
}

void ShowTable(HWND dialog)
{
    const std::int32_t unit = UnitOfRegions();
    std::string head = RegionTableHead(unit);
    if (head != shown.head) SetDlgItemText(dialog, kRegHead, head);
    shown.head = std::move(head);
    const std::vector<RegionReading> readings = ReadRegions();
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < Regions.size(); ++i) lines.push_back(RegionTableLine(Regions[i], readings[i], unit));
    const bool changed = lines != shown.lines;
    if (changed) ShowLines(dialog, lines);
    FollowSelection(dialog, changed);
}

// ---- the fields

void ShowFields(HWND dialog)
{
    const Region* const selected = FindRegion(SelectedRegion);
    const std::optional<Region> region = selected ? std::optional(*selected) : std::nullopt;
    if (region == shown.fields) return;
    shown.fields = region;
    const auto number = [&](int field, std::int32_t value) {
        SetDlgItemText(dialog, field, region ? std::to_string(value) : "");
    };
    const RegionPlace place = region.value_or(Region{}).place;
    SetDlgItemText(dialog, kRegName, region ? region->name : "");
    number(kRegX1, place.x1);
    number(kRegY1, place.y1);
    number(kRegX2, place.x2);
    number(kRegY2, place.y2);
    SetDlgItemText(dialog, kRegEmissivity, region ? Format("%.6g", region->emissivity) : "");
    SetDlgItemText(dialog, kRegReflected, region && region->reflectedC ? Format("%.6g", *region->reflectedC) : "");
    for (const int field : kFields) EnableDlgItem(dialog, field, region.has_value());
    EnableDlgItem(dialog, kRegRemove, region.has_value());
    const bool hasSecond = region && region->shape != RegionShape::kPoint;
    EnableDlgItem(dialog, kRegX2, hasSecond);
    EnableDlgItem(dialog, kRegY2, hasSecond);
}

template <typename Number>
std::optional<Number> NumberIn(HWND dialog, int field)
{
    const std::string whole = GetDlgItemText(dialog, field);
    const std::string_view text = Trimmed(whole);
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

bool ReadPlace(HWND dialog, Region& region)
{
    const std::pair<int, std::int32_t*> places[] = {
        {kRegX1, &region.place.x1}, {kRegY1, &region.place.y1}, {kRegX2, &region.place.x2}, {kRegY2, &region.place.y2}};
    for (const auto& [field, place] : places) {
        if (!DlgItemEnabled(dialog, field)) continue;
        const std::optional<std::int32_t> number = NumberIn<std::int32_t>(dialog, field);
        if (!number || *number < kLeastRegionPlace || *number > kMostRegionPlace) {
            Refuse(dialog, field,
                   Format("Please enter a whole number from %d to %d.", kLeastRegionPlace, kMostRegionPlace));
            return false;
        }
        *place = *number;
    }
    return true;
}

bool ReadEmissivity(HWND dialog, Region& region)
{
    const std::optional<double> emissivity = NumberIn<double>(dialog, kRegEmissivity);
    if (!emissivity || !(*emissivity >= kLeastEmissivity && *emissivity <= 1)) {
        Refuse(dialog, kRegEmissivity, Format("Please enter an emissivity from %g to 1.", kLeastEmissivity));
        return false;
    }
    region.emissivity = *emissivity;
    region.reflectedC = NumberIn<double>(dialog, kRegReflected);
    const bool isReflected =
        region.reflectedC && *region.reflectedC > kAbsoluteZeroC && *region.reflectedC <= kMostReflectedC;
    if (*emissivity < 1 && !isReflected) {
        Refuse(dialog, kRegReflected, "Please enter the temperature of what is reflected, in degrees Celsius.");
        return false;
    }
    if (*emissivity == 1) region.reflectedC.reset();
    return true;
}

void ShowSet(HWND dialog)
{
    const std::string why = WhyNoneIsLeftOut();
    std::string text = why;
    if (text.empty()) text = BadDetectorSet.empty() ? "Set for files: none" : "Set for files: " + BadDetectorSet;
    if (GetDlgItemText(dialog, kRegSetName) != text) SetDlgItemText(dialog, kRegSetName, text);
    WarnDlgItem(dialog, kRegSetName, !why.empty());
}

void Refresh(HWND dialog)
{
    ShowTable(dialog);
    ShowFields(dialog);
    ShowSet(dialog);
    const bool leavesOut = LeaveBadDetectorsOut != 0;  // the window of traces has the choice too
    if (IsDlgButtonChecked(dialog, kRegLeaveOut) != leavesOut) CheckDlgButton(dialog, kRegLeaveOut, leavesOut);
}

// ---- what the operator does

void Apply(HWND dialog)
{
    const Region* const selected = FindRegion(SelectedRegion);
    if (!selected) return;
    Region region = *selected;
    region.name = Trimmed(GetDlgItemText(dialog, kRegName));
    if (!ReadPlace(dialog, region) || !ReadEmissivity(dialog, region)) return;
    std::string why;
    if (!ChangeRegion(region, why)) {
        Refuse(dialog, kRegName, why);
        return;
    }
    shown.fields.reset();  // what was typed is shown as it was taken
    Tell(dialog, "");
    Refresh(dialog);
}

void Pick(HWND dialog)
{
    if (isFilling) return;
    const int index = ListSelection(dialog, kRegTable);
    if (index < 0 || index >= static_cast<int>(Regions.size())) return;
    SelectRegion(Regions[static_cast<std::size_t>(index)].number);
    ShowFields(dialog);
}

void PickDrawn(HWND dialog)
{
    const int index = ListSelection(dialog, kRegDraw);
    DrawShape(index > 0 ? std::optional(static_cast<RegionShape>(index - 1)) : std::nullopt);
}

void Add(HWND dialog)
{
    std::string why;
    const bool added = AddRegionInTheMiddle(DrawnShape().value_or(RegionShape::kRectangle), why) != 0;
    if (!added) MessageBeep(Sound::kDefault);
    Tell(dialog, why, !added);
    Refresh(dialog);
}

void Remove(HWND dialog)
{
    RemoveRegion(SelectedRegion);
    Tell(dialog, "");
    Refresh(dialog);
}

void Show(HWND dialog)
{
    ShowRegions(IsDlgButtonChecked(dialog, kRegShow));
}

void LeaveOut(HWND dialog)
{
    ChooseBadDetectors(IsDlgButtonChecked(dialog, kRegLeaveOut));
    Refresh(dialog);
}

std::optional<std::string> AskForFile(HWND dialog, FileDialogMode mode, std::string_view title,
                                      const FileFilter& filter, std::string_view extension)
{
    FileDialogRequest request;
    request.owner = dialog;
    request.mode = mode;
    request.title = title;
    request.filters = {filter};
    request.directory = LastFileDirectory.empty() ? DefaultDir : LastFileDirectory;
    request.defaultExtension = extension;
    const FileDialogResult chosen = RunFileDialog(request);
    if (chosen.error != 0) TellFileDialogError(chosen.error);
    if (chosen.paths.empty() || !hDlgRegions) return std::nullopt;
    return chosen.paths.front();
}

void NameSet(HWND dialog)
{
    const auto path = AskForFile(dialog, FileDialogMode::kOpen, "Calibration set of the files",
                                 {"Calibration Files (*.cal)", "*.cal"}, "cal");
    if (!path) return;
    std::string why;
    if (NameBadDetectorSet(*path, why)) {
        ChooseBadDetectors(true);
        CheckDlgButton(dialog, kRegLeaveOut, true);
        Tell(dialog, "");
    } else {
        MessageBox(dialog, why, kMessageCaption);
    }
    Refresh(dialog);
}

void Load(HWND dialog)
{
    const auto path =
        AskForFile(dialog, FileDialogMode::kOpen, "Load regions", {"Regions (*.regions)", "*.regions"}, "regions");
    if (!path) return;
    std::string why;
    std::optional<RegionsFile> file = ReadRegionsFile(*path, why);
    if (!file || !SetRegions(std::move(file->regions), why)) {
        MessageBox(dialog, why, kMessageCaption);
        return;
    }
    const RegionsFile onView = RegionsOnView();
    const bool fits =
        file->columns == 0 || onView.columns == 0 || (file->columns == onView.columns && file->rows == onView.rows);
    Tell(dialog,
         fits ? ""
              : Format("They were drawn over a frame of %d x %d; this one has %d x %d.", file->columns, file->rows,
                       onView.columns, onView.rows),
         !fits);
    Refresh(dialog);
}

void Save(HWND dialog)
{
    const auto path =
        AskForFile(dialog, FileDialogMode::kSave, "Save regions", {"Regions (*.regions)", "*.regions"}, "regions");
    if (!path) return;
    std::string why;
    if (WriteRegionsFile(*path, RegionsOnView(), why)) {
        Tell(dialog, "Saved: " + *path);
    } else {
        MessageBox(dialog, why, kMessageCaption);
    }
}

void Open(HWND dialog)
{
    hDlgRegions = dialog;
    shown = {};
    for (const std::string_view name : kDrawn) ListAdd(dialog, kRegDraw, name);
    ListSelect(dialog, kRegDraw, DrawnShape() ? static_cast<int>(*DrawnShape()) + 1 : 0);
    CheckDlgButton(dialog, kRegShow, RegionsAreShown());
    CheckDlgButton(dialog, kRegLeaveOut, LeaveBadDetectorsOut != 0);
    for (const int field : kFields) EnableDlgItem(dialog, field, false);
    EnableDlgItem(dialog, kRegRemove, false);
    EditRegions(true);
    Refresh(dialog);
    DockInCorner(dialog, LowerCorner::kLeft);  // the picture's middle stays in sight
    FocusDlgItem(dialog, kRegDraw);
    SetTimer(dialog, kRefreshTimer, kRefreshMs);
}

void Close(HWND dialog)
{
    EndDialog(dialog, 0);
}

void Forget(HWND /*dialog*/)
{
    hDlgRegions = nullptr;
    EndRegionDrag();
    EditRegions(false);
}

constexpr DialogEntry kEntries[] = {
    {kRegApply, Apply},
    {kRegTable, Pick, kSelectionChanged},
    {kRegDraw, PickDrawn, kSelectionChanged},
    {kRegAdd, Add},
    {kRegRemove, Remove},
    {kRegShow, Show},
    {kRegLeaveOut, LeaveOut},
    {kRegSet, NameSet},
    {kRegLoad, Load},
    {kRegSave, Save},
    OnTimer(kRefreshTimer, Refresh),
    {kIdCancel, Close},
};
constexpr DialogFrame kFrame{.name = "REGIONS",
                             .procedure = fnREGIONSDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpRegions,
                             .destroyed = Forget};

}  // namespace

HWND RegionsWindow()
{
    return hDlgRegions;
}

void OpenRegionsWindow()
{
    if (hDlgRegions) {
        BringToFront(hDlgRegions, {});
        return;
    }
    OpenModelessDialog(kFrame, hWndMain);
}

void CloseRegionsWindow()
{
    if (hDlgRegions) Close(hDlgRegions);
}

LRESULT fnREGIONSDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

void ResetRegionsWindow()
{
    hDlgRegions = nullptr;
    shown = {};
    isFilling = false;
}

}  // namespace kelvo
