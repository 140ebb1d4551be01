// Recordings for tests, made byte by byte: each frame 4 x 2 counts of one value.
#pragma once

#include "imagefile/frames_file.h"
#include "support/stored_files.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

constexpr int kTestColumns = 4;
constexpr int kTestRows = 2;

inline std::vector<std::int16_t> FrameOfValue(int value)
{
    return std::vector<std::int16_t>(std::size_t{kTestColumns} * kTestRows, static_cast<std::int16_t>(value));
}

// A raw sequence without a journal; its header tells no rate.
inline void PutRecording(const std::string& path, const std::vector<int>& values)
{
    std::vector<std::vector<std::int16_t>> frames;
    frames.reserve(values.size());
    for (const int value : values) frames.push_back(FrameOfValue(value));
    WriteImageFile(path, PlainHeader(kTestColumns, kTestRows), frames);
}

// The same as a NumPy file of such a type ("<i2", "<u2"), whose header has 128 bytes.
inline void PutNpy(const std::string& path, const std::string& type, const std::vector<int>& values)
{
    constexpr std::size_t kTextBytes = 118;
    std::string text =
        "{'descr': '" + type + "', 'fortran_order': False, 'shape': (" + std::to_string(values.size()) + ", 2, 4), }";
    text.resize(kTextBytes - 1, ' ');
    text += '\n';
    std::string samples;
    for (const int value : values) samples += SampleBytes(FrameOfValue(value));
    PutFile(path, std::string("\x93NUMPY\x01\x00", 8) + static_cast<char>(kTextBytes) + '\0' + text + samples);
}

// A journal for it: records as they are given, sealed.
inline void PutJournal(const std::string& path, const std::vector<FrameRecord>& records, std::string_view pixels)
{
    FramesHead head;
    head.columns = kTestColumns;
    head.rows = kTestRows;
    head.pixelBytes = kTestColumns * kTestRows * 2;
    head.SetText(frames_key::kPixels, pixels);
    std::vector<FrameRecord> sealed;
    sealed.reserve(records.size());
    for (const FrameRecord& record : records) sealed.push_back(Sealed(record));
    const std::vector<std::byte> bytes = FramesFileBytes(head, sealed, std::nullopt);
    PutFile(FramesPathOf(path), std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

}  // namespace kelvo
