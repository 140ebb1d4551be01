-- The real pointer and the real keys of a real window (X11, through xdotool). What is pressed comes to the program as the window system hands it on; so each
-- call says what is expected then, and waits for it.
local hands = {}

local function xdotool(...)
  local command = "xdotool " .. table.concat({ ... }, " ")
  assert(os.execute(command), command)
end

-- The pointer counts device pixels, place() logical ones.
local ratio = tonumber(os.getenv("QT_SCALE_FACTOR")) or 1
local function motion(x, y) return ("mousemove %d %d"):format(math.floor(x * ratio), math.floor(y * ratio)) end

-- Waits until what() gives something other than false or nil, and returns it; fails after half a minute.
function hands.untilTrue(what, text)
  for _ = 1, 1500 do
    local value = what()
    if value then return value end
    wait(20)
  end
  error("not within half a minute: " .. text, 2)
end

-- What a command of the window system's tools prints.
function hands.shell(command)
  local pipe = assert(io.popen(command))
  local text = pipe:read("a")
  pipe:close()
  return text
end

-- The window system's number of the window with such a title. A search that meets a window which goes meanwhile finds nothing.
function hands.windowNamed(title)
  return hands.untilTrue(function()
    return hands.shell(("xdotool search --onlyvisible --name '^%s' 2>/dev/null | tail -1"):format(title)):match("%d+")
  end, "a window " .. title)
end

-- The middle of a place, once it is on the screen and the window manager has left it where it is. The words are those of place().
function hands.middle(...)
  local words, x, y = { ... }, nil, nil
  hands.untilTrue(function()
    local found = place(table.unpack(words))
    local atX, atY = found and math.floor(found.x + found.width / 2), found and math.floor(found.y + found.height / 2)
    local stands = found and atX == x and atY == y
    x, y = atX, atY
    if not stands then wait(150) end
    return stands
  end, "a place for " .. table.concat(words, " "))
  return x, y
end

-- Screen coordinates in logical pixels; button 1 left, 2 middle, 3 right, 4 and 5 the wheel.
function hands.clickAt(x, y, button) xdotool(motion(x, y), "click", button or 1) end
function hands.moveTo(x, y) xdotool(motion(x, y)) end
-- Presses, goes there in steps, and lets go.
function hands.drag(fromX, fromY, toX, toY, button)
  xdotool(motion(fromX, fromY), "mousedown", button or 1)
  for step = 1, 4 do
    wait(20)
    xdotool(motion(fromX + (toX - fromX) * step / 4, fromY + (toY - fromY) * step / 4))
  end
  wait(20)
  xdotool("mouseup", button or 1)
  wait(50)
end

-- Clicks the middle of what place() finds under these words.
function hands.click(...)
  hands.clickAt(hands.middle(...))
  wait(50)
end

-- A box to tick or one of several to choose: only its mark and its text take a click, which begin at its left end.
function hands.tick(...)
  local _, y = hands.middle(...)
  hands.clickAt(place(...).x + 8, y)
  wait(50)
end

-- hands.menu("View", "Simulated bench...")
function hands.menu(title, item)
  hands.click("menu", title)
  hands.click("item", item)
end

-- Keys by the X server's names: "ctrl+v", "Escape", "F2", "alt+f".
function hands.key(...)
  xdotool("key", ...)
  wait(50)
end
function hands.type(text)
  xdotool("type", "--delay", "5", "'" .. text:gsub("'", "'\\''") .. "'")
  wait(50)
end

-- Titles of the windows from the lowest to the one in front, as the window manager has stacked them.
function hands.stacking()
  local pipe = assert(io.popen("for w in $(xprop -root _NET_CLIENT_LIST_STACKING | sed 's/.*# //; s/,/ /g'); do xdotool getwindowname $w; done"))
  local titles = {}
  for line in pipe:lines() do titles[#titles + 1] = line end
  pipe:close()
  return titles
end

return hands
