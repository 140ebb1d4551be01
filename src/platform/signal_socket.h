// A signal from outside the program: another application sets the event that this one waits for. It is a datagram, of
// whatever it holds, to a local socket in a directory that only this user may enter.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

namespace kelvo {

// An event that resets itself: it is set any number of times, and taken once. Any thread may do either.
class Event {
  public:
    Event();
    ~Event();
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;
    void Set();
    bool Take();  // true once after Set
    int Descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};

// Waits without limit until one of them is set, takes it and tells which: 0 the first (both are set: this one), 1 the
// second.
int WaitForEvents(Event& first, Event& second);

// A thread that waits for one signal, or for the stop. It touches nothing but the two events.
class SignalThread {
  public:
    // onSignal is called on that thread, at most once. Null where no thread can be made.
    static std::unique_ptr<SignalThread> Start(Event& stop, Event& signal, std::function<void()> onSignal);
    // Sets stop and waits for the thread without limit. Nothing of the stop is left for the next one.
    ~SignalThread();
    SignalThread(const SignalThread&) = delete;
    SignalThread& operator=(const SignalThread&) = delete;

  private:
    SignalThread(Event& stop, Event& signal, std::function<void()> onSignal);
    Event& stop_;
    std::thread thread_;
};

// The socket of the Kelvo that holds a data directory, for whoever sends it a signal:
//     RUNTIME/kelvo-MARK/{5A963C81-A69C-11d0-AC11-00A024BBB05E}
// RUNTIME is XDG_RUNTIME_DIR where that is this user's alone, otherwise SocketDirectory (platform/machine.h); MARK the
// first 16 digits of the SHA-256 of the data directory's real path. Empty where there is no such directory, or the path
// is longer than the system takes (107 bytes).
std::string SignalSocketPath(std::string_view dataDirectory);

// The receiving side. The socket of an owner that died is replaced.
class SignalSocket {
  public:
    // onSignal is called on the main thread, from inside any event handling, once for the signals that have come so
    // far. Null where the socket can't be made, or another process listens there.
    static std::unique_ptr<SignalSocket> Open(const std::string& path, std::function<void()> onSignal);
    ~SignalSocket();  // the socket is removed, and its directory
    SignalSocket(const SignalSocket&) = delete;
    SignalSocket& operator=(const SignalSocket&) = delete;

    void TakeSignals();  // those that have come by now, without waiting for the event handling

  private:
    struct Inside;
    explicit SignalSocket(std::unique_ptr<Inside> inside);
    std::unique_ptr<Inside> inside_;
};

// The sending side; needs no application and never blocks. True also where signals already wait there, of which one
// more makes no difference; false where nobody listens.
bool SendSignal(const std::string& path);

}  // namespace kelvo
