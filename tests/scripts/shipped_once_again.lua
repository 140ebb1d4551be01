-- The start after shipped_once.lua: what was taken away stays away, with its beep and its box.
local check = require "check"
check.seen("beep", { sound = "exclamation" })  -- no start picture
answer("ok")
check.eq(io.open(datadir() .. "/kelvo220.bmp"), nil)
command(145)
check.answer_box("Could not open file MATROX.PAL", "ok", "Kelvo message")
check.eq(io.open(datadir() .. "/MATROX.PAL"), nil)
-- Without the stamp the next start puts them back.
assert(os.remove(datadir() .. "/shipped.stamp"))
