-- The menu's scripts while the script of the start works the window: they are listed, and say why none of them runs.
local check = require "check"
answer("ok")

check.eq(listdir(datadir() .. "/scripts"), { "noise-over-time.lua", "what-is-on-view.lua" }, "shipped")

-- The window before any script has run; it stays open beside the main window.
command(2251)
check.seen("dialog", { name = "SCRIPT", text = "Script" })
check.eq(dialog(), nil)
command(2251)  -- only brings it up
local opened = 0
for _, line in ipairs(transcript()) do if line.kind == "dialog" and line.name == "SCRIPT" then opened = opened + 1 end end
check.eq(opened, 1)

for _, id in ipairs { 2300, 2301 } do
  command(id)
  check.answer_box("The script of the start (--script) works this window until it ends.\nTwo would answer each other's dialogs.",
                   "ok", "Kelvo message")
end
check.eq(menu(2300).text, "&1 noise-over-time")
check.eq(menu(2301).text, "&2 what-is-on-view")
check.eq(menu(2302), nil)

-- A number beyond the list reads the folder anew, and is no script then either.
assert(io.open(datadir() .. "/scripts/zz-third.lua", "w")):close()
command(2302)
check.eq(menu(2302).text, "&3 zz-third")
check.answer_box("The script of the start (--script) works this window until it ends.\nTwo would answer each other's dialogs.",
                 "ok", "Kelvo message")
command(2303)
check.answer_box("The menu has no script of that number.", "ok", "Kelvo message")

command(2252)  -- there is none to stop
check.eq({ box(), dialog() }, { nil, nil })
