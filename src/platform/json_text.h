// JSON (RFC 8259) for other programs: one object on one line, its members in the order in which they are added. ASCII
// alone, so that a header of any format takes it; numbers in the shortest form that reads back to the same bits.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

class JsonText {
  public:
    JsonText& Text(std::string_view name, std::string_view value);  // bytes as ToUtf8 (platform/text.h) reads them
    JsonText& Whole(std::string_view name, std::int64_t value);
    JsonText& Number(std::string_view name, double value);  // null where it is no number
    JsonText& Single(std::string_view name, float value);   // likewise
    JsonText& Truth(std::string_view name, bool value);
    JsonText& Null(std::string_view name);
    JsonText& Member(std::string_view name, std::string_view json);  // any JSON
    std::string Json() const { return '{' + members_ + '}'; }

  private:
    std::string members_;
};

std::string JsonList(const std::vector<std::string>& items);  // of JSON each

// The shortest decimal text that reads back to the same number; "nan", "inf", "-inf".
std::string ShortestText(float value);
std::string ShortestText(double value);

}  // namespace kelvo
