#include "genicam/camera_wiring.h"

#include "platform/files.h"
#include "platform/machine.h"
#include "platform/profile.h"
#include "platform/serial.h"
#include "platform/text.h"
#include "state/windows.h"

#include <set>

namespace kelvo {

namespace {

constexpr std::int32_t kCameraSections = 40;
constexpr std::int32_t kPorts = 99;
constexpr const char* kPortKey = "nCommPort";
constexpr std::int32_t kPortByDefault = 2;

std::string SectionName(std::int32_t number)
{
    return Format("Camera.%d", number);
}

std::string PortName(std::int32_t number)
{
    return Format("COM%d", number);
}

bool SectionStands(std::int32_t number)
{
    return HasProfileKey(SectionName(number), "Description", CameraFilePath);
}

std::int32_t PortOfSection(std::int32_t number)
{
    return GetPrivateProfileInt(SectionName(number), kPortKey, kPortByDefault, CameraFilePath);
}

// The port behind which that head stands; 0: none.
std::int32_t PortOfHead(const std::string& device)
{
    for (std::int32_t port = 1; port <= kPorts; ++port) {
        if (SerialDevice(PortName(port)) == device) return port;
    }
    return 0;
}

std::int32_t FreePort()
{
    std::set<std::int32_t> taken;
    for (std::int32_t number = 1; number <= kCameraSections; ++number) {
        if (SectionStands(number)) taken.insert(PortOfSection(number));
    }
    const std::string machine = PlatformFilePath();
    std::int32_t port = 1;
    while (taken.contains(port) || HasProfileKey("Ports", PortName(port), machine)) ++port;
    return port;
}

std::int32_t SectionAtPort(std::int32_t port)
{
    for (std::int32_t number = 1; number <= kCameraSections; ++number) {
        if (SectionStands(number) && PortOfSection(number) == port) return number;
    }
    return 0;
}

std::int32_t FreeSection()
{
    for (std::int32_t number = 1; number <= kCameraSections; ++number) {
        if (!SectionStands(number)) return number;
    }
    return 0;
}

}  // namespace

std::optional<WiringPlan> PlanWiring(const FoundCamera& camera, const CameraOffer& offer, const PixelFormat& format)
{
    WiringPlan plan;
    const std::string device = "genicam:" + HeadName(camera);
    plan.port = PortOfHead(device);
    if (plan.port != 0) plan.section = SectionAtPort(plan.port);
    plan.standsAlready = plan.section != 0;
    if (plan.port == 0) plan.port = FreePort();
    if (plan.section == 0) plan.section = FreeSection();
    if (plan.section == 0) return std::nullopt;

    for (const SectionKey& each : CameraSection(camera, offer, format, plan.port)) {
        plan.keys.push_back({CameraFilePath, SectionName(plan.section), each.key, each.value});
    }
    const std::string boardFile = Format("camera%d.cnf", plan.section);
    plan.keys.push_back({CameraFilePath, SectionName(plan.section), "cnfFile", boardFile});
    plan.keys.push_back({DefaultDir + "/" + boardFile, "GenICam", "Device", HeadName(camera)});
    plan.keys.push_back({DefaultDir + "/" + boardFile, "GenICam", "Format", std::string(format.name)});
    plan.keys.push_back({PlatformFilePath(), "Ports", PortName(plan.port), device});
    plan.keys.push_back({PlatformFilePath(), "Board", "Board", "genicam"});
    plan.keys.push_back({IniFilePath, "Setup", "ActiveCamera", Format("%d", plan.section)});
    return plan;
}

bool WriteWiring(const WiringPlan& plan)
{
    std::vector<KeptProfileKey> before;
    std::set<std::string> newFiles;
    for (const WiringKey& each : plan.keys) {
        before.push_back(KeepProfileKey(each.section, each.key, each.file));
        if (!FileExists(each.file)) newFiles.insert(each.file);
    }
    for (const WiringKey& each : plan.keys) WritePrivateProfileString(each.section, each.key, each.value, each.file);
    if (FlushProfiles()) return true;
    PutBackProfileKeys(before);
    FlushProfiles();
    for (const std::string& file : newFiles) {
        DeleteFileNamed(file);
        ForgetProfile(file);
    }
    return false;
}

}  // namespace kelvo
