-- The mouse on pixels of the picture, whatever its zoom and pan.
local pixel_mouse = {}

-- Where the middle of a pixel stands in the main window.
function pixel_mouse.place(x, y)
  local view, block = state("ViewPosition"), state("Xzoom")
  return x * block + (block - 1) // 2 - view[1], state("PanelHeight") + y * block + (block - 1) // 2 - view[2]
end

-- From one pixel to another, a little way first, as a hand does.
function pixel_mouse.drag(x1, y1, x2, y2)
  local x, y = pixel_mouse.place(x1, y1)
  mouse(x, y, "left down")
  mouse(x + 3, y + 3)
  x, y = pixel_mouse.place(x2, y2)
  mouse(x, y)
  mouse(x, y, "left up")
end

return pixel_mouse
