-- A cancelled file selection ends its command and leaves the status line, here the cursor's read-out, as it was.
local check = require "check"
local files = require "files"
answer("ok")
drop(files.image(datadir() .. "/a.img", { width = 30, height = 20 }, 1, function(_, x, y) return 100 * y + x end))
mouse(100, 200)
command(151)
local read_out = status()
check.holds(read_out, "Signal=")
local hints = {
  [107] = "Select image file to view", [113] = "Select image file to view",
  [116] = "Enter filename to save image file to", [125] = "Enter filename to save image file to",
  [126] = "Enter filename to save image file to", [135] = "Select a calibration statistics file to view",
}
for id, hint in pairs(hints) do
  command(id)
  assert(file(), "command " .. id .. " asks for a file")
  check.eq(status(), hint)
  cancel()
  check.eq(box(), nil)
  check.eq(status(), read_out, "command " .. id)
  check.eq(state("ViewingFile"), 1)
  check.eq(title(), "Kelvo - a")
end
check.eq(state("LastFileDirectory"), state("DefaultDir"), "no folder was taken over")

-- The dialogs for saving have no hint of their own.
for _, id in ipairs { 106, 108 } do
  command(id)
  check.eq(dialog(), "SAVE")
  check.eq(status(), read_out)
  press(2)
  check.eq(status(), read_out, "command " .. id)
end

-- Stepping with no sequence named asks for one.
key("F7")
check.eq(file().title, "Open File")
cancel()
check.eq(status(), read_out)
