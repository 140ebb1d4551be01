#include "export/npy_writer.h"

#include "platform/json_text.h"
#include "platform/text.h"

#include <cstring>
#include <filesystem>
#include <system_error>

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

// What stands under a name that another file is about to take. It comes back at the end of life, in place of whatever
// stands there then, unless it is dropped; where nothing stood nothing stands again.
class FormerFile {
  public:
    explicit FormerFile(const std::string& path)
    {
        // The file itself, where the name is a link.
        std::error_code none;
        const std::filesystem::path real = std::filesystem::canonical(ResolvePath(path), none);
        stood_ = !none;
        path_ = stood_ ? real.string() : path;
    }
    ~FormerFile()
    {
        if (isAside_) {
            MoveFileTo(Aside(), path_);
        } else if (isToGo_ && FileExists(path_)) {
            DeleteFileNamed(path_);
        }
    }
    FormerFile(const FormerFile&) = delete;
    FormerFile& operator=(const FormerFile&) = delete;

    bool PutAside()
    {
        isAside_ = stood_ && MoveFileTo(path_, Aside());
        isToGo_ = !stood_;
        return isAside_ || isToGo_;
    }
    void Drop()
    {
        if (isAside_) DeleteFileNamed(Aside());
        isAside_ = false;
        isToGo_ = false;
    }

  private:
    std::string Aside() const { return path_ + ".before"; }

    std::string path_;
    bool stood_ = false;
    bool isAside_ = false;
    bool isToGo_ = false;  // what takes the name meanwhile
};

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

std::string NpyWriter::Json() const
{
    JsonText json = ProvenanceJson(description_.provenance, description_.columns, description_.rows, timings_);
    std::vector<std::string> times;
    times.reserve(timings_.size());
    for (const FrameTiming& timing : timings_) times.push_back(TimingJson(timing));
    json.Member("times", JsonList(times))
        .Member("bad_detector_places", BadPlacesJson(description_))
        .Member("outside_of_region", OutsideRunsJson(description_));
    return json.Json() + '\n';
}

ExportFailure NpyWriter::Begin(const ExportDescription& description)
{
    description_ = description;
    if (ExportFailure failure = BeginFile()) return failure;
    if (ExportFailure failure = BeginFile(json_, NpyJsonPathOf(Path()))) return failure;
    const std::vector<std::byte> head = HeadOf(description_, description_.frames);
    return DoneOr(Contents().Write(head) == head.size());
}

ExportFailure NpyWriter::Add(const ExportedFrame& frame)
{
    const std::span<const std::byte> bytes = frame.Bytes();
    timings_.push_back(frame.timing);
    return DoneOr(Contents().Write(bytes) == bytes.size());
}

ExportFailure NpyWriter::End()
{
    const std::vector<std::byte> head = HeadOf(description_, std::ssize(timings_));
    const bool isWhole = Contents().Seek(0) && Contents().Write(head) == head.size() && Contents().Flush();
    const bool isDescribed = isWhole && json_ && WriteText(json_->Contents(), Json()) && json_->Contents().Flush();
    return isDescribed ? TakeNames() : DoneOr(false);
}

ExportFailure NpyWriter::TakeNames()
{
    FormerFile former(NpyJsonPathOf(Path()));
    // NOLINTNEXTLINE(bugprone-unchecked-optional-access): End has written it
    if (!former.PutAside() || !json_->Keep()) return DoneOr(false);
    if (ExportFailure failure = Keep()) return failure;
    former.Drop();
    return std::nullopt;
}

}  // namespace kelvo
