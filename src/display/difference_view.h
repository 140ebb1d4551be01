// The difference that the picture shows in place of the camera's frame: frame - reference, around a count that stands
// for no difference. It is of the display alone: frames that are recorded, saved, measured or read by a script stay
// what they are.
//
// The reference belongs to the picture as it was taken: where camera, size, orientation or correction are others, the
// frame itself is shown (DifferenceOnView), until they are back or EndUnfitDifference has ended it. A file on view is
// shown as it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

// Takes a reference of Hroi x Vroi counts in image order, which is copied, and what it is, as the operator reads it
// ("the live picture of 12:34:05"). zero: the count that pixels without a difference show, 0 to 32767. False, and what
// was there stays, for another number of counts or where memory is refused.
bool BeginDifference(std::span<const std::int16_t> reference, std::string_view source, std::int32_t zero);
void EndDifference();
// Ends it where it no longer fits: "The difference is off: the picture lies another way now." for the operator;
// otherwise empty.
std::string EndUnfitDifference();

bool DifferenceIsOn();
const std::string& DifferenceSource();

// On, and it fits the camera's picture, which is on view.
bool DifferenceOnView();
std::int32_t DifferenceZero();

// What the picture shows of a frame: zero + frame - reference, held at the ends of 16 bits, in a block that the next
// call overwrites; frame itself where no difference is on view or it has another size.
std::span<const std::int16_t> CountsToShow(std::span<const std::int16_t> frame);
// out[i] = zero + frame[i] - reference[i], held at the ends of 16 bits; all of the same length.
void FillDifference(std::span<const std::int16_t> frame, std::span<const std::int16_t> reference, std::int32_t zero,
                    std::span<std::int16_t> out);

// The reference's count of a pixel of the image; 0 beyond it.
std::int16_t ReferenceCount(std::size_t pixel);
// Value of count less value of reference in a unit (display/units.h), as the operator reads it: whole counts, otherwise
// three decimals.
std::string DifferenceText(std::int32_t count, std::int32_t reference, std::int32_t unit);

// None is shown.
void ResetDifferenceView();

}  // namespace kelvo
