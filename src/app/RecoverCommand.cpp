#include <fmt/core.h>

#include "app/Commands.h"
#include "capture/TakeRecovery.h"

namespace morvelin {

namespace {

std::vector<RecoveredTake> recover(Composition& composition) {
    return recoverTakes(composition.moviesFolder("Projects"), *composition.movieReaders,
                        {composition.ids, composition.clock, composition.log});
}

} // namespace

int runRecover(Composition& composition) {
    const std::vector<RecoveredTake> takes = recover(composition);
    if (takes.empty()) fmt::print(stderr, "There are no unfinished takes.\n");
    int status = kSuccess;
    for (const RecoveredTake& take : takes) {
        fmt::print(stderr, "{}\n", take.description());
        if (take.outcome == RecoveredTake::Outcome::BecameProject) fmt::print("{}\n", take.place.string());
        if (take.outcome == RecoveredTake::Outcome::Failed) status = kFailure;
    }
    return status;
}

void recoverTakesAtStart(Composition& composition) {
    for (const RecoveredTake& take : recover(composition)) composition.log("[Morvelin] " + take.description());
}

} // namespace morvelin
