#include "record/sequence_library.h"

#include "platform/profile.h"
#include "platform/text.h"
#include "record/sequence_library_write.h"
#include "state/state_registry.h"
#include "state/windows.h"

#include <algorithm>
#include <limits>

namespace kelvo {

namespace {

constexpr std::string_view kSection = "Sequences";

std::string SequenceKey(std::size_t index)
{
    return Format("SeqName%d", static_cast<int>(index));
}

std::string SubSequenceKey(std::size_t index)
{
    return Format("SubSeqName%c", static_cast<char>('A' + index));
}

SequenceLibraryVariables FreshLibrary()
{
    SequenceLibraryVariables fresh;
    for (std::size_t i = 0; i < kSubSequences; ++i)
        fresh.SubSeqList[i].Name = std::string(1, static_cast<char>('A' + i));
    for (std::size_t i = 0; i < kSequences; ++i) fresh.SeqList[i].Name = SequenceKey(i);
    return fresh;
}

}  // namespace

namespace write {
SequenceLibraryVariables sequences = FreshLibrary();
}

constinit const std::array<SubSeqRecord, kSubSequences>& SubSeqList = write::sequences.SubSeqList;
constinit const std::array<SeqRecord, kSequences>& SeqList = write::sequences.SeqList;
constinit const std::int32_t& SubSeqNum = write::sequences.SubSeqNum;
constinit const std::int32_t& SeqNum = write::sequences.SeqNum;

namespace {

std::string NumbersOf(const SubSeqRecord& record)
{
    return Format("%d %d %d", record.Frames, record.Skip, record.Trigger);
}

std::string AllSubSequences()
{
    std::string text;
    for (const SubSeqRecord& record : SubSeqList) text += record.Name + " " + NumbersOf(record) + "\n";
    return text;
}

std::string AllSequences()
{
    std::string text;
    for (const SeqRecord& record : SeqList) text += Format("%s %d\n", record.Composition.c_str(), record.TotalFrames);
    return text;
}

const StateNames kStateNames{
    Named("SubSeqNum", SubSeqNum),
    Named("SeqNum", SeqNum),
    {"SubSeqList", [] { return StateValue{AllSubSequences()}; }},
    {"SeqList", [] { return StateValue{AllSequences()}; }},
};

// Up to the first blank.
std::string_view FirstWord(std::string_view text)
{
    text = Trimmed(text);
    return text.substr(0, text.find_first_of(" \t"));
}

std::string_view BehindFirstWord(std::string_view text)
{
    text = Trimmed(text);
    return text.substr(FirstWord(text).size());
}

// The numbers as far as they stand; those that are missing are 0.
void ReadNumbers(std::string_view text, SubSeqRecord& record)
{
    for (std::int32_t* number : {&record.Frames, &record.Skip, &record.Trigger}) {
        *number = ScanDecimal(text).value_or(0);
        text = BehindFirstWord(text);
    }
}

std::int32_t IndexFromFile(std::string_view key, std::size_t count)
{
    const std::int32_t index = GetPrivateProfileInt(kSection, key, 0, BuffBrdFilePath);
    return index >= 0 && index < static_cast<std::int32_t>(count) ? index : 0;
}

std::int32_t Limited(std::int64_t frames)
{
    return static_cast<std::int32_t>(std::min<std::int64_t>(frames, std::numeric_limits<std::int32_t>::max()));
}

bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}

}  // namespace

int ReadSequences()
{
    SequenceLibraryVariables& library = write::sequences;
    if (library.read) return 1;
    library.SeqNum = IndexFromFile("SeqNum", kSequences);
    for (std::size_t i = 0; i < kSequences; ++i) {
        const std::string text = GetPrivateProfileString(kSection, SequenceKey(i), "A", BuffBrdFilePath);
        library.SeqList[i].Composition = FirstWord(text).substr(0, kLongestComposition);
    }
    library.SubSeqNum = IndexFromFile("SubSeqNum", kSubSequences);
    for (std::size_t i = 0; i < kSubSequences; ++i) {
        ReadNumbers(GetPrivateProfileString(kSection, SubSequenceKey(i), "1 0 0", BuffBrdFilePath),
                    library.SubSeqList[i]);
    }
    for (SeqRecord& record : library.SeqList) {
        record.TotalFrames = FramesOfComposition(record.Composition, SubSeqList);
    }
    library.read = true;
    return 1;
}

int WriteSequences()
{
    const auto put = [](std::string_view key, std::string_view value) {
        WritePrivateProfileString(kSection, key, value, BuffBrdFilePath);
    };
    put("SeqNum", Format("%d", SeqNum));
    for (std::size_t i = 0; i < kSequences; ++i) put(SequenceKey(i), SeqList[i].Composition);
    put("SubSeqNum", Format("%d", SubSeqNum));
    for (std::size_t i = 0; i < kSubSequences; ++i) put(SubSequenceKey(i), NumbersOf(SubSeqList[i]));
    return 1;
}

std::optional<std::size_t> SubSequenceOf(char letter)
{
    if (letter >= 'A' && letter <= 'Z') return static_cast<std::size_t>(letter - 'A');
    if (letter >= 'a' && letter <= 'z') return static_cast<std::size_t>(letter - 'a');
    return std::nullopt;
}

std::int32_t FramesOfComposition(std::string_view composition, std::span<const SubSeqRecord> list)
{
    std::int64_t frames = 0;
    for (const char letter : composition) {
        for (const SubSeqRecord& record : list) {
            if (record.Name == std::string_view(&letter, 1)) frames += std::max(record.Frames, 0);
        }
    }
    return Limited(frames);
}

void CountAllSequences()
{
    constexpr std::int32_t kAnyNumber = std::numeric_limits<std::int32_t>::max();
    for (SeqRecord& record : write::sequences.SeqList) {
        std::string whole = record.Composition;
        record.TotalFrames = FitComposition(whole, SubSeqList, kAnyNumber).frames;
    }
}

FittedSequence FitComposition(std::string& composition, std::span<const SubSeqRecord> list, std::int32_t capacity)
{
    std::int64_t frames = 0;
    for (std::size_t i = 0; i < composition.size(); ++i) {
        const std::optional<std::size_t> index = SubSequenceOf(composition[i]);
        if (!index || *index >= list.size()) continue;
        const std::int64_t with = frames + std::max(list[*index].Frames, 0);
        if (with > capacity) {
            composition.resize(i);
            return {Limited(frames), true};
        }
        frames = with;
    }
    return {Limited(frames), false};
}

TypedComposition TakeComposition(std::string_view typed)
{
    TypedComposition taken{.composition = UpperAscii(typed.substr(0, kLongestComposition))};
    taken.hadDigits = std::erase_if(taken.composition, IsDigit) > 0;
    return taken;
}

std::int32_t PickedTrigger(std::int32_t before, std::int32_t row)
{
    if (row != kTriggerInFirst) return row;
    if (before == kTriggerInAll) return kTriggerNone;
    if (before == kTriggerNone) return kTriggerInAll;
    return kTriggerInFirst;
}

void ResetSequenceLibrary()
{
    write::sequences = FreshLibrary();
}

}  // namespace kelvo
