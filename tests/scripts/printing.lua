-- The frame on view on paper, by hand and by script: the dialog, its refusals, each way out of it, and the page that comes of it. There is no
-- printer here: a page is a file.
local check = require "check"
local files = require "files"
local unchanged = require "unchanged"
answer("ok")
local dir = datadir()

local kFit, kStretch, kScale, kX, kY, kCaption, kBottom, kBelow, kPrinter, kToFile = 101, 102, 103, 104, 106, 108, 109, 110, 21801, 21802

-- Without anything to print.
for _, by in ipairs { function() command(117) end, function() key("Shift+PrintScrn") end, function() press("panel", 117) end } do
  by()
  check.eq({ dialog(), box(), (status()) }, { nil, nil, "There is nothing to print: open an image or turn the camera on" })
end

drop(files.image(dir .. "/one.img", { width = 40, height = 20 }, 1, function(_, x, y) return 2600 + 40 * y + 7 * x end))
key("Ctrl+F")
command(145)
local hint = status()
check.holds(hint, "Viewing Image")

-- By hand.
key("Shift+PrintScrn")
check.eq(dialog(), "DIBPRINT")
check.eq(status(), "Select bitmap printing options")
check.eq({ checked(kFit), checked(kStretch), checked(kScale), checked(kBottom), checked(kBelow) }, { true, false, false, false, true })
check.eq({ enabled(kX), enabled(kY), enabled(kCaption), text(kPrinter), checked(kToFile), enabled(kToFile) },
  { false, false, true, "There is no printer.", true, false })
screenshot("dialog.png")
press(kScale)
check.eq({ enabled(kX), enabled(105), enabled(kY), enabled(107) }, { true, true, true, true })
press(kFit)
check.eq({ enabled(kX), enabled(105), enabled(kY), enabled(107) }, { false, false, false, false })

-- Each way out leaves everything as it was: Cancel, the window's own button, Cancel of the name, no to a page that is too small, a print that
-- is stopped, and one that fails.
press(1)
cancel()  -- the folder that the first file dialog of a run shows is remembered
press(2)
check.eq({ dialog(), status() }, { nil, hint })
local before = unchanged.snapshot()
local function unchanged_after(what, work, kept)
  command(117)
  check.eq(dialog(), "DIBPRINT")
  work()
  check.eq({ dialog(), box(), file() }, { nil, nil, nil }, what)
  unchanged.expect(before, unchanged.snapshot(), kept, nil, what)
end
local named = "the file dialog's last choice"
local note = { StatusText = "what came of the print", LastFileDirectory = named, SelectedPaths = named }

unchanged_after("cancelled", function()
  press(kScale)
  set(kX, "3")
  set(kCaption, "not printed")
  press(kBottom)
  press(2)
end)
unchanged_after("closed", function()
  press(kStretch)
  cancel()
end)
unchanged_after("no name", function()
  press(1)
  check.eq(file().title, "Save File")
  check.eq(file().filters[1], "Portable Documents (*.pdf)")
  cancel()
  check.eq({ dialog(), status() }, { "DIBPRINT", "Select bitmap printing options" })
  press(2)
end)
unchanged_after("too large", function()
  press(kScale)
  set(kX, "2000")
  press(1)
  check.answer_box("The picture is larger than the paper: what lies beyond it isn't printed.", "cancel", "Kelvo message")
  check.eq(dialog(), "DIBPRINT")
  press(2)
end)

-- A printer that takes its time: "Printing" is in front, and its button stops the print.
unchanged_after("stopped", function()
  sim.fault("printer busy", true)
  press(1)
  choose(dir .. "/stopped.pdf")
  check.eq(dialog(), "PRINTING")
  check.eq({ text(401), text(402), text(403) },
    { "Printing 'Kelvo bitmap'", "on PDF on " .. dir .. "/stopped.pdf", "Sending bitmap to printer..." })
  screenshot("printing.png")
  press(2)
  sim.fault("printer busy", false)
  check.eq(status(), " Printing was stopped: nothing is printed")
end, note)
before = unchanged.snapshot()
for fault, told in pairs {
  ["printer"] = "Error getting a DC!", ["abort procedure"] = "Printer: SetAbortProc failed!", ["start printing"] = "Printer: StartDoc failed!",
  ["print bits"] = "StretchDIBits() failed!", ["print page"] = "Printer: NEWFRAME failed!", ["end printing"] = "Printer: EndDoc failed!",
} do
  unchanged_after(fault, function()
    sim.fault(fault, true)
    press(1)
    choose(dir .. "/stopped.pdf")
    sim.fault(fault, false)
    check.eq(status(), told)
  end, { StatusText = "the error" })
  before = unchanged.snapshot()
end

-- Printed: by the dialog's key, with a caption, into a file whose name lacks its ending.
local function page(name)
  local bytes = assert(readfile(dir .. "/" .. name), "no page " .. name)
  check.eq(bytes:sub(1, 5), "%PDF-")
  assert(not bytes:find("DCTDecode", 1, true), "a page that isn't exact")
  local width, height = bytes:match("/Width (%d+)%s*/Height (%d+)")
  return { math.tointeger(width), math.tointeger(height) }
end
command(117)
press(1)
choose(dir .. "/plain")
check.eq({ dialog(), status() }, { nil, " Printed into " .. dir .. "/plain.pdf" })
check.eq(page("plain.pdf"), { 40, 20 })

command(117)
set(kCaption, "A source")
press(1)
choose(dir .. "/below.pdf")
local grown = page("below.pdf")
check.eq(grown[1], 40)
assert(grown[2] > 20 + 1 + 2, "a line below")

command(117)
set(kCaption, "A source")
press(kBottom)
press(1)
choose(dir .. "/bottom.pdf")
check.eq(page("bottom.pdf"), { 40, 20 })

-- A file of that name is asked about.
command(117)
press(kStretch)
press(1)
choose(dir .. "/bottom.pdf")
check.holds(box().text, "already exists")
answer("yes")
check.eq(status(), " Printed into " .. dir .. "/bottom.pdf")

-- Yes to a picture that is too large.
command(117)
press(kScale)
set(kX, "2000")
set(kY, "")
press(1)
check.answer_box("The picture is larger than the paper: what lies beyond it isn't printed.", "ok", "Kelvo message")
choose(dir .. "/large.pdf")
check.eq(status(), " Printed into " .. dir .. "/large.pdf")
