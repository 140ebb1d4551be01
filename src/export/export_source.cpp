#include "export/export_source.h"

#include "analysis/measured_frame.h"
#include "calib/apply_calibration.h"
#include "calib/set_bad_detectors.h"
#include "calib/set_correction.h"
#include "display/difference_view.h"
#include "display/units.h"
#include "grabber/frame_size.h"
#include "grabber/host_frames.h"
#include "platform/clock.h"
#include "platform/digest.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "record/recording_head.h"
#include "state/buffer_state.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/frame_state.h"
#include "state/head_state.h"
#include "state/windows.h"
#include "viewing/stored_view.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace kelvo {

namespace {

constexpr std::size_t kLongestCalFile = std::size_t{16} << 20;
constexpr std::size_t kCounts = 65536;
constexpr std::int32_t kLowestCount = std::numeric_limits<std::int16_t>::min();

std::int32_t UnitOf(ExportForm form)
{
    switch (form) {
        case ExportForm::kVolts:
            return kUnitVolts;
        case ExportForm::kCelsius:
            return kUnitCelsius;
        case ExportForm::kKelvin:
            return kUnitKelvin;
        case ExportForm::kFahrenheit:
            return kUnitFahrenheit;
        default:
            return kUnitCounts;
    }
}

std::string ChecksumOf(const std::string& path)
{
    const std::optional<std::string> contents = ReadWholeFile(path, kLongestCalFile);
    return contents ? Sha256Of(*contents) : std::string();
}

// What the journal beside a file says of its recording.
void AddHead(const FramesHead& head, Provenance& provenance)
{
    provenance.recordedBy = head.Text(frames_key::kProgram);
    provenance.camera = head.Text(frames_key::kCamera);
    provenance.pixels = head.Text(frames_key::kPixels);
    provenance.sample = head.Text(frames_key::kSampleName);
    provenance.comment = head.Text(frames_key::kComment);
    provenance.set = head.Text(frames_key::kCalibration);
    provenance.setSha256 = head.Text(frames_key::kChecksum);
}

// The header that a file of the camera's frames would get. The one of the frame on view stays as it is.
ImageHeaderRecord HeaderOfCamera()
{
    const HeaderKeeper keeper;
    ImageHeaderRecord header;
    BuildImageHeader(&header, 0, 0, 0, 0, std::max(ActiveConfig.Hroi, 1) - 1, std::max(ActiveConfig.Vroi, 1) - 1);
    return header;
}

}  // namespace

std::optional<ExportSource> ExportSource::Open(const ExportRequest& request, std::string& why)
{
    ExportSource source;
    source.what_ = request.what;
    source.description_.isFloat = IsFloatForm(request.form);
    source.asShown_ = request.asShown;
    Provenance& provenance = source.description_.provenance;
    provenance.program = "Kelvo " KELVO_VERSION;
    provenance.exportedUtc = WallClockSeconds();
    provenance.form = request.form;
    const auto open = request.what == ExportWhat::kFile     ? &ExportSource::OpenFile
                      : request.what == ExportWhat::kOnView ? &ExportSource::TakePictureOnView
                                                            : &ExportSource::TakeHostFrames;
    std::optional<BadDetMap> bad;
    const bool isOpen = (source.*open)(request, why) && source.TakeParts(request, why) &&
                        source.TakeCorrection(request, why) && source.TakeUnit(request, why) &&
                        source.ReadBadDetectors(request, bad, why);
    if (!isOpen) return std::nullopt;
    const bool isDifference = request.asShown && request.what != ExportWhat::kFile && DifferenceOnView();
    if (isDifference) provenance.difference = DifferenceSource();
    source.MakeTable(request);
    source.DescribeParts(bad);
    return source;
}

bool ExportSource::OpenFile(const ExportRequest& request, std::string& why)
{
    file_ = StoredFrames::Open(request.path, why);
    if (!file_) {
        why = request.path + ' ' + why;
        return false;
    }
    columns_ = file_->Columns();
    rows_ = file_->Rows();
    description_.provenance.source = AbsolutePath(request.path);
    DescribeFile(*file_);
    return TakeRange(request, file_->Frames(), why);
}

void ExportSource::DescribeFile(const StoredFrames& frames)
{
    description_.provenance.header = frames.Header();
    if (frames.Journal()) AddHead(frames.Journal()->head, description_.provenance);
    if (frames.AreCorrected()) description_.provenance.pixels = kCorrectedPixels;
}

bool ExportSource::TakeRange(const ExportRequest& request, std::int64_t frames, std::string& why)
{
    first_ = request.first;
    const std::int64_t end = request.end < 0 ? frames : request.end;
    description_.frames = end - first_;
    description_.first = first_;
    if (first_ >= 0 && first_ < end && end <= frames) return true;
    const std::string name = what_ == ExportWhat::kFile ? request.path : "host memory";
    why = name + Format(" has %lld frames: there are none of that range", static_cast<long long>(frames));
    return false;
}

bool ExportSource::TakePictureOnView(const ExportRequest& request, std::string& why)
{
    if (request.first != 0 || request.end > 1) {
        why = "The picture on view is one frame: there are none of that range.";
        return false;
    }
    const bool isThere = (ViewingFile || CameraOn) && KeepFrameOnView() && ReadFrameToMeasure();
    const std::span<const std::int16_t> frame = isThere ? FrameToMeasure() : std::span<const std::int16_t>();
    if (frame.empty()) {
        why = "There is no picture on view.";
        return false;
    }
    const Point size = FrameSizeOnView();
    columns_ = static_cast<std::size_t>(size.x);
    rows_ = static_cast<std::size_t>(size.y);
    if (!AllocateBlock(whole_, columns_ * rows_) || frame.size() < whole_.size()) {
        why = "No memory is left.";
        return false;
    }
    std::copy_n(frame.begin(), whole_.size(), whole_.begin());
    description_.frames = 1;
    if (!ViewingFile) {
        TakeCameraFacts();
        return true;
    }
    description_.provenance.source = AbsolutePath(ViewFilePath);
    std::string none;
    std::optional<StoredFrames> stored = StoredFrames::Open(ViewFilePath, none);
    if (stored && stored->Columns() == columns_ && stored->Rows() == rows_) {
        onViewIndex_ = ViewingSequence ? std::int64_t{SequenceFrameIndex} : 0;
        DescribeFile(*stored);
        file_ = std::move(stored);
    } else if (BearsCalibration(ImageHeader)) {
        description_.provenance.pixels = kCorrectedPixels;
    }
    description_.provenance.header = ImageHeader;
    return true;
}

bool ExportSource::TakeHostFrames(const ExportRequest& request, std::string& why)
{
    columns_ = static_cast<std::size_t>(std::max(ActiveConfig.Hroi, 0));
    rows_ = static_cast<std::size_t>(std::max(ActiveConfig.Vroi, 0));
    const std::int64_t frames = std::min<std::int64_t>(FramesInBuffer, std::ssize(HostFrames));
    if (CameraFrameValues() == 0 || frames < 1) {
        why = "There are no frames in host memory.";
        return false;
    }
    if (!TakeRange(request, frames, why)) return false;
    if (!AllocateBlock(whole_, columns_ * rows_)) {
        why = "No memory is left.";
        return false;
    }
    TakeCameraFacts();
    description_.provenance.source = "host frames";
    return true;
}

void ExportSource::TakeCameraFacts()
{
    AddHead(HeadOfRecording(), description_.provenance);
    description_.provenance.header = HeaderOfCamera();
    description_.provenance.source = "frame on view";
    description_.provenance.recordedBy = description_.provenance.program;
    if (CalType != 0) description_.provenance.pixels = kCorrectedPixels;
    correctedInForce_ = CalType != 0;
}

bool ExportSource::TakeParts(const ExportRequest& request, std::string& why)
{
    Rectangle picture{.columns = columns_, .rows = rows_};
    const bool isOfCamera = what_ == ExportWhat::kHostFrames || (what_ == ExportWhat::kOnView && !ViewingFile);
    if (isOfCamera) {
        picture.columns = std::min(static_cast<std::size_t>(std::max(ActiveConfig.Hactive, 1)), columns_);
        picture.rows = std::min(static_cast<std::size_t>(std::max(ActiveConfig.Vactive, 1)), rows_);
    }
    if (what_ == ExportWhat::kFile && !AllocateBlock(whole_, columns_ * rows_)) {
        why = "No memory is left.";
        return false;
    }
    for (const Region& region : request.regions) {
        if (!TakeRegion(region, picture, why)) return false;
    }
    if (!request.regions.empty()) return true;
    if (!request.place) return TakePart(picture, why);
    const auto& [x1, y1, x2, y2] = *request.place;
    const auto cut = [](std::int32_t a, std::int32_t b, std::size_t size) {
        const std::int64_t from = std::max<std::int64_t>(std::min(a, b), 0);
        const std::int64_t to = std::min(std::int64_t{std::max(a, b)}, static_cast<std::int64_t>(size) - 1);
        return std::pair(from, to - from + 1);
    };
    const auto [left, columns] = cut(x1, x2, picture.columns);
    const auto [top, rows] = cut(y1, y2, picture.rows);
    if (columns < 1 || rows < 1) {
        why = "The region lies outside of the frame.";
        return false;
    }
    return TakePart({.left = static_cast<std::size_t>(left),
                     .top = static_cast<std::size_t>(top),
                     .columns = static_cast<std::size_t>(columns),
                     .rows = static_cast<std::size_t>(rows)},
                    why);
}

bool ExportSource::TakePart(const Rectangle& rectangle, std::string& why)
{
    Part part;
    part.rectangle = rectangle;
    const std::size_t pixels = rectangle.columns * rectangle.rows;
    const bool hasRoom =
        AllocateBlock(part.counts, pixels) && (!description_.isFloat || AllocateBlock(part.values, pixels));
    if (hasRoom) {
        parts_.push_back(std::move(part));
    } else {
        why = "No memory is left.";
    }
    return hasRoom;
}

bool ExportSource::TakeRegion(const Region& region, const Rectangle& picture, std::string& why)
{
    const std::vector<PixelRun> runs = PixelsOf(region.shape, region.place, static_cast<std::int32_t>(picture.columns),
                                                static_cast<std::int32_t>(picture.rows));
    if (runs.empty()) {
        why = "Region " + region.name + " lies outside of the frame.";
        return false;
    }
    const std::int32_t left = std::ranges::min(runs, {}, &PixelRun::first).first;
    const std::int32_t right = std::ranges::max(runs, {}, &PixelRun::last).last;
    const Rectangle around{.left = static_cast<std::size_t>(left),
                           .top = static_cast<std::size_t>(runs.front().row),
                           .columns = static_cast<std::size_t>(right - left + 1),
                           .rows = static_cast<std::size_t>(runs.back().row - runs.front().row + 1)};
    if (!TakePart(around, why)) return false;
    ExportDescription& description = parts_.back().description;
    description.provenance.region = region;
    description.outside.assign(around.columns * around.rows, 1);
    for (const PixelRun& run : runs) {
        const auto row = static_cast<std::size_t>(run.row) - around.top;
        const auto from = description.outside.begin() + static_cast<std::ptrdiff_t>(row * around.columns);
        std::fill(from + (run.first - left), from + (run.last - left) + 1, std::uint8_t{0});
    }
    return true;
}

bool ExportSource::IsRaw() const
{
    return description_.provenance.pixels != kCorrectedPixels;
}

bool ExportSource::TakeCorrection(const ExportRequest& request, std::string& why)
{
    Provenance& provenance = description_.provenance;
    const bool isAsked = !request.set.empty() || request.listsInForce;
    if (!isAsked) {
        if (request.form != ExportForm::kCorrected || !IsRaw()) return true;
        why = what_ == ExportWhat::kFile ? request.path + " isn't corrected: a calibration set is needed"
                                         : "The picture isn't corrected.";
        return false;
    }
    if (what_ != ExportWhat::kFile) {
        why = "A picture on view is corrected already, or stays as it is.";
    } else if (request.form == ExportForm::kCounts) {
        why = "counts are exported as they are stored: leave the set out, or ask for corrected ones";
    } else if (!IsRaw()) {
        why = request.path + " is corrected already";
    } else if (request.listsInForce) {
        if (!CorrectWithListsInForce(why)) return false;
    } else {
        correction_ = CorrectionOfSet(request.set, columns_ * rows_, columns_, why);
        if (!correction_) return false;
        provenance.set = AbsolutePath(request.set);
        MarkCalibrated(provenance.header, provenance.set);
    }
    if (!correction_) return false;
    provenance.pixels = kCorrectedPixels;
    provenance.setSha256 = ChecksumOf(provenance.set);
    if (provenance.setSha256.empty() && FileExists(provenance.set)) {
        why = provenance.set + " can't be read";
        return false;
    }
    if (AllocateBlock(corrected_, columns_ * rows_)) return true;
    why = "No memory is left.";
    return false;
}

bool ExportSource::CorrectWithListsInForce(std::string& why)
{
    const std::size_t pixels = columns_ * rows_;
    const bool fits = CalType != 0 && DecomList.size() == pixels && OffsetList.size() >= pixels &&
                      (CalType == 1 || GainList.size() >= pixels);
    if (!fits) {
        why = CalType == 0 ? "No calibration is in force." : "The calibration in force doesn't fit these frames.";
        return false;
    }
    correction_ =
        StoredCorrection::Make(CalType, {DecomList, OffsetList, GainList}, columns_, StoredOrder::kReadoutToImage);
    if (!correction_) {
        why = "No memory is left.";
        return false;
    }
    Provenance& provenance = description_.provenance;
    provenance.set = CalSettings.CalFile;
    const auto low16 = [](std::int32_t count) { return static_cast<std::int16_t>(count); };
    provenance.header.IntensityCold = low16(IntensityCold);
    provenance.header.IntensityHot = low16(IntensityHot);
    provenance.header.TemperatureCold = TemperatureCold;
    provenance.header.TemperatureHot = TemperatureHot;
    correctedInForce_ = true;
    return true;
}

bool ExportSource::TakeUnit(const ExportRequest& request, std::string& why)
{
    Provenance& provenance = description_.provenance;
    const std::int32_t unit = UnitOf(request.form);
    GetUnitName(unit, provenance.quantity, provenance.unit);
    if (request.form == ExportForm::kKelvin) provenance.unit = "K";  // the screen's own has a degree sign
    if (unit == kUnitCounts) return true;
    const std::string name = what_ == ExportWhat::kFile ? request.path : "The picture on view";
    const auto scope = ScopeOf(request);
    if (unit == kUnitVolts) {
        const bool isKnown = VoltsAreKnown();
        if (!isKnown) why = name + ": it isn't known what its counts are in volts";
        return isKnown;
    }
    const bool isOnView = what_ == ExportWhat::kOnView;
    if (isOnView ? !CountsOfSources() : !HasTwoSources(provenance.header)) {
        why = name + " has no calibration with two temperatures";
    } else if (IsRaw() && !isOnView) {  // what is on view is read as the screen reads it, raw frames too
        why = name + " isn't corrected: a calibration set is needed";
    } else {
        return true;
    }
    return false;
}

// Nobody knows them where frames bear no trace of their set, where it has changed since, or files of it are gone. Where
// they are known and can't be found out now, an export would pass bad detectors off as good ones.
bool ExportSource::ReadBadDetectors(const ExportRequest& request, std::optional<BadDetMap>& bad, std::string& why) const
{
    const Provenance& provenance = description_.provenance;
    if (IsRaw()) return true;
    if (correctedInForce_) {
        bad = BadDetectorsInForce(why);
        if (bad && bad->size() != columns_ * rows_) bad.reset();
        return bad || why.empty();
    }
    if (!FileExists(provenance.set)) return true;
    const std::string sha256 = ChecksumOf(provenance.set);
    if (sha256.empty()) {
        why = provenance.set + " can't be read";
        return false;
    }
    if (sha256 != provenance.setSha256) return true;
    const CalibrationSet set = ReadSet(provenance.set, columns_ * rows_);
    if (request.set.empty() && !TellsBadDetectors(set)) return true;
    bad = BadDetectorsOfSet(set, static_cast<std::int32_t>(columns_), static_cast<std::int32_t>(rows_), why);
    return bad.has_value();
}

void ExportSource::DescribeParts(const std::optional<BadDetMap>& bad)
{
    for (Part& part : parts_) {
        const Rectangle& rectangle = part.rectangle;
        ExportDescription described = description_;
        described.columns = rectangle.columns;
        described.rows = rectangle.rows;
        described.outside = std::move(part.description.outside);
        Provenance& provenance = described.provenance;
        provenance.region = std::move(part.description.provenance.region);
        provenance.left = static_cast<std::int32_t>(rectangle.left);
        provenance.top = static_cast<std::int32_t>(rectangle.top);
        provenance.badKnown = bad.has_value();
        for (std::size_t row = 0; bad && row < rectangle.rows; ++row) {
            const auto line =
                std::span(*bad).subspan((rectangle.top + row) * columns_ + rectangle.left, rectangle.columns);
            described.badDetectors.insert(described.badDetectors.end(), line.begin(), line.end());
        }
        provenance.badDetectors =
            std::ranges::count_if(described.badDetectors, [](std::uint8_t mark) { return mark != 0; });
        part.description = std::move(described);
    }
}

// The picture on view is read as the screen reads it, coefficient lists with their scale too.
std::unique_ptr<UnitScope> ExportSource::ScopeOf(const ExportRequest& request) const
{
    const ImageHeaderRecord& header = description_.provenance.header;
    if (request.volts) return std::make_unique<UnitScope>(header, request.path, *request.volts);
    if (what_ == ExportWhat::kFile) return std::make_unique<UnitScope>(header, request.path);
    return what_ == ExportWhat::kHostFrames ? std::make_unique<UnitScope>() : nullptr;
}

void ExportSource::MakeTable(const ExportRequest& request)
{
    if (!description_.isFloat) return;
    const std::int32_t unit = UnitOf(request.form);
    const ImageHeaderRecord& header = description_.provenance.header;
    const auto scope = ScopeOf(request);
    table_.resize(kCounts);
    for (std::size_t i = 0; i < kCounts; ++i) {
        table_[i] = CountsToUnit(kLowestCount + static_cast<std::int32_t>(i), unit, nullptr);
    }
    const bool isVolts = unit == kUnitVolts;
    const std::int32_t low = !isVolts ? header.IntensityCold : request.volts ? header.DisplayLow : DisplayLow;
    const std::int32_t high = !isVolts ? header.IntensityHot : request.volts ? header.DisplayHigh : DisplayHigh;
    const auto point = [this](std::int32_t count) {
        const std::int32_t held =
            std::clamp<std::int32_t>(count, kLowestCount, std::numeric_limits<std::int16_t>::max());
        return ScalePoint{held, table_[static_cast<std::size_t>(held - kLowestCount)]};
    };
    description_.provenance.scale = {point(low), point(high)};
}

bool ExportSource::ReadWhole(std::int64_t index, std::string& why)
{
    if (what_ == ExportWhat::kOnView) return true;
    if (what_ == ExportWhat::kFile) {
        // NOLINTBEGIN(bugprone-unchecked-optional-access): Open has opened it
        if (file_->ReadCounts(index, whole_, why)) return true;
        why = file_->Path() + ' ' + why;
        // NOLINTEND(bugprone-unchecked-optional-access)
        return false;
    }
    const bool isThere = index < FramesInBuffer && index < std::ssize(HostFrames) &&
                         HostFrames[static_cast<std::size_t>(index)].size() >= whole_.size();
    if (!isThere) {
        why = "The frames in host memory are gone.";
        return false;
    }
    std::copy_n(HostFrames[static_cast<std::size_t>(index)].begin(), whole_.size(), whole_.begin());
    return true;
}

FrameTiming ExportSource::TimingOf(std::int64_t index) const
{
    FrameTiming timing{.index = index, .seconds = std::nullopt};
    timing.integrationMs = description_.provenance.header.IntegrationMsec;
    if (!file_) return timing;
    const std::int64_t stored = what_ == ExportWhat::kOnView ? onViewIndex_ : index;
    timing.index = stored;
    timing.seconds = file_->SecondsOf(stored);
    if (const FrameRecord* const record = file_->RecordOf(stored)) {
        timing.number = record->number;
        timing.utcNs = record->utcNs;
        if (record->integrationMs > 0) timing.integrationMs = record->integrationMs;
        timing.lostByBoard = record->lostByBoard;
        timing.lostByRing = record->lostByRing;
        timing.passedOver = record->passedOver;
        timing.lostByTransport = record->lostByTransport;
    }
    return timing;
}

bool ExportSource::Read(std::int64_t i, std::string& why)
{
    if (i < 0 || i >= description_.frames) {
        why = "There is no such frame.";
        return false;
    }
    const std::int64_t index = first_ + i;
    if (!ReadWhole(index, why)) return false;
    picture_ = whole_;
    if (asShown_ && what_ != ExportWhat::kFile) picture_ = CountsToShow(whole_);
    if (correction_) {
        correction_->Correct(whole_, corrected_);
        picture_ = corrected_;
    }
    timing_ = TimingOf(index);
    return true;
}

ExportedFrame ExportSource::Frame(std::size_t part)
{
    auto& [rectangle, description, counts, values] = parts_[part];
    std::span<const std::int16_t> picture = picture_;
    if (rectangle.columns != columns_ || rectangle.rows != rows_) {
        for (std::size_t row = 0; row < rectangle.rows; ++row) {
            const auto line = picture.subspan((rectangle.top + row) * columns_ + rectangle.left, rectangle.columns);
            std::ranges::copy(line, counts.begin() + static_cast<std::ptrdiff_t>(row * rectangle.columns));
        }
        picture = counts;
    }
    if (!description.isFloat) return {.counts = picture, .values = {}, .timing = timing_};
    for (std::size_t k = 0; k < picture.size(); ++k) {
        values[k] = table_[static_cast<std::size_t>(picture[k] - kLowestCount)];
    }
    for (const std::vector<std::uint8_t>& mask :
         {std::cref(description.badDetectors), std::cref(description.outside)}) {
        for (std::size_t k = 0; k < mask.size(); ++k) {
            if (mask[k] != 0) values[k] = std::numeric_limits<float>::quiet_NaN();
        }
    }
    return {.counts = {}, .values = values, .timing = timing_};
}

}  // namespace kelvo
