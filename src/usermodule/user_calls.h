// What user-written functions can ask of the operator and of the program, besides all that the headers of the other
// folders offer. All are called on the main thread and block; texts are taken as they are, of any length.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {

// Asks for a line of text in the dialog USERRESP, under two lines of explanation, with answer as a proposal. 1: answer
// is what was typed, at most 80 characters. 0: cancelled, or "Unable to display dialog" under "System Error"; answer
// stays as it was.
int GetUserResponse(std::string_view line1, std::string_view line2, std::string& answer);

// Boxes of two lines: "User Error Message Box" with a sound; "Kelvo user message", whose result is that of its one
// button (1); "User Message Box" with Ok and Cancel: true unless Cancel.
void UserErrorBox(std::string_view text1, std::string_view text2);
int UserMessage(std::string_view text1, std::string_view text2);
bool UserQuestion(std::string_view text1, std::string_view text2);

// Asks for a name and saves the image on view, as the menu does. SaveImage's result (viewing/saving.h); 1 also where
// the operator cancels.
int UserImageSave();

// Saves the next image of the sequence in SeqFilePath, as the menu does. 1 where SaveSequence's result isn't 0, so
// also where the operator declines or the file can't be opened (-1).
int UserSequenceSave();

// Asks for the name of the sequence to save to. 1, also where the operator cancels; 0 after a box under "Kelvo
// message": "A sequence name must contain at least\none none numeric letter", "A sequence name must be 7 or
// less\ncharacters long". SeqFilePath holds the path without the digits at the end of its name.
int UserSequenceName();

}  // namespace kelvo
