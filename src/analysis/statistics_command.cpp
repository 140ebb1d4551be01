#include "analysis/statistics_command.h"

#include "analysis/histogram_dialog.h"
#include "pixel/bad_pixels.h"
#include "platform/files.h"
#include "platform/text.h"
#include "state/camera_config.h"
#include "state/windows.h"
#include "ui/select_file.h"
#include "viewing/viewing.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace kelvo {

namespace {

BadDetMap EmptyMap(const CameraConfig& config)
{
    return BadDetMap(static_cast<std::size_t>(std::max(config.Vroi, 0)) *
                     static_cast<std::size_t>(std::max(config.Hroi, 0)));
}

}  // namespace

CommandEnd ViewStatistics()
{
    std::string path;
    SelectStatisticsFile(hWndMain, path, kStatisticsFiles);
    if (path.empty()) return CommandEnd::kLeaveStatus;
    std::string extension;
    SplitPath(path, nullptr, nullptr, nullptr, &extension);
    if (EqualIgnoringCase(extension, ".cal")) return CommandEnd::kResetStatus;
    if (EqualIgnoringCase(extension, ".bad")) {
        BadDetMap map = EmptyMap(ActiveConfig);
        LoadBadDetFile(path, map, ActiveConfig);
    } else if (ViewImage(path, 0)) {
        HistogramDialog(hWndMain);
    }
    return CommandEnd::kResetStatus;
}

}  // namespace kelvo
