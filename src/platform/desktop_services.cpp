#include "platform/desktop_services.h"

#include "platform/signal_socket.h"

#include <QGuiApplication>

#include <fcntl.h>
#include <poll.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <ctime>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr const char* kWhat = "sleep:idle";

struct CloseBus {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }  // what waits to be sent is dropped
};
using Bus = std::unique_ptr<sd_bus, CloseBus>;

// What the main thread wishes.
struct Wishes {
    bool ends = false;
    bool holds = false;
    std::uint64_t hold = 0;  // which one: each asks once
    std::string why;
    std::vector<DesktopNote> notes;
};

// A connection that is made needs no answer yet: what is sent waits in it.
Bus Open(int (*open)(sd_bus**))
{
    sd_bus* bus = nullptr;
    return open(&bus) >= 0 ? Bus(bus) : Bus();
}

// All that can be done without waiting. A bus that has gone is dropped.
void Process(Bus& bus)
{
    while (bus) {
        const int more = sd_bus_process(bus.get(), nullptr);
        if (more < 0) bus.reset();
        if (more == 0) return;
    }
}

// The descriptor and the events for which the bus waits; a descriptor of -1 is passed over.
pollfd WaitOf(const Bus& bus)
{
    if (!bus) return {.fd = -1, .events = 0, .revents = 0};
    const int events = sd_bus_get_events(bus.get());
    const int descriptor = sd_bus_get_fd(bus.get());
    if (events < 0 || descriptor < 0) return {.fd = -1, .events = 0, .revents = 0};
    return {.fd = descriptor, .events = static_cast<short>(events), .revents = 0};
}

// How long the bus waits, rounded up; -1: until something comes.
int WaitMs(const Bus& bus)
{
    constexpr std::uint64_t kUsPerMs = 1000;
    constexpr std::uint64_t kLongestMs = 60'000;
    std::uint64_t untilUs = std::numeric_limits<std::uint64_t>::max();
    if (!bus || sd_bus_get_timeout(bus.get(), &untilUs) <= 0) return -1;
    if (untilUs == std::numeric_limits<std::uint64_t>::max()) return -1;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);  // the bus's own clock
    const std::uint64_t nowUs =
        static_cast<std::uint64_t>(now.tv_sec) * 1'000'000 + static_cast<std::uint64_t>(now.tv_nsec) / kUsPerMs;
    if (untilUs <= nowUs) return 0;
    return static_cast<int>(std::min((untilUs - nowUs) / kUsPerMs + 1, kLongestMs));
}

int Sooner(int a, int b)
{
    return a < 0 ? b : b < 0 ? a : std::min(a, b);
}

class Services {
  public:
    explicit Services(std::string icon) : icon_(std::move(icon)), thread_([this] { Run(); }) {}
    ~Services()
    {
        Wish([](Wishes& wishes) { wishes.ends = true; });
        thread_.join();
    }
    Services(const Services&) = delete;
    Services& operator=(const Services&) = delete;

    template <typename Change>
    void Wish(Change change)
    {
        {
            const std::scoped_lock lock(mutex_);
            change(wishes_);
        }
        wished_.Set();
    }

  private:
    void Run()
    {
        while (true) {
            const Wishes now = TakeWishes();
            if (now.ends) break;
            FollowHold(now);
            for (const DesktopNote& note : now.notes) Send(note);
            Process(system_);
            if (!system_) isAsked_ = false;
            Process(session_);
            Wait();
        }
        LetGo();
    }

    Wishes TakeWishes()
    {
        const std::scoped_lock lock(mutex_);
        Wishes now = wishes_;
        wishes_.notes.clear();
        return now;
    }

    void FollowHold(const Wishes& now)
    {
        isWished_ = now.holds;
        if (!isWished_) LetGo();
        if (!isWished_ || lock_ >= 0 || isAsked_ || now.hold == asked_) return;
        asked_ = now.hold;
        if (!system_) system_ = Open(sd_bus_open_system);
        if (!system_) return;
        isAsked_ = sd_bus_call_method_async(system_.get(), nullptr, "org.freedesktop.login1", "/org/freedesktop/login1",
                                            "org.freedesktop.login1.Manager", "Inhibit", Answer, this, "ssss", kWhat,
                                            "Kelvo", now.why.c_str(), "block") >= 0;
    }

    // The login service's answer, from inside Process. One that comes too late is let go with the message.
    static int Answer(sd_bus_message* answer, void* userdata, sd_bus_error* /*error*/)
    {
        Services& services = *static_cast<Services*>(userdata);
        services.isAsked_ = false;
        int descriptor = -1;
        if (sd_bus_message_is_method_error(answer, nullptr) != 0) return 0;
        if (sd_bus_message_read(answer, "h", &descriptor) <= 0 || !services.isWished_) return 0;
        services.lock_ = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
        return 0;
    }

    void LetGo()
    {
        if (lock_ >= 0) close(lock_);
        lock_ = -1;
    }

    // No answer is asked for.
    void Send(const DesktopNote& note)
    {
        constexpr std::uint32_t kReplacesNone = 0;
        constexpr int kNoEntries = 0;
        constexpr std::int32_t kDesktopsOwnTime = -1;
        if (!session_) session_ = Open(sd_bus_open_user);
        if (!session_) return;
        sd_bus_call_method_async(session_.get(), nullptr, "org.freedesktop.Notifications",
                                 "/org/freedesktop/Notifications", "org.freedesktop.Notifications", "Notify", nullptr,
                                 nullptr, "susssasa{sv}i", "Kelvo", kReplacesNone, icon_.c_str(), note.summary.c_str(),
                                 note.text.c_str(), kNoEntries, kNoEntries, kDesktopsOwnTime);
    }

    void Wait()
    {
        std::array waits = {pollfd{.fd = wished_.Descriptor(), .events = POLLIN, .revents = 0}, WaitOf(system_),
                            WaitOf(session_)};
        poll(waits.data(), waits.size(), Sooner(WaitMs(system_), WaitMs(session_)));
        wished_.Take();
    }

    std::mutex mutex_;
    Wishes wishes_;
    Event wished_;
    const std::string icon_;  // of the notes

    // The thread's own.
    Bus system_;
    Bus session_;
    bool isWished_ = false;
    bool isAsked_ = false;     // an answer is to come
    std::uint64_t asked_ = 0;  // the hold that was asked for last
    int lock_ = -1;            // what the login service gave

    std::thread thread_;  // last: all it works with stands
};

std::optional<Services> services;

}  // namespace

DesktopServices::DesktopServices()
{
    try {
        services.emplace(
            QGuiApplication::desktopFileName().toStdString());  // the icon is called as the desktop's entry
    } catch (const std::system_error&) {
        services.reset();  // no thread: nothing is asked
    }
}

DesktopServices::~DesktopServices()
{
    services.reset();
}

void HoldSleepOff(std::string_view why)
{
    if (!services) return;
    services->Wish([&](Wishes& wishes) {
        if (std::exchange(wishes.holds, true)) return;
        ++wishes.hold;
        wishes.why = why;
    });
}

void LetSleep()
{
    if (services) services->Wish([](Wishes& wishes) { wishes.holds = false; });
}

void ShowDesktopNote(DesktopNote note)
{
    if (services) services->Wish([&](Wishes& wishes) { wishes.notes.push_back(std::move(note)); });
}

}  // namespace kelvo
