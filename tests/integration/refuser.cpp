// A minimal X client for integration tests: one top-level window that takes part in
// WM_DELETE_WINDOW and ignores every close request, as an app with unsaved work would.
//   refuser [--class NAME]
// Prints "ready" once mapped and "close requested" for each request.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <xcb/xcb.h>

namespace {

xcb_atom_t intern(xcb_connection_t* c, const char* name) {
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(
        c, xcb_intern_atom(c, 0, static_cast<uint16_t>(std::strlen(name)), name), nullptr);
    const xcb_atom_t atom = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    std::free(reply);
    return atom;
}

} // namespace

int main(int argc, char* argv[]) {
    std::string wmClass = "Refuser";
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--class") == 0 && i + 1 < argc) {
            wmClass = argv[++i];
        }
    }
    xcb_connection_t* c = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(c) != 0) {
        std::fprintf(stderr, "refuser: no X display\n");
        return 1;
    }
    xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
    const xcb_atom_t protocols = intern(c, "WM_PROTOCOLS");
    const xcb_atom_t deleteWindow = intern(c, "WM_DELETE_WINDOW");
    const xcb_atom_t netWmPid = intern(c, "_NET_WM_PID");
    const std::string classProperty = wmClass + '\0' + wmClass + '\0';
    const uint32_t pid = static_cast<uint32_t>(getpid());
    const xcb_window_t window = xcb_generate_id(c);
    const uint32_t values[] = {screen->white_pixel, XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    xcb_create_window(c, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 200, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        static_cast<uint32_t>(classProperty.size()), classProperty.data());
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        static_cast<uint32_t>(wmClass.size()), wmClass.data());
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, netWmPid, XCB_ATOM_CARDINAL, 32, 1, &pid);
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, protocols, XCB_ATOM_ATOM, 32, 1,
                        &deleteWindow);
    xcb_map_window(c, window);
    xcb_flush(c);
    std::printf("ready\n");
    std::fflush(stdout);

    while (xcb_generic_event_t* event = xcb_wait_for_event(c)) {
        const auto type = event->response_type & 0x7f;
        if (type == XCB_CLIENT_MESSAGE) {
            const auto* message = reinterpret_cast<xcb_client_message_event_t*>(event);
            if (message->type == protocols && message->data.data32[0] == deleteWindow) {
                std::printf("close requested\n");
                std::fflush(stdout);
            }
        }
        std::free(event);
    }
    xcb_disconnect(c);
    return 0;
}
