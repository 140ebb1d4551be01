-- What a start leaves for the next one: the head's registers and a few figures of the picture, a name and a number a line.
local registers = {}

function registers.keep(path, head, figures)
  local file = assert(io.open(path, "w"))
  for name, value in pairs(head) do file:write(("head %s %.17g\n"):format(name, value)) end
  for name, value in pairs(figures) do file:write(("figure %s %.17g\n"):format(name, value)) end
  file:close()
end

-- The registers and the figures.
function registers.kept(path)
  local kept = { head = {}, figure = {} }
  for line in assert(io.open(path)):lines() do
    local kind, name, value = line:match("^(%S+) (%S+) (%S+)$")
    kept[kind][name] = tonumber(value)
  end
  return kept.head, kept.figure
end

-- Half of what lies between the 16th and the 84th hundredth of the picture's counts, which no blinking detector moves; and the middle.
function registers.spread()
  local counts = {}
  for y = 0, state("Vroi") - 1, 3 do
    for x = 0, state("Hroi") - 1, 5 do counts[#counts + 1] = pixel(x, y) end
  end
  table.sort(counts)
  return (counts[#counts * 84 // 100] - counts[#counts * 16 // 100]) / 2, counts[#counts // 2]
end

return registers
