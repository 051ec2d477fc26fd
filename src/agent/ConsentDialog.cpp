#include "agent/ConsentDialog.h"

#include <fmt/format.h>

namespace morvelin {

ConsentDialog consentDialog(const std::string& name, const std::optional<std::string>& version) {
    ConsentDialog dialog;
    dialog.title = fmt::format("Let “{}” control Morvelin?", name);
    dialog.text = fmt::format("{}{} is asking to record your screen, edit recordings and export them through Morvelin."
                              "\n\nAny recording it starts shows an Agent badge. Stop it with the recording bar's stop "
                              "button or Stop recording in the Morvelin menu, and withdraw this permission from the "
                              "Morvelin menu.",
                              name, version ? " " + *version : "");
    return dialog;
}

} // namespace morvelin
