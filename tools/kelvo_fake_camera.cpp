// kelvo-fake-camera: a GigE Vision camera on this machine's own network, for trying a true camera's way without one.
//
//     kelvo-fake-camera [--address 127.0.0.1] [--serial KELVO1] [--format Mono14] [--rate 50] [--exposure 19400]
//                       [--front NAME] FILE
//
// FILE describes the detector, a simulated camera's .cnf file. The word in the file NAME, low, high or scene, says what
// stands in front of the camera, whoever writes it while the camera runs. The line of output tells that the camera is
// up; SIGTERM, SIGINT and SIGHUP switch it off.
#include "support/fake_camera.h"

#include <signal.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace {

constexpr const char* kUsage =
    "usage: kelvo-fake-camera [--address ADDRESS] [--serial SERIAL] [--format FORMAT] [--rate HZ] [--exposure US]\n"
    "                         [--front NAME] FILE\n";

template <typename Number>
bool TakeNumber(std::string_view text, Number& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

bool TakeOption(std::string_view name, std::string_view value, kelvo::FakeCameraSetup& setup)
{
    if (name == "--rate") return TakeNumber(value, setup.rateHz);
    if (name == "--exposure") return TakeNumber(value, setup.exposureUs);
    std::string* const text = name == "--address"  ? &setup.address
                              : name == "--serial" ? &setup.serial
                              : name == "--format" ? &setup.format
                              : name == "--front"  ? &setup.frontFile
                                                   : nullptr;
    if (text) *text = value;
    return text != nullptr;
}

std::optional<kelvo::FakeCameraSetup> ParseArguments(std::span<char* const> arguments)
{
    kelvo::FakeCameraSetup setup;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (argument.starts_with("--")) {
            if (i + 1 == arguments.size() || !TakeOption(argument, arguments[i + 1], setup)) return std::nullopt;
            ++i;
        } else if (setup.settingsFile.empty()) {
            setup.settingsFile = argument;
        } else {
            return std::nullopt;
        }
    }
    if (setup.settingsFile.empty()) return std::nullopt;
    return setup;
}

// Blocked before the camera's threads begin, so that none of them takes one.
sigset_t BlockEndSignals()
{
    sigset_t ends{};
    sigemptyset(&ends);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&ends, number);
    sigprocmask(SIG_BLOCK, &ends, nullptr);
    return ends;
}

}  // namespace

int main(int argc, char* argv[])
{
    const std::span<char* const> arguments(argv + 1, static_cast<std::size_t>(std::max(argc - 1, 0)));
    if (std::ranges::find(arguments, std::string_view("--help")) != arguments.end()) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    const auto setup = ParseArguments(arguments);
    if (!setup) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    const sigset_t ends = BlockEndSignals();
    const kelvo::FakeCamera camera(*setup);
    if (!camera.Error().empty()) {
        std::fprintf(stderr, "kelvo-fake-camera: %s\n", camera.Error().c_str());
        return 1;
    }
    std::printf("%s at %s\n", setup->serial.c_str(), setup->address.c_str());
    std::fflush(stdout);
    int signal = 0;
    sigwait(&ends, &signal);
    return 0;
}
