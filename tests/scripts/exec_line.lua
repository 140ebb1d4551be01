-- The desktop entry's line, started as a desktop starts it, with a file and without (arg[1]: the program, arg[2]: the
-- entry). What is started gets a data directory and a script of its own.
local check = require "check"
local files = require "files"
local another = require "another"
local program, entry = arg[1], readfile(arg[2])
answer("ok")  -- no camera
local line = assert(entry:match("\nExec=kelvo(.-)\n"))
assert(not entry:find("\nExec=.*\nExec="), "one line")
check.eq(select(2, line:gsub("%%", "%%")), 1, "one field code in" .. line)

local function start(name, opened, script)
  files.write(datadir() .. "/../" .. name .. ".lua", script)
  local words = {}
  for word in line:gmatch("%S+") do
    if word == "%F" then
      for _, path in ipairs(opened) do words[#words + 1] = path end
    else
      words[#words + 1] = word
    end
  end
  for _, word in ipairs { "--virtual-time", "--data", name, "--script", name .. ".lua" } do words[#words + 1] = word end
  local run = another.start(program, name, table.unpack(words))
  check.eq(run.finish(), 0, run.errors())
end

files.image(datadir() .. "/../a b.img", { width = 4, height = 4 }, 1, function(_, x, y) return 10 * y + x end)
start("nothing", {}, "wait(2000); assert(dialog() == 'CLOCK_ON' and title() == 'Kelvo - Frozen'); press(2)")
start("one", { datadir() .. "/sample.seq" }, "wait(2000); assert(not dialog() and title() == 'Kelvo - sample')")
start("two", { datadir() .. "/../a b.img", datadir() .. "/sample.seq" },
  "wait(2000); assert(not dialog() and title() == 'Kelvo - a b' and menu(2101).text == '&2 sample.seq')")
