// Reads a tool's arguments as leniently as agents write them: a number in text form counts as a number.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/base/JSON.h"

namespace morvelin {

/// A view of the arguments value, which may be of any type; what is no object has no members.
class ArgumentReader {
public:
    explicit ArgumentReader(const JSONValue& arguments) : m_arguments(arguments) {}

    /// The member, unless it is absent or null.
    [[nodiscard]] const JSONValue* member(const char* name) const;
    [[nodiscard]] std::optional<std::string> text(const char* name) const;
    [[nodiscard]] std::optional<double> number(const char* name) const;
    [[nodiscard]] std::optional<std::int64_t> integer(const char* name) const;
    /// A JSON truth value, or the texts "true" and "false"; anything else reads as `otherwise`.
    [[nodiscard]] bool flag(const char* name, bool otherwise) const;

private:
    const JSONValue& m_arguments;
};

} // namespace morvelin
