#include "analysis/frame_graph_settings.h"

#include "analysis/frame_graph_settings_write.h"
#include "platform/profile.h"
#include "state/buffer_state.h"
#include "state/camera_config.h"
#include "state/display_state.h"
#include "state/state_registry.h"
#include "state/windows.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace kelvo {

namespace write {
FrameGraphVariables graph;
}

constinit const std::int32_t& PixelRow = write::graph.PixelRow;
constinit const std::int32_t& PixelCol = write::graph.PixelCol;
constinit const std::int32_t& yClipMin = write::graph.yClipMin;
constinit const std::int32_t& yClipMax = write::graph.yClipMax;
constinit const std::int32_t& SqrtTime = write::graph.SqrtTime;
constinit const std::int32_t& Autoscale = write::graph.Autoscale;
constinit const std::int32_t& GraphFirstFrame = write::graph.GraphFirstFrame;
constinit const std::int32_t& GraphLastFrame = write::graph.GraphLastFrame;
constinit const std::int32_t& GraphFrames = write::graph.GraphFrames;
constinit const std::int32_t& GraphSource = write::graph.GraphSource;
constinit const std::optional<TraceFile>& GraphedFile = write::graph.GraphedFile;

namespace {

const StateNames kStateNames{
    Named("PixelRow", PixelRow),
    Named("PixelCol", PixelCol),
    Named("yClipMin", yClipMin),
    Named("yClipMax", yClipMax),
    Named("SqrtTime", SqrtTime),
    Named("Autoscale", Autoscale),
    Named("GraphFirstFrame", GraphFirstFrame),
    Named("GraphLastFrame", GraphLastFrame),
    Named("GraphFrames", GraphFrames),
    Named("GraphSource", GraphSource),
};

constexpr std::string_view kSection = "GRAPHICS";
constexpr std::int32_t kUsualPlace = 64;

std::int32_t ReadKey(std::string_view key, std::int32_t defaultValue)
{
    return GetPrivateProfileInt(kSection, key, defaultValue, IniFilePath);
}

std::int32_t ReadPlace(std::string_view key, std::int32_t size)
{
    return std::clamp(ReadKey(key, kUsualPlace), 0, std::max(size, 1) - 1);
}

}  // namespace

void ReadGraphSettings()
{
    write::graph.PixelRow = ReadPlace("PixelRow", ActiveConfig.Vroi);
    write::graph.PixelCol = ReadPlace("PixelCol", ActiveConfig.Hroi);
    write::graph.yClipMin = ReadKey("yClipMin", 0);
    write::graph.yClipMax = ReadKey("yClipMax", DisplayHigh);
    write::graph.SqrtTime = ReadKey("SqrtTime", 0) != 0 ? 1 : 0;
    write::graph.Autoscale = ReadKey("Autoscale", 1) != 0 ? 1 : 0;
    write::graph.GraphFirstFrame = 0;
    write::graph.GraphLastFrame = FramesInBuffer - 1;
    write::graph.GraphFrames = FramesInBuffer;
}

void SaveGraphSettings()
{
    const auto save = [](std::string_view key, std::int32_t value) {
        WritePrivateProfileString(kSection, key, std::to_string(value), IniFilePath);
    };
    save("PixelRow", PixelRow);
    save("PixelCol", PixelCol);
    save("yClipMin", yClipMin);
    save("yClipMax", yClipMax);
    save("SqrtTime", SqrtTime);
    save("Autoscale", Autoscale);
}

const TraceFile* GraphedTraceFile()
{
    return GraphSource == kGraphFile && GraphedFile ? &*GraphedFile : nullptr;
}

Point GraphedSize()
{
    if (const TraceFile* file = GraphedTraceFile()) return {file->header.ImageWidth, file->header.ImageHeight};
    return {ActiveConfig.Hroi, ActiveConfig.Vroi};
}

CountRange GraphedRange()
{
    if (const TraceFile* file = GraphedTraceFile()) {
        return {.low = file->header.DisplayLow, .high = file->header.DisplayHigh};
    }
    return {.low = DisplayLow, .high = DisplayHigh};
}

UnitScope GraphedUnits()
{
    if (const TraceFile* file = GraphedTraceFile()) return UnitScope(file->header, file->path);
    return {};
}

void ResetGraphSettings()
{
    write::graph = {};
}

}  // namespace kelvo
