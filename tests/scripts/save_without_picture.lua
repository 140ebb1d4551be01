-- Without a camera and without a file on view there is no picture: what can't be gathered isn't saved, and the operator is told.
local check = require "check"
local dir = datadir()
answer("ok")
if dialog() then press(2) end
check.eq({ state("GrabberPresent"), state("ViewingFile"), state("LiveVideo") }, { 0, 0, 0 })

local start_hint = " Use Alt + underlined menu item or trackball to select menu item"
local function save_image(name, frames)
  command(106)
  check.eq(dialog(), "SAVE")
  set(1460, name)
  set(1488, frames)
  press(1)
  check.answer_box("Video Data Acquisition Failed, Hardware error", "ok", "Kelvo message")
  check.eq({ box(), dialog() }, {})
  check.eq(status(), start_hint)
end
save_image("none", "1")
save_image("none", "7")

command(108)
set(1460, "none")
press(1)
local mark = check.mark()
command(109)
check.answer_box("IMAGE IS FROZEN!\nIt will be saved as \n" .. dir .. "/none0.seq\nDo you want to do this?", "ok")
check.answer_box("Unable to get image data!", "ok", "Kelvo SaveSequence Error")
check.eq(#check.lines("beep", mark + 1), 1)
check.eq({ box(), state("SeqNumber"), status() }, { nil, 0, start_hint })

for _, name in ipairs(listdir(dir)) do assert(not name:find("none", 1, true), name) end
