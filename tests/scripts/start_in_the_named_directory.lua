-- win.ini names the program's directory: it is made, filled with the shipped files, and all paths are formed from it.
local check = require "check"
check.eq(dialog(), "CLOCK_ON", "the shipped wiring has a head")
press(2)
local directory = state("DefaultDir")
check.eq(directory:sub(1, 1), "/", "the path is whole")
check.eq(directory:match("[^/]+/[^/]+$"), "start_in_the_named_directory/named")
check.eq(state("IniFilePath"), directory .. "/kelvo.ini")
check.eq(state("CameraFilePath"), directory .. "/camera.ini")
check.eq(state("BuffBrdFilePath"), directory .. "/buffbrd.ini")
check.eq(state("SeqFilePath"), directory .. "/a.seq")
check.eq(state("HelpFilePath"), directory .. "/KELVO.hlp")
for _, name in ipairs { "FilePathBuf", "ViewFilePath", "CnfFilePath" } do check.eq(state(name), "", name) end
check.holds(readfile(directory .. "/kelvo.ini"), "ActiveCamera=2")
check.eq(state("ActiveCamera"), 2)
check.eq(state("DisplayHigh"), 16383)
drop(directory .. "/sample.seq")
check.eq(title(), "Kelvo - sample")
