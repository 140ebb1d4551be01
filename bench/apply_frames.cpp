// What apply_bench.py needs of Kelvo beside the program itself:
//
//   apply_frames make DIRECTORY FRAMES     raw.seq with its journal, and the calibration set warm.cal
//   apply_frames correct DIRECTORY ROUNDS  the median of the microseconds that the correction of a frame takes, in
//   memory
//
// The frames are 640 x 512 through four channels, with 1 % substituted detectors.
#include "calib/set_reader.h"
#include "calib/stored_correction.h"
#include "imagefile/recorded_sequence.h"
#include "median.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace kelvo;

constexpr std::int16_t kWidth = 640;
constexpr std::int16_t kHeight = 512;
constexpr std::size_t kPixels = std::size_t{640} * 512;

StoredLists MakeLists()
{
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0, 1);
    StoredLists lists;
    for (std::size_t i = 0; i < kPixels; ++i) {
        const std::size_t column = i % kWidth;
        lists.decom.push_back(
            static_cast<std::uint32_t>(i - column + column % (kWidth / 4) * 4 + column / (kWidth / 4)));
        lists.offset.push_back(static_cast<std::int16_t>(300 + 95 * noise(random)));
        lists.gain.push_back(1 + 0.012F * noise(random));
    }
    for (std::size_t k = 0; k < kPixels / 100; ++k) {
        const std::size_t bad = random() % (kPixels - 1);
        lists.decom[bad] = lists.decom[bad + 1];
    }
    return lists;
}

std::vector<std::int16_t> MakeFrame(std::uint32_t seed)
{
    std::mt19937 random(seed);
    std::vector<std::int16_t> frame(kPixels);
    for (std::int16_t& count : frame) count = static_cast<std::int16_t>(4000 + random() % 8192);
    return frame;
}

template <typename Entry>
void Put(const std::string& path, const std::vector<Entry>& list)
{
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(list.data()), static_cast<std::streamsize>(list.size() * sizeof(Entry)));
}

void MakeSet(const std::string& directory)
{
    const StoredLists lists = MakeLists();
    Put(directory + "/warm.dcm", lists.decom);
    Put(directory + "/warm.off", lists.offset);
    Put(directory + "/warm.gai", lists.gain);
    std::ofstream(directory + "/warm.cal")
        << "[Calibration]\nCalType=2\nDecomFile=warm.dcm\nGainFile=warm.gai\nOffsetFile=warm.off\n"
           "IntensityCold=3000\nIntensityHot=9000\nTemperatureCold=20.0\nTemperatureHot=25.0\n";
}

bool MakeSequence(const std::string& path, std::int64_t frames)
{
    ImageHeaderRecord header;
    header.ImageWidth = kWidth;
    header.ImageHeight = kHeight;
    header.SampleBytes = 2;
    header.HeaderVersion = 8;
    header.DataType = 1;
    const FramesHead head = {.columns = kWidth, .rows = kHeight, .pixelBytes = 2 * kPixels, .texts = {}};
    std::optional<SequenceWriter> writer = SequenceWriter::Create(path, header, head);
    for (std::int64_t n = 1; writer && n <= frames; ++n) {
        const FrameRecord record = {.number = n, .monotonicNs = n * 10'000'000, .utcNs = n * 10'000'000};
        if (!writer->Append(record, MakeFrame(static_cast<std::uint32_t>(n)))) return false;
    }
    return writer && writer->Close(ClosingRecord(frames, EndOfRecording::kComplete));
}

// Of the set's files, as the command reads them.
bool Correct(const std::string& directory, int rounds)
{
    CalibrationSet set = ReadSet(directory + "/warm.cal", kPixels);
    StoredLists lists{std::move(set.decom.entries), std::move(set.offsets.entries), std::move(set.gains.entries)};
    if (lists.decom.size() != kPixels) return false;
    const auto correction = StoredCorrection::Make(set.type, std::move(lists), kWidth, StoredOrder::kReadoutToImage);
    if (!correction) return false;
    const std::vector<std::int16_t> frame = MakeFrame(1);
    std::vector<std::int16_t> corrected(kPixels);
    std::vector<double> times(static_cast<std::size_t>(std::max(rounds, 1)));
    for (double& time : times) time = Microseconds([&] { correction->Correct(frame, corrected); });
    std::printf("%.1f\n", Median(times));
    return true;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 4) return 2;
    const std::string word = argv[1];
    const std::string directory = argv[2];
    const int count = std::atoi(argv[3]);
    if (word == "correct") return Correct(directory, count) ? 0 : 1;
    MakeSet(directory);
    return MakeSequence(directory + "/raw.seq", count) ? 0 : 1;
}
