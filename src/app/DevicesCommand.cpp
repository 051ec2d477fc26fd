#include "app/Commands.h"

#include <fmt/core.h>

#include "app/DeviceLists.h"
#include "app/RecordTarget.h"

namespace morvelin {

int runDevices(Composition& composition) {
    const Desktop desktop = connectDesktop(composition.clock);
    fmt::print("{}{}{}", choicesFor(DisplayTarget{}, *desktop.screen), microphoneChoices(*desktop.audioInput),
               cameraChoices(*desktop.cameras));
    return kSuccess;
}

} // namespace morvelin
