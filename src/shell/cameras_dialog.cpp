#include "shell/cameras_dialog.h"

#include "camera/configuration_dialog.h"
#include "genicam/camera_list.h"
#include "genicam/camera_wiring.h"
#include "genicam/network_check.h"
#include "genicam/pixel_format.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/paint.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "platform/timers.h"
#include "platform/window.h"
#include "resources/help_contexts.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

namespace {

constexpr std::uint32_t kSearchTimer = 1;
constexpr ColorRef kBesidePicture = 0x282420;
constexpr const char* kCaption = "Cameras";

// What the open dialog knows. Answers are kept, so that a camera is asked once a search.
struct Shown {
    std::vector<FoundCamera> cameras;
    std::vector<std::optional<CameraAnswer>> answers;  // of each camera; nullopt: not asked yet
    std::int32_t sectionWritten = 0;                   // 0: none
};
Shown shown;

// --- What a camera says ---------------------------------------------------------------------------------------------

std::string RangeText(const std::optional<NumberRange>& range, const std::optional<double>& now, const char* unit)
{
    if (!range && !now) return "not told";
    std::string text;
    if (now) text = Format("%.9g %s", *now, unit);
    if (range) text += Format("%s%.9g to %.9g %s", now ? ", of " : "", range->least, range->most, unit);
    return text;
}

std::string OfferText(const CameraOffer& offer)
{
    std::string formats;
    for (const std::string& name : offer.formats) formats += (formats.empty() ? "" : ", ") + name;
    if (formats.empty()) formats = "none that Kelvo takes";
    std::string text = Format("Largest frame: %d x %d\n", offer.columns, offer.rows);
    const SectionSize size = SizeForSection(offer);
    if (size != SectionSize{offer.columns, offer.rows}) {
        text += Format("Kelvo takes %d x %d of it, from the upper left corner\n", size.columns, size.rows);
    }
    text += "Formats: " + formats + " (now " + offer.format + ")\n";
    text += "Frame rate: " + RangeText(offer.ratesHz, offer.rateHz, "Hz") + "\n";
    text += "Exposure: " + RangeText(offer.exposuresUs, offer.exposureUs, "us") + "\n";
    return text;
}

std::string NetworkText(const FoundCamera& camera, const CameraOffer& offer)
{
    if (camera.transport != "GigE Vision") return {};
    const auto lacks = WhatTheNetworkLacks(ReadNetworkFigures(camera.address), offer.frameBytes);
    std::string text = lacks.empty() ? "The network has what it needs.\n" : "";
    for (const std::string& sentence : lacks) text += sentence + "\n";
    return text;
}

std::string CameraText(const FoundCamera& camera, const CameraAnswer& answer)
{
    std::string text = camera.vendor + " " + camera.model + "\n";
    text += "Serial number: " + (camera.serial.empty() ? "none" : camera.serial) + "\n";
    text += camera.transport + " at " + camera.address + "\n";
    if (answer.offer) text += OfferText(*answer.offer) + NetworkText(camera, *answer.offer);
    if (!answer.trouble.empty()) text += answer.trouble + "\n";
    return text;
}

// --- The picture ----------------------------------------------------------------------------------------------------

// The largest rectangle of the picture's own shape, in the middle.
Rect PlaceOfPicture(const Rect& client, const StillPicture& picture)
{
    const std::int64_t byWidth = std::int64_t{client.Width()} * picture.rows / picture.columns;
    const int height = static_cast<int>(std::min<std::int64_t>(byWidth, client.Height()));
    const auto width = static_cast<int>(std::int64_t{height} * picture.columns / picture.rows);
    const int left = (client.Width() - width) / 2;
    const int top = (client.Height() - height) / 2;
    return {left, top, left + width, top + height};
}

constexpr std::array<std::uint32_t, 256> kGrays = [] {
    std::array<std::uint32_t, 256> grays{};
    for (std::uint32_t i = 0; i < grays.size(); ++i) grays[i] = i << 16U | i << 8U | i;
    return grays;
}();

const CameraAnswer* ChosenAnswer(HWND dialog)
{
    const int index = ListSelection(dialog, kCamerasList);
    if (index < 0 || index >= static_cast<int>(shown.answers.size())) return nullptr;
    const std::optional<CameraAnswer>& answer = shown.answers[static_cast<std::size_t>(index)];
    return answer ? &*answer : nullptr;
}

void DrawPicture(HWND dialog)
{
    const HWND area = DlgItemWindow(dialog, kCamerasPicture);
    if (!area) return;
    const Rect client = GetClientRect(area);
    FillSurface(area, client, kBesidePicture);
    const CameraAnswer* const answer = ChosenAnswer(dialog);
    if (!answer || !answer->picture) return;
    const StillPicture& picture = *answer->picture;
    StretchPixels(area, PlaceOfPicture(client, picture),
                  IndexedPixels{.firstRow = picture.gray.data(),
                                .rowStride = picture.columns,
                                .width = picture.columns,
                                .height = picture.rows,
                                .colors = kGrays.data()});
}

// --- The dialog -----------------------------------------------------------------------------------------------------

void ShowFormats(HWND dialog, const CameraAnswer* answer)
{
    ListClear(dialog, kCamerasFormat);
    const bool some = answer && answer->offer && !answer->offer->formats.empty();
    EnableDlgItem(dialog, kCamerasFormat, some);
    EnableDlgItem(dialog, kIdOk, some);
    if (!some) return;
    for (const std::string& name : answer->offer->formats) ListAdd(dialog, kCamerasFormat, name);
    ListSelect(dialog, kCamerasFormat, 0);
}

void ShowChosen(HWND dialog)
{
    const int index = ListSelection(dialog, kCamerasList);
    if (index >= 0) {
        const auto place = static_cast<std::size_t>(index);
        std::optional<CameraAnswer>& answer = shown.answers[place];
        if (!answer) {
            const Hourglass hourglass;
            answer = AskFoundCamera(shown.cameras[place]);
        }
        SetDlgItemText(dialog, kCamerasText, CameraText(shown.cameras[place], *answer));
    } else {
        SetDlgItemText(dialog, kCamerasText, "");
    }
    ShowFormats(dialog, ChosenAnswer(dialog));
    DrawPicture(dialog);
}

std::string FoundText(std::size_t count)
{
    if (count == 0) return "No camera found. Is it switched on, and on a network of this machine?";
    return count == 1 ? "1 camera found" : Format("%zu cameras found", count);
}

void Search(HWND dialog)
{
    SetDlgItemText(dialog, kCamerasState, "Looking for cameras...");
    UpdateWindow(dialog);
    {
        const Hourglass hourglass;
        shown.cameras = FindCameras();
    }
    shown.answers.assign(shown.cameras.size(), std::nullopt);
    ListClear(dialog, kCamerasList);
    for (const FoundCamera& camera : shown.cameras) ListAdd(dialog, kCamerasList, CameraLine(camera));
    SetDlgItemText(dialog, kCamerasState, FoundText(shown.cameras.size()));
    if (!shown.cameras.empty()) ListSelect(dialog, kCamerasList, 0);
    ShowChosen(dialog);
}

// The dialog is on the screen by then.
void SearchFirst(HWND dialog)
{
    KillTimer(dialog, kSearchTimer);
    Search(dialog);
}

void Open(HWND dialog)
{
    DlgItemWindow(dialog, kCamerasPicture);  // a surface before the layout
    ShowFormats(dialog, nullptr);
    SetDlgItemText(dialog, kCamerasState, "Looking for cameras...");
    CentreDialog(dialog);
    SetTimer(dialog, kSearchTimer, 1);
}

bool OperatorWants(HWND dialog, const FoundCamera& camera, const WiringPlan& plan)
{
    const std::string text = Format(
        "Camera.%d in camera.ini%s and COM%d in platform.ini will stand for\n%s.\nThe board becomes genicam, "
        "this camera the active one, and Kelvo is re-initialized with it.\n\nWrite that?",
        plan.section, plan.standsAlready ? " (written anew)" : "", plan.port, CameraLine(camera).c_str());
    return MessageBox(dialog, text, kCaption, BoxIcon::kQuestion, BoxButtons::kYesNo) == Button::kYes;
}

void Accept(HWND dialog)
{
    const CameraAnswer* const answer = ChosenAnswer(dialog);
    const int index = ListSelection(dialog, kCamerasList);
    const int row = ListSelection(dialog, kCamerasFormat);
    if (!answer || !answer->offer || row < 0) {
        MessageBox(dialog, "Please choose a camera that can be opened.", kCaption);
        return;
    }
    if (CameraOn) {
        MessageBox(dialog, "Please turn the camera off first.", kCaption);
        return;
    }
    const auto format = PixelFormatNamed(ListItemText(dialog, kCamerasFormat, row));
    const SectionSize size = SizeForSection(*answer->offer);
    if (!format || size.columns < 1 || size.rows < 1) {
        MessageBox(dialog, "The camera doesn't tell the size of its frames.", kCaption);
        return;
    }
    const FoundCamera& camera = shown.cameras[static_cast<std::size_t>(index)];
    const std::optional<WiringPlan> plan = PlanWiring(camera, *answer->offer, *format);
    if (!plan) {
        MessageBox(dialog, "All 40 sections of camera.ini are taken. Take one away to make room.", kCaption);
        return;
    }
    if (!OperatorWants(dialog, camera, *plan)) return;
    if (!WriteWiring(*plan)) {
        MessageBox(dialog, "The camera couldn't be written. Nothing was changed.", kCaption);
        return;
    }
    shown.sectionWritten = plan->section;
    EndDialog(dialog, 1);
}

constexpr DialogEntry kEntries[] = {
    OnPaint(kCamerasPicture, DrawPicture),
    OnTimer(kSearchTimer, SearchFirst),
    {kCamerasList, ShowChosen, kSelectionChanged},
    {kCamerasSearch, Search},
    {kIdOk, Accept},
};
constexpr DialogFrame kFrame{
    .name = "CAMERAS", .procedure = fnCAMERASDlgProc, .open = Open, .entries = kEntries, .helpContext = kHelpCameras};

}  // namespace

CommandEnd OpenCameras()
{
    shown = {};
    RunDialog(kFrame, hWndMain);
    const std::int32_t section = shown.sectionWritten;
    shown = {};
    if (section != 0) RestartWithCamera(hWndMain, section);
    return CommandEnd::kResetStatus;
}

LRESULT fnCAMERASDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace kelvo
