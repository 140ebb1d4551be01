// One JSON object on one line, put together field by field: what commands with --json write. UTF-8, numbers with a
// point whatever the locale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {

class JsonObject {
  public:
    JsonObject& Text(std::string_view key, std::string_view value);  // any bytes: those that aren't UTF-8 are Latin-1
    JsonObject& Whole(std::string_view key, std::int64_t value);
    // With the fewest digits that give the value again; null where it is no finite number.
    JsonObject& Number(std::string_view key, double value);
    JsonObject& Single(std::string_view key, float value);
    JsonObject& Truth(std::string_view key, bool value);
    JsonObject& Raw(std::string_view key, std::string_view json);  // a value that is JSON already
    std::string Line() const { return '{' + fields_ + '}'; }       // without a line feed

  private:
    std::string fields_;
};

// The fewest digits that give the number again, "0.1"; "nan", "inf" and "-inf" for what is none.
std::string ShortestText(double value);
std::string ShortestText(float value);

}  // namespace kelvo
