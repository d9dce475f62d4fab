#include "fleet/RunnerRecords.h"

#include <utility>

#include <nlohmann/json.hpp>

namespace valdorn::RunnerRecords {

namespace {

using Json = nlohmann::json;                 // for reading: looks keys up fast
using OrderedJson = nlohmann::ordered_json;  // for writing: keeps the order of the keys

OrderedJson toJson(const RunnerConfig& record) {
    return {{"id", record.id},
            {"name", record.name},
            {"instanceURL", record.instanceURL},
            {"labels", record.labels},
            {"extraPath", record.extraPath},
            {"legacy", record.legacy}};
}

// Slashes stand only inside texts, never in JSON's own grammar.
std::string withEscapedSlashes(const std::string& json) {
    std::string escaped;
    escaped.reserve(json.size());
    for (const char c : json) {
        if (c == '/')
            escaped += '\\';
        escaped += c;
    }
    return escaped;
}

bool readText(const Json& record, const char* key, std::string& text) {
    const auto value = record.find(key);
    if (value == record.end() || !value->is_string())
        return false;
    text = value->get<std::string>();
    return true;
}

bool readTruth(const Json& record, const char* key, bool& truth) {
    const auto value = record.find(key);
    if (value == record.end() || !value->is_boolean())
        return false;
    truth = value->get<bool>();
    return true;
}

std::optional<RunnerConfig> toRecord(const Json& json) {
    RunnerConfig record;
    const bool whole =
        json.is_object() && readText(json, "id", record.id) &&
        readText(json, "name", record.name) && readText(json, "instanceURL", record.instanceURL) &&
        readText(json, "labels", record.labels) && readText(json, "extraPath", record.extraPath) &&
        readTruth(json, "legacy", record.legacy);
    if (!whole)
        return std::nullopt;
    return record;
}

}  // namespace

std::optional<std::string> encode(const std::vector<RunnerConfig>& records) {
    OrderedJson array = OrderedJson::array();
    for (const RunnerConfig& record : records)
        array.push_back(toJson(record));
    try {
        return withEscapedSlashes(array.dump());
    } catch (const OrderedJson::type_error&) {
        return std::nullopt;  // how the library says that a text is not UTF-8
    }
}

std::optional<std::vector<RunnerConfig>> decode(std::string_view json) {
    // The parser stops at a zero byte as if the text ended there; what follows would go unread.
    if (json.find('\0') != std::string_view::npos)
        return std::nullopt;
    const Json array = Json::parse(json, nullptr, /*allow_exceptions=*/false);
    if (!array.is_array())
        return std::nullopt;
    std::vector<RunnerConfig> records;
    for (const Json& element : array) {
        auto record = toRecord(element);
        if (!record)
            return std::nullopt;
        records.push_back(std::move(*record));
    }
    return records;
}

}  // namespace valdorn::RunnerRecords
