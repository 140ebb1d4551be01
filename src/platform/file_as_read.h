// Whether a name still stands for the contents that were read from it, without reading them again: for what is asked
// for more often than it changes.
//
//     if (kept.file.IsStill(path)) return kept.contents;
//     kept.file = FileAsRead::Of(path);  // first: a change while it is read shows
//     kept.contents = Read(path);
#pragma once

#include <cstdint>
#include <string>

namespace kelvo {

// Paths are resolved ones (platform/files.h).
class FileAsRead {
  public:
    FileAsRead() = default;  // still none
    // As it stands now; that there is no file is something to be known too.
    static FileAsRead Of(const std::string& path);

    // Nothing has written, moved or replaced it. One that had changed within a tenth of a second before is never still
    // the same, for its next change might have borne the same time.
    bool IsStill(const std::string& path) const;

  private:
    struct Identity {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        std::int64_t bytes = -1;  // -1: no file
        std::int64_t modifiedNs = 0;
        std::int64_t changedNs = 0;  // by contents, name, owner or rights
        friend bool operator==(const Identity&, const Identity&) = default;
    };
    static Identity IdentityOf(const std::string& path);

    Identity identity_;
    bool isSettled_ = false;
};

}  // namespace kelvo
