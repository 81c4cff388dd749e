// How commands fail.
#pragma once

#include <stdexcept>
#include <string>

namespace quillet::tool {

// One line that says what went wrong and where. The program ends with status 1.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A usage error. The program ends with status 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace quillet::tool
