#include "record/recorder_fixture.h"

#include "grabber/board.h"
#include "grabber/board_state.h"
#include "grabber/frame_account.h"
#include "platform/clock.h"
#include "state/cal_state_write.h"
#include "state/camera_config_write.h"
#include "state/frame_state_write.h"
#include "state/head_state_write.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <numeric>

namespace kelvo {

std::string LongFile(const std::string& path)
{
    std::error_code missing;
    const auto length = std::filesystem::file_size(path, missing);
    std::string bytes(missing ? 0 : length, '\0');
    std::ifstream(path, std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

TakenApart TakeApart(const std::string& path, std::size_t pixels)
{
    const std::string bytes = LongFile(path);
    TakenApart file;
    if (bytes.size() < sizeof file.header) return file;
    std::memcpy(&file.header, bytes.data(), sizeof file.header);
    std::size_t at = sizeof file.header;
    for (; at + 80 + 2 * pixels <= bytes.size(); at += 80 + 2 * pixels) {
        std::memcpy(&file.frameHeaders.emplace_back(), bytes.data() + at, 80);
        std::memcpy(file.frames.emplace_back(pixels).data(), bytes.data() + at + 80, 2 * pixels);
    }
    file.bytesBehind = bytes.size() - at;
    return file;
}

std::vector<std::int64_t> NumbersOf(const std::string& path)
{
    std::vector<std::int64_t> numbers;
    for (const FrameRecord& record : ReadFramesFile(FramesPathOf(path)).records) numbers.push_back(record.number);
    return numbers;
}

std::vector<std::int64_t> HeaderNumbersOf(const std::string& path)
{
    std::vector<std::int64_t> numbers;
    for (const FrameHeaderRecord& header : TakeApart(path, 320UL * 256UL).frameHeaders) {
        numbers.push_back(header.AllFramesNum);
    }
    return numbers;
}

void RecorderTest::SetUp()
{
    OpenAt100Hz();
    AccountCycleStops();
    icp_grab(IcpModule, FrameA);
    AccountGrabStarted();
    grabUs = TickUs();
    write::frames.CameraOn = 1;
    write::frames.LiveVideo = 1;
    write::head.FrameRate = 100;
    write::head.IntegrationMsecInForce = 2.5;
    write::camera.ActiveConfig.Description = "InSb 320 x 256";
    write::cal.DecomList.resize(kPixels);
    std::iota(write::cal.DecomList.rbegin(), write::cal.DecomList.rend(), 0);  // upside down, so that it shows
    CalibrationListsChanged();
    out = directory / "out";
    std::filesystem::create_directory(out);
}

RecorderSettings RecorderTest::Settings() const
{
    RecorderSettings settings;
    settings.directory = out;
    settings.namePattern = "event{n:03}";
    return settings;
}

void RecorderTest::Start(const RecorderSettings& settings)
{
    std::string why;
    ASSERT_TRUE(StartRecorder(settings, why)) << why;
}

void RecorderTest::ExpectRefused(const RecorderSettings& settings, const std::string& why)
{
    std::string told;
    EXPECT_FALSE(StartRecorder(settings, told));
    EXPECT_EQ(told, why);
    EXPECT_FALSE(RecorderRuns());
    EXPECT_TRUE(FilesOut().empty());
}

void RecorderTest::GoToFrame(std::int64_t number) const
{
    AdvanceVirtualClock(grabUs + number * 10'000 + 100 - TickUs());
}

std::vector<std::string> RecorderTest::FilesOut() const
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(out)) names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
}

void RecorderTest::ExpectBalance(const CaptureCounts& counts)
{
    EXPECT_EQ(counts.delivered, counts.recorded + counts.passedOver + counts.lostByBoard.value_or(0) +
                                    counts.lostByRing + counts.waiting);
}

}  // namespace kelvo
