#include "ui/status.h"

#include "imagefile/header.h"
#include "platform/box.h"
#include "platform/paint.h"
#include "platform/text.h"
#include "platform/transcript.h"
#include "platform/window.h"
#include "state/cal_state.h"
#include "state/contrast_fit.h"
#include "state/frame_state.h"
#include "state/head_state.h"
#include "state/state_registry.h"
#include "state/windows.h"
#include "ui/status_write.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kelvo {

namespace write {
StatusVariables status;
}

constinit const std::string& StatusText = write::status.StatusText;
constinit const std::int16_t& StatusAlign = write::status.StatusAlign;
constinit const std::string& StatusField = write::status.StatusField;
constinit const std::string& StatusMark = write::status.StatusMark;
constinit const std::uint32_t& StatusBackground = write::status.StatusBackground;
constinit const std::uint32_t& StatusForeground = write::status.StatusForeground;

namespace {

const StateNames kStateNames{
    Named("StatusText", StatusText),
    Named("StatusAlign", StatusAlign),
    Named("StatusField", StatusField),
    Named("StatusMark", StatusMark),
};

std::string note;  // the last one
ToldFrame toldFrame;

struct TableString {
    int id;
    std::string_view text;
};

constexpr TableString kStrings[] = {
    {kStartHint, "Wait - Kelvo start up procedure"},
    {kIdleHint, " Use Alt + underlined menu item or trackball to select menu item"},
    {kExitCameraOnHint, " This will end your Kelvo session (the IR camera will remain on)"},
    {kExitCameraOffHint, " This will end your Kelvo session (the IR camera is now off)"},
    {kLowSourceHint, " Press OK when LOW flux source is in front of camera"},
    {kHighSourceHint, " Press OK when HIGH flux source is in front of camera"},
    {kTurnOffHint, " Choose Yes to shut camera off & put electronics in a safe state"},
    {kGoOnHint, " Choose OK to continue with Kelvo turn-on procedure"},
    {kSaveImageHint, " Enter file name (.img not needed). Press OK to capture image."},
    {kNameSequenceHint, " Enter file name (.seq not needed) and Seq. start #. Press OK to accept name."},
    {kSaveAnyHint, " Enter file name including extension.  Press OK to capture image."},
    {kSaveBufferHint, " Enter file name (.buf not needed). Press OK to store selected BuffBrd data."},
    {kViewImageHint, " Select an image file to view"},
    {kViewSequenceHint, " Select a beginning sequence file to view"},
    {kViewFileHint, " Select a file to view"},
    {kViewBufferHint, " Select a buffer board file to view"},
    {kLoadCalibrationHint, " Choose .CAL file to load for calibration"},
    {kLoadBadDetectorsHint, " Choose .BAD detector file to use"},
    {kGainStatisticsHint, " Choose .GAI file to load for gain statistics"},
    {kOffsetStatisticsHint, " Choose .OFF file to load for offset statistics"},
    {kLoadBufferHint, " Enter image area, frame start & end to load from disk file to buffer board."},
    {kStoreBufferHint, " Enter image area, frame start & end to save from buffer board to disk file."},
    {kFillBufferHint, " Enter buffer board image area, frame start & end to set to a constant value."},
    {kGraphBufferHint, " Enter parameters for graphing selected buffer board memory area."},
    {kGraphFileHint, " Select buffer board graphics filename."},
    {kContinuousSaveHint, " Continous SAVE operations"},
    {kHostRamHint, " Set up buffer board to capture, save, load, &/or replay data"},
    {kDisplaySetupHint, " Display values affect the viewed image but not raw data"},
    {kVideoSetupHint, " Use video oscilloscope to set up Kelvo video parameters"},
    {kImageSetupHint, " Adjust image readout sequence &/or change bad pixel list"},
    {kConfigurationHint, " Enter parameters to be stored for this and subsequent sessions"},
    {kCalibrationHint, " Enter your choices & then OK to do new calibration, or load a previous calib"},
    {kTurnOnHint, " Choose one of the Kelvo turn-on procedures or Cancel"},
    {kAboutHint, " Press OK to close 'About QVF Kelvo' dialog box"},
};

// The FrameHeader in front of the frame on view; zeros where the buffer holds none.
FrameHeaderRecord FrameHeaderOnView()
{
    FrameHeaderRecord record;
    std::memcpy(&record, ImageBuffer.data(), std::min(ImageBuffer.size(), sizeof record));
    return record;
}

std::string FrameTimeOnView(const FrameHeaderRecord& frame)
{
    return {frame.FrameTimeText.begin(), std::find(frame.FrameTimeText.begin(), frame.FrameTimeText.end(), '\0')};
}

// The form of a frame that has a header, with what is true of it in place of what its header says.
std::string DescribeToldFrame(std::int64_t boardNumber)
{
    const FrameHeaderRecord frame = ImageHeader.ImageHeaderDataOffset == 0 ? FrameHeaderRecord() : FrameHeaderOnView();
    const std::string number = boardNumber < 0 ? "unknown" : std::to_string(boardNumber);
    const std::string time = toldFrame.time.empty() ? FrameTimeOnView(frame) : toldFrame.time;
    return Format("Viewing %s FrameNum:%u AllFramesNum:%s %.28s %.1fHz %.3fmsec", ViewFilePath.c_str(), toldFrame.frame,
                  number.c_str(), time.c_str(), static_cast<double>(ImageHeader.FrameRate),
                  static_cast<double>(toldFrame.integrationMs));
}

std::string DescribeFrameOnView()
{
    const ImageHeaderRecord& header = ImageHeader;
    if (toldFrame.number && toldFrame.path == ViewFilePath) return DescribeToldFrame(*toldFrame.number);
    if (!ViewingSequence) {
        return Format("Viewing Image %s  %d/%d/%d  %d:%2.2d:%2.2d", ViewFilePath.c_str(), header.Month, header.Day,
                      header.Year, header.Hour, header.Minute, header.Second);
    }
    if (header.ImageHeaderDataOffset == 0) {
        return Format("Viewing Sequence %s  FrameNum: %d   %d/%d/%d %d:%2.2d:%2.2d", ViewFilePath.c_str(),
                      static_cast<int>(SequenceFrameIndex), header.Month, header.Day, header.Year, header.Hour,
                      header.Minute, header.Second);
    }
    const FrameHeaderRecord frame = FrameHeaderOnView();
    return Format("Viewing %s FrameNum:%d AllFramesNum:%d %.28s %.1fHz %.3fmsec", ViewFilePath.c_str(),
                  static_cast<int>(SequenceFrameIndex), frame.AllFramesNum & 0xFFFF, FrameTimeOnView(frame).c_str(),
                  static_cast<double>(header.FrameRate), static_cast<double>(frame.FrameIntegrationMsec));
}

std::string DescribeFileOnView()
{
    const bool isTold = toldFrame.path == ViewFilePath && !toldFrame.more.empty();
    return DescribeFrameOnView() + (isTold ? "   " + toldFrame.more : "") +
           (OwnFitInForce() ? "   Contrast fitted to the picture" : "");
}

std::string IdleText(std::string_view hint)
{
    if (ViewingFile) return DescribeFileOnView();
    if (!SetupHint().empty()) return " The camera is " + std::string(SetupHint());
    return std::string(hint);
}

std::string Title()
{
    if (!ViewingFile) return LiveVideo ? "Kelvo" : "Kelvo - Frozen";
    std::string name;
    SplitPath(ViewFilePath, nullptr, nullptr, &name, nullptr);
    return "Kelvo - " + name;
}

void PaintLine()
{
    if (!hWndStatus) return;  // the first texts of the start come before the window
    const Rect line{0, 0, ClientWidth, TextHeight};
    InvalidateRect(hWndStatus, &line, true);
    UpdateWindow(hWndStatus);
}

void ShowLine(int align)
{
    write::status.StatusAlign = static_cast<std::int16_t>(align);
    Transcribe("status", {{"text", StatusText}, {"align", std::int64_t{align}}});
    PaintLine();
}

}  // namespace

std::optional<std::string_view> ResourceString(int id)
{
    const auto* const found = std::ranges::find(kStrings, id, &TableString::id);
    if (found == std::end(kStrings)) return std::nullopt;
    return found->text;
}

void StatusMessage(std::string_view text, int align)
{
    write::status.StatusText = text;
    ShowLine(align);
}

void StatusString(int id, int align)
{
    const std::optional<std::string_view> text = ResourceString(id);
    if (!text) {
        MessageBox(hWndMain, "String resource not available to output to Status window!", kMessageCaption);
        return;
    }
    write::status.StatusText = id == kIdleHint ? IdleText(*text) : std::string(*text);
    ShowLine(align);
    if (hWndMain) SetWindowText(hWndMain, Title());
}

void TellFrameOnView(ToldFrame told)
{
    toldFrame = std::move(told);
}

std::string_view SetupHint()
{
    const bool missing = CameraOn && LiveVideo && !ViewingFile && VideoSetupMissing && CalType == 0;
    return missing ? "not set up: Ctrl+V" : "";
}

void StatusNote(std::string_view text)
{
    StatusString(kIdleHint, kLeftAligned);
    note = text;
    StatusMessage(note, kLeftAligned);
}

bool StatusNoteStands()
{
    return !note.empty() && StatusText == note;
}

void ShowStatusField(std::string_view text)
{
    write::status.StatusField = text;
    PaintLine();
}

void ShowStatusMark(std::string_view text)
{
    if (StatusMark == text) return;
    write::status.StatusMark = text;
    PaintLine();
}

int GetStatusText(std::string& text)
{
    text = StatusText;
    return StatusAlign;
}

LRESULT StatusWndProc(HWND window, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    if (message != WM_PAINT) return DefWindowProc(window, message, wParam, lParam);

    const Rect client = GetClientRect(window);
    const auto align = static_cast<TextAlign>(StatusAlign);
    int x = client.left;
    if (align == TextAlign::kCentre) x = client.left + client.Width() / 2;
    if (align == TextAlign::kRight) x = client.right;
    if (!DrawTextLine(window, x, 0, StatusText, align, StatusForeground, StatusBackground)) {
        MessageBox(hWndMain, "Failure to output text in status window!", kMessageCaption);
    }
    const std::string right = StatusMark + (StatusMark.empty() || StatusField.empty() ? "" : "  ") + StatusField;
    if (!right.empty()) {
        DrawTextLine(window, client.right, 0, "  " + right + " ", TextAlign::kRight, StatusForeground,
                     StatusBackground);
    }
    return 0;
}

void ResetStatus()
{
    note.clear();
    toldFrame = {};
    write::status.StatusText.clear();
    write::status.StatusField.clear();
    write::status.StatusMark.clear();
    write::status.StatusAlign = 0;
    write::status.StatusBackground = 0xFF0000;
    write::status.StatusForeground = 0xFFFFFF;
}

}  // namespace kelvo
