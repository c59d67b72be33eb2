// The message of what an action throws, for tests that pin error texts.
#pragma once

#include <exception>
#include <functional>
#include <string>

namespace testsupport {

// What `action` throws, or "no error".
inline std::string errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const std::exception& e) {
        return e.what();
    }
    return "no error";
}

} // namespace testsupport
