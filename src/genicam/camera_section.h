// The section of camera.ini for a GenICam camera: its size, its count range, and the pixel clock with the indexes that
// span its frame rates. Pure arithmetic on what the camera says of itself.
//
// A head's frame rate is pixel clock / (timing columns x timing rows), the pixel clock the master clock / (2 index +
// 2), in whole Hz; the index is a byte. The camera's head turns that back into a rate.
#pragma once

#include "genicam/camera_list.h"
#include "genicam/pixel_format.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo {

// The largest side of a section. The wire can't say one beyond 1020; the camera's head takes it from the section.
constexpr std::int32_t kLargestSectionSide = 4096;

// A frame's size as the section has it: the camera's, at most kLargestSectionSide, in the camera's own steps. 0 x 0 for
// a camera without any.
struct SectionSize {
    std::int32_t columns = 0;
    std::int32_t rows = 0;
    friend bool operator==(const SectionSize&, const SectionSize&) = default;
};
SectionSize SizeForSection(const CameraOffer& offer);

struct ClockSpan {
    std::int32_t frequencyHz = 0;  // of the master clock
    std::int32_t minIndex = 0;     // 0 to 255: the highest rate
    std::int32_t maxIndex = 0;     // minIndex to 255: the lowest
    std::int32_t extraRows = 0;    // that make the timing's rows and columns multiples of 4, as the wire has them
    std::int32_t extraCols = 0;
    friend bool operator==(const ClockSpan&, const ClockSpan&) = default;
};
// The span of rates from most down to least, in steps as fine as the index allows. The first rate is the highest that
// isn't above most, or what a master clock of 31 bits has room for. The last isn't above least, but where the first is
// more than 256 times least: the index has no more, and it is the 256th part of the first. most above 0 and not below
// least.
ClockSpan SpanRates(SectionSize size, const NumberRange& ratesHz);
// The rate in Hz at a row of the list, from 0: index minIndex + row.
double RateOfRow(const ClockSpan& span, SectionSize size, std::int32_t row);
// The row with the highest rate that isn't above the one asked for; the last where all are.
std::int32_t RowOfRate(const ClockSpan& span, SectionSize size, double rateHz);

// The first row of the integration list whose line count goes over the wire as it is: lines + 2 in a byte.
std::int32_t FirstIntegrationRow(std::int32_t rows);

// Half the count range: the counts of a camera with so many bits are 0 to 2 x this - 1.
std::int32_t UnityOffsetOfBits(std::int32_t bits);

struct SectionKey {
    std::string key;
    std::string value;
    friend bool operator==(const SectionKey&, const SectionKey&) = default;
};
// The keys of the section, in their order in the file, for frames of that format and the head at port COM<port>; but
// for cnfFile, which names the board's own file. The offer has a size.
std::vector<SectionKey> CameraSection(const FoundCamera& camera, const CameraOffer& offer, const PixelFormat& format,
                                      std::int32_t port);

}  // namespace kelvo
