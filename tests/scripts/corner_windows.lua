-- The bench and the frame account stand in the picture's lower corners and leave the play bar free, which comes and goes below them.
local check = require "check"
local video = require "video"

video.turn_on()
command(2009)
command(2006)
drop(datadir() .. "/sample.seq")
check.eq(state("ViewingFile"), 1)
screenshot("corners.png")
local bar = assert(place("player", 20200), "the play bar")
for _, title in ipairs { "Simulated bench", "Frame account" } do
  local window = assert(place("window", title), title)
  assert(window.y + window.height <= bar.y, title .. " covers the play bar: " .. check.show { window, bar })
end
