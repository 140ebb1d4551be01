-- What the simulated camera gave for a calibration is kept, and the next start (file_board_again.lua) has it for a camera of its own.
local check = require "check"
local calibration = require "calibration"

local kFrames = 12

calibration.turn_on()
sim.fault("keep frames")
calibration.two_point(20, 25, kFrames)
answer("ok")
sim.fault("keep frames", false)
check.eq(state("CalType"), 2)
for _, extension in ipairs { ".gai", ".off", ".noi", ".dcm", ".bad", ".cal" } do
  local copy = assert(io.open(datadir() .. "/live" .. extension, "wb"))
  copy:write(readfile("data/Last" .. extension))
  copy:close()
end

-- A scene in whose recording a frame was lost, which stops the live picture too.
sim.source("scene")
record{ name = "scene", pixels = "raw", wait = false }
wait(100)
sim.fault("icp_read_area", 3)
wait(200)
local run = record("stop")
check.eq({ run.lost_by_board, run.files }, { 1, { datadir() .. "/scene.seq" } })
check.answer_box("icp_read_area() Error", "ok", "ITEX Board Error!")

local camera = assert(io.open(datadir() .. "/recorded.cnf", "w"))
camera:write("[Frames]\nLow=kept1.seq\nHigh=kept2.seq\nScene=scene.seq\nRate=", ("%.17g"):format(state("FrameRate")), "\n[Bench]\nSource=low\n")
camera:close()
local wiring = assert(io.open(datadir() .. "/platform.ini", "w"))
wiring:write("[Ports]\nCOM2=file:recorded.cnf\n[Board]\nBoard=file\n")
wiring:close()
local sections = readfile("data/camera.ini")
local file = assert(io.open(datadir() .. "/camera.ini", "w"))
file:write((sections:gsub("cnfFile=insb320.cnf", "cnfFile=recorded.cnf")))
file:close()
