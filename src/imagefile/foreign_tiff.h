// Frames out of a TIFF file of any program: one page a frame, 16 bits a sample, one sample a pixel, in strips or tiles,
// with whatever compression libtiff knows. What libtiff complains of ends in a reason; nothing is printed.
#pragma once

#include "imagefile/foreign_layout.h"
#include "platform/files.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace kelvo {

class ForeignTiff {
  public:
    // Walks through all pages, which have to be alike. nullopt with the reason in why: "isn't a TIFF file", "is
    // damaged", "is cut short", "holds 3 planes", "holds samples of 8 bits", "holds floats", "holds complex numbers",
    // "holds colors", "is stored mirrored or turned", "holds pages of different kinds", "claims more pixels than its
    // bytes can hold", "is compressed in a way that isn't known here", and those of foreign_layout.h.
    //
    // Samples are without sign where the file doesn't say; only the ones that Kelvo itself saved have a sign then. A
    // first row at the bottom (Orientation 4) is told as ForeignLayout has it.
    //
    // goesOn is asked at each page: libtiff holds each against all before it, and needs seconds for 100,000 of them.
    // False stops, "wasn't looked through".
    static std::optional<ForeignTiff> Open(File file, std::string& why, const std::function<bool()>& goesOn = nullptr);
    ForeignTiff(ForeignTiff&&) noexcept;
    ForeignTiff& operator=(ForeignTiff&&) noexcept;
    ForeignTiff(const ForeignTiff&) = delete;
    ForeignTiff& operator=(const ForeignTiff&) = delete;
    ~ForeignTiff();

    // dataPosition is of no meaning, and the words come in this machine's order.
    const ForeignLayout& Layout() const;

    // The samples of a frame, from 0, as they are stored, to rows x columns words. False with the reason in why: "can't
    // be read", "needs more memory than is left".
    bool ReadFrame(std::int64_t frame, std::span<std::uint16_t> words, std::string& why);

  private:
    class Pages;
    explicit ForeignTiff(std::unique_ptr<Pages> pages);
    std::unique_ptr<Pages> pages_;
};

}  // namespace kelvo
