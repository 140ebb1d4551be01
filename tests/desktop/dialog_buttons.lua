-- A dialog's frame has no buttons that make an icon of it or fill the screen with it, as its hints to the window manager say.
local check = require "check"
local hands = require "hands"

local shell = hands.shell

-- Of _MOTIF_WM_HINTS, the bits of what the window may do (second number) and of what its frame shows (third).
local kMayMinimise, kMayMaximise, kMayClose = 8, 16, 32
local kShowsMinimise, kShowsMaximise = 32, 64

local function hints(title)
  local id
  hands.untilTrue(function()
    id = hands.windowNamed(title)
    return shell("xprop -id " .. id .. " _NET_WM_ALLOWED_ACTIONS"):find("ACTION_CLOSE")
  end, "a framed window " .. title)
  local found = {}
  for number in shell("xprop -id " .. id .. " _MOTIF_WM_HINTS"):gmatch("0x%x+") do found[#found + 1] = tonumber(number) end
  return { does = found[2], shows = found[3] }
end

local function expect_dialog(title)
  local found = hints(title)
  check.eq(found.does & (kMayMinimise | kMayMaximise | kMayClose), kMayClose, title)
  check.eq(found.shows & (kShowsMinimise | kShowsMaximise), 0, title)
end

hands.untilTrue(function() return dialog() == "CLOCK_ON" end, "the question how to turn the camera on")
expect_dialog "Turn on Vantir"
press(2)
hands.untilTrue(function() return not dialog() end, "Cancel of it")
local main = hints "Kelvo"
check.eq({ main.does & kMayMinimise, main.shows & kShowsMaximise }, { kMayMinimise, kShowsMaximise }, "the main window has them")
for _, command_and_title in ipairs { { 120, "Display setup" }, { 122, "Image setup" } } do
  command(command_and_title[1])
  expect_dialog(command_and_title[2])
  press(2)
end
