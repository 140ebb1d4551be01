#include "calib/set_correction.h"

#include "calib/set_reader.h"
#include "platform/files.h"

#include <cstdint>
#include <utility>

namespace kelvo {

namespace {

using Failure = std::optional<std::string>;

template <typename Entry>
Failure WhyNotRead(const SetList<Entry>& list)
{
    if (list.read == ListRead::kComplete) return std::nullopt;
    const char* const reason = list.read == ListRead::kNotRead ? " doesn't fit the frames" : " can't be read";
    return list.path + reason;
}

}  // namespace

std::optional<StoredCorrection> CorrectionOfSet(const std::string& calPath, std::size_t pixels, std::size_t columns,
                                                std::string& why)
{
    if (!FileExists(calPath)) {
        why = calPath + " can't be opened";
        return std::nullopt;
    }
    CalibrationSet set = ReadSet(AbsolutePath(calPath), pixels);
    Failure failure = set.memoryRefused ? Failure("no memory is left") : WhyNotRead(set.decom);
    if (!failure && set.type != 1 && set.type != 2) failure = calPath + " is no calibration with one or two sources";
    if (!failure && set.type == 2) failure = WhyNotRead(set.gains);
    if (!failure) failure = WhyNotRead(set.offsets);
    if (failure) {
        why = *failure;
        return std::nullopt;
    }
    StoredLists lists{std::move(set.decom.entries), std::move(set.offsets.entries), std::move(set.gains.entries)};
    std::optional<StoredCorrection> correction =
        StoredCorrection::Make(set.type, std::move(lists), columns, StoredOrder::kReadoutToImage);
    if (!correction) why = "no memory is left";
    return correction;
}

}  // namespace kelvo
