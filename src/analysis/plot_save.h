// Plots as files.
#pragma once

#include "platform/types.h"

#include <functional>
#include <string>
#include <string_view>

namespace kelvo {

// Asks for a name ("*.bmp") and saves the plot under it: a name that ends in .png or .csv decides for a picture as
// portable network graphics or for the figures, any other for a bitmap. Pictures show the whole dialog. The file is
// whole or not there; a failure is told by DibError's box, no memory for the picture by "Failure to allocate global
// graphics memory!". csv makes the figures and isn't called for pictures. Cancel leaves all as it is.
void SavePlot(HWND dialog, const std::function<std::string()>& csv);

// The same with one kind more: a name with its extension (".img") is written by write, which says whether the file
// stands; a failure is told as that of figures.
struct PlotKind {
    std::string_view name;     // "Image of floats (*.img)"
    std::string_view pattern;  // "*.img"
    std::string_view extension;
    std::function<bool(const std::string& path)> write;
};
void SavePlot(HWND dialog, const std::function<std::string()>& csv, const PlotKind& more);

// What such figures are made of. Texts are Latin-1 inside; the file is UTF-8, with points as decimal signs.
std::string CsvNote(std::string_view name, std::string_view value);  // "# name: value", a line
std::string CsvNumber(float value);                                  // reads back as the same single

}  // namespace kelvo
