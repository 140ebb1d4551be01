// The switches of the View menu: each is a key of section View of window.ini, 0 or 1, and a checked menu item.
#pragma once

namespace kelvo {

constexpr const char* kViewSection = "View";

struct ViewSwitch {
    int command;      // of the menu item
    const char* key;  // default 0
};

bool ViewSwitchIsOn(const ViewSwitch& viewSwitch);
// Writes the key and checks the item.
void KeepViewSwitch(const ViewSwitch& viewSwitch, bool on);

}  // namespace kelvo
