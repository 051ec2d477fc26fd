// The arguments that several edit tools share, read and checked with one wording.
#pragma once

#include <optional>
#include <string>

#include "agent/ArgumentReader.h"
#include "core/Geometry.h"
#include "core/Keyframes.h"
#include "core/base/Identity.h"
#include "core/base/Result.h"

namespace morvelin {

/// A number within [low, high], or nothing where it isn't given; fails with `settingOutOfRange` under the argument's name.
Result<std::optional<double>, std::string> rangedNumber(const ArgumentReader& arguments, const char* name, double low,
                                                        double high);

/// A number moved into 0..1, or nothing where it isn't given.
[[nodiscard]] std::optional<double> fractionArgument(const ArgumentReader& arguments, const char* name);

/// A truth value, or nothing where none is given.
[[nodiscard]] std::optional<bool> givenFlag(const ArgumentReader& arguments, const char* name);

/// `smooth` or `linear`; nothing where it isn't given.
Result<std::optional<ZoomTransitionType>, std::string> curveArgument(const ArgumentReader& arguments);

/// `x` and `y` together, or neither.
Result<std::optional<NormalizedPoint>, std::string> focalPoint(const ArgumentReader& arguments);

/// The `rect` argument with its members clamped into the unit square and sides of at least 0.02; nothing where it is
/// missing or one of its members is no number.
[[nodiscard]] std::optional<NormalizedRect> rectArgument(const ArgumentReader& arguments);

/// The `id` argument of a thing that `describe_project` lists.
Result<UUID, std::string> listedID(const ArgumentReader& arguments);

/// A text that has to be one of an enumeration's raw values; the error lists them.
template <class E>
Result<std::optional<E>, std::string> choiceArgument(const ArgumentReader& arguments, const char* name);

/// The sentence "expected one of …" under the argument's name.
[[nodiscard]] std::string expectedOneOf(const char* name, const std::vector<std::string>& words);

template <class E>
Result<std::optional<E>, std::string> choiceArgument(const ArgumentReader& arguments, const char* name) {
    const auto word = arguments.text(name);
    if (!word) return std::optional<E>();
    if (const auto value = json::fromRawValue<E>(*word)) return std::optional<E>(*value);
    std::vector<std::string> words;
    for (const auto& [value, raw] : rawValues(std::type_identity<E>{})) words.emplace_back(raw);
    return failure(expectedOneOf(name, words));
}

} // namespace morvelin
