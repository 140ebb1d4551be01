// A calibration set's files replaced as one thing.
//
// A set is up to six files of one name, and its report. Who is about to write any of them, a calibration run into
// "Last", an update into the set in force, a save under another name, first has the former files copied aside:
//
//     SetReplacement last(LastCalPath());
//     if (!last.Begin()) ...               // nothing has changed; tell the operator
//     ... write the files at their own places, SetFile(LastCalPath(), ".gai") and so on, the .cal at the end ...
//     if (!last.Commit()) ...              // from here on the new files hold; on 0 the former ones are back
//
// Without a Commit the former files come back at the end of the scope, and files that weren't there before go. A
// process that ends in between leaves a journal in the settings' directory: the next start puts the former files back,
// or, after a Commit, clears their copies away. A reader that opens a set while it is being written finds either.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace kelvo {

// Gains, offsets, noise, decommutation, bad detectors, and the settings that name them: the order in which a set is
// written, so that a .cal never stands before its lists.
inline constexpr std::array<std::string_view, 6> kSetExtensions = {".gai", ".off", ".noi", ".dcm", ".bad", ".cal"};
// The report of the run that made it (calib/report_file.h), which is replaced with the set; one without it is whole.
inline constexpr std::string_view kReportExtension = ".report.txt";

// The file of that extension in the set of a .cal file: same directory, same name.
std::string SetFile(std::string_view calPath, std::string_view extension);
// A path that a set's settings file may have.
bool IsCalFile(std::string_view path);
// "Last.cal" in the directory of kelvo.ini, and the other files of that set.
std::string LastCalPath();
inline std::string LastSetFile(std::string_view extension)
{
    return SetFile(LastCalPath(), extension);
}

// Copies kelvo.ini, with all that is pending for it, to a .cal file: whole, or the file stays as it was. 1 or 0;
// nothing is told beyond what FlushProfiles tells.
int CopySettingsTo(std::string_view calPath);

class SetReplacement {
  public:
    explicit SetReplacement(std::string_view calPath);
    ~SetReplacement();
    SetReplacement(const SetReplacement&) = delete;
    SetReplacement& operator=(const SetReplacement&) = delete;

    // 1 once the former files lie aside; 0, nothing changed, where that failed (a full disk, no permission), or where
    // an earlier replacement couldn't be finished. One on a disk that isn't there any more is given up: its former
    // files stay there as ".NAME.gai.former" and so on. Nothing is told. One replacement at a time.
    int Begin();
    // 1: the files as they stand now are the set. 0: that couldn't be written down, and the former files are back.
    int Commit();
    // The former files come back now.
    void RollBack();

  private:
    std::string calPath_;
    bool begun_ = false;
};

// Finishes or undoes what an ended process left half done; at start-up, before anything reads a set. 1, also where
// there was nothing to do; 0 where files couldn't be put back (told in a box, tried again at the next start).
int FinishInterruptedReplacement();

}  // namespace kelvo
