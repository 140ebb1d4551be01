// Coefficient files (.gai .off .noi .bad .dcm and decom.tmp) shown as if they were images: headerless lists whose size
// follows from the camera that made them.
#pragma once

#include <string_view>

namespace kelvo {

// True for .gai, .off, .bad, .noi, .dcm and decom.tmp, in any case.
bool IsCoefficientFile(std::string_view path);

// Shows the file; 1, or 0 after a message: the path under "Unable to open file", "Incorrect data type passed" (another
// extension) or "Failed to read entire file"; "Failure to allocate & lock BYTE memory!", "Failure to lock INTEGER
// memory!", "Failure to lock LONG memory!" or "Failure to lock FLOAT memory!" under "Kelvo message"; "Failure to
// allocate or lock memory!" under "ViewImage Memory Error!". The list is read and turned into a picture in memory of
// its own; only then live video is frozen and the picture taken over, so that a failure changes nothing. The camera is
// that of ActiveCamera in the companion file of the same name and extension .cal (for decommutation tables: of
// kelvo.ini), its sizes stand in the camera file. Pan goes to 0. DataType of the header tells the list's entries: 1
// integers, 2 bytes, 4 longs, 8 floats. A coefficient image counts as byte-swapped: saving it from the view swaps
// header and data.
int ViewCoefficientFile(std::string_view path);

}  // namespace kelvo
