-- The example that run.sh shows after the first one.
local check = require "check"
local top = assert(arg[0]:match("^(.*)/tests/scripts/"), arg[0])
arg[1] = datadir():match("^(.*)/data$")
assert(loadfile(top .. "/examples/next-start.lua"))()
check.eq(readfile("25-next-start.png"):sub(2, 4), "PNG")
check.eq({ box(), dialog() }, {})
