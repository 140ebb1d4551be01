-- The third start: the stamp is gone, the files are back.
local check = require "check"
answer("ok")
assert(#readfile(datadir() .. "/kelvo220.bmp") > 1000)
check.eq(readfile(datadir() .. "/nearccw.prs"), "row,col\n0,1\n")
