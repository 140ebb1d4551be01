-- The regions of the start before are on view again.
local check = require "check"
answer("ok")
local kept = regions()
check.eq({ #kept, kept[1].name, kept[1].shape, kept[1].x2 }, { 1, "drawn", "line", 30 })
check.eq(box(), nil)
