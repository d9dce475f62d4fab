#include "logs/LevelFilter.h"

namespace valdorn {

namespace {

std::string_view mark(LevelFilter filter) {
    switch (filter) {
        case LevelFilter::info:
            return "level=info";
        case LevelFilter::warning:
            return "level=warning";
        case LevelFilter::error:
            return "level=error";
        case LevelFilter::all:
            break;
    }
    return "";  // which is in every line
}

}  // namespace

std::string_view rawValue(LevelFilter filter) {
    switch (filter) {
        case LevelFilter::info:
            return "Info";
        case LevelFilter::warning:
            return "Warning";
        case LevelFilter::error:
            return "Error";
        case LevelFilter::all:
            break;
    }
    return "All";
}

bool passes(LevelFilter filter, std::string_view line) {
    return line.find(mark(filter)) != std::string_view::npos;
}

}  // namespace valdorn
