-- Files of other programs that aren't frames of counts, are cut, or meet a fault on their way: each ends in a box, and nothing has changed.
local check = require "check"
local files = require "files"
local foreign = require "foreign"
local unchanged = require "unchanged"
answer("ok")
local dir = datadir()
drop(files.image(dir .. "/good.img", { width = 16, height = 8 }, 1, function(_, x, y) return 100 * y + x end))

local function ramp(_, row, column) return 10 * row + column end
local function plane(row, column) return 10 * row + column end
local hint = "\n\nOf other programs Kelvo opens TIFF, FITS and NumPy's .npy with frames of one plane of 16-bit integers."
local npy = readfile(foreign.npy(dir .. "/cut.npy", 2, 5, 7, ramp))
local fits = readfile(foreign.fits(dir .. "/cut.fits", 2, 5, 7, ramp))
local tiff = readfile(foreign.tiff(dir .. "/cut.tif", 5, 7, plane))
local noise = files.noise(2718)
local refused = {
  { "floats.npy", "holds floats", function(path) foreign.npy(path, 1, 5, 7, ramp, "<f4", "<f") end },
  { "huge.npy", "is cut short", function(path) foreign.npy(path, 1, 5, 7, ramp) files.write(path, (readfile(path):gsub("%(1, 5, 7%), ", "(2147483647, 32767, 32767), "))) end },
  { "empty.npy", "isn't a NumPy file", function(path) files.write(path, "") end },
  { "noise.fits", "isn't a FITS file", function(path) files.write(path, noise(9000)) end },
  { "noise.tif", "isn't a TIFF file", function(path) files.write(path, noise(9000)) end },
  { "directory.tif", "is damaged", function(path) files.write(path, "II\x2A\0" .. string.pack("<I4", 99999) .. noise(300)) end },
  { "cut.npy", "is cut short", function(path) files.write(path, npy:sub(1, -2)) end },
  { "cut.fits", "is cut short", function(path) files.write(path, fits:sub(1, 2900)) end },
  { "cut.tif", "is cut short", function(path) files.write(path, tiff:sub(1, -2)) end },
  { "planes.tif", "holds 3 planes", function(path) foreign.tiff(path, 5, 7, plane, { [277] = { 3, 3 } }) end },
  { "floats.tif", "holds floats", function(path) foreign.tiff(path, 5, 7, plane, { [339] = { 3, 3 } }) end },
  { "bytes.tif", "holds samples of 8 bits", function(path) foreign.tiff(path, 5, 7, plane, { [258] = { 3, 8 } }) end },
  { "large.tif", "has sides of more than 32767 pixels", function(path) foreign.tiff(path, 5, 7, plane, { [256] = { 4, 40000 } }) end },
  { "claims.tif", "claims more pixels than its bytes can hold",
    function(path) foreign.tiff(path, 5, 7, plane, { [256] = { 3, 30000 }, [257] = { 3, 30000 }, [278] = { 3, 30000 }, [259] = { 3, 8 } }) end },
  { "squeezed.tif", "is compressed in a way that isn't known here", function(path) foreign.tiff(path, 5, 7, plane, { [259] = { 3, 9999 } }) end },
}
for _, row in ipairs(refused) do row[3](dir .. "/" .. row[1]) end

local before = unchanged.snapshot()
for _, row in ipairs(refused) do
  local bytes = readfile(dir .. "/" .. row[1])
  drop(dir .. "/" .. row[1])
  check.answer_box(row[1] .. " " .. row[2] .. "." .. hint, "ok", "Kelvo message")
  check.eq({ box(), title() }, { nil, "Kelvo - good" })
  assert(readfile(dir .. "/" .. row[1]) == bytes)
end
for _, id in ipairs { 107, 113 } do
  command(id)
  choose(dir .. "/floats.npy")
  check.answer_box("floats.npy holds floats." .. hint, "ok")
end
unchanged.expect(before, unchanged.snapshot(), nil, {
  LastFileDirectory = "the folder that was chosen", SelectedPaths = "the file that was chosen", SteppingFrames = "no step",
  FileDialogTemplate = "of the last dialog",
})
check.eq(pcall(listdir, dir .. "/opened"), false, "no directory is left behind")

-- A fault at each step: it is told, and nothing is left, or all is done.
local good = foreign.npy(dir .. "/good.npy", 3, 5, 7, function(frame, row, column) return 500 + 100 * frame + 10 * row + column end)
for _, kind in ipairs { "disk", "memory", "escape" } do
  local n, struck = 1, 0
  while true do
    assert(os.execute("rm -rf '" .. dir .. "/opened'"))
    drop(dir .. "/good.img")
    local picture = unchanged.snapshot()
    sim.fault(kind, n)
    drop(good)
    local came = sim.fault_to_come(kind) == 0
    sim.fault(kind, 0)
    local what = kind .. " at step " .. n
    if title() == "Kelvo - good" and status():find("good.npy", 1, true) then
      check.eq({ box(), pixel(6, 4) }, { nil, 546 }, what)
    elseif kind ~= "escape" or box() then
      assert(box() and #box().text > 0, what .. " is told")
      while box() do answer("ok") end
      if not status():find("good.img", 1, true) then
        check.eq(kind, "memory", what)  -- the viewer's own: what was on view before is gone, as it says
      else
        unchanged.expect(picture, unchanged.snapshot(), nil, { StatusText = "described anew" }, what)
        check.eq(pcall(listdir, dir .. "/opened"), false, what)
      end
    else
      check.holds(status(), "good.img", what)
      check.eq(pcall(listdir, dir .. "/opened"), false, what)
    end
    if not came then break end
    struck, n = struck + 1, n + 1
    assert(n < 100, what)
  end
  assert(struck >= 3, kind .. ": " .. struck)
end
