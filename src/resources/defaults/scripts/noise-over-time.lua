-- Follows one pixel of live video for ten seconds: the mean and the spread of its count each second.
if state("LiveVideo") == 0 then
  print("Live video isn't running: turn the camera on first.")
  return
end
local column, row = 160, 128
print(("pixel %d, %d: second, mean, deviation (counts)"):format(column, row))
for second = 1, 10 do
  local n, sum, squares = 0, 0, 0
  for _ = 1, 20 do
    frames(1)
    local count = pixel(column, row)
    if not count then
      print("The frame on view has no such pixel.")
      return
    end
    n, sum, squares = n + 1, sum + count, squares + count * count
  end
  local mean = sum / n
  print(("%2d  %9.2f  %6.2f"):format(second, mean, math.sqrt(math.max(squares - n * mean * mean, 0) / (n - 1))))
  wait(500)
end
