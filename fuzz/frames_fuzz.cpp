// The journal of a recorded sequence: read, its gaps told, put together again; and repaired beside a sequence.
#include "imagefile/frames_file.h"
#include "imagefile/header.h"
#include "imagefile/recovery.h"
#include "reset/reset.h"
#include "temp_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

constexpr std::int64_t kFrames = 3;

template <typename Record>
void Add(std::vector<std::uint8_t>& bytes, const Record& record)
{
    const auto* const first = reinterpret_cast<const std::uint8_t*>(&record);
    bytes.insert(bytes.end(), first, first + sizeof record);
}

// Three frames of 3 x 2, of which the corpus tells: frame n holds 10 n + place.
std::vector<std::uint8_t> Sequence()
{
    kelvo::ImageHeaderRecord header;
    header.ByteSwap = 0xFFFF;
    header.ImageWidth = 3;
    header.ImageHeight = 2;
    header.SampleBytes = 2;
    header.HeaderVersion = 8;
    header.FrameCount = kFrames;
    header.ImageHeaderDataOffset = 80;
    std::vector<std::uint8_t> sequence;
    Add(sequence, header);
    for (const std::int16_t number : {std::int16_t{1}, std::int16_t{2}, std::int16_t{5}}) {
        kelvo::FrameHeaderRecord before;
        before.AllFramesNum = number;
        Add(sequence, before);
        for (std::int16_t place = 0; place < 6; ++place) Add(sequence, static_cast<std::int16_t>(10 * number + place));
    }
    return sequence;
}

// Whatever stands in the journal: the sequence keeps its frames, and what was repaired is clean.
void Repair(const std::uint8_t* data, std::size_t size)
{
    static const std::vector<std::uint8_t> kSequence = Sequence();
    static kelvo::FuzzFile input;
    const std::string& path = input.Put(kSequence.data(), kSequence.size());
    input.PutBeside(".frames", data, size);
    const kelvo::RecoveryReport report = kelvo::RecoverSequence(path, false);
    if (report.outcome == kelvo::Recovery::kFailed) return;  // bad checksums, or of another sequence
    if (report.frames != kFrames || report.gaps.size() > 2) __builtin_trap();
    if (kelvo::RecoverSequence(path, true).outcome != kelvo::Recovery::kClean) __builtin_trap();
    if (kelvo::ReadFramesFile(path + ".frames").records.size() != kFrames) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kelvo::ResetModules();
    Repair(data, size);
    static kelvo::FuzzFile input;
    const std::string& path = input.Put(data, size);
    const kelvo::FramesFile file = kelvo::ReadFramesFile(path);
    const kelvo::FramesFile salvaged = kelvo::SalvageFramesFile(path);
    if (salvaged.fault != file.fault || salvaged.records.size() < file.records.size()) __builtin_trap();
    if (!std::equal(file.records.begin(), file.records.end(), salvaged.records.begin())) __builtin_trap();
    if (salvaged.records.size() * sizeof(kelvo::FrameRecord) > size) __builtin_trap();
    if (file.fault != kelvo::FramesFault::kNone) return 0;
    if (file.records.size() * sizeof(kelvo::FrameRecord) > size) __builtin_trap();
    kelvo::FramesFile half = file;
    half.closing.reset();
    kelvo::ReadOn(path, static_cast<std::int64_t>(file.records.size() / 2), half);
    if (half.records != file.records || half.closing != file.closing) __builtin_trap();
    const std::vector<kelvo::FrameGap> gaps = kelvo::GapsOf(file.records);
    if (gaps.size() > file.records.size()) __builtin_trap();
    const std::vector<std::byte> again = kelvo::FramesFileBytes(file.head, file.records, file.closing);
    static kelvo::FuzzFile second;
    const kelvo::FramesFile copy =
        kelvo::ReadFramesFile(second.Put(reinterpret_cast<const std::uint8_t*>(again.data()), again.size()));
    if (copy.head != file.head || copy.records != file.records || copy.closing != file.closing) __builtin_trap();
    return 0;
}
