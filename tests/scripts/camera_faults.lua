-- The fault matrix: one fault of the wiring, the head or the board each, what the operator is told, and that the program goes on:
-- with the fault gone the camera comes up. The argument after -- names the row,
-- with dots for blanks.
local check = require "check"

local kTurnOn = 169
local kByVideoSetup = 1070

local comm = "Error opening rs232 communications!  Check port, baud rate, etc."
local hardware = { "Initialize Hardware Failure", "Kelvo message" }
local head_off = { "Unable to turn camera head on!", "Camera Head Error!" }
local silent = { "Unable to communicate with digital camera head! Check power & cable connections.", "Camera Head Error!" }
local unknown = { "Camera head is present, but software is unable to identify it.", "Warning!" }
local grab = { "Error starting grab to image processing board", "icp_grab" }
local blank = { "Timeout waiting for vertical blank!", "icp_wait_vb() Error!" }

local read = { "icp_read_area() Error", "ITEX Board Error!" }
local scope = { "Bad status on GetVideoData().  Error reading image processor!", "Kelvo message" }

-- The grab is started at turn-on, by the display's geometry and by the first set-up; then the oscilloscope asks for a frame, tells
-- that it got none and goes, the grab is started once more, and live video asks for a frame behind the calibration dialog.
local function each_start_of_the_grab(failure, first)
  local boxes = { grab, grab, grab, failure, scope, grab, failure }
  if first then table.insert(boxes, 1, first) end
  return boxes
end

local function port(step)
  return { step .. ", Error number *", "Comm Error" }
end

-- at: when the fault comes. boxes: text and caption of each box in order; "*" stands for a number.
local rows = {
  ["serial open"] = { at = "start", boxes = { port "OpenXComm", { comm, "Comm Error" }, hardware } },
  ["serial mask"] = { at = "start", boxes = { port "SetCommMask", { comm, "Comm Error" }, hardware } },
  ["serial queues"] = { at = "start", boxes = { port "OpenXComm", { comm, "Comm Error" }, hardware } },
  ["serial timeouts"] = { at = "start", boxes = { port "SetCommTimeouts", { comm, "Comm Error" }, hardware } },
  ["serial state"] = { at = "start", boxes = { port "SetCommState", { comm, "Comm Error" }, hardware } },
  ["head silent"] = { at = "start", boxes = { silent, hardware } },
  ["head short"] = { at = "start", boxes = { silent, hardware } },
  ["head refuses"] = { at = "start", boxes = { unknown, hardware } },
  ["head silent at turn-on"] = { fault = "head silent", at = "turn-on",
    boxes = { { "Unable to communicate with camera head!", "Load timing error!" }, head_off } },
  ["head refuses at turn-on"] = { fault = "head refuses", at = "turn-on",
    boxes = { { "Unable to communicate with camera head!", "Load timing error!" }, head_off } },
  ["serial write at turn-on"] = { fault = "serial write", at = "turn-on",
    boxes = { { "Unable to communicate with camera head!", "Load timing error!" }, head_off } },
  ["itx_load_cnf"] = { at = "turn-on", boxes = each_start_of_the_grab(blank) },
  ["itx_init_sys"] = { at = "turn-on", boxes = each_start_of_the_grab(read) },
  ["itx_get_modcnf"] = { at = "turn-on", boxes = each_start_of_the_grab(read) },
  ["icp_get_slot0"] = { at = "turn-on",
    boxes = each_start_of_the_grab(read, { "No Acquisition Module Found on Board #0", "init_itex" }) },
  ["icp_create_frame"] = { at = "turn-on",
    boxes = each_start_of_the_grab(read, { "FrameA on ICP-PCI#0 not created!", "init_itex()" }) },
  ["icp_frame_attrib"] = { at = "turn-on",
    boxes = { { "FrameA on ICP-PCI#0 not set up properly!", "init_itex()" } } },
  ["icp_frame_attrib bits"] = { at = "turn-on",
    boxes = { { "FrameA on ICP-PCI#0 not set up for 16-bit data input!", "init_itex()" } } },
  ["icp_frame_attrib colour"] = { at = "turn-on",
    boxes = { { "FrameA on ICP-PCI#0 not set up for MonoColor data input!", "init_itex()" } } },
  -- Here frames come all the same: the set-up is accepted, and the calibration declined.
  ["icp_grab"] = { at = "turn-on", boxes = { grab, grab, grab, grab, grab, grab } },
  ["icp_wait_vb"] = { at = "live", boxes = { blank } },
  ["icp_read_area"] = { at = "live", boxes = { read } },
}

local name = arg[1]:gsub("%.", " ")
local row = assert(rows[name], name)
local fault = row.fault or name

-- Accepts the video set-up and declines the calibration, if one is in front.
local function go_on()
  if dialog() == "QVF1058" then press(1) elseif dialog() == "CALIB" then press(2) end
end

local function expect_boxes()
  for i, expected in ipairs(row.boxes) do
    if not box() then wait(100) end
    for _ = 1, 2 do if not box() then go_on() end end
    local shown = assert(box(), string.format("box %d of %s: none in front", i, name))
    local text = shown.text:gsub("Error number %-?%d+", "Error number *")
    check.eq(text, expected[1], "box " .. i)
    check.eq(shown.caption, expected[2], "caption " .. i)
    answer("ok")
  end
end

local function live()
  for _ = 1, 2 do go_on() end
  check.eq(dialog(), nil)
  check.eq(state("CameraOn"), 1)
  check.eq(state("LiveVideo"), 1)
  frames(5)
end

if row.at == "start" then
  sim.fault(fault, true)
  expect_boxes()
  check.eq(dialog(), nil, "no turn-on dialog without a head")
  sim.fault(fault, false)
  command(kTurnOn)
  -- Not identified: the head's model isn't known, so the camera has to be set up anew before it can run.
  check.eq(dialog(), "CLOCK_ON")
  press(2)
elseif row.at == "turn-on" then
  check.eq(dialog(), "CLOCK_ON")
  sim.fault(fault, true)
  press(kByVideoSetup)
  expect_boxes()
  sim.fault(fault, false)
  for _ = 1, 2 do go_on() end
  if dialog() == "CLOCK_ON" then
    press(kByVideoSetup)
  elseif state("LiveVideo") == 0 then
    command(kTurnOn)
    answer("yes")
    command(kTurnOn)
    press(kByVideoSetup)
  end
  live()
else
  check.eq(dialog(), "CLOCK_ON")
  press(kByVideoSetup)
  live()
  sim.fault(fault, true)
  wait(100)
  expect_boxes()
  check.eq(state("LiveVideo"), 0, "frozen, so that the box doesn't come again")
  wait(3000)
  check.eq(box(), nil, "once")
  sim.fault(fault, false)
  command(140)
  live()
end
