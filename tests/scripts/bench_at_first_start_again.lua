-- The bench has been shown once: it opens no more by itself.
local check = require "check"

while box() do answer("ok") end
check.eq(dialog(), "CLOCK_ON")
for _, line in ipairs(transcript()) do assert(line.name ~= "BENCH") end
press(2)
