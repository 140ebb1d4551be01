-- Without a directory named anywhere, the program's directory is the user's own, and the start goes on to the end.
local check = require "check"
check.answer_box("Initialize Hardware Failure", "ok", "Kelvo message")
check.eq(state("DefaultDir"):match("[^/]+/[^/]+/[^/]+$"), "start_in_the_users_directory/share/kelvo")
check.holds(readfile(state("DefaultDir") .. "/kelvo.ini"), "ActiveCamera=2")
check.eq(dialog(), nil, "no turn-on dialog opens")
check.eq(status(), " Use Alt + underlined menu item or trackball to select menu item")
