// The one object through which a project's versions change while it is open; owned by the editor, or by the agent's tool
// that works on a project that isn't open.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "storage/ProjectBundle.h"
#include "storage/VersionErrors.h"

namespace morvelin {

/// Its versions and the files agree, but for those in `unwrittenVersionIDs`. Writing fails quietly: it is logged and
/// tried again at the next save. Confined to the main thread.
class ProjectVersionStore {
public:
    /// What a switch led to: the version to load into the editor.
    struct SwitchOutcome {
        ProjectVersion version;
        bool didClone = false; ///< the Original was asked for, and a copy of it is edited
    };

    /// Takes over an opened project. Versions from before the list of audio tracks get theirs, and are written.
    ProjectVersionStore(std::filesystem::path bundleURL, ProjectBundle::Contents contents,
                        ProjectBundle::Services services);
    ProjectVersionStore(const ProjectVersionStore&) = delete;
    ProjectVersionStore& operator=(const ProjectVersionStore&) = delete;

    [[nodiscard]] const std::filesystem::path& bundleURL() const { return m_bundleURL; }
    [[nodiscard]] const std::vector<ProjectVersion>& versions() const { return m_versions; }
    /// The version being edited, never the locked original.
    [[nodiscard]] const UUID& currentID() const { return m_currentID; }
    [[nodiscard]] const std::string& projectName() const { return m_projectName; }
    [[nodiscard]] const ProjectBundle::Capture& capture() const { return m_capture; }
    /// Versions whose last write failed.
    [[nodiscard]] const std::set<UUID>& unwrittenVersionIDs() const { return m_unwrittenVersionIDs; }
    [[nodiscard]] const std::vector<UUID>& unreadableVersionIDs() const { return m_unreadableVersionIDs; }

    /// Valid until the list changes.
    [[nodiscard]] const ProjectVersion* version(const UUID& id) const;
    [[nodiscard]] std::vector<ProjectVersion> editableVersions() const;

    /// Called after each change of what the store shows. One listener at a time.
    void onChange(std::function<void()> listener) { m_listener = std::move(listener); }
    /// Tells whether narration is being recorded, during which versions aren't switched.
    void setRecordingCheck(std::function<bool()> isRecordingNarration) {
        m_isRecordingNarration = std::move(isRecordingNarration);
    }

    /// Writes the edit into the current version, unless it is there already. Tells whether the disk holds it now.
    bool save(const EditPayload& edit, Date date);
    /// Saves the open edit and goes to another version; nothing where there is none to go to.
    std::optional<SwitchOutcome> switchTo(const UUID& id, const EditPayload& currentEdit, Date date);
    /// Makes a copy, which becomes the current version, under a name of its own.
    ProjectVersion duplicate(const ProjectVersion& source, Date date);
    /// The same under the wanted name; when that can't be had nothing has been made.
    Result<ProjectVersion, RenameError> duplicateNamed(const ProjectVersion& source, const std::string& name,
                                                       Date date);
    /// An unknown id changes nothing.
    Result<void, RenameError> rename(const UUID& id, const std::string& name, Date date);
    Result<void, DeleteError> deleteVersion(const UUID& id);
    /// A name of white space, or the present one, changes nothing.
    Result<void, ProjectRenameError> renameProject(const std::string& name);

private:
    ProjectVersion* find(const UUID& id);
    ProjectVersion addCopy(ProjectVersion copy, std::string name, Date date);
    void bringNarrationUpToDate();
    bool write(const ProjectVersion& version);
    void saveIndex();
    [[nodiscard]] std::vector<UUID> versionOrder() const;
    void changed() const;

    std::filesystem::path m_bundleURL;
    ProjectBundle::Services m_services;
    std::vector<ProjectVersion> m_versions;
    UUID m_currentID;
    std::string m_projectName;
    ProjectBundle::Capture m_capture; ///< as last read or written
    std::set<UUID> m_unwrittenVersionIDs;
    std::vector<UUID> m_unreadableVersionIDs;
    std::function<void()> m_listener;
    std::function<bool()> m_isRecordingNarration;
};

} // namespace morvelin
