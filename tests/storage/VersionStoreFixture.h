// A project with the Original, "Version 1", which is current, and "Draft", open in a store.
#pragma once

#include "storage/BundleOnDisk.h"
#include "storage/ProjectVersionStore.h"

namespace morvelin {

class VersionStoreFixture : public ProjectBundle::BundleOnDisk {
protected:
    VersionStoreFixture() {
        const ProjectVersion versions[] = {original(), version("Version 1", 1), version("Draft", 2)};
        std::vector<UUID> order;
        for (const ProjectVersion& each : versions) {
            order.push_back(each.id);
            EXPECT_TRUE(ProjectBundle::writeVersion(each, m_url));
        }
        EXPECT_TRUE(ProjectBundle::writeCapture(header(order, order[1]), m_url));
    }

    ProjectVersionStore openStore() { return openStore(m_url); }
    ProjectVersionStore openStore(const std::filesystem::path& url) {
        return {url, ProjectBundle::load(url, services()).value(), services()};
    }
    static const ProjectVersion& named(const ProjectVersionStore& store, const std::string& name) {
        for (const ProjectVersion& each : store.versions())
            if (each.name == name) return each;
        throw std::runtime_error("no version " + name);
    }
    static std::vector<std::string> names(const ProjectVersionStore& store) {
        std::vector<std::string> all;
        for (const ProjectVersion& each : store.versions()) all.push_back(each.name);
        return all;
    }
    /// An edit that can be told from others.
    static EditPayload edit(double padding) {
        EditPayload made;
        made.padding = padding;
        made.audioTracks = {AudioTrackRef::recording()};
        return made;
    }
    std::filesystem::path fileOf(const UUID& id) const { return m_url / "versions" / (id.text() + ".json"); }

    const Date kLater = Date::parse("2026-12-24T18:00:00Z").value();
};

} // namespace morvelin
