-- A session of the operator in two starts: what one was shown, for the other to be held against.
local session = {}
session.directory = datadir():gsub("/again/data$", "/data")
session.again = session.directory:gsub("/data$", "/again/data")
session.script = session.directory .. "/scripts/session.lua"

-- The lines of the transcript behind number first up to number last, without their times and without the data directory's name.
function session.lines(first, last)
  local check = require "check"
  local lines = {}
  for number, line in ipairs(transcript()) do
    if number > first and number <= last then
      line.t = nil
      lines[#lines + 1] = (check.show(line):gsub(datadir():gsub("%p", "%%%0"), "DATA"):gsub("\n", "|"))
    end
  end
  return lines
end

function session.keep(first, last)
  local kept = assert(io.open(session.directory .. "/session.txt", "wb"))
  kept:write(table.concat(session.lines(first, last), "\n"), "\n")
  kept:close()
end

-- A data directory of its own for the second start, as this one was, and the recording begun; the number of the last line before it.
function session.begin()
  local check = require "check"
  screenshot(session.again .. "/made.png")
  local wiring <close> = assert(io.open(session.again .. "/platform.ini", "wb"))
  wiring:write(readfile(datadir() .. "/platform.ini"))
  command(2253)
  check.eq(file().title, "Record a script")
  choose(session.script)
  assert(menu(2253).checked)
  return #transcript()
end

-- The recording's end. files: names of what the session left, for the second start to leave too.
function session.finish(first, files)
  session.keep(first, #transcript())
  local names <close> = assert(io.open(session.directory .. "/files.txt", "wb"))
  names:write(table.concat(files or {}, "\n"))
  command(2253)
  assert(not menu(2253).checked)
end

return session
