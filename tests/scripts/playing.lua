-- A sequence is played: the slider and the frame's number, Space, speeds, backwards, loop, by the bar and by keys.
local check = require "check"
local files = require "files"
answer("ok")

local kPlay, kPosition, kFrame, kSpeed, kBackwards, kLoop = 20200, 20201, 20202, 20203, 20204, 20205
local kBackwardsItem, kLoopItem = 2053, 2054

local function frame() return state("CurrentFrame") end

-- Without a sequence there is no bar, and Space is nothing.
assert(not pcall(text, "player", kFrame))
key("Space")
check.eq({ box(), dialog() }, {})
local image = files.image(datadir() .. "/one.img", { width = 8, height = 8 }, 1, function() return 1000 end)
drop(image)
assert(not pcall(text, "player", kFrame), "one frame isn't played")

-- 75 frames at 25 Hz.
local sequence = files.image(datadir() .. "/run1.seq", { width = 8, height = 8, rate = 25 }, 75,
  function(at, x, y) return 5000 + 100 * at + 10 * y + x end)
drop(sequence)
check.eq({ text("player", kFrame), text("player", kPlay), text("player", kSpeed) }, { "frame 0 of 75", "Play", "1" })
check.eq({ position("player", kPosition) }, { 0, 0, 74 })
check.eq({ checked("player", kBackwards), checked("player", kLoop) }, { false, true })
check.eq({ menu(kBackwardsItem).checked, menu(kLoopItem).checked }, { false, true })

-- The slider goes to a frame, and the picture with it.
scroll("player", kPosition, 19)
check.eq({ frame(), text("player", kFrame), pixel(7, 7) }, { 19, "frame 19 of 75", 5000 + 1900 + 77 })
check.holds(status(), "FrameNum: 19 ")
key("F7")
check.eq({ text("player", kFrame), position("player", kPosition) }, { "frame 20 of 75", 20, 0, 74 })

-- Space plays and stops; the slider follows.
local function played(ms)
  local from = frame()
  key("Space")
  check.eq(text("player", kPlay), "Stop")
  wait(ms)
  key("Space")
  check.eq({ text("player", kPlay), position("player", kPosition) }, { "Play", frame(), 0, 74 })
  wait(500)
  return frame() - from
end
check.eq(played(420), 10)
key("Ctrl+Up")
check.eq(text("player", kSpeed), "2")
check.eq(played(410), 20)
pick("player", kSpeed, 4)
check.eq(played(405), 40 - 75, "on from 50 by 40, around the end")
key("Ctrl+Up")
check.eq(text("player", kSpeed), "4", "there is nothing faster")
for _ = 1, 5 do key("Ctrl+Down") end
check.eq(text("player", kSpeed), "1/4")
check.eq(played(810), 5)

-- Backwards, around the beginning; a speed chosen while it plays holds at once.
key("Ctrl+B")
check.eq({ checked("player", kBackwards), menu(kBackwardsItem).checked }, { true, true })
pick("player", kSpeed, 2)
scroll("player", kPosition, 3)
check.eq(played(420), 75 - 10)
key("Space")
pick("player", kSpeed, 4)
wait(105)
key("Space")
check.eq(frame(), 68 - 10)

-- Without the loop it ends where the file does, and Space begins anew there.
check("player", kLoop, false)
check.eq(menu(kLoopItem).checked, false)
scroll("player", kPosition, 2)
key("Space")
wait(500)
check.eq({ frame(), text("player", kPlay) }, { 0, "Play" })
check.eq(played(25), 74 - 2)
check("player", kBackwards, false)
scroll("player", kPosition, 73)
command(2001)
wait(500)
check.eq({ frame(), text("player", kPlay) }, { 74, "Play" })
press("player", kPlay)
wait(25)
press("player", kPlay)
check.eq(frame(), 2)
key("Ctrl+L")
check.eq({ checked("player", kLoop), menu(kLoopItem).checked }, { true, true })

-- A drag of the slider stops the playing; so does going to a frame.
key("Space")
scroll("player", kPosition, 40)
wait(500)
check.eq({ frame(), text("player", kPlay) }, { 40, "Play" })
key("Space")
command(2000)
check.eq(text("player", kPlay), "Play")
-- What is typed replaces the number that stands there.
key("1")
key("9")
check.eq(text(1001), "19")
press(2)

-- The image stands where it stood, the bar below it; with the sequence the bar goes.
drop(image)
assert(not pcall(text, "player", kFrame))
