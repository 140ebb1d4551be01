// JSON (RFC 8259) as exports carry it: one object, its members in the order in which they are added. ASCII alone, so
// that a header of any format takes it; numbers in the shortest form that reads back to the same bits.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

class JsonObject {
  public:
    JsonObject& Text(std::string_view name, std::string_view value);  // bytes as ToUtf8 (platform/text.h) reads them
    JsonObject& Whole(std::string_view name, std::int64_t value);
    JsonObject& Number(std::string_view name, double value);  // null where it is no number
    JsonObject& Single(std::string_view name, float value);   // likewise
    JsonObject& Truth(std::string_view name, bool value);
    JsonObject& Null(std::string_view name);
    JsonObject& Member(std::string_view name, std::string_view json);  // any JSON
    std::string Json() const { return '{' + members_ + '}'; }

  private:
    std::string members_;
};

std::string JsonArray(const std::vector<std::string>& items);  // of JSON each

// The shortest decimal text that reads back to the same number; "nan", "inf", "-inf".
std::string ShortestText(float value);
std::string ShortestText(double value);

}  // namespace kelvo
