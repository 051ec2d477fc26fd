// Ids of records, and where fresh ones come from.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <string_view>

namespace morvelin {

/// A 128-bit id; its text form is the canonical one in upper case.
struct UUID {
    std::array<std::uint8_t, 16> bytes{};

    auto operator<=>(const UUID&) const = default;

    [[nodiscard]] std::string text() const;
    /// Reads the canonical form in either case.
    [[nodiscard]] static std::optional<UUID> parse(std::string_view text);
};

/// Where fresh ids come from; passed in, so that a run can be replayed.
class IdSource {
public:
    virtual ~IdSource() = default;
    [[nodiscard]] virtual UUID next() = 0;
};

/// Version 4 ids from the system's random device.
class RandomIdSource final : public IdSource {
public:
    RandomIdSource();
    [[nodiscard]] UUID next() override;

private:
    std::mt19937_64 m_engine;
};

/// Version 4 ids that repeat from run to run.
class SeededIdSource final : public IdSource {
public:
    explicit SeededIdSource(std::uint64_t seed) : m_engine(seed) {}
    [[nodiscard]] UUID next() override;

private:
    std::mt19937_64 m_engine;
};

} // namespace morvelin

template <>
struct std::hash<morvelin::UUID> {
    std::size_t operator()(const morvelin::UUID& id) const noexcept;
};
