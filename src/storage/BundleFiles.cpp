#include "storage/BundleFiles.h"

namespace morvelin::ProjectBundle {

namespace fs = std::filesystem;

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
