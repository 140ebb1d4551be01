// A sequence that a command makes, with its journal: whole under its name at the end, or not at all. Whatever stands
// under the name is left alone, also where another process was quicker.
#pragma once

#include "platform/files.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace kelvo {

class NewSequence {
  public:
    // nullopt with why, a sentence that begins with the path: it or its journal stands already, it is a directory, or
    // none can be made there.
    static std::optional<NewSequence> Begin(const std::string& path, std::string& why);

    // What comes next of header and frames. The reason where the disk refused: "x.seq can't be written: No space left
    // on device".
    std::optional<std::string> Write(std::span<const std::byte> bytes);
    // The sequence takes its name, and before it its journal, so that a sequence that stands has its own. Without one
    // where journal is empty. The reason where the disk refused: neither stands then.
    std::optional<std::string> End(std::span<const std::byte> journal);

  private:
    NewSequence(NewFile file, std::string path) : file_(std::move(file)), path_(std::move(path)) {}
    std::string Refused() const;  // by what errno says

    NewFile file_;
    std::string path_;
};

}  // namespace kelvo
