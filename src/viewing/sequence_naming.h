// The rule by which a name typed for saving becomes the name of a sequence.
#pragma once

#include <string>
#include <string_view>

namespace kelvo {

// The name without drive, directory and extension, its digits at the end cut off; or the message that refuses it: "A
// sequence name must contain at least\none numeric letter." for digits alone, "A sequence name must be 7 or\nfewer
// characters long." for a longer stem.
struct SequenceStem {
    std::string stem;
    std::string_view refusal;
};
SequenceStem StemOfSequenceName(std::string_view name);

// Takes a path for saving a sequence into SeqFilePath. 1, or 0 after the refusal in a box under "Kelvo message".
int NameSequenceForSaving(std::string_view path);

}  // namespace kelvo
