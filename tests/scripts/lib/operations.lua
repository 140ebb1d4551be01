-- The operations that write something, each as one walk through what comes up, and what a fault on the way may leave. A camera is on, live, with
-- the calibration of data/base.cal in force; data/Last.cal is another set.
--
--   prepare()       what is done once at the beginning
--   setup(), run()  what is done before each time, and how the operation is begun from the main window
--   dialogs[name]   works a dialog that comes up; times: how often it has come up
--   answers[text]   the button for a box; without one its default button
--   usual           texts or captions of boxes that come in a run without a fault
--   done(after)     true where the operation has done what it should
--   writes          what it changes when it has: names, with * for any characters, and reasons
--   kept            what stays changed where it failed and the operator was told so
--   told            text of a box = { kept = names with reasons }: where neither of the two holds
--   ends            true: what was told failed isn't done all the same
--   untold          kind of fault = the reason why nothing is said
--   arms            true: it calls operations.arm() where its steps begin, for what live video would meet before; boxes that come up while it
--                   waits it answers by operations.note_and_answer()
local check = require "check"

local operations = {}

local rows = {}
operations.rows = rows

local function with(list, more)
  local both = {}
  for name, reason in pairs(list) do both[name] = reason end
  for name, reason in pairs(more) do both[name] = reason end
  return both
end

-- --- Calibrations -------------------------------------------------------------------------------------------------------------

local function accept_low()
  sim.source("low", 20)
  set(1224, "20")
  press(1)
end
local function accept_high()
  sim.source("high", 25)
  set(1226, "25")
  press(1)
end
local function accept_calib(points)
  return function()
    press(points == 2 and 1213 or 1214)
    set(1216, "2")
    press(1)
  end
end

local in_memory = {
  BadDetCount = "of the new table", ReplacedPixels = "of the new table", CalDone = "a run is done", CalType = "of the new calibration",
  DecomList = "the new table", GainList = "the new gains", OffsetList = "the new offsets", ["file DECOM.TMP"] = "the table installed last",
  IntensityCold = "measured", IntensityHot = "measured", ["CalSettings.*"] = "the record of the new calibration",
  DisplayHigh = "the full scale", VoltsLow = "of the full scale", VoltsHigh = "of the full scale", DisplayLut = "of the full scale",
  ["kelvo.ini [[]Calibration] *"] = "its keys", ["kelvo.ini [[]Setup] FrameRate"] = "the rate that is measured",
}
local function set_files(name)
  return {
    ["file " .. name .. ".*"] = "the new set",
    ["file .calibration.journal"] = "cleared away by the next run or start", ["file ." .. name .. ".*.former"] = "cleared away by the next run or start",
  }
end
local in_force_unsaved = { kept = in_memory }
local uncalibrated = {
  CalDone = "the run has begun", CalType = "without a calibration", DecomList = "the plain table", GainList = "unity", OffsetList = "unity",
  ["file DECOM.TMP"] = "the table installed last", BadDetCount = "counted", ["CalSettings.BadDetFile"] = "the list chosen for the run",
  ["CalSettings.CalFile"] = "no calibration is in force", ["CalSettings.OffsetFile"] = "no calibration is in force",
  IntensityCold = "measured", ["CalSettings.IntensityCold"] = "measured",
  ["file .calibration.journal"] = "cleared away by the next run or start",
}
local unsaved = "The calibration is in force, but its files couldn't be saved.\nThe former ones stand:\n"

rows.two_point = {
  run = function() command(130) end,
  dialogs = { CALIB = accept_calib(2), CAL_COLD = accept_low, CAL_HOT = accept_high },
  usual = { "Bad pixel count", "Kelvo Calibration Statistics" },
  done = function(after) return after.CalType == 2 and after["CalSettings.CalFile"] == datadir() .. "/Last.cal" end,
  writes = with(in_memory, set_files("[Ll]ast")),
  kept = uncalibrated,
  told = { [unsaved] = in_force_unsaved },
}
rows.one_point = {
  run = function() command(130) end,
  dialogs = { CALIB = accept_calib(1), CAL_COLD = accept_low },
  usual = { "Calibration results" },
  done = function(after) return after.CalType == 1 and after["CalSettings.CalFile"]:lower():find("/last.cal", 1, true) ~= nil end,
  writes = with(in_memory, set_files("[Ll]ast")),
  kept = { ["CalSettings.ChosenType"] = "the run that is chosen", ["CalSettings.NumSources"] = "the run that is chosen",
    ["kelvo.ini [[]Calibration] CalType"] = "the run that is chosen", BadDetCount = "counted", ["file .calibration.journal"] = "cleared away by the next run or start",
    IntensityCold = "measured", ["CalSettings.IntensityCold"] = "measured" },
  told = { [unsaved] = in_force_unsaved },
}
rows.update = {
  run = function() command(131) end,
  dialogs = { CAL_COLD = accept_low },
  usual = { "Calibration results" },
  done = function(after) return after.CalType == 2 and after["CalSettings.CalFile"] == datadir() .. "/base.cal" end,
  writes = with(in_memory, set_files("base")),
  kept = uncalibrated,
  told = { [unsaved] = in_force_unsaved },
}
-- The same three from a frozen picture, so that the board's first frames are those of the capture: where one fails, the former calibration is in
-- force again.
local picture = {
  LiveVideo = "live, or frozen where a frame failed", ["ImageBuffer*"] = "the frozen frame", ["ImageHeader*"] = "of the frozen frame", ["menu 140"] = "live",
  title = "live", HostFrameBytes = "host frames are made", HostFramesAllocated = "host frames are made", AveragingCapacity = "of the host frames",
  FramesInBuffer = "of the host frames", ["Buffer*"] = "of the host frames", ColorMap = "made at the first frame", StatusText = "frozen, or live",
}
local no_grab = "Error starting grab to image processing board"
for _, name in ipairs { "two_point", "one_point", "update" } do
  local row = rows[name]
  rows[name .. ".capture"] = {
    setup = function()
      command(140)
      check.eq(state("LiveVideo"), 0)
    end,
    run = row.run, dialogs = row.dialogs, usual = row.usual, done = row.done,
    writes = with(row.writes, picture),
    kept = picture,
    told = { [no_grab] = { kept = with(row.writes, picture) } },  -- frames come all the same
    ends = true,
  }
end

local unheard = "The camera head didn't answer to all that was sent.\n"

local in_force_loaded = with(in_memory, {
  FilePathBuf = "the name that was chosen", ReplaceNoisy = "of the set", ["HeadTiming.*"] = "of the set", ["I*Integration*"] = "of the set",
  IndexFrameRate = "of the set", FrameRate = "of the set", VideoGain = "of the set", VideoOffset = "of the set", ["head *"] = "of the set",
  ["camera.ini [[]Camera.2] *"] = "of the set", ["kelvo.ini [[]Setup] *"] = "of the set", IntegrationTime = "of the set",
  IntegrationSetting = "of the set", IntegrationMsecInForce = "of the set",
})
rows.load = {
  -- data/Last.cal asks for another frame rate, integration time, gain and offset than the set in force.
  prepare = function()
    local path = datadir() .. "/Last.cal"
    local text_of = readfile(path)
    for key_of, value in pairs { IndexFrameRate = 4, IntTime = 20, VideoGain1 = 1, VideoOffset1 = 133 } do
      local count
      text_of, count = text_of:gsub("\n" .. key_of .. "=[^\r\n]*", "\n" .. key_of .. "=" .. value)
      check.eq(count, 1, key_of)
    end
    local out <close> = assert(io.open(path, "wb"))
    out:write(text_of)
  end,
  run = function() command(133) end,
  dialogs = {
    CAL_OPEN = function(times)
      if times > 1 then return press(2) end
      set(1460, datadir() .. "/Last.cal")
      press(1)
    end,
  },
  done = function(after)
    local integration = after["head integration_rows"] * 1000 + after["head integration_columns"]
    return after.CalType == 2 and after["CalSettings.CalFile"] == datadir() .. "/Last.cal"
      and after["head clock"] == 6 and after["head offset"] == 133 and after["head gain"] == 8 and integration ~= 244040
  end,
  writes = in_force_loaded,
  kept = { FilePathBuf = "the name that was chosen" },
  told = { [unheard] = { kept = in_force_loaded } },
}
rows.save = {
  run = function() command(132) end,
  dialogs = {
    CAL_SAVE = function()
      set(1460, datadir() .. "/copy.cal")
      press(1)
    end,
  },
  answers = { ["File already exists, replace it?"] = "ok" },
  usual = { "File already exists, replace it?" },
  done = function(after) return after["CalSettings.CalFile"] == datadir() .. "/copy.cal" and after["file copy.gai"] == after["file base.gai"] end,
  writes = with(set_files("copy"), { FilePathBuf = "the name that was chosen", ["CalSettings.*"] = "the names of the copy", StatusText = "tells what was saved" }),
  kept = {
    FilePathBuf = "the name that was chosen", ["file .calibration.journal"] = "cleared away by the next run or start",
  },
}

-- --- The camera ---------------------------------------------------------------------------------------------------------------

rows.turn_off = {
  run = function() command(169) end,
  answers = { ["Do you wish to turn the Vantir camera OFF?"] = "yes" },
  usual = { "Turn off camera?" },
  done = function(after) return after.CameraOn == 0 and after["head clocks_on"] == 0 and after["head biases_on"] == 0 end,
  writes = {
    AveragingCapacity = "of the host frames", HostFrameBytes = "freed", HostFramesAllocated = "freed", CalType = "no calibration", CameraOn = "off",
    CameraBits = "nothing is told", CameraColumns = "nothing is told", CameraRows = "nothing is told",
    ColorMap = "made at the first frame", CommPortOpen = "the link is open", CommState = "the link is open", DisplayUnit = "counts",
    GrabberPresent = "closed", ["ImageBuffer*"] = "the last frame", LiveVideo = "frozen", ["head *"] = "the safe state", ["menu 140"] = "frozen",
    ["menu 169"] = "on is next", title = "frozen", DisplayLut = "freed",
  },
}
rows.turn_off.told = {
  [unheard .. "Its electronics may still be on."] = { kept = rows.turn_off.writes },
}

local camera_on = {
  CameraOn = "on", CameraBits = "told", CameraColumns = "told", CameraRows = "told", CommPortOpen = "the link is open", CommState = "the link is open",
  DecomList = "the plain table", GainList = "unity", OffsetList = "unity",
  GrabberPresent = "open", LiveVideo = "live", ["file DECOM.TMP"] = "the table installed", ["head *"] = "programmed", ["menu *"] = "on", title = "live",
  ColorMap = "made at the first frame", ["HeadTiming.Integration*"] = "of the window in force", numBufFrames = "as many as there is memory for",
  ["ImageBuffer*"] = "the last frame", DisplayLut = "made anew", IntegrationSetting = "of the section", IntegrationMsecInForce = "of the section",
  ["kelvo.ini [[]Setup] *"] = "the video settings", VideoSetupMissing = "until one is accepted", StatusText = "tells where it is missing",
}
rows.turn_on = {
  setup = function()
    command(169)
    answer("yes")
  end,
  run = function() command(169) end,
  dialogs = {
    CLOCK_ON = function(times) press(times == 1 and 1070 or 2) end,
    QVF1058 = function() press(1) end,
    CALIB = function() press(2) end,
  },
  done = function(after) return after.CameraOn == 1 and after["head clocks_on"] == 1 and after["head biases_on"] == 1 end,
  writes = camera_on,
  kept = {
    ["head *"] = "partly programmed; the next turn-on sends everything", CommPortOpen = "the link is open", CommState = "the link is open",
    ["HeadTiming.Integration*"] = "of the section", ColorMap = "made at the first frame",
  },
  untold = { ["head silent"] = "a frame that the sequence doesn't depend on" },
}
local set_up_given_up = { kept = with(camera_on, { FirstSetupPending = "the next set-up begins anew" }) }
rows.turn_on.told = {
  ["Failure to allocate global"] = set_up_given_up, ["Failure to Lock Decommuation list in Memory"] = set_up_given_up,
}
-- The same with the last calibration, which is that of data/Last.cal.
rows.turn_on_last = {
  setup = rows.turn_on.setup,
  run = rows.turn_on.run,
  dialogs = { CLOCK_ON = function(times) press(times == 1 and 1072 or 2) end },
  done = function(after) return rows.turn_on.done(after) and after.CalType == 2 end,
  writes = with(with(camera_on, in_force_loaded), { DisplayUnit = "degrees" }),
  kept = with(camera_on, rows.turn_on.kept),  -- where the calibration can't be loaded the camera stays on without one
  untold = rows.turn_on.untold,
}

rows.configuration = {
  run = function() command(123) end,
  dialogs = {
    INITIAL = function()
      press(checked(1262) and 1261 or 1262)
      press(checked(1273) and 1272 or 1273)
      check(1616, not checked(1616))
      set(1290, checked(1616) and "3" or "4")
      press(1)
    end,
  },
  done = function(after, before) return after.Xzoom ~= before.Xzoom and after.ByteSwap ~= before.ByteSwap end,
  writes = {
    ByteSwap = "chosen", LastPaintBottom = "the picture", LastPaintRight = "the picture", ["[XY]pan"] = "chosen", ["[XY]zoom"] = "chosen",
    ["camera.ini [[]Camera.2] *"] = "its keys", ["kelvo.ini [[]Setup] ByteSwap"] = "its key",
  },
}
rows.configuration.kept = rows.configuration.writes

rows.video_setup = {
  run = function() command(121) end,
  dialogs = {
    QVF1058 = function()
      pick(624, picked(624) == 3 and 4 or 3)
      pick(626, picked(626) == 10 and 12 or 10)
      scroll(651, select(1, position(651)) == 100 and 110 or 100)
      scroll(660, select(1, position(660)) == 13 and 14 or 13)
      if dialog() then press(1) end
    end,
  },
  done = function(after, before)
    for _, register in ipairs { "clock", "integration_rows", "offset", "gain" } do
      if after["head " .. register] == before["head " .. register] then return false end
    end
    return after.VideoGain[1] ~= before.VideoGain[1] and after["kelvo.ini [Setup] VideoGain1"] == tostring(math.tointeger(after.VideoGain[1]))
  end,
  writes = {
    FrameRate = "chosen", ["HeadTiming.*"] = "chosen", IndexFrameRate = "chosen", IndexIntegrationTime = "chosen", ["Integration*"] = "chosen",
    VideoGain = "chosen", VideoOffset = "chosen", VoltsHigh = "of gain and offset", VoltsLow = "of gain and offset", ["camera.ini [[]Camera.2] *"] = "its keys",
    ["kelvo.ini [[]Setup] *"] = "its keys", ["head *"] = "chosen",
  },
}
rows.video_setup.told = {
  [unheard .. "Frame rate, integration time, gain or offset may not be as they are set."] = { kept = rows.video_setup.writes },
}
rows.advanced = {
  -- What an earlier refusal left: the head has one bias and the program the other, and what is chosen next may be what the head has.
  setup = function() operations.go(rows.advanced) end,
  run = function() command(121) end,
  dialogs = {
    QVF1058 = function(times) press(times == 1 and 1020 or 1) end,
    ADVANCED = function()
      if not checked(9113) then check(9113, true) end
      set(9110, text(9110) == "15" and "14" or "15")
      set(9109, text(9109) == "4" and "3" or "4")
      press(1)
    end,
  },
  done = function(after, before)
    return after["head detector_bias"] ~= before["head detector_bias"] and after["head column_gain"] ~= before["head column_gain"] and after["FpaSerialWord.DetBias"] ~= before["FpaSerialWord.DetBias"]
      and after["camera.ini [Camera.2] DetBias"] == tostring(math.tointeger(after["FpaSerialWord.DetBias"]))
  end,
  writes = {
    ["FpaSerialWord.*"] = "chosen", ["camera.ini [[]Camera.2] *"] = "its keys", ["kelvo.ini [[]Setup] *"] = "its keys", ["head *"] = "chosen",
    AveragingCapacity = "worked out anew",
  },
}

rows.advanced.told = {
  [unheard] = { kept = rows.advanced.writes },
}

-- --- The picture --------------------------------------------------------------------------------------------------------------

-- The mean of some frames as an image. The source is another one each time, so that frames of an earlier capture show.
local scene = 20
rows.average = {
  arms = true,
  setup = function()
    scene = scene == 20 and 30 or 20
    os.remove(datadir() .. "/mean.img")
    sim.source("low", scene)
    frames(3)
  end,
  run = function() command(106) end,
  dialogs = {
    SAVE = function(times)
      if times > 1 then return press(2) end
      set(1460, "mean")
      set(1488, "4")
      operations.arm()
      press(1)
    end,
  },
  done = function(after)
    local bytes = after["file mean.img"]
    if not bytes or #bytes ~= 512 + 2 * 320 * 256 then return false end
    for _, place in ipairs { { 10, 10 }, { 160, 128 }, { 300, 200 } } do
      local x, y = table.unpack(place)
      local mean, live = string.unpack("<i2", bytes, 513 + 2 * (y * 320 + x)), pixel(x, y)
      if math.abs(mean - live) > 40 then return false end
    end
    return true
  end,
  writes = with(picture, { ["file mean.img"] = "the image", FilePathBuf = "its name", FramesToAverageImage = "chosen" }),
  kept = with(picture, { FilePathBuf = "the name that was chosen", FramesToAverageImage = "chosen" }),
}
-- A capture that fails is told and doesn't end the run: a frame of the store may count that stood there before.
-- A new frame as a TIFF file, in place of another file that stands there.
rows.save_tiff = {
  arms = true,
  setup = function()
    local out <close> = assert(io.open(datadir() .. "/picture.tif", "wb"))
    out:write("another's")
  end,
  run = function()
    command(126)
    operations.arm()
    choose(datadir() .. "/picture.tif")
    if box() and box().caption == "Save File" then answer("yes") end  -- it exists already
  end,
  done = function(after) return #after["file picture.tif"] == 782 + 2 * 320 * 256 end,
  writes = with(picture, { ["file picture.tif"] = "the picture", LastFileDirectory = "of the file", SelectedPaths = "the name that was chosen" }),
  kept = with(picture, { LastFileDirectory = "of the file", SelectedPaths = "the name that was chosen" }),
}

rows.average.told = { ["icp_read_area() Error"] = { kept = rows.average.writes } }

-- A print is told on the status line, done or failed.
rows.print = {
  arms = true,
  setup = function() os.remove(datadir() .. "/page.pdf") end,
  run = function() command(117) end,
  dialogs = {
    DIBPRINT = function(times)
      if times > 1 then return press(2) end
      set(108, "A caption")
      operations.arm()
      press(1)
      choose(datadir() .. "/page.pdf")
    end,
  },
  done = function(after)
    local bytes = after["file page.pdf"]
    return bytes ~= nil and bytes:sub(1, 5) == "%PDF-" and bytes:sub(-6) == "%%EOF\n"
  end,
  writes = with(picture, { ["file page.pdf"] = "the page", SelectedPaths = "its name", LastFileDirectory = "its folder", StatusText = "tells where it is" }),
  kept = with(picture, { SelectedPaths = "the name that was chosen", LastFileDirectory = "its folder", StatusText = "tells what failed" }),
  untold = { disk = "the status line tells it", memory = "the status line tells it" },
}
rows.image_setup = {
  run = function() command(122) end,
  dialogs = {
    GEOMETRY = function(times)
      if times > 1 then return press(1) end
      check(1300, not checked(1300))
      pick(1308, 0)
      press(1310)
      if dialog() == "GEOMETRY" and not box() then press(1) end
    end,
  },
  answers = { ["Settings were changed\nDo you want to SET changes?"] = "yes" },
  usual = { "Settings were changed\nDo you want to SET changes?" },
  done = function(after, before) return after.MirrorVert ~= before.MirrorVert and after["kelvo.ini [Display] MirrorVert"] == tostring(after.MirrorVert) end,
  writes = {
    BadDetCount = "of the new table", DecomList = "the new table", ReplacedPixels = "of the new table", MirrorVert = "chosen", ["file DECOM.TMP"] = "the table",
    ["file base.bad"] = "the list", ["file base.cal"] = "its keys", ["kelvo.ini [[]Display] *"] = "its keys",
    ["file BADDET.TMP"] = "the edited list, for another try",
  },
}
rows.image_setup.kept = rows.image_setup.writes
rows.replace_bad_pixels = {
  run = function() command(141) end,
  done = function(after, before) return after.SubstBadPixels ~= before.SubstBadPixels end,
  writes = {
    BadDetCount = "of the new table", ReplacedPixels = "of the new table", DecomList = "the new table", SubstBadPixels = "chosen", ["file DECOM.TMP"] = "the table",
    ["file base.cal"] = "its keys", ["file base.dcm"] = "the table", ["kelvo.ini [[]Display] SubstBadPixels"] = "its key", ["menu 141"] = "its check",
  },
  kept = {
    BadDetCount = "counted", ReplacedPixels = "counted", ["file base.cal"] = "the flag that stays is written", ["file base.dcm"] = "the table that stays",
    ["kelvo.ini [[]Display] SubstBadPixels"] = "the flag that stays is written",
  },
}
rows.display_setup = {
  run = function() command(120) end,
  dialogs = {
    DISPLAY = function()
      scroll(1242, select(1, position(1242)) == 500 and 600 or 500)
      press(checked(1230) and 1231 or 1230)
      press(1)
    end,
  },
  done = function(after, before)
    return after.Brightness ~= before.Brightness and after.ImageColor ~= before.ImageColor
      and after["kelvo.ini [Display] Brightness"] == tostring(after.Brightness)
  end,
  writes = {
    Brightness = "chosen", ImageColor = "chosen", ColorMap = "chosen", DisplayLut = "of it", ["kelvo.ini [[]Display] *"] = "its keys", ["menu 14[345]"] = "checks",
  },
}

-- --- Analysis -----------------------------------------------------------------------------------------------------------------

-- A file of two small frames for other programs, by the dialog: a row a format. Its size is that of one that was written without a fault.
local export_writes = { LastFileDirectory = "of the file", StatusText = "what was written" }
local function small_recording()
  require("files").image(datadir() .. "/raw.seq", { width = 32, height = 25, frames = 2 }, 2, function(frame) return 4000 + frame end)
end
local whole_sizes = {}
local function size_when_whole(ending)
  if not whole_sizes[ending] then
    local path = datadir() .. "/whole" .. ending
    export { of = "file", file = datadir() .. "/raw.seq", out = path, count = ending == ".csv" and 1 or 2, replace = true }
    whole_sizes[ending] = #readfile(path)
  end
  return whole_sizes[ending]
end
for _, ending in ipairs { ".npy", ".tif", ".fits", ".h5", ".csv" } do
  rows["export" .. ending] = {
    prepare = function()
      small_recording()
      size_when_whole(ending)
    end,
    setup = function()
      drop(datadir() .. "/raw.seq")
      for _, name in ipairs { "out" .. ending, "out.json" } do os.remove(datadir() .. "/" .. name) end
    end,
    run = function() command(2200) end,
    dialogs = {
      EXPORT = function(times)
        if times > 1 then return press(2) end
        set(22006, datadir() .. "/out" .. ending)
        if ending == ".csv" then set(22003, "0") end
        press(1)
      end,
    },
    done = function(after)
      local bytes = after["file out" .. ending]
      return bytes ~= nil and #bytes == size_when_whole(ending) and (ending ~= ".npy" or after["file out.json"] ~= nil)
    end,
    writes = with(export_writes, { ["file out" .. ending] = "the frames", ["file out.json"] = "what is told of them" }),
    kept = { StatusText = "the line as the dialog left it" },
  }
end

local frame_taken = { ImageBuffer = "the frame that is written", ["ImageBuffer.*"] = "the frame that is written" }
-- The same by a script's call: of a file, and in place of what stands; of the picture on view.
local function by_call(of_view)
  local size
  local function settings()
    local out = datadir() .. "/out.fits"
    if of_view then return { out = out, as = "celsius", replace = true } end
    return { of = "file", file = datadir() .. "/raw.seq", out = out, replace = true }
  end
  return {
    arms = true,
    prepare = function()
      small_recording()
      export(settings())
      size = #readfile(settings().out)
    end,
    setup = function()
      local other <close> = assert(io.open(settings().out, "wb"))
      other:write("another's")
    end,
    run = function()
      operations.arm()
      local went, why = pcall(export, settings())
      if not went then operations.note(why) end
    end,
    done = function(after) return #after["file out.fits"] == size end,
    writes = with(frame_taken, { ["file out.fits"] = "the frames" }),
    kept = of_view and frame_taken or {},
  }
end
rows.export_call = by_call(false)
rows.export_view = by_call(true)
-- Raw frames corrected with a set by name: no fault makes bad detectors good ones.
local bad_in_force
rows.export_set = {
  arms = true,
  prepare = function()
    require("files").image(datadir() .. "/raw.seq", { width = 320, height = 256, frames = 2 }, 2, function(frame) return 8000 + frame end)
    bad_in_force = export { of = "file", file = datadir() .. "/raw.seq", out = datadir() .. "/all.npy", as = "celsius", set = datadir() .. "/base.cal" }.bad_detectors
    assert(bad_in_force > 1000)
  end,
  setup = function()
    for _, name in ipairs { "out.npy", "out.json" } do os.remove(datadir() .. "/" .. name) end
  end,
  run = function()
    operations.arm()
    local went, why = pcall(export, { of = "file", file = datadir() .. "/raw.seq", out = datadir() .. "/out.npy", as = "celsius", set = datadir() .. "/base.cal" })
    if not went then operations.note(why) end
  end,
  done = function(after)
    local about = after["file out.json"]
    return about ~= nil and #after["file out.npy"] == 128 + 2 * 4 * 320 * 256 and tonumber(about:match('"bad_detectors": (%d+)')) == bad_in_force
  end,
  writes = { ["file out.*"] = "the frames" },
  kept = {},
}

-- The noise of some frames, live and of a file; what is measured stands in the dialog alone.
local noise_taken
local function noise_row(frames_wanted, of_file)
  return {
    arms = true,
    prepare = of_file and function()
      local files = require "files"
      local frames_in_file = {}
      for i = 1, frames_wanted do frames_in_file[i] = string.pack("<i2", 4000 + 7 * i):rep(320 * 256) end
      files.write(datadir() .. "/noise.seq", files.header { width = 320, height = 256, frames = frames_wanted } .. table.concat(frames_in_file))
    end,
    setup = function() noise_taken = nil end,
    run = function() command(2230) end,
    dialogs = {
      NOISE = function(times)
        if times > 1 then
          noise_taken = text(22316)
          return press(2)
        end
        if of_file then
          press(22302)
          set(22303, datadir() .. "/noise.seq")
          set(22305, datadir() .. "/base.cal")
        end
        set(22307, tostring(frames_wanted))
        operations.arm()
        press(1)
      end,
    },
    done = function() return noise_taken == frames_wanted .. " raw frames" end,
    writes = {},
    kept = {},
  }
end
rows.noise = noise_row(4, false)
rows.noise_file = noise_row(4, true)
rows.noise_long_file = noise_row(20, true)

local function note_all()
  while box() do operations.note_and_answer() end
end
-- What a window with a plot keeps: a row for each kind of file. save(choose) opens it, makes the plot, and hands the name on.
local function plot_saved(save, ending, is_whole, before)
  local file_name = "figures" .. ending
  return {
    arms = true,
    prepare = small_recording,
    setup = function()
      if before then before() end
      os.remove(datadir() .. "/" .. file_name)
    end,
    run = function()
      save(function()
        operations.arm()
        choose(datadir() .. "/" .. file_name)
        note_all()
        if file() then cancel() end
      end)
    end,
    done = function(after)
      local bytes = after["file " .. file_name]
      return bytes ~= nil and is_whole(bytes)
    end,
    writes = { ["file " .. file_name] = "the figures", SelectedPaths = "the name that was chosen", LastFileDirectory = "its folder", StatusText = "of the window" },
    kept = { SelectedPaths = "the name that was chosen", LastFileDirectory = "its folder", StatusText = "of the window" },
  }
end
local function lines_in(bytes) return select(2, bytes:gsub("\n", "")) end
local function png_is_whole(bytes) return bytes:sub(2, 4) == "PNG" and bytes:sub(-8, -5) == "IEND" end
local function save_noise(choose_name)
  command(2230)
  press(22302)
  set(22303, datadir() .. "/raw.seq")
  set(22305, "")
  set(22307, "2")
  press(1)
  check.eq(text(22316), "2 raw frames")
  press(1606)
  choose_name()
  press(2)
end
rows["noise_save.csv"] = plot_saved(save_noise, ".csv", function(bytes) return lines_in(bytes) == 15 + 32 * 25 and bytes:sub(-1) == "\n" end)
rows["noise_save.img"] = plot_saved(save_noise, ".img", function(bytes) return #bytes == 512 + 4 * 32 * 25 end)
rows["noise_save.png"] = plot_saved(save_noise, ".png", png_is_whole)

-- The frames of the file on view traced, and saved; a trace of live video.
local function view_small() drop(datadir() .. "/raw.seq") end
local function trace_small()
  command(2240)
  press("TRACES", 22403)
  check.eq(text("TRACES", 22408), "2")
end
local function save_trace(choose_name)
  trace_small()
  press("TRACES", 1606)
  choose_name()
  press("TRACES", 2)
end
rows["trace_save.csv"] = plot_saved(save_trace, ".csv", function(bytes) return bytes:find("\n2,2,[^\n]*\n$") ~= nil end, view_small)
rows["trace_save.png"] = plot_saved(save_trace, ".png", png_is_whole, view_small)

local frames_traced
rows.trace_file = {
  arms = true,
  prepare = small_recording,
  setup = function()
    -- A trace of another number of frames, which stands where this one fails.
    require("files").image(datadir() .. "/three.seq", { width = 32, height = 25, frames = 3 }, 3, function(frame) return 4000 + frame end)
    drop(datadir() .. "/three.seq")
    command(2240)
    press("TRACES", 22403)
    check.eq(text("TRACES", 22408), "3")
    press("TRACES", 2)
    drop(datadir() .. "/raw.seq")
  end,
  run = function()
    command(2240)
    check.eq(text("TRACES", 22408), "3")
    operations.arm()
    press("TRACES", 22403)
    note_all()
    frames_traced = text("TRACES", 22408)
    press("TRACES", 2)
  end,
  done = function() return frames_traced == "2" end,
  writes = { StatusText = "how many frames" },
  kept = { StatusText = "of the window" },
}
rows.trace_live = {
  arms = true,
  run = function()
    command(2240)
    frames_traced = 0
    operations.arm()
    press("TRACES", 22401)
    note_all()
    if enabled("TRACES", 22402) then
      wait(700)
      note_all()
      if enabled("TRACES", 22402) then press("TRACES", 22402) end
      frames_traced = tonumber(text("TRACES", 22408))
    end
    press("TRACES", 2)
  end,
  done = function() return frames_traced > 5 end,
  writes = picture,
  kept = picture,  -- a frame that fails ends live video, with or without a trace
}

-- The picture as the difference to itself, and to a frame of a file.
local function no_difference()
  if state("DifferenceSource") == "" then return end
  command(2220)
  press(22206)
  check.eq(state("DifferenceSource"), "")
end
local function difference_row(of_file)
  return {
    arms = true,
    prepare = of_file and function()
      require("files").image(datadir() .. "/even.img",
        { width = 320, height = 256, frames = 1, cold = state("IntensityCold"), cold_c = 20, hot = state("IntensityHot"), hot_c = 25 }, 1,
        function() return 8000 end)
    end,
    setup = no_difference,
    run = function() command(2220) end,
    dialogs = {
      DIFFER = function(times)
        if times > 1 then return press(2) end
        if of_file then
          press(22202)
          set(22203, datadir() .. "/even.img")
        end
        operations.arm()
        press(1)
      end,
    },
    done = function(after) return after.DifferenceSource ~= "" and after.StatusMark == "Difference" end,
    writes = { DifferenceSource = "the reference", StatusMark = "says so", StatusText = "says so" },
    kept = { StatusText = "the line as the dialog left it" },
  }
end
rows.difference = difference_row(false)
rows.difference_file = difference_row(true)

-- The regions' own window: its files.
local two_regions = { { name = "plate", x1 = 3, y1 = 2, x2 = 20, y2 = 12 }, { name = "spot", shape = "point", x1 = 5, y1 = 6 } }
local function region_row(id, name, setup, done, writes)
  return {
    arms = true,
    prepare = function()
      regions(two_regions)
      command(2210)
      press("regions", 22119)
      choose(datadir() .. "/two.regions")
      press("regions", 2)
      assert(readfile(datadir() .. "/two.regions"):find("plate", 1, true))
    end,
    setup = function()
      setup()
      wait(1100)  -- what is drawn is kept
    end,
    run = function()
      command(2210)
      operations.arm()
      press("regions", id)
      choose(datadir() .. "/" .. name)
      while box() do operations.note_and_answer() end
      press("regions", 2)
    end,
    done = done,
    writes = writes,
    kept = { LastFileDirectory = "the folder that was chosen" },
  }
end
rows.regions_save = region_row(22119, "saved.regions", function()
  regions(two_regions)
  os.remove(datadir() .. "/saved.regions")
end, function(after) return after["file saved.regions"] ~= nil and after["file saved.regions"] == after["file two.regions"] end,
  { ["file saved.regions"] = "the regions", LastFileDirectory = "its folder" })
rows.regions_load = region_row(22118, "two.regions", function() regions { { name = "other", x1 = 1, y1 = 1, x2 = 2, y2 = 2 } } end,
  function() return #regions() == 2 end,
  { regions = "those of the file", ["file view.regions"] = "what is drawn is kept", LastFileDirectory = "its folder", ["menu 2050"] = "takes them back",
    SelectedRegion = "the first", ["*Region*"] = "those of the file" })

-- What is drawn is written into view.regions by itself.
rows.regions_kept = {
  arms = true,
  setup = function()
    regions {}
    wait(1100)
  end,
  run = function()
    regions(two_regions)
    operations.arm()
  end,
  done = function(after)
    local kept = after["file view.regions"]
    return kept ~= nil and kept:find('"spot"', 1, true) ~= nil
  end,
  writes = { regions = "drawn", ["file view.regions"] = "they are kept", ["menu 2050"] = "takes them back", SelectedRegion = "the first", ["*Region*"] = "drawn" },
  kept = { regions = "drawn; they are kept for the rest of this start", ["menu 2050"] = "takes them back", ["*Region*"] = "drawn" },
}

-- The figures of a rectangle of the live picture, saved as a table. The file of settings can be told later too.
local of_the_histogram = {
  ["HistSettings.*"] = "of this opening", ["kelvo.ini [[]Histogram] *"] = "its keys", ImageBuffer = "the frame that is measured",
  ["ImageBuffer.*"] = "the frame that is measured", SelectedPaths = "the name that was chosen", LastFileDirectory = "its folder",
}
rows.export = {
  prepare = function()
    require("files").image(datadir() .. "/raw.seq", { width = 32, height = 25, frames = 2 }, 2, function(frame) return 4000 + frame end)
  end,
  setup = function()
    drop(datadir() .. "/raw.seq")
    for _, name in ipairs { "out.npy", "out.json" } do os.remove(datadir() .. "/" .. name) end
  end,
  run = function() command(2200) end,
  dialogs = {
    EXPORT = function(times)
      if times > 1 then return press(2) end
      for index, title in ipairs(items(22005)) do
        if title:find("NumPy", 1, true) then pick(22005, index - 1) end
      end
      set(22006, datadir() .. "/out.npy")
      press(1)
    end,
  },
  done = function(after)
    local bytes = after["file out.npy"]
    return bytes ~= nil and #bytes == 128 + 2 * 32 * 25 * 2
  end,
  writes = {
    ["file out.npy"] = "the frames", ["file out.json"] = "what is told of them", LastFileDirectory = "of the file", StatusText = "what was written",
  },
  kept = { StatusText = "the line as the dialog left it" },
}
rows.export_picture = {
  prepare = rows.export.prepare,
  setup = function()
    drop(datadir() .. "/raw.seq")
    os.remove(datadir() .. "/out.png")
  end,
  run = function() command(2200) end,
  dialogs = {
    EXPORT = function(times)
      if times > 1 then return press(2) end
      pick(22001, 1)
      set(22006, datadir() .. "/out.png")
      for _, tick in ipairs { 22010, 22011 } do
        if not checked(tick) then press(tick) end
      end
      press(1)
    end,
  },
  done = function(after)
    local bytes = after["file out.png"]
    return bytes ~= nil and bytes:sub(1, 4) == "\x89PNG" and bytes:sub(-8, -5) == "IEND"
  end,
  writes = { ["file out.png"] = "the picture", LastFileDirectory = "of the file", StatusText = "what was written" },
  kept = { StatusText = "the line as the dialog left it" },
}
rows.histogram = {
  arms = true,
  setup = function() os.remove(datadir() .. "/region.csv") end,
  run = function() command(160) end,
  dialogs = {
    HISTGRAM = function(times)
      if times > 1 then return press(338) end
      wait(600)
      press(1606)
      operations.arm()
      choose(datadir() .. "/region.csv")
    end,
  },
  done = function(after)
    local saved = after["file region.csv"]
    return saved ~= nil and saved:find("\ncounts,value,samples\n", 1, true) ~= nil
  end,
  writes = with(of_the_histogram, { ["file region.csv"] = "the figures" }),
  kept = of_the_histogram,
}

-- --- Recording ----------------------------------------------------------------------------------------------------------------

local kFrameBytes = 2 * 320 * 256

-- Whole frames behind a header, and as many as it says.
local function is_whole(bytes, header_bytes, frame_bytes)
  if not bytes or #bytes < header_bytes + frame_bytes then return false end
  local frames = string.unpack("<I4", bytes, 43)
  return #bytes == header_bytes + frames * frame_bytes
end

local of_the_run = with(picture, {
  ["file run.seq*"] = "the frames, and their journal", SeqFilePath = "its name", StatusText = "tells what was saved", SaveFrameBytes = "of the run", SaveFrameCount = "of the run",
  AllFramesNum = "of the run", FrameIntegrationTime = "of the dialog", AltIntegrationTime = "of the dialog", AltIntegrationIndex = "of the dialog",
  SaveFirstStart = "of the dialog", UpdateRate = "chosen", ["kelvo.ini [[]ContSave] *"] = "its keys", HeaderStoredEachFrame = "chosen",
  VgaOnDuringSave = "chosen", DisplayWithCalib = "chosen", ApplyCalibAfterSave = "chosen", ["Frames*"] = "counted", SyncOut = "chosen",
  ["*Seconds"] = "of the frames before", PreviousStep = "of the frames before",
})
rows.continuous_save = {
  arms = true,
  setup = function()
    for _, name in ipairs { "/run.seq", "/run.seq.frames" } do os.remove(datadir() .. name) end
  end,
  run = function() command(110) end,
  dialogs = {
    CONTSAVE = function(times)
      if times > 1 then return press(times == 2 and 1 or 2) end
      set(1460, datadir() .. "/run.seq")
      set(1630, "0.1")
      operations.arm()
      press(124)
      while box() do operations.note_and_answer() end
      if text(124) ~= "&Stop acquisition" then return end
      wait(350)
      while box() do operations.note_and_answer() end
      press(124)
    end,
  },
  done = function(after)
    return is_whole(after["file run.seq"], 512, kFrameBytes) and tonumber(after["kelvo.ini [ContSave] UpdateRate"]) == 0.1
  end,
  writes = of_the_run,
  kept = of_the_run,
}

local of_the_steps = with(picture, {
  ["file some.seq"] = "the frames", StatusText = "the run's", TriggersLeft = "of the run", TrigFirstPass = "of the run", ["Trigger*"] = "chosen",
  NumTriggers = "chosen", NumFramesToAverage = "chosen", VgaOffDuringSave = "chosen", ["kelvo.ini [[]Trigger] *"] = "its keys",
})
rows.triggered_save = {
  arms = true,
  setup = function() os.remove(datadir() .. "/some.seq") end,
  run = function() command(112) end,
  dialogs = {
    BIORAD_SAVE = function(times)
      if state("AcquisitionRunning") == 1 then return wait(200) end
      if times > 1 then return press(1) end
      set(1460, datadir() .. "/some.seq")
      set(102, "2")
      set(109, "1")
      operations.arm()
      press(124)
    end,
  },
  usual = { "Acquisition completed" },
  answers = { ["Retry getting data:\nTriggerNumber = 1"] = "yes", ["Retry getting data:\nTriggerNumber = 2"] = "yes" },
  done = function(after)
    local bytes = after["file some.seq"]
    return bytes and #bytes == 1024 + 2 * 2 * kFrameBytes and after["kelvo.ini [Trigger] NumTriggers"] == "2"
  end,
  writes = of_the_steps,
  kept = of_the_steps,
}

local of_the_store = with(picture, {
  ["SubSeq*"] = "the library", ["Seq*"] = "the library", numBufFrames = "as many as there is memory for", ["Replay*"] = "of the dialog",
  ["file buffbrd.ini"] = "the library", ["buffbrd.ini *"] = "the library",
})
local burst_frames = 4  -- another number each time, so that the library is written
rows.burst = {
  arms = true,
  setup = function() burst_frames = 9 - burst_frames end,
  run = function() command(103) end,
  dialogs = {
    BUFFER = function(times)
      if times > 1 then return press(times == 2 and 1 or 2) end
      press(1360)
      set(1342, tostring(burst_frames))
      operations.arm()
      press(1352)
    end,
  },
  done = function(after)
    return after.FramesInBuffer == burst_frames and after.HostFrameNext == burst_frames
      and after["buffbrd.ini [Sequences] SubSeqNameA"] == burst_frames .. " 0 0"
  end,
  writes = of_the_store,
  kept = of_the_store,
}

-- Four frames are stored, and lie in data/four.buf.
local function store_four()
  command(103)
  press(1360)
  set(1342, "4")
  press(1352)
  press(1354)
  choose(datadir() .. "/four.buf")
  press(1)
  press(1)
  check.eq({ dialog(), box(), state("FramesInBuffer"), #readfile(datadir() .. "/four.buf") }, { nil, nil, 4, 512 + 4 * kFrameBytes })
end
rows.buffer_save = {
  arms = true,
  prepare = store_four,
  setup = function() os.remove(datadir() .. "/some.buf") end,
  run = function() command(103) end,
  dialogs = {
    BUFFER = function(times)
      if times > 1 then return press(2) end
      press(1354)
      choose(datadir() .. "/some.buf")
    end,
    BUF_SAVE = function()
      operations.arm()
      press(1)
    end,
  },
  done = function(after)
    local saved = after["file some.buf"]
    return saved ~= nil and saved:sub(513) == after["file four.buf"]:sub(513)  -- the header tells its own time
  end,
  writes = with(of_the_store, {
    ["file some.buf"] = "the frames", FilePathBuf = "its name", SelectedPaths = "its name", StatusText = "tells what was saved",
  }),
  kept = { FilePathBuf = "the name that was chosen", SelectedPaths = "the name that was chosen", ["Buffer*"] = "what was chosen" },
}
-- Two frames of four: where it fails the others count still.
rows.buffer_load = {
  arms = true,
  prepare = store_four,
  setup = function()
    command(103)
    if box() then answer("yes") end
    press(1356)
    choose(datadir() .. "/four.buf")
    press(1)
    press(2)
    check.eq(state("FramesInBuffer"), 4)
  end,
  run = function() command(103) end,
  dialogs = {
    BUFFER = function(times)
      if times > 1 then return press(2) end
      press(1356)
      operations.arm()
      choose(datadir() .. "/four.buf")
    end,
    BUF_LOAD = function(times)
      if times > 1 then return press(2) end
      set(1371, "2")
      press(1)
    end,
  },
  done = function(after) return after.FramesInBuffer == 2 and after.HostFrameNext == 2 and after.BufferFirstFrame == 2 end,
  writes = with(picture, { FilePathBuf = "its name", ["Buffer*"] = "what was chosen", FramesInBuffer = "loaded" }),
  kept = { FilePathBuf = "the name that was chosen" },
}

-- --- Corrected later, and volts --------------------------------------------------------------------------------------------------

local viewed = with(picture, {
  ["Image*"] = "the result on view", ViewingFile = "on view", ViewFilePath = "on view", ["menu *"] = "of what is on view", LoadName = "on view",
  ["Display*"] = "of what is on view", ["Volts*"] = "of what is on view", ["recent.ini *"] = "opened last", StatusText = "of what is on view",
  ["*Frame*"] = "of what is on view", ["*Sequence*"] = "of what is on view", ["*Fit*"] = "its own contrast",
  Brightness = "its own contrast", Contrast = "its own contrast", ["Intensity*"] = "of what is on view", ["kelvo.ini [[]Recent*"] = "opened last",
})
rows.apply = {
  prepare = function()
    require("files").image(datadir() .. "/raw.seq", { width = 320, height = 256, frames = 2 }, 2, function(frame) return 4000 + frame end)
  end,
  setup = function() os.remove(datadir() .. "/even.seq") end,
  run = function() command(134) end,
  dialogs = {
    APPLYCAL = function(times)
      if times > 1 then return press(2) end
      for id, value in pairs { [808] = "raw.seq", [809] = "base.cal", [707] = "even.seq" } do set(id, datadir() .. "/" .. value) end
      for id, value in pairs { [1371] = "0", [1372] = "1", [1373] = "0" } do set(id, value) end
      press(1)
    end,
  },
  done = function(after)
    local bytes = after["file even.seq"]
    return bytes ~= nil and #bytes == 512 + 2 * kFrameBytes
  end,
  writes = with(viewed, { ["file even.seq"] = "the result", ["kelvo.ini [[]ApplyCal] *"] = "its keys" }),
}
-- A run that ends at a frame that can't be written or read has been told, and leaves the frames before it.
rows.apply.kept = rows.apply.writes

-- A sequence, and the frame on the screen to each of its frames.
rows.image_math = {
  prepare = function()
    require("files").image(datadir() .. "/raw.seq", { width = 320, height = 256, frames = 2 }, 2, function(frame) return 4000 + frame end)
  end,
  setup = function() os.remove(datadir() .. "/sum.seq") os.remove(datadir() .. "/.sum.seq.new") end,
  run = function() command(162) end,
  dialogs = {
    IMGMATH = function(times)
      if times > 1 then return press(2) end
      for id, value in pairs { [701] = "1", [704] = "0.5", [706] = "0" } do set(id, value) end
      for id, value in pairs { [702] = "raw.seq", [707] = "sum.seq" } do set(id, datadir() .. "/" .. value) end
      press(1)
    end,
  },
  done = function(after)
    local bytes = after["file sum.seq"]
    return bytes ~= nil and #bytes == 512 + 2 * kFrameBytes
  end,
  writes = {
    ["file sum.seq"] = "the result", StatusText = "what was written", ["ImageHeader*"] = "the result's", ["ImageBuffer*"] = "of the live frame",
    HostFrameBytes = "host frames are made", HostFramesAllocated = "host frames are made", AveragingCapacity = "of the host frames",
  },
  kept = {
    ["file .sum.seq.new"] = "what was written, as the box says", HostFrameBytes = "host frames are made", HostFramesAllocated = "host frames are made",
    AveragingCapacity = "of the host frames",
  },
}

local uncalibrated_by_volts = with(picture, {
  CalType = "the measurement leaves the camera without a calibration", DisplayUnit = "there are no degrees without a calibration",
  StatusText = "says so, and how to go back", DecomList = "unity", GainList = "unity", OffsetList = "unity", ["file DECOM.TMP"] = "unity",
})
rows.voltage = {
  setup = function() sim.source("volts", 0) end,
  run = function() command(2071) end,
  dialogs = {
    CALVOLT = function(times)
      if times > 1 then return press(2) end
      sim.source("volts", 0.3)
      set(101, "0.3")
      press(1)
    end,
  },
  usual = { "Oscilloscope Voltage Calibration", "Voltage calibration results" },
  done = function(after) return after["camera.ini [Camera.2] A/Doffset"] == ("%f"):format(after.ADoffset) end,
  writes = with(uncalibrated_by_volts, {
    VoltsOffset = "measured", ADoffset = "measured", VoltsPerCountVsGain = "measured", ["camera.ini [[]Camera.2] *"] = "its keys",
    VoltsLow = "of the new values", VoltsHigh = "of the new values",
  }),
  kept = uncalibrated_by_volts,
}
rows.voltage.told = {
  [unheard .. "Its gain and offset may not be those of before."] = { kept = with(rows.voltage.writes, { ["head *"] = "as the measurement left it" }) },
}

-- --- Walking ------------------------------------------------------------------------------------------------------------------

local kMostSteps, kMostTimes = 60, 4

-- Goes through what comes up until nothing is in front; returns the boxes as a list of { text, caption }, and how many warning beeps there were.
function operations.go(row)
  local mark = check.mark()
  local boxes, times = {}, {}
  local function note_and_answer()
    local front = box()
    boxes[#boxes + 1] = { text = front.text, caption = front.caption }
    answer((row.answers or {})[front.text] or front.default)
  end
  operations.note_and_answer = note_and_answer
  operations.note = function(text_of) boxes[#boxes + 1] = { text = text_of } end
  row.run()
  for _ = 1, kMostSteps do
    if box() then
      note_and_answer()
    elseif file() then
      cancel()
    elseif dialog() then
      local name = dialog()
      times[name] = (times[name] or 0) + 1
      local work = assert((row.dialogs or {})[name], name)
      if times[name] > kMostTimes then cancel() else work(times[name]) end
    else
      break
    end
  end
  repeat  -- what comes by a timer: settings that can't be written
    local before = #boxes
    wait(1100)
    while box() do note_and_answer() end
  until #boxes == before
  check.eq({ dialog(), box() and box().text }, {})
  local beeps = 0
  for _, line in ipairs(check.lines("beep", mark + 1)) do
    if line.sound == "exclamation" then beeps = beeps + 1 end
  end
  return boxes, beeps
end

-- The texts of the boxes that don't come without a fault.
function operations.told(row, boxes)
  local told = {}
  for _, each in ipairs(boxes) do
    local usual = false
    for _, known in ipairs(row.usual or {}) do usual = usual or each.text == known or each.caption == known end
    if not usual then told[#told + 1] = each.text end
  end
  return told
end

-- The first difference that no name of the list covers, nil where all are covered.
function operations.uncovered(differences, list)
  for name, how in pairs(differences) do
    local covered = false
    for known in pairs(list or {}) do
      local pattern = known:gsub("[%.%-%(%)%+]", "%%%0"):gsub("%*", ".*")
      covered = covered or name:find("^" .. pattern .. "$") ~= nil
    end
    if not covered then return name .. ": " .. how end
  end
end

return operations
