-- Losses are told as they are: by the board, by the ring, by a disk that is full; the process ends with a code that says so.
local check = require "check"
local recordings = require "recordings"
local video = require "video"

video.turn_on()
frames(2)

-- The file is taken away under it.
record{ name = "gone", wait = false }
wait(500)
os.remove(datadir() .. "/gone.seq")
wait(1500)
local run = recorder()
check.eq({ run.state, run.ended, run.exit_code }, { "idle", "file deleted", 2 })
check.holds(run.message, "The recording was stopped: its file was deleted.")
check.eq(box(), nil, "a script reads it")

-- The same for the operator is a box.
command(2060)
set("recorder", 21020, datadir())
set("recorder", 21022, "gone_again")
press("recorder", 21001)
wait(500)
os.remove(datadir() .. "/gone_again.seq")
wait(1500)
check.holds(box().text, "The recording was stopped: its file was deleted.\n" .. datadir() .. "/gone_again.seq\n\n")
check.eq({ box().caption, box().icon }, { "Kelvo Warning", "exclamation" })
answer("ok")
check.holds(text("recorder", 21005), " frames, none lost, ")
check.eq(enabled("recorder", 21001), true)
press("recorder", 2)

-- No room: it stops cleanly, and what it has is whole.
sim.fault("little disk space")
run = record{ name = "room", limit = 5000 }
check.eq({ run.ended, run.exit_code }, { "disk full", 2 })
check.holds(run.message, "The recording was stopped: the disk has room for less than 5 s.")
recordings.expect_steps(recordings.numbers(run.files[1]), run.frames, 1)
sim.fault("little disk space", false)

-- A frame that can't be read is lost by the board, and stands in the journal of the next one.
record{ name = "lost", wait = false }
wait(200)
sim.fault("icp_read_area", 3)
wait(200)
run = record("stop")
check.eq({ run.lost, run.lost_by_board, run.lost_by_ring, run.exit_code }, { 1, 1, 0, 1 })
check.holds(run.verdict, "1 lost (1 by the board, 0 by the ring)")
local missing = 0
for _, record in ipairs(recordings.journal(run.files[1]).records) do missing = missing + record.board end
check.eq(missing, 1)
check.answer_box("icp_read_area() Error", "ok", "ITEX Board Error!")  -- of the live picture

-- The disk refuses a frame.
record{ name = "refused", wait = false }
wait(200)
sim.fault("disk unplugged")
wait(200)
sim.fault("disk unplugged", false)
check.eq(recorder().ended, "write failed")
-- Nothing is returned: the process ends with 2.
