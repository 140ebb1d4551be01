-- A session of the operator in two starts: what one was shown, for the other to be held against.
local session = {}
session.directory = datadir():gsub("/again/data$", "/data")
session.again = session.directory:gsub("/data$", "/again/data")
session.script = session.directory .. "/scripts/first-look.lua"

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

return session
