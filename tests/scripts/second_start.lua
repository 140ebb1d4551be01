-- Other starts on the data directory of a Kelvo that runs (arg[1]: the program): their files open here and they end with 0;
-- with nothing to give they end with 3. A start on another directory is none of them.
local check = require "check"
local files = require "files"
local another = require "another"
local program, data = arg[1], datadir()
local work = data .. "/.."
answer("ok")  -- no camera
files.image(work .. "/handed over.img", { width = 4, height = 4 }, 1, function(_, x, y) return 10 * y + x end)

local function start(name, ...) return another.start(program, name, "--data", data, ...) end

-- A name relative to where the other was started.
local view = start("view", "--view", "handed over.img")
check.eq(view.finish(), 0)
assert(not view.errors():find("kelvo:"), view.errors())
wait(500)
check.eq(title(), "Kelvo - handed over")
check.eq(pixel(3, 2), 23)

local nothing = start("nothing")
check.eq(nothing.finish(), 3)
check.holds(nothing.errors(), "kelvo: Kelvo runs already with the data directory ")
check.holds(nothing.errors(), "(process ")
-- A script can't be given away, nor may it run beside: nothing of it happens.
local script = start("script", "--view", data .. "/sample.seq", "--script", "/no/such/script.lua", "--transcript", "t.jsonl")
check.eq(script.finish(), 3)
check.holds(script.errors(), "a script needs one of its own")
check.eq(io.open(work .. "/t.jsonl"), nil)
wait(500)
check.eq(title(), "Kelvo - handed over")

-- A calibration is for a camera that is on.
local calibration = start("calibration", "AUTOSTART last.cal")
check.eq(calibration.finish(), 0)
wait(500)
check.answer_box("Camera must be on in order\nto load a calibration", "ok", "Kelvo message")

-- While a dialog is open a file waits for its end, and opens then.
command(120)
check.eq(dialog(), "DISPLAY")
check.eq(start("waits", "--view=" .. data .. "/sample.seq").finish(), 0)
wait(2000)
check.eq(title(), "Kelvo - handed over")
press(2)
wait(500)
check.eq(title(), "Kelvo - sample")

-- The same directory by another name.
assert(os.execute("ln -s data '" .. work .. "/link'"))
check.eq(another.start(program, "link", "--data", "link/", "--view", "handed over.img").finish(), 0)
wait(500)
check.eq(title(), "Kelvo - handed over")

-- Another directory has its own Kelvo, and this one notes nothing of it.
local before = check.mark()
files.write(work .. "/own.lua", "assert(state('DefaultDir'):match('/other$')); answer('ok'); return 7")
assert(os.execute("mkdir -p '" .. work .. "/other' && cp '" .. data .. "/platform.ini' '" .. work .. "/other'"))
local other = another.start(program, "other", "--virtual-time", "--data", "other", "--script", "own.lua")
check.eq(other.finish(), 7, "its script's own result")
check.eq(check.mark(), before)

-- Two at once: both files open.
local first = start("first", "--view", data .. "/sample.seq")
local second = start("second", "--view", "handed over.img")
check.eq({ first.finish(), second.finish() }, { 0, 0 })
wait(500)
check.seen("title", { text = "Kelvo - sample" }, before + 1)
check.seen("title", { text = "Kelvo - handed over" }, before + 1)

-- The files of one start belong together: the first comes on view, the others stand behind it.
check.eq(start("several", "handed over.img", data .. "/sample.seq").finish(), 0)
wait(500)
check.eq({ title(), menu(2101).text }, { "Kelvo - handed over", "&2 sample.seq" })
