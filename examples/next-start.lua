-- The start after examples/first-light.lua with "AUTOSTART last.cal" on the command line: the camera comes on with the calibration that
-- was made last, and no question is asked.
local out = arg and arg[1] or "first-light"

for _, line in ipairs(transcript()) do
    assert(line.kind ~= "box" and line.kind ~= "dialog", "asked: " .. (line.text or line.name or ""))
end
assert(state("CameraOn") == 1 and state("LiveVideo") == 1, "the camera is on and live")
assert(state("CalType") == 2, "with gains and offsets")
sim.source("scene")
frames(3)
command(2004)
frames(2)
screenshot(out .. "/25-next-start.png")
print("next start, AUTOSTART last.cal: corrected, no question asked")
print("  picture: 25-next-start.png")
