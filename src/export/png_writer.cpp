#include "export/png_writer.h"

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/json_text.h"
#include "platform/png.h"
#include "platform/text.h"

#include <span>

namespace kelvo {

namespace {

// "x.png" and 12 give "x-000012.png".
std::string NumberedName(const std::string& path, std::int64_t number)
{
    std::string extension;
    SplitPath(path, nullptr, nullptr, nullptr, &extension);
    return path.substr(0, path.size() - extension.size()) + Format("-%06lld", static_cast<long long>(number)) +
           extension;
}

std::vector<PngText> TextsOf(const ExportDescription& description, const FrameTiming& timing, CountRange spread)
{
    const Provenance& provenance = description.provenance;
    JsonText json = ProvenanceJson(provenance, description.columns, description.rows, {});
    json.Member("time", TimingJson(timing))
        .Member("colors", JsonText().Whole("first", spread.low).Whole("last", spread.high).Json());
    std::vector<PngText> texts = {{"Software", provenance.program}, {"Description", json.Json()}};
    if (!provenance.camera.empty()) texts.push_back({"Source", provenance.camera});
    if (timing.utcNs != 0) texts.push_back({"Creation Time", UtcText(timing.utcNs)});
    return texts;
}

}  // namespace

std::vector<std::string> PngWriter::Targets(const ExportDescription& description) const
{
    if (description.frames == 1) return {Path()};
    std::vector<std::string> targets;
    for (std::int64_t i = 0; i < description.frames; ++i) {
        targets.push_back(NumberedName(Path(), description.first + i));
    }
    return targets;
}

ExportFailure PngWriter::Begin(const ExportDescription& description)
{
    if (description.isFloat) return Path() + " can't be made of values: a picture shows counts";
    targets_ = Targets(description);
    for (const std::string& target : targets_) {
        if (ExportFailure refused = WhyRefused(target)) return refused;
    }
    description_ = description;
    picture_ = ExportedPicture::Make(description, std::move(options_));
    return picture_ ? std::nullopt : ExportFailure("No memory is left.");
}

ExportFailure PngWriter::Add(const ExportedFrame& frame)
{
    if (!picture_ || Kept() >= targets_.size() || frame.counts.size() != description_.Pixels()) return DoneOr(false);
    const std::string& target = targets_[Kept()];
    if (!picture_->Show(frame)) return "No memory is left.";
    const auto texts = TextsOf(description_, frame.timing, picture_->Look().Spread());
    const std::optional<std::string> bytes = PngOf(picture_->Picture(), texts);
    if (!bytes) return "No memory is left.";
    std::optional<NewFile> file;
    if (ExportFailure failure = BeginFile(file, target)) return failure;
    const bool isWritten = file && file->Contents().Write(std::as_bytes(std::span(*bytes))) == bytes->size();
    return isWritten ? Keep(file, target) : DoneOr(false, target);
}

}  // namespace kelvo
