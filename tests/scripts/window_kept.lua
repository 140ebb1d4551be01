-- The window stands where it was left, at each start, and the file that says so stays as it is.
local check = require "check"
answer("ok")
check.eq(state("ClientWidth"), 930)
assert(state("ClientHeight") < 720 and state("ClientHeight") > 650, "less the menu")
check.eq(readfile(datadir() .. "/window.ini"),
  "; kept\r\n[Window]\r\nX=120\r\nY=60\r\nWidth=930\r\nHeight=720\r\nMaximised=0\r\n")
