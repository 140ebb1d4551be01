// The main window's handles and sizes, and the paths that start-up forms: read by everyone.
#pragma once

#include "platform/types.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {

// Set by WinMain; null before and in programs without windows.
extern HWND hWndMain;
extern HWND hWndStatus;
extern HWND hDlgPanel;  // the control panel; set by PanelProc

// Logical pixels. The main window sets them at each WM_SIZE; TextHeight at WM_CREATE.
extern std::int16_t ClientWidth;
extern std::int16_t ClientHeight;
extern std::int16_t TextHeight;
// The client width, and the client height less 60; set by ReadCameraConfig.
extern std::int32_t ViewWidth;
extern std::int32_t ViewHeight;

// The program's directory, without a closing separator.
extern std::string DefaultDir;
// Formed from DefaultDir: kelvo.ini, camera.ini, buffbrd.ini, a.seq, KELVO.hlp.
extern std::string IniFilePath;
extern std::string CameraFilePath;
extern std::string BuffBrdFilePath;
extern std::string SeqFilePath;
extern std::string HelpFilePath;
// Start empty: the name buffer of the save dialogs, the file last shown with success, the board's configuration file.
extern std::string FilePathBuf;
extern std::string ViewFilePath;
extern std::string CnfFilePath;

// DefaultDir and the paths formed from it; the platform's "c:\KELVO" is the same directory (platform/files.h).
void SetDefaultDir(std::string_view directory);

// 1: the next command shows its help instead of running.
extern std::int32_t HelpMode;

}  // namespace kelvo
