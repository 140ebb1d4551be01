#include "analysis/plot_save.h"

#include "dibapi32/dibapi32.h"
#include "platform/box.h"
#include "platform/file_dialog.h"
#include "platform/files.h"
#include "platform/pointer.h"
#include "platform/text.h"
#include "ui/select_file.h"

#include <array>
#include <charconv>
#include <span>

namespace kelvo {

namespace {

constexpr FileFilter kFigures{"Comma-separated values (*.csv)", "*.csv"};

int WriteFigures(const std::string& path, const std::string& figures)
{
    return ReplaceFile(path, ToUtf8(figures)) ? 0 : kDibErrorOpen;
}

void Save(HWND dialog, const std::function<std::string()>& csv, std::span<const FileFilter> kinds, const PlotKind* more)
{
    // Before the file dialog stands over it.
    const Dib picture = CaptureWindowDib(dialog, kCaptureWindow);
    if (!picture) {
        MessageBox(dialog, "Failure to allocate global graphics memory!", kMessageCaption);
        return;
    }
    std::string path = "*.bmp";
    if (!SelectFile(dialog, path, kSelectToSave, nullptr, kinds)) return;
    const Hourglass hourglass;
    std::string extension;
    SplitPath(path, nullptr, nullptr, nullptr, &extension);
    int error = 0;
    if (EqualIgnoringCase(extension, ".csv")) {
        error = WriteFigures(path, csv());
    } else if (more && EqualIgnoringCase(extension, more->extension)) {
        error = more->write(path) ? 0 : kDibErrorOpen;
    } else {
        error = EqualIgnoringCase(extension, ".png") ? SavePng(picture, path) : SaveDib(picture, path);
    }
    if (error != 0) DibError(error);
}

}  // namespace

void SavePlot(HWND dialog, const std::function<std::string()>& csv)
{
    Save(dialog, csv, std::array{kFigures}, nullptr);
}

void SavePlot(HWND dialog, const std::function<std::string()>& csv, const PlotKind& more)
{
    Save(dialog, csv, std::array{kFigures, FileFilter{more.name, more.pattern}}, &more);
}

std::string CsvNote(std::string_view name, std::string_view value)
{
    return "# " + std::string(name) + ": " + std::string(value) + "\n";
}

std::string CsvNumber(float value)
{
    constexpr std::size_t kMostCharacters = 32;
    std::array<char, kMostCharacters> digits{};
    const std::to_chars_result end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return {digits.data(), end.ptr};
}

}  // namespace kelvo
