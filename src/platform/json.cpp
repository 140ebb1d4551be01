#include "platform/json.h"

#include "platform/json_text.h"
#include "platform/text.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace kelvo {

namespace {

JsonValue ValueOf(const QJsonValue& read)
{
    switch (read.type()) {
        case QJsonValue::Bool:
            return {read.toBool()};
        case QJsonValue::Double:
            return {read.toDouble()};
        case QJsonValue::String:
            return {read.toString().toStdString()};
        case QJsonValue::Array: {
            JsonItems array;
            const QJsonArray entries = read.toArray();
            for (const QJsonValue entry : entries) array.push_back(ValueOf(entry));
            return {std::move(array)};
        }
        case QJsonValue::Object: {
            JsonMembers object;
            const QJsonObject members = read.toObject();
            for (auto member = members.begin(); member != members.end(); ++member) {
                object.emplace(member.key().toStdString(), ValueOf(member.value()));
            }
            return {std::move(object)};
        }
        default:
            return {};
    }
}

}  // namespace

const JsonValue* JsonValue::Member(std::string_view name) const
{
    const JsonMembers* const object = Object();
    if (!object) return nullptr;
    const auto member = object->find(name);
    return member == object->end() ? nullptr : &member->second;
}

std::optional<JsonValue> ReadJson(std::string_view text, std::string& why)
{
    QJsonParseError error;
    const auto bytes = QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()));
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError) {
        const std::string_view before = text.substr(0, static_cast<std::size_t>(std::max(error.offset, 0)));
        why = Format("line %d: ", static_cast<int>(std::ranges::count(before, '\n')) + 1) +
              error.errorString().toStdString();
        return std::nullopt;
    }
    return document.isArray() ? ValueOf(document.array()) : ValueOf(document.object());
}

std::string JsonNumber(double number)
{
    return std::isfinite(number) ? ShortestText(number) : "null";
}

}  // namespace kelvo
