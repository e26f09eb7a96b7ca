#pragma once
// Gives the keyboard focus to a top-level window on an X11 display.

// Without a window manager, Qt asks the X server for the focus with the time
// of the last event it saw; the server ignores that request when another
// client took the focus later. Asking with the server's current time always
// wins. No effect off X11.
void focusX11Window(unsigned long windowId);
