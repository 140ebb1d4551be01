#include "state/windows.h"

#include "platform/files.h"

namespace kelvo {

HWND hWndMain = nullptr;
HWND hWndStatus = nullptr;
HWND hDlgPanel = nullptr;

std::int16_t ClientWidth = 0;
std::int16_t ClientHeight = 0;
std::int16_t TextHeight = 0;
std::int32_t ViewWidth = 0;
std::int32_t ViewHeight = 0;

std::string DefaultDir;
std::string IniFilePath;
std::string CameraFilePath;
std::string BuffBrdFilePath;
std::string SeqFilePath;
std::string HelpFilePath;
std::string FilePathBuf;
std::string ViewFilePath;
std::string CnfFilePath;

std::int32_t HelpMode = 0;

void SetDefaultDir(std::string_view directory)
{
    DefaultDir = directory;
    while (DefaultDir.size() > 1 && DefaultDir.back() == '/') DefaultDir.pop_back();
    SetKelvoDirectory(DefaultDir);
    IniFilePath = DefaultDir + "/kelvo.ini";
    CameraFilePath = DefaultDir + "/camera.ini";
    BuffBrdFilePath = DefaultDir + "/buffbrd.ini";
    SeqFilePath = DefaultDir + "/a.seq";
    HelpFilePath = DefaultDir + "/KELVO.hlp";
}

}  // namespace kelvo
