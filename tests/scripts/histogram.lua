-- The histogram of a stored picture: what it counts and measures beside figures reckoned here, its rectangle by bars and numbers, the axes of
-- its setup, what it saves, and what it leaves as it was.
local check = require "check"
local files = require "files"
local unchanged = require "unchanged"
answer("ok")

local kX, kY, kWidth, kHeight = 309, 311, 314, 316
local kXBar, kYBar, kWidthBar, kHeightBar = 308, 310, 313, 315
local kLive, kSetup, kPrint, kSave, kExit = 318, 301, 339, 1606, 338

-- Without anything on view.
command(160)
check.eq({ dialog(), status() }, { nil, "There is nothing to measure: open an image or turn the camera on" })

-- Column c of row r: 1000 + (7 c + 3 r) mod 50.
local function count_at(x, y) return 1000 + (7 * x + 3 * y) % 50 end
local picture = datadir() .. "/picture.img"
files.image(picture, { width = 64, height = 48, frames = 1 }, 1, function(_, x, y) return count_at(x, y) end)
command(107)
choose(picture)
check.eq({ box(), state("ViewingFile") }, { nil, 1 })

-- The rectangle's samples as the histogram visits them.
local function samples(x, y, columns, rows)
  local function side(centre, size, full)
    local first, last = centre + 1 - (size + 1) // 2, centre + size // 2
    if first < 1 then first = 0 end
    return first, math.min(last, math.max(full, first + 1))
  end
  local left, right = side(x, columns, 64)
  local top, bottom = side(y, rows, 48)
  local found = {}
  for row = top, bottom do
    for column = left, right do
      local at = column + row * 64
      if at < 64 * 48 then found[#found + 1] = { count = count_at(at % 64, at // 64), x = column, y = row } end
    end
  end
  return found
end
local function report() return { text(321), text(322), text(325), text(324), text(328), text(327) } end
local function single(number) return (string.unpack("f", string.pack("f", number))) end
local function reckoned(...)
  local list, sum, least, most = samples(...), 0, nil, nil
  for _, sample in ipairs(list) do
    sum = sum + sample.count
    if not least or sample.count < least.count then least = sample end
    if not most or sample.count > most.count then most = sample end
  end
  local squares = 0
  for _, sample in ipairs(list) do squares = squares + (sum / #list - sample.count) ^ 2 end
  return { ("%.3f"):format(single(single(sum) / single(#list))), #list > 1 and ("\u{b1}%.3f"):format(math.sqrt(squares / #list)) or "", tostring(least.count),
    ("(%d,%d)"):format(least.x, least.y), tostring(most.count), ("(%d,%d)"):format(most.x, most.y) }
end

local clean = { screen(20, 200), screen(90, 160) }
local before = unchanged.snapshot()
local mark = check.mark()
key("Shift+F8")
check.eq({ dialog(), title() }, { "HISTGRAM", "Kelvo - picture" })
check.seen("dialog", { name = "HISTGRAM", text = "Histogram: " .. picture }, mark)
check.eq(status(), "Viewing Histogram data")
check.eq(checked(kLive), false)
wait(600)
check.eq({ text(kX), text(kY), text(kWidth), text(kHeight) }, { "32", "24", "16", "12" })
check.eq(report(), reckoned(32, 24, 16, 12))

-- Each number, at its ends and in between.
for _, place in ipairs { { 10, 20, 5, 7 }, { 0, 0, 1, 1 }, { 63, 47, 1, 1 }, { 63, 47, 64, 48 }, { 0, 47, 9, 8 }, { 32, 24, 64, 48 } } do
  for i, id in ipairs { kX, kY, kWidth, kHeight } do set(id, tostring(place[i])) end
  check.eq(report(), reckoned(table.unpack(place)), check.show(place))
end
for _, bar in ipairs { { kXBar, kX, 12, "12" }, { kYBar, kY, 30, "30" }, { kWidthBar, kWidth, 8, "8" }, { kHeightBar, kHeight, 40, "9" } } do
  scroll(bar[1], bar[3])
  check.eq(text(bar[2]), bar[4])
end
check.eq(report(), reckoned(12, 30, 8, 9))
for _, id in ipairs { kX, kY, kWidth, kHeight } do
  for _, wrong in ipairs { "", "wide", "-1", "65", "99999999999999999999" } do
    set(id, wrong)
    check.eq(report(), reckoned(12, 30, 8, 9), id .. " " .. wrong)
  end
end
for i, id in ipairs { kX, kY, kWidth, kHeight } do set(id, ({ "12", "30", "8", "9" })[i]) end

-- The mark stands in the picture and not in the frame.
check.eq({ pixel(8, 25), pixel(12, 25) }, { count_at(8, 25), count_at(12, 25) })
check.eq(state("HistScratchFrame") ~= before.HistScratchFrame, true)

-- The rectangle is what was asked for, whatever Kelvo counted: the axes follow it.
local function value_axis() return { state("HistSettings.XplotMin"), state("HistSettings.XplotMax") } end
local function number_axis() return { state("HistSettings.YplotMin"), state("HistSettings.YplotMax") } end
local bins = {}
for _, sample in ipairs(samples(12, 30, 8, 9)) do bins[sample.count] = (bins[sample.count] or 0) + 1 end
local lowest, highest, fewest, most = 2000, 0, 100, 0
for count = 1000, 1049 do
  if bins[count] then lowest, highest = math.min(lowest, count), math.max(highest, count) end
end
for count = lowest, highest do fewest, most = math.min(fewest, bins[count] or 0), math.max(most, bins[count] or 0) end
check.eq({ value_axis(), number_axis() }, { { lowest, highest }, { fewest, math.max(most, 2) } })

-- What it saves: the figures as a table, the window as two kinds of picture.
local function save(name)
  press(kSave)
  check.eq(file().title, "Save File")
  choose(datadir() .. "/" .. name)
  check.eq({ dialog(), box() }, { "HISTGRAM", nil })
  return readfile(datadir() .. "/" .. name)
end
local csv = save("plot.csv")
local lines = {}
for line in csv:gmatch("[^\n]+") do lines[#lines + 1] = line end
local notes, rows = {}, {}
for _, line in ipairs(lines) do
  local name, value = line:match("^# ([^:]+): ?(.*)$")
  if name then
    notes[name] = value
  elseif line ~= "counts,value,samples" then
    local count, value_of, number = line:match("^(%d+),([%d.]+),(%d+)$")
    rows[tonumber(count)] = { tonumber(value_of), tonumber(number) }
  end
end
check.eq(notes.file, picture)
check.eq(notes.region, "columns 9 to 16, rows 26 to 34")
check.eq(notes.unit, "Signal (Counts)")
check.eq(tonumber(notes.samples), #samples(12, 30, 8, 9))
check.eq(("%.3f"):format(tonumber(notes.mean)), reckoned(12, 30, 8, 9)[1])
check.eq("\u{b1}" .. ("%.3f"):format(tonumber(notes.deviation)), reckoned(12, 30, 8, 9)[2])
check.eq({ notes["samples below"], notes["samples above"] }, { "0", "0" })
for count = lowest, highest do check.eq(rows[count], { count, bins[count] or 0 }, "count " .. count) end
check.eq({ rows[lowest - 1], rows[highest + 1] }, { nil, nil })
check.eq(save("plot.png"):sub(1, 8), "\137PNG\r\n\26\n")
check.eq(save("plot.bmp"):sub(1, 2), "BM")
press(kSave)
cancel()
check.eq({ dialog(), box() }, { "HISTGRAM", nil })

-- Without a camera there is no live data.
check(kLive, true)
check.eq({ checked(kLive), box() }, { false, nil })
check.holds(status(), "camera is off")

-- The setup, each choice in turn; Cancel brings all of it back.
local kNumberAuto, kNumberGrid, kNumberMax, kNumberMin, kLinear, kLog = 340, 341, 342, 343, 344, 345
local kValueAuto, kValueGrid, kValueMax, kValueMin, kUnits = 346, 347, 348, 349, 1256
local function settings()
  local all = {}
  for name, value in pairs(state()) do
    if name:find("^HistSettings%.") then all[name] = value end
  end
  return all
end
local function change_axes()
  check.eq(dialog(), "HISTAXIS")
  check(kNumberGrid, true)
  check(kValueGrid, true)
  check(kValueAuto, false)
  set(kValueMax, "1040")
  set(kValueMin, "1010")
  check.eq(value_axis(), { 1010, 1040 })
  set(kValueMax, "1010")  -- as low as the other end: kept
  set(kValueMin, "nothing")
  check.eq(value_axis(), { 1010, 1040 })
  check(kNumberAuto, false)
  set(kNumberMax, "65530")
  set(kNumberMin, "3")
  set(kNumberMax, "65531")
  set(kNumberMax, "3")
  check.eq(number_axis(), { 3, 65530 })
  press(kLog)
  check.eq({ enabled(kNumberAuto), enabled(kNumberMax), checked(kNumberAuto) }, { false, false, true })
  pick(kUnits, 1)
  check.eq(state("DisplayUnit"), 1)
end
local kept, told = settings(), report()
press(kSetup)
change_axes()
press(2)
check.eq({ dialog(), settings(), report(), state("DisplayUnit") }, { "HISTGRAM", kept, told, 0 })

press(kSetup)
change_axes()
pick(kUnits, 0)
press(kLinear)
check.eq({ enabled(kNumberAuto), enabled(kNumberMax) }, { true, false })
press(1)
check.eq({ dialog(), status() }, { "HISTGRAM", "Viewing Histogram data" })
check.eq(report(), told, "samples beside the axis are measured all the same")
check.eq(value_axis(), { 1010, 1040 })
screenshot("histogram.png")

-- Printing asks over the plot, which stays open.
press(kPrint)
check.eq(dialog(), "DIBPRINT")
press(2)
check.eq({ dialog(), box() }, { "HISTGRAM", nil })

-- Help, and out.
press(9)
check.eq(help(), 369)
press(kExit)
check.eq({ dialog(), box(), status():find("picture.img", 1, true) ~= nil }, { nil, nil, true })
check.eq({ screen(20, 200), screen(90, 160) }, clean)
local expected = {}
for name in pairs(settings()) do expected[name] = "what it was opened with" end
for _, name in ipairs { "Xposition", "Yposition", "Xsize", "Ysize", "XplotMax", "YplotMax", "XplotMin", "YplotMin", "Xautoscale", "Yautoscale", "Xgridlines",
  "Ygridlines", "Yscaling" } do
  expected["kelvo.ini [Histogram] " .. name] = "kept"
end
for _, name in ipairs { "plot.csv", "plot.png", "plot.bmp" } do expected["file " .. name] = "saved" end
expected.SelectedPaths = "of the file selection"
unchanged.expect(before, unchanged.snapshot(), { ["file plot.csv"] = "saved" }, expected)

-- The next opening: the rectangle and the boxes are kept, the ends of the axes are those of the picture.
press("panel", 160)
check.eq({ text(kX), text(kY), text(kWidth), text(kHeight) }, { "12", "30", "8", "9" })
check.eq({ state("HistSettings.Xautoscale"), state("HistSettings.Xgridlines") }, { 0, 1 })
check.eq(value_axis(), { state("ImageHeader.DisplayLow"), state("ImageHeader.DisplayHigh") })
cancel()
check.eq(dialog(), nil)

-- "View statistics..." shows a picture and opens it.
command(135)
choose(picture)
check.eq(dialog(), "HISTGRAM")
wait(600)
check.eq(report(), reckoned(12, 30, 8, 9))
press(kExit)
check.eq({ dialog(), state("ViewingFile") }, { nil, 1 })
