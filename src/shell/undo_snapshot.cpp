#include "shell/undo_snapshot.h"

#include "calib/unsaved_set.h"
#include "display/color_map.h"
#include "display/display_pipeline.h"
#include "display/unit_list.h"
#include "display/units.h"
#include "state/cal_settings.h"
#include "state/cal_state.h"
#include "state/camera_config.h"
#include "state/display_state_write.h"
#include "state/frame_state.h"
#include "state/windows.h"

#include <cstddef>
#include <string_view>

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
    {"contrast", [](Snapshot a, Snapshot b) { return a.contrast == b.contrast; },
     [](Snapshot target, Snapshot /*other*/) { BuildDisplayLut(target.contrast, Brightness); }},
    {"brightness", [](Snapshot a, Snapshot b) { return a.brightness == b.brightness; },
     [](Snapshot target, Snapshot /*other*/) { BuildDisplayLut(Contrast, target.brightness); }},
    {"zoom", SameZoom, PutBackPlace},
    // A zoom moves the picture too: that is no change of its own.
    {"pan", [](Snapshot a, Snapshot b) { return !SameZoom(a, b) || SamePlace(a, b); }, PutBackPlace},
    {"unit", [](Snapshot a, Snapshot b) { return a.unit == b.unit; }, PutBackUnit},
};

bool DifferInBadPixels(const UndoSnapshot& a, const UndoSnapshot& b)
{
    return a.badPixels && b.badPixels && !SameBadPixels(*a.badPixels, *b.badPixels);
}

}  // namespace

UndoSnapshot TakeSnapshot()
{
    return {.contrast = Contrast,
            .brightness = Brightness,
            .colors = {ImageColor, GrayScale, GrayColorBar, TempScale, TempHisto},
            .geometry = GeometryInForce(),
            .view = ViewPosition(),
            .unit = DisplayUnit,
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
    for (std::size_t i = 0; i < target.keys.size() && i < other.keys.size(); ++i) {
        if (target.keys[i] != other.keys[i]) PutBackProfileKey(target.keys[i]);
    }
    return true;
}

}  // namespace kelvo
