-- After a save the status line says what was written, and it stays readable until the next command; the file selection is
-- a button away; bitmaps are proposed for the frame on view, asked about once, and may be portable network graphics.
local check = require "check"
local files = require "files"
local video = require "video"
local dir = datadir()
video.turn_on()

-- Live video shows its rate every hundred frames: not over what was saved.
command(106)
set(1460, "live.img")
press(1)
local bytes = #readfile(dir .. "/live.img")
check.eq(status(), string.format(" Saved live.img: 1 frame, %.1f kB in %s", bytes / 1000, dir))
frames(250)
check.holds(status(), " Saved live.img")
command(2004)
frames(250)
check.holds(status(), "Displaying at", "the next command gives the line back")

-- A sequence of several frames in one file.
command(108)
set(1460, "run.seq")
if not checked(1784) then press(1784) end
press(1)
key("F5")
key("F5")
check.holds(status(), " Saved run0.seq: 2 frames, ")
-- What is declined, or fails, says nothing of the kind.
command(106)
set(1460, "live.img")
press(1)
answer("no")
assert(not status():find("Saved"), status())

-- "Browse..." names the file in the selection; the replace question comes once, from the save.
command(106)
press(20300)
check.eq({ file().title, file().directory }, { "Save File", dir })
cancel()
check.eq({ dialog(), text(1460) }, { "SAVE", "*.img" })
press(20300)
choose(dir .. "/live.img")
check.eq({ box(), dialog(), text(1460), text(1462) }, { nil, "SAVE", "live.img", dir })
assert(os.execute("mkdir -p '" .. dir .. "/deep'"))
press(20300)
choose(dir .. "/deep/other")
check.eq({ dialog(), text(1460), text(1462) }, { "SAVE", "other.img", dir .. "/deep" })
press(1)
check.holds(status(), " in " .. dir .. "/deep")
assert(readfile(dir .. "/deep/other.img"))

-- Bitmaps of a sequence: the frame on view is proposed.
drop(files.image(dir .. "/five.seq", { width = 6, height = 4 }, 5, function(f, x, y) return 3000 * f + 10 * y + x end))
key("F7")
key("F7")
command(116)
check.eq({ dialog(), text(1005), text(1006) }, { "FRAMES", "2", "2" })
press(1)
choose(dir .. "/two.png")
check.holds(status(), " Saved two.png: ")
check.eq(readfile(dir .. "/two.png"):sub(2, 4), "PNG")
-- Width, height, 8 bits, palette.
check.eq({ string.unpack(">I4I4I1I1", readfile(dir .. "/two.png"), 17) }, { 6, 4, 8, 3, 27 })

local function range(path)
  command(116)
  set(1005, "1")
  set(1006, "4")
  press(1)
  choose(path)
end
range(dir .. "/all.PNG")
check.holds(status(), " Saved 4 bitmaps, all0.png to all3.png: ")
os.remove(dir .. "/all0.png")
local before = readfile(dir .. "/all2.png")
files.write(dir .. "/all2.png", "mine")
range(dir .. "/all.png")
check.eq(box().text, "3 of the 4 files exist already, the first of them:\n" .. dir .. "/all1.png\n\nDo you want to replace them?")
answer("no")
check.eq(readfile(dir .. "/all2.png"), "mine", "nothing was written")
assert(file(), "another name may be given")
choose(dir .. "/all.png")
answer("yes")
check.eq({ box(), readfile(dir .. "/all2.png") == before }, { nil, true })
check.holds(status(), " Saved 4 bitmaps, all0.png to all3.png: ")

-- To open, all of Kelvo's own kinds are one filter.
command(107)
check.eq(file().filters[1], "Image Files (*.img)")
check.eq(file().filters[6], "All Kelvo files (*.img *.seq *.buf *.sdv *.flt)")
cancel()
