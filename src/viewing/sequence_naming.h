// The rule by which a name typed for saving becomes the name of a sequence.
#pragma once

#include <string>
#include <string_view>

namespace kelvo {

// What the operator reads where a name won't do. User-written functions have words of their own.
struct SequenceNameRefusals {
    std::string_view digitsAlone = "A sequence name must contain at least\none numeric letter.";
    std::string_view tooLong = "A sequence name must be 7 or\nfewer characters long.";
};

// The name without drive, directory and extension, its digits at the end cut off; or the message that refuses it, for
// digits alone and for a stem of more than 7 characters.
struct SequenceStem {
    std::string stem;
    std::string_view refusal;
};
SequenceStem StemOfSequenceName(std::string_view name, const SequenceNameRefusals& refusals = {});

// Takes a path for saving a sequence into SeqFilePath. 1, or 0 after the refusal in a box under "Kelvo message".
int NameSequenceForSaving(std::string_view path, const SequenceNameRefusals& refusals = {});

}  // namespace kelvo
