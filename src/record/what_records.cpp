#include "record/what_records.h"

#include "grabber/recording.h"
#include "record/contsave_dialog.h"
#include "record/live_trace.h"
#include "record/recorder.h"
#include "record/triggered_save.h"
#include "record/triggered_save_dialog.h"

namespace kelvo {

bool SomethingRecords()
{
    TendRecorder();  // one that has come to its end has ended
    return RecordingRuns() || AcquisitionRunning != 0;
}

void EndWhatRecords()
{
    StopRecorder();
    StopContinuousSave();
    StopTriggeredSave();
    StopLiveTrace();
}

}  // namespace kelvo
