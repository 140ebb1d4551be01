-- First light: the whole job on the simulated camera, from a cold start to a saved measurement. Sets up the video on the oscilloscope,
-- looks at the raw array, calibrates against a low and a high source, sees the array become even and its bad detectors vanish, saves
-- images, a sequence and the calibration, changes the camera and back, comes up again with the calibration by both ways, and reads a
-- saved image in degrees. Captures a burst and replays it, records on a trigger with what came before it, makes whole a recording that
-- was cut short and corrects it with the calibration. Measures the saved image: histogram, line plot and the graph of a pixel over the recorded
-- frames, each figure beside one that is reckoned here; the difference of two images, a printed page, TIFF files. Traces two regions over the
-- recording, maps the NETD beside what the detectors really have, and leaves frames as FITS and .npy for other programs. Pictures and files are
-- left in the directory named after "--". With CommLog=1 in kelvo.ini the bytes that went to the camera head stand in CommLog.txt.

local out = arg and arg[1] or "first-light"
local data = datadir()

local kSaveImage, kNameSequence, kSaveSequence, kExit = 106, 108, 109, 119
local kConfiguration, kCalibrate, kSaveCalibration, kFreeze, kImageCursor = 123, 130, 132, 140, 151
local kSaveTiff8, kSaveTiff16, kPrint, kHistogram, kLinePlot, kGraph, kImageMath = 125, 126, 117, 160, 161, 1358, 162
local kGray, kColour, kTurnOn, kFitContrast = 143, 145, 169, 2004
local kHostRam, kBurstFrames, kCapture, kReplay, kReplayRate, kRecorder = 103, 1342, 1352, 1348, 1350, 2060
local kByVideoSetup, kByLastCalibration, kBySelectedCalibration = 1070, 1072, 1074
local kName, kFramesToAverage, kBeginningNumber = 1460, 1488, 1486
local kNoise, kTraces, kSavePlot, kUnit = 2230, 2240, 1606, 1256
local kOk, kCancel, kReport = 1, 2, "report"

local function say(...)
    print(string.format(...))
end

-- The report as one reads it; the map that follows in the file is what the dialog draws.
local function report()
    return (assert(readfile(data .. "/Last.report.txt")):gsub("\nMap of the detectors.*", ""))
end

local function picture(name)
    screenshot(out .. "/" .. name .. ".png")
    say("  picture: %s.png", name)
end

local function inFront(name)
    assert(dialog() == name, "dialog " .. name .. " opens, not " .. (dialog() or box() and box().text or "the main window"))
end

local function live()
    assert(state("CameraOn") == 1 and state("LiveVideo") == 1, "the camera is on and live")
end

-- The menu's item without the mark before its letter.
local function offered()
    return (menu(kTurnOn).text:gsub("&", ""))
end

local function turnOff()
    command(kTurnOn)
    answer("yes")
    assert(state("CameraOn") == 0)
    say("camera off; the menu offers: %s", offered())
end

-- Chooses a camera in the configuration dialog and restarts the set-up; the turn-on dialog is in front afterwards.
local function changeCamera(index)
    command(kConfiguration)
    pick(1598, index)
    press(kOk)
    answer("yes")
    inFront("CLOCK_ON")
end

-- Deviation of the frame on view over its mean, in counts, every third pixel of every third row.
local function deviation()
    local sum, squares, count = 0, 0, 0
    for y = 0, state("Vroi") - 1, 3 do
        for x = 0, state("Hroi") - 1, 3 do
            local value = pixel(x, y)
            sum, squares, count = sum + value, squares + value * value, count + 1
        end
    end
    return math.sqrt(squares / count - (sum / count) ^ 2), sum / count
end

-- What an earlier run left would be asked about.
for _, name in ipairs { "scope.bmp", "scene.img", "run1.seq", "run2.seq", "run3.seq", "even.seq", "even.seq.frames",
    "scene16.tif", "scene8.tif", "difference.img", "scene.pdf", "netd.csv", "netd.img", "netd.png", "trace.csv", "trace.png", "even.fits", "scene.npy",
    "scene.json" } do
    os.remove(out .. "/" .. name)
end
os.remove(data .. "/morning.cal")
-- The SAVE dialog changes the working directory, so that a path has to be whole.
local whole = out:match("^/") and out or data:match("^(.*)/[^/]*$")

-- The start: the head has answered, and Kelvo asks how to turn the camera on.
inFront("CLOCK_ON")
for _, line in ipairs(transcript()) do
    if line.kind == "status" and line.text:find("Camera Head found", 1, true) then say("head: %s", line.text) end
end
picture("01-before")

-- Through the video set-up: every detector's signal on the oscilloscope.
sim.source("low", 22.5)
press(kByVideoSetup)
inFront("QVF1058")
frames(20)
picture("02-scope")
press(1606)
choose(out .. "/scope.bmp")
press(kOk)
inFront("CALIB")
press(kCancel) -- the raw array first
live()
say("camera on; the menu offers: %s", offered())

-- The raw array on a uniform source, and on a scene.
frames(200)
say("frames delivered %d, shown %d, lost %d", state("FramesDelivered"), state("FramesShown"), state("FramesLost"))
command(kFitContrast)
frames(2)
local rawDeviation, rawMean = deviation()
say("raw: %.1f counts, deviation %.1f counts, bad detectors among them", rawMean, rawDeviation)
picture("03-raw")
sim.source("scene")
frames(3)
command(kFitContrast)
frames(2)
picture("04-raw-scene")

-- The calibration: two sources, a class for every detector that can't be corrected, the result, the report.
command(kCalibrate)
inFront("CALIB")
picture("05-calibration")
press(kOk)
for _, source in ipairs { { "CAL_COLD", "low", 20, 1224 }, { "CAL_HOT", "high", 25, 1226 } } do
    inFront(source[1])
    sim.source(source[2], source[3])
    set(source[4], tostring(source[3]))
    press(kOk)
end
say("%s", box().text)
answer("ok")
say("%s", box().text)
picture("06-result")
answer(kReport)
inFront("CALREPORT")
wait(300)
picture("07-bad-detectors")
press(kOk)
say("%s", report())

-- The same source and the same scene again: even, and in degrees.
sim.source("low", 22.5)
frames(3)
command(kFitContrast)
frames(2)
local evenDeviation, evenMean = deviation()
say("corrected: %.1f counts, deviation %.1f counts, which is one frame's noise", evenMean, evenDeviation)
picture("08-corrected")
command(kFreeze)
command(kImageCursor)
mouse(400, 300)
say("a source at 22.5 degrees reads: %s", status())
command(kImageCursor)
command(kFreeze)
sim.source("scene")
frames(3)
command(kFitContrast)
frames(2)
picture("09-corrected-scene")

-- Colours, zoom to 16 and back.
command(kColour)
frames(2)
picture("10-colour")
command(kGray)
local zoom = state("Xzoom")
while state("Xzoom") < 16 do command(200) end
frames(2)
picture("11-zoom")
while state("Xzoom") > zoom do command(201) end

-- Saved: the mean of 16 frames as an image, three numbered images of a sequence, the calibration under a name of its own.
command(kSaveImage)
inFront("SAVE")
set(kName, whole .. "/scene.img")
set(kFramesToAverage, "16")
press(kOk)
command(kNameSequence)
inFront("SAVE")
set(kName, whole .. "/run.seq")
set(kBeginningNumber, "1")
press(kOk)
for _ = 1, 3 do command(kSaveSequence) end
assert(box() == nil, "saved without a question")
say("saved: scene.img, %d bytes; run1.seq to run%d.seq", #readfile(out .. "/scene.img"), state("SeqNumber") - 1)
command(kSaveCalibration)
inFront("CAL_SAVE")
set(kName, "morning")
press(kOk)
for _, extension in ipairs { "gai", "off", "noi", "dcm", "bad", "cal" } do
    say("  morning.%s, %d bytes", extension, #assert(readfile(data .. "/morning." .. extension)))
end

-- Off; the large array, and back.
turnOff()
changeCamera(0)
press(kByVideoSetup)
press(kOk)
press(kCancel)
frames(20)
command(kFitContrast)
frames(2)
say("a frame of %d x %d", state("Hroi"), state("Vroi"))
picture("12-large-array")
turnOff()
changeCamera(1)

-- With the last calibration, then with a chosen one: corrected at once.
press(kByLastCalibration)
live()
assert(state("CalType") == 2 and box() == nil)
turnOff()
command(kTurnOn)
press(kBySelectedCalibration)
inFront("CAL_OPEN")
set(kName, "morning.cal")
press(kOk)
live()
sim.source("high", 25)
frames(3)
local loadedDeviation = deviation()
say("with morning.cal: deviation %.1f counts", loadedDeviation)
assert(loadedDeviation < 6, "as even as after the calibration")

-- A burst into memory, replayed.
sim.source("scene")
command(kHostRam)
inFront("BUFFER")
set(kBurstFrames, "50")
press(kCapture)
say("%s", status())
pick(kReplayRate, 0)
check(kReplay, true)
wait(500)
say("replays %d frames, one each %d ms", state("FramesInBuffer"), state("ReplayPeriodMs"))
picture("13-replay")
check(kReplay, false)
press(kOk)

-- The recorder: 5 s from a trigger on, and the second before it; with a mark.
command(kRecorder)
picture("14-recorder")
record{ directory = whole, name = "recorded_{date}_{time}", sample = "first light", trigger = "button", before = 1, seconds = 5, wait = false }
wait(1500)
record("trigger")
wait(2000)
record("mark")
picture("15-recording")
wait(4000)
local run = recorder()
say("recorded: %s", run.verdict)
assert(run.ended == "complete" and run.exit_code == 0 and run.marks == 1, run.message)
press("recorder", kCancel)

-- As a power cut would have left it: the last frame in part, the journal never closed.
local function copy(from, to, bytes)
    local file = assert(io.open(to, "wb"))
    file:write(assert(readfile(from)):sub(1, bytes))
    assert(file:close())
end
local kJournalRecord, kPart = 64, 1000
copy(run.files[1], whole .. "/cut.seq", -kPart - 1)
copy(run.files[1] .. ".frames", whole .. "/cut.seq.frames", -kJournalRecord - 1)
local recovered = batch("recover", whole .. "/cut.seq")
say("recovered: %s", recovered == 1 and "repaired" or "exit code " .. recovered)
assert(recovered == 1 and batch("recover", "--dry-run", whole .. "/cut.seq") == 0, "whole now")

-- Corrected with the calibration, afterwards.
assert(batch("apply", "--set", data .. "/morning.cal", whole .. "/cut.seq", whole .. "/even.seq") == 0)
assert(batch("recover", "--dry-run", whole .. "/even.seq") == 0)
drop(whole .. "/even.seq")
command(kFitContrast)
say("even.seq: %d frames, corrected after the recording", state("ImageHeader.FrameCount"))
picture("16-corrected-later")

-- What was saved, in degrees.
drop(out .. "/scene.img")
assert(state("ViewingFile") == 1)
command(kImageCursor)
mouse(500, 400)
say("scene.img: %s", status())
picture("17-saved-image")
command(kImageCursor)

-- The same counts for other programs, sample for sample: whole, and a gray value for each step of the range. The samples lie behind a head of
-- 782 bytes, row by row.
local low, high = state("ImageHeader.DisplayLow"), state("ImageHeader.DisplayHigh")
local step = math.max((high + 1 - low) // 256, 1)
for bits, id in pairs { [16] = kSaveTiff16, [8] = kSaveTiff8 } do
    local name = ("scene%d.tif"):format(bits)
    command(id)
    choose(whole .. "/" .. name)
    local bytes, sum, reckoned = assert(readfile(whole .. "/" .. name)), 0, 0
    local width, height = state("ImageHeader.ImageWidth"), state("ImageHeader.ImageHeight")
    for i = 0, width * height - 1 do
        local sample = bits == 16 and string.unpack("<i2", bytes, 783 + 2 * i) or bytes:byte(783 + i)
        local count = pixel(i % width, i // width)
        local wanted = bits == 16 and count or math.max(0, math.min(255, count // step))
        assert(sample == wanted, ("%s, sample %d"):format(name, i))
        sum, reckoned = sum + sample, reckoned + wanted
    end
    say("%s: mean %.3f, reckoned %.3f", name, sum / (width * height), reckoned / (width * height))
end

-- What the saved image measures, in degrees. A value is a single, and so are the two parts of a mean.
local function single(number)
    return (string.unpack("<f", string.pack("<f", number)))
end
local cold, hot = state("ImageHeader.TemperatureCold"), state("ImageHeader.TemperatureHot")
local lowCounts, highCounts = state("ImageHeader.IntensityCold"), state("ImageHeader.IntensityHot")
local function degrees(count)
    return single((hot - cold) * (count - lowCounts) / (highCounts - lowCounts) + cold)
end
local function reckon(values, divisor)
    local sum, squares = 0, 0
    for _, value in ipairs(values) do sum = sum + value end
    local mean = single(single(sum) / single(#values))
    for _, value in ipairs(values) do squares = squares + (mean - value) ^ 2 end
    return ("%.3f"):format(mean), ("\xC2\xB1%.3f"):format(math.sqrt(squares / divisor))
end
local function compare(what, values, divisor)
    local mean, spread = reckon(values, divisor or #values)
    say("%s: %s %s, reckoned %s %s", what, text(321), text(322), mean, spread)
    assert(text(321) == mean and text(322) == spread, what)
end
local function number(control)
    return tonumber(text(control))
end
local kMeasured = 700  -- ms until a plot stands

assert(state("DisplayUnit") == 2, "read in degrees")
command(kHistogram)
inFront("HISTGRAM")
wait(kMeasured)
picture("18-histogram")
local values, x, y, columns, rows = {}, number(309), number(311), number(314), number(316)
for row = y + 1 - math.ceil(rows / 2), y + rows // 2 do
    for column = x + 1 - math.ceil(columns / 2), x + columns // 2 do values[#values + 1] = degrees(pixel(column, row)) end
end
compare("histogram", values)
press(338)

command(kLinePlot)
inFront("LINEPLOT")
set(402, "10")
set(405, "128")
set(408, "309")
set(411, "128")
wait(kMeasured)
picture("19-line-plot")
values = {}
for column = 10, 309 do values[#values + 1] = degrees(pixel(column, 128)) end
compare("line plot", values)
press(338)

-- Twice the mean of 16 frames less a single one, and 100 counts: written to a file, never put on view.
command(kImageMath)
inFront("IMGMATH")
for control, typed in pairs { [701] = "2", [702] = whole .. "/scene.img", [704] = "-1", [705] = whole .. "/run1.seq", [706] = "100",
    [707] = whole .. "/difference.img" } do
    set(control, typed)
end
picture("20-image-math")
press(kOk)
assert(box() == nil and dialog() == nil, "combined without a question")
local first, second, result = readfile(whole .. "/scene.img"), readfile(whole .. "/run1.seq"), readfile(whole .. "/difference.img")
local sum, reckoned = 0, 0
for at = 513, #first, 2 do
    local sample = string.unpack("<i2", result, at)
    local wanted = 2 * string.unpack("<i2", first, at) - string.unpack("<i2", second, at) + 100
    assert(sample == wanted, "difference.img")
    sum, reckoned = sum + sample, reckoned + wanted
end
say("difference.img: mean %.3f, reckoned %.3f", sum / (320 * 256), reckoned / (320 * 256))

-- On paper: here a PDF file.
command(kPrint)
inFront("DIBPRINT")
set(108, "First light")
picture("21-print")
press(kOk)
choose(whole .. "/scene.pdf")
say("%s", status())
assert(readfile(whole .. "/scene.pdf"):sub(1, 5) == "%PDF-")

-- One pixel through the frames that were recorded and corrected, from the file.
command(kHostRam)
answer("yes") -- back from the saved image to the camera
check(kReplay, true)
check(kReplay, false)
press(kGraph)
inFront("BUF_GRAF")
press(1381)
choose(whole .. "/even.seq")
set(1382, "100")
set(1383, "200")
set(1387, tostring((#assert(readfile(whole .. "/even.seq")) - 512) // (80 + 2 * 320 * 256) - 1))
press(1622)
inFront("GRAPH")
wait(kMeasured)
picture("22-frame-graph")
local recording = assert(readfile(whole .. "/even.seq"))
values = {}
for at = 512 + 80 + 2 * (320 * 100 + 200), #recording, 80 + 2 * 320 * 256 do
    values[#values + 1] = degrees((string.unpack("<i2", recording, at + 1)))
end
compare("frame graph", values, #values - 1)
press(1620)
press(1620)
press(kOk)

-- The noise: 64 frames of a uniform source, and for each pixel the temperature that it can just tell. Beside it what the simulated detectors
-- really have, their deviation over their own counts a degree.
local kNetdFrames, kNetdMedian, kNetdBad = 22307, 22311, 22315
sim.source("low", 22.5)
frames(3)
command(kNoise)
inFront("NOISE")
set(kNetdFrames, "64")
press(kOk)
assert(box() == nil, "measured")
picture("23-noise")
for _, extension in ipairs { "csv", "img", "png" } do
    press(kSavePlot)
    choose(whole .. "/netd." .. extension)
end
local countsPerDegree = (state("IntensityHot") - state("IntensityCold")) / (state("TemperatureHot") - state("TemperatureCold"))
local truths = {}
for row, column, netd in assert(readfile(whole .. "/netd.csv")):gmatch("\n(%d+),(%d+),[^,]*,[^,]*,([^,\n]*)") do
    if netd ~= "" then -- a bad detector has none
        local truth = sim.truth(tonumber(column), tonumber(row))
        truths[#truths + 1] = 1000 * truth.deviation / (truth.gain * countsPerDegree)
    end
end
table.sort(truths)
local middle = #truths // 2
local trueMedian = #truths % 2 == 1 and truths[middle + 1] or (truths[middle] + truths[middle + 1]) / 2
local netdMedian = tonumber(text(kNetdMedian):match("^([%d.]+) mK$"))
say("NETD: median %.3f mK, of the detectors' true noise %.3f mK; %d pixels, %s bad ones left out", netdMedian, trueMedian, #truths,
    text(kNetdBad))
-- The median of a deviation of 64 frames lies half a percent low by itself.
assert(math.abs(netdMedian / trueMedian - 1) < 0.01, "NETD as the detectors have it")
press(kCancel)

-- Two regions in every recorded frame, in counts: a trace has as many points as there were frames.
local kTraceFile, kTraceFrames, kTraceGaps, kTraceMean, kTraceSpread = 22403, 22408, 22410, 22411, 22412
drop(whole .. "/even.seq")
regions { { name = "spot", x1 = 96, y1 = 64, x2 = 111, y2 = 79 }, { name = "ground", x1 = 4, y1 = 4, x2 = 35, y2 = 19 } }
pick("panel", kUnit, 0)
command(kTraces)
press("TRACES", kTraceFile)
wait(kMeasured)
picture("24-traces")
for _, extension in ipairs { "csv", "png" } do
    press("TRACES", kSavePlot)
    choose(whole .. "/trace." .. extension)
end
local means = {}
for at = 512 + 80, #recording, 80 + 2 * 320 * 256 do
    local counts = 0
    for y = 64, 79 do
        for x = 96, 111 do counts = counts + string.unpack("<i2", recording, at + 1 + 2 * (320 * y + x)) end
    end
    means[#means + 1] = counts / 256
end
local meanCount, squares = 0, 0
for _, mean in ipairs(means) do meanCount = meanCount + mean / #means end
for _, mean in ipairs(means) do squares = squares + (mean - meanCount) ^ 2 end
local figures = { ("%.3f"):format(meanCount), ("%.3f"):format(math.sqrt(squares / (#means - 1))) }
local told = {}
for i, control in ipairs { kTraceFrames, kTraceGaps, kTraceMean, kTraceSpread } do told[i] = text("TRACES", control):match("^%S+") end
say("trace of spot: %s frames, gaps: %s; %s ±%s counts, reckoned %s ±%s", told[1], told[2], told[3], told[4], figures[1], figures[2])
assert(tonumber(told[1]) == #means and told[3] == figures[1] and told[4] == figures[2], "trace")
press("TRACES", kCancel)
regions {}
pick("panel", kUnit, 2)

-- For other programs: fifty frames in degrees as a FITS cube, which tells when each was taken, and a picture's counts as an array for NumPy.
local cube = export { of = "file", file = whole .. "/even.seq", out = whole .. "/even.fits", as = "celsius", first = 100, count = 50 }
say("even.fits: %d frames of %d x %d in %s, %d bad detectors are no numbers", cube.frames, cube.columns, cube.rows, cube.unit,
    cube.bad_detectors or 0)
drop(whole .. "/scene.img")
local array = export { out = whole .. "/scene.npy" }
say("scene.npy: %d x %d counts", array.columns, array.rows)
command(kFreeze) -- back to the camera

turnOff()

local log = io.open(data .. "/CommLog.txt", "rb")
if log then
    local _, lines = log:read("a"):gsub("WriteRead%d+=", "")
    log:close()
    say("%d transactions with the head in CommLog.txt", lines)
end

-- The end.
command(kExit)
answer("yes")
