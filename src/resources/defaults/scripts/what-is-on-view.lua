-- What is on view now, and the counts along the middle row of the picture.
print(title())
print("frame", state("CurrentFrame"), "contrast", state("Contrast"), "brightness", state("Brightness"))
local row = 0
while pixel(0, row) do row = row + 1 end
if row == 0 then
  print("There is no picture.")
  return
end
local columns = 0
while pixel(columns, 0) do columns = columns + 1 end
print(("%d x %d pixels (rows x columns); row %d:"):format(row, columns, row // 2))
local counts = {}
for column = 0, columns - 1, math.max(columns // 16, 1) do counts[#counts + 1] = pixel(column, row // 2) end
print(table.concat(counts, " "))
