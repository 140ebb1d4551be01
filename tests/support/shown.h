// What the operator was shown, from the transcript. Without an application object a box only tells and answers itself.
#pragma once

#include "platform/transcript.h"

#include <ostream>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kelvo {

struct ShownBox {
    std::string caption;
    std::string text;
    friend bool operator==(const ShownBox&, const ShownBox&) = default;
    friend std::ostream& operator<<(std::ostream& stream, const ShownBox& box)
    {
        return stream << '[' << box.caption << "] " << box.text;
    }
};

inline std::string FieldOf(const TranscriptLine& line, std::string_view name)
{
    for (const auto& [key, value] : line.fields) {
        if (key == name && std::holds_alternative<std::string>(value)) return std::get<std::string>(value);
    }
    return {};
}

inline std::vector<ShownBox> BoxesShown()
{
    std::vector<ShownBox> boxes;
    for (const TranscriptLine& line : TranscriptLines()) {
        if (line.kind == "box") boxes.push_back({.caption = FieldOf(line, "caption"), .text = FieldOf(line, "text")});
    }
    return boxes;
}

inline std::vector<std::string> BeepsHeard()
{
    std::vector<std::string> sounds;
    for (const TranscriptLine& line : TranscriptLines()) {
        if (line.kind == "beep") sounds.push_back(FieldOf(line, "sound"));
    }
    return sounds;
}

}  // namespace kelvo
