// One connection to an X server. Owned by whoever talks over it; one thread at a time.
#pragma once

#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include <xcb/xcb.h>

#include "core/base/Result.h"
#include "platform/Picture.h"
#include "platform/Screen.h"

namespace morvelin {

struct FreeWithC {
    void operator()(void* memory) const { std::free(memory); }
};

/// An answer of the server, freed as xcb asks; null when the server refused or is gone.
template <class T>
using X11Reply = std::unique_ptr<T, FreeWithC>;

template <class T>
[[nodiscard]] X11Reply<T> owned(T* reply) {
    return X11Reply<T>(reply);
}

class X11Connection {
public:
    /// Connects to `display`, or to the one that $DISPLAY names where it is empty.
    static Result<X11Connection, ScreenError> open(const std::string& display);

    [[nodiscard]] xcb_connection_t* get() const { return m_connection.get(); }
    [[nodiscard]] const xcb_screen_t& screen() const { return *m_screen; }
    [[nodiscard]] xcb_window_t root() const { return m_screen->root; }
    /// The name that was connected to, as a user writes it.
    [[nodiscard]] const std::string& display() const { return m_display; }

    /// False once the server has closed the connection.
    [[nodiscard]] bool isAlive() const { return xcb_connection_has_error(get()) == 0; }
    [[nodiscard]] int descriptor() const { return xcb_get_file_descriptor(get()); }
    void flush() const { xcb_flush(get()); }
    [[nodiscard]] bool hasExtension(xcb_extension_t& extension) const;
    /// The number of an extension's first event; the extension must be there.
    [[nodiscard]] std::uint8_t firstEvent(xcb_extension_t& extension) const;
    /// The next event that has arrived; null when there is none.
    [[nodiscard]] X11Reply<xcb_generic_event_t> poll() const { return owned(xcb_poll_for_event(get())); }

    /// False while the server owes an answer that did not come in time: a question would only be held up by it as well.
    [[nodiscard]] bool isAnswering() const;
    enum class Patience {
        Endless,
        /// Null also when the server doesn't answer within a moment, as while another program has it all for itself.
        Short
    };
    /// The answer to a question just sent, by its sequence number. Null when the server refused or is gone.
    template <class T>
    [[nodiscard]] X11Reply<T> reply(unsigned sequence, Patience patience) const {
        return X11Reply<T>(static_cast<T*>(waitForReply(sequence, patience)));
    }

    /// The root window's present box; nothing when the server is gone.
    [[nodiscard]] std::optional<PixelBox> desktop() const;
    /// A setting of the X resource database on the root window, such as "Xcursor.theme".
    [[nodiscard]] std::optional<std::string> resource(const std::string& name) const;

    [[nodiscard]] ScreenError lost() const;
    [[nodiscard]] ScreenError lacks(const std::string& extension) const;

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };

    X11Connection() = default;
    [[nodiscard]] void* waitForReply(unsigned sequence, Patience patience) const;

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    const xcb_screen_t* m_screen = nullptr;
    std::string m_display;
    mutable std::optional<unsigned> m_owedReply; ///< of a question that was not answered in time
};

} // namespace morvelin
