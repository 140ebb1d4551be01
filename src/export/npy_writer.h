// Frames as a NumPy array: a .npy file, version 1.0 of its format (numpy.lib.format), C order, frames x rows x columns,
// '<i2' counts or '<f4' values; beside it NAME.json, NAME being the path without its ".npy", with the provenance, the
// time of each frame, the bad detectors' places and the pixels outside of the region.
//
// Two files can't take their names at one moment. Where both stand already, both are the new ones afterwards or both
// are the former: the former description goes aside as NAME.json.before, the new one takes its name, and last the array
// does, which is the longer one and for whose sake the description is. Where a step fails, those before it are taken
// back, by renaming alone, which a full disk takes too. A process that is killed between the last two steps leaves the
// former array with the new description, and the former one aside.
#pragma once

#include "export/frame_sink.h"
#include "platform/files.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

class NpyWriter final : public FrameSink {
  public:
    using FrameSink::FrameSink;
    ExportFailure Begin(const ExportDescription& description) override;
    ExportFailure Add(const ExportedFrame& frame) override;
    ExportFailure End() override;

  private:
    std::string Json() const;
    ExportFailure TakeNames();

    ExportDescription description_;
    std::vector<FrameTiming> timings_;
    std::optional<NewFile> json_;
};

// The path of the JSON beside an array: "x.json" of "x.npy", "x.dat.json" of "x.dat".
std::string NpyJsonPathOf(std::string_view path);

}  // namespace kelvo
