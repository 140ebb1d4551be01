-- The triggered save as an operator works it, on the simulated camera.
local check = require "check"
local files = require "files"

local triggers = { kTriggers = 102, kFrames = 109, kStart = 124, kName = 1460, kProgress = 20811 }

-- Section Trigger of kelvo.ini holds these keys and no others.
function triggers.keys(keys)
  wait(1100)  -- what is pending reaches the disk
  local path = datadir() .. "/kelvo.ini"
  local text = readfile(path):gsub("%[Trigger%][^%[]*", "")
  local lines = { "[Trigger]" }
  for key, value in pairs(keys) do lines[#lines + 1] = key .. "=" .. value end
  files.write(path, text .. "\n" .. table.concat(lines, "\n") .. "\n")
end

-- The dialog in front, with a name and numbers in it.
function triggers.open(name, steps, frames)
  command(112)
  check.eq({ dialog(), box() and box().text }, { "BIORAD_SAVE" })
  set(triggers.kName, name)
  set(triggers.kTriggers, tostring(steps))
  set(triggers.kFrames, tostring(frames or 1))
end

function triggers.start() press(triggers.kStart) end

-- Waits, in steps of 10 ms, until it is so.
function triggers.until_true(what, is_so)
  for _ = 1, 2000 do
    if is_so() then return end
    wait(10)
  end
  error(what .. " never came; " .. (box() and box().text or dialog() or "") .. "; " .. status(), 2)
end

function triggers.completed()
  triggers.until_true("the end of the run", function() return box() end)
  check.answer_box("Acquisition completed", "ok", "Kelvo message")
  check.eq({ dialog(), status(), text(triggers.kStart) }, { "BIORAD_SAVE", " Ready for new acquisition sequence", "Start acquisition" })
  check.eq({ state("AcquisitionRunning"), state("PeriodicUpdates"), state("TriggersLeft") }, { 0, 1, 0 })
end

-- The file's frames, each with the mean of its samples.
function triggers.frames(name)
  local bytes = readfile(name)
  if not bytes then return nil end
  local width, height = string.unpack("<i2", bytes, 112 + 2), string.unpack("<i2", bytes, 112 + 4)
  local frame = 4 * width * height
  check.eq((#bytes - 1024) % frame, 0, "whole frames")
  local means = {}
  for at = 1025, #bytes, frame do
    local sum = 0
    for i = 0, width * height - 1, 97 do sum = sum + string.unpack("<f", bytes, at + 4 * i) end
    means[#means + 1] = sum / ((width * height + 96) // 97)
  end
  return means
end

return triggers
