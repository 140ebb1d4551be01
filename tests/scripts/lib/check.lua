-- Helpers for scripts that test: expectations whose messages say what came instead, and the transcript by kind.
-- Called as a function it is still the script call check(id, on), whose name "local check = require 'check'" takes.
local work_check_box = check
local check = setmetatable({}, { __call = function(_, ...) return work_check_box(...) end })

-- The text of a value, tables with their fields in order.
local function show(value)
  if type(value) == "string" then return string.format("%q", value) end
  if type(value) ~= "table" then return tostring(value) end
  local names = {}
  for name in pairs(value) do names[#names + 1] = name end
  table.sort(names, function(a, b) return tostring(a) < tostring(b) end)
  local parts = {}
  for _, name in ipairs(names) do
    parts[#parts + 1] = type(name) == "number" and show(value[name]) or tostring(name) .. "=" .. show(value[name])
  end
  return "{" .. table.concat(parts, ", ") .. "}"
end
check.show = show

local function equal(a, b)
  if type(a) ~= "table" or type(b) ~= "table" then return a == b end
  for name, value in pairs(a) do
    if not equal(value, b[name]) then return false end
  end
  for name in pairs(b) do
    if a[name] == nil then return false end
  end
  return true
end

local function complain(message, what)
  error((what and what .. ": " or "") .. message, 3)
end

-- Equal, tables field by field.
function check.eq(actual, expected, what)
  if not equal(actual, expected) then complain("expected " .. show(expected) .. ", got " .. show(actual), what) end
end
check.expect_eq = check.eq
check.same = equal

-- A number within a tolerance.
function check.near(actual, expected, tolerance, what)
  if type(actual) ~= "number" or math.abs(actual - expected) > tolerance then
    complain("expected " .. expected .. " within " .. tolerance .. ", got " .. show(actual), what)
  end
end

-- A text that holds another one, plainly (no pattern).
function check.holds(text, part, what)
  if type(text) ~= "string" or not text:find(part, 1, true) then
    complain("expected a text with " .. show(part) .. ", got " .. show(text), what)
  end
end

-- A call that must fail; returns its message.
function check.fails(call, part, what)
  local done, message = pcall(call)
  if done then complain("expected a failure with " .. show(part), what) end
  if not tostring(message):find(part, 1, true) then
    complain("expected a failure with " .. show(part) .. ", got " .. show(message), what)
  end
  return message
end

-- The message box in front must have that text; answers it.
function check.answer_box(text, button, caption)
  local front = box()
  if not front then complain("expected the box " .. show(text) .. ", but none is in front") end
  if front.text ~= text then complain("expected the box " .. show(text) .. ", got " .. show(front.text)) end
  if caption and front.caption ~= caption then
    complain("expected the caption " .. show(caption) .. ", got " .. show(front.caption))
  end
  answer(button or "ok")
end

-- Lines of the transcript of one kind (nil: all), from number first on. Each keeps its number in the whole as "line".
function check.lines(kind, first)
  local found = {}
  for number, line in ipairs(transcript()) do
    line.line = number
    if number >= (first or 1) and (not kind or line.kind == kind) then found[#found + 1] = line end
  end
  return found
end

-- How many lines there are: a mark for check.lines(kind, mark + 1).
function check.mark()
  return #transcript()
end

-- The first line of the kind whose fields equal those given, nil if there is none.
function check.find(kind, fields, first)
  for _, line in ipairs(check.lines(kind, first)) do
    local fits = true
    for name, value in pairs(fields or {}) do fits = fits and equal(line[name], value) end
    if fits then return line end
  end
  return nil
end

-- The same, but it must be there.
function check.seen(kind, fields, first)
  local line = check.find(kind, fields, first)
  if not line then complain("no " .. kind .. " line with " .. show(fields or {}) .. " in the transcript") end
  return line
end

-- The given texts came as lines of the kind (status, title, box, ...) in that order, others may stand between.
function check.seen_in_order(kind, texts, first)
  local next_line = first or 1
  for _, text in ipairs(texts) do
    local line = check.find(kind, { text = text }, next_line)
    if not line then complain("no " .. kind .. " line " .. show(text) .. " from line " .. next_line .. " on") end
    next_line = line.line + 1
  end
end

return check
