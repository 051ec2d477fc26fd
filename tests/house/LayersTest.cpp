// The folder table is law: every include of src/ is checked against it.

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

using Folders = std::set<std::string>;

Folders operator+(Folders a, const Folders& b) {
    a.insert(b.begin(), b.end());
    return a;
}

/// Which folders each folder may include, besides itself. The rows are those of ARCHITECTURE.md.
std::map<std::string, Folders> layerTable() {
    const Folders base{"core/base"};
    const Folders core = base + Folders{"core"};
    const Folders narration = core + Folders{"timeline"};
    const Folders storage = narration + Folders{"narration"};
    const Folders media = core + Folders{"platform"};
    const Folders backEnd = media + Folders{"media"};
    const Folders upToMedia = storage + Folders{"storage", "platform", "platform/null", "media"};
    const Folders render = upToMedia + Folders{"capture", "speech"};
    const Folders voice = render + Folders{"render"};
    const Folders editor = voice + Folders{"voice"};
    const Folders agent = editor + Folders{"editor"};
    const Folders ui = agent + Folders{"agent", "talkmode"};
    return {
        {"core/base", {}},
        {"core", base},
        {"timeline", core},
        {"narration", narration},
        {"storage", storage},
        {"platform", core},
        {"platform/null", core + Folders{"platform"}},
        {"media", media},
        {"capture", upToMedia},
        {"speech", upToMedia},
        {"render", render},
        {"voice", voice},
        {"editor", editor},
        {"agent", agent},
        {"talkmode", agent},
        {"ui", ui},
        {"app", ui + Folders{"ui", "platform/x11", "platform/wayland", "platform/linux"}},
        {"platform/x11", backEnd},
        {"platform/wayland", backEnd},
        {"platform/linux", backEnd},
        {"relay", {}},
    };
}

/// The C libraries that are wrapped, by how their headers begin, and the only folders that may see them.
const std::map<std::string, Folders>& wrappedLibraries() {
    static const std::map<std::string, Folders> table{
        {"libav", {"media"}},
        {"libsw", {"media"}},
        {"x264", {"media"}},
        {"png", {"media"}},
        {"zimg", {"media", "render"}},
        {"cairo", {"render"}},
        {"pango/", {"render"}},
        {"hb", {"render"}},
        {"xcb/", {"platform/x11"}},
        {"X11/", {"platform/x11"}},
        {"pulse/", {"platform/linux"}},
        {"simdjson", {"storage"}},
        {"glib", {"core/base", "platform/linux"}},
        {"gio/", {"core/base", "platform/linux"}},
        {"CLI/", {"app"}},
    };
    return table;
}

struct Include {
    fs::path file;
    std::string path;
    bool isOurs;
};

/// The layer that a path below src/ lies in: the longest folder of the table that begins it.
std::string layerOf(const std::string& path) {
    std::string best;
    for (const auto& [folder, _] : layerTable())
        if (path.starts_with(folder + "/") && folder.size() > best.size()) best = folder;
    return best;
}

std::vector<Include> includesOf(const fs::path& file) {
    static const std::regex line(R"(^\s*#\s*include\s*(["<])([^">]+)[">])");
    std::vector<Include> found;
    std::ifstream stream(file);
    for (std::string text; std::getline(stream, text);) {
        std::smatch match;
        if (std::regex_search(text, match, line)) found.push_back({file, match[2], match[1] == "\""});
    }
    return found;
}

std::vector<Include> allIncludes() {
    std::vector<Include> all;
    const fs::path src = fs::path(MORVELIN_SOURCE_DIR) / "src";
    for (const auto& entry : fs::recursive_directory_iterator(src)) {
        const auto extension = entry.path().extension();
        if (extension != ".h" && extension != ".cpp") continue;
        for (Include& include : includesOf(entry.path())) {
            include.file = fs::relative(include.file, src);
            all.push_back(std::move(include));
        }
    }
    return all;
}

TEST(Layers, EveryIncludePointsDownTheTable) {
    const auto table = layerTable();
    for (const Include& include : allIncludes()) {
        const std::string from = layerOf(include.file.string());
        ASSERT_TRUE(table.contains(from)) << include.file << " lies in no folder of the table";
        if (!include.isOurs) continue;
        const std::string to = layerOf(include.path);
        EXPECT_TRUE(to == from || table.at(from).contains(to))
            << include.file << " includes " << include.path << ": " << from << " may not know " << to;
    }
}

TEST(Layers, WrappedLibrariesAreSeenInTheirOwnFoldersOnly) {
    for (const Include& include : allIncludes()) {
        if (include.isOurs) continue;
        const std::string from = layerOf(include.file.string());
        for (const auto& [prefix, folders] : wrappedLibraries())
            EXPECT_TRUE(!include.path.starts_with(prefix) || folders.contains(from))
                << include.file << " includes <" << include.path << ">";
    }
}

TEST(Layers, OnlyTheCompositionNamesBackEnds) {
    for (const Include& include : allIncludes()) {
        const std::string to = layerOf(include.path);
        if (!include.isOurs || !to.starts_with("platform/") || to == layerOf(include.file.string())) continue;
        EXPECT_EQ(include.file.generic_string(), "app/composition.cpp") << "includes " << include.path;
    }
}

} // namespace
