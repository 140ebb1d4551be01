-- First light: Kelvo without a camera, as a viewer. Opens the sample sequence that ships with it, steps, zooms, reads values,
-- changes colours, and leaves pictures in the directory named after "--".

local out = arg and arg[1] or "first-light"

local function say(...)
    print(string.format(...))
end

-- The start: no camera head answers, and the program says so.
if box() then
    say("start: %s", box().text)
    answer("ok")
end
say("title: %s", title())
command(143)                                 -- a second run begins as the first did

-- The sample sequence.
command(113)
choose(datadir() .. "/sample.seq")
while state("Xzoom") > 3 do command(201) end
say("status: %s", status())
screenshot(out .. "/1-sample.png")

for _ = 1, 20 do command(114) end
say("twenty frames on: frame %d of %d", state("CurrentFrame"), state("LastFrame") + 1)

-- Zoom in, and a perceptually even colour map.
command(200)
command(145)
say("zoom %d, contrast %d, brightness %d", state("Xzoom"), state("Contrast"), state("Brightness"))
screenshot(out .. "/2-colour.png")

-- The image cursor reads the count under it.
command(151)
mouse(400, 300, 0)
say("read-out: %s", status())
say("and the count at its centre: %d", pixel(state("CursorX"), state("CursorY")))
screenshot(out .. "/3-cursor.png")
command(151)

-- The display dialog.
command(120)
screenshot(out .. "/4-display.png")
press(2)

command(143)
say("saved: 1-sample.png, 2-colour.png, 3-cursor.png, 4-display.png")
