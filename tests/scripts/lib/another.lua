-- Other starts of the program beside the one that runs the script, each as a shell would start it.
local another = {}

local function quoted(text)
  return "'" .. text:gsub("'", "'\\''") .. "'"
end

-- Starts the program beside this one, in the directory of its data; where(), called again and again, is true once it has
-- ended. code() and errors() tell how.
function another.start(program, name, ...)
  local base = datadir() .. "/../" .. name
  local words = {}
  for _, word in ipairs { program, "--offscreen", ... } do words[#words + 1] = quoted(word) end
  assert(os.execute(string.format("(cd %s; %s > %s 2> %s; echo $? > %s) < /dev/null &", quoted(datadir() .. "/.."),
    table.concat(words, " "), quoted(base .. ".out"), quoted(base .. ".err"), quoted(base .. ".code"))))
  local run = {}
  function run.code()
    local file = io.open(base .. ".code")
    local text = file and file:read("a") or ""
    if file then file:close() end
    return tonumber(text)
  end
  function run.errors() return readfile(base .. ".err") end
  -- Lets real time pass, and this program its turns, until the other has ended.
  function run.finish()
    for _ = 1, 600 do
      if run.code() then return run.code() end
      os.execute("sleep 0.05")
      wait(10)
    end
    error("the other start hasn't ended")
  end
  return run
end

return another
