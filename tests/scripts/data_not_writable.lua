-- A data directory that can't be made: the files are named in one box, and the program works on with its defaults.
local check = require "check"
local files = require "files"
check.eq(box().caption, "Kelvo File Error!")
check.holds(box().text, "These files of Kelvo couldn't be made:\n\n")
check.holds(box().text, "/taken/data")
answer("ok")
check.seen("beep", { sound = "exclamation" })  -- no start picture
check.holds(box().text, "OpenXComm, Error number ")  -- nothing is known of the machine's ports
answer("ok")
check.answer_box("Error opening rs232 communications!  Check port, baud rate, etc.", "ok", "Comm Error")
check.answer_box("Initialize Hardware Failure", "ok", "Kelvo message")
check.eq(state("Hroi"), 125)
check.eq(state("DisplayHigh"), 8193)
check.eq(state("Contrast"), 16)
check.eq(title(), "Kelvo - Frozen")

-- What it writes is told once a file, and lost with nothing else: the picture comes, and moves.
local directory = datadir()
drop(files.image(directory:match("^(.*)/taken/data$") .. "/plain.img", { width = 4, height = 4 }, 1,
  function() return 5 end))
check.eq(title(), "Kelvo - plain")
local refused = {}
local function wait_for_boxes()
  wait(2000)
  while box() do
    local file = box().text:match("^Unable to write settings file\n" .. directory:gsub("%p", "%%%0") .. "/(.-)\n")
    assert(file, box().text)
    assert(not refused[file], file .. " is told twice")
    refused[file] = true
    answer("ok")
    wait(2000)
  end
end
key("+")
check.eq(state("Xzoom"), 4)
wait_for_boxes()
check.eq(refused, { ["recent.ini"] = true, ["camera.ini"] = true })
key("Right")
wait_for_boxes()
