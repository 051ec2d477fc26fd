#include "capture/TakeRecovery.h"

#include <fmt/format.h>

#include "capture/TakeCamera.h"
#include "capture/TakeJournal.h"
#include "storage/CreateBundle.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

/// A movie that can't be read and is no larger has a beginning and no picture.
constexpr std::uintmax_t kEmptyMovie = 16 * 1024;

std::uintmax_t sizeOf(const fs::path& file) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    return error ? 0 : size;
}

bool holdsNothing(const TakeFolder& folder) {
    return sizeOf(folder.movie()) <= kEmptyMovie && sizeOf(folder.camera()) == 0;
}

/// The moment of the folder's last change, for a take that lost its header.
Date dateOf(const fs::path& folder, const ProjectBundle::Services& services) {
    std::error_code error;
    const auto changed = fs::last_write_time(folder, error);
    if (error) return services.clock.now();
    const auto onCalendar = std::chrono::file_clock::to_sys(changed);
    return Date{std::chrono::time_point_cast<std::chrono::milliseconds>(onCalendar)};
}

/// A camera's movie may end before its first picture is on disk, and the journal before it says when that was seen.
void addCamera(const TakeFolder& folder, const std::optional<CameraSettings>& journalled, PixelSize screen,
               MovieReaderFactory& readers, ProjectBundle::FinishedTake& take) {
    const auto camera = readers.open(folder.camera());
    if (!camera || (*camera)->properties().end.sinceZero() <= Seconds(0)) return;
    take.camera = folder.camera();
    take.cameraSettings = journalled.value_or(newCameraSettings(screen, Seconds(0)));
}

ProjectBundle::FinishedTake finishedTake(const TakeFolder& folder, const MovieProperties& movie,
                                         MovieReaderFactory& readers, const ProjectBundle::Services& services) {
    JournalledTake journalled = readJournal(folder);
    ProjectBundle::FinishedTake take;
    take.movie = folder.movie();
    take.bundleURL = folder.bundleURL();
    take.duration = movie.end.sinceZero();
    addCamera(folder, journalled.camera, movie.size, readers, take);
    take.cursorEvents = std::move(journalled.cursorEvents);
    take.cursorShapes = std::move(journalled.cursorShapes);
    if (const auto& header = journalled.header) {
        take.name = header->name;
        take.createdAt = header->createdAt;
        take.kind = header->kind;
    } else {
        take.name = folder.path().stem().string();
        take.createdAt = dateOf(folder.path(), services);
    }
    return take;
}

RecoveredTake recover(TakeFolder& folder, MovieReaderFactory& readers, const ProjectBundle::Services& services) {
    RecoveredTake recovered;
    recovered.name = folder.path().stem().string();
    recovered.place = folder.path();
    const auto movie = readers.open(folder.movie());
    recovered.duration = movie ? (*movie)->properties().end.sinceZero() : Seconds(0);
    if (recovered.duration <= Seconds(0)) {
        recovered.reason = movie ? "Its movie holds no picture." : movie.error().description();
        if (!holdsNothing(folder)) return recovered;
        folder.remove();
        recovered.outcome = RecoveredTake::Outcome::HeldNothing;
        return recovered;
    }
    const auto bundle = ProjectBundle::createBundle(finishedTake(folder, (*movie)->properties(), readers, services),
                                                    services);
    if (!bundle) {
        recovered.reason = bundle.error().description();
        return recovered;
    }
    folder.remove();
    recovered.outcome = RecoveredTake::Outcome::BecameProject;
    recovered.place = *bundle;
    return recovered;
}

} // namespace

std::string RecoveredTake::description() const {
    switch (outcome) {
    case Outcome::BecameProject:
        return fmt::format("Recovered “{}”, {:.1f} s, as {}", name, duration.value, place.string());
    case Outcome::HeldNothing: return fmt::format("“{}” ended before its first picture was recorded.", name);
    case Outcome::Failed:
        return fmt::format("“{}” can’t be recovered: {} Its files are kept in {}", name, reason, place.string());
    }
    std::unreachable();
}

std::vector<RecoveredTake> recoverTakes(const fs::path& projectsFolder, MovieReaderFactory& readers,
                                        const ProjectBundle::Services& services) {
    std::vector<RecoveredTake> recovered;
    for (TakeFolder& folder : TakeFolder::abandoned(projectsFolder))
        recovered.push_back(recover(folder, readers, services));
    return recovered;
}

} // namespace morvelin
