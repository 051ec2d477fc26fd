#include "storage/BundleError.h"

#include <fmt/format.h>

namespace morvelin::ProjectBundle {

namespace {

struct Sentence {
    std::string operator()(const BundleError::MissingRecording&) const { return "Bundle is missing recording.mov"; }
    std::string operator()(const BundleError::MissingMetadata&) const { return "Bundle is missing capture.json"; }
    std::string operator()(const BundleError::UnreadableVersions&) const {
        return "Its versions can’t be read and are left untouched. They may come from a newer Morvelin.";
    }
    std::string operator()(const FileError& error) const { return error.description(); }
    std::string operator()(const BundleError::Undecodable& undecodable) const {
        return fmt::format("{} isn’t as expected. {}", undecodable.file.filename().string(),
                           undecodable.error.description());
    }
    std::string operator()(const BundleError::NotFinite& notFinite) const {
        return fmt::format("{} can’t be written: it would hold a number that isn’t finite.",
                           notFinite.file.filename().string());
    }
};

} // namespace

std::string BundleError::description() const { return std::visit(Sentence{}, reason); }

} // namespace morvelin::ProjectBundle
