-- The start after settings_kept.lua: the shipped levels with two steps of contrast and one of brightness.
local check = require "check"
answer("ok")
check.eq(state("Contrast"), 32)
check.eq(state("Brightness"), 468)
check.eq(state("ResetContrast"), 32)
check.eq(state("ResetBrightness"), 468)
check.eq(state("ImageColor"), 1230)
check.eq(state("Xzoom"), 4)
check.eq(state("Yzoom"), 4)
check.eq(text("panel", 311), "4")
check.eq(text("panel", 317), "32")
check.eq(text("panel", 316), "468")
check.holds(readfile(datadir() .. "/camera.ini"), "; The default: views stored frames too", "remarks stay")
