// The takes of a project, one list for all its versions (`narration-takes.json`), with one audio file beside for each.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/base/Log.h"
#include "core/base/Result.h"
#include "narration/NarrationError.h"
#include "narration/NarrationTake.h"

namespace morvelin {

inline constexpr const char* kNarrationFile = "narration-takes.json";
inline constexpr const char* kLegacyNarrationRecord = "narration.json";
/// A recording that hasn't been kept yet. Whoever records into it holds an `AdvisoryLock` on it: nobody removes it then.
inline constexpr const char* kPendingNarrationFile = "narration-pending.m4a";

/// Read when a project is opened or a tool needs it, saved after each change. Confined to the main thread.
struct NarrationLibrary {
    /// The file's form.
    struct Stored {
        static constexpr std::int64_t kVersion = 1;

        std::int64_t version = kVersion;
        std::vector<NarrationTake> takes;
        std::optional<std::string> script;
        std::optional<Date> legacyDeletedAt; ///< when the take of the older format was removed
    };

    std::vector<NarrationTake> takes;            ///< those whose audio is there, also removed ones, by number
    std::optional<std::string> script;           ///< the draft that is being written
    std::vector<NarrationTake> unavailableTakes; ///< those whose audio is missing; a save keeps them
    bool isUnreadable = false;                   ///< the file is a newer program's or damaged: nothing may be saved

    /// Never fails: a library that is missing is empty, and one that can't be read is marked so.
    [[nodiscard]] static NarrationLibrary load(const std::filesystem::path& bundleURL, const Log& log);
    /// Writes the list. The take of the older format then gets a place like any other, its audio with it.
    Result<void, NarrationError> save(const std::filesystem::path& bundleURL);

    /// The number of the next take.
    [[nodiscard]] std::int64_t nextNumber() const;
    /// The take with that id, unless it was removed; only these are offered.
    [[nodiscard]] const NarrationTake* live(const UUID& id) const;
    [[nodiscard]] std::vector<NarrationTake> liveTakes() const;
    /// Whether the list has the take, be it removed or without its audio.
    [[nodiscard]] bool knows(const UUID& id) const;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, NarrationLibrary::Stored>& stored) {
    fields.required("version", stored.version);
    fields.required("takes", stored.takes);
    fields.optional("script", stored.script);
    fields.optional("legacyDeletedAt", stored.legacyDeletedAt);
}

} // namespace morvelin
