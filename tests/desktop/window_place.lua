-- The window at the next start: the first one is maximised, later ones are where they were left, without a drift by the window manager's
-- frame. Each start has data of its own or those of the start before, and looks at itself with the window manager's tools.
local check = require "check"
local hands = require "hands"

local shell = hands.shell
-- Corner with frame and size without it, as the window manager tells them.
local function geometry()
  local text = shell("xwininfo -id " .. hands.windowNamed("Kelvo"))
  local x, y = text:match("Absolute upper%-left X: +(%-?%d+).-Absolute upper%-left Y: +(%-?%d+)")
  local width, height = text:match("Width: (%d+).-Height: (%d+)")
  return { tonumber(x), tonumber(y), tonumber(width), tonumber(height) }
end

if arg[1] == "look" then
  hands.untilTrue(function() return dialog() == "CLOCK_ON" end, "the question how to turn the camera on")
  press(2)
  local out = assert(io.open(arg[2], "w"))
  out:write(table.concat(geometry(), " "))
  out:close()
  return
end

hands.untilTrue(function() return dialog() == "CLOCK_ON" end, "the question how to turn the camera on")
press(2)
hands.untilTrue(function() return not dialog() end, "Cancel of it")
local screen = { shell("xdotool getdisplaygeometry"):match("(%d+) (%d+)") }
check.eq(geometry()[3], tonumber(screen[1]), "the first start is maximised")

local program = shell("readlink /proc/$PPID/exe"):match("%S+")
local data = datadir() .. "/../data-of-others"
local function start(number)
  local out = datadir() .. "/../look-" .. number
  local command = string.format("'%s' --data '%s' --script '%s' -- look '%s'", program, data, arg[0], out)
  assert(os.execute(command), command)
  local found = {}
  for word in readfile(out):gmatch("%S+") do found[#found + 1] = tonumber(word) end
  return found
end
assert(os.execute("mkdir -p '" .. data .. "'"))
local file = assert(io.open(data .. "/window.ini", "w"))
file:write("[Window]\nX=150\nY=90\nWidth=800\nHeight=650\nMaximised=0\n")
file:close()
local first = start(1)
check.eq({ first[3], first[4] }, { 800, 650 })
check.near(first[1], 150, 20)
check.near(first[2], 90, 40)
check.eq(start(2), first, "the next start")
check.eq(start(3), first, "and the one after it")
