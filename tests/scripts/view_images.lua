-- Single images: load, failures in their words, what stays on view after one.
local check = require "check"
local files = require "files"
answer("ok")
local dir = datadir()

local good = files.image(dir .. "/good.img", { width = 20, height = 10 }, 1, function(_, x, y) return 100 * y + x end)
command(107)
check.eq(file().filters[1], "Image Files (*.img)")
choose(good)
check.eq(title(), "Kelvo - good")
check.holds(status(), "Viewing Image " .. good .. "  11/21/26  12:34:05")
check.eq(pixel(19, 9), 919)

local function refused(name, bytes, words, caption)
  files.write(dir .. "/" .. name, bytes)
  command(107)
  choose(dir .. "/" .. name)
  check.answer_box(words:gsub("PATH", dir .. "/" .. name), "ok", caption)
  check.eq(state("ImageHeader.ImageWidth"), 20, "the header is that of the picture")
end
refused("empty.img", "", "Error reading Image File Header\nPATH", "Kelvo message")
refused("short.img", string.rep("x", 511), "Error reading Image File Header\nPATH", "Kelvo message")
refused("one.img", files.header { width = 4, height = 4, sample_bytes = 1 }, "Invalid data sample size: 1 bytes per sample",
  "Use different function to read this image file.")
check.eq(pixel(19, 9), 919)
refused("cut.img", files.header { width = 4, height = 4 } .. "xy", "Failed to read entire file\nPATH", "Kelvo message")
refused("flat.img", files.header { width = 0, height = 4 }, "Failed to read entire file\nPATH", "Kelvo message")
refused("huge.img", files.header { width = 32767, height = 32767, sample_bytes = 4 }, "Failed to read entire file\nPATH",
  "Kelvo message")

-- Cancel changes nothing.
command(107)
cancel()
check.eq(title(), "Kelvo - good")
check.eq(state("SteppingFrames"), 0)

-- A cut file dropped on the window, then a good one.
drop(dir .. "/cut.img")
answer("ok")
drop(good)
check.eq(pixel(3, 2), 203)

-- A file that isn't there: the dialog asks again.
command(107)
choose(dir .. "/nowhere.img")
check.holds(box().text, "File not found.")
answer("ok")
cancel()
