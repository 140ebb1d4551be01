#include "platform/one_process.h"

#include "platform/files.h"
#include "platform/machine.h"
#include "platform/qt_window.h"
#include "platform/text.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QDataStream>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QSysInfo>
#include <QThread>

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

namespace kelvo {

namespace {

constexpr int kPauseMs = 50;                     // between two tries
constexpr int kConnectMs = 1000;                 // a process that listens is reached at once
constexpr int kUnclearAfterMs = 2000;            // no lock is written for so long
constexpr char kTaken = '+';                     // the answer to a handover
constexpr qsizetype kLongestHandover = 1 << 20;  // bytes; no command line is longer

// A message is a length and that many bytes: the files, then the activation.
QByteArray Message(const Handover& handover)
{
    QByteArray body;
    QDataStream stream(&body, QIODevice::WriteOnly);
    stream << static_cast<quint32>(handover.files.size());
    for (const std::string& file : handover.files) stream << QByteArray::fromStdString(file);
    stream << QByteArray::fromStdString(handover.activation);
    QByteArray message;
    QDataStream whole(&message, QIODevice::WriteOnly);
    whole << body;
    return message;
}

// nullopt: not all of it has come, or it is none.
std::optional<Handover> ReadMessage(const QByteArray& bytes)
{
    QByteArray body;
    QDataStream message(bytes);
    message >> body;
    if (message.status() != QDataStream::Ok) return std::nullopt;
    QDataStream stream(body);
    quint32 count = 0;
    stream >> count;
    Handover handover;
    for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        QByteArray file;
        stream >> file;
        handover.files.push_back(file.toStdString());
    }
    QByteArray activation;
    stream >> activation;
    handover.activation = activation.toStdString();
    if (stream.status() != QDataStream::Ok) return std::nullopt;
    return handover;
}

// The side that holds the directory.
class Line {
  public:
    Line(const QString& name, std::function<void(const Handover&)> taker) : taker_(std::move(taker))
    {
        if (name.isEmpty()) return;
        QLocalServer::removeServer(name);  // of an owner that died: only who holds the lock comes here
        server_.setSocketOptions(QLocalServer::UserAccessOption);
        QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] {
            while (QLocalSocket* const caller = server_.nextPendingConnection()) Serve(caller);
        });
        server_.listen(name);  // where that fails, later starts are refused instead of handing over
    }

  private:
    void Serve(QLocalSocket* caller)
    {
        QObject::connect(caller, &QLocalSocket::disconnected, caller, &QObject::deleteLater);
        QObject::connect(caller, &QLocalSocket::readyRead, caller, [this, caller] { Read(*caller); });
        Read(*caller);
    }

    // Taken and told so in one go: a caller that has given up has told its operator that nothing was handed over.
    void Read(QLocalSocket& caller)
    {
        if (caller.bytesAvailable() > kLongestHandover) caller.abort();
        const std::optional<Handover> handover = ReadMessage(caller.peek(kLongestHandover));
        if (!handover || caller.state() != QLocalSocket::ConnectedState) return;
        caller.readAll();
        if (caller.write(&kTaken, 1) != 1 || !caller.flush()) return;
        taker_(*handover);
    }

    std::function<void(const Handover&)> taker_;
    QLocalServer server_;
};

std::unique_ptr<QLockFile> lock;
std::unique_ptr<Line> line;

// The side of a later start. False: nobody has taken it.
bool HandOver(const QString& name, const Handover& handover, const QDeadlineTimer& deadline)
{
    if (name.isEmpty()) return false;
    QLocalSocket owner;
    owner.connectToServer(name);
    if (!owner.waitForConnected(kConnectMs)) return false;
    owner.write(Message(handover));
    owner.flush();
    char answer = 0;
    while (owner.bytesAvailable() == 0) {
        // Ends early where the owner ends: the directory may be free then.
        if (!owner.waitForReadyRead(static_cast<int>(deadline.remainingTime()))) return false;
    }
    return owner.read(&answer, 1) == 1 && answer == kTaken;
}

struct Owner {
    qint64 process = 0;
    QString machine;
    bool here = true;  // on this machine

    bool Lives() const
    {
        if (!here) return true;  // nobody can tell from here
        return kill(static_cast<pid_t>(process), 0) == 0 || errno == EPERM;
    }
};

std::optional<Owner> OwnerOf(const QLockFile& file)
{
    Owner owner;
    QString program;
    if (!file.getLockInfo(&owner.process, &owner.machine, &program)) return std::nullopt;
    owner.here = owner.machine.isEmpty() || owner.machine == QSysInfo::machineHostName();
    return owner;
}

std::string NameOf(const std::optional<Owner>& owner)
{
    if (!owner) return "another process";
    const std::string process = Format("process %lld", static_cast<long long>(owner->process));
    return owner->here ? process : process + " on " + FromQString(owner->machine);
}

}  // namespace

std::string HandoverLine(std::string_view directory)
{
    const std::string place = SocketDirectory();
    if (place.empty()) return {};
    // By whichever way one comes to it.
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(std::string(directory), error);
    const std::string whole = error ? std::string(directory) : real.string();
    constexpr qsizetype kHexDigits = 32;
    const QByteArray mark = QCryptographicHash::hash(QByteArray::fromStdString(whole), QCryptographicHash::Sha256);
    return place + "/kelvo-" + mark.toHex().left(kHexDigits).toStdString();
}

ClaimResult ClaimDataDirectory(std::string_view directory, const Handover& handover,
                               std::function<void(const Handover&)> taker, int waitMs)
{
    const std::string path = std::string(directory) + "/kelvo.lock";
    const QString name = ToQPath(HandoverLine(directory));
    auto file = std::make_unique<QLockFile>(ToQPath(path));
    file->setStaleLockTime(0);  // however long ago a living process took it
    const QDeadlineTimer unclear(kUnclearAfterMs);
    const QDeadlineTimer deadline(waitMs);
    while (!file->tryLock(0)) {
        if (file->error() != QLockFile::LockFailedError) return {Claim::kUnlocked, {}};
        if (HandOver(name, handover, deadline)) return {Claim::kHandedOver, NameOf(OwnerOf(*file))};
        const std::optional<Owner> owner = OwnerOf(*file);
        // The owner has died, and its lock can't be removed: there is no writing here.
        if (owner && !owner->Lives() && access(std::string(directory).c_str(), W_OK) != 0)
            return {Claim::kUnlocked, {}};
        // A lock that tells nothing, and one whose number went to another process: the system knows whether it is held.
        if (unclear.hasExpired() && (!owner || owner->here) && file->removeStaleLockFile()) continue;
        if (deadline.hasExpired()) return {Claim::kRefused, NameOf(owner)};
        QThread::msleep(kPauseMs);
    }
    lock = std::move(file);
    line = std::make_unique<Line>(name, std::move(taker));
    return {Claim::kHeld, {}};
}

void ReleaseDataDirectory()
{
    line.reset();
    lock.reset();
}

}  // namespace kelvo
