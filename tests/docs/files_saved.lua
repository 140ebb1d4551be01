-- Saves a frame on view and a sequence of two live frames, and writes down what stands in them: FILE FRAME SAMPLE COUNT.
local truth = {}
local function note(file, frame, sample, count) truth[#truth + 1] = ("%s %d %d %d"):format(file, frame, sample, count) end
while box() do answer("ok") end
press(1070)
press(1)
press(2)
assert(state("LiveVideo") == 1)

-- Without a calibration the samples stand as they are read.
command(108)
set(1460, "many")
check(1784, true)
press(1)
for frame = 0, 1 do
  frames(7)
  command(140)
  command(109)
  answer("ok")  -- the image is frozen
  assert(not box())
  for sample = 0, 81919, 997 do note("many0.seq", frame, sample, raw(sample)) end
  command(140)
end

command(113)
choose(datadir() .. "/sample.seq")
command(114)
command(106)
set(1460, "still")
press(1)
assert(not box())
local width, height = state("ImageHeader.ImageWidth"), state("ImageHeader.ImageHeight")
for sample = 0, width * height - 1, 97 do note("still.img", 0, sample, pixel(sample % width, sample // width)) end
-- For other programs: the counts, and a gray value for each 64 of them.
for id, name in pairs { [126] = "still.tif", [125] = "still8.tif" } do
  command(id)
  choose(datadir() .. "/" .. name)
  assert(not box())
end
assert(state("ImageHeader.DisplayHigh") - state("ImageHeader.DisplayLow") == 16383)
local out <close> = assert(io.open("truth.txt", "w"))
out:write(table.concat(truth, "\n"), "\n")
