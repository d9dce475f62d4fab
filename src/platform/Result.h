#pragma once

#include <utility>
#include <variant>

namespace valdorn {

// Either a value or the reason why there is none. Reading the half that is not there is a
// programming error (std::bad_variant_access).
//
// Thread-compatible like the types it holds; owns whichever half it holds.
template <typename Value, typename Error>
class [[nodiscard]] Result {
public:
    Result(Value value) : held_(std::in_place_index<0>, std::move(value)) {}
    Result(Error error) : held_(std::in_place_index<1>, std::move(error)) {}

    // True when a value is held.
    bool ok() const { return held_.index() == 0; }
    explicit operator bool() const { return ok(); }

    // The value; ok() must be true.
    Value& value() { return std::get<0>(held_); }
    const Value& value() const { return std::get<0>(held_); }

    // The reason; ok() must be false.
    const Error& error() const { return std::get<1>(held_); }

private:
    std::variant<Value, Error> held_;
};

}  // namespace valdorn
