// Files of regions, NAME.regions: JSON with names, shapes and places, for other frames and other starts, written down
// in docs/formats.md. They are read and written whole or not at all.
#pragma once

#include "regions/region.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

constexpr std::int32_t kRegionsFileVersion = 1;

struct RegionsFile {
    std::int32_t columns = 0;  // of the frame that they were drawn over; 0 x 0: none was on view
    std::int32_t rows = 0;
    std::vector<Region> regions{};  // their numbers are 0
    friend bool operator==(const RegionsFile&, const RegionsFile&) = default;
};

// nullopt with the reason in why: "line 3: unterminated string", "region 2: unknown shape \"circle\"". What is read
// are regions that the view takes (SetRegions).
std::optional<RegionsFile> RegionsOfText(std::string_view text, std::string& why);
// Lines end with a line feed; one region stands on each. It is read back as it was.
std::string TextOfRegions(const RegionsFile& file);

// The reason names the file. A file above 1 MB is none of ours.
std::optional<RegionsFile> ReadRegionsFile(const std::string& path, std::string& why);
bool WriteRegionsFile(const std::string& path, const RegionsFile& file,
                      std::string& why);  // replaces what stands there

// What somebody names on a command line: "FILE.regions", all of that file, or "FILE.regions:NAME", the one of that
// name. The last ".regions:" divides, so that a name may hold colons; a file that is called so as a whole is meant
// first. nullopt with the reason in why, a sentence on one line: the file can't be read, or holds no such region.
struct NamedRegions {
    std::vector<Region> regions{};
    bool areAll = false;  // no name was given
};
std::optional<NamedRegions> ReadNamedRegions(const std::string& text, std::string& why);

// The view's regions with the size of the frame on view.
RegionsFile RegionsOnView();

// The regions of the view across starts, in view.regions of the data directory. A file there that can't be read is set
// aside as view.regions.bad and told in a box; the program starts without regions then.
std::string KeptRegionsPath();
void LoadKeptRegions();
// Writes them where they have changed since they were last written or read. What can't be written is told once in a box
// and tried again the next time.
void KeepRegions();
// Of the main window: KeepRegions is called a second after a change.
inline constexpr std::uint32_t kKeepRegionsTimer = 26;
inline constexpr std::int64_t kKeepRegionsMs = 1000;

void ResetKeptRegions();

}  // namespace kelvo
