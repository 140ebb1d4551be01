-- 200 steps of the operator, drawn from a fixed seed, on a frozen picture with a calibration: contrast, brightness, colour maps, zoom,
-- pan, unit, the trackball, "Keep fitted", the picture's own bars, the display set-up, bad pixels. All are undone, all are done again: state, settings files, the set's
-- files, the menu and the window are at both ends what they were, as a whole.
local check = require "check"
local calibration = require "calibration"
local unchanged = require "unchanged"

local kUndo, kRedo = 2050, 2051
local kSteps = 200
local kSlack = {
  SavedCursorX = "where the trackball's last run began", SavedCursorY = "the same",
}

calibration.turn_on()
calibration.two_point(20, 25, 4)
answer("ok")
sim.source("scene", 22)
frames(2)
command(140)
check.eq({ dialog(), box(), state("CalType"), state("LiveVideo") }, { nil, nil, 2, 0 })
command(143)
key("+")
wait(1100)
local width, height = state("Hroi"), state("Vroi")

local random = 2463534242
local function draw(count)
  random = random ~ (random << 13) & 0xFFFFFFFF
  random = random ~ random >> 17
  random = random ~ (random << 5) & 0xFFFFFFFF
  return random % count
end

-- The whole window, and the frame's counts at every seventh pixel.
local function picture()
  local counts = {}
  for y = 0, height - 1, 7 do
    for x = 0, width - 1, 7 do counts[#counts + 1] = pixel(x, y) end
  end
  return { counts, readfile(screenshot("picture.png")) }
end

-- At an end of all steps: the key that leads beyond it does nothing, and leaves the status line as it is between commands.
local function shot(beyond)
  key(beyond)
  local taken = unchanged.snapshot()
  for _, name in ipairs { "kelvo.ini", "camera.ini", "window.ini" } do
    taken["all of " .. name] = readfile(datadir() .. "/" .. name) or ""
  end
  return taken, picture()
end

local drags = 0  -- of bars, that moved the picture

local function set_image()
  if box() then answer(draw(2) == 0 and "yes" or "no") end
  check.eq({ dialog(), box() }, {})
end

local kKinds = {
  function() command(143 + draw(3)) end,
  function() key("F11") end,
  function() command(200 + draw(2)) end,
  function() key(({ "Right", "Left", "Up", "Down", "Home", "End", "PgUp", "PgDn" })[1 + draw(8)]) end,
  function() command(210 + draw(8)) end,
  function() press("panel", 315, ({ "up", "right", "down", "left" })[1 + draw(4)]) end,
  function() press("panel", 312, ({ "up", "right", "down", "left" })[1 + draw(4)]) end,
  function() pick("panel", 1256, draw(#items("panel", 1256))) end,
  function() command(2004) end,
  function() command(2040 + draw(3)) end,
  function() mouse(100 + draw(200), 150 + draw(150), draw(2) == 0 and "wheel up" or "wheel down") end,
  function()  -- the picture is dragged
    mouse(300, 300, "middle down")
    for _ = 1, 3 do mouse(200 + draw(200), 200 + draw(200)) end
    mouse(200 + draw(200), 200 + draw(200), "middle up")
  end,
  function()  -- a run of the trackball
    key("F10")
    for _ = 1, 3 do mouse(320 + draw(100) - 50, 240 + draw(100) - 50) end
    key("F10")
  end,
  function()  -- the display set-up, kept or cancelled
    command(120)
    check.eq(dialog(), "DISPLAY")
    scroll(1242, 1 + draw(1000))
    scroll(1246, 1 + draw(100))
    press(1230 + draw(3))
    pick(1256, draw(#items(1256)))
    press(1 + draw(2))
  end,
  function() key("F9") end,
  function()  -- "Keep fitted", for a moment or over the steps that follow
    command(2043)
    if draw(2) == 0 then wait(300) end
  end,
  function()  -- a thumb of the picture's own bars is dragged, at a zoom at which there are two
    while state("Xzoom") < 8 do mouse(300, 300, "wheel up") end
    local x, y = state("ClientWidth") - 8, state("PanelHeight") + 100 + draw(500)
    local down = draw(2) == 0
    if not down then x, y = 100 + draw(800), state("ClientHeight") - state("TextHeight") - 8 end
    local view = state("ViewPosition")
    mouse(x, y, "left down")
    for _ = 1, 3 do
      if down then y = y + draw(60) - 30 else x = x + draw(60) - 30 end
      mouse(x, y)
    end
    mouse(x, y, "left up")
    check.eq(state("ImageCursorOn"), 0, "the bar has it, not the picture")
    if not check.same(state("ViewPosition"), view) then drags = drags + 1 end
  end,
  function()  -- the image set-up: a flag and an edit, set, kept or cancelled
    command(122)
    check.eq(dialog(), "GEOMETRY")
    local flag = ({ 1300, 1302, 1304, 1306 })[1 + draw(4)]
    if flag ~= 1304 then check(flag, not checked(flag)) end
    if draw(2) == 0 then
      pick(1308, draw(#items(1308)))
      press(1310)
    else
      set(1312, ("%d,%d"):format(draw(height), draw(width)))
      press(1314)
    end
    if draw(3) == 0 then press(1604) end
    press(1 + draw(2))
    set_image()
  end,
}

local function all(id)
  local count = 0
  while menu(id).enabled do
    command(id)
    check.eq({ dialog(), box() }, {})
    count = count + 1
  end
  return count
end

check.eq(all(kUndo) > 0, true)
local first, first_picture = shot "Ctrl+Z"
for step = 1, kSteps do
  kKinds[1 + draw(#kKinds)]()
  check.eq({ dialog(), box() }, {}, step)
  if draw(3) == 0 then wait(1100) end
end
local last, last_picture = shot "Ctrl+Shift+Z"
assert(drags > 3, drags)

local undone = all(kUndo)
assert(undone > 100 and undone <= kSteps, undone)
local again, again_picture = shot "Ctrl+Z"
unchanged.expect(first, again, nil, kSlack, "all undone")
check.eq(again_picture, first_picture)

check.eq(all(kRedo), undone)
again, again_picture = shot "Ctrl+Shift+Z"
unchanged.expect(last, again, nil, kSlack, "all done again")
check.eq(again_picture, last_picture)
assert(not check.same(first_picture, last_picture))
