#include "batch/json_line.h"

#include "export/json_text.h"
#include "platform/text.h"
#include "platform/transcript.h"

#include <cmath>

namespace kelvo {

JsonLine& JsonLine::Raw(std::string_view key, std::string_view json)
{
    if (!fields_.empty()) fields_ += ',';
    fields_ += JsonString(key);
    fields_ += ':';
    fields_ += json;
    return *this;
}

JsonLine& JsonLine::Text(std::string_view key, std::string_view value)
{
    return Raw(key, JsonString(ToUtf8(value)));
}

JsonLine& JsonLine::Whole(std::string_view key, std::int64_t value)
{
    return Raw(key, std::to_string(value));
}

JsonLine& JsonLine::Number(std::string_view key, double value)
{
    return Raw(key, std::isfinite(value) ? ShortestText(value) : "null");
}

JsonLine& JsonLine::Single(std::string_view key, float value)
{
    return Raw(key, std::isfinite(value) ? ShortestText(value) : "null");
}

JsonLine& JsonLine::Truth(std::string_view key, bool value)
{
    return Raw(key, value ? "true" : "false");
}

}  // namespace kelvo
