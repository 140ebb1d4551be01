-- The name that a sequence was given, its number and its frames stay through a change of camera.
local check = require "check"
while box() do answer("ok") end

command(108)
set(1460, "run3")
set(1486, "7")
set(1488, "4")
press(1)
local function named() return { state("SeqFilePath"), state("SeqNumber"), state("FramesToAverageSeq") } end
local before = named()
check.eq(before, { datadir() .. "/run.seq", 7, 4 })

local camera = state("ActiveCamera")
local columns = state("Hroi")
for _ = 1, 2 do
  command(123)
  check.eq(dialog(), "INITIAL")
  pick(1598, picked(1598) == 0 and 1 or 0)
  press(1)
  check.answer_box("Kelvo must be re-initialized before changes are effective. Restart now?", "yes", "Kelvo configuration change")
  while box() do answer("ok") end
  check.eq(dialog(), nil)
  check.eq(named(), before)
  assert((state("ActiveCamera") ~= camera) == (state("Hroi") ~= columns), "another camera, another size")
end
check.eq(state("ActiveCamera"), camera, "there and back")
