-- What is one step of undo, what it is called, and what forgets the steps.
local check = require "check"
local calibration = require "calibration"

local kUndo, kRedo = 2050, 2051
local kTurnOff = 169

local function undo_item() return { menu(kUndo).text, menu(kUndo).enabled } end
local function redo_item() return { menu(kRedo).text, menu(kRedo).enabled } end
local kNoUndo, kNoRedo = { "&Undo\tCtrl+Z", false }, { "R&edo\tCtrl+Shift+Z", false }

-- All steps, from the last: their names, each taken back; the picture is then as before them.
local function take_all_back()
  local names = {}
  while menu(kUndo).enabled do
    names[#names + 1] = menu(kUndo).text:match("^&Undo (.*)\tCtrl%+Z$")
    key("Ctrl+Z")
    check.eq(status(), "Undone: " .. names[#names])
  end
  return names
end

calibration.turn_on()
press(2)
check.eq({ undo_item(), redo_item() }, { kNoUndo, kNoRedo }, "the start is no step")
key("Ctrl+Z")
key("Ctrl+Shift+Z")
local contrast, brightness, zoom = state("Contrast"), state("Brightness"), state("Xzoom")

-- Turns of the wheel and keys within a second are one step, later ones another; so are clicks on a panel button.
for _ = 1, 3 do mouse(300, 300, "wheel up") end
key("+")
check.eq(state("Xzoom"), zoom + 4)
wait(1100)
key("+")
for _ = 1, 3 do press("panel", 315, "up") end
press("panel", 315, "right")
check.eq(undo_item(), { "&Undo brightness\tCtrl+Z", true })
check.eq(take_all_back(), { "brightness", "contrast", "zoom", "zoom" })
check.eq({ state("Contrast"), state("Brightness"), state("Xzoom"), undo_item() }, { contrast, brightness, zoom, kNoUndo })

-- Up again; the second step of the wheel's two is done as one. A new step forgets what lay ahead.
key("Ctrl+Shift+Z")
check.eq({ state("Xzoom"), status() }, { zoom + 4, "Done again: zoom" })
check.eq(redo_item(), { "R&edo zoom\tCtrl+Shift+Z", true })
command(144)
check.eq({ redo_item(), undo_item() }, { kNoRedo, { "&Undo colours\tCtrl+Z", true } })
check.eq(take_all_back(), { "colours", "zoom" })
check.eq(state("ImageColor"), 1230)

-- A drag of the picture is one step; in its midst nothing is taken back.
local place = state("ViewPosition")
mouse(300, 300, "middle down")
for x = 310, 350, 10 do mouse(x, 280) end
key("Ctrl+Z")
mouse(350, 280, "middle up")
check.eq({ state("ViewPosition"), undo_item() }, { { place[1] - 50, place[2] + 20 }, { "&Undo pan\tCtrl+Z", true } })
check.eq(take_all_back(), { "pan" })
check.eq(state("ViewPosition"), place)

-- A run that comes back to where it began is nothing.
key("+")
key("-")
check.eq(undo_item(), kNoUndo)

-- The trackball's run is one step, however it went; asked for in its midst, undo ends it.
local function run()
  key("F10")
  for _ = 1, 4 do mouse(380, 240) end
  for _ = 1, 3 do mouse(320, 200) end
end
run()
key("F10")
local after = { state("Contrast"), state("Brightness") }
assert(after[1] > contrast and after[2] > brightness)
check.eq(undo_item(), { "&Undo contrast and brightness\tCtrl+Z", true })
key("Ctrl+Z")
check.eq({ state("Contrast"), state("Brightness") }, { contrast, brightness })
run()
key("Ctrl+Z")
check.eq({ state("Contrast"), state("Brightness"), state("TrackballMode"), undo_item() }, { contrast, brightness, 0, kNoUndo })
key("Ctrl+Shift+Z")
check.eq({ state("Contrast"), state("Brightness") }, after)
key("Ctrl+Z")

-- A dialog is one step; cancelled it is none. What stood on the panel before stays its own.
press("panel", 315, "down")
command(120)
for position = 100, 900, 200 do scroll(1242, position) end
press(1231)
press(2)
check.eq(undo_item(), { "&Undo contrast\tCtrl+Z", true })
command(120)
for position = 100, 900, 200 do scroll(1242, position) end
press(1231)
press(1)
check.eq({ state("Brightness"), state("ImageColor"), undo_item() }, { 900, 1231, { "&Undo display setup\tCtrl+Z", true } })
check.eq(take_all_back(), { "display setup", "contrast" })
check.eq({ state("Contrast"), state("Brightness"), state("ImageColor") }, { contrast, brightness, 1230 })

-- Off is another ground: nothing leads back behind it, and neither behind a calibration.
key("+")
command(kTurnOff)
answer("yes")
check.eq({ dialog(), box(), state("CameraOn"), undo_item() }, { nil, nil, 0, kNoUndo })
command(kTurnOff)
calibration.turn_on()
press(2)
key("-")
check.eq(undo_item(), { "&Undo zoom\tCtrl+Z", true })
command(130)
calibration.two_point(20, 25, 4)
answer("ok")
check.eq({ state("CalType"), undo_item() }, { 2, kNoUndo })

-- Replacement of bad pixels and the image set-up, by name; a set-up that is left without a change is no step.
key("F9")
check.eq({ state("SubstBadPixels"), undo_item() }, { 0, { "&Undo bad pixel replacement\tCtrl+Z", true } })
command(122)
press(1)
check.eq(undo_item(), { "&Undo bad pixel replacement\tCtrl+Z", true })
command(122)
check(1300, true)
press(1)
answer("yes")
check.eq({ state("MirrorVert"), undo_item() }, { 1, { "&Undo image setup\tCtrl+Z", true } })
check.eq(take_all_back(), { "image setup", "bad pixel replacement" })
check.eq({ state("MirrorVert"), state("SubstBadPixels"), menu(141).checked }, { 0, 1, true })

-- Keys that are written later belong to the step before: a trackball run that moves nothing stores what the panel chose, and redo
-- of an image set-up before it still has the bad pixels.
local function stored(key_name)
  wait(1100)
  return readfile(datadir() .. "/kelvo.ini"):match("[\r\n]" .. key_name .. "=([^\r\n]*)")
end
local before = stored("Contrast")
press("panel", 315, "up")
check.eq(stored("Contrast"), before)
key("F10")
key("F10")
check.eq({ stored("Contrast"), undo_item() }, { tostring(state("Contrast")), { "&Undo contrast\tCtrl+Z", true } })
key("Ctrl+Z")
check.eq(stored("Contrast"), before)
press("panel", 315, "up")
key("F9")
key("F10")
key("F10")
check.eq(undo_item()[1], "&Undo bad pixel replacement\tCtrl+Z")
check.eq(take_all_back(), { "bad pixel replacement", "contrast" })
check.eq({ state("SubstBadPixels"), stored("Contrast") }, { 1, before })
key("Ctrl+Shift+Z")
key("Ctrl+Shift+Z")
check.eq(state("SubstBadPixels"), 0)
take_all_back()

-- "Keep fitted" is a step; what it does to the levels afterwards is none. A hand on them ends it, and back comes both.
contrast, brightness = state("Contrast"), state("Brightness")
command(2043)
check.eq({ menu(2043).checked, undo_item() }, { true, { "&Undo keep fitted\tCtrl+Z", true } })
wait(1100)
local fitted = { state("Contrast"), state("Brightness") }
assert(not check.same(fitted, { contrast, brightness }))
press("panel", 315, "up")
check.eq({ menu(2043).checked, undo_item()[1] }, { false, "&Undo contrast\tCtrl+Z" })
key("Ctrl+Z")
check.eq({ menu(2043).checked, state("OwnFitInForce"), state("Contrast") }, { true, 1, fitted[1] })
key("Ctrl+Z")
check.eq({ menu(2043).checked, state("Contrast"), state("Brightness"), undo_item() }, { false, contrast, brightness, kNoUndo })
wait(1100)
check.eq({ state("Contrast"), state("Brightness") }, { contrast, brightness }, "it is off")
key("Ctrl+Shift+Z")
wait(1100)
check.eq({ menu(2043).checked, state("OwnFitInForce") }, { true, 1 })
key("Ctrl+Z")

-- A drag of a bar's thumb is one step, two drags are two; turns of the wheel on the bar within a second are one.
for _ = 1, 8 do mouse(300, 300, "wheel up") end
wait(1100)
local function drag_bar(from, by)
  local x, y = state("ClientWidth") - 8, state("PanelHeight") + from
  mouse(x, y, "left down")
  for part = 1, 4 do mouse(x, y + by * part) end
  mouse(x, y + by * 4, "left up")
  return state("ViewPosition")
end
place = state("ViewPosition")
local middle = drag_bar(450, 10)
assert(middle[2] > place[2] and middle[1] == place[1], check.show(middle))
local last = drag_bar(490, -5)
assert(last[2] < middle[2], check.show(last))
check.eq({ state("Xpan"), state("Ypan") }, { 0, 0 }, "the view alone")
key("Ctrl+Z")
check.eq({ state("ViewPosition"), undo_item() }, { middle, { "&Undo pan\tCtrl+Z", true } })
key("Ctrl+Z")
check.eq({ state("ViewPosition"), undo_item()[1] }, { place, "&Undo zoom\tCtrl+Z" })
drag_bar(450, 10)
for _ = 1, 3 do mouse(state("ClientWidth") - 8, 400, "wheel down") end
assert(state("ViewPosition")[2] > middle[2])
key("Ctrl+Z")
check.eq({ state("ViewPosition"), undo_item()[1] }, { middle, "&Undo pan\tCtrl+Z" }, "the wheel isn't the drag's")
key("Ctrl+Z")
check.eq({ state("ViewPosition"), undo_item()[1] }, { place, "&Undo zoom\tCtrl+Z" })
