-- From the start of the process to the usable window, without the 1500 ms of the start picture. Started by start_time.sh.
-- The simulated head answers, and the start ends with the question how to turn the camera on.
assert(dialog() == "CLOCK_ON", dialog() or box() and box().text)
press(2)

local function first(kind, part)
  for _, line in ipairs(transcript()) do
    if line.kind == kind and line.text and line.text:find(part, 1, true) then return line.t end
  end
  error("no " .. kind .. " with " .. part)
end
print(string.format("start to the answer of the head: %d ms", first("status", "Camera Head found")))
print(string.format("start to the usable window, without the start picture: %d ms", first("status", "Alt + underlined") - 1500))
