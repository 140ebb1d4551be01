// Whatever records just now, whoever began it: for those who end the program.
#pragma once

namespace kelvo {

// The recorder, a continuous save, a triggered save under way, or a burst.
bool SomethingRecords();

// Ends it as its own Stop would, but asks and corrects nothing: its files are closed, headers and journals true. A
// burst ends by itself, at its next look (platform/interrupt.h). Live traces end too. Not from inside a command that
// records.
void EndWhatRecords();

}  // namespace kelvo
