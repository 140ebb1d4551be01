-- An earlier version kept its notes in the data directory: they are in force, and lie where the desktop wants them
-- (notes_taken_over_again.lua). arg[1]: the program.
local check = require "check"
local files = require "files"
local another = require "another"
press(2)  -- the viewer
local data, state_directory, cache = state("DefaultDir"), state("StateDir"), state("CacheDir")
check.eq({ data:match("/([^/]+/[^/]+)$"), state_directory:match("/([^/]+/[^/]+)$"), cache:match("/([^/]+/[^/]+)$") },
  { "share/kelvo", "state/kelvo", "cache/kelvo" })
check.eq({ menu(2100).text, menu(2101).text, menu(2102) }, { "&1 warm.img", "&2 cold.img" })
check.eq(menu(2007).checked, true, "the color scale")
for _, name in ipairs { "window.ini", "recent.ini", "CommLog.txt" } do
  assert(readfile(state_directory .. "/" .. name), name)
  check.eq(readfile(data .. "/" .. name), nil, name .. " has moved")
end
check.holds(readfile(state_directory .. "/PreviousCommLog.txt"), "Of=the version before")

-- Somebody has gone back to the version before. A second start beside this one takes nothing over: the directory is held.
files.write(data .. "/recent.ini", "[Recent]\nFile1=/measured/meanwhile.img\n")
local recent = readfile(state_directory .. "/recent.ini")
assert(os.remove(state_directory .. "/recent.ini"))
local second = another.start(arg[1], "second")
check.eq(second.finish(), 3, second.errors())
check.eq(readfile(state_directory .. "/recent.ini"), nil)
check.eq(readfile(data .. "/recent.ini"), "[Recent]\nFile1=/measured/meanwhile.img\n")
files.write(state_directory .. "/recent.ini", recent)
