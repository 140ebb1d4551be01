#include "batch/sequence_fixture.h"

#include "batch/batch.h"

#include <algorithm>
#include <filesystem>

namespace kelvo {

std::vector<std::int16_t> SmallPixels(std::int64_t number)
{
    std::vector<std::int16_t> pixels(8);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<std::int16_t>(10 * number + static_cast<std::int64_t>(i));
    }
    return pixels;
}

FrameRecord SmallRecord(std::int64_t number)
{
    return {.number = number,
            .monotonicNs = number * 10'000'000,
            .utcNs = 1'700'000'000'000'000'000 + number * 10'000'000,
            .integrationMs = 1.5F};
}

ImageHeaderRecord SmallHeader()
{
    ImageHeaderRecord header;
    header.ImageWidth = 4;
    header.ImageHeight = 2;
    header.SampleBytes = 2;
    header.HeaderVersion = 8;
    header.ImageHeaderDataOffset = 80;
    header.DataType = 1;
    return header;
}

FramesHead SmallHead()
{
    return {.columns = 4, .rows = 2, .pixelBytes = 16, .texts = {{"Camera", "small"}, {"Pixels", "raw"}}};
}

void SequenceTest::Record(const std::string& path, const std::vector<std::int64_t>& numbers, bool closed) const
{
    std::optional<SequenceWriter> writer = SequenceWriter::Create(path, SmallHeader(), SmallHead());
    ASSERT_TRUE(writer);
    std::int64_t last = numbers.empty() ? 0 : numbers.front() - 1;
    for (const std::int64_t number : numbers) {
        FrameRecord record = SmallRecord(number);
        record.lostByBoard = static_cast<std::uint32_t>(number - last - 1);
        last = number;
        ASSERT_TRUE(writer->Append(record, SmallPixels(number)));
    }
    if (!closed) return;
    FrameRecord closing = ClosingRecord(writer->Frames(), EndOfRecording::kComplete);
    closing.lostByRing = 3;
    ASSERT_TRUE(writer->Close(closing));
}

SequenceTest::Said SequenceTest::Run(std::vector<std::string> arguments)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const std::optional<int> code = RunBatch(arguments);
    Said said;
    said.out = testing::internal::GetCapturedStdout();
    said.error = testing::internal::GetCapturedStderr();
    said.code = code.value_or(-1);
    return said;
}

std::vector<std::pair<std::string, std::string>> SequenceTest::Everything() const
{
    std::vector<std::pair<std::string, std::string>> files;
    for (const auto& entry : std::filesystem::directory_iterator(directory.Path())) {
        files.emplace_back(entry.path().filename(), FileContents(entry.path()));
    }
    std::ranges::sort(files);
    return files;
}

}  // namespace kelvo
