#include "export/export_dialog.h"

#include "export/export_formats.h"
#include "export/export_job.h"
#include "export/export_source.h"
#include "grabber/host_frames.h"
#include "imagefile/header.h"
#include "platform/box.h"
#include "platform/file_dialog.h"
#include "platform/files.h"
#include "platform/text.h"
#include "regions/region_list.h"
#include "resources/help_contexts.h"
#include "state/buffer_state.h"
#include "state/cal_state.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/dialog_frame.h"
#include "ui/file_lists.h"
#include "ui/gather.h"
#include "ui/select_file_write.h"
#include "ui/status.h"
#include "video/something_on_view.h"
#include "viewing/coefficient_view.h"
#include "viewing/playback.h"
#include "viewing/written_note.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr int kExported = 1;

// --- What is offered ------------------------------------------------------------------------------------------------

struct OfferedSource {
    ExportWhat what;
    std::string text;
    std::int64_t frames;
};

constexpr std::pair<ExportForm, std::string_view> kForms[] = {
    {ExportForm::kCounts, "Counts"}, {ExportForm::kCorrected, "Corrected counts"},
    {ExportForm::kVolts, "Volts"},   {ExportForm::kCelsius, "Degrees Celsius"},
    {ExportForm::kKelvin, "Kelvin"}, {ExportForm::kFahrenheit, "Degrees Fahrenheit"},
};

// Of the export before.
struct Choice {
    int form = 0;
    int format = 0;
    bool scale = false;
    bool time = false;
    bool regions = false;
};
Choice lastChoice;

// While the dialog is open.
std::vector<OfferedSource> offered;
std::vector<Region> offeredRegions;

std::string StemOf(const std::string& path)
{
    std::string name;
    SplitPath(path, nullptr, nullptr, &name, nullptr);
    return name;
}

std::string EndingOf(const std::string& path)
{
    std::string extension;
    SplitPath(path, nullptr, nullptr, nullptr, &extension);
    return extension;
}

std::vector<OfferedSource> SourcesThatAreThere()
{
    std::vector<OfferedSource> sources;
    if (ViewingFile && !IsCoefficientFile(ViewFilePath)) {
        sources.push_back(
            {ExportWhat::kFile, "Frames of " + FileNameOf(ViewFilePath), std::int64_t{ImageHeader.FrameCount}});
    }
    if (ViewingFile || CameraOn) sources.push_back({ExportWhat::kOnView, "Picture on view", 1});
    const std::int64_t host = std::min<std::int64_t>(FramesInBuffer, std::ssize(HostFrames));
    if (host > 0) sources.push_back({ExportWhat::kHostFrames, "Host frames", host});
    return sources;
}

const OfferedSource& ChosenSource(HWND dialog)
{
    return offered[static_cast<std::size_t>(std::max(ListSelection(dialog, kExportWhat), 0))];
}

const ExportFormatNames& ChosenFormat(HWND dialog)
{
    return ExportFormats()[static_cast<std::size_t>(std::max(ListSelection(dialog, kExportFormat), 0))];
}

// What stands beside a picture's pixels is of pictures alone.
void ShowTicks(HWND dialog)
{
    for (const int tick : {kExportScale, kExportTime, kExportRegions}) {
        EnableDlgItem(dialog, tick, ChosenFormat(dialog).isPicture);
    }
}

// The regions to export; none: the whole picture.
std::vector<Region> ChosenRegions(HWND dialog)
{
    const auto chosen = static_cast<std::size_t>(std::max(ListSelection(dialog, kExportPart), 0));
    if (chosen == 0) return {};
    if (chosen > offeredRegions.size()) return offeredRegions;
    return {offeredRegions[chosen - 1]};
}

void OfferParts(HWND dialog)
{
    ListAdd(dialog, kExportPart, "Whole picture");
    for (const Region& region : offeredRegions) ListAdd(dialog, kExportPart, region.name);
    if (offeredRegions.size() > 1) ListAdd(dialog, kExportPart, "All regions, a file each");
    ListSelect(dialog, kExportPart, 0);
    EnableDlgItem(dialog, kExportPart, !offeredRegions.empty());
}

void ShowFrames(HWND dialog)
{
    const OfferedSource& source = ChosenSource(dialog);
    SetDlgItemText(dialog, kExportFirst, "0");
    SetDlgItemText(dialog, kExportLast, Format("%lld", static_cast<long long>(source.frames - 1)));
    for (const int field : {kExportFirst, kExportLast}) {
        EnableDlgItem(dialog, field, source.what != ExportWhat::kOnView);
    }
}

// The place of the format with that ending; -1: none has it.
int FormatWithEnding(const std::string& ending)
{
    const std::span<const ExportFormatNames> formats = ExportFormats();
    const auto found = std::ranges::find_if(
        formats, [&ending](const ExportFormatNames& format) { return EqualIgnoringCase(ending, format.extension); });
    return found == formats.end() ? -1 : static_cast<int>(found - formats.begin());
}

// Name and format go together as long as the name's ending is that of a format.
void FollowFormat(HWND dialog)
{
    ShowTicks(dialog);
    std::string name = GetDlgItemText(dialog, kExportName);
    const std::string ending = EndingOf(name);
    if (FormatWithEnding(ending) < 0) return;
    name.resize(name.size() - ending.size());
    SetDlgItemText(dialog, kExportName, name + std::string(ChosenFormat(dialog).extension));
}

void FollowName(HWND dialog)
{
    const int format = FormatWithEnding(EndingOf(GetDlgItemText(dialog, kExportName)));
    if (format >= 0) ListSelect(dialog, kExportFormat, format);
    ShowTicks(dialog);
}

void Open(HWND dialog)
{
    for (const OfferedSource& source : offered) ListAdd(dialog, kExportWhat, source.text);
    for (const auto& [form, text] : kForms) ListAdd(dialog, kExportForm, text);
    for (const ExportFormatNames& format : ExportFormats()) ListAdd(dialog, kExportFormat, format.title);
    ListSelect(dialog, kExportWhat, 0);
    OfferParts(dialog);
    ListSelect(dialog, kExportForm, lastChoice.form);
    ListSelect(dialog, kExportFormat, lastChoice.format);
    CheckDlgButton(dialog, kExportScale, lastChoice.scale);
    CheckDlgButton(dialog, kExportTime, lastChoice.time);
    CheckDlgButton(dialog, kExportRegions, lastChoice.regions);
    ShowTicks(dialog);
    ShowFrames(dialog);
    const std::string name = ViewingFile ? StemOf(ViewFilePath) : "picture";
    SetDlgItemText(dialog, kExportName, name + std::string(ChosenFormat(dialog).extension));
    CentreDialog(dialog);
    FocusDlgItem(dialog, kExportWhat);
}

// --- The name -------------------------------------------------------------------------------------------------------

// A name alone stands in the directory that was last saved to.
std::string TargetOf(const std::string& name)
{
    if (name.find_first_of("/\\") != std::string::npos) return AbsolutePath(name);
    std::string directory = LastFileDirectory.empty() ? FirstFileDirectory : LastFileDirectory;
    if (directory.empty()) directory = DefaultDir;
    return AbsolutePath(directory + (directory.ends_with('/') ? "" : "/") + name);
}

std::string WithEnding(HWND dialog, std::string name)
{
    if (!name.empty() && EndingOf(name).empty()) name += ChosenFormat(dialog).extension;
    return name;
}

void Browse(HWND dialog)
{
    const ExportFormatNames& format = ChosenFormat(dialog);
    const std::string pattern = "*" + std::string(format.extension);
    const std::string text = std::string(format.title) + " (" + pattern + ")";
    const std::string target = TargetOf(WithEnding(dialog, GetDlgItemText(dialog, kExportName)));
    const FileDialogResult result = RunFileDialog({.owner = dialog,
                                                   .mode = FileDialogMode::kSave,
                                                   .title = "Export",
                                                   .filters = {{text, pattern}, {"All Files (*.*)", "*.*"}},
                                                   .directory = DirectoryOf(target),
                                                   .name = FileNameOf(target),
                                                   .defaultExtension = format.extension.substr(1),
                                                   // Whether it is replaced is asked when it is to be written.
                                                   .accept = [](const std::string&) { return true; }});
    if (result.error != 0) TellFileDialogError(result.error);
    if (!result.paths.empty()) SetDlgItemText(dialog, kExportName, result.paths.front());
}

// --- Export ---------------------------------------------------------------------------------------------------------

// What the operator asks for; nullopt after a box.
std::optional<ExportRequest> TakeRequest(HWND dialog)
{
    const OfferedSource& source = ChosenSource(dialog);
    ExportRequest request;
    request.what = source.what;
    if (source.what == ExportWhat::kFile) request.path = ViewFilePath;
    request.regions = ChosenRegions(dialog);
    request.asShown = ChosenFormat(dialog).isPicture;
    request.form = kForms[std::max(ListSelection(dialog, kExportForm), 0)].first;
    if (source.what == ExportWhat::kOnView) return request;
    const std::optional<std::int32_t> first = ScanDecimal(GetDlgItemText(dialog, kExportFirst));
    const std::optional<std::int32_t> last = ScanDecimal(GetDlgItemText(dialog, kExportLast));
    const std::string range = Format("Please enter frames from 0 to %lld, the first one not behind the last one.",
                                     static_cast<long long>(source.frames - 1));
    if (!first || *first < 0 || *first >= source.frames) {
        RefuseField(dialog, kExportFirst, range);
        return std::nullopt;
    }
    if (!last || *last < *first || *last >= source.frames) {
        RefuseField(dialog, kExportLast, range);
        return std::nullopt;
    }
    request.first = *first;
    request.end = std::int64_t{*last} + 1;
    return request;
}

// Raw frames of a file are corrected by the lists in force where the form needs it.
std::optional<ExportSource> OpenSource(ExportRequest request, std::string& why)
{
    std::optional<ExportSource> source = ExportSource::Open(request, why);
    const bool mayCorrect = request.what == ExportWhat::kFile && request.form != ExportForm::kCounts &&
                            request.form != ExportForm::kVolts && CalType != 0;
    if (source || !mayCorrect) return source;
    request.listsInForce = true;
    std::string whyNotCorrected;
    source = ExportSource::Open(request, whyNotCorrected);
    // Of frames that are corrected already the first reason holds.
    const bool isCorrected = whyNotCorrected.ends_with("is corrected already");
    if (!source && !isCorrected) why = whyNotCorrected;
    return source;
}

bool MayReplace(HWND dialog, const std::vector<std::string>& standing)
{
    const std::size_t others = standing.size() - 1;
    const std::string question =
        others == 0 ? standing.front() + " already exists.\nDo you want to replace it?"
                    : standing.front() + Format(" and %zu more already exist.\nDo you want to replace them?", others);
    return MessageBox(dialog, question, "Export", BoxIcon::kExclamation, BoxButtons::kYesNo) == Button::kYes;
}

// What is on view now, for all frames. nullopt where memory is refused.
std::optional<PictureOptions> PictureOnView(HWND dialog, ExportWhat what, const Provenance& provenance)
{
    PictureOptions options{.look = PictureLook::OnView(), .time = IsDlgButtonChecked(dialog, kExportTime)};
    if (!options.look) return std::nullopt;
    if (IsDlgButtonChecked(dialog, kExportScale)) {
        options.scale = ScaleOfExport(*options.look, what, provenance, DisplayUnit);
    }
    if (IsDlgButtonChecked(dialog, kExportRegions)) options.regions = Regions;
    return options;
}

// Names the share that is done; the line is put back at the end.
class ShownProgress {
  public:
    ShownProgress() { align_ = GetStatusText(text_); }
    ~ShownProgress() { StatusMessage(text_, align_); }
    ShownProgress(const ShownProgress&) = delete;
    ShownProgress& operator=(const ShownProgress&) = delete;
    bool Show(std::int64_t done, std::int64_t all)
    {
        const std::int64_t percent = 100 * done / all;
        if (percent != std::exchange(told_, percent)) {
            StatusMessage(Format(" Exporting frames: %lld %%", static_cast<long long>(percent)), kLeftAligned);
        }
        return done == all || GatherGoesOn();
    }

  private:
    std::string text_;
    int align_ = 0;
    std::int64_t told_ = -1;
};

using FrameSinks = std::vector<std::unique_ptr<FrameSink>>;

// Of what is chosen, one for each target. Empty after a box: no memory is left, or what stands there stays.
FrameSinks SinksFor(HWND dialog, const std::vector<std::string>& targets, ExportWhat what, const ExportSource& source)
{
    const ExportFormatNames& format = ChosenFormat(dialog);
    std::optional<PictureOptions> options = PictureOptions{};
    if (format.isPicture) options = PictureOnView(dialog, what, source.Description().provenance);
    if (!options) {
        RefuseField(dialog, kExportName, "No memory is left.");
        return {};
    }
    std::vector<std::string> standing;
    for (std::size_t part = 0; part < targets.size(); ++part) {
        const auto files = MakeFrameSink(format.format, targets[part], true)->Targets(source.Description(part));
        std::ranges::copy_if(files, std::back_inserter(standing), FileExists);
    }
    if (!standing.empty() && !MayReplace(dialog, standing)) {
        FocusDlgItem(dialog, kExportName);
        return {};
    }
    return MakeFrameSinks(format.format, targets, !standing.empty(), *options);
}

ExportOutcome Write(ExportSource& source, const FrameSinks& sinks)
{
    const Gather gather(source.Description().frames > 1);
    ShownProgress progress;
    return RunExport(source, sinks,
                     [&progress](std::int64_t done, std::int64_t all) { return progress.Show(done, all); });
}

// What was written last, for the end of the command.
struct Written {
    std::vector<std::string> paths;
    ExportOutcome outcome;
    std::int64_t wanted = 0;
};
Written written;

void Accept(HWND dialog)
{
    const std::optional<ExportRequest> request = TakeRequest(dialog);
    if (!request) return;
    const std::string name = WithEnding(dialog, GetDlgItemText(dialog, kExportName));
    if (name.empty()) {
        RefuseField(dialog, kExportName, "Please enter the name of the file to write.");
        return;
    }
    if (ChosenFormat(dialog).isPicture && IsFloatForm(request->form)) {
        RefuseField(dialog, kExportForm, std::string(kPictureOfCounts));
        return;
    }
    std::string why;
    std::optional<ExportSource> source = OpenSource(*request, why);
    if (!source) {
        RefuseField(dialog, kExportWhat, why);
        return;
    }
    const std::string target = TargetOf(name);
    std::vector<std::string> targets = {target};
    if (request->regions.size() > 1) targets = PathsOfRegions(target, request->regions);
    const FrameSinks sinks = SinksFor(dialog, targets, request->what, *source);
    if (sinks.empty()) return;
    ExportOutcome outcome = Write(*source, sinks);
    if (!outcome.failure.empty()) {
        RefuseField(dialog, kExportName, outcome.failure);
        return;
    }
    if (outcome.frames == 0) return;  // stopped before the first one: nothing has changed
    written = {std::move(targets), std::move(outcome), source->Description().frames};
    lastChoice = {.form = ListSelection(dialog, kExportForm),
                  .format = ListSelection(dialog, kExportFormat),
                  .scale = IsDlgButtonChecked(dialog, kExportScale),
                  .time = IsDlgButtonChecked(dialog, kExportTime),
                  .regions = IsDlgButtonChecked(dialog, kExportRegions)};
    write::fileChoice.LastFileDirectory = DirectoryOf(target);
    EndDialog(dialog, kExported);
}

void NoteWritten()
{
    const auto& [paths, outcome, wanted] = written;
    if (outcome.files.front() != paths.front()) {  // a file a frame
        NoteSavedBitmaps(outcome.files, static_cast<std::uint32_t>(wanted * std::ssize(paths)));
        return;
    }
    if (!outcome.stopped) {
        NoteSavedFiles(paths, static_cast<std::uint32_t>(outcome.frames));
        return;
    }
    const std::string which =
        paths.size() == 1 ? FileNameOf(paths.front()) + " has" : Format("%zu files have", paths.size());
    StatusNote(" Stopped: " + which +
               Format(" %lld of %lld frames", static_cast<long long>(outcome.frames), static_cast<long long>(wanted)));
}

constexpr DialogEntry kEntries[] = {
    {kExportWhat, ShowFrames, kSelectionChanged},
    {kExportFormat, FollowFormat, kSelectionChanged},
    {kExportName, FollowName, kEditChanged},
    {kBrowse, Browse},
    {kIdOk, Accept},
};
constexpr DialogFrame kFrame{
    .name = "EXPORT", .procedure = fnEXPORTDlgProc, .open = Open, .entries = kEntries, .helpContext = kHelpExport};

}  // namespace

CommandEnd ExportFrames()
{
    StopPlaying();
    offered = SourcesThatAreThere();
    if (offered.empty()) {
        SomethingOnView("export");
        return CommandEnd::kLeaveStatus;
    }
    offeredRegions = Regions;
    const int result = RunDialog(kFrame, hWndMain);
    offered.clear();
    offeredRegions.clear();
    if (result != kExported) return CommandEnd::kResetStatus;
    NoteWritten();
    return CommandEnd::kLeaveStatus;
}

LRESULT fnEXPORTDlgProc(HWND dialog, std::uint32_t message, WPARAM wParam, LPARAM lParam)
{
    return HandleDialogMessage(kFrame, dialog, message, wParam, lParam);
}

void ResetExportDialog()
{
    lastChoice = {};
    offered.clear();
    offeredRegions.clear();
    written = {};
}

}  // namespace kelvo
