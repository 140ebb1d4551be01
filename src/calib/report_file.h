// The report as a file of its set, NAME.report.txt: the text, which any editor shows, and behind it the map. Sets carry
// it when they are saved under another name.
#pragma once

#include "calib/calibration_report.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

// "NAME.report.txt" beside the .cal file.
std::string ReportPath(std::string_view calPath);
// SHA-256 of the set's .gai, .off and .dcm file, one behind the other, in hexadecimal digits; empty where one of them
// can't be read.
std::string ListsDigest(std::string_view calPath);

// Puts the digest of the lists on the record and the report, as UTF-8, beside its .cal file. 1; 0 after "Failed to save
// file: %s", and no report stands there any more: a former one would be of other lists.
int SaveReport(const CalibrationReport& report);

// A report as it was saved.
struct StoredReport {
    std::string text;  // UTF-8, as ReportText gave it
    CalibrationReport
        map;             // title, columns, rows, turned, classes, map, answers; without a map where the file has none
    std::string digest;  // of the lists of which the report tells; empty: it doesn't say
};
// nullopt where there is no file that can be read.
std::optional<StoredReport> ReadReport(std::string_view calPath);

}  // namespace kelvo
