-- What stays unchanged: all that a script can read of Kelvo, taken as one snapshot and compared with another one as a whole. Where something
-- may differ it is named, with the reason; a name that stands there and doesn't differ is a failure too, so that the lists stay true.
local check = require "check"

local unchanged = {}

-- What goes on by itself while the camera delivers frames.
local kMoving = {
  FramesDelivered = "the board counts", FramesShown = "the board counts", FramesMissed = "the board counts", FramesUsed = "the board counts",
  FramesLost = "the board counts", HostFrameNext = "the store of frames goes round",
  LiveFrame = "the next frame", RawFrame = "the next frame", CursorValue = "the next frame", ["ImageHeader.FrameRate"] = "of the next frame",
  CommWriteCount = "what was said to the head is counted", CommWriteReadCount = "what was said to the head is counted",
  CalibrationListsVersion = "lists made anew with the same entries",
}

local kIdle = " Use Alt + underlined menu item or trackball to select menu item"

-- section and key of each line of a settings file, put in under "NAME [section] key"
local function put_keys(into, name, bytes)
  local section = ""
  for line in bytes:gmatch("[^\r\n]+") do
    local head = line:match("^%s*%[(.-)%]")
    local key, value = line:match("^%s*([^=;]-)%s*=(.*)$")
    if head then section = head elseif key then into[("%s [%s] %s"):format(name, section, key)] = value end
  end
end

-- The state, the settings files key by key, each other file of the data directory and of its parent directories of the working directory,
-- the head's registers, the title, the regions, what is checked and greyed in the menu. within: a dialog is in front, and pending settings are let alone.
-- settled: nothing can be pending.
function unchanged.snapshot(settled)
  if not settled then wait(1100) end  -- what is pending for a settings file reaches the disk within a second
  local shot = {}
  for name, value in pairs(state()) do shot[name] = value end
  -- Where nothing else is to be told, live video tells its rate.
  if shot.StatusText:find("^  Displaying at %d+ Hz$") then shot.StatusText = kIdle end
  for _, name in ipairs(listdir(datadir())) do
    local bytes = readfile(datadir() .. "/" .. name)
    if bytes and name:find("%.ini$") then put_keys(shot, name, bytes) elseif bytes then shot["file " .. name] = bytes end
  end
  local with_head, head = pcall(sim.head)
  for name, value in pairs(with_head and head or {}) do shot["head " .. name] = value end
  for id = 100, 210 do
    local item = menu(id)
    if item then shot["menu " .. id] = { item.text, item.checked, item.enabled } end
  end
  shot.title = title()
  shot.regions = regions()
  return shot
end

local function brief(value)
  local text = type(value) == "string" and #value > 60 and #value .. " bytes" or check.show(value)
  return #text > 100 and text:sub(1, 100) .. "..." or text
end

-- The names of what differs, but for what goes on by itself, each with a text that tells how.
function unchanged.differences(before, after)
  local differ, names = {}, {}
  for name in pairs(before) do names[name] = true end
  for name in pairs(after) do names[name] = true end
  for name in pairs(names) do
    if not kMoving[name] and not check.same(before[name], after[name]) then
      differ[name] = ("%s became %s"):format(brief(before[name]), brief(after[name]))
    end
  end
  return differ
end

-- kept: name = reason, of what differs. may: name = reason, of what differs at times.
function unchanged.expect(before, after, kept, may, what)
  kept, may = kept or {}, may or {}
  local names, wrong, seen = {}, {}, {}
  for name in pairs(before) do names[name] = true end
  for name in pairs(after) do names[name] = true end
  for name in pairs(names) do
    if not check.same(before[name], after[name]) then
      seen[name] = true
      if not kMoving[name] and not kept[name] and not may[name] then
        wrong[#wrong + 1] = ("%s: %s became %s"):format(name, brief(before[name]), brief(after[name]))
      end
    end
  end
  for name, reason in pairs(kept) do
    if not seen[name] then wrong[#wrong + 1] = ("%s was to differ (%s): %s"):format(name, reason, brief(after[name])) end
  end
  table.sort(wrong)
  if #wrong > 0 then error((what or "unchanged") .. ":\n  " .. table.concat(wrong, "\n  "), 2) end
end

-- --- All controls of a dialog -------------------------------------------------------------------------------------------------

local kOk, kCancel, kHelp = 1, 2, 9
local kReaders = { check = "checked", radio = "checked", edit = "text", number = "text", memo = "text", combo = "picked", list = "picked", bar = "position" }

local function value_of(control)
  local reader = kReaders[control.kind]
  return reader and _G[reader](control.id)
end

local function control_of(id)
  for _, control in ipairs(controls()) do if control.id == id then return control end end
end

-- Answers what a change brings up: boxes as the row says, file dialogs by Cancel.
local function settle(row, id, name)
  for _ = 1, 20 do
    if box() then
      local button = (row.boxes or {})[box().text] or error(("control %d: the box %q"):format(id, box().text), 0)
      answer(button)
    elseif file() then
      cancel()
    else
      break
    end
  end
  if dialog() ~= name then error(("control %d leaves %s for %s"):format(id, name, tostring(dialog() or "the main window")), 0) end
end

-- Another text than the one that stands there.
local function other_text(row, id, text_now)
  local given = (row.texts or {})[id]
  if given then return given end
  local number = tonumber(text_now)
  if number then return tostring(math.tointeger(number) and math.tointeger(number) + 1 or number + 0.5) end
  return text_now .. "x"
end

local function change(row, control)
  local id, kind = control.id, control.kind
  if row.work and row.work[id] then
    row.work[id]()
  elseif kind == "check" then
    check(id, not checked(id))
  elseif kind == "radio" then
    if not checked(id) then press(id) end
  elseif kind == "edit" or kind == "memo" or kind == "number" then
    set(id, other_text(row, id, text(id)))
  elseif kind == "combo" or kind == "list" then
    local count = #items(id)
    if count > 0 then pick(id, count > 1 and (picked(id) or 0) == 0 and 1 or 0) end
  elseif kind == "bar" then
    local now, lowest, highest = position(id)
    for _, place in ipairs { lowest, highest, now > lowest and now - 1 or now + 1 } do
      scroll(id, place)
    end
  elseif kind == "button" then
    local work = (row.buttons or {})[id]
    if work == nil then error(("button %d of %s isn't in its row"):format(id, dialog()), 0) end
    if type(work) == "function" then work() end
  else
    error(("control %d of %s is a %s"):format(id, dialog(), kind), 0)
  end
end

-- Changes each control of the dialog in front that can be worked, also those that become so on the way; each holds another value then than at
-- opening (row.stays[id]: the reason why not). Returns how many there were.
--   row.first: controls to be changed before the others. row.texts[id]: what is typed. row.buttons[id]: what a button's press takes, a function,
--   or the reason why it isn't pressed. row.work[id]: another way to change a control. row.boxes[text]: the answer. row.only: these alone.
function unchanged.change_all(row)
  local name = dialog()
  local opened = {}
  for _, control in ipairs(controls()) do opened[control.id] = value_of(control) end
  local done, count = { [kOk] = true, [kCancel] = true, [kHelp] = true }, 0
  local function work(control)
    done[control.id] = true
    count = count + 1
    change(row, control)
    settle(row, control.id, name)
  end
  for _, id in ipairs(row.only or row.first or {}) do work(control_of(id)) end
  if row.only then return count end
  repeat
    local found
    for _, control in ipairs(controls()) do
      if control.works and not done[control.id] then found = control break end
    end
    if found then work(found) end
  until not found
  -- The last radio of a group may be the one that was checked.
  for _, control in ipairs(controls()) do
    if control.kind == "radio" and control.works and opened[control.id] and checked(control.id) then
      for _, other in ipairs(controls()) do
        if other.kind == "radio" and other.works and not checked(other.id) and checked(control.id) then
          local was = {}
          for _, each in ipairs(controls()) do was[each.id] = each.kind == "radio" and checked(each.id) end
          press(other.id)
          settle(row, other.id, name)
          if checked(control.id) then  -- of another group
            for id, on in pairs(was) do
              if on and not checked(id) then press(id) settle(row, id, name) end
            end
          end
        end
      end
    end
  end
  for _, control in ipairs(controls()) do
    local stays = (row.stays or {})[control.id]
    if done[control.id] and value_of(control) ~= nil and control.kind ~= "radio" and not stays then
      assert(not check.same(value_of(control), opened[control.id]), ("control %d of %s still holds %s"):format(control.id, name, check.show(opened[control.id])))
    end
  end
  wait(1500)  -- what a dialog takes over once the typing has come to rest
  settle(row, 0, name)
  return count
end

return unchanged
