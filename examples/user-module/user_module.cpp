// A laboratory's own functions in the USER menu: one that measures at once, one that asks for a number first, one that
// saves the image on view, one that asks questions and saves the next image of a sequence.
//
//     cmake --preset release -DKELVO_USER_MODULE=examples/user-module/user_module.cpp
//
// The dialog of a function with prompts has four fields, but it reads the fourth four times: whatever is typed there
// comes as all four parameters, and what is typed into the other three comes nowhere. Functions that are in use rest on
// that. So a function that needs one value has its prompt fourth, as here; one that needs more asks for each by
// GetUserResponse.
#include "usermodule/user_module.h"

#include "analysis/measured_frame.h"
#include "platform/text.h"

#include <algorithm>
#include <numeric>
#include <span>

namespace kelvo {

namespace {

constexpr std::int32_t kMean = 900;
constexpr std::int32_t kPixelsAbove = 901;
constexpr std::int32_t kSaveImage = 902;
constexpr std::int32_t kSaveSample = 903;

// The frame on view, stored, frozen or a new one of live video; empty after the operator was told why.
std::span<const std::int16_t> PictureOnView()
{
    if (SomethingToMeasure() && KeepFrameOnView() && ReadFrameToMeasure()) {
        if (const std::span<const std::int16_t> counts = FrameToMeasure(); !counts.empty()) return counts;
    }
    UserErrorBox("There is no picture.", "Open an image, or turn the camera on.");
    return {};
}

}  // namespace

void InitUserModules()
{
    SetUserMenuName(kMean, "&Mean of the picture");
    SetUserParmNames(kMean, "", "", "", "", "");  // no prompts: it runs at once
    SetUserMenuName(kPixelsAbove, "&Pixels above...");
    SetUserParmNames(kPixelsAbove, "Pixels above a threshold", "", "", "", "Threshold (counts):");
    SetUserMenuName(kSaveImage, "&Save the image...");
    SetUserParmNames(kSaveImage, "", "", "", "", "");
    SetUserMenuName(kSaveSample, "&Next sample...");
    SetUserParmNames(kSaveSample, "", "", "", "", "");
}

// The mean of the picture.
std::int32_t UserFunction0(std::int32_t /*a*/, std::int32_t /*b*/, std::int32_t /*c*/, std::int32_t /*d*/,
                           std::int32_t /*e*/)
{
    const std::span<const std::int16_t> counts = PictureOnView();
    if (counts.empty()) return 0;
    const auto sum = std::accumulate(counts.begin(), counts.end(), std::int64_t{0});
    const double mean = static_cast<double>(sum) / static_cast<double>(counts.size());
    UserMessage("Mean of the picture:", Format("%.3f counts", mean));
    return 1;
}

// How many pixels lie above threshold.
std::int32_t UserFunction1(std::int32_t threshold, std::int32_t /*b*/, std::int32_t /*c*/, std::int32_t /*d*/,
                           std::int32_t /*e*/)
{
    const std::span<const std::int16_t> counts = PictureOnView();
    if (counts.empty()) return 0;
    const auto above = std::ranges::count_if(counts, [threshold](std::int16_t count) { return count > threshold; });
    UserMessage(Format("Pixels above %d counts:", threshold), Format("%td of %zu", above, counts.size()));
    return 1;
}

// Asks which sample it is, and saves the next image of the sequence of that name.
std::int32_t UserFunction2(std::int32_t /*a*/, std::int32_t /*b*/, std::int32_t /*c*/, std::int32_t /*d*/,
                           std::int32_t /*e*/)
{
    static std::string sample = "1";
    if (!GetUserResponse("Which sample is in front of the camera?", "Its name or number:", sample)) return 0;
    if (!UserQuestion("Save the next image of sample " + sample + "?", "Cancel leaves everything as it is.")) return 0;
    return UserSequenceName() ? UserSequenceSave() : 0;
}

void UserDispatch(std::int32_t id, const std::string& /*parm1*/, const std::string& /*parm2*/,
                  const std::string& /*parm3*/, const std::string& parm4)
{
    switch (id) {
        case kMean:
            UserFunction0(0, 0, 0, 0, 0);
            break;
        case kPixelsAbove:
            if (const auto threshold = ScanDecimal(parm4)) {
                UserFunction1(*threshold, 0, 0, 0, 0);
            } else {
                UserErrorBox("Please enter a number of counts,", "for instance 3000.");
            }
            break;
        case kSaveImage:
            UserImageSave();
            break;
        case kSaveSample:
            UserFunction2(0, 0, 0, 0, 0);
            break;
        default:
            break;
    }
}

}  // namespace kelvo
