#pragma once

#include <optional>
#include <string>

namespace valdorn {

// Why a registration was refused: the text is shown to the user as it is. A plain value.
struct RunnerError {
    std::optional<std::string> errorDescription;

    friend bool operator==(const RunnerError&, const RunnerError&) = default;
};

}  // namespace valdorn
