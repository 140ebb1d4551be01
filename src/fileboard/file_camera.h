// The camera that is made of recorded frames: one thing behind the head's wire protocol and the board. A camera is
// known by its file (fileboard/file_settings.h); whoever opens the same file gets the same camera, and the head keeps
// its registers when its link closes.
//
// The head acknowledges and keeps whatever it is sent. Window, frame rate and integration time are the recording's all
// the same, and what was asked otherwise is noted for the operator.
//
// While a capture runs, its thread reads frames and the main thread answers for the head and moves the bench: each call
// here on a camera has it to itself. Cameras are opened and forgotten by the main thread while no capture runs.
#pragma once

#include "fileboard/file_settings.h"
#include "grabber/copm2.h"
#include "wirehead/head_registers.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

struct FileCamera;

// The camera of a file in DefaultDir (or of a whole path), its recordings opened. Null, with what is wrong in error,
// where the file or one of the recordings can't be used.
std::shared_ptr<FileCamera> OpenFileCamera(const std::string& file, std::string& error);
// The one opened last; null: none.
std::shared_ptr<FileCamera> CurrentFileCamera();

// What the head answers to a frame of four bytes. Faults as the simulated head's (platform/faults.h): "head silent",
// "head refuses".
std::vector<std::uint8_t> AnswerFileFrame(FileCamera& camera, const WireFrame& frame);
// What the head's registers hold (NamedRegisters).
std::vector<std::pair<std::string, double>> FileHeadRegisters(const FileCamera& camera);

// The bench. A source stands in front of the camera until another is chosen; its recording begins when it is put there,
// also where it stood there before. False, and nothing changes, for a source without a file.
FileSource FileSourceInFront(const FileCamera& camera);
bool PutFileSource(FileCamera& camera, FileSource source);
// Another file, or several by a rule, for a source; empty, or why not, and then the former one stays. What the
// camera's file names stays as it is. The recordings of one camera have frames of one size.
std::string SetFileOfSource(FileCamera& camera, FileSource source, const std::string& rule);

// What the bench shows of a source; name is empty where it has no file.
struct FileSourceState {
    std::string name;
    std::int64_t frames = 0;
    std::int64_t lost = 0;  // in its gaps, each round
    std::int64_t columns = 0;
    std::int64_t rows = 0;
    double rateHz = 0;
    std::int64_t playing = 0;  // the number of the frame that was complete last, from 1; 0: none, or not in front
    bool ended = false;
};
FileSourceState StateOfSource(const FileCamera& camera, FileSource source);

// --- The board's side. Frames have numbers from 1 since the camera was opened; those lost in a gap have theirs too.

// The recording in front begins with its first frame, a frame period from now on.
void BeginRecording(FileCamera& camera);
std::int64_t FilePlayed(const FileCamera& camera, std::int64_t atUs);  // the number of the last frame; 0: none yet
// The first frame with a number above `after`, and when it is complete; nullopt: none comes any more.
struct FileFrame {
    std::int64_t number = 0;
    std::int64_t us = 0;
};
std::optional<FileFrame> NextFileFrame(const FileCamera& camera, std::int64_t after);
// The window that the program reads: noted where the recording has another.
void AskFileWindow(FileCamera& camera, std::int32_t columns, std::int32_t rows);
// The frame of a number that FilePlayed or NextFileFrame gave, width x height values of it, what it doesn't cover 0.
// False: it can't be read, or belongs to a recording that isn't in front any more.
bool ReadFileFrame(FileCamera& camera, std::int64_t number, std::int32_t width, std::int32_t height,
                   std::span<std::int16_t> out);

CameraReport ReportOfFile(const FileCamera& camera);
// What was asked of the head and is the recording's, told once each.
std::vector<std::string> TakeFileNotes(FileCamera& camera);

// Makes "file:NAME.cnf" ports known to platform/serial.h, and the board "file" to grabber/copm2.h.
void RegisterFileHeads();
void RegisterFileBoard();

// The board as it comes up: no camera, no frame.
void ResetFileBoard();
// No camera made so far; who holds one keeps it.
void ForgetFileCameras();

}  // namespace kelvo
