#include "platform/WindowHolder.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <stdexcept>

// A connection of its own: what goes wrong on it is nobody else's.
struct CWindowHolder::CDisplay {
    xcb_connection_t* connection;
    xcb_window_t window = 0;

    CDisplay() : connection(xcb_connect(nullptr, nullptr)) {}
    ~CDisplay() { xcb_disconnect(connection); }
    CDisplay(CDisplay const&) = delete;
    CDisplay& operator=(CDisplay const&) = delete;
};

CWindowHolder::CWindowHolder(std::uint64_t nParent, int nWidth, int nHeight)
    : m_pDisplay(std::make_unique<CDisplay>()) {
    xcb_connection_t* const connection = m_pDisplay->connection;
    const xcb_window_t window = xcb_generate_id(connection);
    const std::uint32_t nBlack = 0;
    xcb_generic_error_t* const error = xcb_request_check(
        connection,
        xcb_create_window_checked(
            connection, XCB_COPY_FROM_PARENT, window, static_cast<xcb_window_t>(nParent), 0, 0,
            static_cast<std::uint16_t>(nWidth), static_cast<std::uint16_t>(nHeight), 0,
            XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL, &nBlack));
    free(error);
    if (error != nullptr || xcb_connection_has_error(connection) != 0) {
        throw std::runtime_error("the display gives no window");
    }
    m_pDisplay->window = window;
    xcb_map_window(connection, window);
    xcb_flush(connection);
}

CWindowHolder::~CWindowHolder() {
    xcb_destroy_window(m_pDisplay->connection, m_pDisplay->window);
    xcb_flush(m_pDisplay->connection);
}

std::uint64_t CWindowHolder::Id() const {
    return m_pDisplay->window;
}
