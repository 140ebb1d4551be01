-- Help mode shows a command's page instead of running it, once.
local check = require "check"
answer("ok")
command(192)
check.eq(help(), 770)
-- The page on keys is made from the menu.
local _, keys = help()
for _, told in ipairs { "Ctrl+G\nGo to frame", "F3\nSave image", "Shift+PgDn\nMove the picture down by a sixteenth" } do
  check.holds(keys, told)
end
command(195)
check.eq(help(), 771)
command(193)
check.eq(help(), 772)
command(190)
check.eq(help(), 769)
key("F1")
check.eq(help(), 768)
command(194)
check.eq(help(), 771)
check.seen("help", { context = 770 })

-- F1 on an item of the open menu enters help mode: the item that is chosen then is explained and not run.
local function f1_on(letter, steps)
  key("Alt+" .. letter)
  for _ = 1, steps do key("Down") end
  local mark = check.mark()
  key("F1")
  return mark + 1
end
local contrast = state("ImageColor")
local first = f1_on("I", 4)  -- Inverted gray
check.seen("help", { context = 354 }, first)
check.eq(help(), 354)
check.eq(state("ImageColor"), contrast, "explained, not run")
check.eq(#check.lines("status", first), 0)
check.eq(state("HelpMode"), 0, "once")
-- The next command of the same item runs, and shows no help.
local second = check.mark() + 1
command(144)
check.eq(state("ImageColor"), 1231)
check.eq(check.find("help", {}, second), nil)
-- An item with no page of its own says so, and isn't run either.
f1_on("F", 14)  -- Save bitmap image; grey items are passed over
check.answer_box("Help not available for this Menu item.", "ok", "Kelvo message")
check.eq(file(), nil)
check.eq(state("HelpMode"), 0)
