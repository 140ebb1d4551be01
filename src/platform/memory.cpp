#include "platform/memory.h"

#include "platform/faults.h"
#include "platform/machine.h"
#include "platform/text.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <string>

namespace kelvo {

namespace {

constexpr std::uint64_t kRefusedBytes = std::uint64_t{1} << 31;

constexpr std::uint64_t kBytesPerKb = 1024;
constexpr std::int32_t kDefaultSharePercent = 25;

constexpr std::string_view kFault = "memory";

std::int64_t requests = 0;

// The digits at the start of a text; nullopt where there are none or they go beyond 64 bits.
std::optional<std::uint64_t> LeadingNumber(std::string_view text)
{
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return std::nullopt;
    return number;
}

std::uint64_t SystemAvailableBytes()
{
    std::ifstream stream("/proc/meminfo");
    const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (const auto available = MemAvailableOf(text)) return *available;
    const long pages = sysconf(_SC_AVPHYS_PAGES);  // what is free alone, where caches aren't told
    const long pageBytes = sysconf(_SC_PAGESIZE);
    if (pages < 0 || pageBytes < 0) return 0;
    return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageBytes);
}

std::uint64_t SharePercent()
{
    const auto share = ScanDecimal(MachineSetting("Memory", "Share", ""));
    return static_cast<std::uint64_t>(std::clamp(share.value_or(kDefaultSharePercent), 1, 100));
}

}  // namespace

std::optional<std::uint64_t> MemAvailableOf(std::string_view memInfo)
{
    constexpr std::string_view kName = "MemAvailable:";
    const std::size_t line = memInfo.starts_with(kName) ? 0 : memInfo.find("\nMemAvailable:");
    if (line == std::string_view::npos) return std::nullopt;
    const auto kilobytes = LeadingNumber(Trimmed(memInfo.substr(memInfo.find(':', line) + 1)));
    if (!kilobytes || *kilobytes > UINT64_MAX / kBytesPerKb) return std::nullopt;
    return *kilobytes * kBytesPerKb;
}

std::uint64_t AvailablePhysicalMemory()
{
    const std::uint64_t share = SystemAvailableBytes() / 100 * SharePercent();
    const std::uint64_t limit = LeadingNumber(MachineSetting("Memory", "Limit", "0")).value_or(0);
    return limit == 0 ? share : std::min(share, limit);
}

bool MemoryAvailable(std::size_t bytes)
{
    ++requests;
    return !FaultIsSet(kFault) && bytes < kRefusedBytes;
}

std::int64_t MemoryRequests()
{
    return requests;
}

void FailAllocation(int n)
{
    SetFaultOnce(kFault, n);
}

}  // namespace kelvo
