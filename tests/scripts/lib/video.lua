-- Turning the camera on through the video set-up, for scripts that want live video and nothing of the set-up itself.
local video = {}

-- From the turn-on dialog in front: the oscilloscope is accepted as it opens, and the calibration that is offered
-- afterwards is declined.
function video.turn_on()
  assert(dialog() == "CLOCK_ON", dialog())
  press(1070)
  assert(dialog() == "QVF1058", dialog() or box() and box().text)
  video.pass_set_up()
end

-- The oscilloscope that a turn-on has opened, if it has: accepted, and the calibration that is offered afterwards declined.
function video.pass_set_up()
  if dialog() == "QVF1058" then press(1) end
  if dialog() == "CALIB" then press(2) end
end

-- The menu's video set-up, accepted as it opens.
function video.accept_set_up()
  command(121)
  assert(dialog() == "QVF1058", dialog())
  press(1)
end

return video
