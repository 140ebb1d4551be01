-- What was recorded when the program ended (record_script.lua) is there.
local check = require "check"
answer("ok")
check.eq(readfile(datadir() .. "/scripts/last.lua"):match("\n(.*)"), "command(2007)\ncommand(2007)\n")
