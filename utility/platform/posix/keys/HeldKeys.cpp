#include "utility/platform/posix/keys/HeldKeys.h"

#include "utility/platform/posix/descriptors/Readable.h"
#include "utility/platform/posix/display/Display.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <memory>
#include <span>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

namespace utility::platform::posix
{

namespace
{

/// Keys that follow one another in both lists: that of Windows, and that of the symbols on the keys of an X server.
struct Keys
{
    int first;
    int last;
    xcb_keysym_t symbol;
};

constexpr Keys keys[] = {
    {0x08, 0x09, 0xFF08}, // Backspace, Tab
    {0x0C, 0x0C, 0xFF0B}, // Clear
    {0x0D, 0x0D, 0xFF0D}, // Enter
    {0x0D, 0x0D, 0xFF8D}, // that of the number pad
    {0x10, 0x10, 0xFFE1}, // Shift, the left one
    {0x10, 0x10, 0xFFE2}, // and the right
    {0x11, 0x11, 0xFFE3}, // Control
    {0x11, 0x11, 0xFFE4}, // and the right one
    {0x12, 0x12, 0xFFE9}, // Alt
    {0x12, 0x12, 0xFFEA}, // and the right one
    {0x12, 0x12, 0xFE03}, // AltGr
    {0x13, 0x13, 0xFF13}, // Pause
    {0x14, 0x14, 0xFFE5}, // Caps Lock
    {0x1B, 0x1B, 0xFF1B}, // Escape
    {0x20, 0x20, 0x0020}, // the blank
    {0x21, 0x22, 0xFF55}, // Page Up and Down
    {0x23, 0x23, 0xFF57}, // End
    {0x24, 0x24, 0xFF50}, // Home
    {0x25, 0x28, 0xFF51}, // Left, Up, Right, Down
    {0x2C, 0x2C, 0xFF61}, // Print
    {0x2D, 0x2D, 0xFF63}, // Insert
    {0x2E, 0x2E, 0xFFFF}, // Delete
    {0x30, 0x39, 0x0030}, // digits
    {0x41, 0x5A, 0x0061}, // letters
    {0x5B, 0x5C, 0xFFEB}, // the system's keys
    {0x5D, 0x5D, 0xFF67}, // that of a menu
    {0x60, 0x69, 0xFFB0}, // the number pad: digits
    {0x6A, 0x6F, 0xFFAA}, // and signs
    {0x70, 0x87, 0xFFBE}, // F1 to F24
    {0x90, 0x90, 0xFF7F}, // Num Lock
    {0x91, 0x91, 0xFF14}, // Scroll Lock
    {0xA0, 0xA3, 0xFFE1}, // Shift and Control, each the left one and the right
    {0xA4, 0xA5, 0xFFE9}, // Alt
    {0xA5, 0xA5, 0xFE03}, // AltGr
};

/// The bit of a button of the mouse, 0 for what is none.
unsigned int ButtonOf(int virtualKey)
{
    return virtualKey == 1   ? XCB_BUTTON_MASK_1
           : virtualKey == 2 ? XCB_BUTTON_MASK_3
           : virtualKey == 4 ? XCB_BUTTON_MASK_2
                             : 0;
}

/// Whether a symbol, on one of several, is that of a key.
bool IsOf(int virtualKey, xcb_keysym_t symbol)
{
    return std::ranges::any_of(keys,
                               [=](const Keys& each)
                               {
                                   return virtualKey >= each.first && virtualKey <= each.last &&
                                          symbol == each.symbol + static_cast<unsigned int>(virtualKey - each.first);
                               });
}

// The functions of the server's library that are called.
#define UTILITY_XCB_FUNCTIONS                                                                                          \
    UTILITY_XCB(connect)                                                                                               \
    UTILITY_XCB(connection_has_error)                                                                                  \
    UTILITY_XCB(disconnect)                                                                                            \
    UTILITY_XCB(flush)                                                                                                 \
    UTILITY_XCB(get_file_descriptor)                                                                                   \
    UTILITY_XCB(get_keyboard_mapping)                                                                                  \
    UTILITY_XCB(get_keyboard_mapping_keysyms)                                                                          \
    UTILITY_XCB(get_keyboard_mapping_keysyms_length)                                                                   \
    UTILITY_XCB(get_setup)                                                                                             \
    UTILITY_XCB(poll_for_reply)                                                                                        \
    UTILITY_XCB(query_keymap)                                                                                          \
    UTILITY_XCB(query_pointer)                                                                                         \
    UTILITY_XCB(setup_roots_iterator)

/// A connection with the server; all that is asked fails where there is none.
class Server
{
public:
    Server()
    {
        // It stays loaded: the next question finds it at once.
        void* const library = ::dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        if (library == nullptr)
            return;
#define UTILITY_XCB(name) m_##name = reinterpret_cast<decltype(m_##name)>(::dlsym(library, "xcb_" #name));
        UTILITY_XCB_FUNCTIONS
#undef UTILITY_XCB
        ::dlclose(library);
        m_connection = m_connect(nullptr, nullptr);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server()
    {
        if (m_connection != nullptr)
            m_disconnect(m_connection);
    }

    bool IsThere() const { return m_connection != nullptr && m_connection_has_error(m_connection) == 0; }

    bool IsButtonHeld(unsigned int button) const
    {
        const xcb_screen_iterator_t screens = m_setup_roots_iterator(m_get_setup(m_connection));
        if (screens.rem == 0)
            return false;
        const auto reply =
            ReplyTo<xcb_query_pointer_reply_t>(m_query_pointer(m_connection, screens.data->root).sequence);
        return reply && (reply->mask & button) != 0;
    }

    bool IsKeyHeld(int virtualKey) const
    {
        const xcb_setup_t& setup = *m_get_setup(m_connection);
        const auto count = static_cast<std::uint8_t>(setup.max_keycode - setup.min_keycode + 1);
        const unsigned int keymap = m_query_keymap(m_connection).sequence;
        const unsigned int symbolsOfKeys = m_get_keyboard_mapping(m_connection, setup.min_keycode, count).sequence;
        const auto held = ReplyTo<xcb_query_keymap_reply_t>(keymap);
        if (!held)
            return false;
        const auto mapping = ReplyTo<xcb_get_keyboard_mapping_reply_t>(symbolsOfKeys);
        // A key has as many symbols as any other, for what it gives alone, with Shift and so on.
        const std::size_t ofEach = mapping ? mapping->keysyms_per_keycode : 0;
        if (ofEach == 0)
            return false;
        const std::span<const xcb_keysym_t> symbols(
            m_get_keyboard_mapping_keysyms(mapping.get()),
            static_cast<std::size_t>(m_get_keyboard_mapping_keysyms_length(mapping.get())));
        for (std::size_t i = 0; i < symbols.size(); ++i)
        {
            const std::size_t key = setup.min_keycode + i / ofEach;
            if (key > setup.max_keycode)
                break;
            if (IsOf(virtualKey, symbols[i]) && (held->keys[key / 8] >> key % 8 & 1) != 0)
                return true;
        }
        return false;
    }

private:
    /// What the server answers; null if it does not in time.
    template <class Reply>
    std::unique_ptr<Reply, decltype(&std::free)> ReplyTo(unsigned int request) const
    {
        void* reply = nullptr;
        xcb_generic_error_t* error = nullptr;
        m_flush(m_connection);
        while (m_poll_for_reply(m_connection, request, &reply, &error) == 0 &&
               WaitUntilReadable(m_get_file_descriptor(m_connection), displayPatience) == true)
        {
        }
        std::free(error);
        return {static_cast<Reply*>(reply), &std::free};
    }

#define UTILITY_XCB(name) decltype(&::xcb_##name) m_##name = nullptr;
    UTILITY_XCB_FUNCTIONS
#undef UTILITY_XCB
    xcb_connection_t* m_connection = nullptr;
};

}

bool IsHeld(int virtualKey)
{
    if (!HasX11())
        return false;
    const Server server;
    if (!server.IsThere())
        return false;
    const unsigned int button = ButtonOf(virtualKey);
    return button != 0 ? server.IsButtonHeld(button) : server.IsKeyHeld(virtualKey);
}

}
