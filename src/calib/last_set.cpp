#include "calib/last_set.h"

#include "platform/box.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "state/windows.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <vector>

namespace kelvo {

namespace {

constexpr std::size_t kLongestJournal = 65536;

// What is replaced as one thing: the .cal last.
constexpr auto kReplacedExtensions = [] {
    std::array<std::string_view, kSetExtensions.size() + 1> all{kReportExtension};
    std::ranges::copy(kSetExtensions, all.begin() + 1);
    return all;
}();

// Copying: the set is untouched. Replacing: the copies hold. Replaced: the files in place hold.
constexpr std::string_view kCopying = "copying";
constexpr std::string_view kReplacing = "replacing";
constexpr std::string_view kReplaced = "replaced";

struct Journal {
    std::string state;
    std::vector<std::string> present;  // extensions of the files that lie aside
    std::string calPath;
};

std::string BesideSettings(std::string_view name, std::string_view extension)
{
    std::string drive;
    std::string directory;
    SplitPath(IniFilePath, &drive, &directory, nullptr, nullptr);
    return MakePath(drive, directory, name, extension);
}

std::string JournalPath()
{
    return BesideSettings(".calibration", ".journal");
}

// Where a file lies aside: beside its place, so that it comes back by a rename, which no full disk can stop.
std::string AsideFile(std::string_view calPath, std::string_view extension)
{
    std::string drive;
    std::string directory;
    std::string name;
    SplitPath(calPath, &drive, &directory, &name, nullptr);
    return MakePath(drive, directory, "." + name + std::string(extension), ".former");
}

// First line: state and extensions, parted by blanks; the rest is the path, whatever bytes it has.
bool WriteJournal(const Journal& journal)
{
    std::string text = journal.state;
    for (const std::string& extension : journal.present) text += ' ' + extension;
    return ReplaceFile(JournalPath(), text + '\n' + journal.calPath);
}

std::optional<Journal> JournalOf(const std::string& text)
{
    const std::size_t end = text.find('\n');
    if (end == std::string::npos) return std::nullopt;
    Journal journal;
    journal.calPath = text.substr(end + 1);
    std::string_view line = std::string_view(text).substr(0, end);
    const std::size_t stateEnd = std::min(line.find(' '), line.size());
    journal.state = line.substr(0, stateEnd);
    line.remove_prefix(stateEnd);
    for (const std::string_view extension : kReplacedExtensions) {
        if (line.find(extension) != std::string_view::npos) journal.present.emplace_back(extension);
    }
    return journal;
}

std::optional<Journal> ReadJournal()
{
    const std::optional<std::string> text = ReadWholeFile(JournalPath(), kLongestJournal);
    return text ? JournalOf(*text) : std::nullopt;
}

bool HoldsExtension(const Journal& journal, std::string_view extension)
{
    return std::ranges::find(journal.present, extension) != journal.present.end();
}

void DropAside(std::string_view calPath)
{
    for (const std::string_view extension : kReplacedExtensions) {
        const std::string aside = AsideFile(calPath, extension);
        if (FileExists(aside)) DeleteFileNamed(aside);
    }
}

bool Gone(const std::string& path)
{
    return !FileExists(path) || DeleteFileNamed(path);
}

// On a disk that isn't there now.
bool OutOfReach(const Journal& journal)
{
    std::string drive;
    std::string directory;
    SplitPath(journal.calPath, &drive, &directory, nullptr, nullptr);
    return !DirectoryExists(drive + directory);
}

// A copy that isn't there any more is back in its place: this may have been begun before.
bool PutBack(const Journal& journal, std::string_view extension)
{
    const std::string file = SetFile(journal.calPath, extension);
    if (!HoldsExtension(journal, extension)) return Gone(file);
    const std::string aside = AsideFile(journal.calPath, extension);
    return !FileExists(aside) || MoveFileTo(aside, file);
}

// The .cal goes first and comes back last: in between there is no set to load. Where it is back already, so is all
// else.
bool PutAllBack(const Journal& journal)
{
    if (OutOfReach(journal)) return false;
    if (HoldsExtension(journal, ".cal") && !FileExists(AsideFile(journal.calPath, ".cal"))) return true;
    bool done = Gone(SetFile(journal.calPath, ".cal"));
    for (const std::string_view extension : kReplacedExtensions) done = done && PutBack(journal, extension);
    return done;
}

bool Finish(const Journal& journal)
{
    if (journal.state == kReplacing && !PutAllBack(journal)) return false;
    for (const std::string_view extension : kReplacedExtensions) ForgetProfile(SetFile(journal.calPath, extension));
    DropAside(journal.calPath);
    return Gone(JournalPath());
}

// False where copies of an earlier replacement still wait to be put back.
bool FinishEarlierOne()
{
    const std::string path = JournalPath();
    const std::optional<std::string> text = ReadWholeFile(path, kLongestJournal);
    if (!text && errno != EFBIG) return !FileExists(path);  // the copies wait until it can be read
    const std::optional<Journal> journal = text ? JournalOf(*text) : std::nullopt;
    return journal ? Finish(*journal) : Gone(path);  // one that makes no sense tells nothing
}

// Files out of reach don't keep the operator from the next calibration: the start told of them, and their copies stay.
bool ReadyForAnother()
{
    if (FinishEarlierOne()) return true;
    const std::optional<Journal> journal = ReadJournal();
    return journal && OutOfReach(*journal);
}

// The files that lie aside now; nullopt where one couldn't be copied.
std::optional<std::vector<std::string>> CopyAside(const std::string& calPath)
{
    std::vector<std::string> present;
    for (const std::string_view extension : kReplacedExtensions) {
        const std::string file = SetFile(calPath, extension);
        if (!FileExists(file)) continue;
        if (!CopyFileTo(file, AsideFile(calPath, extension), false)) return std::nullopt;
        present.emplace_back(extension);
    }
    return present;
}

}  // namespace

std::string SetFile(std::string_view calPath, std::string_view extension)
{
    std::string drive;
    std::string directory;
    std::string name;
    SplitPath(calPath, &drive, &directory, &name, nullptr);
    return MakePath(drive, directory, name, extension);
}

bool IsCalFile(std::string_view path)
{
    std::string name;
    std::string extension;
    SplitPath(path, nullptr, nullptr, &name, &extension);
    return !name.empty() && EqualIgnoringCase(extension, ".cal");
}

std::string LastCalPath()
{
    return BesideSettings("Last", ".cal");
}

int CopySettingsTo(std::string_view calPath)
{
    if (!FlushProfiles() || !CopyFileTo(IniFilePath, calPath, false)) return 0;
    ForgetProfile(calPath);
    return 1;
}

SetReplacement::SetReplacement(std::string_view calPath) : calPath_(AbsolutePath(calPath)) {}

SetReplacement::~SetReplacement()
{
    RollBack();
}

int SetReplacement::Begin()
{
    if (begun_ || !ReadyForAnother()) return 0;
    if (!WriteJournal({std::string(kCopying), {}, calPath_})) return 0;
    const auto present = CopyAside(calPath_);
    begun_ = present && WriteJournal({std::string(kReplacing), *present, calPath_});
    if (begun_) return 1;
    DropAside(calPath_);
    DeleteFileNamed(JournalPath());
    return 0;
}

int SetReplacement::Commit()
{
    if (!begun_) return 0;
    if (!WriteJournal({std::string(kReplaced), {}, calPath_})) {
        RollBack();
        return 0;
    }
    begun_ = false;
    FinishEarlierOne();  // what stays behind is cleared away at the next start
    return 1;
}

void SetReplacement::RollBack()
{
    if (!begun_) return;
    begun_ = false;
    FinishInterruptedReplacement();
}

int FinishInterruptedReplacement()
{
    if (FinishEarlierOne()) return 1;
    const std::optional<Journal> journal = ReadJournal();
    MessageBox(hWndMain,
               "The files of this calibration couldn't be put back:\n" + (journal ? journal->calPath : JournalPath()),
               "Kelvo File Error!");
    return 0;
}

}  // namespace kelvo
