// Commands and calls whose subsystem isn't part of this version. They do no harm; a command says once, in one place,
// that it isn't there.
#pragma once

namespace kelvo {

// Tells the operator that the command isn't available in this version.
void TellNotAvailable();

// Start-up calls. Each leaves its subsystem's state as it stands at start.
void ReadGraphicsKeys();
void InitUserModules();
void RegisterExternalSignal();
void BuildTiffTemplate();

void SignalExternalThread();

}  // namespace kelvo
