-- A GigE Vision camera from its switch to its account. The camera is kelvo-fake-camera, whose path is the second argument behind "--"; the first is the
-- directory for pictures and files. Time is the camera's own: not for --virtual-time.
local out, program = arg[1], arg[2]
local data = datadir()
local front = out .. "/front"
local kCameras, kCalibrate, kTurnOn, kFitContrast, kExit = 2260, 130, 169, 2004, 119
local kCameraList, kFormat, kOk, kCancel = 22601, 22605, 1, 2
local kFrames, kFirstPart = 1000, 400

local function say(...) print(string.format(...)) end

local function picture(name)
    screenshot(out .. "/" .. name .. ".png")
    say("  picture: %s.png", name)
end

local function put(word)
    local file <close> = assert(io.open(front, "w"))
    file:write(word, "\n")
end

local pid
local function switchOn()
    local said = out .. "/camera"
    os.remove(said)
    local pipe <close> = assert(io.popen(("'%s' --serial KFIRST --rate 50 --front '%s' '%s/insb320.cnf' >'%s' & echo $! | tee '%s/camera.pid'"):format(program, front, data, said, out)))
    pid = pipe:read("l")
    local line
    for _ = 1, 1300 do  -- another one at the address is waited for
        line = (readfile(said) or ""):match("[^\n]+")
        if line then break end
        wait(100)
    end
    say("camera: %s", assert(line, "the camera comes up"))
end
local function kill()
    os.execute("kill -9 " .. pid)
    os.remove(out .. "/camera.pid")
end

local function inFront(name)
    assert(dialog() == name, "dialog " .. name .. " opens, not " .. (dialog() or box() and box().text or "the main window"))
end

-- A true camera says what it can't do in boxes.
local function readBoxes()
    while box() do
        say("  told: %s", (box().text:gsub("\n", "\n        ")))
        answer("ok")
    end
end

put("scene")
switchOn()

-- Found, asked, wired to this machine.
inFront("CLOCK_ON")
press(kCancel)
command(kCameras)
wait(500)
for index, line in ipairs(items(kCameraList)) do
    say("found: %s", line)
    if line:find("KFIRST", 1, true) then pick(kCameraList, index - 1) end
end
for index, format in ipairs(items(kFormat)) do
    if format == "Mono14" then pick(kFormat, index - 1) end
end
picture("1-cameras")
press(kOk)
say("%s", box().text)
answer("yes")

-- On, by the video set-up.
readBoxes()
inFront("CLOCK_ON")
press(1070)
readBoxes()
press(kOk)
readBoxes()
inFront("CALIB")
press(kCancel)
readBoxes()
frames(20)
command(kFitContrast)
picture("2-raw")

-- Calibrated against two sources.
command(kCalibrate)
inFront("CALIB")
press(kOk)
for _, source in ipairs { { "CAL_COLD", "low", 20, 1224 }, { "CAL_HOT", "high", 25, 1226 } } do
    inFront(source[1])
    put(source[2])
    wait(200)
    set(source[4], tostring(source[3]))
    press(kOk)
end
while box() do
    say("%s", box().text)
    answer("ok")
end
put("scene")
frames(20)
command(kFitContrast)
picture("3-corrected")

-- Recorded: killed after some hundred frames, switched on again two seconds later.
record { directory = out, name = "recorded_{date}_{time}", sample = "loopback", frames = kFrames, wait = false }
for _ = 1, 600 do
    if recorder().frames >= kFirstPart then break end
    wait(50)
end
kill()
say("killed after %d frames", recorder().frames)
wait(2000)
switchOn()
local waited = 0
while recorder().state == "recording" and waited < 60 do
    wait(1000)
    waited = waited + 1
end
local run = recorder()
say("recorded: %s", run.verdict)
say("delivered %d = recorded %d + passed over %d + lost by the board %d, by the transport %d, by the ring %d", run.delivered, run.frames,
    run.passed_over, run.lost_by_board, run.lost_by_transport, run.lost_by_ring)
assert(run.frames == kFrames, run.message)
assert(run.lost_by_transport > 0, "the gap stands in the account")
assert(run.delivered == run.frames + run.passed_over + run.lost_by_board + run.lost_by_transport + run.lost_by_ring, "the account adds up")
readBoxes()
picture("4-account")

command(kTurnOn)
answer("yes")
kill()
command(kExit)
answer("yes")
return 0  -- that frames were lost is what was to be seen
