-- MP4 through ffmpeg, for which a stand-in is first on PATH (tests/scripts/stand_in): what it is told, each color that it is handed; with
-- "none" there is no ffmpeg, with "ends" it ends in the midst of it. Then it is told, and nothing is left.
local check = require "check"
local files = require "files"
answer("ok")
local dir = datadir()
local way = arg[1]
local kWidth, kHeight, kFrames = 41, 30, 5
local function count(frame, x, y) return 2000 * frame + 60 * y + 7 * x end
drop(files.image(dir .. "/run.seq", { width = kWidth, height = kHeight, rate = 25 }, kFrames, count))
command(145)  -- colors

local function export(name)
  command(2200)
  check.eq(dialog(), "EXPORT")
  set(22006, dir .. "/" .. name)
  local titles = items(22005)
  check.eq(titles[picked(22005) + 1], "MP4 video, with the colors on view")
  press(1)
end

local function nothing_is_left(name)
  check.eq(dialog(), "EXPORT")
  press(2)
  for _, left in ipairs(listdir(dir)) do assert(not left:find("mp4", 1, true) or left == name, left) end
end

if way == "none" then
  export("run.mp4")
  check.answer_box("A video needs the program ffmpeg, which isn't installed", "ok")
  nothing_is_left()
  return
end
if way == "ends" then
  files.write(dir .. "/run.mp4", "the one before")
  export("run.mp4")
  answer("yes")
  check.answer_box(dir .. "/run.mp4 can't be made: ffmpeg says \"no space left for this\"", "ok")
  nothing_is_left("run.mp4")
  check.eq(readfile(dir .. "/run.mp4"), "the one before")
  return
end

-- The picture of values isn't a video.
command(2200)
set(22006, dir .. "/run.mp4")
pick(22004, 2)
press(1)
check.answer_box("A picture is made of counts: please choose counts or corrected counts.", "ok")
press(2)

export("run.mp4")
check.eq({ dialog(), box() and box().text }, { nil, nil })
check.holds(status(), " Saved run.mp4: 5 frames, ")
local made = readfile(dir .. "/run.mp4")
local told, bytes = made:match("^(.-)\n%-%-\n(.*)$")
check.holds(told, "\nrawvideo\n-pixel_format\nrgb24\n-video_size\n41x30\n-framerate\n25.000000\n-i\npipe:0\n")
check.holds(told, "pad=ceil(iw/2)*2:ceil(ih/2)*2")
check.holds(told, "comment={")
check.holds(told, "run.seq")
check.eq(#bytes, 3 * kWidth * kHeight * kFrames)

-- Each pixel is what contrast and brightness make of its count, in the color of the map, whose planes are blue, green and red.
local lut, map = state("DisplayLut"), state("ColorMap")
local at, colored = 1, false
for frame = 0, kFrames - 1 do
  for y = 0, kHeight - 1 do
    for x = 0, kWidth - 1 do
      local gray = lut[math.min(count(frame, x, y), #lut - 1) + 1]
      local red, green, blue = bytes:byte(at, at + 2)
      if red ~= map[512 + gray + 1] or green ~= map[256 + gray + 1] or blue ~= map[gray + 1] then
        error(("frame %d, %d, %d: %d %d %d"):format(frame, x, y, red, green, blue))
      end
      colored = colored or red ~= green
      at = at + 3
    end
  end
end
assert(colored, "colors, not grays alone")

-- Stopped, the video has the frames up to there.
command(2200)
set(22006, dir .. "/short.mp4")
sim.fault("escape", 4)
press(1)
sim.fault("escape", 0)
local had = tonumber(status():match("^ Stopped: short.mp4 has (%d) of 5 frames$"))
check.eq(#readfile(dir .. "/short.mp4"):match("\n%-%-\n(.*)$"), 3 * kWidth * kHeight * had)
