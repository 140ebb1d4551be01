#include "export/export_source.h"

#include "analysis/measured_frame.h"
#include "calib/apply_calibration.h"
#include "calib/set_correction.h"
#include "display/difference_view.h"
#include "display/units.h"
#include "export/bad_detectors.h"
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

bool HasTwoSources(const ImageHeaderRecord& header)
{
    return header.IntensityCold < header.IntensityHot && header.TemperatureCold < header.TemperatureHot;
}

// A calibration with one source, or with two, has left its mark; without one that of the first says that there is none.
bool IsMarkedCorrected(const ImageHeaderRecord& header)
{
    const bool hasOneSource = header.IntensityHot == kUncalibratedIntensity;
    return header.IntensityCold != kUncalibratedIntensity && (hasOneSource || HasTwoSources(header));
}

// Volts of a count by two given ends, as CountsToUnit reckons by those in force.
float VoltsOf(std::int32_t count, const ImageHeaderRecord& header, const std::pair<float, float>& ends)
{
    const double volts = static_cast<double>(ends.second) - static_cast<double>(ends.first);
    const double range = static_cast<double>(header.DisplayHigh) - header.DisplayLow;
    return static_cast<float>(volts * (static_cast<double>(count) - header.DisplayLow) / range +
                              static_cast<double>(ends.first));
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
    provenance.region = request.region;
    const auto open = request.what == ExportWhat::kFile     ? &ExportSource::OpenFile
                      : request.what == ExportWhat::kOnView ? &ExportSource::TakePictureOnView
                                                            : &ExportSource::TakeHostFrames;
    const bool isOpen = (source.*open)(request, why) && source.TakeRectangle(request, why) &&
                        source.TakeCorrection(request, why) && source.TakeUnit(request, why);
    if (!isOpen) return std::nullopt;
    const bool isDifference = request.asShown && request.what != ExportWhat::kFile && DifferenceOnView();
    if (isDifference) provenance.difference = DifferenceSource();
    source.TakeBadDetectors();
    source.MakeTable(request);
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
    if (description_.provenance.pixels.empty() && IsMarkedCorrected(frames.Header())) {
        description_.provenance.pixels = kCorrectedPixels;
    }
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

bool ExportSource::TakePictureOnView(const ExportRequest& /*request*/, std::string& why)
{
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
    } else if (IsMarkedCorrected(ImageHeader)) {
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

bool ExportSource::TakeRectangle(const ExportRequest& request, std::string& why)
{
    rectangle_ = {.columns = columns_, .rows = rows_};
    const bool isOfCamera = what_ == ExportWhat::kHostFrames || (what_ == ExportWhat::kOnView && !ViewingFile);
    if (isOfCamera) {
        rectangle_.columns = std::min(static_cast<std::size_t>(std::max(ActiveConfig.Hactive, 1)), columns_);
        rectangle_.rows = std::min(static_cast<std::size_t>(std::max(ActiveConfig.Vactive, 1)), rows_);
    }
    if (request.place) {
        const auto& [x1, y1, x2, y2] = *request.place;
        const auto cut = [](std::int32_t a, std::int32_t b, std::size_t size) {
            const std::int64_t from = std::max<std::int64_t>(std::min(a, b), 0);
            const std::int64_t to = std::min(std::int64_t{std::max(a, b)}, static_cast<std::int64_t>(size) - 1);
            return std::pair(from, to - from + 1);
        };
        const auto [left, columns] = cut(x1, x2, rectangle_.columns);
        const auto [top, rows] = cut(y1, y2, rectangle_.rows);
        if (columns < 1 || rows < 1) {
            why = "The region lies outside of the frame.";
            return false;
        }
        rectangle_ = {.left = static_cast<std::size_t>(left),
                      .top = static_cast<std::size_t>(top),
                      .columns = static_cast<std::size_t>(columns),
                      .rows = static_cast<std::size_t>(rows)};
    }
    description_.columns = rectangle_.columns;
    description_.rows = rectangle_.rows;
    description_.provenance.left = static_cast<std::int32_t>(rectangle_.left);
    description_.provenance.top = static_cast<std::int32_t>(rectangle_.top);
    const std::size_t values = description_.Pixels();
    const bool hasRoom = AllocateBlock(counts_, values) && (!description_.isFloat || AllocateBlock(values_, values)) &&
                         (what_ != ExportWhat::kFile || AllocateBlock(whole_, columns_ * rows_));
    if (!hasRoom) why = "No memory is left.";
    return hasRoom;
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
    if (unit == kUnitVolts) {
        const ImageHeaderRecord& header = provenance.header;
        const bool isKnown =
            request.volts ? header.DisplayLow < header.DisplayHigh : DisplayLow < DisplayHigh && VoltsLow < VoltsHigh;
        if (!isKnown) why = name + ": it isn't known what its counts are in volts";
        return isKnown;
    }
    if (!HasTwoSources(provenance.header)) {
        why = name + " has no calibration with two temperatures";
    } else if (IsRaw()) {
        why = name + " isn't corrected: a calibration set is needed";
    } else {
        return true;
    }
    return false;
}

void ExportSource::TakeBadDetectors()
{
    Provenance& provenance = description_.provenance;
    if (IsRaw()) return;
    std::optional<std::vector<std::uint8_t>> bad;
    if (correctedInForce_) {
        bad = BadDetectorsInForce(columns_, rows_);
    } else if (!provenance.set.empty() && ChecksumOf(provenance.set) == provenance.setSha256) {
        bad = BadDetectorsOfSet(provenance.set, columns_, rows_);
    }
    if (!bad) return;
    std::vector<std::uint8_t>& cut = description_.badDetectors;
    cut.reserve(description_.Pixels());
    for (std::size_t row = 0; row < rectangle_.rows; ++row) {
        const auto from =
            bad->begin() + static_cast<std::ptrdiff_t>((rectangle_.top + row) * columns_ + rectangle_.left);
        cut.insert(cut.end(), from, from + static_cast<std::ptrdiff_t>(rectangle_.columns));
    }
    provenance.badKnown = true;
    provenance.badDetectors = std::ranges::count_if(cut, [](std::uint8_t mark) { return mark != 0; });
}

void ExportSource::MakeTable(const ExportRequest& request)
{
    if (!description_.isFloat) return;
    const std::int32_t unit = UnitOf(request.form);
    const ImageHeaderRecord header = description_.provenance.header;
    // The picture on view is read as the screen reads it, coefficient lists with their scale too.
    std::optional<UnitScope> scope;
    if (what_ == ExportWhat::kFile) scope.emplace(header, request.path);
    if (what_ == ExportWhat::kHostFrames) scope.emplace();
    table_.resize(kCounts);
    for (std::size_t i = 0; i < kCounts; ++i) {
        const std::int32_t count = kLowestCount + static_cast<std::int32_t>(i);
        table_[i] = request.volts && unit == kUnitVolts ? VoltsOf(count, header, *request.volts)
                                                        : CountsToUnit(count, unit, nullptr);
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

bool ExportSource::IsWholeFrame() const
{
    return rectangle_.columns == columns_ && rectangle_.rows == rows_;
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
    }
    return timing;
}

bool ExportSource::Read(std::int64_t i, ExportedFrame& frame, std::string& why)
{
    if (i < 0 || i >= description_.frames) {
        why = "There is no such frame.";
        return false;
    }
    const std::int64_t index = first_ + i;
    if (!ReadWhole(index, why)) return false;
    std::span<const std::int16_t> picture = asShown_ && what_ != ExportWhat::kFile ? CountsToShow(whole_) : whole_;
    if (correction_) {
        correction_->Correct(whole_, corrected_);
        picture = corrected_;
    }
    if (!IsWholeFrame()) {
        for (std::size_t row = 0; row < rectangle_.rows; ++row) {
            const auto line = picture.subspan((rectangle_.top + row) * columns_ + rectangle_.left, rectangle_.columns);
            std::ranges::copy(line, counts_.begin() + static_cast<std::ptrdiff_t>(row * rectangle_.columns));
        }
        picture = counts_;
    }
    frame = {.counts = picture, .values = {}, .timing = TimingOf(index)};
    if (!description_.isFloat) return true;
    for (std::size_t k = 0; k < picture.size(); ++k) {
        values_[k] = table_[static_cast<std::size_t>(picture[k] - kLowestCount)];
    }
    const std::vector<std::uint8_t>& bad = description_.badDetectors;
    for (std::size_t k = 0; k < bad.size(); ++k) {
        if (bad[k] != 0) values_[k] = std::numeric_limits<float>::quiet_NaN();
    }
    frame.counts = {};
    frame.values = values_;
    return true;
}

}  // namespace kelvo
