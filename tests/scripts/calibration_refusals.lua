-- What ends a calibration early: every cancel, every refusal, memory that is refused at any moment. After each the camera is uncalibrated
-- unless told otherwise, and the files are those of the last run that came to its end.
local check = require "check"
local calibration = require "calibration"

local kCaption, kStatistics, kResults = "Kelvo message", "Kelvo Calibration Statistics", "Calibration results"

local function nothing_in_front(what) check.eq({ box(), dialog() }, {}, what) end
local function uncalibrated(what) check.eq(state("CalType"), 0, what) end
local function start(points, frames)
  command(130)
  calibration.accept(points, frames)
end
local function put(name, contents)
  local file <close> = assert(io.open(datadir() .. "/" .. name, "wb"))
  file:write(contents)
end

-- Answers what comes up to the end of a run: the high source, boxes with their default button. Gives the boxes' texts.
local function to_the_end()
  local texts = {}
  while box() or dialog() do
    local front = box()
    if front then
      texts[#texts + 1] = front.text
      texts[front.caption] = front.text
      answer(front.default)
    else
      calibration.at_high(25, 25)
    end
  end
  return texts
end
local function holds(texts, text)
  for _, found in ipairs(texts) do
    if found == text then return end
  end
  error("no box " .. check.show(text) .. " in " .. check.show(texts), 2)
end

-- --- Without a camera

check.eq(dialog(), "CLOCK_ON")
press(2)
command(130)
check.answer_box("Camera must be turned on before calibrating", "ok", "Kelvo Message")
nothing_in_front()
command(169)
calibration.turn_on()
local mark = check.mark()
press(2)
nothing_in_front("the calibration dialog was cancelled")
check.eq(check.lines("dialog", mark + 1), {}, "no source was asked for")

-- --- Two points

calibration.two_point_set = function()
  start(2, 5)
  calibration.at_low(20, 20)
  local texts = to_the_end()
  assert(texts[kStatistics], check.show(texts))
  check.eq(state("CalType"), 2)
end
calibration.two_point_set()
local former = {}
for _, name in ipairs { "Last.gai", "Last.off", "Last.noi", "Last.dcm", "Last.bad", "Last.cal" } do former[name] = readfile("data/" .. name) end
local function former_files_stand(what)
  for name, contents in pairs(former) do assert(readfile("data/" .. name) == contents, name .. " changed: " .. what) end
end

start(2, 5)
press(2)
nothing_in_front()
check.eq(state("CalType"), 2, "a cancel at the low source changes nothing")
start(2, 5)
calibration.at_low(20, 20)
press(2)
nothing_in_front()
uncalibrated("cancelled at the high source")
former_files_stand("cancelled")

-- A high source that isn't hotter is asked about; with Cancel the dialog stays.
start(2, 5)
calibration.at_low(20, 20)
sim.source("high", 25)
set(1226, "20")
press(1)
check.answer_box("High temperature is <= Low temperature", "cancel", kCaption)
check.eq(dialog(), "CAL_HOT")
set(1226, "2501")
press(1)
check.eq(dialog(), "CAL_HOT", "no temperature of a source")
press(2)

start(2, 0)
calibration.at_low(20)
check.answer_box("Video Data Acquisition Failed, Hardware error!", "ok", "Kelvo Calibration Error!")
nothing_in_front()
uncalibrated("no frame")

start(2, 5)
calibration.at_low(20)
calibration.at_high(20)
check.answer_box("Calibration failed due to too few good detectors in array.", "ok", kCaption)
nothing_in_front()
uncalibrated("one source for two")

start(2, 5)
calibration.at_low(20)
put("DECOM.TMP", "short")
calibration.at_high(25)
check.answer_box("Failed to read file:\nDECOM.TMP", "ok", kCaption)
check.answer_box("Failure to load Decommutation array into memory!", "ok", kCaption)
nothing_in_front()
uncalibrated("no table")

-- No pattern for replacements: the new lists are installed, but nothing is in force.
local pattern = readfile("data/nearccw.prs")
assert(os.remove(datadir() .. "/nearccw.prs"))
start(2, 5)
calibration.at_low(20)
local texts = to_the_end()
check.eq(texts[kStatistics], nil)
uncalibrated("no pattern")
former_files_stand("no pattern")
put("nearccw.prs", pattern)

-- The noise file can't be made: told, and the run goes on.
assert(os.remove(datadir() .. "/Last.noi"))
assert(os.execute("mkdir -p '" .. datadir() .. "/Last.noi/inside'"))
mark = check.mark()
start(2, 5)
calibration.at_low(20, 20)
texts = to_the_end()
check.holds(texts["Noise File Storage Failure"], "/Last.noi")
assert(texts[kStatistics], check.show(texts))
check.eq(state("CalType"), 2)
assert(os.execute("rm -r '" .. datadir() .. "/Last.noi'"))

-- Memory is refused at the first request, the second, ... until a run has had all that it asked for. Some of the refusals are made good:
-- without memory for its map a report has none.
local function refuse_memory(points, caption)
  local refused, whole = {}, 0
  local n = 0
  while whole < 15 do
    n = n + 1
    assert(n < 100, "no run comes to its end")
    if points == 2 and state("CalType") ~= 0 then  -- each run asks for the same blocks: from the plain state
      start(2, 2)
      calibration.at_low(20)
      press(2)
    end
    start(points, 2)
    sim.fault("memory", n)
    calibration.at_low(20)
    texts = to_the_end()
    sim.fault("memory", 0)
    for _, text in ipairs(texts) do refused[#refused + 1] = text end
    whole = texts[caption] and whole + 1 or 0
    if not texts[caption] and points == 2 then uncalibrated("refusal " .. n) end
  end
  return refused
end
local refused = refuse_memory(2, kStatistics)
for _, text in ipairs {
  "Failure to allocate or lock LowSumBuffer memory!", "Failure to allocate or lock HighSumBuffer memory!",
  "Failure to allocate or lock NoiseBuffer memory!", "Failure to allocate video memory!", "Failure to allocate Gain List memory!",
  "Failure to load Decommutation array into memory!", "Failure to allocate OffsetList memory!", "Failure to lock Gain list memory!",
} do holds(refused, text) end

-- --- One point

start(1, 5)
calibration.at_low(20, 20)
texts = to_the_end()
assert(texts[kResults], check.show(texts))
check.eq(state("CalType"), 1)

-- Without frames, without a pixel inside the window: the calibration that was to be replaced comes back.
local function comes_back(what)
  nothing_in_front(what)
  check.eq(state("CalType"), 1, what)
end
start(1, 0)
calibration.at_low(20)
check.answer_box("Video Data Acquisition Failed, Hardware error", "ok", kCaption)
comes_back("no frame")
command(130)
set(1206, "0")
set(1205, "0")
calibration.accept(1, 5)
calibration.at_low(20)
check.answer_box("Failure to find good pixels!", "ok", kCaption)
comes_back("no good pixel")
command(130)
set(1206, "400")
set(1205, "400")
calibration.accept(1, 5)
press(2)
comes_back("cancelled")
refused = refuse_memory(1, kResults)
for _, text in ipairs {
  "Failure to allocate video memory!", "Failure to allocate or lock StdDev memory!", "Failure to allocate or lock Gain memory!",
  "Failure to get decommutation order!", "Failure to allocate OffsetList memory!",
} do holds(refused, text) end
start(1, 5)
calibration.at_low(20, 20)
to_the_end()

-- An offset beyond 16 bits, from a gain that is far off: No gives the run up, Yes keeps it.
local gains = readfile("data/Last.gai")
put("Last.gai", string.pack("<f", 10) .. gains:sub(5))
local offsets = readfile("data/Last.off")
local kRange = "Some OFFSET coefficients out of range!\nDo you wish to continue ?"
command(131)
calibration.at_low(20, 20)
check.answer_box(kRange, "no", "Warning!  Continue?")
nothing_in_front()
uncalibrated("the range was refused")
assert(readfile("data/Last.off") == offsets)
local function load_last()
  command(133)
  check.eq(dialog(), "CAL_OPEN")
  calibration.choose(datadir() .. "/Last.cal")
  nothing_in_front()
  check.eq(state("CalType"), 1)
end
load_last()
command(131)
calibration.at_low(20, 20)
check.answer_box(kRange, "yes", "Warning!  Continue?")
texts = to_the_end()
assert(texts[kResults], check.show(texts))
check.eq(state("CalType"), 1)
check.eq(readfile("data/Last.gai"):sub(1, 4), string.pack("<f", 10), "the gain file isn't written by an update")
put("Last.gai", gains)

-- A cancel of an update changes nothing; a new one that is cancelled brings the former calibration back.
command(131)
press(2)
nothing_in_front()
check.eq(state("CalType"), 1)
start(1, 5)
press(2)
nothing_in_front()
check.eq(state("CalType"), 1)

-- An update without its gains, or with too few of them: a beep.
for _, rest in ipairs { "short", false } do
  if rest then put("Last.gai", rest) else assert(os.remove(datadir() .. "/Last.gai")) end
  mark = check.mark()
  command(131)
  calibration.at_low(20)
  nothing_in_front()
  check.seen("beep", { sound = "exclamation" }, mark)
  uncalibrated("no gains")
  put("Last.gai", gains)
  load_last()
end

-- An update of nothing is a new run, under the name of the type in force: the cancel took the choice of two points back.
start(2, 5)
calibration.at_low(20)
press(2)
uncalibrated("cancelled at the high source")
mark = check.mark()
command(131)
check.seen("dialog", { name = "CAL_COLD", text = "1 Point Calibration" }, mark)
check.seen("status", { text = " Perform 1 point calibration (determine offsets only)" }, mark)
calibration.at_low(20, 20)
texts = to_the_end()
check.holds(texts[kResults], "Total bad pixels = ")
check.eq(state("CalType"), 1)

-- With the camera off no frame comes.
command(169)
check.answer_box("Do you wish to turn the Vantir camera OFF?", "yes")
while box() do answer("ok") end
nothing_in_front()
check.eq(state("CameraOn"), 0)
command(131)
calibration.at_low(20)
texts = to_the_end()
nothing_in_front()
check.eq({ texts[1], texts[2], texts[3] }, { "Camera should be on.", "Video Data Acquisition Failed, Hardware error" })
uncalibrated("the camera is off")
