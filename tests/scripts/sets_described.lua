-- Choosing a calibration: CAL_OPEN says of the set that is selected when it was made, with which camera and integration
-- time; what is no set says so. "Browse..." takes the place of the lists in both dialogs.
local check = require "check"
local files = require "files"
local video = require "video"
local dir = datadir()
video.turn_on()
local path = files.calibration(dir .. "/warm.cal", state("Hroi"), state("Vroi"), 1, 0)
local text_of_set = readfile(path):gsub("IntTime=12", "IntTime=12\nFrameRate=100.000000")
files.write(path, text_of_set)
assert(os.execute("touch -d '2026-03-04 05:06:07' '" .. path .. "'"))
files.write(dir .. "/broken.cal", "nothing")

local function select_file(name)
  for i, item in ipairs(items(1464)) do
    if item == name then return pick(1464, i - 1) end
  end
  error("no " .. name)
end

command(133)
check.eq(text(20301), "")
select_file("warm.cal")
local said = text(20301)
check.holds(said, "04 Mar 2026, 05:06")
check.holds(said, state("Description"))
-- Index 12 of the table at 100 Hz: a third of a line a step, four rows, of 256 rows in 10 ms.
assert(tonumber(said:match("    (%d+%.%d%d%d) ms$")) > 0, said)
select_file("broken.cal")
check.eq({ text(20301), box() }, { "Not a calibration, or it can't be read.", nil })
screenshot("cal_open.png")

-- The selection in front; a file chosen there is taken as a double click takes it.
press(20300)
check.eq({ file().title, file().filters[1] }, { "Open File", "Calibration Files (*.cal)" })
cancel()
check.eq(dialog(), "CAL_OPEN")
press(20300)
choose(dir .. "/broken.cal")
check.answer_box("The calibration file selected is not for this camera", "ok")
check.eq(dialog(), "CAL_OPEN")
press(20300)
choose(path)
check.eq({ dialog(), state("CalType") }, { nil, 2 })

command(132)
check.eq(dialog(), "CAL_SAVE")
press(20300)
choose(dir .. "/copy")
check.eq({ dialog(), box() }, { nil, nil })
check.eq(status(), " Saved calibration copy.cal in " .. dir)
assert(readfile(dir .. "/copy.gai"))
