// What the menu shows of the program's state: checks and texts that change. Whoever changes the state asks for it by
// name. Each call is told to the transcript. Before there is a main window nothing happens.
#pragma once

#include "resources/board_use.h"

namespace kelvo {

// "Replace bad pixels" is checked, or not.
void ShowReplacementInMenu(bool replaced);

// The one colour map in force is checked: kNormalGray, kInvertedGray or kNormalColor; none for any other.
void ShowColorMapInMenu(int map);

// "&Freeze\tF2" while live video runs, "&Continue\tF2" while it is frozen. At start the item reads "&Freeze frame\tF2".
void ShowFreezeInMenu(bool live);

// "&Turn Vantir off" for a camera that is on, otherwise "&Turn Vantir on"; draws the menu bar again.
void ShowTurnOnInMenu(bool cameraIsOn);

// What needs the board is grey while another use of it goes on, and says which.
void ShowBoardUseInMenu(BoardUse use);

}  // namespace kelvo
