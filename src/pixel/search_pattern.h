// The order in which a bad pixel's neighbours are tried: a .prs file. Its first line is a header; each later line is
// one step, "row,column" from the bad pixel, and the first step that leads to a usable neighbour wins. Lines that hold
// no pair are passed over.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

struct SearchPattern {
    std::vector<std::int32_t> columns;  // as many as rows
    std::vector<std::int32_t> rows;
};

// The steps of a file, in order; a plain name that isn't in the current directory is looked for in DefaultDir. nullopt
// after a box:
//   "ReplaceBadDet(): Unable to open pixel replacement (.prs) file." under "File Error" (also for a file above 1 MB);
//   "ReplaceBadDet(): Unable to allocate global memory for search column." or "... row." under "Memory Allocation
//   Error";
//   "Unable to open DetectorReplacementFile." where it has gone between counting the steps and reading them.
std::optional<SearchPattern> ReadSearchPattern(const std::string& file);

}  // namespace kelvo
