-- Corrected with the camera on: live video is frozen for the run, the calibration in force stays, and what is refused lets it go on.
local check = require "check"
local calibration = require "calibration"
local unchanged = require "unchanged"

local data = datadir()
calibration.turn_on()
calibration.two_point(20, 25, 4)
answer("ok")
check.eq({ state("CalType"), state("LiveVideo") }, { 2, 1 })

-- A raw frame as it is saved without a calibration, in readout order: here that of the image.
local width, height = state("Hroi"), state("Vroi")
frames(2)
local counts = {}
for i = 0, width * height - 1 do counts[#counts + 1] = string.pack("<i2", raw(i)) end
local files = require "files"
files.write(data .. "/raw.seq", files.header { width = width, height = height } .. table.concat(counts))

local lists = { state("DecomList"), state("GainList"), state("OffsetList") }
command(134)
set(808, data .. "/raw.seq"); set(1372, "0"); set(809, data .. "/Last.cal"); set(707, data .. "/even.seq")
set(1371, "-1")
press(1)
check.answer_box("StartFrame less than zero!", "ok")
check.eq(state("LiveVideo"), 1)
set(1371, "0")
press(1)
check.eq({ dialog(), box() }, {})
check.eq({ state("LiveVideo"), state("ViewingFile"), state("CalType") }, { 0, 1, 2 })
check.eq({ state("DecomList"), state("GainList"), state("OffsetList") }, lists)
command(140)
check.eq({ state("LiveVideo"), state("ViewingFile") }, { 1, 0 })
