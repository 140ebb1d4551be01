// A calibration set that a command makes: its files take their names together at the end, the .cal last, or none of
// them does. Whatever stands under one of the names is left alone.
#pragma once

#include "platform/files.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

class NewSet {
  public:
    // nullopt with why, a sentence that begins with a path: calPath doesn't end in .cal, a file of the set stands
    // already, or none can be made there.
    static std::optional<NewSet> Begin(const std::string& calPath, std::string& why);

    // A file of the set, by its extension (calib/last_set.h), in the order of kSetExtensions. The reason where the disk
    // refused.
    std::optional<std::string> Add(std::string_view extension, std::string_view contents);
    // The files take their names. The reason where the disk refused: none stands then.
    std::optional<std::string> End();

  private:
    explicit NewSet(std::string calPath) : calPath_(std::move(calPath)) {}

    std::string calPath_;
    std::vector<std::pair<std::string, NewFile>> files_;
};

}  // namespace kelvo
