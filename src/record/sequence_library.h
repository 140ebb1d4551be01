// The library of bursts: 26 subsequences A to Z, each a number of frames with frames skipped between them, and ten
// sequences, each a string of the subsequences' letters. Section Sequences of buffbrd.ini keeps it.
//
// In a composition capitals name subsequences, wherever they stand; blanks and whatever else is no letter count for
// nothing. Digits are no letters. A negative number of frames or skips, as a file may have it, counts as 0.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

inline constexpr std::size_t kSubSequences = 26;
inline constexpr std::size_t kSequences = 10;
inline constexpr std::size_t kLongestComposition = 11;  // characters; of a longer one in the file the first ones count
inline constexpr std::int32_t kMostSkip = 16383;

// What a subsequence would wait for or give at its frames. It is kept, shown and looked at before a burst goes on with
// a later subsequence; nothing waits for it.
enum Trigger : std::int32_t {
    kTriggerNone = 0,
    kTriggerInFirst = 1,
    kTriggerInAll = 2,
    kTriggerOutFirst = 3,
};
inline constexpr std::array<std::string_view, 9> kTriggerNames = {
    "None",           "InFirst",        "InAll",        "OutFirst", "OutAll", "InFirst/OutFirst",
    "InAll/OutFirst", "InFirst/OutAll", "InAll/OutAll",
};

struct SubSeqRecord {
    std::string Name;         // its letter
    std::int32_t Frames = 1;  // to store
    std::int32_t Skip = 0;    // frames passed over between two that are stored
    std::int32_t Trigger = 0;
    friend bool operator==(const SubSeqRecord&, const SubSeqRecord&) = default;
};

struct SeqRecord {
    std::string Name;  // "SeqName0": its key
    std::string Composition = "A";
    std::int32_t TotalFrames = 0;
    friend bool operator==(const SeqRecord&, const SeqRecord&) = default;
};

extern const std::array<SubSeqRecord, kSubSequences>& SubSeqList;
extern const std::array<SeqRecord, kSequences>& SeqList;
extern const std::int32_t& SubSeqNum;  // on view in the dialog: 0 to 25
extern const std::int32_t& SeqNum;     // 0 to 9

// The library from the file, once a run: later calls leave it as it is. Numbers outside their lists become 0. 1.
int ReadSequences();
// Into the file. 1.
int WriteSequences();

// The subsequence that a letter of either case names; nullopt for any other character.
std::optional<std::size_t> SubSequenceOf(char letter);

// Frames that a sequence of the file stores, capitals alone counted: ReadSequences has them in SeqList.
std::int32_t FramesOfComposition(std::string_view composition, std::span<const SubSeqRecord> list);
// Those of all ten into SeqList, letters of either case, as a burst takes them.
void CountAllSequences();

// Frames that a composition stores, letters of either case. Where they are more than capacity it is cut before the
// letter that goes beyond, and they are those without it.
struct FittedSequence {
    std::int32_t frames = 0;
    bool cut = false;
};
FittedSequence FitComposition(std::string& composition, std::span<const SubSeqRecord> list, std::int32_t capacity);

// What an operator typed as a composition: at most 11 characters, in capitals, without digits.
struct TypedComposition {
    std::string composition;
    bool hadDigits = false;
};
TypedComposition TakeComposition(std::string_view typed);

// The trigger after a row of the list was picked: the row; but "InFirst" takes "InAll" off or puts it on where there
// was none.
std::int32_t PickedTrigger(std::int32_t before, std::int32_t row);

// The values of the start, nothing read.
void ResetSequenceLibrary();

}  // namespace kelvo
