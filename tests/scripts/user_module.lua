-- A program with user-written functions (examples/user-module): their menu, the dialog that asks, what they show and save, each Cancel, and what is
-- refused where menu and settings don't fit.
local check = require "check"
local files = require "files"
local unchanged = require "unchanged"
answer("ok")
local dir = datadir()
local idle = " Use Alt + underlined menu item or trackball to select menu item"

-- The menu: four items in the place of the one that stood for none.
local texts = { [900] = "&Mean of the picture", [901] = "&Pixels above...", [902] = "&Save the image...", [903] = "&Next sample..." }
for id = 900, 999 do check.eq(menu(id) and menu(id).text, texts[id], "item " .. id) end
check.eq(menu(180), nil)
check.eq({ state("UserMenuCount"), state("UserParmCount"), state("UserMenuDefined") }, { 4, 4, 1 })

-- Without a picture.
command(900)
check.answer_box("There is no picture.\nOpen an image, or turn the camera on.", "ok", "User Error Message Box")
check.eq(check.lines("beep")[#check.lines("beep")].sound, "exclamation")
check.eq(status(), idle)

-- A function without prompts: no dialog, its message at once. 20 x 10 pixels: x + 20 y + 1000 have the mean 1099.5.
drop(files.image(dir .. "/a.img", { width = 20, height = 10 }, 1, function(_, x, y) return 1000 + 20 * y + x end))
local view = status()
local mark = check.mark()
command(900)
check.eq({ box().text, box().caption, box().icon, box().buttons }, { "Mean of the picture:\n1099.500 counts", "Kelvo user message", "none", { "ok" } })
answer("ok")
check.eq(#check.lines("dialog", mark + 1), 0)
check.eq({ dialog(), status() }, { nil, view })

-- A function with a prompt: one field can be worked.
local function open()
  command(901)
  check.eq({ dialog(), check.lines("dialog")[#check.lines("dialog")].text }, { "USERDLG", "Pixels above a threshold" })
end
open()
check.eq({ text(1790), text(1792), text(1794), text(1796) }, { "", "", "", "Threshold (counts):" })
check.eq({ enabled(1798), enabled(1800), enabled(1810), enabled(1820) }, { false, false, false, true })
check.eq(text(1820), "")
set(1820, "1149")
press(1)
check.answer_box("Pixels above 1149 counts:\n50 of 200", "ok", "Kelvo user message")
check.eq(dialog(), nil)

-- What was typed is gone; no number is refused by the function; help is none.
open()
check.eq(text(1820), "")
press(1)
check.answer_box("Please enter a number of counts,\nfor instance 3000.", "ok", "User Error Message Box")
check.eq(dialog(), nil, "the function has run")
open()
set(1820, ("x"):rep(40))
check.fails(function() set(1820, ("x"):rep(41)) end, "control 1820")
key("F1")
check.eq({ dialog(), help() }, { "USERDLG" })

-- Cancelled, closed, left by Escape: nothing has changed.
press(2)
local before = unchanged.snapshot()
for _, leave in ipairs { function() press(2) end, cancel, function() key("Escape") end } do
  open()
  set(1820, "1")
  leave()
  check.eq({ dialog(), box() }, {})
  unchanged.expect(before, unchanged.snapshot())
end

-- Saving the image on view, as the menu does; cancelled, all is as it was.
command(902)
check.eq(dialog(), "SAVE")
press(2)
unchanged.expect(before, unchanged.snapshot())
command(902)
set(1460, "mine")
press(1)
check.eq(readfile(dir .. "/mine.img"):sub(513), readfile(dir .. "/a.img"):sub(513))
check.holds(status(), " Saved mine.img: 1 frame, ")

-- Questions: the answer is kept for the next time, but not where it is cancelled.
local function ask(expected)
  command(903)
  check.eq({ dialog(), text(1790), text(1792), text(1798) }, { "USERRESP", "Which sample is in front of the camera?", "Its name or number:", expected })
end
before = unchanged.snapshot()
for _, leave in ipairs { function() press(2) end, cancel, function() key("Escape") end } do
  ask("1")
  set(1798, "other")
  leave()
  check.eq({ dialog(), box() }, {})
  unchanged.expect(before, unchanged.snapshot(), nil, { StatusText = "what was saved before is no longer told" })
end
ask("1")
set(1798, "27")
press(1)
check.answer_box("Save the next image of sample 27?\nCancel leaves everything as it is.", "cancel", "User Message Box")
unchanged.expect(before, unchanged.snapshot(), nil, { StatusText = "what was saved before is no longer told" })
local function name(typed)
  ask("27")
  press(1)
  answer("ok")
  check.eq(dialog(), "SAVE")
  set(1460, typed)
  set(1486, "4")
  press(1)
end
local path = state("SeqFilePath")
name("123")
check.answer_box("A sequence name must contain at least\none none numeric letter", "ok", "Kelvo message")
name("abcdefgh1")
check.answer_box("A sequence name must be 7 or less\ncharacters long", "ok", "Kelvo message")
check.eq(state("SeqFilePath"), path)
name("abc123")
check.eq(state("SeqFilePath"), dir .. "/abc.seq")
check.answer_box("YOU ARE VIEWING A FILE!\nIt will be saved as\n" .. dir .. "/abc4.seq\nDo you want to do this?", "yes")
check.holds(status(), " Saved abc4.seq: 1 frame, ")
check.eq(readfile(dir .. "/abc4.seq"):sub(-400), readfile(dir .. "/a.img"):sub(513))

-- A number that no item has, and a dialog that can't be made.
command(904)
check.answer_box("Error in User Menu ID number(s).", "ok", "User Software Module Error")
sim.fault("load dialog USERDLG", true)
command(901)
sim.fault("load dialog USERDLG", false)
check.answer_box("Unable to display dialog", "ok", "System Error")
sim.fault("load dialog USERRESP", true)
command(903)
sim.fault("load dialog USERRESP", false)
check.answer_box("Unable to display dialog", "ok", "System Error")

-- For the next start the settings say that there are no dialogs.
files.write(dir .. "/kelvo.ini", (readfile(dir .. "/kelvo.ini") or ""):gsub("%[Setup%]", "[Setup]\nUserMenuDefined=0"))
