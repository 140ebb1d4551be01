-- A camera without host frames has no Host RAM capture in its menu; all else stands.
local check = require "check"
answer("ok")
check.eq(state("Description"), "Camera without host frames")
check.eq(menu(103), nil)
check.eq(menu(105), nil)
check.eq(menu(106).text, "&Save image...\tF3")
check.eq(menu(112).text, "&Bio-Rad save...")
-- Its accelerator is still the command.
key("Shift+F3")
check.answer_box("This command is not available in this version of Kelvo.", "ok")
