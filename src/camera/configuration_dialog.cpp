#include "camera/configuration_dialog.h"

#include "display/display_pipeline.h"
#include "imagefile/header_write.h"
#include "platform/box.h"
#include "platform/dialog.h"
#include "platform/faults.h"
#include "platform/pointer.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/window.h"
#include "resources/help_contexts.h"
#include "resources/ids.h"
#include "state/camera_config_write.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/docking.h"
#include "ui/menu_state.h"
#include "ui/splash.h"
#include "ui/status.h"
#include "video/video.h"

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

namespace {

constexpr int kByteSwapBox = 1616;
constexpr int kOneChannel = 1046;
constexpr int kTwoChannels = 1047;
constexpr int kFourChannels = 1048;
constexpr int kXzoomFirst = 1260;  // "1x" to "8x"
constexpr int kYzoomFirst = 1271;
constexpr int kZoomRadios = 8;
constexpr int kXoffsetEdit = 1293;
constexpr int kYoffsetEdit = 1294;
constexpr int kXpanEdit = 1290;
constexpr int kYpanEdit = 1291;
constexpr int kCameraList = 1598;

constexpr std::int32_t kCameraSections = 40;
constexpr std::int32_t kDefaultZoom = 3;
constexpr std::int32_t kDefaultOffset = 0;
constexpr std::uint32_t kSwapped = 0;
constexpr std::uint32_t kNativeOrder = 0xFFFF;
constexpr std::int64_t kSplashMs = 1000;

std::string CameraSection(std::int32_t number)
{
    return Format("Camera.%d", number);
}

std::int32_t CameraKey(const std::string& section, const char* key, std::int32_t defaultValue)
{
    return GetPrivateProfileInt(section, key, defaultValue, CameraFilePath);
}

void WriteCameraKey(const std::string& section, const char* key, std::int32_t value)
{
    WritePrivateProfileString(section, key, Format("%d", value), CameraFilePath);
}

void WriteIfOther(const std::string& section, const char* key, std::int32_t value, std::int32_t defaultValue)
{
    if (value != CameraKey(section, key, defaultValue)) WriteCameraKey(section, key, value);
}

// --- Reading the controls -------------------------------------------------------------------------------------------

// The whole text as one number; blanks around it don't count.
template <typename Number>
std::optional<Number> ScanNumber(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return std::nullopt;
    text = text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return number;
}

// The number of the radio that is checked, from 0; none where the value in force has no radio.
std::optional<int> CheckedRadio(HWND dialog, int first, int count)
{
    for (int i = 0; i < count; ++i) {
        if (IsDlgButtonChecked(dialog, first + i)) return i;
    }
    return std::nullopt;
}

// A zoom beyond 8, as the zoom keys give it, has no radio and stays as it was shown.
std::int32_t ChosenZoom(HWND dialog, int firstRadio, std::int32_t shown)
{
    const std::optional<int> radio = CheckedRadio(dialog, firstRadio, kZoomRadios);
    return radio ? *radio + 1 : shown;
}

std::int32_t ChosenChannels(HWND dialog)
{
    if (IsDlgButtonChecked(dialog, kOneChannel)) return 1;
    if (IsDlgButtonChecked(dialog, kTwoChannels)) return 2;
    if (IsDlgButtonChecked(dialog, kFourChannels)) return 4;
    return ActiveConfig.NumChannels;
}

// A corner is an unsigned number; a text that is none takes what the file says.
std::int32_t ChosenOffset(HWND dialog, int edit, const std::string& section, const char* key)
{
    const auto number = ScanNumber<std::uint32_t>(GetDlgItemText(dialog, edit));
    return number ? static_cast<std::int32_t>(*number) : CameraKey(section, key, kDefaultOffset);
}

// Pans aren't checked: a text that is no number counts as 0.
std::int32_t ChosenPan(HWND dialog, int edit)
{
    return ScanNumber<std::int32_t>(GetDlgItemText(dialog, edit)).value_or(0);
}

std::int32_t ChosenCamera(HWND dialog)
{
    const int index = ListSelection(dialog, kCameraList);
    return index < 0 ? ActiveCamera : index + 1;
}

// --- Showing values -------------------------------------------------------------------------------------------------

void ShowRadio(HWND dialog, int first, int count, std::int64_t which)
{
    for (int i = 0; i < count; ++i) CheckDlgButton(dialog, first + i, i == which);
}

void ShowZooms(HWND dialog, std::int32_t xzoom, std::int32_t yzoom)
{
    ShowRadio(dialog, kXzoomFirst, kZoomRadios, std::int64_t{xzoom} - 1);
    ShowRadio(dialog, kYzoomFirst, kZoomRadios, std::int64_t{yzoom} - 1);
}

void ShowOffsets(HWND dialog, std::int32_t xoffset, std::int32_t yoffset)
{
    SetDlgItemText(dialog, kXoffsetEdit, Format("%u", static_cast<std::uint32_t>(xoffset)));
    SetDlgItemText(dialog, kYoffsetEdit, Format("%u", static_cast<std::uint32_t>(yoffset)));
}

void ShowChannels(HWND dialog)
{
    EnableDlgItem(dialog, kTwoChannels, ActiveConfig.NumOutputs >= 2);
    EnableDlgItem(dialog, kFourChannels, ActiveConfig.NumOutputs >= 4);
    // 1, 2 and 4 channels halve to 0, 1 and 2.
    ShowRadio(dialog, kOneChannel, kFourChannels + 1 - kOneChannel, ActiveConfig.NumChannels / 2);
}

// An entry's index is its section's number less 1: the selection is read back that way.
void AddCamera(HWND dialog, std::int32_t number)
{
    const std::string section = CameraSection(number);
    const std::string description = GetPrivateProfileString(section, "Description", "N/A", CameraFilePath);
    const int index = FaultIsSet("list " + section) ? -1 : ListAdd(dialog, kCameraList, description);
    if (index != number - 1) MessageBox(dialog, "Unable to add Camera to list!", section);
}

void Open(HWND dialog)
{
    ShowChannels(dialog);
    CheckDlgButton(dialog, kByteSwapBox, ByteSwap == kSwapped);
    ShowZooms(dialog, Xzoom, Yzoom);
    ShowOffsets(dialog, Xoffset, Yoffset);
    SetDlgItemInt(dialog, kXpanEdit, Xpan);
    SetDlgItemInt(dialog, kYpanEdit, Ypan);
    StatusString(kConfigurationHint, kLeftAligned);
    for (std::int32_t number = 1; number <= kCameraSections; ++number) AddCamera(dialog, number);
    ListSelect(dialog, kCameraList, ActiveCamera - 1);
    CentreDialog(dialog);
    DockDialog(dialog);  // beside the picture that it changes
}

// What the chosen camera's section says of the screen is shown; nothing is stored before OK.
void ShowChosenCamera(HWND dialog)
{
    const std::string section = CameraSection(ChosenCamera(dialog));
    ShowZooms(dialog, CameraKey(section, "Xzoom", kDefaultZoom), CameraKey(section, "Yzoom", kDefaultZoom));
    ShowOffsets(dialog, CameraKey(section, "Xoffset", kDefaultOffset), CameraKey(section, "Yoffset", kDefaultOffset));
}

// --- OK -------------------------------------------------------------------------------------------------------------

void TakeByteSwap(HWND dialog)
{
    // The box's sense is the reverse of its words; stored files rest on it.
    const std::uint32_t choice = IsDlgButtonChecked(dialog, kByteSwapBox) ? kSwapped : kNativeOrder;
    if (choice == ByteSwap) return;
    write::file.ByteSwap = choice;
    WritePrivateProfileString("Setup", "ByteSwap", Format("0x%x", choice), IniFilePath);
}

// The zooms shown are those in force, or those of the section of a camera that was chosen in their place.
void TakeScreenValues(HWND dialog, bool cameraChanged)
{
    const std::string section = ActiveCameraSection();
    const std::int32_t xzoom = cameraChanged ? CameraKey(section, "Xzoom", kDefaultZoom) : Xzoom;
    const std::int32_t yzoom = cameraChanged ? CameraKey(section, "Yzoom", kDefaultZoom) : Yzoom;
    write::camera.ActiveConfig.NumChannels = ChosenChannels(dialog);
    WriteCameraKey(section, "NumChannels", ActiveConfig.NumChannels);
    write::camera.ActiveConfig.Xzoom = ChosenZoom(dialog, kXzoomFirst, xzoom);
    WriteIfOther(section, "Xzoom", Xzoom, kDefaultZoom);
    write::camera.ActiveConfig.Yzoom = ChosenZoom(dialog, kYzoomFirst, yzoom);
    WriteIfOther(section, "Yzoom", Yzoom, kDefaultZoom);
    write::camera.ActiveConfig.Xoffset = ChosenOffset(dialog, kXoffsetEdit, section, "Xoffset");
    WriteIfOther(section, "Xoffset", Xoffset, kDefaultOffset);
    write::camera.ActiveConfig.Yoffset = ChosenOffset(dialog, kYoffsetEdit, section, "Yoffset");
    WriteIfOther(section, "Yoffset", Yoffset, kDefaultOffset);
    write::display.Xpan = ChosenPan(dialog, kXpanEdit);
    write::display.Ypan = ChosenPan(dialog, kYpanEdit);
    RefreshPicture();
}

bool OperatorWantsRestart(HWND dialog)
{
    MessageBeep(Sound::kDefault);
    return MessageBox(dialog, "Kelvo must be re-initialized before changes are effective. Restart now?",
                      "Kelvo configuration change", BoxIcon::kQuestion, BoxButtons::kYesNo) == Button::kYes;
}

RestartSteps restart;

bool Done(int (*step)())
{
    return step && step();
}

}  // namespace

void RestartWithCamera(HWND window, std::int32_t camera)
{
    write::camera.ActiveCamera = camera;
    const Dib splash = ShowSplash(hWndMain);
    const Hourglass hourglass;
    WritePrivateProfileString("Setup", "ActiveCamera", Format("%d", ActiveCamera), IniFilePath);
    WritePrivateProfileString("Setup", "MonitorSetup", "0", IniFilePath);
    const std::int16_t color = ImageColor;
    if (!Done(restart.initialSetup)) MessageBox(window, "Initialize Variables Failure", "Recommend re-start!");
    write::display.ImageColor = color;  // chosen by menu or key for this session, whichever camera is in front of it
    ShowTurnOnInMenu(CameraOn != 0);    // the settings are read anew with the camera off
    if (!Done(restart.initializeHardware)) {
        MessageBox(window, "Initialize Hardware Failure", "Recommend re-start!");
    } else {
        PostMessage(hWndMain, WM_COMMAND, kCmdTurnOn, 0);
    }
    HideSplash(splash, kSplashMs);
}

namespace {

void Accept(HWND dialog)
{
    TakeByteSwap(dialog);
    const std::int32_t camera = ChosenCamera(dialog);
    const bool changed = camera != ActiveCamera;
    write::camera.ActiveCamera = camera;
    TakeScreenValues(dialog, changed);
    if (changed) {
        if (!OperatorWantsRestart(dialog)) {
            // The new number stays in memory alone; the next OK finds no change.
            ListSelect(dialog, kCameraList, ActiveCamera - 1);
            return;
        }
        RestartWithCamera(dialog, camera);
    }
    SetPointer(Pointer::kArrow);
    EndDialog(dialog, 1);
}

constexpr DialogEntry kEntries[] = {
    {kCameraList, ShowChosenCamera, kSelectionChanged},
    {kIdOk, Accept},
};
constexpr DialogFrame kFrame{.name = "INITIAL",
                             .procedure = fnINITIALDlgProc,
                             .open = Open,
                             .entries = kEntries,
                             .helpContext = kHelpConfiguration,
                             .cantOpen = "Unable to dispay Initialization dialog"};

}  // namespace

void SetRestart(const RestartSteps& steps)
{
    restart = steps;
}

void ConfigurationDialog(HWND window)
{
    RunDialog(kFrame, window);
    StatusString(kIdleHint, kLeftAligned);
}

LRESULT fnINITIALDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

}  // namespace kelvo
