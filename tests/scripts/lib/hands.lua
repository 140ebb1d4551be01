-- The real pointer and the real keys of a real window (X11, through xdotool). What is pressed comes to the program as the window system hands it on; so each
-- call says what is expected then, and waits for it.
local hands = {}

local function xdotool(...)
  local command = "xdotool " .. table.concat({ ... }, " ")
  assert(os.execute(command), command)
end

-- Waits until what() gives something other than false or nil, and returns it; fails after ten seconds.
function hands.untilTrue(what, text)
  for _ = 1, 500 do
    local value = what()
    if value then return value end
    wait(20)
  end
  error("not within ten seconds: " .. text, 2)
end

-- The middle of a place, once it is on the screen. The words are those of place().
function hands.middle(...)
  local words = { ... }
  local found = hands.untilTrue(function() return place(table.unpack(words)) end, "a place for " .. table.concat(words, " "))
  return math.floor(found.x + found.width / 2), math.floor(found.y + found.height / 2)
end

-- Screen coordinates; button 1 left, 2 middle, 3 right, 4 and 5 the wheel.
function hands.clickAt(x, y, button) xdotool("mousemove", x, y, "click", button or 1) end
function hands.moveTo(x, y) xdotool("mousemove", x, y) end
-- Presses, goes there in steps, and lets go.
function hands.drag(fromX, fromY, toX, toY, button)
  xdotool("mousemove", fromX, fromY, "mousedown", button or 1)
  for step = 1, 4 do
    wait(20)
    xdotool("mousemove", math.floor(fromX + (toX - fromX) * step / 4), math.floor(fromY + (toY - fromY) * step / 4))
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
