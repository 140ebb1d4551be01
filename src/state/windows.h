// The main window's handles and sizes, and the paths that start-up forms: read by everyone.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {

// Null before the start has made them, and in programs without windows.
extern const HWND& hWndMain;
extern const HWND& hWndStatus;
extern const HWND& hDlgPanel;  // the control panel

// Of the main window, logical pixels; 0 before there is one. TextHeight is that of the status line.
extern const std::int16_t& ClientWidth;
extern const std::int16_t& ClientHeight;
extern const std::int16_t& TextHeight;
// What the picture has: the client width, and the client height less 60. 0 before a camera section was read.
extern const std::int32_t& ViewWidth;
extern const std::int32_t& ViewHeight;

// The program's directory, whole, without a closing separator; empty before the start has found it.
extern const std::string& DefaultDir;
// Where the program's own notes lie (recent files, the windows' place, logs), and copies that can be made again. Whole;
// DefaultDir where a start keeps all in one directory.
extern const std::string& StateDir;
extern const std::string& CacheDir;
// Formed from DefaultDir: kelvo.ini, camera.ini, buffbrd.ini, a.seq, KELVO.hlp.
extern const std::string& IniFilePath;
extern const std::string& CameraFilePath;
extern const std::string& BuffBrdFilePath;
extern const std::string& SeqFilePath;
extern const std::string& HelpFilePath;
// Start empty: the name buffer of the save dialogs, the file last shown with success, the board's configuration file.
extern const std::string& FilePathBuf;
extern const std::string& ViewFilePath;
extern const std::string& CnfFilePath;

// 1: the next command shows its help instead of running.
extern const std::int32_t& HelpMode;

}  // namespace kelvo
