-- Without a directory named anywhere, the program's directory is the user's own, and the start goes on to the end.
local check = require "check"
check.eq(dialog(), "CLOCK_ON", "the shipped wiring has a head")
press(2)
check.eq(state("DefaultDir"):match("[^/]+/[^/]+/[^/]+$"), "start_in_the_users_directory/share/kelvo")
check.holds(readfile(state("DefaultDir") .. "/kelvo.ini"), "ActiveCamera=2")
check.eq(dialog(), nil)
check.eq(status(), " Use Alt + underlined menu item or trackball to select menu item")
