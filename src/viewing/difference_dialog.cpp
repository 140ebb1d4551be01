#include "viewing/difference_dialog.h"

#include "display/difference_view.h"
#include "display/display_pipeline.h"
#include "imagefile/stored_frames.h"
#include "platform/box.h"
#include "platform/clock.h"
#include "platform/dialog.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "resources/help_contexts.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/select_file.h"
#include "ui/status.h"

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

namespace {

constexpr const char* kNoMemory = "There is no memory for the reference.";

void Redraw()
{
    if (!LiveVideo) RedrawPicture();  // a running one shows it with its next frame
    ShowStatusMark(DifferenceOnView() ? "Difference" : "");
}

// Why its frames can't be compared with the camera's picture; empty: they can.
std::string WhyNotComparable(const StoredFrames& file)
{
    const ImageHeaderRecord& header = file.Header();
    if (header.ImageWidth != ActiveConfig.Hroi || header.ImageHeight != ActiveConfig.Vroi) {
        return Format("The frames are %d x %d pixels, those of the camera %d x %d.", header.ImageWidth,
                      header.ImageHeight, ActiveConfig.Hroi, ActiveConfig.Vroi);
    }
    const bool corrected = file.AreCorrected();
    if (corrected && CalType == 0) return "The file's frames are corrected, and the picture isn't.";
    if (!corrected && CalType != 0) {
        return "The picture is corrected, and the file's frames aren't. Calibration, Apply to data... corrects them.";
    }
    return {};
}

// Frames that were stored without a calibration lie in the order of the readout.
bool PutInImageOrder(std::vector<std::int16_t>& counts)
{
    std::vector<std::int16_t> readout;
    if (DecomList.size() < counts.size() || !AllocateBlock(readout, counts.size())) return false;
    std::ranges::copy(counts, readout.begin());
    for (std::size_t i = 0; i < counts.size(); ++i) {
        const std::size_t entry = DecomList[i];
        counts[i] = entry < readout.size() ? readout[entry] : std::int16_t{0};
    }
    return true;
}

struct Reference {
    std::vector<std::int16_t> counts;
    std::string name;  // as the operator reads it
};
// nullopt after a box.
std::optional<Reference> ReadReference(HWND dialog, const std::string& path, std::int64_t frame)
{
    std::string why;
    std::optional<StoredFrames> file = StoredFrames::Open(path, why);
    if (!file) {
        RefuseField(dialog, kDifferFileName, FileNameOf(path) + " " + why + ".");
        return std::nullopt;
    }
    if (std::string reason = WhyNotComparable(*file); !reason.empty()) {
        RefuseField(dialog, kDifferFileName, reason);
        return std::nullopt;
    }
    if (frame >= file->Frames()) {
        RefuseField(dialog, kDifferFrame,
                    Format("Please enter a frame from 0 to %lld.", static_cast<long long>(file->Frames() - 1)));
        return std::nullopt;
    }
    Reference reference{.counts = {}, .name = FileNameOf(path)};
    if (!AllocateBlock(reference.counts, file->Pixels())) {
        RefuseField(dialog, kDifferFileName, kNoMemory);
        return std::nullopt;
    }
    if (!file->ReadCounts(frame, reference.counts, why)) {
        RefuseField(dialog, kDifferFileName, FileNameOf(path) + " " + why + ".");
        return std::nullopt;
    }
    if (!file->AreCorrected() && !PutInImageOrder(reference.counts)) {
        RefuseField(dialog, kDifferFileName, kNoMemory);
        return std::nullopt;
    }
    if (const std::string changes = file->Changes(); !changes.empty()) reference.name += ", " + changes;
    return reference;
}

std::string TimeNow()
{
    const std::time_t now = WallClockSeconds();
    std::tm local{};
    localtime_r(&now, &local);
    return Format("%02d:%02d:%02d", local.tm_hour, local.tm_min, local.tm_sec);
}

void Show(HWND dialog, std::span<const std::int16_t> reference, const std::string& source)
{
    // Of a difference on view the middle is where no difference is: it stays there.
    if (!BeginDifference(reference, source, MiddleCountShown())) {
        MessageBox(dialog, kNoMemory, kMessageCaption);
        return;
    }
    EndDialog(dialog, 1);
}

void AcceptFile(HWND dialog)
{
    const std::string path(Trimmed(GetDlgItemText(dialog, kDifferFileName)));
    if (path.empty()) return RefuseField(dialog, kDifferFileName, "Please name the file of the reference.");
    const std::optional<std::int32_t> frame = ScanDecimal(GetDlgItemText(dialog, kDifferFrame));
    if (!frame || *frame < 0) return RefuseField(dialog, kDifferFrame, "Please enter the number of a frame, from 0.");
    const auto reference = ReadReference(dialog, path, *frame);
    if (reference) Show(dialog, reference->counts, Format("frame %d of %s", *frame, reference->name.c_str()));
}

void Accept(HWND dialog)
{
    if (IsDlgButtonChecked(dialog, kDifferFile)) {
        AcceptFile(dialog);
    } else {
        Show(dialog, LiveFrame, "the live picture of " + TimeNow());
    }
}

void SwitchOff(HWND dialog)
{
    EndDifference();
    EndDialog(dialog, 1);
}

void FollowSource(HWND dialog)
{
    const bool file = IsDlgButtonChecked(dialog, kDifferFile);
    for (const int id : {kDifferFileName, kDifferBrowse, kDifferFrame}) EnableDlgItem(dialog, id, file);
}

void ChooseSource(HWND dialog, int id)
{
    CheckRadioButton(dialog, kDifferLive, kDifferFile, id);
    FollowSource(dialog);
}

void Browse(HWND dialog)
{
    std::string path = "*.img";
    if (SelectFile(dialog, path, kSelectToOpen)) SetDlgItemText(dialog, kDifferFileName, path);
}

void Open(HWND dialog)
{
    CheckRadioButton(dialog, kDifferLive, kDifferFile, kDifferLive);
    SetDlgItemInt(dialog, kDifferFrame, 0);
    SetDlgItemText(
        dialog, kDifferNow,
        DifferenceIsOn() ? "On view: the difference to " + DifferenceSource() + "." : "No difference is shown.");
    EnableDlgItem(dialog, kDifferOff, DifferenceIsOn());
    FollowSource(dialog);
    CentreDialog(dialog);
    FocusDlgItem(dialog, kDifferLive);
}

LRESULT fnDIFFERDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam);
constexpr DialogEntry kEntries[] = {
    {kDifferLive, ChooseSource},
    {kDifferFile, ChooseSource},
    {kDifferBrowse, Browse},
    {kDifferOff, SwitchOff},
    {kIdOk, Accept},
};
constexpr DialogFrame kFrame{
    .name = "DIFFER", .procedure = fnDIFFERDlgProc, .open = Open, .entries = kEntries, .helpContext = kHelpDifference};
LRESULT fnDIFFERDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

bool CameraPictureIsOnView()
{
    return !ViewingFile && CameraOn && !LiveFrame.empty() && LiveFrame.size() == PixelsOf(ActiveConfig);
}

}  // namespace

CommandEnd CompareWithReference()
{
    if (!CameraPictureIsOnView()) {
        MessageBox(hWndMain, "There is no picture of the camera on view.", kMessageCaption, BoxIcon::kInformation);
        return CommandEnd::kResetStatus;
    }
    if (RunDialog(kFrame, hWndMain) != 1) return CommandEnd::kResetStatus;
    Redraw();
    StatusNote(DifferenceIsOn() ? "The picture shows the difference to " + DifferenceSource() + "."
                                : std::string("The picture shows the frame again."));
    return CommandEnd::kLeaveStatus;
}

void TellUnfitDifference()
{
    const std::string reason = EndUnfitDifference();
    if (reason.empty()) return;
    ShowStatusMark("");
    StatusNote(reason);
}

}  // namespace kelvo
