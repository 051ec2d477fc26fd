#include "storage/FolderChanges.h"

#include <ranges>

#include "core/base/Files.h"
#include "storage/BundleFiles.h"

namespace morvelin::ProjectBundle {

namespace fs = std::filesystem;

void FolderChanges::remember(const fs::path& path) {
    if (!isPresent(path)) {
        m_before.push_back({path, std::nullopt});
    } else if (auto content = readFile(path)) {
        m_before.push_back({path, std::move(*content)});
    }
    // What cannot be read, a folder for one, is only ever added to.
}

FolderChanges::~FolderChanges() {
    for (const Before& before : std::views::reverse(m_before)) {
        if (before.content) {
            (void)writeFileAtomically(before.path, *before.content);
        } else {
            // Takes a folder only when it is empty again: something of another program's may have come into it.
            std::error_code ignored;
            fs::remove(before.path, ignored);
        }
    }
}

} // namespace morvelin::ProjectBundle
