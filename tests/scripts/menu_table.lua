-- Every command stands in the menu with its text, and each does its work.
local check = require "check"
answer("ok")

local texts = {
  [103] = "&Host RAM capture...\tShift+F3", [106] = "&Save image...\tF3", [107] = "&Load image...\tF6",
  [108] = "&Name sequence for saving...\tF4", [109] = "S&ave sequence\tF5", [110] = "&Continous save sequence...",
  [112] = "&Bio-Rad save...", [113] = "Na&me sequence to load...\tShift+F4", [114] = "L&oad next\tF7",
  [115] = "Loa&d last\tShift+F7", [116] = "Save &bitmap image...", [117] = "&Print bitmap image...\tShift+PrintScrn",
  [118] = "P&rinter setup...", [119] = "E&xit\tCtrl+Q", [120] = "&Display setup...\tCtrl+D",
  [121] = "&Video setup...\tCtrl+V", [122] = "&Image setup...\tCtrl+I", [123] = "&Configuration...",
  [125] = "Save 8-bit TIFF image...", [126] = "Save 16-bit TIFF image...", [2200] = "Export...\tCtrl+E", [130] = "&New...\tCtrl+C", [131] = "&Update...",
  [132] = "&Save...", [133] = "&Load previous...", [134] = "&Apply to data...", [135] = "&View statistics...",
  [140] = "&Freeze frame\tF2", [141] = "&Replace bad pixels\tF9", [143] = "&Normal gray", [144] = "&Inverted gray",
  [145] = "Normal &color", [151] = "&Image cursor\tF8", [160] = "&Histogram...\tShift+F8", [161] = "&Line plot...",
  [162] = "&Image math...", [2230] = "&Noise...", [169] = "&Turn Vantir on ", [190] = "&Contents", [191] = "&Search\tF1", [192] = "&Keys help",
  [2006] = "Frame &account", [2007] = "Colo&ur scale", [2008] = "Saturation o&verlay", [2009] = "Simulated &bench...",
  [2260] = "Ca&meras...", [2240] = "&Traces...", [2220] = "&Difference...",
  [2043] = "&Keep fitted", [2044] = "&Desktop's theme", [2045] = "Lig&ht theme", [2046] = "Dark the&me",
  [2040] = "F&it\tCtrl+0", [2041] = "&1:1\tCtrl+1", [2042] = "C&entre\tCtrl+5",
  [2060] = "R&ecord...\tCtrl+R", [2061] = "&Trigger the recorder\tCtrl+T", [2062] = "Mar&k the recording\tCtrl+M",
  [2210] = "&Regions...\tCtrl+Shift+R",
  [2251] = "Script &window", [2252] = "S&top the script", [2253] = "&Record...",
  [193] = "&Help for help", [194] = "Windows &Tutorial", [195] = "&Kelvo Tutorial", [196] = "&About", [2270] = "Save support &files...",
}
for id, expected in pairs(texts) do
  local item = menu(id)
  assert(item, "no menu item " .. id)
  check.eq(item.text, expected, "menu " .. id)
  check.eq(item.enabled, true, "menu " .. id)
end
for _, id in ipairs { 105, 155, 156, 200, 217 } do check.eq(menu(id), nil, "menu " .. id) end

for _, id in ipairs { 106, 107, 114, 117, 121, 160, 1016 } do check.eq(enabled("panel", id), true, "panel " .. id) end

-- There are no user-written functions.
for _, id in ipairs { 180, 900, 999 } do
  check.eq(menu(id), nil)
  command(id)
  check.answer_box("Error in User Menu ID number(s).", "ok", "User Software Module Error")
  check.eq(box(), nil)
  check.eq(status(), " Use Alt + underlined menu item or trackball to select menu item")
end

-- Nothing is on view to print, and the status line says so.
for _, print_it in ipairs { function() command(117) end, function() key("Shift+PrintScrn") end, function() press("panel", 117) end } do
  print_it()
  check.eq({ dialog(), box(), (status()) }, { nil, nil, "There is nothing to print: open an image or turn the camera on" })
end

-- Without a picture there is nothing to measure.
for _, open in ipairs { function() command(160) end, function() key("Shift+F8") end, function() press("panel", 160) end } do
  open()
  check.eq({ box(), dialog() }, { nil, nil })
  check.eq(status(), "There is nothing to measure: open an image or turn the camera on")
end

command(130)
check.answer_box("Camera must be turned on before calibrating", "ok", "Kelvo Message")

-- Without a head the video set-up can't open its link.
command(121)
check.holds(box().text, "OpenXComm, Error number ")
answer("ok")
check.answer_box("Error opening rs232 communications!  Check port, baud rate, etc.", "ok", "Comm Error")

command(169)
check.eq(dialog(), "CLOCK_ON")
press(2)

command(133)
check.answer_box("Camera must be on in order\nto load a calibration", "ok", "Kelvo message")

command(162)
check.eq(dialog(), "IMGMATH")
press(2)

-- Freezing needs a camera that is on.
command(140)
check.eq(state("LiveVideo"), 0)
check.eq(menu(140).text, "&Freeze frame\tF2")

-- Without a picture there is nothing to save.
for _, id in ipairs { 125, 126 } do
  command(id)
  check.answer_box("Video Data Acquisition Failed, Hardware error", "ok", "Kelvo message")
end

-- A plot needs a picture.
command(161)
check.eq({ dialog(), box(), status() }, { nil, nil, "There is nothing to measure: open an image or turn the camera on" })

-- Colour maps.
for id, color in pairs { [143] = 1230, [144] = 1231, [145] = 1232 } do
  command(id)
  check.eq(state("ImageColor"), color)
  for other = 143, 145 do check.eq(menu(other).checked, other == id) end
end
command(143)
for _, color in ipairs { 1231, 1232, 1230 } do
  key("F11")
  check.eq(state("ImageColor"), color)
end
