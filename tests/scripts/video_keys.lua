-- The video set-up without a mouse: the focus goes from control to control in reading order, and each is worked by its keys.
local check = require "check"
local scope = require "scope"

press(1070)
check.eq(dialog(), "QVF1058")
local entry = sim.head()

-- From Ok over Cancel and Help to the frame rate.
for _ = 1, 3 do key("Tab") end
key("Down")
check.eq({ picked(scope.kFrameRates), sim.head().clock }, { 4, 6 })
key("PgDn")
check.eq({ picked(scope.kFrameRates), sim.head().clock }, { 8, 10 })
key("PgUp")
check.eq(picked(scope.kFrameRates), 4)

key("Tab")
key("PgDn")
check.eq({ picked(scope.kIntegrations), state("IndexIntegrationTime")[1] }, { 14, 14 })
key("PgUp")
key("PgUp")
check.eq({ picked(scope.kIntegrations), state("IndexIntegrationTime")[1] }, { 6, 6 })
check.near(state("IntegrationTime")[1], tonumber(items(scope.kIntegrations)[7]), 0.006)

key("Tab")
key("Up")
key("PgUp")
check.eq({ text(scope.kOffsetText), sim.head().offset }, { "145", 145 })
key("Home")
check.eq({ text(scope.kOffsetText), sim.head().offset }, { "255", 255 })
key("Down")
key("PgDn")
check.eq(text(scope.kOffsetText), "238")

key("Tab")
key("PgUp")
key("Up")
check.eq({ text(scope.kGainText), sim.head().gain }, { "3", 2 })

key("Tab")
local mark = check.mark()
key("Space")
check.seen("status", { text = "Setting Unity Gain & Unity Offset" }, mark)

-- Unity gives the focus back to Ok.
for _ = 1, 8 do key("Tab") end
key("Down")
check.eq(items(scope.kUnits)[picked(scope.kUnits) + 1], "Signal (V)")

key("Tab")
key("Space")
check.eq(dialog(), "ADVANCED")
key("Esc")
check.eq(dialog(), "QVF1058")

key("Tab")
key("Space")
check.eq(dialog(), "DIBPRINT")
key("Esc")
check.eq(dialog(), "QVF1058")

key("Tab")
key("Space")
assert(file(), "no file dialog")
cancel()
frames(2)

-- Escape is Cancel.
key("Esc")
if dialog() == "CALIB" then press(2) end
check.eq({ box(), dialog() }, {})
check.eq(sim.head(), entry)

-- Return is Ok, wherever the focus stands in the lists.
command(121)
for _ = 1, 3 do key("Tab") end
key("Down")
key("Return")
check.eq({ box(), dialog(), state("IndexFrameRate"), sim.head().clock }, { nil, nil, 4, 6 })
frames(2)
