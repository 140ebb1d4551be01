-- The line plot reckoned in the script: which pixels a line has, and what they measure.
local line = {}

local function single(value) return (string.unpack("<f", string.pack("<f", value))) end

local function cut(value) return value < 0 and math.ceil(value) or math.floor(value) end

-- Columns and rows of the points, in order.
function line.points(x1, y1, x2, y2)
  local dx, dy = x2 - x1, y2 - y1
  local points, steps = {}, math.max(math.abs(dx), math.abs(dy))
  for i = 0, steps do
    if math.abs(dx) > math.abs(dy) then
      local part = cut(i * single(dy / dx))
      points[#points + 1] = x1 < x2 and { x1 + i, y1 + part } or { x1 - i, y1 - part }
    elseif dy == 0 then
      points[#points + 1] = { x1, y1 }
    else
      local part = cut(i * single(dx / dy))
      points[#points + 1] = y1 < y2 and { x1 + part, y1 + i } or { x1 - part, y1 - i }
    end
  end
  return points
end

-- The texts of mean, deviation, and minimum and maximum with their places, in counts. count(x, y): of the frame.
function line.report(points, count)
  local sum, lowest, highest, low_at, high_at = 0, math.huge, -math.huge, nil, nil
  for _, at in ipairs(points) do
    local value = count(at[1], at[2])
    sum = sum + value
    if value < lowest then lowest, low_at = value, at end
    if value > highest then highest, high_at = value, at end
  end
  local mean, squares = single(sum / #points), 0
  for _, at in ipairs(points) do
    local difference = mean - count(at[1], at[2])
    squares = squares + difference * single(difference)
  end
  local deviation = #points < 2 and "" or sum == 0 and "0" or ("\u{B1}%.3f"):format(math.sqrt(squares / #points))
  return {
    ("%4.3f"):format(mean), deviation, ("%d"):format(lowest), ("(%d,%d)"):format(low_at[1], low_at[2]), ("%d"):format(highest),
    ("(%d,%d)"):format(high_at[1], high_at[2]),
  }
end

-- What the dialog in front shows, in the same order.
function line.shown() return { text(321), text(322), text(325), text(324), text(328), text(327) } end

return line
