// All tools that edit a project's timeline, look and words, entered into the table of commands.
#pragma once

#include "agent/AgentFolders.h"
#include "agent/CommandTable.h"
#include "agent/MCPProjectEditor.h"
#include "agent/StyleTools.h"
#include "agent/WordTools.h"

namespace morvelin {

/// Each of them opens the project that its arguments name, runs in one go, and is saved whole or not at all.
class EditTools {
public:
    struct Services {
        const AgentFolders& folders;
        MCPProjectEditor::Services editor;
        const ImageFileProbe& images;
        MovieReaderFactory& movies;
    };

    explicit EditTools(Services services)
        : m_services(std::move(services)),
          m_style(m_services.images, m_services.movies, m_services.folders.home),
          m_words(m_services.movies, m_services.folders.home, m_services.folders.exports) {}

    void addTo(CommandTable& commands);

private:
    void add(CommandTable& commands, const char* name, EditTool tool);
    Task<ToolOutcome> run(const EditTool& tool, JSONValue arguments) const;

    Services m_services;
    StyleTools m_style;
    WordTools m_words;
};

} // namespace morvelin
