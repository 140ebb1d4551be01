-- The report is a record: what a run was made with, what its lists are, which detectors are bad. It opens again from the menu, and the set takes it
-- along to another name.
local check = require "check"
local calibration = require "calibration"

check.eq(menu(2070).text, "&Report...")
calibration.turn_on()
press(2)
command(2070)
check.answer_box("No calibration is in force.", "ok")
command(130)
calibration.two_point(20, 25, 30)
answer("ok")

local report = readfile("data/Last.report.txt")
for _, line in ipairs {
  "\nDate                  2024%-01%-01 12:0%d:%d%d\n", "\nCamera                [^\n]+ %(Camera%.%d%)\n", "\nSerial word           %x%x[%x ]+\n",
  "\nFrame rate            48%.83 Hz\n", "\nIntegration time      19%.%d%d%d%d ms\n", "\nGain, offset          0, 128\n",
  "\nWindow                columns 0 to 319, rows 0 to 255 %(320 x 256%)\n", "\nNumber of frames      30\n", "\nProgram               Kelvo %d+%.%d+%.%d+\n",
} do
  assert(report:find(line), line .. " in\n" .. report:sub(1, 1200))
end
-- 5 counts of noise, and about 1340 counts over 5 K.
local counts, millikelvins, response = report:match("\nMean noise %(NETD%) +([%d.]+) counts, ([%d.]+) mK at ([%d.]+) counts/K\n")
check.near(tonumber(millikelvins), tonumber(counts) / tonumber(response) * 1000, 0.1)
check.near(tonumber(counts), 5.5, 1.5)

-- The checksum as the machine's own tool has it.
local tool = io.popen("cd '" .. datadir() .. "' && cat Last.gai Last.off Last.dcm | sha256sum")
local digest = tool:read("a"):match("^%x+")
tool:close()
check.eq(report:match("\nSHA%-256 of the lists +(%x+)\n"), digest)

command(2070)
check.eq(dialog(), "CALREPORT")
check.holds(text(1001), "\nThe lists of the set are those of this report.\n")
wait(300)
screenshot("whole.png")
for _ = 1, 3 do press(20422) end
wait(100)
screenshot("nearer.png")
press(1)

-- Saved under another name it goes along; an update has a report of its own, a set without one says so.
command(132)
set(1460, datadir() .. "/copied.cal")
press(1)
check.eq(box(), nil)
check.eq(readfile("data/copied.report.txt"), report)
os.remove(datadir() .. "/copied.report.txt")
command(2070)
check.holds(box().text, "The calibration in force has no report:\n")
answer("ok")
sim.source("low", 20)
frames(5)
command(131)
press(1)
answer("ok")
check.holds(readfile("data/copied.report.txt"), "1 Point Update\n")
command(2070)
check.holds(text(1001), "\nThe lists of the set are those of this report.\n")
press(1)
