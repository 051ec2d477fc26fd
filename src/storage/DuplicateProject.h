// A project copied whole, beside the one it is a copy of.
#pragma once

#include <filesystem>
#include <stop_token>
#include <string>

#include "core/base/Result.h"
#include "storage/BundleError.h"

namespace morvelin::ProjectBundle {

/// Copies the bundle under a new display name and returns where the copy is; a name of white space gives
/// "<present name> copy". The copy is made out of sight and appears whole. On failure, a stop (ECANCELED) included,
/// nothing stays behind; what a killed process left is removed by the next copy in that folder. May be long: for a
/// worker's thread.
Result<std::filesystem::path, BundleError> duplicateProject(const std::filesystem::path& bundleURL,
                                                            const std::string& name, std::stop_token stop = {});

} // namespace morvelin::ProjectBundle
