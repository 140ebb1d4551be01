-- A camera without host frames has no Host RAM capture in its menu; all else stands.
local check = require "check"
answer("ok")
check.eq(state("Description"), "Camera without host frames")
check.eq(menu(103), nil)
check.eq(menu(105), nil)
check.eq(menu(106).text, "&Save image...\tF3")
check.eq(menu(112).text, "&Bio-Rad save...")
-- Its accelerator is still the command, which tells why nothing opens.
key("Shift+F3")
check.eq({ dialog(), box() }, {})
check.eq(status(), "Host RAM capture needs the frame grabber: turn the camera on, or choose a camera that has host frames.")
