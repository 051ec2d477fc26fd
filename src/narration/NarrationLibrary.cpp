#include "narration/NarrationLibrary.h"

#include <algorithm>
#include <limits>

#include "narration/LegacyNarration.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

bool isPresent(const fs::path& path) {
    std::error_code error;
    return fs::status(path, error).type() != fs::file_type::not_found;
}

/// Nothing where the list is a newer program's or damaged.
std::optional<NarrationLibrary::Stored> readStored(const fs::path& file) {
    const auto text = readFile(file);
    if (!text) return std::nullopt;
    auto stored = decode<NarrationLibrary::Stored>(*text);
    if (!stored || stored->version > NarrationLibrary::Stored::kVersion) return std::nullopt;
    return std::move(*stored);
}

void applyLegacyRemoval(NarrationLibrary::Stored& stored) {
    if (!stored.legacyDeletedAt) return;
    const auto legacy = std::ranges::find(stored.takes, NarrationTake::kLegacyID, &NarrationTake::id);
    if (legacy != stored.takes.end() && !legacy->deletedAt) legacy->deletedAt = stored.legacyDeletedAt;
}

std::int64_t shownNumber(const NarrationTake& take) { return take.number.value_or(1); }

} // namespace

NarrationLibrary NarrationLibrary::load(const fs::path& bundleURL, const Log& log) {
    NarrationLibrary library;
    Stored stored;
    if (isPresent(bundleURL / kNarrationFile)) {
        auto read = readStored(bundleURL / kNarrationFile);
        if (!read) {
            log("[Morvelin] narration-takes.json could not be read; it is left untouched and takes are not saved.");
            library.isUnreadable = true;
            return library;
        }
        stored = std::move(*read);
        applyLegacyRemoval(stored);
    } else if (auto legacy = readLegacyTake(bundleURL)) {
        stored.takes = {std::move(*legacy)};
    }

    library.script = std::move(stored.script);
    for (NarrationTake& take : stored.takes) {
        auto& list = isPresent(take.fileURL(bundleURL)) ? library.takes : library.unavailableTakes;
        list.push_back(std::move(take));
    }
    std::ranges::stable_sort(library.takes, {}, shownNumber);
    return library;
}

Result<void, NarrationError> NarrationLibrary::save(const fs::path& bundleURL) {
    if (isUnreadable) return failure(NarrationError(NarrationError::LibraryUnreadable{}));
    Stored stored{Stored::kVersion, takes, script, std::nullopt};
    const auto legacy = std::ranges::find_if(stored.takes, &NarrationTake::isLegacy);
    const bool isAdopted = legacy != stored.takes.end() && giveOwnFile(*legacy, bundleURL);
    const std::vector<NarrationTake> available = stored.takes;
    stored.takes.insert(stored.takes.end(), unavailableTakes.begin(), unavailableTakes.end());

    const JSONValue json = toJSON(stored);
    if (!isFinite(json)) return failure(NarrationError(NarrationError::NotFinite{}));
    if (auto written = writeFileAtomically(bundleURL / kNarrationFile, writeJSON(json, JSONStyle::Compact)); !written)
        return passOn(std::move(written));
    takes = available;
    if (isAdopted) removeLegacyFiles(bundleURL);
    return {};
}

std::int64_t NarrationLibrary::nextNumber() const {
    std::optional<std::int64_t> highest;
    for (const auto* list : {&takes, &unavailableTakes})
        for (const NarrationTake& take : *list) highest = std::max(highest.value_or(0), shownNumber(take));
    constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();
    return std::min(highest.value_or(0), kHighest - 1) + 1;
}

const NarrationTake* NarrationLibrary::live(const UUID& id) const {
    const auto found = std::ranges::find(takes, id, &NarrationTake::id);
    return found == takes.end() || found->deletedAt ? nullptr : &*found;
}

std::vector<NarrationTake> NarrationLibrary::liveTakes() const {
    std::vector<NarrationTake> live;
    std::ranges::copy_if(takes, std::back_inserter(live), [](const NarrationTake& take) { return !take.deletedAt; });
    return live;
}

bool NarrationLibrary::knows(const UUID& id) const {
    const auto isIt = [&](const NarrationTake& take) { return take.id() == id; };
    return std::ranges::any_of(takes, isIt) || std::ranges::any_of(unavailableTakes, isIt);
}

} // namespace morvelin
