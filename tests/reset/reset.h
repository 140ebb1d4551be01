// Kelvo as it stands before main(), for programs that go through several starts in one process: tests and fuzz targets.
// What a module keeps it takes back itself, by its own Reset function; here stands the list of them.
#pragma once

namespace kelvo {

// All modules' state as in a fresh process. No window or dialog may be at work.
void ResetModules();

// The process's own: working directory, environment, locale, limits, and what it does on a write beyond them, as at the
// first call.
void ResetProcess();

}  // namespace kelvo
