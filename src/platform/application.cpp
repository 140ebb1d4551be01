#include "platform/application.h"

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/qt_window.h"
#include "platform/text.h"
#include "platform/theme.h"

#include <QApplication>
#include <QDirIterator>
#include <QFile>
#include <QFont>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QPalette>
#include <QProcess>
#include <QScreen>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

namespace kelvo {

namespace {

constexpr int kOffscreenWidth = 1280;
constexpr int kOffscreenHeight = 1024;
// Of a run with virtual time: 1 January 2024, 12:00 UTC, so that what it writes repeats.
constexpr std::time_t kVirtualStart = 1704110400;

bool runsOffscreen = false;
QApplication* application = nullptr;  // lives as long as the process: windows may be asked until its very end

QByteArray OffscreenScreen(double scale, bool windowFrames)
{
    const QJsonObject screen{{"name", "offscreen"},
                             {"x", 0},
                             {"y", 0},
                             {"width", static_cast<int>(std::lround(kOffscreenWidth * scale))},
                             {"height", static_cast<int>(std::lround(kOffscreenHeight * scale))},
                             {"logicalDpi", 96},
                             {"logicalBaseDpi", 96},
                             {"dpr", 1.0}};
    const QJsonObject configuration{
        {"synchronousWindowSystemEvents", true}, {"windowFrameMargins", windowFrames}, {"screens", QJsonArray{screen}}};
    return QJsonDocument(configuration).toJson();
}

// The description of the offscreen screen must stand as a file while the application object is made.
class OffscreenEnvironment {
  public:
    explicit OffscreenEnvironment(const CommandLine& commandLine)
    {
        if (!commandLine.offscreen) return;
        const QString path = directory_.filePath("screen.json");
        QFile file(path);
        if (file.open(QIODevice::WriteOnly)) file.write(OffscreenScreen(commandLine.scale, commandLine.windowFrames));
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + path.toLocal8Bit());
        qputenv("QT_SCALE_FACTOR", QByteArray::number(commandLine.scale));
    }
    ~OffscreenEnvironment()
    {
        // Programs that we start have a screen of their own to find.
        qunsetenv("QT_SCALE_FACTOR");
        qunsetenv("QT_QPA_PLATFORM");
    }
    OffscreenEnvironment(const OffscreenEnvironment&) = delete;
    OffscreenEnvironment& operator=(const OffscreenEnvironment&) = delete;

  private:
    QTemporaryDir directory_;
};

// What an offscreen screen lacks is no news to anyone.
void DropScreenRemarks(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& text)
{
    if (text.startsWith("This plugin does not support") || text.startsWith("QStandardPaths: XDG_RUNTIME_DIR")) return;
    std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
}

std::string ValueOf(const char* variable)
{
    const char* const value = std::getenv(variable);
    return value && *value ? std::string("=") + value : std::string(" not set");
}

// While the application object is made. Without a display the toolkit would tell its developers, and abort; the
// operator is told in one line, and the process ends as one that was started wrongly. Whatever fails on the way ends
// here: a display that has gone, one that refuses, a plug-in that isn't installed.
class DisplayWatch {
  public:
    DisplayWatch() : before_(qInstallMessageHandler(Take)) {}
    ~DisplayWatch()
    {
        qInstallMessageHandler(before_);
        std::fputs(remarks.c_str(), stderr);
    }
    DisplayWatch(const DisplayWatch&) = delete;
    DisplayWatch& operator=(const DisplayWatch&) = delete;

  private:
    static void Take(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text)
    {
        if (type != QtFatalMsg) {
            remarks += text.toStdString() + "\n";
            return;
        }
        std::fprintf(stderr, "kelvo: no display answers (DISPLAY%s, WAYLAND_DISPLAY%s); --offscreen runs without one\n",
                     ValueOf("DISPLAY").c_str(), ValueOf("WAYLAND_DISPLAY").c_str());
        std::_Exit(kNoDisplayExit);
    }

    inline static std::string remarks;
    QtMessageHandler before_;
};

// The toolkit takes the environment's locale over for the whole process. How characters are coded stays its own;
// numbers, day and month names are those of the C locale: settings and calibrations are read on machines with another
// one.
void KeepPlainLocale()
{
    const char* const characters = std::setlocale(LC_CTYPE, nullptr);
    const std::string environment = characters ? characters : "C";
    std::setlocale(LC_ALL, "C");
    std::setlocale(LC_CTYPE, environment.c_str());
    QLocale::setDefault(QLocale::c());
}

void MakeApplication(const CommandLine& commandLine)
{
    if (commandLine.offscreen) qInstallMessageHandler(DropScreenRemarks);
    // With the GLib dispatcher "about to block" also comes while events wait.
    qputenv("QT_NO_GLIB", "1");
    static std::string name = "kelvo";
    static char* arguments[] = {name.data(), nullptr};
    static int count = 1;
    std::optional<OffscreenEnvironment> environment;
    if (commandLine.offscreen) environment.emplace(commandLine);
    {
        std::optional<DisplayWatch> watch;
        if (!commandLine.offscreen) watch.emplace();
        application = std::make_unique<QApplication>(count, arguments).release();
    }
    KeepPlainLocale();
    application->setQuitOnLastWindowClosed(false);
}

std::string DirectoryFrom(const char* variable, std::string_view fallback)
{
    const char* const value = std::getenv(variable);
    if (value && *value == '/') return value;
    const char* const home = std::getenv("HOME");
    return std::string(home ? home : "") + std::string(fallback);
}

// The same, and never at the root of the disk.
std::string DirectoryBelowHome(const char* variable, std::string_view fallback)
{
    std::string directory = DirectoryFrom(variable, fallback);
    return directory == fallback ? std::string() : directory;
}

QString ResourcePath(std::string_view name)
{
    return ":/" + ToQPath(name);
}

}  // namespace

void StartApplication(const CommandLine& commandLine)
{
    if (qApp) return;
    runsOffscreen = commandLine.offscreen;
    if (commandLine.virtualTime) UseVirtualClock(kVirtualStart);
    MakeApplication(commandLine);
    QCoreApplication::setApplicationName("kelvo");
    QCoreApplication::setApplicationVersion(KELVO_VERSION);
    QGuiApplication::setDesktopFileName(kApplicationId);
    // Pictures taken offscreen repeat from machine to machine.
    if (runsOffscreen) QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
    ChangeTheme(commandLine.theme.value_or(Theme::kDesktop));
    StartTurns();
    StartKeys();
}

bool RunsOffscreen()
{
    return runsOffscreen;
}

bool DarkTheme()
{
    if (!qApp) return false;
    const QPalette palette = QApplication::palette();
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

void ChangeTheme(Theme theme)
{
    ApplyTheme(theme);
}

std::string UserConfigDirectory()
{
    return DirectoryFrom("XDG_CONFIG_HOME", "/.config");
}

std::string UserDataDirectory()
{
    return DirectoryFrom("XDG_DATA_HOME", "/.local/share");
}

std::string UserStateDirectory()
{
    return DirectoryBelowHome("XDG_STATE_HOME", "/.local/state");
}

std::string UserCacheDirectory()
{
    return DirectoryBelowHome("XDG_CACHE_HOME", "/.cache");
}

std::string UserDocumentsDirectory()
{
    return FromQPath(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
}

std::vector<std::string> CopyShippedFiles(std::string_view directory)
{
    const QString prefix = QStringLiteral(":/defaults");
    std::vector<std::string> failed;
    QDirIterator shipped(prefix, QDir::Files, QDirIterator::Subdirectories);
    while (shipped.hasNext()) {
        QFile source(shipped.next());
        const std::string target = std::string(directory) + FromQPath(source.fileName().mid(prefix.size()));
        if (FileExists(target)) continue;
        std::string parent;
        SplitPath(target, nullptr, &parent, nullptr, nullptr);
        const bool readable = source.open(QIODevice::ReadOnly);
        const QByteArray contents = source.readAll();
        const std::string_view bytes(contents.constData(), static_cast<std::size_t>(contents.size()));
        if (!readable || !MakeDirectories(parent) || !ReplaceFile(target, bytes)) failed.push_back(target);
    }
    std::ranges::sort(failed);
    return failed;
}

std::string ToolkitVersion()
{
    return std::string("Qt ") + qVersion();
}

std::string DisplayInUse()
{
    const QScreen* const screen = qApp ? QGuiApplication::primaryScreen() : nullptr;
    if (!screen) return "none";
    constexpr double kPercent = 100;
    const QSize size = screen->size();
    return Format("%s, %d x %d at %.0f %%, %s", QGuiApplication::platformName().toUtf8().constData(), size.width(),
                  size.height(), screen->devicePixelRatio() * kPercent, DarkTheme() ? "dark" : "light");
}

std::string ResourceText(std::string_view name)
{
    QFile file(ResourcePath(name));
    if (!file.open(QIODevice::ReadOnly)) return {};
    return file.readAll().toStdString();
}

bool OpenDesktopTool(std::string_view name)
{
    if (name != "printers") return false;
    struct Tool {
        const char* program = nullptr;
        QStringList arguments;
    };
    std::vector<Tool> tools = {
        {"system-config-printer", {}},
        {"gnome-control-center", {"printers"}},
        {"systemsettings", {"kcm_printer_manager"}},
    };
    // The page of the printing system itself, where one runs.
    if (QFile::exists("/run/cups/cups.sock")) tools.push_back({"xdg-open", {"http://localhost:631/printers"}});
    return std::ranges::any_of(tools, [](const Tool& tool) {
        const QString program = QStandardPaths::findExecutable(tool.program);
        return !program.isEmpty() && QProcess::startDetached(program, tool.arguments);
    });
}

void EndApplication()
{
    std::vector<QPointer<QWidget>> widgets;  // one may take others along
    for (QWidget* const widget : QApplication::topLevelWidgets()) widgets.emplace_back(widget);
    for (const QPointer<QWidget>& widget : widgets) std::unique_ptr<QWidget>(widget.data()).reset();
    std::unique_ptr<QApplication>(std::exchange(application, nullptr)).reset();
    qInstallMessageHandler(nullptr);
    runsOffscreen = false;
}

}  // namespace kelvo
