#include "viewing/foreign_view.h"

#include "imagefile/foreign_frames.h"
#include "platform/box.h"
#include "platform/directory.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/windows.h"
#include "ui/gather.h"
#include "ui/status.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <span>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr std::size_t kMostSourceBytes = 65536;
constexpr int kMostOfOneName = 9999;

constexpr const char* kRefused = "can't be opened: its copy can't be written";

// One line, whatever the name holds.
std::string WholePathOf(std::string_view path)
{
    std::string whole = AbsolutePath(path);
    std::ranges::replace(whole, '\n', '?');
    return whole;
}

std::string OpenedDirectory()
{
    return CacheDir + "/opened";
}

// ---- what a copy was made of

struct CopySource {
    std::string path;           // whole
    std::int64_t bytes = 0;     // of the file that was copied
    std::int64_t modified = 0;  // seconds since 1970
    std::int64_t copyBytes = 0;
    std::string changes{};  // as ForeignFrames::Changes
};

std::string SourcePathOf(std::string_view copy)
{
    return std::string(copy) + ".source";
}

std::string TextOf(const CopySource& source)
{
    return Format("Source=%s\nBytes=%lld\nModified=%lld\nCopyBytes=%lld\nChanges=%s\n", source.path.c_str(),
                  static_cast<long long>(source.bytes), static_cast<long long>(source.modified),
                  static_cast<long long>(source.copyBytes), source.changes.c_str());
}

// The value of the next "key=value" line, taken off the text; nullopt where that isn't what comes next.
std::optional<std::string> TakeLine(std::string_view& text, std::string_view key)
{
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos || !text.starts_with(key)) return std::nullopt;
    std::string value(text.substr(key.size(), end - key.size()));
    text.remove_prefix(end + 1);
    return value;
}

std::optional<CopySource> ReadSource(std::string_view copy)
{
    const std::optional<std::string> whole = ReadWholeFile(SourcePathOf(copy), kMostSourceBytes);
    if (!whole) return std::nullopt;
    std::string_view text = *whole;
    const std::optional<std::string> path = TakeLine(text, "Source=");
    const std::optional<std::string> bytes = TakeLine(text, "Bytes=");
    const std::optional<std::string> modified = TakeLine(text, "Modified=");
    const std::optional<std::string> copyBytes = TakeLine(text, "CopyBytes=");
    const std::optional<std::string> changes = TakeLine(text, "Changes=");
    if (!path || !bytes || !modified || !copyBytes || !changes) return std::nullopt;
    return CopySource{.path = *path,
                      .bytes = std::strtoll(bytes->c_str(), nullptr, 10),
                      .modified = std::strtoll(modified->c_str(), nullptr, 10),
                      .copyBytes = std::strtoll(copyBytes->c_str(), nullptr, 10),
                      .changes = *changes};
}

std::int64_t LengthOf(std::string_view path)
{
    const std::optional<File> file = File::Open(path, FileMode::kRead);
    return file ? file->Length() : -1;
}

// A file that was written in the last second before the copy was made may have been written once more in the same one.
bool IsStillTrue(const CopySource& source, std::string_view path, std::string_view copy)
{
    constexpr std::time_t kSameTime = 1;
    const std::optional<std::time_t> modified = FileModificationTime(path);
    const std::optional<std::time_t> copied = FileModificationTime(copy);
    return modified && copied && source.modified == *modified && *copied > *modified + kSameTime &&
           source.bytes == LengthOf(path) && source.copyBytes == LengthOf(copy);
}

// The copy of this file that stands, or else a name that nothing has. A copy without its source may be anybody's.
std::string CopyOf(std::string_view path)
{
    std::string name;
    SplitPath(path, nullptr, nullptr, &name, nullptr);
    const std::string whole = WholePathOf(path);
    std::string copy = OpenedDirectory() + "/" + name + ".seq";
    for (int number = 2; number <= kMostOfOneName; ++number) {
        const std::optional<CopySource> source = ReadSource(copy);
        if (source ? source->path == whole : !FileExists(copy)) return copy;
        copy = OpenedDirectory() + "/" + name + Format("-%d.seq", number);
    }
    return copy;
}

// ---- copying

// Names the share that is done, and asks whether Escape was pressed.
class Progress {
  public:
    explicit Progress(const char* doing) : doing_(doing) {}
    bool GoesOn(std::int64_t frame, std::int64_t frames)
    {
        const std::int64_t percent = 100 * frame / frames;
        if (percent != std::exchange(told_, percent)) {
            StatusMessage(Format(" %s: %lld %%", doing_, static_cast<long long>(percent)), kLeftAligned);
        }
        return GatherGoesOn();
    }

  private:
    const char* doing_;
    std::int64_t told_ = -1;
};

struct Copied {
    bool isWhole = false;
    std::string why{};             // empty where it is whole, and where Escape stopped it
    bool isOfAnotherKind = false;  // the file holds what isn't opened
};
// The header and all frames.
Copied WriteFrames(ForeignFrames& frames, File& file)
{
    std::vector<std::int16_t> counts;
    if (!AllocateBlock(counts, frames.Pixels())) return {.why = "needs more memory than is left"};
    const std::span<const std::byte> header = std::as_bytes(std::span(&frames.Header(), 1));
    if (file.Write(header) != header.size()) return {.why = kRefused};
    Progress progress("Opening the frames");
    std::string why;
    for (std::int64_t frame = 0; frame < frames.Frames(); ++frame) {
        if (!progress.GoesOn(frame, frames.Frames())) return {};
        if (!frames.ReadCounts(frame, counts, why)) return {.why = why};
        const std::span<const std::byte> bytes = std::as_bytes(std::span(counts));
        if (file.Write(bytes) != bytes.size()) return {.why = kRefused};
    }
    return {.isWhole = true};
}

Copied Copy(std::string_view path, ForeignKind kind, const std::string& copy)
{
    const Gather gather(true);
    CopySource source{
        .path = WholePathOf(path), .bytes = LengthOf(path), .modified = FileModificationTime(path).value_or(0)};
    Progress looking("Looking through the frames");
    std::string why;
    std::optional<ForeignFrames> frames = ForeignFrames::Open(
        path, kind, why, [&looking](std::int64_t frame, std::int64_t count) { return looking.GoesOn(frame, count); });
    if (!frames && GatherWasStopped()) return {};
    if (!frames) return {.why = why, .isOfAnotherKind = FileExists(path)};
    source.changes = frames->Changes();

    if (!MakeDirectories(OpenedDirectory())) return {.why = kRefused};
    std::optional<NewFile> file = NewFile::Begin(copy);
    if (!file) return {.why = kRefused};
    Copied copied = WriteFrames(*frames, file->Contents());
    if (!copied.isWhole) return copied;
    source.copyBytes = file->Contents().Length();
    // Before the copy takes its name: one that nobody tells of is made anew, a false tale would be believed.
    DeleteFileNamed(SourcePathOf(copy));
    if (!file->Keep()) return {.why = kRefused};
    if (ReplaceFile(SourcePathOf(copy), TextOf(source))) return copied;
    DeleteFileNamed(copy);
    return {.why = kRefused};
}

void TellWhyNot(std::string_view path, const Copied& copied)
{
    constexpr const char* kWhatOpens =
        "\n\nOf other programs Kelvo opens TIFF, FITS and NumPy's .npy with frames of one plane of 16-bit integers.";
    const char* const hint = copied.isOfAnotherKind ? kWhatOpens : "";
    MessageBox(hWndMain, FileNameOf(path) + " " + copied.why + "." + hint, kMessageCaption);
}

}  // namespace

std::optional<std::string> FileToShow(std::string_view path)
{
    const std::optional<ForeignKind> kind = ForeignKindOf(path);
    if (!kind) return std::string(path);
    const std::string copy = CopyOf(path);
    const std::optional<CopySource> source = ReadSource(copy);
    if (source && IsStillTrue(*source, path, copy)) return copy;

    const bool wasThere = DirectoryExists(OpenedDirectory());
    const Copied copied = Copy(path, *kind, copy);
    if (copied.isWhole) return copy;
    if (!wasThere) RemoveEmptyDirectory(OpenedDirectory());
    StatusString(kIdleHint, kLeftAligned);
    if (!copied.why.empty()) TellWhyNot(path, copied);
    return std::nullopt;
}

std::string OriginOf(std::string_view path)
{
    if (!path.starts_with(OpenedDirectory() + "/")) return {};
    const std::optional<CopySource> source = ReadSource(path);
    if (!source) return {};
    return "from " + source->path + (source->changes.empty() ? "" : ", " + source->changes);
}

}  // namespace kelvo
