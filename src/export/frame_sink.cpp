#include "export/frame_sink.h"

#include "export/json_text.h"
#include "platform/files.h"
#include "platform/text.h"

#include <cerrno>
#include <cstring>

namespace kelvo {

std::string BadPlacesJson(const ExportDescription& description)
{
    if (description.badDetectors.empty()) return "null";
    std::vector<std::string> places;
    for (std::size_t i = 0; i < description.badDetectors.size(); ++i) {
        if (description.badDetectors[i] == 0) continue;
        places.push_back(Format("[%zu, %zu]", i / description.columns, i % description.columns));
    }
    return JsonArray(places);
}

std::string WhyTargetIsRefused(const std::string& path, bool replace)
{
    if (DirectoryExists(path)) return path + " is a directory";
    return !replace && FileExists(path) ? path + " stands already" : std::string();
}

std::string CantBeWritten(const std::string& path)
{
    return path + " can't be written: " + std::strerror(errno);
}

std::string DiskRefuses(const std::string& path)
{
    return path + " can't be written: the disk refuses";
}

}  // namespace kelvo
