// Tools for whole projects and their versions.
#include "agent/ToolTable.h"

namespace morvelin::table {

std::vector<MCPTool> projectTools() {
    return {
        tool("list_versions", R"(
            List a project's versions. The locked one is the original timeline the recording produced; it is never
            edited. Every edit tool writes to the `current` one.)",
             {project()}),

        tool("create_version", R"(
            Duplicate the current version and switch to the copy, so what follows can be tried without losing what
            was there. Names are unique within a project.)",
             {project(), text("name", "Name for the copy. Defaults to \"<current> copy\".")}),

        tool("rename_version", "Rename a version (the current one by default). The locked original cannot be renamed.",
             {project(), version(), text("name", "The new name.")}, {"name"}),

        tool("switch_version", R"(
            Make another version the current one; every later edit writes there. Choosing the locked original opens
            a fresh copy of it instead, as the editor does.)",
             {project(), version()}, {"version"}),

        tool("delete_version", R"(
            Delete a version for good. The locked original and the current version cannot be deleted; switch away
            first.)",
             {project(), version()}, {"version"}),

        tool("rename_project", R"(
            Rename a project. The bundle on disk is renamed with it, so its path changes: use the returned `path`
            from now on.)",
             {project(), text("name", "The new name.")}, {"name"}),

        tool("duplicate_project", R"(
            Copy a whole project — recording, versions and all — next to it. Returns the copy's `path`.)",
             {project(), text("name", "Name for the copy. Defaults to \"<name> copy\".")}),

        tool("delete_project", R"(
            Move a project to the Trash, closing it in the editor first if it is open. It is not erased: the user
            can put it back from the Trash. Ask before doing this unless the user told you to.)",
             {text("project", "Path to the .morvelin bundle to delete. Required, so the most recent project is never "
                              "deleted by default.")},
             {"project"}),

        tool("open_project", R"(
            Open a project in Morvelin's editor window, so the user can watch edits land. While it is open, edit
            tools apply through the editor: each call shows on screen and is one undo step.)",
             {project()}),
    };
}

} // namespace morvelin::table
