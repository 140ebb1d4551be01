// One JSON object on one line, put together field by field: what commands with --json write. UTF-8, numbers with a
// point whatever the locale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {

class JsonLine {
  public:
    JsonLine& Text(std::string_view key, std::string_view value);  // any bytes: those that aren't UTF-8 are Latin-1
    JsonLine& Whole(std::string_view key, std::int64_t value);
    // With the fewest digits that give the value again; null where it is no finite number.
    JsonLine& Number(std::string_view key, double value);
    JsonLine& Single(std::string_view key, float value);
    JsonLine& Truth(std::string_view key, bool value);
    JsonLine& Raw(std::string_view key, std::string_view json);  // a value that is JSON already
    std::string Line() const { return '{' + fields_ + '}'; }     // without a line feed

  private:
    std::string fields_;
};

}  // namespace kelvo
