-- Recording a script: Cancel at its start, what can't be done meanwhile, a file that can't be written.
local check = require "check"
answer("ok")
local folder = datadir() .. "/scripts"

command(2253)
check.eq(file().title, "Record a script")
check.eq(file().directory, folder)
cancel()
check.eq({ menu(2253).checked, file(), box() }, { false, nil, nil })

command(2253)
choose("first")  -- a bare name is one in the folder of the working directory of the start
check.eq(menu(2253).checked, true)
command(2300)
check.answer_box("A script is being recorded.\nEnd the recording before you run one.", "ok", "Kelvo message")
command(113)
cancel()
command(120)
scroll(1242, 500) scroll(1242, 600)
key("Escape")
check.eq(dialog(), nil)
command(2006)             -- the frame account stays open beside the main window
press("ACCOUNT", 1007)
command(2006)

-- The disk refuses; nothing is lost: another name.
sim.fault("disk")
command(2253)
check.eq(menu(2253).checked, false)
assert(box().text:find("^Unable to write the script\n"), box().text)
answer("ok")
check.eq(file().title, "Record a script")
sim.fault("disk", false)
choose(folder .. "/other.lua")
check.eq({ box(), file() }, { nil, nil })
check.eq(listdir(folder), { "noise-over-time.lua", "other.lua", "what-is-on-view.lua" })
check.eq(readfile(folder .. "/other.lua"):match("\n(.*)"), [[
command(2300)
answer("ok")
command(113)
cancel()
command(120)
scroll(1242, 600)
key("Escape")
command(2006)
press("ACCOUNT", 1007)
command(2006)
]])

-- Given up: the disk refuses, and no other name is wanted.
command(2253)
choose(folder .. "/gone.lua")
sim.fault("disk")
command(2253)
answer("ok")
cancel()
sim.fault("disk", false)
check.eq({ menu(2253).checked, box(), file() }, { false, nil, nil })
check.eq(readfile(folder .. "/gone.lua"), nil)

-- The end of the program writes what was recorded so far (record_script_again.lua).
command(2253)
choose(folder .. "/last.lua")
command(2007)
command(2007)
