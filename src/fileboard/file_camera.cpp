#include "fileboard/file_camera.h"

#include "fileboard/recorded_source.h"
#include "platform/clock.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/text.h"
#include "state/windows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <map>
#include <mutex>
#include <system_error>

namespace kelvo {

namespace {

constexpr double kMsPerSecond = 1e3;
// Settings that come nearer than this to the recording's are the recording's: registers have steps.
constexpr double kSameRate = 0.005;
constexpr double kSameIntegration = 0.01;

enum Topic : std::size_t { kRateTopic, kIntegrationTopic, kWindowTopic, kTopics };

using Sources = std::array<std::optional<RecordedSource>, kFileSources>;

}  // namespace

struct FileCamera {
    std::string directory;  // in which the recordings are looked for
    FileSettings settings;

    mutable std::recursive_mutex mutex;  // of all below; some calls work through others
    HeadRegisters head;
    Sources sources;
    FileSource source = FileSource::kScene;  // which has a recording

    std::int64_t startUs = 0;        // when its recording began
    std::int64_t numbersBefore = 0;  // of the frames until then

    std::int32_t askedColumns = 0;  // of a frame that is read; 0: none was
    std::int32_t askedRows = 0;
    std::vector<std::int16_t> whole;  // a frame of which only a part is asked for
    std::array<std::string, kTopics> told;

    // NOLINTBEGIN(bugprone-unchecked-optional-access): the source in front has a recording
    RecordedSource& InFront() { return *sources.at(static_cast<std::size_t>(source)); }
    const RecordedSource& InFront() const { return *sources.at(static_cast<std::size_t>(source)); }
    // NOLINTEND(bugprone-unchecked-optional-access)
};

namespace {

std::shared_ptr<FileCamera> current;

std::map<std::string, std::shared_ptr<FileCamera>>& Cameras()
{
    static std::map<std::string, std::shared_ptr<FileCamera>> cameras;
    return cameras;
}

bool IsWholePath(const std::string& file)
{
    return file.starts_with('/') || file.starts_with('\\') || (file.size() > 1 && file[1] == ':');
}

// A name is a file of the directory; one with a directory of its own stands for itself.
std::string PathIn(const std::string& directory, const std::string& file)
{
    return ResolvePath(IsWholePath(file) ? file : directory + '/' + file);
}

std::string CanonicalPath(const std::string& path)
{
    std::error_code ignored;
    const std::filesystem::path canonical = std::filesystem::weakly_canonical(path, ignored);
    return canonical.empty() ? path : canonical.string();
}

// One camera has one size and one way to take its samples; empty, or why these recordings can't be one camera's.
std::string MakeAlike(Sources& sources)
{
    const RecordedSource* first = nullptr;
    bool areLowered = false;
    for (const auto& source : sources) {
        if (!source) continue;
        if (!first) first = &*source;
        areLowered = areLowered || source->AreLowered();
        if (source->Columns() != first->Columns() || source->Rows() != first->Rows()) {
            return Format("%s has frames of %zu x %zu, %s of %zu x %zu: a camera's have one size.",
                          source->Name().c_str(), source->Columns(), source->Rows(), first->Name().c_str(),
                          first->Columns(), first->Rows());
        }
    }
    if (!areLowered) return {};
    for (const auto& source : sources) {
        if (!source || source->CanBeLowered()) continue;
        return source->Name() +
               " has samples with a sign. They can't stand beside samples above 32767, which are taken 32768 lower.";
    }
    for (auto& source : sources) {
        if (source) source->Lower();
    }
    return {};
}

std::optional<RecordedSource> OpenSource(const FileCamera& camera, const std::string& rule, std::string& error)
{
    const FileSettings& settings = camera.settings;
    return RecordedSource::Open(PathIn(camera.directory, rule), settings.rateHz, settings.end == EndOfFile::kLoop,
                                error);
}

std::shared_ptr<FileCamera> MakeCamera(const std::string& path, std::string& error)
{
    const std::optional<FileSettings> settings = ReadFileSettings(path, error);
    if (!settings) return nullptr;
    auto camera = std::make_shared<FileCamera>();
    camera->directory = std::filesystem::path(path).parent_path().string();
    camera->settings = *settings;
    camera->source = settings->source;
    for (std::size_t source = 0; source < kFileSources; ++source) {
        const std::string& rule = settings->files.at(source);
        if (rule.empty()) continue;
        camera->sources.at(source) = OpenSource(*camera, rule, error);
        if (!camera->sources.at(source)) return nullptr;
    }
    error = MakeAlike(camera->sources);
    if (!error.empty()) return nullptr;
    camera->head =
        PowerUpHead(settings->model, settings->clockHz, static_cast<std::int32_t>(camera->InFront().Columns()),
                    static_cast<std::int32_t>(camera->InFront().Rows()));
    camera->startUs = TickUs();
    return camera;
}

}  // namespace

std::shared_ptr<FileCamera> OpenFileCamera(const std::string& file, std::string& error)
{
    error.clear();
    const std::string path = CanonicalPath(PathIn(DefaultDir, file));
    std::shared_ptr<FileCamera>& camera = Cameras()[path];
    if (!camera) camera = MakeCamera(path, error);
    if (!camera) {
        Cameras().erase(path);
        return nullptr;
    }
    current = camera;
    return current;
}

std::shared_ptr<FileCamera> CurrentFileCamera()
{
    return current;
}

std::vector<std::uint8_t> AnswerFileFrame(FileCamera& camera, const WireFrame& frame)
{
    const std::scoped_lock lock(camera.mutex);
    constexpr std::uint8_t kRefusal = 0x69;
    if (FaultIsSet("head silent")) return {};
    if (FaultIsSet("head refuses")) return {kRefusal, frame[1], frame[2], frame[3]};
    TakeHeadFrame(camera.head, frame);
    const WireFrame answer = HeadAnswer(camera.head, frame);
    return {answer.begin(), answer.end()};
}

std::vector<std::pair<std::string, double>> FileHeadRegisters(const FileCamera& camera)
{
    const std::scoped_lock lock(camera.mutex);
    return NamedRegisters(camera.head);
}

FileSource FileSourceInFront(const FileCamera& camera)
{
    const std::scoped_lock lock(camera.mutex);
    return camera.source;
}

bool PutFileSource(FileCamera& camera, FileSource source)
{
    const std::scoped_lock lock(camera.mutex);
    if (!camera.sources.at(static_cast<std::size_t>(source))) return false;
    const std::int64_t played = FilePlayed(camera, TickUs());
    camera.source = source;
    camera.numbersBefore = played;
    camera.startUs = TickUs();
    return true;
}

std::string SetFileOfSource(FileCamera& camera, FileSource source, const std::string& rule)
{
    std::string error;
    std::optional<RecordedSource> opened = OpenSource(camera, rule, error);  // which may take a while: frames go on
    if (!opened) return error;
    const std::scoped_lock lock(camera.mutex);
    const std::int64_t played = FilePlayed(camera, TickUs());
    std::optional<RecordedSource>& place = camera.sources.at(static_cast<std::size_t>(source));
    std::swap(place, opened);
    error = MakeAlike(camera.sources);
    if (!error.empty()) {
        std::swap(place, opened);
        return error;
    }
    if (source != camera.source) return {};
    camera.numbersBefore = played;
    camera.startUs = TickUs();
    return {};
}

namespace {

bool HasEnded(const FileCamera& camera)
{
    const PlayTimes& times = camera.InFront().Times();
    return !times.loops && TickUs() - camera.startUs >= times.frames.back().us + times.periodUs;
}

}  // namespace

FileSourceState StateOfSource(const FileCamera& camera, FileSource source)
{
    const std::scoped_lock lock(camera.mutex);
    const auto& recorded = camera.sources.at(static_cast<std::size_t>(source));
    if (!recorded) return {};
    FileSourceState state{.name = recorded->Name(),
                          .frames = recorded->Frames(),
                          .lost = recorded->Lost(),
                          .columns = static_cast<std::int64_t>(recorded->Columns()),
                          .rows = static_cast<std::int64_t>(recorded->Rows()),
                          .rateHz = recorded->RateHz()};
    if (source != camera.source) return state;
    const auto last = LastPlayed(recorded->Times(), TickUs() - camera.startUs);
    state.playing = last ? last->which + 1 : 0;
    state.ended = HasEnded(camera);
    return state;
}

void BeginRecording(FileCamera& camera)
{
    const std::scoped_lock lock(camera.mutex);
    PutFileSource(camera, camera.source);
}

std::int64_t FilePlayed(const FileCamera& camera, std::int64_t atUs)
{
    const std::scoped_lock lock(camera.mutex);
    const auto last = LastPlayed(camera.InFront().Times(), atUs - camera.startUs);
    return camera.numbersBefore + (last ? last->number : 0);
}

std::optional<FileFrame> NextFileFrame(const FileCamera& camera, std::int64_t after)
{
    const std::scoped_lock lock(camera.mutex);
    const auto next = NextPlayed(camera.InFront().Times(), after - camera.numbersBefore);
    if (!next) return std::nullopt;
    return FileFrame{.number = camera.numbersBefore + next->number, .us = camera.startUs + next->us};
}

void AskFileWindow(FileCamera& camera, std::int32_t columns, std::int32_t rows)
{
    const std::scoped_lock lock(camera.mutex);
    camera.askedColumns = columns;
    camera.askedRows = rows;
}

bool ReadFileFrame(FileCamera& camera, std::int64_t number, std::int32_t width, std::int32_t height,
                   std::span<std::int16_t> out)
{
    const std::scoped_lock lock(camera.mutex);
    RecordedSource& source = camera.InFront();
    const std::int64_t wanted = number - camera.numbersBefore;
    const auto moment = NextPlayed(source.Times(), wanted - 1);
    if (wanted < 1 || !moment || moment->number != wanted) return false;
    const auto columns = static_cast<std::size_t>(width);
    const auto rows = static_cast<std::size_t>(height);
    if (columns == source.Columns() && rows == source.Rows()) return source.Read(moment->which, out);

    camera.whole.resize(source.Columns() * source.Rows());
    if (!source.Read(moment->which, camera.whole)) return false;
    std::ranges::fill(out, std::int16_t{0});
    const std::size_t shown = std::min(columns, source.Columns());
    for (std::size_t row = 0; row < std::min(rows, source.Rows()); ++row) {
        std::ranges::copy(std::span(camera.whole).subspan(row * source.Columns(), shown),
                          out.subspan(row * columns, shown).begin());
    }
    return true;
}

CameraReport ReportOfFile(const FileCamera& camera)
{
    const std::scoped_lock lock(camera.mutex);
    const RecordedSource& source = camera.InFront();
    CameraReport report;
    report.rateHz = source.RateHz();
    report.integrationMs = source.IntegrationMs();
    report.columns = static_cast<std::int32_t>(source.Columns());
    report.rows = static_cast<std::int32_t>(source.Rows());
    report.clock = "CLOCK_MONOTONIC and the system's UTC, as " + source.Name() + " was played again";
    report.counts = source.Changes();
    if (HasEnded(camera)) {
        report.link = CameraLink::kLost;
        report.linkText = source.Name() + " has ended: no more frames come";
    }
    return report;
}

namespace {

bool IsNear(double asked, double recorded, double part)
{
    return std::fabs(asked - recorded) <= part * recorded;
}

std::string RateNote(const FileCamera& camera)
{
    const RecordedSource& source = camera.InFront();
    const double periodSeconds = FramePeriodSeconds(camera.head);
    if (!source.Times().rateIsKnown) {
        return Format("%s doesn't tell its frame rate: it is played at %.2f Hz.", source.Name().c_str(),
                      source.RateHz());
    }
    if (periodSeconds <= 0 || IsNear(1 / periodSeconds, source.RateHz(), kSameRate)) return {};
    return Format("%s is played at %.2f Hz. The head was set to %.2f Hz.", source.Name().c_str(), source.RateHz(),
                  1 / periodSeconds);
}

std::string IntegrationNote(const FileCamera& camera)
{
    const RecordedSource& source = camera.InFront();
    if (FramePeriodSeconds(camera.head) <= 0) return {};
    const double askedMs = IntegrationSeconds(camera.head) * kMsPerSecond;
    const std::optional<double> recordedMs = source.IntegrationMs();
    if (!recordedMs) {
        return source.Name() + " doesn't tell its integration time: that of the head's settings is shown.";
    }
    if (IsNear(askedMs, *recordedMs, kSameIntegration)) return {};
    return Format("The integration time is that of %s, %.3f ms. The head was set to %.3f ms.", source.Name().c_str(),
                  *recordedMs, askedMs);
}

std::string WindowNote(const FileCamera& camera)
{
    const RecordedSource& source = camera.InFront();
    const auto columns = static_cast<std::size_t>(camera.askedColumns);
    const auto rows = static_cast<std::size_t>(camera.askedRows);
    if (columns == 0 || (columns == source.Columns() && rows == source.Rows())) return {};
    return Format("The frames of %s are %zu x %zu. The window was set to %zu x %zu: what they don't fill is 0.",
                  source.Name().c_str(), source.Columns(), source.Rows(), columns, rows);
}

}  // namespace

std::vector<std::string> TakeFileNotes(FileCamera& camera)
{
    const std::scoped_lock lock(camera.mutex);
    const std::array<std::string, kTopics> now{RateNote(camera), IntegrationNote(camera), WindowNote(camera)};
    std::vector<std::string> notes;
    for (std::size_t topic = 0; topic < kTopics; ++topic) {
        if (!now.at(topic).empty() && now.at(topic) != camera.told.at(topic)) notes.push_back(now.at(topic));
    }
    camera.told = now;
    return notes;
}

void ForgetFileCameras()
{
    current = nullptr;
    Cameras().clear();
}

}  // namespace kelvo
