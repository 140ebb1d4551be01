-- Every dialog as the operator comes to it and leaves it without keeping anything: a row each. At its start the camera is on and live with a
-- two-point calibration in force, and the data directory has sequence.img (three frames of 40 x 30), other.cal (another camera's) and Perm.bad.
--
--   setup()        what is done before the comparison begins; open() goes to the dialog from there
--   leave()        the way back that keeps nothing: Cancel where nothing else is said
--   texts, buttons, boxes, stays, first: what unchanged.change_all needs
--   refused        one after the other: set = controls and texts, box = what is told (false: a beep), button = the answer;
--                  or a function that brings a refusal about
--   kept           name = reason, of what stays changed all the same; kept_cancelled, kept_closed and kept_refused: on that way out
--   ways           the ways out that there are, where not all three
local check = require "check"
local calibration = require "calibration"
local journal = require "journal"

local dialogs = {}

local function in_front(name) check.eq({ dialog(), box() and box().text }, { name }) end
local function opens(id, name)
  return function()
    command(id)
    in_front(name)
  end
end
-- The graph of the host frames, which a replay that was begun and ended makes ready.
local function graph()
  if not enabled(1358) then
    check(1348, true)
    check(1348, false)
  end
  press(1358)
end

local function into_and_out(id, name)
  return function()
    press(id)
    in_front(name)
    press(2)
  end
end

-- The list of directories has been worked: Ok goes there first.
local function enter_directory()
  local name = dialog()
  press(1)
  in_front(name)
end

-- The window's own button sends nothing: the head keeps what it was given, and the camera's section says what that is.
local function of_the_head(names)
  local kept = {}
  for _, name in ipairs(names) do kept[name] = "the head keeps what it was given last" end
  return kept
end

local away = "the correction is taken away where the button is pressed"
local unit = "the unit is how a count is read; it holds where it is picked, for the panel too"
local name_buffer = "the name that was looked at; who needs one writes it first"
local function with(list, more)
  for name, reason in pairs(more) do list[name] = reason end
  return list
end
local function limits_kept(names)
  local kept = {}
  for _, name in ipairs(names) do
    kept["CalSettings." .. name] = "a limit of the next run, the operator's own"
    kept["kelvo.ini [Calibration] " .. name] = "a limit of the next run, the operator's own"
  end
  return kept
end
local given_up = "the run had begun: it leaves the camera without a calibration"

-- "Browse...": the file selection, and out of it again.
local browsing = {
  [20300] = function()
    press(20300)
    assert(file(), "the file selection is in front")
    cancel()
  end,
}

-- --- Dialogs on the camera ----------------------------------------------------------------------------------------------------

local rows = {}
dialogs.rows = rows

rows.ABOUT = { open = opens(196, "ABOUT"), leave = function() press(1) end, ways = { "cancelled", "closed" } }

rows.DISPLAY = {
  open = opens(120, "DISPLAY"),
  first = { 1248 },
  buttons = { [1248] = function() press(1248) end },
  ways = { "cancelled", "closed" },
  kept = { DisplayUnit = unit },
  kept_closed = {
    DisplayLut = "the picture keeps what it shows until its table is made again", ColorMap = "as DisplayLut",
    ["menu 143"] = "the colours that are shown", ["menu 145"] = "the colours that are shown",
  },
  may = { StatusText = "after the window's own button the hint stays until there is something else to tell" },
}

rows.INITIAL = {
  open = opens(123, "INITIAL"),
  first = { 1598 },  -- brings its own zoom and offsets
  kept_refused = {
    ActiveCamera = "the next OK finds no change of camera", Xzoom = "taken over before the question", Yzoom = "taken over before the question",
    LastPaintRight = "the picture at the new zoom", LastPaintBottom = "the picture at the new zoom",
  },
  -- Another camera, and no to the restart.
  refused = function()
    pick(1598, 0)
    press(1)
    check.answer_box("Kelvo must be re-initialized before changes are effective. Restart now?", "no")
  end,
}

rows.CLOCK_ON = {
  setup = function()
    command(169)
    answer("yes")
  end,
  open = opens(169, "CLOCK_ON"),
  buttons = { [1070] = "turns the camera on", [1072] = "turns the camera on", [1074] = "turns the camera on" },
  refused = function()
    press(1074)
    in_front("CAL_OPEN")
    set(1460, datadir() .. "/none.cal")
    press(1)
    check.answer_box("Failed to open file: " .. datadir() .. "/none.cal", "ok")
  end,
}

rows.TURN_OFF = {
  open = function()
    command(169)
    check.eq(box().text, "Do you wish to turn the Vantir camera OFF?")
  end,
  leave = function() answer("no") end,
  ways = { "cancelled" },
}

rows.QVF1058 = {
  open = opens(121, "QVF1058"),
  buttons = {
    [339] = into_and_out(339, "DIBPRINT"),
    [1606] = function() press(1606) end,
    [1020] = into_and_out(1020, "ADVANCED"),
    [670] = "takes the correction away at once: the row below",
  },
  ways = { "cancelled", "closed" },
  kept = { DisplayUnit = unit, LastFileDirectory = "the folder that the first file dialog of a run shows" },
  kept_closed = of_the_head {
    "FrameRate", "HeadTiming.IntegrationCols", "HeadTiming.IntegrationLines", "HeadTiming.MasterClockIndex", "IndexFrameRate",
    "IndexIntegrationTime", "IntegrationMsecInForce", "IntegrationSetting", "IntegrationTime", "VoltsHigh", "VoltsLow",
    "camera.ini [Camera.2] IndexFrameRate", "camera.ini [Camera.2] QVF1058_DAC0", "camera.ini [Camera.2] QVF1058_Gain0",
    "camera.ini [Camera.2] fFrameRate", "head clock", "head gain", "head integration_columns", "head integration_rows", "head offset",
  },
}

rows["QVF1058.unity"] = {
  open = opens(121, "QVF1058"),
  only = { 670 },
  buttons = { [670] = function() press(670) end },
  ways = { "cancelled" },
  kept = {
    CalType = away, DecomList = away, GainList = away, OffsetList = away, ["file DECOM.TMP"] = away,
    DisplayUnit = "there are no degrees without a calibration",
  },
}

rows.ADVANCED = {
  setup = opens(121, "QVF1058"),
  open = function()
    press(1020)
    in_front("ADVANCED")
  end,
  texts = { [314] = "200", [316] = "200", [1375] = "16", [1374] = "8", [9101] = "5", [9110] = "9", [9108] = "2", [9109] = "3" },
  finish = function() press(2) end,
  may = {
    AveragingCapacity = "worked out anew when it is needed", HostFrameBytes = "host frames are made when they are needed",
    HostFramesAllocated = "host frames are made when they are needed",
  },
  refused = function()
    check(9113, true)
    set(9110, "9")
    set(314, "641")
    wait(1500)
    check.eq({ text(314), box() }, { "320" })
  end,
}

rows.GEOMETRY = {
  open = opens(122, "GEOMETRY"),
  texts = { [1312] = "100,100" },
  buttons = {
    [1310] = function() press(1310) end,
    [1314] = function() press(1314) end,
    [1604] = function() press(1604) end,
  },
  ways = { "cancelled", "untouched" },
}

-- --- Calibrations -------------------------------------------------------------------------------------------------------------

rows.CALIB = {
  open = opens(130, "CALIB"),
  buttons = { [1222] = into_and_out(1222, "CAL_OPEN") },
  stays = { [1202] = "nothing is replaced in the end, and the list is determined anew", [1208] = "off with the replacement" },
  refused = {
    { set = { [1205] = "few" }, box = "Invalid offset acceptance value below mean." },
    { set = { [1206] = "" }, box = "Invalid offset acceptance level above mean." },
    { set = { [1211] = "2047.5" }, box = "Allowed noise level must be between 0.0 & 2047.0" },
    { set = { [1220] = "1.61" }, box = "Allowed gain acceptance value must be between 0.0 & 1.0" },
    { set = { [1216] = "1000" }, box = "Allowed number of frames must be between 1 & 999" },
  },
}

-- A stored list of bad detectors, which are replaced.
rows["CALIB.list"] = {
  open = opens(130, "CALIB"),
  buttons = rows.CALIB.buttons,
  work = {
    [1203] = function() end,  -- the operator's own file
    [1202] = function() end,
    [1306] = function()
      check(1306, false)
      check(1306, true)
      press(1200)
    end,
  },
  stays = { [1306] = "off and on", [1208] = "on again with the replacement" },
  refused = rows.CALIB.refused,
}
rows.CALIB.refused = { { set = { [1216] = "1000" }, box = "Allowed number of frames must be between 1 & 999" } }

local source_buttons = { [20405] = "opens the bench, a window of its own" }

rows.CAL_COLD = {
  open = opens(131, "CAL_COLD"),
  buttons = source_buttons,
  texts = { [1224] = "100", [1225] = "0.5" },
  refused = {
    { set = { [1224] = "2501" }, box = false },
    { set = { [1224] = "100", [1225] = "7" }, box = false },
  },
}

-- The cold source of a new run: what Ok of CALIB stored of the set in force comes back with it.
rows["CAL_COLD.new"] = {
  open = function()
    command(130)
    require("unchanged").change_all(rows.CALIB)
    press(1)
    in_front("CAL_COLD")
  end,
  buttons = source_buttons,
  texts = rows.CAL_COLD.texts,
  refused = rows.CAL_COLD.refused,
  kept = limits_kept { "GainAcceptanceRange", "MaxOffset", "MinOffset", "NumFrames" },
}

rows.CAL_HOT = {
  open = function()
    command(130)
    calibration.accept(2, 2)
    calibration.at_low(20, 20)
    in_front("CAL_HOT")
  end,
  buttons = source_buttons,
  texts = { [1226] = "100", [1227] = "0.5" },
  refused = {
    { set = { [1226] = "2501" }, box = false },
    { set = { [1226] = "100", [1227] = "7" }, box = false },
  },
  kept = with(limits_kept { "NumFrames" }, {
    CalDone = given_up, CalType = given_up, DecomList = given_up, GainList = given_up, OffsetList = given_up, ["file DECOM.TMP"] = given_up,
  }),
}

-- At 0 V: the dialog comes after the measurement, which takes the calibration away.
local volts_taken = "the measurement leaves the camera without a calibration"
rows.CALVOLT = {
  setup = function() sim.source("volts", 0) end,
  open = function()
    command(2071)
    answer("ok")
    in_front("CALVOLT")
  end,
  texts = { [101] = "0.25" },
  refused = {
    { set = { [101] = "" }, box = "DC voltage must be between -0.5 V and +0.5 V." },
    { set = { [101] = "0.52" }, box = "DC voltage must be between -0.5 V and +0.5 V." },
    { set = { [101] = "0" }, box = "Unable to get signal at gain & offset - try again." },
  },
  kept = { CalType = volts_taken, StatusText = "says so, and how to go back", DisplayUnit = unit },
}

rows.CAL_OPEN = {
  open = opens(133, "CAL_OPEN"),
  buttons = browsing,
  texts = { [1460] = "some.cal" },
  refused_first = enter_directory,
  refused = {
    { set = { [1460] = function() return datadir() .. "/none.cal" end }, box = function() return "Failed to open file: " .. datadir() .. "/none.cal" end },
    { set = { [1460] = function() return datadir() .. "/other.cal" end }, box = "The calibration file selected is not for this camera" },
  },
  kept_refused = { FilePathBuf = name_buffer },
}

rows.CAL_SAVE = {
  open = opens(132, "CAL_SAVE"),
  buttons = browsing,
  texts = { [1460] = "some.cal" },
  refused_first = enter_directory,
  refused = {
    { set = { [1460] = function() return datadir() .. "/other.cal" end }, box = "File already exists, replace it?", button = "cancel" },
  },
  kept_refused = { FilePathBuf = name_buffer },
}

rows.CALREPORT = {
  buttons = { [20422] = function() press(20422) end, [20423] = function() press(20423) end },
  setup = function()
    command(130)
    calibration.accept(2, 2)
    calibration.at_low(20, 20)
    calibration.at_high(25, 25)
    answer("ok")
    check.eq(box().caption, "Kelvo Calibration Statistics")
  end,
  open = function()
    answer("report")
    in_front("CALREPORT")
  end,
  may = { StatusText = "while the results are in front the rate of live video takes the line" },
  -- Behind it the run comes to its end.
  inside = true,
  leave = function() press(1) end,
  ways = { "cancelled" },
}

rows.APPLYCAL = {
  setup = function() drop(datadir() .. "/sequence.img") end,
  open = opens(134, "APPLYCAL"),
  buttons = {
    [111] = function()
      press(111)
      assert(file(), "the file selection is in front")
      cancel()
    end,
  },
  kept = { LastFileDirectory = "the folder that the first file dialog of a run shows" },
  refused = {
    { set = { [808] = "none.seq" }, box = "none.seq" },
    { set = { [808] = "" }, box = "No filename and no frames in Host RAM!" },
    { set = { [808] = function() return datadir() .. "/sequence.img" end, [809] = "none.cal" }, box = "none.cal" },
    {
      set = { [809] = function() return datadir() .. "/other.cal" end, [707] = function() return datadir() .. "/sequence.img" end },
      box = "Result file already exists!\nWrite over it?", button = "no",
    },
    { set = { [707] = "even.seq", [1371] = "-1" }, box = "StartFrame less than zero!" },
    { set = { [1371] = "1", [1372] = "0" }, box = "EndFrame less than StartFrame!" },
    { set = { [1372] = "1", [1373] = "-1" }, box = "Resultant start frame less than zero!" },
    { set = { [1373] = "0", [707] = "" }, box = "The frames are 40 x 30 pixels, those of the camera 320 x 256." },
  },
}

rows.IMGMATH = {
  open = opens(162, "IMGMATH"),
  texts = { [701] = "2", [704] = "3", [706] = "4" },
  buttons = {
    [111] = function()
      press(111)
      assert(file(), "the file selection is in front")
      cancel()
    end,
  },
  kept = { LastFileDirectory = "the folder that the first file dialog of a run shows" },
  refused = {
    { set = { [701] = "one" }, box = "Invalid constant 1" },
    { set = { [701] = "1", [704] = "two" }, box = "Invalid constant 2" },
    { set = { [704] = "1", [706] = "three" }, box = "Invalid constant 3" },
    { set = { [706] = "1", [707] = "" }, box = "Invalid result file name!" },
    {
      set = { [702] = function() return datadir() .. "/sequence.img" end, [707] = function() return datadir() .. "/SEQUENCE.img" end },
      box = "Invalid result file name!",
    },
    { set = { [707] = function() return datadir() .. "/gone/sum.img" end }, box = "Unable to create result file!" },
    { set = { [702] = "gone.img", [707] = "sum.img" }, box = "Failure to open Source1 file!" },
    { set = { [702] = function() return datadir() .. "/sequence.img" end, [705] = "gone.img" }, box = "Failure to open Source2 file!" },
    {
      set = { [701] = "0", [704] = "0", [707] = function() return datadir() .. "/sequence.img" end },
      box = "Result file already exists!\nWrite over it?", button = "no",
    },
  },
}

rows.DIFFER = {
  open = opens(2220, "DIFFER"),
  texts = { [22203] = "some.img", [22205] = "1" },
  first = { 22202 },
  buttons = {
    [22204] = function()
      press(22204)
      assert(file(), "the file selection is in front")
      cancel()
    end,
  },
  may = { LastFileDirectory = "the folder that the first file dialog of a run shows" },
  refused_first = function() press(22202) end,
  refused = {
    { set = { [22203] = "" }, box = "Please name the file of the reference." },
    { set = { [22203] = "none.img", [22205] = "-1" }, box = "Please enter the number of a frame, from 0." },
    { set = { [22205] = "0" }, box = "none.img can't be opened." },
    { set = { [22203] = function() return datadir() .. "/sequence.img" end }, box = "The frames are 40 x 30 pixels, those of the camera 320 x 256." },
  },
}

rows.NOISE = {
  setup = function() drop(datadir() .. "/sequence.img") end,
  open = opens(2230, "NOISE"),
  texts = { [22303] = "some.seq", [22305] = "some.cal", [22307] = "16" },
  buttons = {
    [22304] = function()
      press(22304)
      assert(file(), "the file selection is in front")
      cancel()
    end,
    [22306] = function()
      press(22306)
      assert(file(), "the file selection is in front")
      cancel()
    end,
  },
  kept = { LastFileDirectory = "the folder that the first file dialog of a run shows" },
  refused_first = function() press(22302) end,
  refused = {
    { set = { [22307] = "1" }, box = "Please enter 2 to 65535 frames." },
    { set = { [22307] = "2", [22303] = "" }, box = "Please name the file whose frames are to be measured." },
    { set = { [22303] = "none.seq" }, box = "none.seq can't be opened." },
    { set = { [22303] = function() return datadir() .. "/sequence.img" end, [22307] = "4" }, box = "sequence.img holds only 3 frames. Please enter 2 to 3." },
    { set = { [22307] = "2", [22305] = "none.cal" }, box = "none.cal can't be opened." },
  },
}

-- --- Host RAM -----------------------------------------------------------------------------------------------------------------

local kept_at_freezing = "the frame kept at freezing"
local made_here = "host frames are made when they are needed"
local in_memory = "the library keeps it for this run; Cancel leaves the file alone"

-- Four frames are stored, so that everything can be worked.
local function store_burst()
  command(103)
  in_front("BUFFER")
  set(1342, "4")
  press(1352)
  check.eq(text(1332), "4")
  press(1)
end

rows.BUFFER = {
  setup = store_burst,
  open = opens(103, "BUFFER"),
  texts = { [1336] = "AB", [1342] = "5", [1344] = "1" },
  buttons = {
    [1352] = "captures",
    [1354] = function()
      press(1354)
      check.eq(file().title, "Save File")
      cancel()
    end,
    [1356] = function()
      press(1356)
      check.eq(file().title, "Open File")
      cancel()
    end,
    [1358] = function()
      graph()
      in_front("BUF_GRAF")
      press(1620)
    end,
    [1360] = "drops what is stored",
    [1353] = function()
      press(1353)
      press(1353)
    end,
  },
  work = {
    -- On and off again: it goes on behind the dialog otherwise.
    [1348] = function()
      check(1348, true)
      wait(300)
      check(1348, false)
    end,
    [1011] = function() scroll(1011, 2) end,
  },
  stays = { [1348] = "on and off again", [1011] = "moves while replay pauses", [1340] = "picked last", [1342] = "of the other subsequence" },
  ways = { "cancelled", "closed" },
  kept = {
    SeqNum = in_memory, SubSeqNum = in_memory, SubSeqList = in_memory, SeqList = in_memory,
    ReplayRateIndex = "the rate of this run", ReplayPeriodMs = "the rate of this run", BufferStale = "the store has been replayed",
    LastFileDirectory = "the folder that the first file dialog of a run shows",
  },
  may = { HostFrameBytes = made_here, HostFramesAllocated = made_here, ImageBuffer = kept_at_freezing, ["ImageBuffer.Contents"] = kept_at_freezing },
}

rows.BUF_LOAD = {
  setup = function()
    store_burst()
    command(103)
    press(1354)
    choose(datadir() .. "/four.buf")
    press(1)
    check.holds(status(), "Saved four.buf: 4 frames")
    press(1356)
    choose(datadir() .. "/four.buf")
    in_front("BUF_LOAD")
    press(2)
  end,
  open = function()
    press(1356)
    choose(datadir() .. "/four.buf")
    in_front("BUF_LOAD")
  end,
  refused = {
    { set = { [1371] = "few" }, box = "Start frame must be 0 to # of frames in buffer." },
    { set = { [1371] = "0", [1614] = "" }, box = "Right column must be an integer." },
    { set = { [1371] = "0", [1614] = "0", [1374] = "200", [1375] = "1", [1376] = "100", [1377] = "319" }, box = "Upper row must be a # less than the lower row." },
    { set = { [1372] = "4" }, box = "End Frame must be greater than or equal to Start Frame." },
  },
  finish = function() press(2) end,
}

rows.BUF_SAVE = {
  setup = function()
    store_burst()
    command(103)
    press(1354)
    choose(datadir() .. "/four.buf")
    in_front("BUF_SAVE")
    press(2)
  end,
  open = function()
    press(1354)
    choose(datadir() .. "/four.buf")
    in_front("BUF_SAVE")
  end,
  refused = {
    { set = { [1375] = "x" }, box = "Left column is an invalid number." },
    { set = { [1374] = "1", [1375] = "3", [1376] = "255", [1377] = "320" }, box = "Left column must be a # less than the right column." },
    { set = { [1371] = "3", [1372] = "2" }, box = "End Frame must be greater than or equal to Start Frame." },
  },
  finish = function() press(2) end,
}

rows.BUF_GRAF = {
  setup = function()
    store_burst()
    command(103)
    graph()
    press(1620)
  end,
  open = function()
    graph()
    in_front("BUF_GRAF")
  end,
  first = { 1389 },
  texts = { [1387] = "2", [1384] = "100", [1385] = "9000" },
  buttons = { [1622] = "shows the graph, and keeps what is graphed", [1620] = "leaves" },
  leave = function() press(1620) end,
  ways = { "cancelled", "closed" },
  kept = { DisplayUnit = unit, LastFileDirectory = "the folder that the first file dialog of a run shows" },
  finish = function() press(2) end,
}

rows.GRAPH = {
  setup = function()
    store_burst()
    command(103)
    graph()
    press(1380)
    press(1622)
    in_front("GRAPH")
    press(1620)
    in_front("BUF_GRAF")
  end,
  open = function()
    press(1622)
    in_front("GRAPH")
    wait(600)
  end,
  buttons = {
    [339] = into_and_out(339, "DIBPRINT"),
    [1606] = function()
      press(1606)
      check.eq(file().title, "Save File")
      cancel()
    end,
    [1620] = "leaves",
  },
  leave = function() press(1620) end,
  ways = { "cancelled", "closed" },
  kept = { LastFileDirectory = "the folder that the first file dialog of a run shows" },
  finish = function()
    press(1620)
    press(2)
  end,
}

-- --- Files --------------------------------------------------------------------------------------------------------------------

local function view_sequence() drop(datadir() .. "/sequence.img") end

local of_the_save = "what the continuous save holds from its opening on"
rows.CONTSAVE = {
  open = opens(110, "CONTSAVE"),
  texts = { [1460] = "some.seq" },
  buttons = {
    [20701] = function()
      press(20701)
      cancel()
    end,
    [1038] = function() press(1038) end,
    [124] = "starts a run, which writes a file",
  },
  refused = { { set = { [1630] = "4001" }, box = "Update time must be in range: 0.0 to 4000.0 seconds" } },
  kept = {
    FrameIntegrationTime = of_the_save, AltIntegrationTime = of_the_save,
    LastFileDirectory = "the folder that the first file dialog of a run shows",
  },
}

rows.FRAMES = {
  setup = view_sequence,
  open = opens(116, "FRAMES"),
  texts = { [1001] = "3", [1002] = "4", [1003] = "20", [1004] = "21", [1005] = "1", [1006] = "1" },
  refused = { { set = { [1001] = "9", [1003] = "5" }, box = "Right must be a number from 9 to 39." } },
}

rows.DIBPRINT = {
  open = opens(117, "DIBPRINT"),
  kept_refused = { LastFileDirectory = "the folder that the first file dialog of a run shows" },
  -- A picture that the page is too small for, and no to it.
  refused = function()
    press(103)
    set(104, "1000")
    press(1)
    check.answer_box("The picture is larger than the paper: what lies beyond it isn't printed.", "cancel", "Kelvo message")
    check.eq(dialog(), "DIBPRINT")
    press(101)
    press(1)
    check.eq(file().title, "Save File")
    cancel()
    check.eq(dialog(), "DIBPRINT")
  end,
}
rows.EXPORT = {
  setup = function()
    view_sequence()
    regions { { name = "oval", shape = "ellipse", x1 = 2, y1 = 1, x2 = 8, y2 = 5 }, { name = "spot", shape = "point", x1 = 9, y1 = 9 } }
  end,
  open = opens(2200, "EXPORT"),
  buttons = browsing,
  -- A frame that isn't there, and no name.
  refused = function()
    pick(22001, 0)
    set(22002, "3")
    press(1)
    check.answer_box("Please enter frames from 0 to 2, the first one not behind the last one.", "ok")
    set(22002, "0")
    set(22006, "")
    press(1)
    check.answer_box("Please enter the name of the file to write.", "ok")
  end,
}
rows.GOTOFRAME = {
  setup = view_sequence,
  open = opens(2000, "GOTOFRAME"),
  refused = { { set = { [1001] = "3" }, box = "Please enter a frame number from 0 to 2." } },
}

local function view_recording()
  drop(journal.sequence(datadir() .. "/recorded.seq", journal.numbered { 1, 2, 5 }, journal.closing(3, 0)))
end

-- What is found depends on the machine; nothing is written before Ok.
rows.CAMERAS = {
  open = opens(2260, "CAMERAS"),
  buttons = { [22602] = function() press(22602) end },
  stays = { [22601] = "what stands on the networks", [22604] = "is only read", [22605] = "what the camera has" },
}

rows.RECORDED = {
  setup = view_recording,
  open = opens(2057, "RECORDED"),
  ways = { "cancelled", "closed" },
  stays = { [21105] = "is only read" },
  buttons = {
    [21106] = function()
      pick(21103, 0)
      press(21106)
    end,
  },
  kept = {
    CurrentFrame = "the frame that was shown", SequenceFrameIndex = "the frame that was shown",
    StatusText = "the frame that was shown", ["ImageBuffer.Contents"] = "the frame that was shown",
  },
}

rows.SUPPORT = {
  open = opens(2270, "SUPPORT"),
  ways = { "cancelled", "closed" },
  stays = { [22702] = "is only read" },
}

rows.SAVE = {
  open = opens(106, "SAVE"),
  buttons = browsing,
  refused_first = enter_directory,
  refused = {
    { set = { [1460] = "a.img", [1488] = "0" }, box = "1 <= Number of frames to average <= 1000" },
    { set = { [1460] = "a.img", [1488] = "many" }, box = "0 <= Number of frames to average <= 9999" },
  },
}

rows["SAVE.sequence"] = {
  open = opens(108, "SAVE"),
  buttons = browsing,
  refused_first = enter_directory,
  kept_refused = { FramesToAverageSeq = "taken over before the number is looked at" },
  kept = {
    MultiFrame = "holds where it is checked", ["kelvo.ini [Save] MultiFrame"] = "holds where it is checked",
    SaveDialogMode = "how the dialog was opened",
  },
  refused = {
    { set = { [1460] = "a.seq", [1488] = "1001" }, box = "1 <= Number of frames to average <= 1000" },
    { set = { [1460] = "a.seq", [1488] = "5", [1486] = "10000" }, box = "0 <= Beginning sequence number <= 9999" },
  },
}

-- A run with these names and numbers: the frame is its own file's. Without a name it doesn't begin.
rows.BIORAD_SAVE = {
  open = opens(112, "BIORAD_SAVE"),
  texts = { [1460] = "some", [102] = "3", [109] = "2" },
  buttons = {
    [20300] = browsing[20300],
    [124] = function()
      local name = text(1460)
      set(1460, "")
      press(124)
      check.answer_box("Please enter the name of a file.", "ok")
      set(1460, name)
    end,
  },
  refused = { { set = { [102] = "0" } }, { set = { [109] = "1000" } } },
}

-- Of the program with the functions of examples/user-module.
rows.USERDLG = { open = opens(901, "USERDLG"), ways = { "cancelled", "closed" } }
rows.USERRESP = { open = opens(903, "USERRESP"), ways = { "cancelled", "closed" } }

-- Each dialog that has no row, with the reason.
-- --- Dialogs that measure -------------------------------------------------------------------------------------------------------

local function each(names, reason, prefix)
  local list = {}
  for name in names:gmatch("%S+") do list[prefix .. name] = reason end
  return list
end
local kAxes = "XplotMax YplotMax XplotMin YplotMin Xautoscale Yautoscale Xgridlines Ygridlines Yscaling"
local measured = each("Xsize Ysize Xposition Yposition " .. kAxes, "what the histogram was opened with, and its axes follow the data", "HistSettings.")
local axes_kept = each(kAxes, "written at the end of the setup in any case, as they were", "kelvo.ini [Histogram] ")

rows.HISTGRAM = {
  open = opens(160, "HISTGRAM"),
  leave = function() press(338) end,
  texts = { [309] = "100", [311] = "100", [314] = "30", [316] = "30" },
  work = {
    [318] = function()
      check(318, false)
      wait(100)
      check(318, true)
    end,
  },
  stays = { [318] = "live video goes on" },
  buttons = {
    [301] = into_and_out(301, "HISTAXIS"),
    [338] = "the way out",
    [339] = into_and_out(339, "DIBPRINT"),
    [1606] = function() press(1606) end,
  },
  ways = { "cancelled", "closed" },
  kept = with(each("Xposition Yposition Xsize Ysize", "its only way out is Exit, which keeps the rectangle", "kelvo.ini [Histogram] "), axes_kept),
  may = with(measured, {
    LastFileDirectory = "the folder that the first file dialog of a run shows", ImageBuffer = "the frame that was measured",
    ["ImageBuffer.Contents"] = "the frame that was measured",
  }),
}

rows.HISTAXIS = {
  setup = function()
    command(160)
    check(318, false)  -- the axes would follow live data
    wait(600)
  end,
  open = function()
    press(301)
    in_front("HISTAXIS")
  end,
  stays = { [340] = "a logarithmic axis follows the data", [342] = "as Autoscale", [343] = "as Autoscale" },
  finish = function() press(338) end,
  ways = { "cancelled", "closed" },
  kept = axes_kept,
}

-- A stored frame, and settings that are in the file already.
local function line_plot_seen()
  drop(datadir() .. "/sequence.img")
  command(161)
  in_front("LINEPLOT")
  press(338)
end

local line_kept = {
  LineSettings = "every way out is Exit", ["kelvo.ini [LinePlot] Xstart"] = "the line", ["kelvo.ini [LinePlot] Ystart"] = "the line",
  ["kelvo.ini [LinePlot] Xend"] = "the line", ["kelvo.ini [LinePlot] Yend"] = "the line",
  LastFileDirectory = "the folder that the first file dialog of a run shows",
}

rows.LINEPLOT = {
  setup = line_plot_seen,
  open = opens(161, "LINEPLOT"),
  texts = { [402] = "5", [405] = "6", [408] = "30", [411] = "20" },
  work = { [318] = function() end },
  stays = { [318] = "live data takes the file's place: line_plot.lua" },
  buttons = {
    [301] = into_and_out(301, "LINEAXIS"),
    [338] = "is Exit",
    [339] = into_and_out(339, "DIBPRINT"),
    [1606] = function() press(1606) end,
  },
  kept_cancelled = line_kept,
  kept_closed = line_kept,
  refused = function()
    for _, id in ipairs { 402, 405, 408, 411 } do
      local before, axis = text(id), (id == 402 or id == 408) and "X range: 0 to 39" or "Y range: 0 to 29"
      for _, typed in ipairs { "-1", "40", "99999", "2147483647" } do
        set(id, typed)
        check.answer_box(axis, "ok", "Kelvo message")
        check.eq({ text(id), dialog() }, { before, "LINEPLOT" }, typed)
      end
    end
  end,
  leave = function() press(338) end,
}

rows.LINEAXIS = {
  setup = function()
    line_plot_seen()
    command(161)
    wait(600)
  end,
  open = function()
    press(301)
    in_front("LINEAXIS")
  end,
  first = { 340 },
  texts = { [342] = "9000", [343] = "100" },
  kept_cancelled = { DisplayUnit = unit },
  kept_closed = { DisplayUnit = unit },
  -- Nothing is told: what can't be taken isn't.
  refused = function()
    check(340, false)
    local before = state("LineSettings")
    set(342, "")
    set(342, "much")
    set(342, "-5")
    set(343, "99999")
    check.eq(state("LineSettings"), before)
  end,
  finish = function() press(338) end,
}

dialogs.without_row = {
  ACCOUNT = "stays open beside the main window; its one button counts anew",
  BENCH = "stays open beside the main window; each control acts at once, on the bench alone",
  FILEBENCH = "stays open beside the main window; each control acts at once, on the bench alone; file_board.lua works it",
  RECORDER = "stays open beside the main window and keeps what is typed; recorder_window.lua works it",
  SCRIPT = "stays open beside the main window and tells what a script of the menu printed",
  TRACES = "stays open beside the main window; it sets nothing but what it plots, and which bad pixels are left out; traces.lua works it",
  REGIONS = "stays open beside the main window; each control acts at once, on the regions, which undo takes back",
  PANEL = "is no dialog: each control acts at once",
  PLAYBAR = "is no dialog: each control acts at once",
  FRAMERATE = "comes up with a head that runs by an external clock, and none of today does",
  ImgHead = "no command opens it",
  PRINTING = "is seen while a page is on its way; printing.lua stops one by it",
  TRIGSOFT = "no command opens it",
  TRIGVALU = "no command opens it",
}

return dialogs
