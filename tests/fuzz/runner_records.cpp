// The list of runners: what is read of any bytes, that nothing of it is lost by writing it again,
// and what a start makes of it. The pieces of the input serve as the texts of records, too.

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Fuzzed.h"
#include "PlainJson.h"
#include "fleet/RunnerRecords.h"
#include "fleet/RunnersStore.h"
#include "support/FakeWorld.h"
#include "text/Utf8.h"

namespace valdorn {

namespace {

using Records = std::vector<RunnerConfig>;

std::optional<std::string> textOf(const PlainJson& record, std::string_view key) {
    const PlainJson* const value = record.member(key);
    if (value == nullptr || value->kind != PlainJson::Kind::text)
        return std::nullopt;
    return value->text;
}

std::optional<RunnerConfig> plainRecord(const PlainJson& json) {
    const auto id = textOf(json, "id");
    const auto name = textOf(json, "name");
    const auto instanceURL = textOf(json, "instanceURL");
    const auto labels = textOf(json, "labels");
    const auto extraPath = textOf(json, "extraPath");
    const PlainJson* const legacy = json.member("legacy");
    const bool isWhole = id && name && instanceURL && labels && extraPath && legacy != nullptr &&
                         legacy->kind == PlainJson::Kind::truth;
    if (!isWhole)
        return std::nullopt;
    return RunnerConfig{*id, *name, *instanceURL, *labels, *extraPath, legacy->truth};
}

std::optional<Records> plainRecords(std::string_view bytes) {
    const std::optional<PlainJson> json = plainJson(bytes);
    if (!json || json->kind != PlainJson::Kind::array)
        return std::nullopt;
    Records records;
    for (const PlainJson& element : json->elements) {
        auto record = plainRecord(element);
        if (!record)
            return std::nullopt;
        records.push_back(std::move(*record));
    }
    return records;
}

// Compact: a blank or a line end would be within a text, where only blanks stand as they are.
void checkForm(const std::string& json) {
    require(json.find('\n') == std::string::npos, "the list is one line");
    for (std::size_t at = 0; at < json.size(); ++at)
        require(json[at] != '/' || (at > 0 && json[at - 1] == '\\'), "each slash is escaped");
}

void checkWriting(const Records& records, bool canBeWritten) {
    const auto json = RunnerRecords::encode(records);
    require(json.has_value() == canBeWritten, "what is UTF-8 can be written, and only that");
    if (!json)
        return;
    checkForm(*json);
    require(plainRecords(*json) == records, "others read what was written");
    require(RunnerRecords::decode(*json) == records, "we read what was written");
}

void checkRecordsOf(const std::vector<std::string>& pieces) {
    Records records;
    bool areWellFormed = true;
    for (std::size_t index = 0; index < pieces.size(); index += 5) {
        std::array<std::string, 5> texts;
        for (std::size_t part = 0; part < texts.size(); ++part) {
            texts[part] = pieceAt(pieces, index + part);
            areWellFormed = areWellFormed && isWellFormedUtf8(texts[part]);
        }
        const auto& [id, name, instanceURL, labels, extraPath] = texts;
        records.push_back({id, name, instanceURL, labels, extraPath, index % 2 == 0});
    }
    checkWriting(records, areWellFormed);
}

// A start takes the list as it stands, or makes one of its own and writes that.
void checkStart(std::string_view bytes, const std::optional<Records>& read) {
    FakeWorld world;
    std::string& file = world.files.files[std::string(FakeWorld::supportFolder) + "/runners.json"];
    file = bytes;
    const auto store = RunnersStore::create(world.services());
    Records started;
    for (const auto& runner : store->runners())
        started.push_back(runner->config());
    if (read && !read->empty()) {
        require(started == *read, "a start takes every runner of the list");
        require(file == bytes, "a start does not touch a list that it takes");
    } else {
        require(started.size() == 1 && started.front().legacy,
                "without a list there is one runner");
        require(RunnerRecords::decode(file) == started, "and it is the new list");
    }
}

}  // namespace

void fuzzed(std::string_view input) {
    const std::optional<Records> records = RunnerRecords::decode(input);
    require(records == plainRecords(input), "the records are those of the plain rules");
    if (records)
        checkWriting(*records, true);
    checkStart(input, records);
    checkRecordsOf(piecesOf(input));
}

}  // namespace valdorn
