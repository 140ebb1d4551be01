-- Shipped files come once: one that is there is kept, and one that is taken away later stays away (shipped_once_again.lua).
local check = require "check"
answer("ok")
check.eq(readfile(datadir() .. "/nearccw.prs"), "row,col\n0,1\n", "the operator's own, from before the first start")
assert(#readfile(datadir() .. "/kelvo220.bmp") > 1000)
assert(os.remove(datadir() .. "/kelvo220.bmp"))
assert(os.remove(datadir() .. "/MATROX.PAL"))
