// The tables of the help's page on keys, made from the list of commands, so that they tell what the menu does.
#pragma once

#include <string>

namespace kelvo {

// HTML: a heading and a table for each menu that has keys, in the menu's order, then for the keys without an item. Each
// row has the key and what it does, with a link to the page of it where there is one. FillHelpPage takes it.
std::string KeysPageTables();

}  // namespace kelvo
