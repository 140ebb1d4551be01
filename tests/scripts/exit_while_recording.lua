-- Exit while the recorder runs asks once, with the recording's own question; Cancel leaves everything as it was and the recording running, Ok ends both,
-- and the files are closed.
local check = require "check"
local video = require "video"
local dir = datadir()

video.turn_on()
frames(2)
record{ directory = dir, name = "run", wait = false }
frames(5)
local before = recorder()
check.eq(before.state, "recording")

command(119)
check.eq({ box().text, box().caption, box().buttons }, { "A recording is running.\nStop it and quit?", "QVF Vantir", { "ok", "cancel" } })
answer("cancel")
check.eq(box(), nil)
frames(5)
local after = recorder()
check.eq({ after.state, after.files }, { "recording", before.files })
assert(after.frames > before.frames, "it goes on")
check.eq({ state("CameraOn"), state("LiveVideo") }, { 1, 1 })

command(119)
answer("ok")
local file = before.files[1]
check.eq(batch("recover", "--dry-run", file), 0)
local bytes = readfile(file)
local frameCount = string.unpack("<I4", bytes, 43)
assert(frameCount >= after.frames, "what was recorded by then is counted in the header")
check.eq(#bytes, 512 + frameCount * (80 + 2 * 320 * 256))
