-- Setup > Cameras...: a GigE Vision camera on the loopback is found, shows itself, and is wired to the machine, once the operator says so.
local check = require "check"
local files = require "files"
local video = require "video"

local data = datadir()
local camera <close> = setmetatable({}, { __close = function(self) if self.pid then os.execute("kill " .. self.pid) end end })
-- It ends by itself where this script doesn't come to its end.
local pipe = assert(io.popen(("timeout 200 '%s' --serial KSCRIPT --rate 50 '%s/insb320.cnf' & echo $!; wait"):format(arg[1], data)))
camera.pid = pipe:read("l")
check.eq(pipe:read("l"), "KSCRIPT at 127.0.0.1")

local function settings()
  local all = {}
  wait(1100)  -- what is pending reaches the disk
  for _, name in ipairs { "camera.ini", "platform.ini", "kelvo.ini", "camera5.cnf" } do all[name] = readfile(data .. "/" .. name) end
  return all
end

-- With a camera on, nothing can be written.
check.eq(dialog(), "CLOCK_ON")
video.turn_on()
command(2260)
check.eq(dialog(), "CAMERAS")
wait(10)
check.holds(text(22606), "found")
local place
for index, line in ipairs(items(22601)) do
  if line == "Kelvo Loopback, KSCRIPT, 127.0.0.1" then place = index - 1 end
end
assert(place, "the camera is in the list")
pick(22601, place)
press(1)
check.answer_box("Please turn the camera off first.", "ok", "Cameras")
press(2)
command(169)
check.answer_box("Do you wish to turn the Vantir camera OFF?", "yes")
while box() do answer("ok") end
check.eq(state("CameraOn"), 0)

local before = settings()
command(2260)
wait(10)
pick(22601, place)
local says = text(22604)
for _, part in ipairs {
  "Kelvo Loopback\nSerial number: KSCRIPT\nGigE Vision at 127.0.0.1\n", "Largest frame: 320 x 256\n",
  "Formats: Mono16, Mono14, Mono14p, Mono12, Mono12p, Mono12Packed, Mono10, Mono10p, Mono10Packed, Mono8 (now Mono14)\n",
  "Frame rate: 50 Hz, of 2 to 200 Hz\n", "Exposure: 19400 us, of 10 to 1000000 us\n",
} do check.holds(says, part) end
check.eq(items(22605)[1], "Mono16")
screenshot("cameras.png")

-- No, and Cancel, leave all as it was.
pick(22605, 1)
press(1)
check.eq(box().text, "Camera.5 in camera.ini and COM5 in platform.ini will stand for\nKelvo Loopback, KSCRIPT, 127.0.0.1.\n" ..
  "The board becomes genicam, this camera the active one, and Kelvo is re-initialized with it.\n\nWrite that?")
answer("no")
check.eq(dialog(), "CAMERAS")
press(2)
check.eq(dialog(), nil)
check.eq(settings(), before)

-- A disk that fails leaves all as it was too.
command(2260)
wait(10)
pick(22601, place)
pick(22605, 1)
press(1)
sim.fault("disk", true)
answer("yes")
for _ = 1, 8 do if box() and box().text ~= "The camera couldn't be written. Nothing was changed." then answer("ok") end end
sim.fault("disk", false)
check.answer_box("The camera couldn't be written. Nothing was changed.", "ok", "Cameras")
press(2)
check.eq(settings(), before)

-- Yes writes and begins again with the new camera.
command(2260)
wait(10)
pick(22601, place)
pick(22605, 1)
press(1)
answer("yes")
local function key(file, section, name)
  local body = readfile(data .. "/" .. file):match("%[" .. section:gsub("%p", "%%%0") .. "%]\r?\n([^%[]*)")
  return body and body:match("[\r\n]?" .. name .. "=([^\r\n]*)")
end
check.eq(key("platform.ini", "Ports", "COM5"), "genicam:KSCRIPT")
check.eq(key("platform.ini", "Board", "Board"), "genicam")
check.eq(readfile(data .. "/camera5.cnf"), "[GenICam]\nDevice=KSCRIPT\nFormat=Mono14\n")
check.eq(key("kelvo.ini", "Setup", "ActiveCamera"), "5")
for name, value in pairs {
  Description = "Kelvo Loopback KSCRIPT", nCommPort = "5", Hroi = "320", Vroi = "256", DecomScheme = "2", cnfFile = "camera5.cnf",
  UnityOffset = "8192", QVF1058_MasterClockFrequency = "65536000", QVF1058_MasterClockMinIndex = "1", QVF1058_MasterClockMaxIndex = "199",
  IndexFrameRate = "6",
} do check.eq(key("camera.ini", "Camera.5", name), value, name) end
check.eq({ state("ActiveCamera"), state("Hroi"), state("Vroi") }, { 5, 320, 256 })

-- The head behind the new port is the camera's, and is identified.
check.eq(box(), nil)
check.eq(dialog(), "CLOCK_ON")
press(2)
