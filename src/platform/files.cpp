#include "platform/files.h"

#include "platform/clock.h"
#include "platform/faults.h"
#include "platform/text.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <utility>

namespace kelvo {

namespace {

constexpr std::string_view kProgramDirectory = "c:/kelvo";
constexpr std::size_t kCopyBlock = std::size_t{1} << 16;
constexpr mode_t kNewFileMode = 0666;

std::string kelvoDirectory;

// ---- names

std::string WithOwnSeparators(std::string_view path)
{
    std::string result(path);
    std::replace(result.begin(), result.end(), '\\', '/');
    return result;
}

// The path behind "c:/KELVO", or nullopt where the path doesn't start there.
std::optional<std::string_view> InProgramDirectory(std::string_view path)
{
    if (!EqualIgnoringCase(path.substr(0, kProgramDirectory.size()), kProgramDirectory)) return std::nullopt;
    path.remove_prefix(kProgramDirectory.size());
    if (!path.empty() && path.front() != '/') return std::nullopt;
    return path;
}

std::string_view WithoutDrive(std::string_view path)
{
    std::string drive;
    SplitPath(path, &drive, nullptr, nullptr, nullptr);
    return path.substr(drive.size());
}

// In the machine's own form, before letter case is looked at.
std::string OwnForm(std::string_view path)
{
    const std::string separated = WithOwnSeparators(path);
    const auto inside = InProgramDirectory(separated);
    if (!inside) return std::string(WithoutDrive(separated));
    if (kelvoDirectory.empty()) return std::string(".").append(*inside);
    return std::string(WithoutDrive(kelvoDirectory)).append(*inside);
}

bool Stands(const std::string& path)
{
    struct stat status {};
    return lstat(path.c_str(), &status) == 0;
}

using Directory = std::unique_ptr<DIR, decltype([](DIR* directory) { closedir(directory); })>;

// The name of a directory's entry: as wanted if it stands, otherwise the first in byte order that equals it without
// regard to case; nullopt if there is none. An empty directory is the working one.
std::optional<std::string> ActualName(const std::string& directoryPath, std::string_view wanted)
{
    if (Stands((directoryPath.empty() ? "." : directoryPath) + '/' + std::string(wanted))) return std::string(wanted);
    const Directory directory(opendir(directoryPath.empty() ? "." : directoryPath.c_str()));
    if (!directory) return std::nullopt;
    std::optional<std::string> found;
    while (const dirent* entry = readdir(directory.get())) {
        if (EqualIgnoringCase(entry->d_name, wanted) && (!found || *found > entry->d_name)) found = entry->d_name;
    }
    return found;
}

std::vector<std::string_view> Components(std::string_view path)
{
    std::vector<std::string_view> components;
    for (std::size_t at = 0; at < path.size();) {
        const std::size_t end = std::min(path.find('/', at), path.size());
        if (end > at) components.push_back(path.substr(at, end - at));
        at = end + 1;
    }
    return components;
}

// ---- descriptors

// Closes what it holds; keeps errno, which tells the caller why the file isn't to be had.
class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (number_ < 0) return;
        const int reason = errno;
        close(number_);
        errno = reason;
    }
    int Get() const { return number_; }
    int Release() { return std::exchange(number_, -1); }

  private:
    int number_;
};

bool Fail(int reason)
{
    errno = reason;
    return false;
}

bool IsRegular(const struct stat& status)
{
    return S_ISREG(status.st_mode);
}

// A disk that fails on demand: each step that changes what lies on it asks, and each that reads it.
bool DiskRefuses()
{
    return (FaultIsSet("disk") && !Fail(ENOSPC)) || (FaultIsSet("disk unplugged") && !Fail(EIO));
}
bool DiskIsUnreadable()
{
    return FaultIsSet("disk read") && !Fail(EIO);
}

// A new file may also be a device that takes bytes; everything else must be a regular file.
bool KindSuits(const struct stat& status, FileMode mode)
{
    if (IsRegular(status)) return true;
    if (S_ISDIR(status.st_mode)) return Fail(EISDIR);
    return (mode == FileMode::kCreate && S_ISCHR(status.st_mode)) || Fail(EINVAL);
}

int OpenFlags(FileMode mode)
{
    // Without O_NONBLOCK the opening of a pipe would wait for its other end.
    constexpr int kCommon = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    switch (mode) {
        case FileMode::kRead:
            return kCommon | O_RDONLY;
        case FileMode::kReadWrite:
            return kCommon | O_RDWR;
        case FileMode::kCreate:
            return kCommon | O_RDWR | O_CREAT;
        case FileMode::kNew:
            return kCommon | O_RDWR | O_CREAT | O_EXCL;
    }
    return kCommon;
}

constexpr std::int64_t kSlowWriteMs = 300;

// readOnce: the system's call for the rest. What it says of a broken-off call isn't told.
template <typename ReadOnce>
std::size_t ReadAll(std::span<std::byte> destination, ReadOnce readOnce)
{
    if (DiskIsUnreadable()) return 0;
    std::size_t done = 0;
    while (done < destination.size()) {
        const int before = errno;
        const ssize_t count = readOnce(destination.subspan(done));
        if (count < 0 && errno == EINTR) {
            errno = before;
            continue;
        }
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

std::size_t WriteAll(int descriptor, std::span<const std::byte> source)
{
    if (DiskRefuses()) return 0;
    if (FaultIsSet("slow disk")) DelayMs(kSlowWriteMs);
    if (FaultIsSet("disk full") && !Fail(ENOSPC)) source = source.first(source.size() / 2);
    std::size_t done = 0;
    while (done < source.size()) {
        const ssize_t count = ::write(descriptor, source.data() + done, source.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

// What a single call takes of two blocks; 0 where they have to go one by one.
std::size_t WriteTogether(int descriptor, std::span<const std::byte> front, std::span<const std::byte> back)
{
    if (FaultIsSet("slow disk")) DelayMs(kSlowWriteMs);
    // The system's record has no const; writing leaves the blocks alone.
    const auto block = [](std::span<const std::byte> bytes) {
        return iovec{const_cast<std::byte*>(bytes.data()), bytes.size()};
    };
    const std::array<iovec, 2> blocks = {block(front), block(back)};
    const ssize_t count = ::writev(descriptor, blocks.data(), static_cast<int>(blocks.size()));
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

bool FlushToDisk(int descriptor)
{
    return !DiskRefuses() && fsync(descriptor) == 0;
}

bool Rename(const std::string& from, const std::string& to)
{
    return !DiskRefuses() && rename(from.c_str(), to.c_str()) == 0;
}

std::optional<struct stat> StatusOf(std::string_view path)
{
    struct stat status {};
    if (stat(ResolvePath(path).c_str(), &status) != 0) return std::nullopt;
    return status;
}

// ---- replacing a file as a whole

std::string DirectoryOf(const std::string& path)
{
    const std::size_t separator = path.rfind('/');
    return separator == std::string::npos ? std::string() : path.substr(0, separator + 1);
}

// The file that a name means in the end, also where the last link points at nothing yet.
std::optional<std::string> BehindLinks(std::string path)
{
    constexpr int kMaxLinks = 40;
    for (int i = 0; i < kMaxLinks; ++i) {
        std::string target(4096, '\0');
        const ssize_t length = readlink(path.c_str(), target.data(), target.size());
        if (length < 0) return path;
        target.resize(static_cast<std::size_t>(length));
        if (!target.starts_with('/')) target.insert(0, DirectoryOf(path));
        path = std::move(target);
    }
    errno = ELOOP;
    return std::nullopt;
}

// The name under which a file's next contents are written: always the same, so that a process that was killed leaves
// at most one such file, which the next one uses again.
std::string NameOfNewContents(const std::string& target)
{
    constexpr std::size_t kMaxStem = 240;  // a name may have 255 bytes
    const std::string directory = DirectoryOf(target);
    return directory + '.' + target.substr(directory.size(), kMaxStem) + ".new";
}

bool IsStillNamed(int descriptor, const std::string& name)
{
    struct stat open {};
    struct stat named {};
    return fstat(descriptor, &open) == 0 && lstat(name.c_str(), &named) == 0 && open.st_ino == named.st_ino &&
           open.st_dev == named.st_dev;
}

// Opens the file for new contents for this process alone; another one may be writing the same settings. -1 on failure.
int OpenNewContents(const std::string& name)
{
    constexpr int kAttempts = 200;
    constexpr useconds_t kPauseUs = 5000;
    if (DiskRefuses()) return -1;
    for (int i = 0; i < kAttempts; ++i) {
        Descriptor file(open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kNewFileMode));
        struct stat status {};
        if (file.Get() < 0 || fstat(file.Get(), &status) != 0) return -1;
        if (!IsRegular(status)) {
            errno = EINVAL;
            return -1;
        }
        // Where the file system knows no locks, one process at a time is the operator's own care.
        const bool locked = flock(file.Get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
        if (locked && IsStillNamed(file.Get(), name)) return file.Release();
        if (!locked) usleep(kPauseUs);
    }
    errno = EBUSY;
    return -1;
}

mode_t ModeOfNewFiles()
{
    const mode_t mask = umask(0);
    umask(mask);
    return kNewFileMode & ~mask;
}

// Gives the new contents the target's owner and permissions. False where the target may not be replaced.
bool TakeOverIdentity(int descriptor, const std::string& target)
{
    struct stat status {};
    if (stat(target.c_str(), &status) != 0) {
        return errno == ENOENT && fchmod(descriptor, ModeOfNewFiles()) == 0;
    }
    if (!IsRegular(status)) return Fail(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    if (access(target.c_str(), W_OK) != 0) return false;
    // Only an administrator can give a file away; for all others it is theirs already.
    if (fchown(descriptor, status.st_uid, status.st_gid) != 0) errno = 0;  // kept by us, then
    return fchmod(descriptor, status.st_mode & 07777) == 0;
}

void FlushDirectory(const std::string& directory)
{
    const Descriptor descriptor(open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor.Get() >= 0) fsync(descriptor.Get());
}

// Writes beside the target what fill writes, and puts it in the target's place. fill: bool(int descriptor).
template <typename Fill>
bool ReplaceBy(std::string_view path, Fill fill)
{
    const auto target = BehindLinks(ResolvePath(path));
    if (!target) return false;
    if (target->empty()) return Fail(ENOENT);
    const std::string name = NameOfNewContents(*target);
    const Descriptor contents(OpenNewContents(name));
    if (contents.Get() < 0) return false;
    const bool ready = ftruncate(contents.Get(), 0) == 0 && TakeOverIdentity(contents.Get(), *target) &&
                       fill(contents.Get()) && FlushToDisk(contents.Get());
    if (!ready || !Rename(name, *target)) {
        const int reason = errno;
        unlink(name.c_str());
        return Fail(reason);
    }
    FlushDirectory(DirectoryOf(*target));
    return true;
}

}  // namespace

void SetKelvoDirectory(const std::string& directory)
{
    kelvoDirectory = WithOwnSeparators(directory);
    while (kelvoDirectory.size() > 1 && kelvoDirectory.ends_with('/')) kelvoDirectory.pop_back();
    // A root alone: the separator comes with what follows.
    if (kelvoDirectory == "/") kelvoDirectory = "/.";
}

const std::string& KelvoDirectory()
{
    return kelvoDirectory;
}

std::string AbsolutePath(std::string_view path)
{
    const std::string resolved = ResolvePath(path);
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::absolute(resolved, error);
    return error ? resolved : whole.string();
}

std::string ResolvePath(std::string_view path)
{
    // No file can have such a name, and a cut one would be another file.
    if (path.find('\0') != std::string_view::npos) return {};
    std::string wanted = OwnForm(path);
    if (wanted.size() >= PATH_MAX || Stands(wanted)) return wanted;

    const bool closed = wanted.ends_with('/');
    std::string resolved = wanted.starts_with('/') ? "/" : "";
    bool known = true;  // the directory so far exists
    for (const std::string_view component : Components(wanted)) {
        const auto name = known ? ActualName(resolved, component) : std::nullopt;
        known = name.has_value();
        if (!resolved.empty() && resolved.back() != '/') resolved += '/';
        resolved += name ? std::string_view(*name) : component;
    }
    if (closed && resolved != "/") resolved += '/';
    return resolved;
}

std::optional<File> File::Open(std::string_view path, FileMode mode)
{
    if (mode == FileMode::kRead ? DiskIsUnreadable() : DiskRefuses()) return std::nullopt;
    Descriptor descriptor(open(ResolvePath(path).c_str(), OpenFlags(mode), kNewFileMode));
    struct stat status {};
    if (descriptor.Get() < 0 || fstat(descriptor.Get(), &status) != 0 || !KindSuits(status, mode)) return std::nullopt;
    if (mode == FileMode::kCreate && IsRegular(status) && ftruncate(descriptor.Get(), 0) != 0) return std::nullopt;
    return File(descriptor.Release());
}

File::File(File&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

File& File::operator=(File&& other) noexcept
{
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

File::~File()
{
    const Descriptor closing(descriptor_);
}

std::size_t File::Read(std::span<std::byte> destination)
{
    return ReadAll(destination,
                   [this](std::span<std::byte> rest) { return read(descriptor_, rest.data(), rest.size()); });
}

std::size_t File::ReadAt(std::int64_t position, std::span<std::byte> destination) const
{
    const std::byte* const begin = destination.data();
    return ReadAll(destination, [&](std::span<std::byte> rest) {
        return pread(descriptor_, rest.data(), rest.size(), position + (rest.data() - begin));
    });
}

std::size_t File::Write(std::span<const std::byte> source)
{
    return WriteAll(descriptor_, source);
}

std::size_t File::Write(std::span<const std::byte> front, std::span<const std::byte> back)
{
    if (DiskRefuses()) return 0;
    if (FaultIsSet("disk full")) {
        const std::size_t taken = Write(front);
        return taken < front.size() ? taken : taken + Write(back);
    }
    std::size_t done = WriteTogether(descriptor_, front, back);
    if (done < front.size()) done += WriteAll(descriptor_, front.subspan(done));
    const std::size_t all = front.size() + back.size();
    if (done >= front.size() && done < all) done += WriteAll(descriptor_, back.subspan(done - front.size()));
    return done;
}

bool File::Seek(std::int64_t position)
{
    return lseek(descriptor_, position, SEEK_SET) >= 0;
}

std::int64_t File::Length() const
{
    struct stat status {};
    return fstat(descriptor_, &status) == 0 ? status.st_size : 0;
}

bool File::SetLength(std::int64_t bytes)
{
    return !DiskRefuses() && ftruncate(descriptor_, bytes) == 0;
}

bool File::Close()
{
    return close(std::exchange(descriptor_, -1)) == 0;
}

bool File::Flush()
{
    return FlushToDisk(descriptor_);
}

bool File::SyncData()
{
    return !DiskRefuses() && fdatasync(descriptor_) == 0;
}

bool File::Lock()
{
    return flock(descriptor_, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

bool File::IsNamed() const
{
    struct stat status {};
    return fstat(descriptor_, &status) == 0 && status.st_nlink > 0;
}

std::optional<NewFile> NewFile::Begin(std::string_view path)
{
    const auto target = BehindLinks(ResolvePath(path));
    if (!target) return std::nullopt;
    struct stat status {};
    if (stat(target->c_str(), &status) == 0 && S_ISCHR(status.st_mode)) {
        std::optional<File> device = File::Open(*target, FileMode::kCreate);
        if (!device) return std::nullopt;
        return NewFile(std::move(*device), {}, *target);
    }
    if (target->empty() || target->ends_with('/')) {
        errno = target->empty() ? ENOENT : EISDIR;
        return std::nullopt;
    }
    const std::string name = NameOfNewContents(*target);
    Descriptor contents(OpenNewContents(name));
    if (contents.Get() < 0) return std::nullopt;
    NewFile file(File(contents.Release()), name, *target);
    const int descriptor = file.contents_.descriptor_;
    if (ftruncate(descriptor, 0) != 0 || !TakeOverIdentity(descriptor, *target)) return std::nullopt;
    return file;
}

std::string NewFile::NameBeside(std::string_view path)
{
    const std::string resolved = ResolvePath(path);
    return NameOfNewContents(BehindLinks(resolved).value_or(resolved));
}

NewFile::NewFile(File contents, std::string name, std::string target)
    : contents_(std::move(contents)), name_(std::move(name)), target_(std::move(target))
{
}

NewFile::NewFile(NewFile&& other) noexcept
    : contents_(std::move(other.contents_)), name_(std::exchange(other.name_, {})), target_(std::move(other.target_))
{
}

NewFile& NewFile::operator=(NewFile&& other) noexcept
{
    std::swap(contents_, other.contents_);
    name_.swap(other.name_);
    target_.swap(other.target_);
    return *this;
}

NewFile::~NewFile()
{
    if (name_.empty()) return;
    const int reason = errno;
    unlink(name_.c_str());
    errno = reason;
}

bool NewFile::Keep()
{
    if (name_.empty()) return contents_.Close();
    if (!contents_.Flush() || !Rename(name_, target_)) return false;
    name_.clear();
    FlushDirectory(DirectoryOf(target_));
    return contents_.Close();
}

std::string NewFile::LeaveBeside()
{
    contents_.Close();
    return std::exchange(name_, {});
}

std::optional<std::string> WhyNoNewFile(const std::string& path, bool mayReplace)
{
    if (DirectoryExists(path)) return path + " is a directory";
    if (!mayReplace && FileExists(path)) return path + " stands already";
    return std::nullopt;
}

bool FileExists(std::string_view path)
{
    const auto status = StatusOf(path);
    return status && IsRegular(*status);
}

bool DirectoryExists(std::string_view path)
{
    const auto status = StatusOf(path);
    return status && S_ISDIR(status->st_mode);
}

bool NameIsTaken(std::string_view path)
{
    return StatusOf(path).has_value();
}

bool MakeDirectories(std::string_view path)
{
    std::error_code error;
    std::filesystem::create_directories(ResolvePath(path), error);
    return DirectoryExists(path);
}

bool DeleteFileNamed(std::string_view path)
{
    return !DiskRefuses() && unlink(ResolvePath(path).c_str()) == 0;
}

bool CopyFileTo(std::string_view from, std::string_view to, bool failIfExists)
{
    auto source = File::Open(from, FileMode::kRead);
    if (!source) return false;
    if (failIfExists && Stands(ResolvePath(to))) return Fail(EEXIST);
    return ReplaceBy(to, [&](int descriptor) {
        const std::int64_t length = source->Length();
        std::int64_t copied = 0;
        std::vector<std::byte> block(kCopyBlock);
        while (const std::size_t count = source->Read(block)) {
            if (WriteAll(descriptor, std::span(block).first(count)) != count) return false;
            copied += static_cast<std::int64_t>(count);
        }
        return copied >= length || Fail(EIO);  // a read error ends the loop as the end of the file does
    });
}

bool MoveFileTo(std::string_view from, std::string_view to)
{
    const std::string target = ResolvePath(to);
    if (!Rename(ResolvePath(from), target)) return false;
    FlushDirectory(DirectoryOf(target));
    return true;
}

std::optional<std::time_t> FileModificationTime(std::string_view path)
{
    const auto status = StatusOf(path);
    if (!status) return std::nullopt;
    return status->st_mtime;
}

std::optional<std::string> ReadWholeFile(std::string_view path, std::size_t limit)
{
    auto file = File::Open(path, FileMode::kRead);
    if (!file) return std::nullopt;
    const std::int64_t length = file->Length();
    if (length < 0 || static_cast<std::uint64_t>(length) > limit) {
        errno = EFBIG;
        return std::nullopt;
    }
    // Some files tell no length or grow while they are read: the loop, not the length, decides.
    std::string contents;
    std::vector<std::byte> block(std::clamp<std::size_t>(static_cast<std::size_t>(length) + 1, 4096, 1 << 20));
    errno = 0;
    while (const std::size_t count = file->Read(block)) {
        if (count > limit - contents.size()) {
            errno = EFBIG;
            return std::nullopt;
        }
        contents.append(reinterpret_cast<const char*>(block.data()), count);
    }
    if (errno != 0) return std::nullopt;
    return contents;
}

bool ReplaceFile(std::string_view path, std::string_view contents)
{
    return ReplaceBy(path, [&](int descriptor) {
        return WriteAll(descriptor, std::as_bytes(std::span(contents))) == contents.size();
    });
}

std::optional<std::string> LineReader::Next()
{
    std::string line;
    const std::size_t limit = std::max<std::size_t>(limit_, 1);
    while (line.size() < limit) {
        if (position_ >= contents_.size()) {
            atEnd_ = true;
            break;
        }
        if (contents_.compare(position_, 2, "\r\n") == 0) ++position_;
        line += contents_[position_++];
        if (line.back() == '\n') break;
    }
    if (line.empty()) return std::nullopt;
    return line;
}

}  // namespace kelvo
