// What every recording needs before it begins: live video of the camera.
#pragma once

namespace kelvo {

// Live video runs, and no stored file is on view: it is started where it was frozen. False, and nothing changes,
// without a camera that is on: "Video Data Acquisition Failed, Hardware error" under "Kelvo message".
bool BeginLiveVideo();

}  // namespace kelvo
