// Files and path names. Every name that the system opens goes through here, because settings and calibration sets
// written on old machines hold backslashes, drive letters and other letter case.
//
// A path is resolved like this: both separators count; a drive letter with a colon is dropped (it names nothing here);
// "c:\KELVO" at the front stands for DefaultDir; then each component is taken as it is written if it exists, otherwise
// the first entry that equals it without regard to ASCII case (in byte order), otherwise as written. This holds for
// writing too: a write to a name that exists in another case goes to that file. New names use the machine's own
// separator.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// The program's directory, which "c:\KELVO" stands for and in which platform.ini lies. Empty: the working directory.
void SetKelvoDirectory(const std::string& directory);
const std::string& KelvoDirectory();

std::string ResolvePath(std::string_view path);
// The same, whole from the root: it means the same file after a change of the working directory.
std::string AbsolutePath(std::string_view path);

enum class FileMode {
    kRead,       // must exist, must be a regular file: a directory or a device is refused
    kReadWrite,  // must exist; stays as long as it is
    kCreate,     // made, or cut to nothing
    kNew,        // made; must not exist
};

// An open file, closed with its owner. Sizes and positions are 64 bits. A call that fails changes nothing but errno.
class File {
  public:
    static std::optional<File> Open(std::string_view path, FileMode mode);
    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File();

    // Bytes read, fewer than asked for at the end of the file or on an error.
    std::size_t Read(std::span<std::byte> destination);
    // The same from a place, which leaves the position as it is. Several threads may read so at once.
    std::size_t ReadAt(std::int64_t position, std::span<std::byte> destination) const;
    // Bytes written, fewer than asked for on an error (a full disk).
    std::size_t Write(std::span<const std::byte> source);
    // Both, one behind the other, in one call where the system takes them so.
    std::size_t Write(std::span<const std::byte> front, std::span<const std::byte> back);
    bool Seek(std::int64_t position);  // from the start; false for a negative position
    std::int64_t Length() const;
    bool SetLength(std::int64_t bytes);  // cut, or made longer by zeros; false on an error. The position stays
    bool Close();                        // false if what was written may not have arrived
    bool Flush();                        // to the disk; false as for Close
    bool SyncData();                     // the same without the file's times
    // Takes it for this process as long as the file is open; a killed process holds nothing. False: another has it.
    // True where the file system knows no locks.
    bool Lock();
    bool IsNamed() const;  // a name leads to it: nobody has deleted it

  private:
    friend class NewFile;
    explicit File(int descriptor) : descriptor_(descriptor) {}
    int descriptor_ = -1;
};

// A file in the making. It is written beside its name (links followed) and takes its place as a whole when it is kept;
// until then, and wherever it is dropped, what stood under the name stays. A file that is replaced hands on its
// permissions. A device that takes bytes is written as it is.
class NewFile {
  public:
    // nullopt where the name can't be written: what stands there may not be replaced, or the directory takes no file.
    static std::optional<NewFile> Begin(std::string_view path);
    // The name beside path under which its next contents are written; what was left there is cut to nothing then.
    static std::string NameBeside(std::string_view path);
    NewFile(NewFile&& other) noexcept;
    NewFile& operator=(NewFile&& other) noexcept;
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();  // drops what wasn't kept

    File& Contents() { return contents_; }
    // Flushed to the disk and renamed. False: what was written is gone, the name as it was.
    bool Keep();
    // What was written so far stays beside the name, under the one that is returned: until the next file in the making
    // for the same name, which takes it again. Empty for a device.
    std::string LeaveBeside();

  private:
    NewFile(File contents, std::string name, std::string target);
    File contents_;
    std::string name_;  // empty: kept, dropped or a device
    std::string target_;
};

// Why no new file can take a name, before one begins: "PATH is a directory", or unless it may be replaced "PATH stands
// already". nullopt: one can.
std::optional<std::string> WhyNoNewFile(const std::string& path, bool mayReplace);

bool FileExists(std::string_view path);  // a regular file
bool DirectoryExists(std::string_view path);
bool NameIsTaken(std::string_view path);      // by anything, a device or a pipe too; links are followed
bool MakeDirectories(std::string_view path);  // true if it stands at the end
bool DeleteFileNamed(std::string_view path);
bool CopyFileTo(std::string_view from, std::string_view to, bool failIfExists);
// Renames: to is replaced as a whole, with no space taken on the disk. Both lie in one file system. On failure false,
// and both stay as they were.
bool MoveFileTo(std::string_view from, std::string_view to);
std::optional<std::time_t> FileModificationTime(std::string_view path);

// The whole file; nullopt if it can't be opened or read, or is longer than limit (errno EFBIG).
std::optional<std::string> ReadWholeFile(std::string_view path, std::size_t limit);
// All or nothing: written beside the target (links followed), flushed to the disk, renamed over it. The target keeps
// its permissions. On failure false, and the target stays as it was.
bool ReplaceFile(std::string_view path, std::string_view contents);

// Lines of a text file as C's fgets with a buffer of limit + 1 bytes gives them: at most limit characters each, the
// newline included; a longer line comes in pieces. CR LF counts as one newline.
class LineReader {
  public:
    LineReader(std::string contents, std::size_t limit) : contents_(std::move(contents)), limit_(limit) {}
    // The next line with its newline, if it had one; nullopt at the end.
    std::optional<std::string> Next();
    bool AtEnd() const { return atEnd_; }  // as feof: set once a read has met the end

  private:
    std::string contents_;
    std::size_t limit_ = 0;
    std::size_t position_ = 0;
    bool atEnd_ = false;
};

}  // namespace kelvo
