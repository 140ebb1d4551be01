-- Host RAM capture before a camera was turned on: the store can be filled from a file and replayed, a burst is refused.
local check = require "check"
check.eq(dialog(), "CLOCK_ON")
press(2)
command(103)
check.answer_box("You must restart the display to view buffer board images.\nRestart image display?", "yes", "Restart Image Display?")
check.eq({ dialog(), state("LiveVideo") }, { "BUFFER", 0 })
press(1352)
check.answer_box("Video Data Acquisition Failed, Hardware error", "ok", "Kelvo message")
check.eq({ dialog(), box(), state("FramesInBuffer"), state("PeriodicUpdates") }, { "BUFFER", nil, 0, 1 })
press(2)
check.eq(dialog(), nil)
