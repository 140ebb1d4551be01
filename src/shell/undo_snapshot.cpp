#include "shell/undo_snapshot.h"

#include "display/color_map.h"
#include "display/display_pipeline.h"
#include "display/unit_list.h"
#include "display/units.h"
#include "pixel/unsaved_set.h"
#include "regions/region_list.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/windows.h"
#include "ui/view_switch.h"
#include "ui/window_file.h"
#include "viewing/fitted_contrast.h"

#include <cstddef>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

constexpr const char* kDisplayKeys[] = {"ImageColor", "GrayScale",  "GrayColorBar", "TempHisto", "Contrast",
                                        "Brightness", "MirrorVert", "MirrorHoriz",  "RotateCCW", "SubstBadPixels"};
constexpr const char* kOrientationKeys[] = {"MirrorVert", "MirrorHoriz", "RotateCCW", "SubstBadPixels"};
constexpr const char* kPanKeys[] = {"Xpan", "Ypan"};

bool SetHasFile()
{
    return CalType != 0 && !CalSettings.CalFile.empty() && !SetWithoutFiles();
}

std::vector<KeptProfileKey> TakeKeys()
{
    std::vector<KeptProfileKey> keys;
    for (const char* key : kDisplayKeys) keys.push_back(KeepProfileKey("Display", key, IniFilePath));
    keys.push_back(KeepProfileKey(kViewSection, kKeepFittedKey, WindowFilePath()));
    for (const char* key : kPanKeys) keys.push_back(KeepProfileKey(ActiveCameraSection(), key, CameraFilePath));
    if (!SetHasFile()) return keys;
    for (const char* key : kOrientationKeys) keys.push_back(KeepProfileKey("Display", key, CalSettings.CalFile));
    return keys;
}

// A part of the snapshot: whether two are the same in it, and how it comes back.
struct Part {
    std::string_view name;
    bool (*same)(const UndoSnapshot& a, const UndoSnapshot& b);
    void (*putBack)(const UndoSnapshot& target, const UndoSnapshot& other);
};

bool SamePlace(const UndoSnapshot& a, const UndoSnapshot& b)
{
    return a.geometry == b.geometry && a.view == b.view;
}

bool SameZoom(const UndoSnapshot& a, const UndoSnapshot& b)
{
    return a.geometry.xzoom == b.geometry.xzoom && a.geometry.yzoom == b.geometry.yzoom;
}

// The pair follows the picture in both: it is nobody's.
bool BothFollowPicture(const UndoSnapshot& a, const UndoSnapshot& b)
{
    return a.keepsFitted && b.keepsFitted;
}

bool SameContrast(const UndoSnapshot& a, const UndoSnapshot& b)
{
    return BothFollowPicture(a, b) || a.levels.contrast == b.levels.contrast;
}

bool SameBrightness(const UndoSnapshot& a, const UndoSnapshot& b)
{
    return BothFollowPicture(a, b) || a.levels.brightness == b.levels.brightness;
}

bool SameHand(const UndoSnapshot& a, const UndoSnapshot& b)
{
    return a.keepsFitted == b.keepsFitted || !SameContrast(a, b) || !SameBrightness(a, b);
}

void PutBackLevels(const UndoSnapshot& target, const UndoSnapshot& other)
{
    // While the pair followed the picture it has changed on its own.
    const bool byOtherHand = target.keepsFitted != other.keepsFitted;
    const ContrastPair& levels = target.levels;
    PutBackContrast(
        {.contrast = byOtherHand || levels.contrast != other.levels.contrast ? levels.contrast : Contrast,
         .brightness = byOtherHand || levels.brightness != other.levels.brightness ? levels.brightness : Brightness},
        target.ownFit);
    if (byOtherHand) SetKeepFitted(target.keepsFitted);
}

void PutBackColors(const UndoSnapshot& target, const UndoSnapshot& /*other*/)
{
    write::display.ImageColor = target.colors.map;
    write::display.GrayScale = target.colors.grayScale;
    write::display.GrayColorBar = target.colors.bar;
    write::display.TempScale = target.colors.tempScale;
    write::display.TempHisto = target.colors.histogram;
    SetColorMap(ImageColor);
    if (!LiveVideo || !DisplayEnabled) RedrawPicture();
}

void PutBackPlace(const UndoSnapshot& target, const UndoSnapshot& other)
{
    if (target.geometry != other.geometry) PlacePicture(target.geometry);
    if (target.view != other.view) SetViewPosition(target.view);
}

void PutBackUnit(const UndoSnapshot& target, const UndoSnapshot& /*other*/)
{
    if (IsUnitAvailable(target.unit)) SetDisplayUnit(target.unit);
}

using Snapshot = const UndoSnapshot&;
constexpr Part kParts[] = {
    {"colours", [](Snapshot a, Snapshot b) { return a.colors == b.colors; }, PutBackColors},
    {"contrast", SameContrast, PutBackLevels},
    {"brightness", SameBrightness, PutBackLevels},
    // Whoever takes the levels in hand ends it: that is no change of its own.
    {"keep fitted", SameHand, PutBackLevels},
    {"zoom", SameZoom, PutBackPlace},
    // A zoom moves the picture too: that is no change of its own.
    {"pan", [](Snapshot a, Snapshot b) { return !SameZoom(a, b) || SamePlace(a, b); }, PutBackPlace},
    {"unit", [](Snapshot a, Snapshot b) { return a.unit == b.unit; }, PutBackUnit},
    {"regions", [](Snapshot a, Snapshot b) { return a.regions == b.regions; },
     [](Snapshot target, Snapshot /*other*/) { PutBackRegions(target.regions); }},
};

void PutBackKeys(const UndoSnapshot& target, const UndoSnapshot& other)
{
    std::vector<KeptProfileKey> differing;
    for (std::size_t i = 0; i < target.keys.size() && i < other.keys.size(); ++i) {
        if (target.keys[i] != other.keys[i]) differing.push_back(target.keys[i]);
    }
    PutBackProfileKeys(std::move(differing));
}

bool DifferInBadPixels(const UndoSnapshot& a, const UndoSnapshot& b)
{
    return a.badPixels && b.badPixels && !SameBadPixels(*a.badPixels, *b.badPixels);
}

}  // namespace

UndoSnapshot TakeSnapshot()
{
    return {.levels = {Contrast, Brightness},
            .ownFit = LastOwnFit,
            .keepsFitted = KeepsFitted(),
            .colors = {ImageColor, GrayScale, GrayColorBar, TempScale, TempHisto},
            .geometry = GeometryInForce(),
            .view = ViewPosition(),
            .unit = DisplayUnit,
            .regions = Regions,
            .badPixels = nullptr,
            .keys = TakeKeys()};
}

std::string DifferenceOf(const UndoSnapshot& before, const UndoSnapshot& after)
{
    std::string text = DifferInBadPixels(before, after) ? "image setup" : "";
    for (const Part& part : kParts) {
        if (part.same(before, after)) continue;
        if (!text.empty()) text += " and ";
        text += part.name;
    }
    return text;
}

bool SameKeys(const UndoSnapshot& a, const UndoSnapshot& b)
{
    return a.keys == b.keys;
}

bool PutBackDifference(const UndoSnapshot& target, const UndoSnapshot& other)
{
    if (DifferInBadPixels(target, other) && !PutBackBadPixelState(*target.badPixels)) return false;
    for (const Part& part : kParts) {
        if (!part.same(target, other)) part.putBack(target, other);
    }
    PutBackKeys(target, other);
    return true;
}

}  // namespace kelvo
