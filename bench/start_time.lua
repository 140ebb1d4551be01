-- From the start of the process to the usable window, without the 1500 ms of the start picture. In real time:
--
--   build/release/src/kelvo --offscreen --data $(mktemp -d) --script bench/start_time.lua
local asked = transcript()[#transcript()].t
answer("ok")
local ready
for _, line in ipairs(transcript()) do
  if line.kind == "status" and line.text:find("Alt + underlined", 1, true) then ready = line.t end
end
print(string.format("start to the box of the missing head: %d ms", asked))
print(string.format("start to the usable window, without the start picture: %d ms", ready - 1500))
