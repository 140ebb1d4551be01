// "-" as the name of a file: the standard input of a command that reads one, the standard output of one that writes
// one. Frames are read and written at any place, which no stream allows, so that the bytes go through a file meanwhile.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

inline constexpr std::string_view kStreamName = "-";

// A file in a new directory of the place for such ($TMPDIR, otherwise /tmp), which goes with it. A kill leaves it.
class StreamFile {
  public:
    // Filled with all that the standard input gives: "standard-input". nullopt with the reason in why: the standard
    // input can't be read, the file can't be written, or the command was interrupted (batch/batch_end.h).
    static std::optional<StreamFile> OfInput(std::string& why);
    // Where the path is "-", OfInput: the file is held, and the path becomes its own. False where that can't be.
    static bool TakeInput(std::string& path, std::optional<StreamFile>& held, std::string& why);
    // For the standard output: not there yet, "standard-output" with that ending. nullopt with why: no directory can be
    // made.
    static std::optional<StreamFile> ForOutput(std::string_view ending, std::string& why);
    StreamFile(StreamFile&& other) noexcept;
    StreamFile& operator=(StreamFile&& other) noexcept;
    StreamFile(const StreamFile&) = delete;
    StreamFile& operator=(const StreamFile&) = delete;
    ~StreamFile();

    const std::string& Path() const { return path_; }
    // Gives its bytes to the standard output. False with why: that takes nothing, or the file can't be read.
    bool Deliver(std::string& why) const;

  private:
    StreamFile(std::string directory, std::string_view name);
    static std::optional<StreamFile> In(std::string_view name, std::string& why);

    std::string directory_;  // empty: another has taken it over
    std::string path_;
};

}  // namespace kelvo
