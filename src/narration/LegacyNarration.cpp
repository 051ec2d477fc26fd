#include "narration/LegacyNarration.h"

#include "core/base/AdvisoryLock.h"
#include "core/base/Files.h"
#include "narration/NarrationLibrary.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

/// Written by the program that kept a single take.
constexpr std::int64_t kFirstUnknownVersion = 2;

/// A second name for the file where the file system has that, else a copy under a name of its own until it is whole.
bool linkOrCopy(const fs::path& from, const fs::path& to) {
    std::error_code error;
    fs::create_hard_link(from, to, error);
    if (!error || fs::equivalent(from, to, error)) return true;
    const fs::path partial = to.string() + ".part";
    fs::copy_file(from, partial, fs::copy_options::overwrite_existing, error);
    if (!error && moveItem(partial, to)) return true;
    (void)removeFile(partial);
    return false;
}

/// Whoever records into it holds its lock.
void removePendingRecording(const fs::path& file) {
    std::error_code error;
    if (!fs::exists(file, error)) return;
    const auto lock = AdvisoryLock::attempt(file, AdvisoryLock::Target::File);
    if (lock && *lock) (void)removeFile(file);
}

} // namespace

std::optional<NarrationTake> readLegacyTake(const fs::path& bundleURL) {
    std::error_code error;
    if (!fs::exists(bundleURL / kLegacyNarrationFile, error)) return std::nullopt;
    const auto text = readFile(bundleURL / kLegacyNarrationRecord);
    if (!text) return std::nullopt;
    auto take = decode<NarrationTake>(*text);
    if (!take || take->version >= kFirstUnknownVersion) return std::nullopt;
    take->storedID.reset();
    return std::move(*take);
}

bool giveOwnFile(NarrationTake& take, const fs::path& bundleURL) {
    NarrationTake stored = take;
    stored.storedID = NarrationTake::kLegacyID;
    if (!createFolder(bundleURL / kNarrationFolder)) return false;
    if (!linkOrCopy(take.fileURL(bundleURL), stored.fileURL(bundleURL))) return false;
    take = std::move(stored);
    return true;
}

void removeLegacyFiles(const fs::path& bundleURL) {
    for (const char* name : {kLegacyNarrationFile, kLegacyNarrationRecord}) (void)removeFile(bundleURL / name);
    removePendingRecording(bundleURL / kPendingNarrationFile);
}

} // namespace morvelin
