// The words by which a text tells who sits at this machine and which one it is, and texts without them: for what leaves
// the laboratory.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

struct UserWord {
    std::string word;     // as bytes; not empty
    std::string instead;  // what stands in its place
};

// Of whoever runs this process: each home directory ("~"), login ("USER"), full name, whole and word by word, and what
// else the account tells of him ("NAME"), and the machine's names ("HOST"); in UTF-8 and, where that is different, in
// Latin-1 and in capital or small letters beyond ASCII. Longer ones first. From the account database and the
// environment. What is a word of Kelvo's own texts (kelvo, camera) is left out: it would take these apart, and tells of
// nobody.
std::vector<UserWord> UserWords();

// The text without the words, whatever the case of their ASCII letters. One of four characters and more goes wherever
// it stands, also within another word; a shorter one where no letter or digit stands beside it. Then without the owners
// of directories in /home, /Users and /media, which stand as USER, whichever way the separators lean. All else stays,
// byte by byte.
std::string WithoutUserWords(std::string_view text, std::span<const UserWord> words);

}  // namespace kelvo
