#pragma once
#if defined(COMMONTOOLS_LIBRARY)
#define COMMONTOOLS_EXPORT __attribute__((visibility("default")))
#else
#define COMMONTOOLS_EXPORT
#endif
