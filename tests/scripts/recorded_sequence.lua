-- A recorded sequence is viewed: true numbers and times, marks and flags, the gap table.
local check = require "check"
local files = require "files"
local journal = require "journal"
answer("ok")

local kPosition, kGaps = 20201, 21100
local kSummary, kEnd, kGapList, kMarkList, kTexts, kShow = 21101, 21102, 21103, 21104, 21105, 21106
local kGapsAndMarks = 2057
local dir = datadir()

-- Without a recorded sequence there is nothing to list, and no button.
command(kGapsAndMarks)
check.answer_box("There is no recorded sequence on view.", "ok")
drop(files.image(dir .. "/plain.seq", { width = 8, height = 8 }, 3, journal.count))
assert(not pcall(press, "player", kGaps), "a sequence without a journal has no gaps to tell of")
check.eq(status():find("gap"), nil)
command(kGapsAndMarks)
check.answer_box("There is no recorded sequence on view.", "ok")

-- Numbers 1 to 100000 and more: two gaps and one behind the last frame, a trigger, two marks. The low 16 bits of a number aren't all of it.
local frames = journal.numbered { 99998, 99999, 100001, 100002, 100012, 100013 }
frames[3].flags = 1
frames[5].flags, frames[5].mark, frames[5].board, frames[5].ring, frames[5].passed = 3, 7, 2, 3, 4
frames[6].flags, frames[6].mark = 2, 8
local path = journal.sequence(dir .. "/run.seq", frames, journal.closing(6, 0, { ring = 5 }),
  { "Program=Kelvo 0.1", "Camera=InSb", "SampleName=", "Comment=two\\nlines" })
drop(path)
local function described(at, words)
  return string.format("Viewing %s FrameNum:%d AllFramesNum:%d %s 100.0Hz 2.500msec%s   3 gaps, 11 frames lost, 4 passed over", path, at, frames[at + 1].number,
    journal.time(frames[at + 1]), words)
end
local words = { "", "", "   trigger, 1 lost by the board before it", "",
  "   trigger, mark 7, 2 lost by the board, 3 lost by the ring, 4 passed over before it", "   mark 8" }
for at = 0, 5 do
  if at > 0 then command(114) end
  check.eq({ state("CurrentFrame"), pixel(3, 2) }, { at, journal.count(at, 3, 2) })
  check.holds(status(), described(at, words[at + 1]))
end
check.eq(title(), "Kelvo - run")
check.eq(text("player", kGaps), "3 gaps...")

-- The lists, by the button, by the menu and by its key; Show brings a line's frame on view.
local function show(list, line)
  pick(list, line)
  press(kShow)
end

scroll("player", kPosition, 0)
key("Space")
press("player", kGaps)
check.eq({ dialog(), text("player", 20200) }, { "RECORDED", "Play" }, "playing stops")
check.eq(text(kSummary), "6 frames, 3 gaps, 11 frames lost, 4 passed over")
check.eq(text(kEnd), "It was stopped by the operator.")
local function day(at) return journal.time(frames[at + 1]):sub(12, 23) end
check.eq(items(kGapList), {
  "number 100000: 1 missing, 1 lost by the board; before frame 2, " .. day(2),
  "number 100003: 9 missing, 2 lost by the board, 3 lost by the ring, 4 passed over; before frame 4, " .. day(4),
  "number 100014: 5 missing, 5 lost by the ring; behind the last frame",
})
check.eq(items(kMarkList), { "frame 2: trigger, " .. day(2), "frame 4: trigger, mark 7, " .. day(4), "frame 5: mark 8, " .. day(5) })
check.eq(text(kTexts), "Program: Kelvo 0.1\nCamera: InSb\nComment: two\nlines\n")
local mark = check.mark()
show(kGapList, 1)
check.eq({ state("CurrentFrame"), dialog() }, { 4, "RECORDED" })
check.holds(status(), described(4, words[5]))
show(kMarkList, 2)
check.eq({ state("CurrentFrame"), picked(kGapList) }, { 5 }, "one line of both lists is chosen")
show(kGapList, 0)
check.eq({ state("CurrentFrame"), picked(kMarkList) }, { 2 })
check.eq(#check.lines("beep", mark + 1), 0)
show(kGapList, 2)
check.eq({ state("CurrentFrame"), #check.lines("beep", mark + 1) }, { 2, 1 }, "what is missing behind the last frame leads nowhere")
screenshot("recorded_dialog.png")
press(2)
check.eq(dialog(), nil)
command(kGapsAndMarks)
check.eq(dialog(), "RECORDED")
press(9)
check.eq(help(), 2060)
press(2)
key("Ctrl+Shift+G")
check.eq(dialog(), "RECORDED")
cancel()
check.eq(dialog(), nil)
screenshot("recorded_view.png")

-- Where the dialog can't be made it is told.
sim.fault("load dialog RECORDED", true)
command(kGapsAndMarks)
check.answer_box("Unable to display dialog", "ok", "System Error")
sim.fault("load dialog RECORDED", false)

-- Whole, and said quietly; interval recordings lost nothing. A board that doesn't count has no numbers.
drop(journal.sequence(dir .. "/whole.seq", journal.numbered { 1, 2, 3 }, journal.closing(3, 1)))
check.holds(status(), "msec   no gaps")
check.eq(text("player", kGaps), "No gaps...")
press("player", kGaps)
check.eq({ text(kSummary), text(kEnd), items(kGapList), items(kMarkList) }, { "3 frames, no gaps", "It is complete.", { "none" }, { "none" } })
show(kGapList, 0)
check.eq(state("CurrentFrame"), 0)
press(2)
local interval = journal.numbered { 1, 101, 201 }
for i = 2, 3 do interval[i].board, interval[i].passed = 0, 99 end
drop(journal.sequence(dir .. "/interval.seq", interval, journal.closing(3, 1)))
check.holds(status(), "msec   none lost, 198 passed over")
check.eq(text("player", kGaps), "None lost...")
local uncounted = journal.numbered { 1, 2, 3 }
for _, frame in ipairs(uncounted) do frame.number = -1 end
uncounted[3].ring = 4
drop(journal.sequence(dir .. "/uncounted.seq", uncounted, journal.closing(3, 1)))
check.holds(status(), "FrameNum:0 AllFramesNum:unknown " .. journal.time(uncounted[1]))
press("player", kGaps)
check.eq(items(kGapList), { "number unknown: 4 missing, 4 lost by the ring; before frame 2, " .. journal.time(uncounted[3]):sub(12, 23) })
press(2)

-- A frame whose record was made again has no time of its own: its header's stands there.
local again = journal.numbered { 1, 2 }
again[2].flags, again[2].ns, again[2].utc_ns = 8, 0, 0
drop(journal.sequence(dir .. "/again.seq", again, journal.closing(2, 6)))
command(114)
check.holds(status(), "AllFramesNum:2 Thu Jan  1 00:00:00.000 1970 100.0Hz 2.500msec   time unknown   no gaps")

-- One frame alone, opened as an image, is told of too; and so is one of a sequence that stands beside others.
drop(journal.sequence(dir .. "/single.seq", journal.numbered { 41 }, journal.closing(1, 0)))
check.holds(status(), "FrameNum:0 AllFramesNum:41 ")
command(107)
choose(path)
check.holds(status(), described(0, ""))
command(kGapsAndMarks)
check.eq(items(kGapList)[1]:sub(1, 14), "number 100000:")
show(kGapList, 0)
check.eq(pixel(0, 0), journal.count(2, 0, 0))
press(2)

-- Back to a file without a journal: nothing of it is left.
drop(dir .. "/plain.seq")
check.eq(status():find("gap"), nil)
assert(not pcall(press, "player", kGaps))
