-- What a trace saves: the rows, each a list of its fields, and the lines with # before them as one text.
local figures_file = {}

function figures_file.read(path)
  local rows, notes = {}, {}
  for line in readfile(path):gmatch("[^\n]+") do
    if line:sub(1, 1) == "#" then
      notes[#notes + 1] = line
    else
      local fields = {}
      for field in (line .. ","):gmatch("([^,]*),") do fields[#fields + 1] = field end
      rows[#rows + 1] = fields
    end
  end
  return rows, table.concat(notes, "\n")
end

-- Minimum and maximum are written as singles.
function figures_file.single(value) return (string.unpack("<f", string.pack("<f", value))) end

return figures_file
