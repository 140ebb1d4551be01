#include "export/npy_writer.h"

#include "export/json_text.h"
#include "platform/text.h"

#include <cstring>

namespace kelvo {

namespace {

// Magic, version 1.0, the length of the text that follows, little-endian; all of it a multiple of 64 bytes.
constexpr std::size_t kHeadBytes = 128;
constexpr std::size_t kBeforeText = 10;
constexpr char kMagic[] = "\x93NUMPY\x01";  // and a 0: version 1.0

std::vector<std::byte> HeadOf(const ExportDescription& description, std::int64_t frames)
{
    const char* const type = description.isFloat ? "<f4" : "<i2";
    std::string text = Format("{'descr': '%s', 'fortran_order': False, 'shape': (%lld, %zu, %zu), }", type,
                              static_cast<long long>(frames), description.rows, description.columns);
    text.resize(kHeadBytes - kBeforeText - 1, ' ');
    text += '\n';
    std::vector<std::byte> head(kHeadBytes);
    std::memcpy(head.data(), kMagic, sizeof kMagic);
    head[sizeof kMagic] = static_cast<std::byte>(text.size());
    std::memcpy(head.data() + kBeforeText, text.data(), text.size());
    return head;
}

bool WriteText(File& file, const std::string& text)
{
    return file.Write(std::as_bytes(std::span(text))) == text.size();
}

}  // namespace

std::string NpyJsonPathOf(std::string_view path)
{
    constexpr std::string_view kExtension = ".npy";
    const bool isNamed =
        path.size() > kExtension.size() && EqualIgnoringCase(path.substr(path.size() - kExtension.size()), kExtension);
    return std::string(isNamed ? path.substr(0, path.size() - kExtension.size()) : path) + ".json";
}

std::string NpyWriter::WhyRefused() const
{
    const std::string why = WhyTargetIsRefused(path_, replace_);
    return why.empty() ? WhyTargetIsRefused(NpyJsonPathOf(path_), replace_) : why;
}

std::string NpyWriter::Json() const
{
    JsonObject json = ProvenanceJson(description_.provenance, description_.columns, description_.rows, timings_);
    std::vector<std::string> times;
    times.reserve(timings_.size());
    for (const FrameTiming& timing : timings_) times.push_back(TimingJson(timing));
    json.Member("times", JsonArray(times)).Member("bad_detector_places", BadPlacesJson(description_));
    return json.Json() + '\n';
}

ExportFailure NpyWriter::Begin(const ExportDescription& description)
{
    description_ = description;
    if (const std::string why = WhyRefused(); !why.empty()) return why;
    file_ = NewFile::Begin(path_);
    if (!file_) return CantBeWritten(path_);
    json_ = NewFile::Begin(NpyJsonPathOf(path_));
    if (!json_) return CantBeWritten(NpyJsonPathOf(path_));
    // What another process made while this one waited for the name stands now.
    if (const std::string why = WhyRefused(); !why.empty()) return why;
    const std::vector<std::byte> head = HeadOf(description_, description_.frames);
    return file_->Contents().Write(head) == head.size() ? std::nullopt : ExportFailure(DiskRefuses(path_));
}

ExportFailure NpyWriter::Add(const ExportedFrame& frame)
{
    const std::span<const std::byte> bytes = frame.Bytes();
    timings_.push_back(frame.timing);
    // NOLINTNEXTLINE(bugprone-unchecked-optional-access): Begin has made it
    return file_->Contents().Write(bytes) == bytes.size() ? std::nullopt : ExportFailure(DiskRefuses(path_));
}

ExportFailure NpyWriter::End()
{
    // NOLINTBEGIN(bugprone-unchecked-optional-access): Begin has made both
    const std::vector<std::byte> head = HeadOf(description_, std::ssize(timings_));
    if (!file_->Contents().Seek(0) || file_->Contents().Write(head) != head.size()) return DiskRefuses(path_);
    if (!WriteText(json_->Contents(), Json()) || !json_->Contents().Flush()) return DiskRefuses(NpyJsonPathOf(path_));
    // An array that stands has its own description: that one takes its name first.
    if (!json_->Keep()) return DiskRefuses(NpyJsonPathOf(path_));
    if (file_->Keep()) return std::nullopt;
    // NOLINTEND(bugprone-unchecked-optional-access)
    if (!FileExists(path_)) DeleteFileNamed(NpyJsonPathOf(path_));
    return DiskRefuses(path_);
}

}  // namespace kelvo
