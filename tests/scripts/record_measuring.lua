-- What an operator measures is recorded: the camera on with a calibration, regions drawn and worked in their window, noise, difference, traces, histogram,
-- line plot, exports by the dialog. A second start (record_session_again.lua) does it by the recorded script, and is shown the same.
local check = require "check"
press(2)
local session = require "session"  -- it asks for the data directory
local first = session.begin()
local function at(name) return datadir() .. "/" .. name end
local function nothing_in_front(what) check.eq({ dialog(), box() and box().text, file() }, {}, what) end

-- ---- On, with two points

command(169)
press(1070)
press(1)
press(1)
check.eq(dialog(), "CAL_COLD")
press(20405)  -- the bench
press("BENCH", 1001)
frames(60)
set(1224, "20")
press(1)
press("BENCH", 1002)
frames(60)
set(1226, "25")
press(1)
while box() do answer(box().default) end
press("BENCH", 1001)
press("BENCH", 2)
frames(15)
nothing_in_front("calibrated")

-- ---- Regions: drawn with the mouse on the picture, and by the window

command(2210)
pick("regions", 22103, 1)
mouse(90, 150, "left down")
mouse(210, 240)
mouse(210, 240, "left up")
pick("regions", 22103, 4)
mouse(300, 300, "left")
check.eq(#regions(), 2)
frames(15)  -- the table follows
pick("regions", 22101, 0)
set("regions", 22106, "plate \"A\"")
set("regions", 22107, "0.95")
set("regions", 22108, "23")
press("regions", 1)
check.eq(regions()[1].name, 'plate "A"')
key("Right")
key("Shift+Down")
press("regions", 22104)  -- Add
key("Del")
check("regions", 22114, false)
check("regions", 22114, true)
press("regions", 22119)
choose(at("drawn.regions"))
press("regions", 22118)
choose(at("drawn.regions"))
check.eq(#regions(), 2)
command(2050)
command(2051)
press("regions", 2)
nothing_in_front("regions")

-- ---- Noise

command(2230)
set(22307, "1")
press(1)
answer("ok")
set(22307, "8")
press(1)
check.eq(text(22316), "8 raw frames")
pick(22308, 1)
press(1606)
choose(at("noise.csv"))
press(1606)
cancel()
press(2)
nothing_in_front("noise")

-- ---- Difference: to itself, off again

command(140)
command(2220)
press(1)
check.eq(state("StatusMark"), "Difference")
command(2220)
press(22206)
command(140)
nothing_in_front("difference")

-- ---- Traces: live, its plot and its file

command(2240)
press("TRACES", 22401)
frames(50)
press("TRACES", 22402)
assert(tonumber(text("TRACES", 22408)) > 20)
pick("TRACES", 22404, 1)
pick("TRACES", 22405, 4)
pick("TRACES", 22405, 0)
press("TRACES", 1606)
choose(at("trace.csv"))
press("TRACES", 2)
nothing_in_front("traces")

-- ---- Plots

command(140)
command(160)
set(309, "100")
set(314, "30")
press(338)
command(161)
set(402, "10")
set(408, "300")
press(338)
command(140)
nothing_in_front("plots")

-- ---- Saved, viewed, exported

command(106)
set(1460, at("scene.img"))
set(1488, "2")
press(1)
while box() do answer(box().default) end
drop(at("scene.img"))
check.eq(state("ViewingFile"), 1)
key("Ctrl+E")
set(22006, at("scene.fits"))
pick(22004, 3)
press(1)
if box() then answer("ok") end
if dialog() then press(2) end
command(2200)
set(22003, "9")
press(1)
answer("ok")
set(22003, "0")
set(22006, at("scene.npy"))
pick(22004, 0)
press(1)
nothing_in_front("exported")
command(2200)
set(22006, at("scene.npy"))
press(1)
answer("no")
cancel()
command(140)

command(169)
answer("yes")
check.eq(state("CameraOn"), 0)

session.finish(first, { "drawn.regions", "noise.csv", "trace.csv", "scene.npy" })
local script = readfile(session.script)
for _, act in ipairs { "command(2210)", 'mouse(90, 150, "left down")', 'mouse(210, 240, "left up")', 'mouse(300, 300, "left")', 'press("regions", 22119)',
  'set("regions", 22106, "plate \\"A\\"")', 'command(213)', "command(2230)", 'set(22307, "8")', "command(2220)", "press(22206)", "command(2240)", "command(2200)", 'answer("no")', "cancel()" } do
  check.holds("\n" .. script, "\n" .. act .. "\n")
end
check.holds(script, "22401)\n")
check.holds(script, "22405, 4)\n")
