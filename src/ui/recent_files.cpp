#include "ui/recent_files.h"

#include "platform/files.h"
#include "platform/menu.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "resources/ids.h"
#include "state/windows.h"

#include <algorithm>

namespace kelvo {

namespace {

std::vector<std::string> recentFiles;

std::string RecentIniPath()
{
    return StateDir + "/recent.ini";
}

std::string KeyOf(std::size_t place)
{
    return Format("File%zu", place + 1);
}

// "&1 name.seq": the name is enough to know it by, and what the menu would take for its own marks is escaped.
std::string MenuText(std::size_t place, std::string_view path)
{
    std::string name;
    std::string extension;
    SplitPath(path, nullptr, nullptr, &name, &extension);
    std::string shown;
    for (const char c : name + extension) {
        if (c == '&') shown += '&';
        shown += c == '\t' ? ' ' : c;
    }
    return (place < 9 ? Format("&%zu ", place + 1) : std::string("1&0 ")) + shown;
}

void ShowInMenu()
{
    if (!hWndMain) return;
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < recentFiles.size(); ++i) texts.push_back(MenuText(i, recentFiles[i]));
    SetMenuList(hWndMain, kCmdRecentFirst, texts);
}

}  // namespace

void ReadRecentFiles()
{
    recentFiles.clear();
    for (std::size_t i = 0; i < kRecentFileCount; ++i) {
        std::string path = GetPrivateProfileString("Recent", KeyOf(i), "", RecentIniPath());
        if (!path.empty()) recentFiles.push_back(std::move(path));
    }
    ShowInMenu();
}

void AddRecentFile(std::string_view path)
{
    std::string added(path);
    std::erase(recentFiles, added);
    recentFiles.insert(recentFiles.begin(), std::move(added));
    if (recentFiles.size() > kRecentFileCount) recentFiles.resize(kRecentFileCount);
    for (std::size_t i = 0; i < recentFiles.size(); ++i) {
        WritePrivateProfileString("Recent", KeyOf(i), recentFiles[i], RecentIniPath());
    }
    ShowInMenu();
}

const std::vector<std::string>& RecentFiles()
{
    return recentFiles;
}

void ForgetRecentFiles()
{
    recentFiles.clear();
}

}  // namespace kelvo
