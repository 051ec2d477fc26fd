#include "platform/null/MemoryDefaults.h"

namespace morvelin {

Result<void, std::string> MemoryDefaults::change(const DefaultsKey<Texts>& key, std::function<Texts(Texts)> edit) {
    return put(key.name, edit(get(key)));
}

void MemoryDefaults::clear() {
    m_values.clear();
    if (m_listener) m_listener();
}

Result<void, std::string> MemoryDefaults::put(const char* key, Value value) {
    m_values.insert_or_assign(key, std::move(value));
    if (m_listener) m_listener();
    return {};
}

} // namespace morvelin
