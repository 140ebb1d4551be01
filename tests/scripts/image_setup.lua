-- The image set-up dialog and F9 with a calibrated camera: the list of bad detectors is edited, each entry is marked where the
-- picture shows it in every orientation, and table, set and settings follow what is set.
local check = require "check"
local calibration = require "calibration"

local data = state("DefaultDir")
local columns, rows = 320, 256
local hint = " Adjust image readout sequence &/or change bad pixel list"
local idle = " Use Alt + underlined menu item or trackball to select menu item"
local question = "Settings were changed\nDo you want to SET changes?"
local flip_horizontal, flip_vertical, rotate, replace = 1300, 1302, 1304, 1306
local list, remove, pair, add, name, set_button = 1308, 1310, 1312, 1314, 1460, 1604

local function bytes(file) return readfile(data .. "/" .. file) end

-- The value of a key, as the file has it a second after it was written.
local function key_of(file, section, key)
  local inside = false
  for line in (bytes(file) .. "\n"):gmatch("([^\r\n]*)\r?\n") do
    if line:sub(1, 1) == "[" then inside = line == "[" .. section .. "]" end
    if inside and line:sub(1, #key + 1) == key .. "=" then return line:sub(#key + 2) end
  end
end

local function flags_in(file)
  wait(1100)
  local flags = {}
  for i, key in ipairs { "MirrorVert", "MirrorHoriz", "RotateCCW", "SubstBadPixels" } do
    flags[i] = key_of(file, "Display", key)
  end
  return flags
end

-- A list as it lies on the disk, line by line.
local function lines_of(file)
  local lines = {}
  for line in bytes(file):gmatch("([^\n]*)\n") do lines[#lines + 1] = line end
  return lines
end

local function pair_of(line)
  local row, column = line:match("(%d+), *(%d+)")
  return tonumber(row), tonumber(column)
end

local function entry(table_bytes, row, column)
  return (string.unpack("<I4", table_bytes, 4 * (row * columns + column) + 1))
end

local function open()
  command(122)
  check.eq({ dialog(), status() }, { "GEOMETRY", hint })
end

local function turn(horizontal, vertical, left)
  check(flip_horizontal, horizontal)
  check(flip_vertical, vertical)
  check(rotate, left)
end

-- Without a calibration: there is no list, and what is replaced can be chosen without a question.
assert(dialog() == "CLOCK_ON", dialog())
press(1070)
check.eq(dialog(), "QVF1058")
press(1)
check.eq(dialog(), "CALIB")
press(2)
check.eq({ dialog(), state("CalType") }, { nil, 0 })
open()
for _, id in ipairs { list, remove, pair, add } do check.eq(enabled(id), false, id) end
check.eq({ #items(list), text(name) }, { 0, "Bad det file:" })
check(replace, false)
press(1)
check.eq({ box(), dialog() }, {})
check.eq({ state("SubstBadPixels"), menu(141).checked, status() }, { 0, false, idle })
check.eq(flags_in("kelvo.ini"), { "0", "0", "0", "0" })
open()
check(replace, true)
turn(true, false, false)
press(1)
check.answer_box(question, "no", "Kelvo message")
check.eq(flags_in("kelvo.ini"), { "1", "0", "0", "1" })
check.eq(entry(bytes("DECOM.TMP"), 0, 0), 0, "the table stands until it is set")
open()
press(1)
check.answer_box(question, "yes", "Kelvo message")
check.eq(entry(bytes("DECOM.TMP"), 0, 0), columns - 1)
open()
turn(false, false, false)
press(set_button)
check.eq(status(), hint)
press(1)
check.eq(box(), nil, "what is set is not asked for")
check.eq({ entry(bytes("DECOM.TMP"), 0, 0), menu(141).checked }, { 0, true })

-- An image goes into another directory, which is the current one from then on; the calibration finds its pattern still.
assert(os.execute("mkdir -p '" .. data .. "/elsewhere'"))
command(106)
check.eq(dialog(), "SAVE")
set(1460, data .. "/elsewhere/raw")
press(1)
check.eq(box(), nil)
assert(readfile(data .. "/elsewhere/raw.img"))
command(130)
local counts = calibration.two_point(20, 25, 10)
answer("ok")
check.eq({ box(), dialog(), state("CalType") }, { nil, nil, 2 })
local listed = lines_of("Last.bad")
check.eq(#listed, counts["Total bad pixels"])
check.eq(bytes("DECOM.TMP"), bytes("Last.dcm"))

-- Each bad detector takes its nearest good neighbour, right, above, left, below first.
local bad = {}
for _, line in ipairs(listed) do
  local row, column = pair_of(line)
  bad[row * columns + column] = true
end
local straight = 0
local function check_neighbours(table_bytes)
  for index in pairs(bad) do
    local row, column = index // columns, index % columns
    for _, step in ipairs { { 0, 1 }, { -1, 0 }, { 0, -1 }, { 1, 0 } } do
      local r, c = row + step[1], column + step[2]
      if r >= 0 and c >= 0 and r < rows and c < columns and not bad[r * columns + c] then
        check.eq(entry(table_bytes, row, column), r * columns + c, row .. "," .. column)
        straight = straight + 1
        break
      end
    end
  end
end
check_neighbours(bytes("DECOM.TMP"))
assert(straight > 1000, straight)

-- F9 takes the replacement off and puts it back: the table, the set's copy of it and the key in both files.
key("F9")
check.eq({ state("SubstBadPixels"), menu(141).checked, status() }, { 0, false, idle })
local plain = bytes("DECOM.TMP")
for i = 0, columns * rows - 1 do assert(entry(plain, i // columns, i % columns) == i, i) end
check.eq(bytes("Last.dcm"), bytes("DECOM.TMP"))
check.eq({ flags_in("kelvo.ini")[4], flags_in("Last.cal")[4] }, { "0", "0" })
key("F9")
check.eq({ state("SubstBadPixels"), menu(141).checked, status() }, { 1, true, idle })
check_neighbours(bytes("DECOM.TMP"))
check.eq(bytes("Last.dcm"), bytes("DECOM.TMP"))
check.eq({ flags_in("kelvo.ini")[4], flags_in("Last.cal")[4] }, { "1", "1" })

-- Marks: the picture is gray around the place where the entry shows; what is black there is the outline of the mark.
local function is_black(row, column)
  local zoom = state("Xzoom")
  local r, g, b = screen(column * zoom + zoom // 2, state("PanelHeight") + row * zoom + zoom // 2)
  return r == 0 and g == 0 and b == 0
end

local function outline_at(row, column)
  local black = 0
  for r = row - 2, row + 2 do
    for c = column - 2, column + 2 do
      local edge = math.max(math.abs(r - row), math.abs(c - column)) == 1
      check.eq(is_black(r, c), edge, ("mark of %d,%d at %d,%d"):format(row, column, r, c))
      if edge then black = black + 1 end
    end
  end
  return black
end

-- An entry whose place lies inside the picture in all of them.
local line, row, column
for i, text_of in ipairs(listed) do
  row, column = pair_of(text_of)
  line = i - 1
  if row > 80 and row < 170 and column > 100 and column < 220 then break end
end
local marks = 0
for orientation = 0, 7 do
  local horizontal, vertical, left = orientation & 1 ~= 0, orientation & 2 ~= 0, orientation & 4 ~= 0
  open()
  check.eq({ text(name), #items(list) }, { "Bad det file: " .. data .. "/Last.bad", #listed })
  turn(horizontal, vertical, left)
  pick(list, line)
  press(set_button)
  check.eq(picked(list), line)
  frames(2)
  local r, c = row, column
  if left then r, c = columns - column, row end
  if horizontal then c = columns - c end
  if vertical then r = rows - r end
  marks = marks + outline_at(r, c)
  screenshot("mark" .. orientation .. ".png")
  press(1)
  check.eq({ box(), dialog() }, {})
  check.eq(flags_in("Last.cal"), { horizontal and "1" or "0", vertical and "1" or "0", left and "1" or "0", "1" })
end
check.eq(marks, 8 * 8)
open()
turn(false, false, false)
press(set_button)
press(1)

-- The list edited: a line goes, a pair comes; the scratch copy lies in the current directory until it is committed.
local scratch = data .. "/elsewhere/BADDET.TMP"
check.eq(readfile(scratch), nil)
open()
check.eq(readfile(scratch), bytes("Last.bad"))
pick(list, 0)
press(remove)
check.eq(#items(list), #listed - 1)
check.eq(items(list)[1], listed[2])
set(pair, "128," .. columns)
press(add)
check.answer_box("Valid input range\n0 >= Column >= 319", "ok", "Kelvo message")
set(pair, rows .. ",0")
press(add)
check.answer_box("Valid input range\n0 >= Row >= 255", "ok", "Kelvo message")
local free = 0
while bad[100 * columns + free] do free = free + 1 end
set(pair, "100," .. free)
press(add)
check.eq(items(list)[picked(list) + 1], ("%4d,%4d"):format(100, free))
check.eq(#items(list), #listed)
check.eq(lines_of("Last.bad"), listed, "the list on the disk stands until the edit is committed")
press(1)
check.answer_box(question, "no", "Kelvo message")
check.eq(readfile(scratch), nil)
local edited = lines_of("Last.bad")
check.eq(#edited, #listed)
local found = {}
for _, each in ipairs(edited) do found[each] = true end
check.eq({ found[listed[1]], found[("%4d,%4d"):format(100, free)] }, { nil, true })
check.eq(entry(bytes("DECOM.TMP"), 100, free), 100 * columns + free, "the table stands")
open()
press(1)
check.answer_box(question, "yes", "Kelvo message")
assert(entry(bytes("DECOM.TMP"), 100, free) ~= 100 * columns + free, "the added detector is replaced")
local first_row, first_column = pair_of(listed[1])
check.eq(entry(bytes("DECOM.TMP"), first_row, first_column), first_row * columns + first_column,
  "the removed one shows itself")

-- A list that is gone: the operator goes on without one, or not at all.
os.remove(data .. "/Last.bad")
command(122)
check.answer_box("Unable to open Bad detector file:\n" .. data .. "/Last.bad\nSetting Bad detector filename to NULL",
  "cancel", "Kelvo message")
check.answer_box("Can not continue with invalid\nbad detector filename", "ok", "Kelvo message")
check.eq({ dialog(), status() }, { nil, idle })
key("F9")
check.eq(state("SubstBadPixels"), 0)
key("F9")
check.answer_box("Could not open file " .. data .. "/Last.bad", "ok", "Kelvo message")
check.eq({ state("SubstBadPixels"), menu(141).checked, flags_in("Last.cal")[4] }, { 0, false, "0" })
command(122)
answer("ok")
check.eq({ dialog(), enabled(list) }, { "GEOMETRY", false })
press(1)
check.eq({ box(), dialog() }, {})
