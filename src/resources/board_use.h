// What has the board to itself for a while: commands that need it (resources/command_list.h) are grey then.
#pragma once

#include <string_view>

namespace kelvo {

enum class BoardUse { kNone, kRecording, kTrace };

// Why such a command is grey, in menu and panel; empty: it isn't.
constexpr std::string_view TipOf(BoardUse use)
{
    switch (use) {
        case BoardUse::kRecording:
            return "Not while a recording runs";
        case BoardUse::kTrace:
            return "Not while live video is traced";
        case BoardUse::kNone:
            break;
    }
    return {};
}

}  // namespace kelvo
