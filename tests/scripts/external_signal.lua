-- A run that begins by the external signal: the first step waits for it, the following ones don't.
local check = require "check"
local triggers = require "triggers"
local video = require "video"
local dir = datadir()

video.turn_on()
frames(2)

triggers.keys { CodeTrigger = 1 }
triggers.open(dir .. "/scan", 3)
check.eq({ text(20810), text(20812) }, { "Software", "on the external signal" })
triggers.start()
wait(3000)
check.eq({ state("AcquisitionRunning"), state("TriggersLeft"), state("ExternalThread") ~= 0 }, { 1, 3, true })
check.eq(readfile(dir .. "/scan.seq"), nil)
signal()
triggers.completed()
check.eq({ #triggers.frames(dir .. "/scan.seq"), state("ExternalThread") }, { 3, 0 })

-- Two that come while nobody waits are one, for the next run; the one behind it waits again.
signal()
signal()
set(1460, dir .. "/next")
triggers.start()
triggers.completed()
check.eq(#triggers.frames(dir .. "/next.seq"), 3)
set(1460, dir .. "/waits")
triggers.start()
wait(1000)
check.eq({ state("AcquisitionRunning"), readfile(dir .. "/waits.seq") }, { 1 })

-- Stop ends the wait, and a signal after it begins nothing.
press(triggers.kStart)
check.eq({ state("AcquisitionRunning"), state("ExternalThread"), status() }, { 0, 0, " Acquisition stopped" })
signal()
wait(1000)
check.eq({ state("AcquisitionRunning"), readfile(dir .. "/waits.seq") }, { 0 })
press(2)
check.eq(dialog(), nil)
