#include "export/picture_options.h"

#include "display/scale_line.h"
#include "display/units.h"

namespace kelvo {

PictureScale ScaleOfExport(const PictureLook& look, ExportWhat what, const Provenance& provenance, std::int32_t unit)
{
    // The picture on view is read as the screen reads it, coefficient lists with their scale too.
    std::optional<UnitScope> scope;
    if (what == ExportWhat::kFile) scope.emplace(provenance.header, provenance.source);
    if (what == ExportWhat::kHostFrames) scope.emplace();
    const std::int32_t readable = ReadableUnit(unit);
    if (what == ExportWhat::kFile) return {ScaleLineOf(look.Spread(), readable), ScaleTitleOf(readable)};
    return {ScaleLineOnView(look.Spread(), readable), ScaleTitleOnView(readable)};
}

}  // namespace kelvo
