-- The example that run.sh shows where there is no display: it runs to its end and leaves its pictures.
local check = require "check"
local top = assert(arg[0]:match("^(.*)/tests/scripts/"), arg[0])
assert(loadfile(top .. "/examples/first-light.lua"))()
for _, name in ipairs { "1-sample", "2-colour", "3-cursor", "4-display" } do
  check.eq(readfile("first-light/" .. name .. ".png"):sub(2, 4), "PNG", name)
end
