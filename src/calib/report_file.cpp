#include "calib/report_file.h"

#include "calib/last_set.h"
#include "platform/box.h"
#include "platform/digest.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/text.h"
#include "state/windows.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace kelvo {

namespace {

constexpr std::size_t kLongestList = std::size_t{1} << 30;
constexpr std::size_t kLongestReport = std::size_t{1} << 26;
constexpr int kLargestSide = 65535;
constexpr std::string_view kDigestFact = "SHA-256 of the lists";
// The map's own part of the file: a line of sizes, a line a class, a blank line, a line a row, a blank line, and a line
// for each bad detector that another one answers for.
constexpr std::string_view kMapHeading = "\nMap of the detectors, as the picture was turned\n";
constexpr std::string_view kMarks = ".123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

// How the picture was turned, in words behind the sizes.
struct TurnWord {
    std::int32_t Orientation::*flag;
    std::string_view word;
};
constexpr TurnWord kTurnWords[] = {{&Orientation::mirrorHoriz, "; rows mirrored"},
                                   {&Orientation::mirrorVert, "; columns mirrored"},
                                   {&Orientation::rotateCcw, "; turned to the left"}};

std::string TurnText(const Orientation& turned)
{
    std::string text;
    for (const TurnWord& turn : kTurnWords) {
        if (turned.*turn.flag != 0) text += turn.word;
    }
    return text;
}

Orientation TurnIn(std::string_view text)
{
    Orientation turned;
    for (const TurnWord& turn : kTurnWords) turned.*turn.flag = text.find(turn.word) != std::string_view::npos ? 1 : 0;
    return turned;
}

std::string MapRows(const CalibrationReport& report)
{
    std::string text;
    const auto columns = static_cast<std::size_t>(report.columns);
    for (std::size_t i = 0; i < report.map.size(); ++i) {
        text += kMarks[report.map[i] < kMarks.size() ? report.map[i] : 0];
        if ((i + 1) % columns == 0) text += '\n';
    }
    return text;
}

std::string AnswerLines(const CalibrationReport& report)
{
    std::string text;
    const auto columns = static_cast<std::uint32_t>(report.columns);
    for (std::uint32_t i = 0; i < report.answers.size(); ++i) {
        const std::uint32_t answers = report.answers[i];
        if (answers == kNobodyAnswers) continue;
        text += Format("%u,%u by %u,%u\n", i % columns, i / columns, answers % columns, answers / columns);
    }
    return text;
}

std::string MapText(const CalibrationReport& report)
{
    if (report.map.empty() || report.columns <= 0) return {};
    std::string text(kMapHeading);
    text += Format("%d columns, %d rows; . is a good detector", report.columns, report.rows);
    text += TurnText(report.turned) + '\n';
    for (std::size_t i = 0; i < report.classes.size() && i + 1 < kMarks.size(); ++i) {
        const BadDetectorClass& entry = report.classes[i];
        text += Format("%c %06X %d %s\n", kMarks[i + 1], entry.color, entry.count, entry.name.c_str());
    }
    return text + '\n' + MapRows(report) + '\n' + AnswerLines(report);
}

// --- Reading --------------------------------------------------------------------------------------------------------

bool ReadSize(std::istream& lines, CalibrationReport& map)
{
    std::string line;
    std::string word;
    if (!std::getline(lines, line)) return false;
    map.turned = TurnIn(line);
    std::istringstream words(line);
    return words >> map.columns >> word >> map.rows && map.columns > 0 && map.rows > 0 && map.columns <= kLargestSide &&
           map.rows <= kLargestSide;
}

bool ReadClasses(std::istream& lines, CalibrationReport& map)
{
    for (std::string line; std::getline(lines, line) && !line.empty();) {
        std::istringstream words(line);
        char mark = 0;
        BadDetectorClass entry;
        if (!(words >> mark >> std::hex >> entry.color >> std::dec >> entry.count >> std::ws)) return false;
        std::getline(words, entry.name);
        map.classes.push_back(std::move(entry));
    }
    return map.classes.size() < kMarks.size();
}

bool ReadRows(std::istream& lines, CalibrationReport& map)
{
    const auto columns = static_cast<std::size_t>(map.columns);
    if (!AllocateBlock(map.map, columns * static_cast<std::size_t>(map.rows))) return false;
    auto mark = map.map.begin();
    for (int row = 0; row < map.rows; ++row) {
        std::string line;
        if (!std::getline(lines, line) || line.size() != columns) return false;
        for (const char letter : line) {
            const std::size_t place = kMarks.find(letter);
            if (place == std::string_view::npos || place > map.classes.size()) return false;
            *mark++ = static_cast<std::uint8_t>(place);
        }
    }
    return true;
}

bool ReadAnswers(std::istream& lines, CalibrationReport& map)
{
    if (!AllocateBlock(map.answers, map.map.size())) return false;
    std::ranges::fill(map.answers, kNobodyAnswers);
    const auto index = [&](unsigned column, unsigned row) -> std::size_t {
        const bool inside = std::cmp_less(column, map.columns) && std::cmp_less(row, map.rows);
        return inside ? std::size_t{row} * static_cast<std::size_t>(map.columns) + column : map.map.size();
    };
    for (std::string line; std::getline(lines, line);) {
        unsigned column = 0;
        unsigned row = 0;
        unsigned byColumn = 0;
        unsigned byRow = 0;
        char comma = 0;
        std::string by;
        std::istringstream words(line);
        if (!(words >> column >> comma >> row >> by >> byColumn >> comma >> byRow)) continue;
        const std::size_t bad = index(column, row);
        const std::size_t good = index(byColumn, byRow);
        if (bad < map.map.size() && good < map.map.size()) map.answers[bad] = static_cast<std::uint32_t>(good);
    }
    return true;
}

// The map as far as it can be read whole.
CalibrationReport ReadMap(const std::string& text)
{
    std::istringstream lines(text);
    std::string blank;
    CalibrationReport map;
    if (!ReadSize(lines, map) || !ReadClasses(lines, map) || !ReadRows(lines, map)) {
        map.map.clear();
        return map;
    }
    std::getline(lines, blank);
    if (!ReadAnswers(lines, map)) map.answers.clear();
    return map;
}

std::string DigestIn(const std::string& text)
{
    const std::size_t start = text.find(kDigestFact);
    if (start == std::string::npos) return {};
    std::istringstream words(text.substr(start + kDigestFact.size()));
    std::string digest;
    words >> digest;
    return digest;
}

}  // namespace

std::string ReportPath(std::string_view calPath)
{
    return SetFile(calPath, kReportExtension);
}

std::string ListsDigest(std::string_view calPath)
{
    std::string bytes;
    for (const std::string_view extension : {".gai", ".off", ".dcm"}) {
        const std::optional<std::string> list = ReadWholeFile(SetFile(calPath, extension), kLongestList);
        if (!list) return {};
        bytes += *list;
    }
    return Sha256Of(bytes);
}

int SaveReport(const CalibrationReport& report)
{
    CalibrationReport recorded = report;
    if (std::string digest = ListsDigest(report.calPath); !digest.empty()) {
        recorded.facts.emplace_back(kDigestFact, std::move(digest));
    }
    const std::string path = ReportPath(report.calPath);
    if (ReplaceFile(path, ToUtf8(ReportText(recorded)) + ToUtf8(MapText(recorded)))) return 1;
    MessageBox(hWndMain, "Failed to save file: " + path, kMessageCaption);
    if (FileExists(path)) DeleteFileNamed(path);
    return 0;
}

std::optional<StoredReport> ReadReport(std::string_view calPath)
{
    std::optional<std::string> contents = ReadWholeFile(ReportPath(calPath), kLongestReport);
    if (!contents) return std::nullopt;
    StoredReport stored;
    const std::size_t end = contents->find(kMapHeading);
    stored.text = contents->substr(0, end);
    stored.digest = DigestIn(stored.text);
    if (end != std::string::npos) stored.map = ReadMap(contents->substr(end + kMapHeading.size()));
    stored.map.title = stored.text.substr(0, stored.text.find('\n'));
    return stored;
}

}  // namespace kelvo
