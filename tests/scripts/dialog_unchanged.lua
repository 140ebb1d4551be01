-- A dialog (arg[1], a row of lib/dialogs.lua) is opened, each of its controls is changed, and it is left without keeping anything (arg[2]):
-- cancelled; closed by its window's own button; refused, Ok once a field, and then cancelled; untouched, with nothing changed. State, settings
-- files, all other files and the head's registers are as before, but for what the row names.
local check = require "check"
local calibration = require "calibration"
local dialogs = require "dialogs"
local files = require "files"
local unchanged = require "unchanged"

local row, way = assert(dialogs.rows[arg[1]], arg[1]), arg[2]

calibration.turn_on()
calibration.two_point(20, 25, 4)
answer("ok")
check.eq({ dialog(), box(), state("CalType") }, { nil, nil, 2 })
files.image(datadir() .. "/sequence.img", { width = 40, height = 30, frames = 3 }, 3, function(frame, x, y) return 100 * frame + y + x end)
files.write(datadir() .. "/Perm.bad", "   3,   4\n")
files.write(datadir() .. "/other.cal", "[Setup]\nActiveCamera=3\n[Calibration]\nDriverNumber=3\n")
if row.setup then row.setup() end

local function front() return { dialog(), box() and box().text, file() and file().title } end
local before, front_before = unchanged.snapshot(), front()
row.open()
local name = front()

local function leave()
  if row.leave then row.leave() else press(2) end
end

local function value(of)
  if type(of) == "function" then return of() end
  return of
end

if way == "cancelled" then
  if dialog() then unchanged.change_all(row) end
  if row.inside then unchanged.expect(before, unchanged.snapshot(), row.kept, row.may) end
  leave()
  if row.inside then return end
elseif way == "closed" then
  unchanged.change_all(row)
  cancel()
elseif way == "untouched" then
  press(1)
else
  check.eq(way, "refused")
  if type(row.refused) == "function" then
    row.refused()
  else
    unchanged.change_all(row)
    if row.refused_first then row.refused_first() end
    for number, refusal in ipairs(row.refused) do
      for id, text_of in pairs(refusal.set) do set(id, value(text_of)) end
      local mark = check.mark()
      press(1)
      if refusal.box then
        check.answer_box(value(refusal.box), refusal.button or "ok")
      else
        check.eq(#check.lines("beep", mark + 1), 1, "refusal " .. number)
      end
      check.eq(front(), name, "refusal " .. number)
    end
  end
  leave()
end

check.eq(front(), front_before)
local kept = {}
for _, list in ipairs { row.kept or {}, row["kept_" .. way] or {} } do
  for key_of, reason in pairs(list) do kept[key_of] = reason end
end
if way == "untouched" then kept = {} end
unchanged.expect(before, unchanged.snapshot(), kept, row.may, arg[1] .. " " .. way)
if row.finish then row.finish() end
