#include "update/ReleaseTag.h"

#include <cstddef>
#include <utility>

#include <nlohmann/json.hpp>

namespace valdorn {

namespace {

using Json = nlohmann::json;

// Takes the tag out of the stream of events; the document itself is never built, so that its depth
// does not matter.
class TagReader : public nlohmann::json_sax<Json> {
public:
    std::optional<std::string> tag;

    bool null() override { return value(); }
    bool boolean(bool) override { return value(); }
    bool number_integer(number_integer_t) override { return value(); }
    bool number_unsigned(number_unsigned_t) override { return value(); }
    bool number_float(number_float_t, const string_t&) override { return value(); }
    bool binary(binary_t&) override { return value(); }
    bool string(string_t& text) override {
        if (isTag())
            tag = std::move(text);
        return true;
    }
    bool key(string_t& name) override {
        if (depth_ == 1)
            isTagNext_ = name == "tag_name";
        return true;
    }
    bool start_object(std::size_t) override { return opened(); }
    bool end_object() override { return closed(); }
    bool start_array(std::size_t) override { return opened(); }
    bool end_array() override { return closed(); }
    bool parse_error(std::size_t, const std::string&, const Json::exception&) override {
        return false;
    }

private:
    bool isTag() const { return depth_ == 1 && isTagNext_; }

    // A value of another type, in the tag's place or elsewhere.
    bool value() {
        if (isTag())
            tag.reset();
        return true;
    }

    bool opened() {
        value();
        ++depth_;
        return true;
    }

    bool closed() {
        --depth_;
        return true;
    }

    // Only an object has keys, so a top-level array never gives a tag.
    std::size_t depth_ = 0;
    bool isTagNext_ = false;  // the value that comes at the top level is the tag
};

}  // namespace

std::optional<std::string> releaseTag(std::string_view json) {
    // The parser takes a zero byte for the end of the text, which it may be in C only.
    if (json.find('\0') != std::string_view::npos)
        return std::nullopt;
    TagReader reader;
    if (!Json::sax_parse(json, &reader))
        return std::nullopt;
    return std::move(reader.tag);
}

}  // namespace valdorn
