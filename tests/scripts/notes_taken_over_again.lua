-- The start after notes_taken_over.lua: what lies in the state directory counts, and the file in the data directory is left alone.
local check = require "check"
press(2)
check.eq({ menu(2100).text, menu(2101).text, menu(2102) }, { "&1 warm.img", "&2 cold.img" })
check.eq(menu(2007).checked, true, "the color scale")
check.eq(readfile(state("DefaultDir") .. "/recent.ini"), "[Recent]\nFile1=/measured/meanwhile.img\n")
check.holds(readfile(state("StateDir") .. "/window.ini"), "Maximised=1")
