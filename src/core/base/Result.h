// What an operation gives back when it can fail: a value, or the module's own error, never to be ignored.
#pragma once

#include <expected>
#include <utility>

namespace morvelin {

/// A value or an error. `E` is a module's tagged error type, whose `description()` is the sentence a user reads.
template <class T, class E>
class [[nodiscard]] Result : public std::expected<T, E> {
public:
    using Value = T;
    using Error = E;
    using std::expected<T, E>::expected;
};

/// The failing result: `return failure(FileError{...});`
template <class E>
[[nodiscard]] std::unexpected<E> failure(E error) {
    return std::unexpected<E>(std::move(error));
}

/// Hands a result's error on to a caller whose error type can be made from it.
template <class T, class E>
[[nodiscard]] std::unexpected<E> passOn(Result<T, E>&& result) {
    return std::unexpected<E>(std::move(result).error());
}

} // namespace morvelin
