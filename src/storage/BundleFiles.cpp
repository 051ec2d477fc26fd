#include "storage/BundleFiles.h"

#include <algorithm>

namespace morvelin::ProjectBundle {

namespace fs = std::filesystem;

bool hasBundleExtension(std::string_view name) {
    constexpr std::string_view kLowerCase = kExtension;
    if (name.size() <= kLowerCase.size()) return false;
    return std::ranges::equal(name.substr(name.size() - kLowerCase.size()), kLowerCase, {},
                              [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
}

fs::path versionFile(const fs::path& bundleURL, const UUID& id) {
    return bundleURL / kVersionsFolder / (id.text() + ".json");
}

bool isPresent(const fs::path& path) {
    std::error_code error;
    return fs::status(path, error).type() != fs::file_type::not_found;
}

Result<std::string, BundleError> encode(const JSONValue& value, const fs::path& file) {
    if (!isFinite(value)) return failure(BundleError(BundleError::NotFinite{file}));
    return writeJSON(value, JSONStyle::Compact);
}

} // namespace morvelin::ProjectBundle
