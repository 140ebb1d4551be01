-- Every number of a camera section, each in turn with a value that no camera has (arg[1]): the set-up runs with it, and the turn-on ends
-- with a box that names the key or with live video. The file keeps all else as it stood.
local check = require "check"
local video = require "video"
local files = require "files"

local value = assert(({
  zero = "0", negative = "-1", lowest = "-2147483648", million = "1000000", huge = "2147483647", beyond = "99999999999999999999", text = "text",
})[arg[1]], arg[1])

-- The numbers that a section holds: those that ship, and those that have a default only.
local keys = {
  "nCommPort", "Htotal", "Vtotal", "Hactive", "Vactive", "Hroi", "Vroi", "DecomScheme", "Vstart", "Hdelay", "Idelay", "CalDelay",
  "NumOutputs", "NumChannels", "DualCamera", "UnityGain", "UnityOffset", "ZeroOffset", "BufferCapture", "numBufFrames", "Xzoom", "Yzoom",
  "Xoffset", "Yoffset", "Xpan", "Ypan", "Volts/Offset", "A/Doffset", "VoltsPerCountVsGain", "SignalMultiplier", "DataOffset",
  "QVF1058_MasterClockFrequency", "QVF1058_MasterClockMinIndex", "QVF1058_MasterClockMaxIndex", "QVF1058_ExtraTimingRows",
  "QVF1058_ExtraTimingCols", "QVF1058_AdDelay", "QVF1058_LineStartDelay", "QVF1058_FrameStartDelay", "QVF1058_SerialReg",
  "QVF1058_DACReg", "QVF1058_GainReg", "QVF1058_BiasEnableReg", "QVF1058_Gain0", "QVF1058_DAC0", "QVF1058_DAC1", "QVF1058_DAC2",
  "QVF1058_DAC3", "QVF1058_DAC4", "QVF1058_DAC5", "QVF1058_DAC6", "QVF1058_DAC7", "DetBias", "PedBias", "ColGain", "ColStart",
  "RowStart", "FlipCols", "FlipRows", "FastFrame", "IndexFrameRate", "IndexIntegrationTime", "fFrameRate", "TimingFileFrameRate",
  "LogCamera", "IntInc", "IntDelay", "IntMinDuration", "IntMaxDuration", "IntDivisor", "IntOffset", "IntMaxDuration2", "IntDivisor2",
  "IntOffset2", "Xwindow", "YWindow", "OscilliscopeRes", "SyncDisplay", "Sync1", "Sync2", "Sync3", "fPitch", "ADduration",
  "JambSyncEnable", "JambAddress", "RAM0Value", "RAM0JambValue", "MaxNumFramesToAllocate",
}

-- The keys with which no camera runs, by what such a value means: an image has sides of 1 to 1024 pixels, and its first sample lies inside it;
-- the clock has a frequency above 0; its indices are bytes, and so is the frame rate's row
-- behind the lowest of them; no port is wired under such a number, and one below 1 means the usual one.
local function set_of(...)
  local set = {}
  for _, name in ipairs { ... } do set[name] = true end
  return set
end
local sides = { "Hroi", "Vroi", "Hactive", "Vactive" }
local function refused_by(...) return set_of(sides[1], sides[2], sides[3], sides[4], ...) end
local too_large = refused_by("CalDelay", "QVF1058_MasterClockMinIndex", "QVF1058_MasterClockMaxIndex", "IndexFrameRate", "nCommPort")
local refused = ({
  zero = refused_by("QVF1058_MasterClockFrequency"),
  text = refused_by("QVF1058_MasterClockFrequency"),  -- reads as 0
  negative = refused_by("QVF1058_MasterClockFrequency", "QVF1058_MasterClockMinIndex", "QVF1058_MasterClockMaxIndex"),
  lowest = refused_by("QVF1058_MasterClockFrequency", "QVF1058_MasterClockMinIndex", "QVF1058_MasterClockMaxIndex", "IndexFrameRate"),
  million = too_large,
  huge = too_large,
  beyond = too_large,  -- 1661992959, its low 32 bits
})[arg[1]]

-- What the program itself writes into the section at a turn-on, with the video set-up's OK or at a change of camera.
local written = {}
for _, key in ipairs {
  "NumChannels", "IndexFrameRate", "IndexIntegrationTime", "fFrameRate", "QVF1058_Gain0", "QVF1058_DAC0", "QVF1058_AdDelay",
  "QVF1058_LineStartDelay", "QVF1058_FrameStartDelay", "DetBias", "PedBias", "ColGain", "FlipRows", "FlipCols", "FastFrame", "ColStart",
  "RowStart", "Vactive", "Hactive", "Xzoom", "Yzoom", "Xoffset", "Yoffset", "Xpan", "Ypan",
} do written[key] = true end

local camera_file = state("CameraFilePath")
local shipped = readfile(camera_file)
local section = shipped:match("%[Camera%.2%]\r?\n(.-)\n%[Camera%.3%]")
assert(section and section:find("Hroi=320", 1, true))

local function keys_of(text)
  local found = {}
  for name, setting in text:gmatch("([^\r\n=;]+)=([^\r\n]*)") do found[name] = setting end
  return found
end

-- The section of a camera of our own with one key changed, or added.
local function put(number, key)
  local lines, found = {}, false
  for line in section:gmatch("[^\r\n]+") do
    if line:sub(1, #key + 1) == key .. "=" then
      line, found = key .. "=" .. value, true
    end
    lines[#lines + 1] = line
  end
  if not found then lines[#lines + 1] = key .. "=" .. value end
  files.write(camera_file, shipped .. "\n[Camera." .. number .. "]\n" .. table.concat(lines, "\n") .. "\n")
end

local function answer_boxes(boxes)
  while box() do
    boxes[#boxes + 1] = box().text
    assert(#boxes < 20, "boxes without end: " .. boxes[#boxes])
    local buttons = table.concat(box().buttons, " ")
    answer(buttons:find("ok", 1, true) and "ok" or "yes")
  end
  return boxes
end

local function named(boxes, key)
  for _, text in ipairs(boxes) do
    if text:find(key, 1, true) then return true end
  end
  return false
end

local function restart(number)
  command(123)
  check.eq(dialog(), "INITIAL")
  pick(1598, number - 1)
  press(1)
  return answer_boxes {}
end

local function turn_off()
  command(169)
  check.answer_box("Do you wish to turn the Vantir camera OFF?", "yes")
  check.eq(state("CameraOn"), 0)
end

check.eq(dialog(), "CLOCK_ON")
press(2)
for turn, key in ipairs(keys) do
  local number = 5 + turn % 2
  put(number, key)
  local boxes = restart(number)
  check.eq(boxes[1], "Kelvo must be re-initialized before changes are effective. Restart now?", key)
  if dialog() == "CLOCK_ON" then
    press(1070)
    answer_boxes(boxes)
    video.pass_set_up()
    answer_boxes(boxes)
  end
  check.eq(state("CameraOn"), refused[key] and 0 or 1, key .. "=" .. value .. ": " .. table.concat(boxes, " | "))
  if state("CameraOn") == 1 then
    check.eq(dialog(), nil, key)
    check.eq(state("LiveVideo"), 1, key)
    frames(3)
    check.eq(box(), nil, key)
    assert(state("Hroi") >= 1 and state("Hroi") <= 1024 and state("Vroi") >= 1 and state("Vroi") <= 1024, key)
    assert(raw(state("Hroi") * state("Vroi") - 1), key)
    turn_off()
  else
    local told = named(boxes, key) or (key == "nCommPort" and named(boxes, "OpenXComm, Error number "))
    assert(told, key .. "=" .. value .. ": " .. table.concat(boxes, " | "))
    assert(not named(boxes, "Unable to allocate"), key .. ": no memory is asked for frames that no camera has")
    assert(not named(boxes, "FrameA"), key .. ": reading a section is silent")
    if dialog() then press(2) end
  end
  answer_boxes {}
  -- Writes reach the file a second later at the latest.
  wait(1500)
  local now = readfile(camera_file)
  check.eq(now:sub(1, #shipped), shipped, key .. ": the shipped sections")
  local kept = keys_of(now:sub(#shipped + 1))
  for name, setting in pairs(keys_of(section)) do
    if name ~= key and not written[name] then check.eq(kept[name], setting, key .. " changed " .. name) end
  end
  if not written[key] then check.eq(kept[key], value, key) end
end
