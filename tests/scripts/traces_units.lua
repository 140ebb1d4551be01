-- Traces of a file in counts, volts and degrees, with and without its bad pixels: what is plotted and saved, against what stands in the file.
local tick = check
local check = require "check"
local figures_file = require "figures_file"
local files = require "files"

local kFrames, kMean, kGaps, kDeviation = 22408, 22411, 22410, 22412
local kFile, kRegion, kFigure, kUnit, kLeaveOut, kMessage, kPixels = 22403, 22404, 22405, 22414, 22417, 22418, 22419
local kSave = 1606

local function at(name) return datadir() .. "/" .. name end
local function get(id) return text("TRACES", id) end
local function push(id) press("TRACES", id) end
local function figures_in(name) return figures_file.read(at(name)) end
local function save(name)
  push(kSave)
  choose(at(name))
  check.eq({ dialog(), box() }, {})
  return figures_in(name)
end
local single = figures_file.single

-- 1000 counts at 20 degrees to 3000 at 40: 100 counts a degree. Ten frames of 6 x 4 at 25 Hz, frame n with
-- 1200 + 10 n + 7 x + 3 y, but for a bad pixel at column 2, row 1 of 16000.
local function count(n, x, y)
  if x == 2 and y == 1 then return 16000 end
  return 1200 + 10 * n + 7 * x + 3 * y
end
answer("ok")  -- no camera
files.image(at("plate.seq"), { width = 6, height = 4, frames = 10, rate = 25, cold = 1000, cold_c = 20, hot = 3000, hot_c = 40 }, 10, count)
drop(at("plate.seq"))
regions {
  { name = "plate", x1 = 1, y1 = 0, x2 = 3, y2 = 2 },
  { name = "gray", x1 = 4, y1 = 0, x2 = 5, y2 = 3, emissivity = 0.8, reflected = 30 },
}
local function measured(n, x1, y1, x2, y2, without)
  local sum, pixels, values = 0, 0, {}
  for y = y1, y2 do
    for x = x1, x2 do
      if not (without and x == 2 and y == 1) then
        values[#values + 1] = count(n, x, y)
        sum = sum + values[#values]
      end
    end
  end
  pixels = #values
  local squares = 0
  for _, value in ipairs(values) do squares = squares + (value - sum / pixels) ^ 2 end
  table.sort(values)
  return { mean = sum / pixels, deviation = math.sqrt(squares / (pixels - 1)), least = values[1], most = values[pixels] }
end
local function celsius(counts) return 20 + (counts - 1000) / 100 end
local function of_surface(counts) return (counts - 0.2 * 2000) / 0.8 end  -- 2000 counts are 30 degrees

command(2240)
push(kFile)
check.eq(items("TRACES", kUnit), { "counts", "V", "°C", "°K", "°F" })
check.eq({ picked("TRACES", kUnit), get(kPixels) }, { 0, "9" }, "the unit on view")

-- In counts, with the bad pixel: those of the table, where a surface counts in.
local rows, notes = save("counts.csv")
check.holds(notes, "# unit: counts\n")
check.holds(notes, "# plate: 9 pixels\n# gray: 8 pixels, emissivity 0.8, reflected 30 °C")
for n = 0, 9 do
  local row, plate, gray = rows[n + 2], measured(n, 1, 0, 3, 2), measured(n, 4, 0, 5, 3)
  check.near(tonumber(row[6]), plate.mean, 1e-9)
  check.near(tonumber(row[7]), plate.deviation, 1e-9)
  check.eq({ row[8], row[9] }, { tostring(plate.least), "16000" })
  check.near(tonumber(row[10]), of_surface(gray.mean), 1e-9)
  check.near(tonumber(row[11]), gray.deviation / 0.8, 1e-9)
end

-- In degrees: of the same trace, which isn't made again. Frame by frame the same as stats of what is on view.
pick("TRACES", kUnit, 2)
rows, notes = save("degrees.csv")
check.holds(notes, "# unit: °C\n")
pick("panel", 1256, 2)
for n = 0, 9 do
  local row, plate, gray = rows[n + 2], measured(n, 1, 0, 3, 2), measured(n, 4, 0, 5, 3)
  check.near(tonumber(row[6]), celsius(plate.mean), 1e-9)
  check.near(tonumber(row[7]), plate.deviation / 100, 1e-9)
  check.eq({ tonumber(row[8]), tonumber(row[9]) }, { tonumber(("%.7g"):format(celsius(plate.least))), 170 })
  check.near(tonumber(row[10]), celsius(of_surface(gray.mean)), 1e-9)
  check.near(tonumber(row[11]), gray.deviation / 80, 1e-9)
  command(2000)
  set(1001, tostring(n))
  press(1)
  for i, name in ipairs { "plate", "gray" } do
    local shown, at = stats(name), 2 + 4 * i
    check.near(tonumber(row[at]), shown.unit_mean, 1e-9)
    check.near(tonumber(row[at + 1]), shown.unit_deviation, 1e-9)
    check.eq({ single(tonumber(row[at + 2])), single(tonumber(row[at + 3])) }, { shown.unit_min, shown.unit_max })
  end
end
local mean = 0
for n = 0, 9 do mean = mean + celsius(measured(n, 1, 0, 3, 2).mean) / 10 end
check.eq(get(kMean), ("%.4f °C"):format(mean))

-- Kelvin and Fahrenheit; volts by the camera's two ends.
pick("TRACES", kUnit, 3)
-- The zero of kelvin and the step of Fahrenheit are singles.
check.eq(get(kMean), ("%.4f °K"):format(mean + single(273.15)))
pick("TRACES", kUnit, 4)
check.eq(get(kMean), ("%.4f °F"):format(mean * single(1.8) + 32))
check.eq(get(kDeviation), ("%.4f °F"):format(0.16 * math.sqrt(110 / 12)), "10 counts a frame of 8 pixels in 9: 4/45 of a degree")
pick("TRACES", kFigure, 4)
rows, notes = save("spectrum.csv")
check.holds(notes, "# unit: °F\n")
pick("TRACES", kFigure, 0)
pick("TRACES", kUnit, 2)

-- Left out: a file doesn't tell of bad pixels, so that a set has to.
tick("TRACES", kLeaveOut, true)
push(kFile)
check.answer_box("A file doesn't tell of bad detectors: name the set that it was made with.\nThe window of the regions (View > Regions...) has a button for the set.", "ok")
check.eq(get(kFrames), "10", "the trace is as it was")
files.calibration(at("bench.cal"), 6, 4, 1.0, 0)
files.write(at("bench.bad"), "1,2\n")
local set = readfile(at("bench.cal")):gsub("BadDetFile=", "BadDetFile=bench.bad")
files.write(at("bench.cal"), set)
command(2210)
check.eq(checked("regions", 22115), true, "it is the choice of the regions' window")
press("regions", 22116)
check.eq(file().title, "Calibration set of the files")
choose(at("bench.cal"))
check.eq(state("BadDetectorSet"), at("bench.cal"))
check.holds(text("regions", 22117), "Set for files: " .. at("bench.cal"))
check.eq({ stats("plate").pixels, stats("plate").left_out }, { 8, 1 })
push(kFile)
check.eq({ get(kPixels), get(kFrames) }, { "8, 1 bad one left out", "10" })
rows, notes = save("good.csv")
check.holds(notes, "# bad pixels: left out: " .. at("bench.cal"))
check.holds(notes, "# plate: 8 pixels, 1 bad one left out\n")
check.holds(notes, "# unit: °C\n")
for n = 0, 9 do
  local row, plate = rows[n + 2], measured(n, 1, 0, 3, 2, true)
  check.near(tonumber(row[6]), celsius(plate.mean), 1e-9)
  check.near(tonumber(row[7]), plate.deviation / 100, 1e-9)
  check.eq(single(tonumber(row[9])), single(celsius(plate.most)))
end

-- The same set by script alone: nothing of it is in the way of what was there.
push(2)
tick("regions", 22115, false)
command(2240)
check.eq(checked("TRACES", kLeaveOut), false)
regions { { name = "bad", shape = "point", x1 = 2, y1 = 1, x2 = 2, y2 = 1 } }
tick("TRACES", kLeaveOut, true)
push(kFile)
check.answer_box("All pixels of bad are bad.", "ok")
regions { { name = "away", x1 = 10, y1 = 10, x2 = 12, y2 = 12 } }
push(kFile)
check.answer_box("away lies outside of the picture.", "ok")
check.eq(get(kFrames), "10")
push(2)
press("regions", 2)
