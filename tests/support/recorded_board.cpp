#include "support/recorded_board.h"

#include "grabber/copm2.h"
#include "state/frame_state_write.h"

#include <algorithm>
#include <utility>

namespace kelvo {

namespace {

std::vector<std::string> calls;
std::int32_t configurationResult = 0;
std::optional<std::int16_t> frameCounts;
std::vector<std::vector<std::int16_t>> pictures;
std::size_t nextPicture = 0;

int ReadPicture(std::span<std::int16_t> buffer)
{
    const auto& picture = pictures[nextPicture++ % pictures.size()];
    std::copy_n(picture.begin(), std::min(picture.size(), buffer.size()), buffer.begin());
    return 0;
}

constexpr BoardModule kModule = 7;
constexpr BoardFrame kFrame = 1;

const BoardTable kRecordedBoard = {
    .name = "recorded",
    .load_cnf = [](const std::string&) { return configurationResult; },
    .init_sys =
        [](std::int32_t) {
            calls.emplace_back("init");
            return 0;
        },
    .get_modcnf = [](BoardModule, std::string_view name, std::int32_t) { return name == "ICP" ? kModule : 0; },
    .delete_all_frames = [](BoardModule) {},
    .get_slot0 = [](BoardModule) { return kModule; },
    .lin_lut = [](BoardModule) {},
    .create_frame = [](BoardModule, std::int32_t, std::int32_t, std::int32_t, std::int32_t) { return kFrame; },
    .frame_attrib =
        [](BoardModule, BoardFrame, BoardFrameAttributes& attributes) {
            attributes = {.bits = 16, .colour = 0};
            return 0;
        },
    .set_timeout = [](BoardModule, std::int32_t) {},
    .bm_mode = [](BoardModule, std::int32_t) {},
    .bm_ilace = [](BoardModule, std::int32_t) {},
    .put_bm_firstf_start = [](BoardModule, std::int32_t) {},
    .err_level = [](std::int32_t) {},
    .grab =
        [](BoardModule, BoardFrame) {
            calls.emplace_back("grab");
            write::frames.DisplayEnabled = 0;
            return 0;
        },
    .freeze = [](BoardModule, BoardFrame) { calls.emplace_back("freeze"); },
    .wait_vb = [](BoardModule, BoardFrame) { return frameCounts || !pictures.empty() ? 0 : kBoardTimeout; },
    .read_area =
        [](BoardModule, BoardFrame, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
           std::span<std::int16_t> buffer) {
            if (!pictures.empty()) return ReadPicture(buffer);
            if (!frameCounts) return -1;
            std::ranges::fill(buffer, *frameCounts);
            return 0;
        },
    .trig_snap = [](BoardModule, BoardFrame) { return -1; },
    .wait_trig = [](BoardModule, BoardFrame, std::int32_t) { return 0; },
    .trigen = [](BoardModule, std::int32_t) {},
    .exsen = [](BoardModule, std::int32_t) {},
    .exsyncp = [](BoardModule, std::int32_t) {},
    .os_set_realtime_priority = [](std::int32_t) {},
    .exit = [](std::int32_t) {},
    .frame_count = [](BoardModule) { return std::int64_t{0}; },
};

}  // namespace

void RegisterRecordedBoard()
{
    RegisterBoard(kRecordedBoard);
}

std::vector<std::string> TakeBoardCalls()
{
    return std::exchange(calls, {});
}

void SetBoardCounts(std::optional<std::int16_t> counts)
{
    frameCounts = counts;
}

void SetBoardFrames(std::vector<std::vector<std::int16_t>> frames)
{
    pictures = std::move(frames);
    nextPicture = 0;
}

void SetBoardConfigurationResult(int result)
{
    configurationResult = result;
}

}  // namespace kelvo
