-- The settings say that there is no such menu: its items are there, their functions aren't run.
local check = require "check"
answer("ok")
check.eq({ state("UserMenuDefined"), state("UserMenuCount") }, { 0, 4 })
for id = 900, 903 do
  command(id)
  check.answer_box("User dropdown menu not defined.", "ok", "QVF Vantir")
  check.eq({ dialog(), box() }, {})
end
