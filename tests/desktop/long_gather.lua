-- A calibration of many frames in a real window: the dialog that has closed leaves no ghost on the picture, Escape stops it, and the calibration
-- before it is back as it was.
local check = require "check"
local hands = require "hands"
local unchanged = { "CalType", "DecomList", "GainList", "OffsetList", "CalSettings.CalFile", "LiveVideo", "StatusField", "TemperatureCold" }

local function in_front(name)
  hands.untilTrue(function() return dialog() == name end, name)
  wait(500)  -- until the window manager has put it where it stays
end
local function values()
  local all = {}
  for _, name in ipairs(unchanged) do all[name] = state(name) end
  for _, file in ipairs { "Last.cal", "Last.gai", "Last.off", "Last.dcm" } do all[file] = readfile(datadir() .. "/" .. file) or "none" end
  return all
end
-- Pixels of the X server's own picture (XWD, 32 bits a pixel, lowest byte first) inside a rectangle, by colour.
local function colours(path, left, top, right, bottom)
  local file = assert(io.open(path, "rb"))
  local bytes = file:read("a")
  file:close()
  local header = string.unpack(">I4", bytes)
  local width, height, stride, count = string.unpack(">I4", bytes, 17), string.unpack(">I4", bytes, 21), string.unpack(">I4", bytes, 49), string.unpack(">I4", bytes, 77)
  local start = header + 12 * count
  assert(right <= width and bottom <= height and right > left and bottom > top)
  local found = {}
  for y = top, bottom - 1 do
    for x = left, right - 1 do
      local value = string.unpack("<I4", bytes, start + y * stride + 4 * x + 1) & 0xFFFFFF
      found[value] = (found[value] or 0) + 1
    end
  end
  return found
end

in_front("CLOCK_ON")
hands.click(1070)
in_front("QVF1058")
hands.click(1)
in_front("CALIB")
set(1216, "400")
hands.click(1)
in_front("CAL_COLD")
sim.source("low", 20)
local before = values()
local edge = place("window", "2 Point Calibration")
os.execute(("cp %s/../Xvfb_screen0 %s/../open.xwd"):format(datadir(), datadir()))
local shown = colours(datadir() .. "/../open.xwd", edge.x + 20, edge.y + 40, edge.x + edge.width - 20, edge.y + edge.height - 20)
local ground, most = nil, 0
for value, count in pairs(shown) do
  if count > most then ground, most = value, count end
end

-- 400 frames at 49 Hz are more than 8 s: after 2 s the screen is looked at, then Escape pressed; a click and Return before must not act.
os.execute(("(sleep 2; cp %s/../Xvfb_screen0 %s/../gather.xwd; xdotool key Return mousemove %d %d click 1; sleep 0.3; xdotool key Escape) &"):format(
  datadir(), datadir(), edge.x + 60, edge.y + 30))
hands.click(1)
local front = hands.untilTrue(function() return box() end, "the box that tells of the stop")
check.eq(front.text, "Stopped by Esc. What was there before is as it was.")
screenshot(datadir() .. "/../stopped.png")
wait(500)
hands.key("Return")
hands.untilTrue(function() return not box() and not dialog() end, "the main window")
local after = values()
for name, value in pairs(before) do check.eq(after[name], value, name) end

local left = colours(datadir() .. "/../gather.xwd", edge.x + 20, edge.y + 40, edge.x + edge.width - 20, edge.y + edge.height - 20)
local ghost, all = left[ground] or 0, 0
for _, count in pairs(left) do all = all + count end
assert(ghost < all / 20, ("a ghost of %d of %d pixels"):format(ghost, all))

-- An image of many frames, over one that stands: stopped, the former file is whole and nothing else is left.
local function save(name, frames)
  command(106)
  in_front("SAVE")
  set(1460, datadir() .. "/" .. name)
  set(1488, tostring(frames))
  hands.click(1)
end
save("kept.img", 1)
hands.untilTrue(function() return not dialog() and readfile(datadir() .. "/kept.img") end, "the image")
local kept = readfile(datadir() .. "/kept.img")
local names = table.concat(listdir(datadir()), " ")
save("kept.img", 400)
hands.untilTrue(function() return box() end, "the question about the file that stands")
wait(300)
os.execute("(sleep 2; xdotool key Escape) &")
hands.click("button", "Yes")
hands.untilTrue(function() local front = box() return front and front.text == "Stopped by Esc. What was there before is as it was." end, "the stop")
wait(300)
hands.key("Return")
hands.untilTrue(function() return not box() end, "the main window")
check.eq(readfile(datadir() .. "/kept.img") == kept, true)
check.eq(table.concat(listdir(datadir()), " "), names)
check.eq({ state("LiveVideo"), state("StatusField") }, { 1, "" })
