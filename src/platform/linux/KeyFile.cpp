#include "platform/linux/KeyFile.h"

#include <cerrno>
#include <tuple>

#include <fmt/format.h>

#include "core/base/AdvisoryLock.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

/// Longer than any writing takes, short enough for a person who waits.
constexpr Seconds kLockPatience = 5_s;

/// The file that a link leads to: replacing the link would cut it off from where a person keeps their settings.
fs::path linkTarget(const fs::path& path) {
    std::error_code error;
    fs::path target = fs::canonical(path, error);
    return error ? path : target;
}

fs::path freeDamagedName(const fs::path& path) {
    fs::path name = path.string() + ".damaged";
    std::error_code error;
    for (int number = 2; fs::exists(fs::symlink_status(name, error)); ++number)
        name = fmt::format("{}.damaged-{}", path.string(), number);
    return name;
}

std::string sentence(const FileError& error) { return "The settings could not be saved. " + error.description(); }

} // namespace

FileStamp FileStamp::of(const fs::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return {};
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim, status.st_ctim};
}

bool FileStamp::operator==(const FileStamp& other) const {
    const auto fields = [](const FileStamp& stamp) {
        return std::tuple(stamp.device, stamp.inode, stamp.size, stamp.modified.tv_sec, stamp.modified.tv_nsec,
                          stamp.changed.tv_sec, stamp.changed.tv_nsec);
    };
    return fields(*this) == fields(other);
}

GKeyFile* KeyFile::content() {
    if (m_content && FileStamp::of(m_path) == m_stamp) return m_content.get();
    if (read() == Reading::Damaged) {
        auto lock = AdvisoryLock::take(m_path.string() + ".lock", AdvisoryLock::Target::File, kLockPatience);
        if (lock && *lock) {
            if (auto setAside = setAsideIfDamaged(); !setAside) m_log("[Morvelin] " + setAside.error());
        }
    }
    return m_content.get();
}

Result<void, std::string> KeyFile::edit(const std::function<void(GKeyFile*)>& change) {
    if (auto made = createFolder(m_path.parent_path()); !made) return failure(sentence(made.error()));
    auto lock = AdvisoryLock::take(m_path.string() + ".lock", AdvisoryLock::Target::File, kLockPatience);
    if (!lock) return failure(sentence(lock.error()));
    if (!*lock) return failure(std::string("The settings could not be saved: another program holds them locked."));

    if (auto setAside = setAsideIfDamaged(); !setAside) return setAside;
    change(m_content.get());
    gsize length = 0;
    const OwnedText text(g_key_file_to_data(m_content.get(), &length, nullptr));
    m_stamp = {}; // what is in memory counts only once it has been written
    const auto written = writeFileAtomically(linkTarget(m_path), std::string_view(text.get(), length));
    if (!written) {
        m_content.reset();
        return failure(sentence(written.error()));
    }
    m_stamp = FileStamp::of(m_path);
    return {};
}

KeyFile::Reading KeyFile::read() {
    // The stamp comes first: a change between the two is then seen at the next look.
    m_stamp = FileStamp::of(m_path);
    m_content.reset(g_key_file_new());
    const auto text = readFile(m_path);
    if (!text && text.error().code == ENOENT) return Reading::Understood;
    if (!text) {
        m_problem = text.error().description();
        m_log("[Morvelin] The settings can't be read. " + m_problem);
        return Reading::Failed;
    }
    if (text->empty()) return Reading::Understood;
    if (text->contains('\0')) {
        // What a power cut can leave; GLib would take it for an empty file.
        m_problem = "it holds bytes that are no text";
        return Reading::Damaged;
    }
    GError* error = nullptr;
    if (g_key_file_load_from_data(m_content.get(), text->data(), text->size(), G_KEY_FILE_KEEP_COMMENTS, &error))
        return Reading::Understood;
    m_problem = OwnedError(error)->message;
    m_content.reset(g_key_file_new());
    return Reading::Damaged;
}

Result<void, std::string> KeyFile::setAsideIfDamaged() {
    switch (read()) {
    case Reading::Understood: return {};
    case Reading::Failed: return failure("The settings could not be saved. " + m_problem);
    case Reading::Damaged: break;
    }
    const fs::path aside = freeDamagedName(m_path);
    if (auto moved = moveItem(m_path, aside); !moved)
        return failure("The settings are damaged and can't be set aside. " + moved.error().description());
    m_log(fmt::format("[Morvelin] The settings could not be understood and are set aside as {}: {}", aside.string(),
                      m_problem));
    m_stamp = FileStamp::of(m_path);
    return {};
}

} // namespace morvelin
