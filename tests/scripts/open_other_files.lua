-- Files of other programs: opened from the menu, dropped, named at the start, chosen from the recent ones, handed over by another start. Each
-- count is the stored sample, the line tells where it comes from, and the file itself is only read.
local check = require "check"
local files = require "files"
local foreign = require "foreign"
local another = require "another"
local program = arg[1]
answer("ok")  -- no camera
wait(1)
local dir = datadir() .. "/../measured"
assert(os.execute("mkdir -p '" .. dir .. "/elsewhere'"))
local opened = datadir() .. "/opened"

local function count(frame, row, column) return 300 * frame + 20 * row + column - 40 end
local function pixels_are(expected, frame)
  for row = 0, 4 do
    for column = 0, 6 do check.eq(pixel(column, row), expected(frame, row, column), ("%d, %d, %d"):format(frame, row, column)) end
  end
end

-- Named at the start (--view cube.npy), which stands in the working directory.
check.eq(title(), "Kelvo - cube")
check.holds(status(), "from " .. datadir():gsub("/data$", "") .. "/cube.npy")
check.eq({ pixel(0, 0), pixel(2, 1), state("LastFrame") }, { 100, 112, 1 })
check.eq(menu(2100).text, "&1 cube.npy")

-- From the menu, with a filter of its own.
local cube = foreign.npy(dir .. "/scan.npy", 3, 5, 7, count)
local bytes = readfile(cube)
for _, id in ipairs { 107, 113 } do
  command(id)
  local filters = file().filters
  check.eq(filters[#filters], "TIFF, FITS and NumPy files (*.tif *.tiff *.fits *.fit *.fts *.npy)")
  choose(cube)
  check.eq({ box() and box().text, title() }, { nil, "Kelvo - scan" })
  pixels_are(count, 0)
  check.holds(status(), opened .. "/scan.seq")
  check.holds(status(), "measured/scan.npy")
  check.eq(menu(2100).text, "&1 scan.npy")
end
key("F7")
pixels_are(count, 1)
check.holds(status(), "measured/scan.npy")
check.eq(listdir(opened), { "cube.seq", "cube.seq.source", "scan.seq", "scan.seq.source" })
local header = readfile(opened .. "/scan.seq"):sub(1, 512)
check.eq({ string.unpack("<I2i2i2i2", header) }, { 0xFFFF, 7, 5, 2, 9 })
check.eq(#readfile(opened .. "/scan.seq"), 512 + 3 * 5 * 7 * 2)
assert(readfile(cube) == bytes, "the file is only read")

-- A file of the same name from elsewhere stands beside it.
local second = foreign.fits(dir .. "/elsewhere/scan.fits", 2, 5, 7, function(...) return 7 + count(...) end)
drop(second)
check.eq(title(), "Kelvo - scan-2")
pixels_are(function(...) return 7 + count(...) end, 0)
check.holds(status(), "elsewhere/scan.fits")
command(2101)  -- the recent one before
check.eq(title(), "Kelvo - scan")
check.eq({ menu(2100).text, menu(2101).text }, { "&1 scan.npy", "&2 scan.fits" })
pixels_are(count, 0)
check.eq(#listdir(opened), 6)

-- One that has been written anew is read anew; a copy that was made of it is taken as it stands.
foreign.npy(cube, 3, 5, 7, function(...) return 1000 + count(...) end)
drop(cube)
pixels_are(function(...) return 1000 + count(...) end, 0)
assert(os.execute("touch -d '2020-01-01' '" .. cube .. "'"))
drop(cube)
local copy = readfile(opened .. "/scan.seq")
files.write(opened .. "/scan.seq", copy:sub(1, 512) .. string.pack("<i2", 77) .. copy:sub(515))
drop(cube)
check.eq(pixel(0, 0), 77, "the copy that stands")
assert(os.execute("touch -d '2020-01-02' '" .. cube .. "'"))
drop(cube)
check.eq(pixel(0, 0), 1000 - 40, "made anew")

-- Somebody's own file of that name isn't touched.
files.write(opened .. "/plane.seq", "somebody's")
drop(foreign.tiff(dir .. "/plane.tif", 5, 7, function(row, column) return 100 * row + column end))
check.eq({ title(), pixel(6, 4) }, { "Kelvo - plane-2", 406 })
check.eq(readfile(opened .. "/plane.seq"), "somebody's")

-- What was done to the samples is said.
drop(foreign.npy(dir .. "/high.npy", 1, 5, 7, function(_, row, column) return 32768 + 100 * row + column end, "<u2", "<I2"))
check.holds(status(), "high.npy, less 32768")
check.eq({ pixel(0, 0), pixel(6, 4) }, { 0, 406 })
drop(foreign.fits(dir .. "/below.fits", 1, 5, 7, count, { "ROWORDER= 'BOTTOM-UP'" }))
check.holds(status(), "below.fits, rows turned")
check.eq({ pixel(0, 0), pixel(3, 4) }, { count(0, 4, 0), count(0, 0, 3) })
drop(foreign.tiff(dir .. "/below.tif", 5, 7, function(row, column) return 100 * row + column end, { [274] = { 3, 4 } }))
check.eq({ pixel(0, 0), pixel(6, 4) }, { 400, 6 })

-- Another start gives its file here.
local handed = another.start(program, "handed", "--data", datadir(), "--view", cube)
check.eq(handed.finish(), 0)
wait(500)
check.eq(title(), "Kelvo - scan")

-- A frame on view is a frame as any other: it can be saved and measured.
command(126)
choose(dir .. "/again.tif")
drop(dir .. "/again.tif")
check.eq(title(), "Kelvo - again")
check.eq({ pixel(0, 0), pixel(6, 4) }, { 960, 1046 })
