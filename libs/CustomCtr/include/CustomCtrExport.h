#pragma once

// Symbols of the widget library are hidden unless marked with this macro.
#if defined(CUSTOMCTR_LIBRARY)
#define CUSTOMCTR_EXPORT __attribute__((visibility("default")))
#else
#define CUSTOMCTR_EXPORT
#endif
