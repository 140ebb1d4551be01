-- F1 in a dialog is its Help button; in an open menu it shows the highlighted item's page instead of running it.
local check = require "check"
answer("ok")

command(120)
key("F1")
check.eq(help(), 288)
check.eq(dialog(), "DISPLAY")
key("Shift+F10")
check.eq(dialog(), "DISPLAY")
press(2)

-- The item that stands steps below the first of the menu under that letter.
local function help_in_menu(letter, steps)
  local mark = check.mark()
  key("Alt+" .. letter)
  for _ = 1, steps do key("Down") end
  key("F1")
  return mark + 1
end

-- 119 is the last of its menu: one step up from the first.
local mark = check.mark()
key("Alt+F")
key("Up")
key("F1")
check.seen("help", { context = 268 }, mark + 1)
check.eq(box(), nil, "exit wasn't run")
check.eq(state("HelpMode"), 0)

check.seen("help", { context = 257 }, help_in_menu("F", 1))
check.seen("help", { context = 354 }, help_in_menu("I", 3))
check.eq(state("ImageColor"), 1230, "the colour map wasn't taken")
check.seen("help", { context = 41 }, help_in_menu("S", 5))
check.eq(box(), nil)

help_in_menu("F", 13)  -- grey items are passed over
check.answer_box("Help not available for this Menu item.", "ok", "Kelvo message")
check.eq(file(), nil, "the bitmap wasn't saved")
check.eq(state("HelpMode"), 0)

-- The pointer on a grey item: it is explained as a live one is, and the menu closes.
local function help_at_pointer(name, item)
  key("Alt+" .. name:sub(1, 1))
  local window, bar, at = place("window", "Kelvo"), place("menu", name), place("item", item)
  local y = at.y + at.height // 2 - bar.y - bar.height
  for step = 1, 3 do mouse(at.x + 20 * step - window.x, y) end
  local begun = check.mark() + 1
  key("F1")
  check.eq(place("item", item), nil, "the menu is closed")
  return begun
end
check.eq(menu(2051).enabled, false)
check.seen("help", { context = 2050 }, help_at_pointer("Image", "Redo"))
check.eq({ box(), dialog(), state("HelpMode") }, { nil, nil, 0 })
check.seen("help", { context = 258 }, help_at_pointer("File", "Load image..."))

-- Help mode is over: the same command runs.
command(144)
check.eq(state("ImageColor"), 1231)
