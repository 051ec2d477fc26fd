// The question whether an agent client may drive the program, in its exact words, for every face that asks it.
#pragma once

#include <optional>
#include <string>

namespace morvelin {

struct ConsentDialog {
    std::string title;
    std::string text;
    std::string allowButton = "Allow"; ///< comes first; only this one means yes
    std::string denyButton = "Deny";
};

[[nodiscard]] ConsentDialog consentDialog(const std::string& name, const std::optional<std::string>& version);

} // namespace morvelin
