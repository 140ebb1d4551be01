-- Help > Save support files...: what it shows is what it writes, nothing of it names the operator or the machine, Cancel writes nothing, and what can't
-- be written is told. HOME and USER are those of CMakeLists.txt; support_files_test.py reads the archive.
local check = require "check"
local files = require "files"
answer("ok")
local dir = datadir()
local kList, kText, kSize = 22701, 22702, 22703

local function holds_any(words, text)
  local lower = text:lower()
  for _, word in ipairs(words) do
    if lower:find(word:lower(), 1, true) then return word end
  end
end
local home, login = os.getenv("HOME"), os.getenv("USER")
assert(#login >= 4 and home:find(login, 1, true))
local function listed() return table.concat(listdir(dir), "\n") end

-- Names where people have them: in settings, in the name of a file, and in what was shown.
local image = files.image(dir .. "/of-" .. login .. ".img", { width = 8, height = 4 }, 1, function(_, x, y) return x + y end)
drop(image)
check.holds(title(), login)
files.write(dir .. "/own-" .. login .. ".cnf", "; by " .. login:upper() .. "\r\nscene=" .. home .. "/scene.seq\nother=/home/somebody/x.img\nold=C:\\Users\\somebody\\y\n")
files.write(dir .. "/notes.ini", "[Notes]\nBy=J\xf6rg " .. login .. "\n")
files.write(dir .. "/scripts.txt", "is no settings file\n")
files.write(dir .. "/PreviousCommLog.txt", "[CommLog]\nFirst=01 02\n")
wait(1100)

-- What is shown.
local function open()
  command(2270)
  check.eq({ dialog(), box() }, { "SUPPORT" })
end
open()
local shown = {}
for index, name in ipairs(items(kList)) do
  pick(kList, index - 1)
  shown[#shown + 1] = { name = name, text = text(kText) }
  check.eq(holds_any({ login, home, "somebody" }, name .. "\n" .. shown[#shown].text), nil, name)
end
local function shown_text(name)
  for _, file in ipairs(shown) do
    if file.name == name then return file.text end
  end
end
check.holds(shown_text("versions.txt"), "Kelvo: ")
check.holds(shown_text("versions.txt"), "Display: offscreen, 1280 x 1024 at 100 %")
check.holds(shown_text("transcript.jsonl"), "of-USER.img")
check.eq(shown_text("own-USER.cnf"), "; by USER\nscene=~/scene.seq\nother=/home/USER/x.img\nold=C:\\Users\\USER\\y\n")
check.holds(shown_text("notes.ini"), "By=Jörg USER")
check.eq(shown_text("PreviousCommLog.txt"), "[CommLog]\nFirst=01 02\n")
for _, name in ipairs { "kelvo.ini", "camera.ini", "platform.ini", "insb320.cnf" } do assert(shown_text(name), name) end
for _, name in ipairs { "scripts.txt", "CommLog.txt", "sample.seq", "of-USER.img", "kelvo.lock" } do check.eq(shown_text(name), nil, name) end
check.holds(text(kSize), #shown .. " files, ")

-- Cancel, here and in the file dialog, writes nothing.
local before = listed()
press(1)
check.eq({ file().title, file().name:match("^kelvo%-support%-%d+%-%d+%.zip$") ~= nil }, { "Save support files", true })
cancel()
check.eq(dialog(), "SUPPORT")
press(2)
check.eq({ dialog(), listed() }, { nil, before })

-- Whatever step of the writing fails is told, and nothing of it is left.
open()
local told = 0
repeat
  press(1)
  sim.fault("disk", told + 1)
  choose(dir .. "/failed.zip")
  sim.fault("disk", 0)
  local fails = box() ~= nil
  if fails then
    check.answer_box("Unable to write the support files to\n" .. dir .. "/failed.zip", "ok")
    check.eq({ dialog(), listed() }, { "SUPPORT", before })
    told = told + 1
  end
until not fails
assert(told >= 3, told)
assert(os.remove(dir .. "/failed.zip"))
check.eq({ dialog(), listed() }, { nil, before })

open()
shown = {}
for index, name in ipairs(items(kList)) do
  pick(kList, index - 1)
  shown[#shown + 1] = { name = name, text = text(kText) }
end
press(1)
choose(dir .. "/support")
check.eq({ dialog(), box() }, {})
check.holds(status(), " Saved support.zip: ")
for index, one in ipairs(shown) do files.write(("%s/shown.%d.%s"):format(dir, index, one.name), one.text) end

-- A second time over it: the question, no, and the first one stands.
local first = readfile(dir .. "/support.zip")
open()
press(1)
choose(dir .. "/support.zip")
check.answer_box(dir .. "/support.zip already exists.\nDo you want to replace it?", "no")
cancel()
press(2)
check.eq(readfile(dir .. "/support.zip"), first)
