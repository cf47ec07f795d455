// Text of a failed run for the benchmark binaries' own messages.
#pragma once

#include <exception>
#include <string>

// The messages of a nested exception chain, outermost first.
inline std::string chainOf(const std::exception& e) {
    std::string text = e.what();
    try {
        std::rethrow_if_nested(e);
    } catch (const std::exception& inner) {
        text += " / " + chainOf(inner);
    }
    return text;
}
