-- Stored frames corrected with a set, as an operator without a camera does it: the dialog's fields, each refusal, the result on view.
local check = require "check"
local files = require "files"

local data = datadir()
local image, even = data .. "/raw.seq", data .. "/even.seq"
local function count(frame, x, y) return 1000 + 100 * frame + 4 * y + x end
files.image(image, { width = 8, height = 4, frames = 3 }, 3, count)
files.calibration(data .. "/warm.cal", 8, 4, 2, 100)
files.write(data .. "/none.cal", "[Setup]\nActiveCamera=2\n")

local kImage, kStart, kEnd, kSet, kResult, kResultStart, kBrowse = 808, 1371, 1372, 809, 707, 1373, 111
local function fields()
  return { text(kImage), text(kStart), text(kEnd), text(kSet), text(kResult), text(kResultStart) }
end
local function pressed(button, box_text, answer_with, caption)
  press(button)
  check.answer_box(box_text, answer_with, caption)
  check.eq(dialog(), "APPLYCAL")
end

-- Nothing was viewed yet.
answer("ok")
command(134)
check.eq(dialog(), "APPLYCAL")
check.eq(fields(), { "", "0", "-1", "last.cal", "", "0" })
pressed(1, "No filename and no frames in Host RAM!", "ok", "Invalid image filename!")

-- Browse fills the name that was left last.
set(kSet, "any")
press(kBrowse)
check.eq(file().filters[1], "All Files (*.*)")
choose(data .. "/warm.cal")
check.eq(text(kSet), data .. "/warm.cal")
set(kImage, "any")
press(kBrowse)
check.eq(file().filters[1], "Sequence Files (*.seq)")
choose(image)
check.eq(fields(), { image, "0", "2", data .. "/warm.cal", "", "0" })
press(kBrowse)
cancel()
check.eq(text(kImage), image)

-- Each number that can't be read is told with its text, and counts as 0.
set(kStart, "first"); set(kEnd, "last"); set(kResultStart, "there"); set(kResult, even); set(kSet, data .. "/gone.cal")
local mark = check.mark()
press(1)
check.answer_box("first", "ok", "Invalid start frame value.")
check.answer_box("last", "ok", "Invalid end frame value.")
check.answer_box("there", "ok", "Invalid start result frame value.")
check.answer_box(data .. "/gone.cal", "ok", "Unable to open calibration file!")
check.eq(#check.lines("beep", mark + 1), 4)
check.eq(fields(), { image, "0", "last", data .. "/gone.cal", even, "there" })

-- A set whose lists are missing.
set(kEnd, "2"); set(kResultStart, "0"); set(kSet, data .. "/none.cal")
press(1)
check.holds(box().text, "Failed to open file: ")
answer("ok")
check.eq(box().caption, "Decommutation File Load Error!")
answer("ok")
check.eq(readfile(even), nil)

-- Corrected: (count - 100) / 2 in place of each, and the result is on view at its first frame.
set(kSet, data .. "/warm.cal"); set(kStart, "1"); set(kResultStart, "1")
press(1)
check.eq({ dialog(), box() }, {})
check.eq({ state("ViewingFile"), state("LoadName"), state("CurrentFrame"), state("LastFrame") }, { 1, even, 1, 2 })
local function shows(frame)
  for _, place in ipairs { { 0, 0 }, { 7, 0 }, { 3, 2 }, { 7, 3 } } do
    local x, y = place[1], place[2]
    check.eq(pixel(x, y), (count(frame, x, y) - 100) // 2, frame .. ": " .. x .. "," .. y)
  end
end
shows(1)
command(114)
check.eq(state("CurrentFrame"), 2)
shows(2)
check.eq({ state("ImageHeader.IntensityCold"), state("ImageHeader.IntensityHot"), state("ImageHeader.TemperatureHot") }, { 3000, 9000, 25 })
wait(1100)
check.holds(readfile(data .. "/kelvo.ini"):gsub("\r", ""), "CalPath=" .. data .. "/warm.cal")

-- The image is offered again; once something else was viewed, that.
command(134)
check.eq(fields(), { image, "0", "2", data .. "/warm.cal", image, "0" })

-- In place, twice: asked for the file, and the second time for its correction too.
pressed(1, "Result file already exists!\nWrite over it?", "no", "Overwrite file?")
press(1)
answer("yes")
check.eq({ dialog(), box() }, {})
shows(0)
local once = readfile(image)
command(134)
check.eq(text(kImage), image)
press(1)
answer("yes")
check.answer_box("Image file has already been calibrated: Continue?", "no", image)
check.eq(dialog(), "APPLYCAL")
check.eq(readfile(image), once)
press(1)
answer("yes")
answer("yes")
check.eq(dialog(), nil)
check.eq(pixel(0, 0), ((count(0, 0, 0) - 100) // 2 - 100) // 2)

drop(data .. "/sample.seq")
command(134)
check.eq(text(kImage), data .. "/sample.seq")
press(9)
check.eq((help()), 2030)
press(2)
check.eq(dialog(), nil)

-- A frame that isn't there ends the run; the result promises it all the same, and what is there is on view.
command(134)
set(kImage, image); set(kStart, "2"); set(kEnd, "4"); set(kResult, data .. "/short.seq"); set(kResultStart, "0")
press(1)
answer("yes")
check.answer_box("Error reading uncalibrated frame #3.", "ok", "Error reading image data")
check.eq(dialog(), nil)
check.eq({ state("LoadName"), state("LastFrame") }, { data .. "/short.seq", 0 })
check.eq(#readfile(data .. "/short.seq"), 512 + 2 * 32)
check.eq(string.unpack("<I4", readfile(data .. "/short.seq"), 43), 3)
