// What can go wrong with a project's folder, and the sentences that a user reads about it.
#pragma once

#include <filesystem>
#include <string>
#include <variant>

#include "core/base/Files.h"
#include "core/base/JSON.h"

namespace morvelin::ProjectBundle {

struct BundleError {
    struct MissingRecording {};
    struct MissingMetadata {};
    /// All versions that a user could edit are there, but none can be read.
    struct UnreadableVersions {};
    /// A file that isn't the record it should be.
    struct Undecodable {
        std::filesystem::path file;
        JSONError error;
    };
    /// A record with a number that JSON cannot hold; the file on disk stays as it was.
    struct NotFinite {
        std::filesystem::path file;
    };
    using Reason =
        std::variant<MissingRecording, MissingMetadata, UnreadableVersions, FileError, Undecodable, NotFinite>;

    Reason reason;

    template <class Case>
    requires std::constructible_from<Reason, Case> BundleError(Case reason_) : reason(std::move(reason_)) {}

    template <class Case>
    [[nodiscard]] bool is() const {
        return std::holds_alternative<Case>(reason);
    }
    [[nodiscard]] std::string description() const;
};

} // namespace morvelin::ProjectBundle
