-- The frame account in the running program: what the board delivered was shown, used, lost or missed, whatever starts the grab again.
local check = require "check"
local video = require "video"

local function account()
  local now = {}
  for _, name in ipairs { "Delivered", "Shown", "Used", "Lost", "Missed" } do now[name] = state("Frames" .. name) end
  return now
end

local function expect_all_told(what)
  local now = account()
  check.eq(now.Delivered, now.Shown + now.Used + now.Lost + now.Missed, what .. " " .. check.show(now))
  return now
end

video.turn_on()
frames(20)
local before = expect_all_told("live")
check.eq(before.Lost, 0)
check.eq(before.Used, 0)

-- Freezes, steps of the wheel and of the keys.
for _ = 1, 3 do
  frames(4)
  key("F2")
  wait(300)
  expect_all_told("frozen")
  key("F2")
  expect_all_told("live again")
end
for _, notch in ipairs { "wheel up", "wheel up", "wheel up", "wheel down" } do mouse(300, 300, notch) end
for _, name in ipairs { "Right", "Right", "Left", "Left", "-", "-" } do key(name) end
frames(3)
check.eq(expect_all_told("another geometry").Lost, 0)

-- A frame that comes and can't be read is lost, and freezes the picture; what passes behind its box is missed.
before = account()
sim.fault("icp_read_area")
wait(100)
check.answer_box("icp_read_area() Error", "ok", "ITEX Board Error!")
sim.fault("icp_read_area", false)
check.eq(state("LiveVideo"), 0)
local after = expect_all_told("a failed read")
check.eq(after.Lost, before.Lost + 1)
key("F2")
frames(2)

-- What a saved image averages is used.
local function save_image(name, count)
  command(106)
  check.eq(dialog(), "SAVE")
  set(1460, name)
  set(1488, tostring(count))
  press(1)
  check.eq(box(), nil)
end
before = account()
save_image("one", 1)
check.eq(account().Used, before.Used + 1)
save_image("many", 20)
frames(2)
after = expect_all_told("averaged")
check.eq(after.Used, before.Used + 21)
check.eq(after.Lost, before.Lost)

-- The window tells the same.
command(2006)
check.seen("dialog", { name = "ACCOUNT" })
command(2006)
