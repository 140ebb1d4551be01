#include "fileboard/recorded_source.h"

#include "fileboard/file_settings.h"
#include "platform/files.h"
#include "platform/text.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace kelvo {

namespace {

constexpr float kLongestToldMs = 1e6F;  // beyond it a header holds something else
constexpr std::string_view kWildcards = "*?";

bool FitsPattern(std::string_view name, std::string_view pattern)
{
    // The last star takes one character more each time that what follows it doesn't fit.
    std::size_t at = 0;
    std::size_t in = 0;
    std::optional<std::size_t> star;
    std::size_t taken = 0;
    while (at < name.size()) {
        if (in < pattern.size() && (pattern[in] == '?' || pattern[in] == name[at]) && pattern[in] != '*') {
            ++at;
            ++in;
        } else if (in < pattern.size() && pattern[in] == '*') {
            star = in++;
            taken = at;
        } else if (star) {
            in = *star + 1;
            at = ++taken;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', in) == std::string_view::npos;
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The digits at the front without leading zeros, taken off the text.
std::string_view TakeDigits(std::string_view& text)
{
    const auto* const end = std::ranges::find_if_not(text, IsDigit);
    std::string_view digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(digits.size());
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    return digits;
}

// Numbers by their value, all else by its bytes.
bool ComesBefore(std::string_view a, std::string_view b)
{
    const std::pair whole(a, b);
    while (!a.empty() && !b.empty()) {
        if (IsDigit(a.front()) && IsDigit(b.front())) {
            const std::string_view first = TakeDigits(a);
            const std::string_view second = TakeDigits(b);
            if (first.size() != second.size()) return first.size() < second.size();
            if (first != second) return first < second;
        } else {
            if (a.front() != b.front()) return a.front() < b.front();
            a.remove_prefix(1);
            b.remove_prefix(1);
        }
    }
    if (a.empty() != b.empty()) return a.empty();
    return whole.first < whole.second;
}

// Journals are no frames, whatever a rule says.
bool IsJournal(std::string_view name)
{
    return name.ends_with(".frames");
}

bool HasFlag(const FrameRecord* record, FrameFlag flag)
{
    return record && (record->flags & flag) != 0;
}

}  // namespace

std::vector<std::string> FilesOfRule(const std::string& rule)
{
    const std::string name(FileNameOf(rule));
    if (name.find_first_of(kWildcards) == std::string::npos) return {rule};
    const std::string directory = ResolvePath(rule.substr(0, rule.size() - name.size()));
    std::vector<std::string> names;
    std::error_code failed;
    std::filesystem::directory_iterator entry(directory.empty() ? "." : directory, failed);
    for (; !failed && entry != std::filesystem::directory_iterator(); entry.increment(failed)) {
        std::string found = entry->path().filename().string();
        std::error_code ignored;
        if (FitsPattern(found, name) && !IsJournal(found) && entry->is_regular_file(ignored)) {
            names.push_back(std::move(found));
        }
    }
    std::ranges::sort(names, ComesBefore);
    for (std::string& found : names) found.insert(0, rule.substr(0, rule.size() - name.size()));
    return names;
}

std::optional<RecordedSource> RecordedSource::Open(const std::string& rule, double rateHz, bool loops,
                                                   std::string& error)
{
    const std::vector<std::string> paths = FilesOfRule(rule);
    if (paths.empty() || paths.size() > kMostFilesOfASource) {
        error = Format("%s names %s: 1 to %zu can be played.", rule.c_str(),
                       paths.empty() ? "no file" : Format("%zu files", paths.size()).c_str(), kMostFilesOfASource);
        return std::nullopt;
    }
    RecordedSource source;
    source.name_ = FileNameOf(paths.front());
    if (paths.size() > 1) source.name_ += Format(" and %zu more", paths.size() - 1);
    if (!source.OpenFiles(paths, error) || !source.AreAlike(error)) return std::nullopt;

    const float headerHz = source.files_.front().Header().FrameRate;
    const bool isRate = double{headerHz} >= kSlowestPlayHz && double{headerHz} <= kFastestPlayHz;
    source.times_ = TimesOf(source.RecordedTimes(), rateHz, isRate ? static_cast<double>(headerHz) : 0, loops);
    source.FindIntegration();
    return source;
}

bool RecordedSource::OpenFiles(const std::vector<std::string>& paths, std::string& error)
{
    std::int64_t frames = 0;
    for (const std::string& path : paths) {
        std::string why;
        std::optional<StoredFrames> file = StoredFrames::Open(path, why);
        if (!file) {
            error = Format("%s %s.", path.c_str(), why.c_str());
            return false;
        }
        if (file->AreCorrected()) {
            error = path + " holds corrected frames: a camera's are raw.";
            return false;
        }
        firstOf_.push_back(frames);
        frames += file->Frames();
        files_.push_back(std::move(*file));
    }
    return true;
}

bool RecordedSource::AreAlike(std::string& error)
{
    for (const StoredFrames& file : files_) {
        if (file.Columns() == Columns() && file.Rows() == Rows()) continue;
        error = Format("%s has frames of %zu x %zu, %s of %zu x %zu: a camera's have one size.", file.Path().c_str(),
                       file.Columns(), file.Rows(), files_.front().Path().c_str(), Columns(), Rows());
        return false;
    }
    if (!AreLowered() || Lower()) return true;
    error = name_ + ": samples above 32767, which are taken 32768 lower, can't stand beside samples with a sign.";
    return false;
}

std::vector<RecordedTime> RecordedSource::RecordedTimes() const
{
    std::vector<RecordedTime> times;
    for (const StoredFrames& file : files_) {
        const std::size_t first = times.size();
        for (std::int64_t frame = 0; frame < file.Frames(); ++frame) {
            const FrameRecord* const record = file.RecordOf(frame);
            const bool isFirst = frame == 0 && !HasFlag(record, kFirstOfPart);
            times.push_back({.monotonicNs = record ? record->monotonicNs : 0,
                             .beginsAnew = (first > 0 && isFirst) || HasFlag(record, kFirstOfRun)});
        }
        if (!file.Journal()) continue;
        for (const FrameGap& gap : GapsOf(file.Journal()->records)) {
            const std::size_t place = first + static_cast<std::size_t>(gap.beforeFrame);
            // What was left out on purpose is no loss, and what is missing before the first frame is nobody's.
            if (place == 0 || place >= times.size()) continue;
            times[place].missing = gap.Missing() - gap.passedOver;
        }
    }
    return times;
}

void RecordedSource::FindIntegration()
{
    const FrameRecord* const record = files_.front().RecordOf(0);
    float told = files_.front().Header().IntegrationMsec;
    if (record && record->integrationMs > 0) told = record->integrationMs;
    if (told > 0 && told < kLongestToldMs) integrationMs_ = static_cast<double>(told);
}

bool RecordedSource::AreLowered() const
{
    return std::ranges::any_of(files_, &StoredFrames::AreLowered);
}

bool RecordedSource::CanBeLowered() const
{
    return std::ranges::all_of(files_, &StoredFrames::CanBeLowered);
}

bool RecordedSource::Lower()
{
    return CanBeLowered() && std::ranges::all_of(files_, &StoredFrames::Lower);
}

bool RecordedSource::Read(std::int64_t frame, std::span<std::int16_t> counts)
{
    if (frame < 0 || frame >= Frames()) return false;
    const auto file = static_cast<std::size_t>(std::ranges::upper_bound(firstOf_, frame) - firstOf_.begin()) - 1;
    std::string why;
    return files_[file].ReadCounts(frame - firstOf_[file], counts, why);
}

}  // namespace kelvo
